#include "mvdb/sqlite_store.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <tuple>

#include "base/error.h"
#include "mvdb/dictionary.h"
#include "mvdb/private_files.h"

namespace mvdb {
namespace {

// "ZNDL": marks a database as this program's, so that another program's file is refused.
constexpr int kApplicationId = 0x5A4E444C;
constexpr int kSchemaVersion = 1;
constexpr int kBusyTimeoutMs = 10000;

}  // namespace

// A prepared statement in use: reset and unbound when the use ends, so the cache can hand it out again.
class SqliteStore::Statement {
public:
    Statement(SqliteStore& store, const std::string& sql) : m_store(store), m_stmt(store.prepare(sql)) {}
    Statement(SqliteStore& store, sqlite3_stmt* prepared) : m_store(store), m_stmt(prepared) {}
    ~Statement() {
        sqlite3_reset(m_stmt);
        sqlite3_clear_bindings(m_stmt);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(int index, const std::string& text) {
        check(sqlite3_bind_text(m_stmt, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
        return *this;
    }
    Statement& bindBlob(int index, const std::string& bytes) {
        check(sqlite3_bind_blob(m_stmt, index, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC));
        return *this;
    }
    Statement& bind(int index, int value) {
        check(sqlite3_bind_int(m_stmt, index, value));
        return *this;
    }
    // Steps once: true while there is a row.
    bool step() {
        int rc = sqlite3_step(m_stmt);
        if (rc == SQLITE_ROW) return true;
        if (rc == SQLITE_DONE) return false;
        m_store.fail("");
    }
    void run() {
        while (step()) {
        }
    }
    // Makes the statement ready to run again with new bindings.
    void again() { sqlite3_reset(m_stmt); }
    // Reads a column into `out`, whose storage is reused from row to row.
    void column(int index, std::string& out) const {
        auto* data = static_cast<const char*>(sqlite3_column_blob(m_stmt, index));
        out.assign(data ? data : "",
                   data ? static_cast<std::size_t>(sqlite3_column_bytes(m_stmt, index)) : 0);
    }
    std::string column(int index) const {
        auto* data = static_cast<const char*>(sqlite3_column_blob(m_stmt, index));
        int size = sqlite3_column_bytes(m_stmt, index);
        return data ? std::string(data, static_cast<std::size_t>(size)) : std::string();
    }
    long long integer(int index) const { return sqlite3_column_int64(m_stmt, index); }

private:
    void check(int rc) {
        if (rc != SQLITE_OK) m_store.fail("");
    }
    SqliteStore& m_store;
    sqlite3_stmt* m_stmt;
};

void SqliteStore::removeFiles(const std::string& path) {
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"})
        std::filesystem::remove(path + suffix, ignored);
}

std::unique_ptr<SqliteStore> SqliteStore::open(const std::string& path, OpenMode mode) {
    bool memory = path == ":memory:";
    bool exists = !memory && std::filesystem::exists(path);
    if (!memory && !exists && mode == OpenMode::ExistingOnly) {
        throw base::Error(base::codes::kStorage, "Base de données introuvable : " + path);
    }
    if (!memory && !exists) createPrivateFile(path);
    sqlite3* db = nullptr;
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    int rc = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
    if (rc != SQLITE_OK) {
        std::string reason = db ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
        sqlite3_close(db);
        throw base::Error(base::codes::kStorage, "Ouverture impossible de la base " + path + " : " + reason);
    }
    std::unique_ptr<SqliteStore> store(new SqliteStore(db, path));
    store->configure(!exists);
    return store;
}

SqliteStore::SqliteStore(sqlite3* db, std::string path) : m_db(db), m_path(std::move(path)) {}

SqliteStore::~SqliteStore() {
    for (auto& [sql, stmt] : m_statements)
        sqlite3_finalize(stmt);
    if (transactionOpen()) sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(m_db);
}

void SqliteStore::configure(bool isNew) {
    sqlite3_busy_timeout(m_db, kBusyTimeoutMs);
    int applicationId = 0;
    int tables = 0;
    // The first read tells whether the file is a database at all.
    if (sqlite3_exec(m_db, "SELECT 1 FROM sqlite_schema LIMIT 1", nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw base::Error(
            base::codes::kStorage,
            "Le fichier " + m_path + " n'est pas une base de données : " + std::string(sqlite3_errmsg(m_db)));
    }
    {
        Statement s(*this, "PRAGMA application_id");
        if (s.step()) applicationId = static_cast<int>(s.integer(0));
    }
    {
        Statement s(*this, "SELECT count(*) FROM sqlite_schema");
        if (s.step()) tables = static_cast<int>(s.integer(0));
    }
    if (tables > 0 && applicationId != kApplicationId) {
        throw base::Error(base::codes::kStorage,
                          "La base " + m_path + " appartient à un autre programme : elle n'est pas ouverte");
    }
    if (m_path != ":memory:") execute("PRAGMA journal_mode=WAL");
    // A validated tournée must survive a power cut as well as a crash.
    execute("PRAGMA synchronous=FULL");
    execute("PRAGMA temp_store=MEMORY");
    // A display reads thousands of small records scattered over the file: with the default 2 MB cache
    // many were read from the file again at every display. Pages are mapped rather than copied.
    execute("PRAGMA cache_size=-65536");
    if (m_path != ":memory:") execute("PRAGMA mmap_size=268435456");
    if (tables == 0 || isNew) createSchema();
    loadCatalog();
}

void SqliteStore::createSchema() {
    beginTransaction(true);
    try {
        execute("PRAGMA application_id=" + std::to_string(kApplicationId));
        execute("PRAGMA user_version=" + std::to_string(kSchemaVersion));
        execute(
            "CREATE TABLE IF NOT EXISTS zd_files(name TEXT PRIMARY KEY, indexes TEXT NOT NULL) WITHOUT "
            "ROWID");
        createServiceFiles();
        commitTransaction();
    } catch (...) {
        quietly("ROLLBACK");
        throw;
    }
}

std::string SqliteStore::qualifiedTable(const std::string& table, bool scratch) const {
    return std::string(scratch ? "temp" : "main") + ".\"" + table + "\"";
}

void SqliteStore::createTables(const FileInfo& fi) {
    execute(statementSql(StoreStatement::CreateTable, fi));
    if (fi.indexTable.empty()) return;
    execute(
        "CREATE TABLE IF NOT EXISTS " + fi.indexTable +
        "(fld INTEGER NOT NULL, k BLOB NOT NULL, key TEXT NOT NULL, PRIMARY KEY(fld, k, key)) WITHOUT ROWID");
}

std::vector<std::pair<std::string, std::string>> SqliteStore::readCatalog() {
    std::vector<std::pair<std::string, std::string>> catalog;
    Statement s(*this, "SELECT name, indexes FROM zd_files ORDER BY name");
    while (s.step())
        catalog.emplace_back(s.column(0), s.column(1));
    return catalog;
}

void SqliteStore::addToCatalog(const std::string& file, const std::string& indexes) {
    Statement(*this, "INSERT OR IGNORE INTO zd_files(name, indexes) VALUES(?1, ?2)")
        .bind(1, file)
        .bind(2, indexes)
        .run();
}

void SqliteStore::setCatalogIndexes(const std::string& file, const std::string& indexes) {
    Statement(*this, "UPDATE zd_files SET indexes = ?2 WHERE name = ?1").bind(1, file).bind(2, indexes).run();
}

sqlite3_stmt* SqliteStore::prepare(const std::string& sql) {
    auto it = m_statements.find(sql);
    if (it != m_statements.end()) return it->second;
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v3(m_db, sql.c_str(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &stmt,
                           nullptr) != SQLITE_OK) {
        fail("préparation de « " + sql + " »");
    }
    m_statements.emplace(sql, stmt);
    return stmt;
}

void SqliteStore::execute(const std::string& sql) {
    if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail("« " + sql + " »");
}

void SqliteStore::quietly(const char* sql) {
    sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr);
}

void SqliteStore::fail(const std::string& what) const {
    int code = sqlite3_errcode(m_db);
    std::string message = std::string(sqlite3_errmsg(m_db));
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
        throw base::Error(
            base::codes::kBusy,
            "La base " + m_path + " est occupée par un autre poste ; réessayez dans un instant");
    }
    std::string text = "Erreur de la base " + m_path;
    if (!what.empty()) text += " (" + what + ")";
    throw base::Error(base::codes::kStorage, text + " : " + message);
}

std::string SqliteStore::statementText(StoreStatement statement, const std::string& file,
                                       const std::optional<KeyRange>& range) {
    const FileInfo& fi = statement == StoreStatement::ScanRange ? indexedInfo(file) : info(file);
    return statementSql(statement, fi, range ? &*range : nullptr);
}

std::string SqliteStore::statementSql(StoreStatement statement, const FileInfo& fi,
                                      const KeyRange* range) const {
    switch (statement) {
        case StoreStatement::Read:
            return "SELECT rec FROM " + fi.table + " WHERE key = ?1";
        case StoreStatement::Write:
            return "INSERT INTO " + fi.table +
                   "(key, rec) VALUES(?1, ?2) ON CONFLICT(key) DO UPDATE SET rec = excluded.rec";
        case StoreStatement::Remove:
            return "DELETE FROM " + fi.table + " WHERE key = ?1";
        case StoreStatement::ScanAll:
            return "SELECT key, rec FROM " + fi.table + " ORDER BY key";
        case StoreStatement::ScanRange:
            return rangeSql(fi, range ? *range : KeyRange{});
        case StoreStatement::CreateTable:
            return "CREATE TABLE IF NOT EXISTS " + fi.table +
                   "(key TEXT PRIMARY KEY, rec BLOB NOT NULL) WITHOUT ROWID";
    }
    return {};
}

bool SqliteStore::readRecord(const FileInfo& fi, const std::string& key, std::string& text) {
    if (!fi.pointRead) fi.pointRead = prepare(statementSql(StoreStatement::Read, fi));
    Statement s(*this, static_cast<sqlite3_stmt*>(fi.pointRead));
    s.bind(1, key);
    if (!s.step()) return false;
    s.column(0, text);
    return true;
}

void SqliteStore::putRecord(const FileInfo& fi, const std::string& key, const std::string& text) {
    Statement(*this, statementSql(StoreStatement::Write, fi)).bind(1, key).bindBlob(2, text).run();
}

void SqliteStore::deleteRecord(const FileInfo& fi, const std::string& key) {
    Statement(*this, statementSql(StoreStatement::Remove, fi)).bind(1, key).run();
}

void SqliteStore::deleteIndexEntries(const FileInfo& fi, const std::string& key,
                                     const std::vector<IndexEntry>& entries) {
    Statement s(*this, "DELETE FROM " + fi.indexTable + " WHERE fld = ?1 AND k = ?2 AND key = ?3");
    for (const IndexEntry& e : entries) {
        s.bind(1, e.field).bindBlob(2, e.sortKey).bind(3, key).run();
        s.again();
    }
}

void SqliteStore::insertIndexEntries(const FileInfo& fi, const std::string& key,
                                     const std::vector<IndexEntry>& entries) {
    Statement s(*this, "INSERT OR IGNORE INTO " + fi.indexTable + "(fld, k, key) VALUES(?1, ?2, ?3)");
    for (const IndexEntry& e : entries) {
        s.bind(1, e.field).bindBlob(2, e.sortKey).bind(3, key).run();
        s.again();
    }
}

void SqliteStore::clearIndex(const FileInfo& fi) {
    execute("DELETE FROM " + fi.indexTable);
}

void SqliteStore::removeBatch(const std::string& file, const std::vector<std::string>& keys) {
    const FileInfo& fi = info(file);
    if (keys.empty()) return;
    WriteScope scope(*this, fi);
    // The keys in order, each once: the deletes below walk the file in its own order.
    std::vector<const std::string*> sorted;
    sorted.reserve(keys.size());
    for (const std::string& key : keys)
        sorted.push_back(&key);
    std::sort(sorted.begin(), sorted.end(),
              [](const std::string* a, const std::string* b) { return *a < *b; });
    sorted.erase(std::unique(sorted.begin(), sorted.end(),
                             [](const std::string* a, const std::string* b) { return *a == *b; }),
                 sorted.end());
    if (isIndexed(fi) && 2 * sorted.size() > count(file)) {
        // Most of the file goes, as in the purge of old tournées: emptying both tables and writing back
        // what stays takes a fraction of the statements that deleting each record and each of its index
        // entries takes (a seek for every one). What is left is the same records and index entries.
        std::vector<std::pair<std::string, std::string>> kept;
        scanAll(file, [&](const std::string& key, const std::string& text) {
            const bool goes =
                std::binary_search(sorted.begin(), sorted.end(), &key,
                                   [](const std::string* a, const std::string* b) { return *a < *b; });
            if (!goes) kept.emplace_back(key, text);
            return true;
        });
        execute("DELETE FROM " + fi.table);
        clearIndex(fi);
        std::vector<std::tuple<int, std::string, const std::string*>> entries;
        {
            Statement s(*this, "INSERT INTO " + fi.table + "(key, rec) VALUES(?1, ?2)");
            for (const auto& [key, text] : kept) {
                s.bind(1, key).bindBlob(2, text).run();
                s.again();
                for (IndexEntry& e : indexEntries(*fi.dictionary, key, text))
                    entries.emplace_back(e.field, std::move(e.sortKey), &key);
            }
        }
        std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
            if (std::get<0>(a) != std::get<0>(b)) return std::get<0>(a) < std::get<0>(b);
            const int order = std::get<1>(a).compare(std::get<1>(b));
            return order < 0 || (order == 0 && *std::get<2>(a) < *std::get<2>(b));
        });
        Statement s(*this, "INSERT INTO " + fi.indexTable + "(fld, k, key) VALUES(?1, ?2, ?3)");
        for (const auto& [field, sortKey, key] : entries) {
            s.bind(1, field).bindBlob(2, sortKey).bind(3, *key).run();
            s.again();
        }
        scope.commit();
        return;
    }
    if (isIndexed(fi)) {
        // Per index, the sort keys of the records' values with their record's key.
        std::map<int, std::vector<std::pair<std::string, const std::string*>>> gone;
        std::string text;
        for (const std::string* key : sorted) {
            if (!readRecord(fi, *key, text)) continue;
            for (IndexEntry& e : indexEntries(*fi.dictionary, *key, text))
                gone[e.field].emplace_back(std::move(e.sortKey), key);
        }
        Statement s(*this, "DELETE FROM " + fi.indexTable + " WHERE fld = ?1 AND k = ?2 AND key = ?3");
        for (auto& [field, entries] : gone) {
            std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
                const int order = a.first.compare(b.first);
                return order < 0 || (order == 0 && *a.second < *b.second);
            });
            for (const auto& [sortKey, key] : entries) {
                s.bind(1, field).bindBlob(2, sortKey).bind(3, *key).run();
                s.again();
            }
        }
    }
    Statement s(*this, "DELETE FROM " + fi.table + " WHERE key = ?1");
    for (const std::string* key : sorted) {
        s.bind(1, *key).run();
        s.again();
    }
    scope.commit();
}

