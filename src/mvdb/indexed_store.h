#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mvdb/store.h"

namespace mvdb {

struct FileDictionary;
struct IndexEntry;

// The statements an engine runs for the store's calls on one file, named so that a benchmark can run
// the very same SQL without the store around it. CreateTable makes the file's table of records, in the
// connection's temporary schema for a work file, as each connection must.
enum class StoreStatement { Read, Write, Remove, ScanAll, ScanRange, CreateTable };

// The store as both engines build it. Each file is a table of (key, record) and, unless it is a work
// file, a table of index entries (field, sort key, key); a catalogue table names the files and the
// indexes they were built with. This class keeps the catalogue, the index entries in step with every
// change, the atomicity of each change and the state of transactions and consistent reads; an engine
// supplies the statements, through the primitives below.
class IndexedStore : public Store {
public:
    std::vector<std::string> fileNames() override;
    bool hasFile(const std::string& file) override;
    void createFile(const std::string& file) override;
    std::optional<std::string> read(const std::string& file, const std::string& key) override;
    bool readInto(const std::string& file, const std::string& key, std::string& text) override;
    void write(const std::string& file, const std::string& key, const std::string& text) override;
    void remove(const std::string& file, const std::string& key) override;
    void begin() override;
    void commit() override;
    void rollback() override;
    bool inTransaction() const override { return m_inTransaction; }
    std::string openTransaction() const override;
    void beginRead() override;
    void endRead() override;

    // The SQL the engine runs for one call on the file; `range` serves ScanRange only. Fails as the
    // call would for an unknown file, or for a range on a file without an index.
    virtual std::string statementText(StoreStatement statement, const std::string& file,
                                      const std::optional<KeyRange>& range = std::nullopt) = 0;

protected:
    struct FileInfo {
        std::string name;
        std::string table;       // quoted, schema-qualified table of records
        std::string indexTable;  // quoted table of index entries; empty for a work file
        const FileDictionary* dictionary = nullptr;
        bool scratch = false;
        // The engine's prepared point read, made on first use and owned by the engine: a display
        // reads thousands of records one by one.
        mutable void* pointRead = nullptr;
    };

    // How many statements a change runs: one statement is atomic by itself.
    enum class Statements { One, Several };

    // Makes one change atomic: inside the caller's transaction a savepoint, outside it a transaction of
    // its own that waits for other planners' changes. A change to a work file takes no write lock, and
    // a single statement on it needs no scope at all unless a failed statement spoils the transaction
    // around it. A change to a shared file ends a consistent read first.
    class WriteScope {
    public:
        WriteScope(IndexedStore& store, const FileInfo& fi, Statements statements = Statements::Several);
        ~WriteScope();
        WriteScope(const WriteScope&) = delete;
        WriteScope& operator=(const WriteScope&) = delete;
        void commit();

    private:
        enum class Kind { None, Savepoint, Own };
        IndexedStore& m_store;
        Kind m_kind = Kind::None;
        bool m_done = false;
    };

    // --- What an engine supplies.
    // The quoted name of a table of the service, or of the connection's own temporary schema.
    virtual std::string qualifiedTable(const std::string& table, bool scratch) const = 0;
    virtual void createTables(const FileInfo& fi) = 0;
    // The catalogue: each file's name with the description of the indexes it was built with.
    virtual std::vector<std::pair<std::string, std::string>> readCatalog() = 0;
    // Adds a file; one that another planner added a moment ago is kept as it is.
    virtual void addToCatalog(const std::string& file, const std::string& indexes) = 0;
    virtual void setCatalogIndexes(const std::string& file, const std::string& indexes) = 0;
    // Refuses a name the engine cannot hold; checkNewFileName has passed.
    virtual void checkFileName(const std::string&) const {}

    virtual bool readRecord(const FileInfo& fi, const std::string& key, std::string& text) = 0;
    virtual void putRecord(const FileInfo& fi, const std::string& key, const std::string& text) = 0;
    virtual void deleteRecord(const FileInfo& fi, const std::string& key) = 0;
    virtual void deleteIndexEntries(const FileInfo& fi, const std::string& key,
                                    const std::vector<IndexEntry>& entries) = 0;
    virtual void insertIndexEntries(const FileInfo& fi, const std::string& key,
                                    const std::vector<IndexEntry>& entries) = 0;
    virtual void clearIndex(const FileInfo& fi) = 0;

    // Fixed SQL: run, failing with a base::Error; or run whatever happens, when an error is on its way.
    virtual void execute(const std::string& sql) = 0;
    virtual void quietly(const char* sql) = 0;
    // A transaction; `lock` makes it wait for, and hold off, the other planners' changes.
    virtual void beginTransaction(bool lock) = 0;
    // Commits, failing when nothing could be committed.
    virtual void commitTransaction() = 0;
    virtual void rollbackTransaction() = 0;
    // True while the engine holds a transaction open: a failed commit may or may not have ended it.
    virtual bool transactionOpen() const = 0;
    // What the engine holds open that the store's own state does not show (a statement never reset,
    // a transaction begun outside the store); empty when nothing.
    virtual std::string engineOpenWork() const {
        return transactionOpen() ? "une transaction ouverte hors de la base" : "";
    }
    // The read transaction of a consistent read: one view of the database from its first read on.
    virtual void beginSnapshot() = 0;
    virtual void endSnapshotTransaction() = 0;
    // True when a failed statement makes the transaction around it unusable.
    virtual bool failedStatementSpoilsTransaction() const = 0;

    // --- Shared steps for the engines.
    // Makes each non-work file of the service, in the caller's transaction.
    void createServiceFiles();
    // Reads the catalogue, rebuilding an index made by a program that indexed other fields, and makes
    // the work files.
    void loadCatalog();
    const FileInfo& info(const std::string& file);
    // The same, for a file that must have index entries to be searched by range.
    const FileInfo& indexedInfo(const std::string& file);
    static bool isIndexed(const FileInfo& fi);
    // Ends the read transaction of beginRead, if one is open; later reads see the newest records.
    void endSnapshot();
    bool inSnapshot() const { return m_snapshot; }

private:
    FileInfo infoFor(const std::string& file, bool scratch) const;
    void rebuildIndex(const std::string& file);
    // A transaction that ended without its commit took with it the files it made.
    void forgetFilesOfTransaction();
    // Brings the index entries of one record from those of its old text to those of its new one; a null
    // text stands for no record.
    void updateIndexEntries(const FileInfo& fi, const std::string& key, const std::string* oldText,
                            const std::string* newText);

    std::map<std::string, FileInfo> m_files;
    // Files made inside the open transaction: a rollback takes their tables away, and the catalogue
    // above must forget them with it.
    std::vector<std::string> m_filesOfTransaction;
    bool m_inTransaction = false;
    int m_readers = 0;        // beginRead calls not yet ended
    bool m_snapshot = false;  // a read transaction is open for them
};

}  // namespace mvdb
