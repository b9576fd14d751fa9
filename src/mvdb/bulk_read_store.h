#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "mvdb/forwarding_store.h"

namespace mvdb {

// The reads of one moment in bulk. Between the outermost beginRead and its endRead (see Store), a file
// is fetched the first time it is touched, in one query, and served from memory for the rest of the
// moment: point reads, scans, index ranges and counts give what the inner store would give. A file of
// many records (SSIADTOURNEE) is held one value of an indexed field at a time (its date), one query per
// value, when a selection or a read names that value. Outside a moment, in a transaction, and from a
// change to a shared file or a begin to the end of the moment, nothing is held: every call goes to the
// inner store. On a shared server this turns the thousands of round trips of a display into a few.
class BulkReadStore : public ForwardingStore {
public:
    explicit BulkReadStore(std::unique_ptr<Store> inner);

    void createFile(const std::string& file) override;
    std::optional<std::string> read(const std::string& file, const std::string& key) override;
    bool readInto(const std::string& file, const std::string& key, std::string& text) override;
    void write(const std::string& file, const std::string& key, const std::string& text) override;
    void remove(const std::string& file, const std::string& key) override;
    void writeBatch(const std::string& file,
                    const std::vector<std::pair<std::string, std::string>>& records) override;
    void removeBatch(const std::string& file, const std::vector<std::string>& keys) override;
    void scanAll(const std::string& file, const RecordVisitor& visit) override;
    void scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) override;
    std::size_t count(const std::string& file) override;
    bool holds(const std::string& file, const KeyRange& range) override;
    void scanHeld(const std::string& file, const KeyRange& range, const RecordVisitor& visit) override;
    void begin() override;
    void beginRead() override;
    void endRead() override;

private:
    // The records held of one file: all of them, or those with a value of one field within the covers.
    struct Held {
        bool whole = false;
        std::vector<KeyRange> covers;
        std::vector<std::pair<std::string, std::string>> records;  // (key, text), in key order
        // Per index number, made on first use: (sort key of a value, position in records), in order.
        std::map<int, std::vector<std::pair<std::string, std::size_t>>> indexes;
    };

    // The file's records held whole, fetched now if they are not; null when the file is not held whole.
    std::shared_ptr<Held> whole(const std::string& file);
    // The held records of the file if they include every record that has a value within `range`,
    // fetching them now where the file is held by that field; null otherwise.
    std::shared_ptr<Held> holding(const std::string& file, const KeyRange& range);
    // The held records of the file if they include the record of `key`, present or not; null otherwise.
    std::shared_ptr<Held> holdingKey(const std::string& file, const std::string& key);
    const std::string* find(const Held& held, const std::string& key) const;
    const std::vector<std::pair<std::string, std::size_t>>& index(Held& held, const std::string& file,
                                                                  int field);
    // Visits from memory; the records stay alive for the walk whatever the visitor makes the store do.
    void visitRange(const std::shared_ptr<Held>& held, const std::string& file, const KeyRange& range,
                    const RecordVisitor& visit);
    // Every held record goes; nothing more is held until the moment ends and another begins.
    void release();
    void releaseFor(const std::string& file);

    int m_readers = 0;
    bool m_active = false;
    std::map<std::string, std::shared_ptr<Held>> m_held;
};

}  // namespace mvdb
