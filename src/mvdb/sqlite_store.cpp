#include "mvdb/sqlite_store.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "base/error.h"
#include "mvdb/dictionary.h"

namespace mvdb {
namespace {

// "ZNDL": marks a database as this program's, so that another program's file is refused.
constexpr int kApplicationId = 0x5A4E444C;
constexpr int kSchemaVersion = 1;
constexpr int kBusyTimeoutMs = 10000;

std::string quoteIdentifier(const std::string& schema, const std::string& name) {
    return schema + ".\"" + name + "\"";
}

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

// Makes one change atomic: inside the caller's transaction a savepoint, outside it a transaction of
// its own. Changes to work files take no write lock on the shared database.
class SqliteStore::WriteScope {
public:
    WriteScope(SqliteStore& store, bool scratch) : m_store(store), m_nested(scratch) {
        if (!scratch) m_store.endSnapshot();
        m_nested = m_nested || m_store.m_inTransaction;
        m_store.exec(m_nested ? "SAVEPOINT zd_write" : "BEGIN IMMEDIATE");
    }
    ~WriteScope() {
        if (m_done) return;
        // Undo what the failed change did; the error that brought us here is already travelling.
        sqlite3_exec(m_store.m_db, m_nested ? "ROLLBACK TO zd_write; RELEASE zd_write" : "ROLLBACK", nullptr,
                     nullptr, nullptr);
    }
    void commit() {
        m_store.exec(m_nested ? "RELEASE zd_write" : "COMMIT");
        m_done = true;
    }

private:
    SqliteStore& m_store;
    bool m_nested;
    bool m_done = false;
};

std::unique_ptr<SqliteStore> SqliteStore::open(const std::string& path, OpenMode mode) {
    bool memory = path == ":memory:";
    bool exists = !memory && std::filesystem::exists(path);
    if (!memory && !exists && mode == OpenMode::ExistingOnly) {
        throw base::Error(base::codes::kStorage, "Base de données introuvable : " + path);
    }
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
    if (m_inTransaction || m_snapshot) sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
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
    if (m_path != ":memory:") exec("PRAGMA journal_mode=WAL");
    // A validated tournée must survive a power cut as well as a crash.
    exec("PRAGMA synchronous=FULL");
    exec("PRAGMA temp_store=MEMORY");
    // A display reads thousands of small records scattered over the file: with the default 2 MB cache
    // many were read from the file again at every display. Pages are mapped rather than copied.
    exec("PRAGMA cache_size=-65536");
    if (m_path != ":memory:") exec("PRAGMA mmap_size=268435456");
    if (tables == 0 || isNew) createSchema();
    loadCatalog();
}

void SqliteStore::createSchema() {
    exec("BEGIN IMMEDIATE");
    try {
        exec("PRAGMA application_id=" + std::to_string(kApplicationId));
        exec("PRAGMA user_version=" + std::to_string(kSchemaVersion));
        exec(
            "CREATE TABLE IF NOT EXISTS zd_files(name TEXT PRIMARY KEY, indexes TEXT NOT NULL) WITHOUT "
            "ROWID");
        for (const std::string& file : serviceFiles()) {
            if (!dictionaryFor(file).scratch) {
                createTables(file, false);
                Statement(*this, "INSERT OR IGNORE INTO zd_files(name, indexes) VALUES(?1, ?2)")
                    .bind(1, file)
                    .bind(2, dictionaryFor(file).describeIndexes())
                    .run();
            }
        }
        exec("COMMIT");
    } catch (...) {
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

void SqliteStore::createTables(const std::string& file, bool scratch) {
    std::string schema = scratch ? "temp" : "main";
    exec("CREATE TABLE IF NOT EXISTS " + quoteIdentifier(schema, "f_" + file) +
         "(key TEXT PRIMARY KEY, rec BLOB NOT NULL) WITHOUT ROWID");
    if (!scratch) {
        exec("CREATE TABLE IF NOT EXISTS " + quoteIdentifier(schema, "x_" + file) +
             "(fld INTEGER NOT NULL, k BLOB NOT NULL, key TEXT NOT NULL, PRIMARY KEY(fld, k, key)) WITHOUT "
             "ROWID");
    }
}

void SqliteStore::loadCatalog() {
    m_files.clear();
    std::vector<std::pair<std::string, std::string>> catalog;
    {
        Statement s(*this, "SELECT name, indexes FROM zd_files ORDER BY name");
        while (s.step())
            catalog.emplace_back(s.column(0), s.column(1));
    }
    for (const auto& [name, indexes] : catalog) {
        const FileDictionary& d = dictionaryFor(name);
        m_files[name] = {quoteIdentifier("main", "f_" + name), quoteIdentifier("main", "x_" + name), &d,
                         false};
        // A newer program may index other fields: rebuild so that every sentence stays exact.
        if (indexes != d.describeIndexes()) rebuildIndex(name);
    }
    for (const std::string& file : serviceFiles()) {
        const FileDictionary& d = dictionaryFor(file);
        if (!d.scratch) continue;
        createTables(file, true);
        m_files[file] = {quoteIdentifier("temp", "f_" + file), "", &d, true};
    }
}

void SqliteStore::rebuildIndex(const std::string& file) {
    FileInfo& fi = m_files.at(file);
    WriteScope scope(*this, false);
    exec("DELETE FROM " + fi.indexTable);
    std::vector<std::pair<std::string, std::string>> records;
    scanAll(file, [&](const std::string& key, const std::string& text) {
        records.emplace_back(key, text);
        return true;
    });
    for (const auto& [key, text] : records)
        updateIndexEntries(fi, key, nullptr, &text);
    Statement(*this, "UPDATE zd_files SET indexes = ?2 WHERE name = ?1")
        .bind(1, file)
        .bind(2, fi.dictionary->describeIndexes())
        .run();
    scope.commit();
}

bool SqliteStore::isIndexed(const FileInfo& fi) {
    return !fi.indexTable.empty() && !fi.dictionary->indexed.empty();
}

const SqliteStore::FileInfo& SqliteStore::info(const std::string& file) {
    auto it = m_files.find(file);
    if (it == m_files.end()) throw base::Error(base::codes::kUnknownFile, "Fichier inconnu : " + file);
    return it->second;
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

void SqliteStore::exec(const std::string& sql) {
    if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail("« " + sql + " »");
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

std::vector<std::string> SqliteStore::fileNames() {
    std::vector<std::string> names;
    for (const auto& [name, fi] : m_files)
        names.push_back(name);
    return names;
}

bool SqliteStore::hasFile(const std::string& file) {
    return m_files.count(file) != 0;
}

void SqliteStore::createFile(const std::string& file) {
    if (hasFile(file)) return;
    checkNewFileName(file);
    const FileDictionary& d = dictionaryFor(file);
    WriteScope scope(*this, false);
    createTables(file, false);
    Statement(*this, "INSERT INTO zd_files(name, indexes) VALUES(?1, ?2)")
        .bind(1, file)
        .bind(2, d.describeIndexes())
        .run();
    scope.commit();
    m_files[file] = {quoteIdentifier("main", "f_" + file), quoteIdentifier("main", "x_" + file), &d, false};
}

std::optional<std::string> SqliteStore::read(const std::string& file, const std::string& key) {
    std::string text;
    if (!readInto(file, key, text)) return std::nullopt;
    return text;
}

bool SqliteStore::readInto(const std::string& file, const std::string& key, std::string& text) {
    const FileInfo& fi = info(file);
    if (!fi.read) fi.read = prepare("SELECT rec FROM " + fi.table + " WHERE key = ?1");
    Statement s(*this, fi.read);
    s.bind(1, key);
    if (!s.step()) return false;
    s.column(0, text);
    return true;
}

void SqliteStore::updateIndexEntries(const FileInfo& fi, const std::string& key, const std::string* oldText,
                                     const std::string* newText) {
    // Only the entries that change are touched.
    const auto [gone, added] = indexChanges(*fi.dictionary, key, oldText, newText);
    if (!gone.empty()) {
        Statement s(*this, "DELETE FROM " + fi.indexTable + " WHERE fld = ?1 AND k = ?2 AND key = ?3");
        for (const IndexEntry& e : gone) {
            s.bind(1, e.field).bindBlob(2, e.sortKey).bind(3, key).run();
            s.again();
        }
    }
    if (!added.empty()) {
        Statement s(*this, "INSERT OR IGNORE INTO " + fi.indexTable + "(fld, k, key) VALUES(?1, ?2, ?3)");
        for (const IndexEntry& e : added) {
            s.bind(1, e.field).bindBlob(2, e.sortKey).bind(3, key).run();
            s.again();
        }
    }
}

void SqliteStore::write(const std::string& file, const std::string& key, const std::string& text) {
    const FileInfo& fi = info(file);
    checkKey(file, key);
    // A work file has no index entries: its change is the one statement, atomic by itself.
    if (fi.scratch) return upsert(fi, key, text);
    WriteScope scope(*this, fi.scratch);
    if (isIndexed(fi)) {
        std::optional<std::string> old = read(file, key);
        updateIndexEntries(fi, key, old ? &*old : nullptr, &text);
    }
    upsert(fi, key, text);
    scope.commit();
}

void SqliteStore::upsert(const FileInfo& fi, const std::string& key, const std::string& text) {
    Statement(*this, "INSERT INTO " + fi.table +
                         "(key, rec) VALUES(?1, ?2) ON CONFLICT(key) DO UPDATE SET rec = excluded.rec")
        .bind(1, key)
        .bindBlob(2, text)
        .run();
}

void SqliteStore::remove(const std::string& file, const std::string& key) {
    const FileInfo& fi = info(file);
    if (fi.scratch) {
        Statement(*this, "DELETE FROM " + fi.table + " WHERE key = ?1").bind(1, key).run();
        return;
    }
    WriteScope scope(*this, fi.scratch);
    if (isIndexed(fi)) {
        std::optional<std::string> old = read(file, key);
        if (!old) {
            scope.commit();
            return;
        }
        updateIndexEntries(fi, key, &*old, nullptr);
    }
    Statement(*this, "DELETE FROM " + fi.table + " WHERE key = ?1").bind(1, key).run();
    scope.commit();
}

void SqliteStore::removeBatch(const std::string& file, const std::vector<std::string>& keys) {
    const FileInfo& fi = info(file);
    if (keys.empty()) return;
    WriteScope scope(*this, fi.scratch);
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
        exec("DELETE FROM " + fi.table);
        exec("DELETE FROM " + fi.indexTable);
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
            if (!readInto(file, *key, text)) continue;
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
    const FileInfo& fi = info(file);
    Statement s(*this, "SELECT key, rec FROM " + fi.table + " ORDER BY key");
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
    const FileInfo& fi = info(file);
    if (fi.indexTable.empty()) {
        throw base::Error(base::codes::kStorage, "Le fichier " + file + " n'a pas d'index");
    }
    Statement s(*this, rangeSql(fi, range));
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
    const FileInfo& fi = info(file);
    std::string sql = range ? rangeSql(fi, *range) : "SELECT key, rec FROM " + fi.table + " ORDER BY key";
    std::vector<std::string> lines;
    Statement s(*this, "EXPLAIN QUERY PLAN " + sql);
    while (s.step())
        lines.push_back(s.column(3));
    return lines;
}

void SqliteStore::begin() {
    if (m_inTransaction) throw base::Error(base::codes::kStorage, "Une transaction est déjà ouverte");
    endSnapshot();
    exec("BEGIN IMMEDIATE");
    m_inTransaction = true;
}

void SqliteStore::commit() {
    if (!m_inTransaction) throw base::Error(base::codes::kStorage, "Aucune transaction ouverte");
    exec("COMMIT");
    m_inTransaction = false;
}

void SqliteStore::rollback() {
    if (!m_inTransaction) return;
    m_inTransaction = false;
    exec("ROLLBACK");
}

std::string SqliteStore::openTransaction() const {
    if (m_inTransaction) return "une transaction d'écriture";
    if (m_readers > 0) return std::to_string(m_readers) + " lecture(s) cohérente(s) non terminée(s)";
    // A statement stepped and never reset keeps a read transaction of its own.
    for (sqlite3_stmt* s = sqlite3_next_stmt(m_db, nullptr); s; s = sqlite3_next_stmt(m_db, s)) {
        if (sqlite3_stmt_busy(s)) return std::string("l'instruction non terminée « ") + sqlite3_sql(s) + " »";
    }
    if (!sqlite3_get_autocommit(m_db)) return "une transaction ouverte hors de la base";
    return "";
}

void SqliteStore::beginRead() {
    if (m_readers++ > 0 || m_inTransaction) return;
    // Deferred: in WAL mode the first read fixes the snapshot and no writer is ever kept waiting.
    exec("BEGIN");
    m_snapshot = true;
}

void SqliteStore::endRead() {
    if (m_readers > 0 && --m_readers == 0) endSnapshot();
}

void SqliteStore::endSnapshot() {
    if (!m_snapshot) return;
    m_snapshot = false;
    // Only work files can have changed inside; they are kept.
    try {
        exec("COMMIT");
    } catch (const base::Error&) {
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

}  // namespace mvdb