void SqliteStore::scanAll(const std::string& file, const RecordVisitor& visit) {
    Statement s(*this, statementSql(StoreStatement::ScanAll, info(file)));
    std::string key, text;
    while (s.step()) {
        s.column(0, key);
        s.column(1, text);
        if (!visit(key, text)) break;
    }
}

std::string SqliteStore::rangeSql(const FileInfo& fi, const KeyRange& range) const {
    // CROSS JOIN keeps the index table in the outer loop: without statistics the planner could
    // otherwise walk every record and probe the index for each.
    std::string sql = "SELECT m.key, m.rec FROM " + fi.indexTable + " AS x CROSS JOIN " + fi.table +
                      " AS m ON m.key = x.key WHERE x.fld = ?1 AND x.k " + (range.lowInclusive ? ">=" : ">") +
                      " ?2";
    if (!range.high.empty()) sql += std::string(" AND x.k ") + (range.highInclusive ? "<=" : "<") + " ?3";
    return sql;
}

void SqliteStore::scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) {
    Statement s(*this, rangeSql(indexedInfo(file), range));
    s.bind(1, range.field).bindBlob(2, range.low);
    if (!range.high.empty()) s.bindBlob(3, range.high);
    std::string key, text;
    while (s.step()) {
        s.column(0, key);
        s.column(1, text);
        if (!visit(key, text)) break;
    }
}

