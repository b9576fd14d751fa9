#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "mvdb/store.h"

struct sqlite3;
struct sqlite3_stmt;

namespace mvdb {

struct FileDictionary;

enum class OpenMode { CreateIfMissing, ExistingOnly };

// The embedded store: one SQLite file in WAL mode with a busy timeout, so that a second planner's
// commit waits instead of failing. Each file is a table of (key, record) and a table of index entries
// (field, sort key, key); work files live in the connection's temporary schema and cost no disk sync.
class SqliteStore : public Store {
public:
    // Opens or creates the database. ":memory:" gives a private in-memory database. Fails with a clear
    // message for a missing file (ExistingOnly), a file that is not a database, or the database of
    // another program.
    static std::unique_ptr<SqliteStore> open(const std::string& path, OpenMode mode);
    ~SqliteStore() override;
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;

    std::vector<std::string> fileNames() override;
    bool hasFile(const std::string& file) override;
    void createFile(const std::string& file) override;
    std::optional<std::string> read(const std::string& file, const std::string& key) override;
    bool readInto(const std::string& file, const std::string& key, std::string& text) override;
    void write(const std::string& file, const std::string& key, const std::string& text) override;
    void remove(const std::string& file, const std::string& key) override;
    void removeBatch(const std::string& file, const std::vector<std::string>& keys) override;
    void scanAll(const std::string& file, const RecordVisitor& visit) override;
    void scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) override;
    std::size_t count(const std::string& file) override;
    std::vector<std::string> explainScan(const std::string& file,
                                         const std::optional<KeyRange>& range) override;
    void begin() override;
    void commit() override;
    void rollback() override;
    bool inTransaction() const override { return m_inTransaction; }
    std::string openTransaction() const override;
    void beginRead() override;
    void endRead() override;

private:
    struct FileInfo {
        std::string table;       // quoted, schema-qualified table of records
        std::string indexTable;  // quoted table of index entries; empty when the file has no index
        const FileDictionary* dictionary = nullptr;
        bool scratch = false;
        // The point read, prepared on first use: a display reads thousands of records one by one.
        mutable sqlite3_stmt* read = nullptr;
    };
    class Statement;
    class WriteScope;
    // Ends the read transaction of beginRead, if one is open; later reads see the newest records.
    void endSnapshot();

    SqliteStore(sqlite3* db, std::string path);
    void configure(bool isNew);
    void createSchema();
    void loadCatalog();
    void createTables(const std::string& file, bool scratch);
    void rebuildIndex(const std::string& file);
    const FileInfo& info(const std::string& file);
    sqlite3_stmt* prepare(const std::string& sql);
    void exec(const std::string& sql);
    static bool isIndexed(const FileInfo& fi);
    // Brings the index entries of one record from those of its old text to those of its new one;
    // a null text stands for no record.
    void updateIndexEntries(const FileInfo& fi, const std::string& key, const std::string* oldText,
                            const std::string* newText);
    std::string rangeSql(const FileInfo& fi, const KeyRange& range) const;
    // Writes the record's row, creating or replacing it.
    void upsert(const FileInfo& fi, const std::string& key, const std::string& text);
    [[noreturn]] void fail(const std::string& what) const;

    sqlite3* m_db;
    std::string m_path;
    std::map<std::string, FileInfo> m_files;
    std::unordered_map<std::string, sqlite3_stmt*> m_statements;
    bool m_inTransaction = false;
    int m_readers = 0;        // beginRead calls not yet ended
    bool m_snapshot = false;  // a read transaction is open for them
};

}  // namespace mvdb
