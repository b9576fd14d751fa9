#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mvdb {

// A range of sort keys (see sort_key.h) of one indexed field. An empty `high` means no upper bound.
struct KeyRange {
    int field = 0;
    std::string low;
    bool lowInclusive = true;
    std::string high;
    bool highInclusive = false;
};

// Called for each record a read finds; returning false stops the walk.
using RecordVisitor = std::function<bool(const std::string& key, const std::string& text)>;
// The same for a read of several files, with the record's file.
using FileRecordVisitor =
    std::function<bool(const std::string& file, const std::string& key, const std::string& text)>;

// Where the records live. The store keeps, for every indexed field of a file's dictionary, the sort
// keys of each record's values, and keeps them in step with every write and delete. Every failure is
// a base::Error with a message that names the file or key. Only the implementation includes the
// engine's headers.
class Store {
public:
    virtual ~Store() = default;

    virtual std::vector<std::string> fileNames() = 0;
    virtual bool hasFile(const std::string& file) = 0;
    // Creates an empty file; a file that exists already is left as it is.
    virtual void createFile(const std::string& file) = 0;

    virtual std::optional<std::string> read(const std::string& file, const std::string& key) = 0;
    // The same read into `text`, whose storage is reused: for a caller that reads one record after
    // another into one buffer. False, with `text` untouched, when there is no such record.
    virtual bool readInto(const std::string& file, const std::string& key, std::string& text) {
        std::optional<std::string> found = read(file, key);
        if (found) text = std::move(*found);
        return found.has_value();
    }
    // Creates or replaces the record.
    virtual void write(const std::string& file, const std::string& key, const std::string& text) = 0;
    // Writes each (key, text) as write would, in order, so that a key given twice keeps its last text:
    // for loading many records, which a store can do in far fewer steps than one write after another.
    // Callers hold a transaction around it, which a refused key leaves to be rolled back.
    virtual void writeBatch(const std::string& file,
                            const std::vector<std::pair<std::string, std::string>>& records) {
        for (const auto& [key, text] : records)
            write(file, key, text);
    }
    // Removes the record; an absent key is not an error.
    virtual void remove(const std::string& file, const std::string& key) = 0;
    // Removes each record as remove would, absent and repeated keys included: for a purge of many
    // records, which a store can do in far fewer steps than one remove after another. Callers hold a
    // transaction around it.
    virtual void removeBatch(const std::string& file, const std::vector<std::string>& keys) {
        for (const std::string& key : keys)
            remove(file, key);
    }

    // Every record of the file, in key order.
    virtual void scanAll(const std::string& file, const RecordVisitor& visit) = 0;
    // Every record of each file, file after file, in no set order within a file: for a reader that
    // needs several files whole, which a store on a server sends in one exchange.
    virtual void scanFiles(const std::vector<std::string>& files, const FileRecordVisitor& visit) {
        for (const std::string& file : files) {
            bool more = true;
            scanAll(file, [&](const std::string& key, const std::string& text) {
                return more = visit(file, key, text);
            });
            if (!more) return;
        }
    }
    // The records having a value of the indexed field within the range, in no set order; a record with
    // several such values may come more than once.
    virtual void scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) = 0;
    virtual std::size_t count(const std::string& file) = 0;

    // For a store that keeps records in memory for a while: whether it holds every record of the file
    // having a value of the range's field within the range (fetching them at once if that is its way),
    // so that scanHeld can serve a selection that only such records can meet. A store that keeps
    // nothing says no.
    virtual bool holds(const std::string& file, const KeyRange& range) {
        (void)file;
        (void)range;
        return false;
    }
    // The held records having a value of the indexed field within the range, as scanRange gives them,
    // after holds() said yes for a range that every record the caller wants lies in: records outside
    // what is held are not seen.
    virtual void scanHeld(const std::string& file, const KeyRange& range, const RecordVisitor& visit) {
        scanRange(file, range, visit);
    }

    // The engine's own plan for the statements that scanAll and scanRange run, one line per step.
    virtual std::vector<std::string> explainScan(const std::string& file,
                                                 const std::optional<KeyRange>& range) = 0;

    // One transaction at a time; writes outside one are each committed alone.
    virtual void begin() = 0;
    virtual void commit() = 0;
    virtual void rollback() = 0;
    virtual bool inTransaction() const = 0;
    // What this connection holds open at this moment: empty when nothing, otherwise what it is (a
    // transaction, reads still grouped, a statement not finished). Anything open while the program waits
    // for its user hides writes from other planners, or keeps them waiting.
    virtual std::string openTransaction() const {
        return inTransaction() ? "une transaction d'écriture" : "";
    }

    // Reads that must agree with one another, such as the queries of one display: from beginRead to
    // endRead every read sees the database as it was at one moment, whatever other planners commit
    // meanwhile. Changes to work files stay inside; a change to a shared file, or begin, ends the moment
    // first, since a change always works on the newest records. Calls nest; the outermost pair counts.
    virtual void beginRead() = 0;
    virtual void endRead() = 0;
};

}  // namespace mvdb
