#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "mvdb/indexed_store.h"

struct sqlite3;
struct sqlite3_stmt;

namespace mvdb {

enum class OpenMode { CreateIfMissing, ExistingOnly };

// The embedded store: one SQLite file in WAL mode with a busy timeout, so that a second planner's
// commit waits instead of failing. Each file is a table of (key, record) and a table of index entries
// (field, sort key, key); work files live in the connection's temporary schema and cost no disk sync.
class SqliteStore : public IndexedStore {
public:
    // Opens or creates the database. ":memory:" gives a private in-memory database. Fails with a clear
    // message for a missing file (ExistingOnly), a file that is not a database, or the database of
    // another program.
    static std::unique_ptr<SqliteStore> open(const std::string& path, OpenMode mode);
    // Removes the database file at `path` with its journal, write-ahead log and shared memory, whatever
    // of them exists; for a database that no connection holds open any more. Never fails.
    static void removeFiles(const std::string& path);
    ~SqliteStore() override;
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;

    void removeBatch(const std::string& file, const std::vector<std::string>& keys) override;
    void scanAll(const std::string& file, const RecordVisitor& visit) override;
    void scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) override;
    std::size_t count(const std::string& file) override;
    std::vector<std::string> explainScan(const std::string& file,
                                         const std::optional<KeyRange>& range) override;
    std::string statementText(StoreStatement statement, const std::string& file,
                              const std::optional<KeyRange>& range = std::nullopt) override;

protected:
    std::string qualifiedTable(const std::string& table, bool scratch) const override;
    void createTables(const FileInfo& fi) override;
    std::vector<std::pair<std::string, std::string>> readCatalog() override;
    void addToCatalog(const std::string& file, const std::string& indexes) override;
    void setCatalogIndexes(const std::string& file, const std::string& indexes) override;
    bool readRecord(const FileInfo& fi, const std::string& key, std::string& text) override;
    void putRecord(const FileInfo& fi, const std::string& key, const std::string& text) override;
    void deleteRecord(const FileInfo& fi, const std::string& key) override;
    void deleteIndexEntries(const FileInfo& fi, const std::string& key,
                            const std::vector<IndexEntry>& entries) override;
    void insertIndexEntries(const FileInfo& fi, const std::string& key,
                            const std::vector<IndexEntry>& entries) override;
    void clearIndex(const FileInfo& fi) override;
    void execute(const std::string& sql) override;
    void quietly(const char* sql) override;
    void beginTransaction(bool lock) override;
    void commitTransaction() override;
    void rollbackTransaction() override;
    bool transactionOpen() const override;
    std::string engineOpenWork() const override;
    void beginSnapshot() override;
    void endSnapshotTransaction() override;
    // A failed statement is undone alone; the transaction goes on.
    bool failedStatementSpoilsTransaction() const override { return false; }

private:
    class Statement;

    SqliteStore(sqlite3* db, std::string path);
    void configure(bool isNew);
    void createSchema();
    sqlite3_stmt* prepare(const std::string& sql);
    std::string rangeSql(const FileInfo& fi, const KeyRange& range) const;
    // `range` serves ScanRange only.
    std::string statementSql(StoreStatement statement, const FileInfo& fi,
                             const KeyRange* range = nullptr) const;
    [[noreturn]] void fail(const std::string& what) const;

    sqlite3* m_db;
    std::string m_path;
    std::unordered_map<std::string, sqlite3_stmt*> m_statements;
};

}  // namespace mvdb
