#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "mvdb/pg_connection.h"
#include "mvdb/sqlite_store.h"
#include "mvdb/store.h"

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
class PgStore : public Store {
public:
    // Connects with a libpq connection text ("postgresql://..." or "key=value ..."; an empty text takes
    // the PG* environment variables). The files live in `schema`, created when missing, or in the
    // connection's current schema when it is empty. ExistingOnly refuses a schema that holds no
    // service; a schema of another program is always refused.
    static std::unique_ptr<PgStore> open(const std::string& connection, OpenMode mode,
                                         const std::string& schema = {});
    // Removes a schema and every file in it: for services made only to be thrown away, as in tests.
    static void dropSchema(const std::string& connection, const std::string& schema);
    ~PgStore() override;
    PgStore(const PgStore&) = delete;
    PgStore& operator=(const PgStore&) = delete;

    std::vector<std::string> fileNames() override;
    bool hasFile(const std::string& file) override;
    void createFile(const std::string& file) override;
    std::optional<std::string> read(const std::string& file, const std::string& key) override;
    void write(const std::string& file, const std::string& key, const std::string& text) override;
    void remove(const std::string& file, const std::string& key) override;
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
    void begin() override;
    void commit() override;
    void rollback() override;
    bool inTransaction() const override { return m_inTransaction; }
    void beginRead() override;
    void endRead() override;

private:
    struct FileInfo {
        std::string name;
        std::string table;       // quoted, schema-qualified table of records
        std::string indexTable;  // quoted table of index entries; empty for a work file
        const FileDictionary* dictionary = nullptr;
        bool scratch = false;
    };
    class WriteScope;
    // Ends the read transaction of beginRead, if one is open; later reads see the newest records.
    void endSnapshot();

    explicit PgStore(const std::string& connection);
    void configure(const std::string& schema, OpenMode mode);
    void createSchema();
    void loadCatalog();
    void createTables(const std::string& file, bool scratch);
    void rebuildIndex(const std::string& file);
    FileInfo infoFor(const std::string& file, bool scratch) const;
    const FileInfo& info(const std::string& file);
    static bool isIndexed(const FileInfo& fi);
    void lockForWriting();
    void commitOrFail();
    void updateIndexEntries(const FileInfo& fi, const std::string& key, const std::string* oldText,
                            const std::string* newText);
    std::string rangeSql(const FileInfo& fi, const KeyRange& range) const;
    static std::vector<pg::Param> rangeParams(const KeyRange& range);

    pg::Connection m_db;
    std::string m_schema;  // quoted
    std::int64_t m_lockKey = 0;
    std::map<std::string, FileInfo> m_files;
    bool m_inTransaction = false;
    int m_readers = 0;        // beginRead calls not yet ended
    bool m_snapshot = false;  // a read transaction is open for them
};

}  // namespace mvdb
