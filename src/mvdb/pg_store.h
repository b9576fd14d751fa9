#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mvdb/indexed_store.h"
#include "mvdb/pg_connection.h"
#include "mvdb/sqlite_store.h"

namespace mvdb {

struct FileDictionary;

// The index entries of some records as three arrays, in the server's text form, for
// unnest($1::integer[], $2::bytea[], $3::bytea[]): index numbers, sort keys, the records' keys. Many
// entries then go to the server in one statement.
struct IndexEntryArrays {
    std::string fields, sortKeys, keys;
};
// Records are given as (key, whole text).
IndexEntryArrays indexEntryArrays(const FileDictionary& dictionary,
                                  const std::vector<std::pair<std::string_view, std::string_view>>& records);

// The shared store: one PostgreSQL database that planners on several computers reach at once. Same
// layout as the embedded store: each file is a table of (key, record) and a table of index entries
// (field, sort key, key), all BYTEA so that order is byte order; work files are TEMP tables of the
// connection. Every change takes a lock held to the end of its transaction, so writers pass one at a
// time as they do on the embedded store, and a change either lands whole or not at all.
class PgStore : public IndexedStore {
public:
    // Connects with a libpq connection text ("postgresql://..." or "key=value ..."; an empty text takes
    // the PG* environment variables). The files live in `schema`, or, when it is empty, in the first
    // schema that the connection's search_path names, whatever its name; either is made when missing.
    // ExistingOnly refuses a schema that holds no service; a schema of another program is always refused.
    static std::unique_ptr<PgStore> open(const std::string& connection, OpenMode mode,
                                         const std::string& schema = {});
    // Removes a schema and every file in it: for services made only to be thrown away, as in tests.
    static void dropSchema(const std::string& connection, const std::string& schema);
    ~PgStore() override;
    PgStore(const PgStore&) = delete;
    PgStore& operator=(const PgStore&) = delete;

    void writeBatch(const std::string& file,
                    const std::vector<std::pair<std::string, std::string>>& records) override;
    void removeBatch(const std::string& file, const std::vector<std::string>& keys) override;
    void scanAll(const std::string& file, const RecordVisitor& visit) override;
    // One statement for all the files (pg_bulk_read.cpp).
    void scanFiles(const std::vector<std::string>& files, const FileRecordVisitor& visit) override;
    void scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) override;
    std::size_t count(const std::string& file) override;
    // The plan with sequential scans priced out, as the server plans for files large enough that an
    // index pays: a table read whole in it is a table that no index can serve.
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
    // The server cuts names longer than 63 bytes.
    void checkFileName(const std::string& file) const override;
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
    // Every change takes the schema's write lock, held to the end of its transaction.
    void beginTransaction(bool lock) override;
    void commitTransaction() override;
    void rollbackTransaction() override;
    bool transactionOpen() const override;
    // Repeatable read: one snapshot for every statement until the end, taken at the first.
    void beginSnapshot() override;
    void endSnapshotTransaction() override;
    // After a failed statement the server refuses every other one until the transaction ends.
    bool failedStatementSpoilsTransaction() const override { return true; }

private:
    explicit PgStore(const std::string& connection);
    void configure(const std::string& schema, OpenMode mode);
    void createSchema();
    // `range` serves ScanRange only.
    std::string statementSql(StoreStatement statement, const FileInfo& fi,
                             const KeyRange* range = nullptr) const;
    static std::vector<pg::Param> rangeParams(const KeyRange& range);
    using Records = std::vector<std::pair<std::string_view, std::string_view>>;
    // Removes the index entries of these records, given with their whole texts, in one statement.
    void deleteIndexEntriesOf(const FileInfo& fi, const Records& records);

    pg::Connection m_db;
    std::string m_schema;  // quoted
    std::int64_t m_lockKey = 0;
};

}  // namespace mvdb