std::size_t SqliteStore::count(const std::string& file) {
    Statement s(*this, "SELECT count(*) FROM " + info(file).table);
    return s.step() ? static_cast<std::size_t>(s.integer(0)) : 0;
}

std::vector<std::string> SqliteStore::explainScan(const std::string& file,
                                                  const std::optional<KeyRange>& range) {
    std::vector<std::string> lines;
    Statement s(*this,
                "EXPLAIN QUERY PLAN " +
                    statementText(range ? StoreStatement::ScanRange : StoreStatement::ScanAll, file, range));
    while (s.step())
        lines.push_back(s.column(3));
    return lines;
}

void SqliteStore::beginTransaction(bool lock) {
    // Immediate: the write lock is taken now, so a second planner waits here rather than failing later.
    execute(lock ? "BEGIN IMMEDIATE" : "BEGIN");
}

void SqliteStore::commitTransaction() {
    execute("COMMIT");
}

void SqliteStore::rollbackTransaction() {
    execute("ROLLBACK");
}

bool SqliteStore::transactionOpen() const {
    return sqlite3_get_autocommit(m_db) == 0;
}

std::string SqliteStore::engineOpenWork() const {
    // A statement stepped and never reset keeps a read transaction of its own.
    for (sqlite3_stmt* s = sqlite3_next_stmt(m_db, nullptr); s; s = sqlite3_next_stmt(m_db, s)) {
        if (sqlite3_stmt_busy(s)) return std::string("l'instruction non terminée « ") + sqlite3_sql(s) + " »";
    }
    return IndexedStore::engineOpenWork();
}

void SqliteStore::beginSnapshot() {
    // Deferred: in WAL mode the first read fixes the snapshot and no writer is ever kept waiting.
    execute("BEGIN");
}

void SqliteStore::endSnapshotTransaction() {
    // Only work files can have changed inside; they are kept.
    try {
        execute("COMMIT");
    } catch (const base::Error&) {
        quietly("ROLLBACK");
        throw;
    }
}

}  // namespace mvdb
