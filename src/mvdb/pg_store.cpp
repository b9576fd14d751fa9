#include "mvdb/pg_store.h"

#include <algorithm>
#include <cstdint>

#include "base/error.h"
#include "mvdb/dictionary.h"

namespace mvdb {
namespace {

using pg::Param;

// Marks a schema as this program's, so that another program's tables are refused.
constexpr const char* kProgram = "Zandorel";
constexpr int kSchemaVersion = 1;
// The server cuts names longer than 63 bytes, and a file's tables add "f_" or "x_" to its name.
constexpr std::size_t kMaxFileName = 61;

std::string quoteIdentifier(const std::string& name) {
    std::string quoted = "\"";
    for (char c : name) {
        quoted += c;
        if (c == '"') quoted += '"';
    }
    return quoted + "\"";
}

// The key of the write lock of one schema: the same number on every computer, so that a change waits
// for another planner's change to the same service and for nothing else.
std::int64_t lockKeyFor(const std::string& schema) {
    std::uint64_t hash = 14695981039346656037ull;
    for (unsigned char c : std::string(kProgram) + " " + schema) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    return static_cast<std::int64_t>(hash);
}

std::function<bool(const pg::Row&)> records(const RecordVisitor& visit) {
    return [&visit](const pg::Row& row) { return visit(row[0], row[1]); };
}

}  // namespace

IndexEntryArrays indexEntryArrays(const FileDictionary& dictionary,
                                  const std::vector<std::pair<std::string_view, std::string_view>>& records) {
    std::string fields = "{";
    std::vector<std::string> sortKeys;
    std::vector<std::string_view> keys;
    for (const auto& [key, text] : records) {
        for (IndexEntry& e : indexEntries(dictionary, key, text)) {
            fields += (sortKeys.empty() ? "" : ",") + std::to_string(e.field);
            sortKeys.push_back(std::move(e.sortKey));
            keys.push_back(key);
        }
    }
    const std::vector<std::string_view> sortKeyViews(sortKeys.begin(), sortKeys.end());
    return {fields + "}", pg::byteaArray(sortKeyViews), pg::byteaArray(keys)};
}

// Makes one change atomic: inside the caller's transaction a savepoint, outside it a transaction of
// its own. Changes to work files take no write lock: no other planner can see them.
class PgStore::WriteScope {
public:
    WriteScope(PgStore& store, bool scratch) : m_store(store), m_nested(false) {
        if (!scratch) m_store.endSnapshot();
        m_nested = m_store.m_inTransaction || m_store.m_snapshot;
        m_store.m_db.exec(m_nested ? "SAVEPOINT zd_write" : "BEGIN");
        if (m_nested || scratch) return;
        try {
            m_store.lockForWriting();
        } catch (...) {
            m_store.m_db.quietly("ROLLBACK");
            throw;
        }
    }
    ~WriteScope() {
        if (m_done) return;
        m_store.m_db.quietly(m_nested ? "ROLLBACK TO SAVEPOINT zd_write; RELEASE SAVEPOINT zd_write"
                                      : "ROLLBACK");
    }
    WriteScope(const WriteScope&) = delete;
    WriteScope& operator=(const WriteScope&) = delete;
    void commit() {
        if (m_nested) {
            m_store.m_db.exec("RELEASE SAVEPOINT zd_write");
        } else {
            m_store.commitOrFail();
        }
        m_done = true;
    }

private:
    PgStore& m_store;
    bool m_nested;
    bool m_done = false;
};

std::unique_ptr<PgStore> PgStore::open(const std::string& connection, OpenMode mode,
                                       const std::string& schema) {
    std::unique_ptr<PgStore> store(new PgStore(connection));
    store->configure(schema, mode);
    return store;
}

void PgStore::dropSchema(const std::string& connection, const std::string& schema) {
    pg::Connection(connection).exec("DROP SCHEMA IF EXISTS " + quoteIdentifier(schema) + " CASCADE");
}

PgStore::PgStore(const std::string& connection) : m_db(connection) {}

PgStore::~PgStore() = default;

void PgStore::configure(const std::string& schema, OpenMode mode) {
    m_db.exec("SET client_encoding = 'UTF8'");
    // As long as the embedded store waits for another planner's commit.
    m_db.exec("SET lock_timeout = '10s'");
    // Without a schema named by the caller, the service lives in the connection's current schema: the
    // first of its search_path that exists, or, for a new service, the first one named there
    // (options=-csearch_path%3Dname in the address), made below.
    std::string name = schema;
    if (name.empty()) {
        pg::Row current = m_db.run(
            "SELECT coalesce(current_schema(), ''), "
            "replace(trim(both ' \"' from split_part(current_setting('search_path'), ',', 1)), '$user', "
            "current_user)",
            {}, "schéma courant")[0];
        name = !current[0].empty() || mode == OpenMode::ExistingOnly ? current[0] : current[1];
    }
    if (name.empty()) {
        throw base::Error(base::codes::kStorage,
                          "La base " + m_db.name() + " n'a aucun schéma où ranger les fichiers");
    }
    pg::Row found = m_db.run(
        "SELECT (SELECT count(*) FROM pg_catalog.pg_tables WHERE schemaname = $1), "
        "(SELECT count(*) FROM pg_catalog.pg_tables WHERE schemaname = $1 AND tablename = 'zd_mark')",
        {{name}}, "contenu du schéma " + name)[0];
    std::int64_t tables = pg::integer(found[0]);
    bool marked = pg::integer(found[1]) > 0;
    m_schema = quoteIdentifier(name);
    m_lockKey = lockKeyFor(name);
    if (marked) {
        std::vector<pg::Row> mark =
            m_db.run("SELECT program FROM " + m_schema + ".zd_mark", {}, "marque de la base");
        marked = mark.size() == 1 && mark[0][0] == kProgram;
    }
    if (tables > 0 && !marked) {
        throw base::Error(base::codes::kStorage,
                          "La base " + m_db.name() + ", schéma " + name +
                              ", appartient à un autre programme : elle n'est pas ouverte");
    }
    if (tables == 0 && mode == OpenMode::ExistingOnly) {
        throw base::Error(base::codes::kStorage, "Base de données introuvable : " + m_db.name() +
                                                     ", schéma " + name + " sans fichiers");
    }
    if (tables == 0) createSchema();
    loadCatalog();
}

void PgStore::createSchema() {
    // Under the write lock, so that two planners opening a new service at once make it once.
    WriteScope scope(*this, false);
    m_db.exec("CREATE SCHEMA IF NOT EXISTS " + m_schema);
    m_db.exec("CREATE TABLE IF NOT EXISTS " + m_schema +
              ".zd_mark(program TEXT NOT NULL, version INTEGER NOT NULL)");
    m_db.run("INSERT INTO " + m_schema +
                 ".zd_mark(program, version) SELECT $1::text, $2::integer WHERE NOT EXISTS "
                 "(SELECT 1 FROM " +
                 m_schema + ".zd_mark)",
             {{kProgram}, Param::number(kSchemaVersion)}, "marque de la base");
    m_db.exec("CREATE TABLE IF NOT EXISTS " + m_schema +
              ".zd_files(name TEXT PRIMARY KEY, indexes TEXT NOT NULL)");
    for (const std::string& file : serviceFiles()) {
        if (dictionaryFor(file).scratch) continue;
        createTables(file, false);
        m_db.run("INSERT INTO " + m_schema + ".zd_files(name, indexes) VALUES($1, $2) ON CONFLICT DO NOTHING",
                 {{file}, {dictionaryFor(file).describeIndexes()}}, "catalogue des fichiers");
    }
    scope.commit();
}

PgStore::FileInfo PgStore::infoFor(const std::string& file, bool scratch) const {
    std::string schema = scratch ? "pg_temp" : m_schema;
    return {file, schema + "." + quoteIdentifier("f_" + file),
            scratch ? "" : schema + "." + quoteIdentifier("x_" + file), &dictionaryFor(file), scratch};
}

void PgStore::createTables(const std::string& file, bool scratch) {
    FileInfo fi = infoFor(file, scratch);
    m_db.exec(std::string("CREATE ") + (scratch ? "TEMP " : "") + "TABLE IF NOT EXISTS " + fi.table +
              "(key BYTEA PRIMARY KEY, rec BYTEA NOT NULL)");
    if (scratch) return;
    m_db.exec("CREATE TABLE IF NOT EXISTS " + fi.indexTable +
              "(fld INTEGER NOT NULL, k BYTEA NOT NULL, key BYTEA NOT NULL, PRIMARY KEY(fld, k, key))");
}

void PgStore::loadCatalog() {
    m_files.clear();
    for (const pg::Row& row :
         m_db.run("SELECT name, indexes FROM " + m_schema + ".zd_files", {}, "catalogue")) {
        m_files[row[0]] = infoFor(row[0], false);
        // A newer program may index other fields: rebuild so that every sentence stays exact.
        if (row[1] != dictionaryFor(row[0]).describeIndexes()) rebuildIndex(row[0]);
    }
    for (const std::string& file : serviceFiles()) {
        if (!dictionaryFor(file).scratch) continue;
        createTables(file, true);
        m_files[file] = infoFor(file, true);
    }
}

void PgStore::rebuildIndex(const std::string& file) {
    const FileInfo& fi = m_files.at(file);
    WriteScope scope(*this, false);
    m_db.exec("DELETE FROM " + fi.indexTable);
    std::vector<std::pair<std::string, std::string>> all;
    scanAll(file, [&](const std::string& key, const std::string& text) {
        all.emplace_back(key, text);
        return true;
    });
    for (const auto& [key, text] : all)
        updateIndexEntries(fi, key, nullptr, &text);
    m_db.run("UPDATE " + m_schema + ".zd_files SET indexes = $2 WHERE name = $1",
             {{file}, {fi.dictionary->describeIndexes()}}, "catalogue des fichiers");
    scope.commit();
}

bool PgStore::isIndexed(const FileInfo& fi) {
    return !fi.indexTable.empty() && !fi.dictionary->indexed.empty();
}

const PgStore::FileInfo& PgStore::info(const std::string& file) {
    auto it = m_files.find(file);
    if (it == m_files.end()) throw base::Error(base::codes::kUnknownFile, "Fichier inconnu : " + file);
    return it->second;
}

void PgStore::lockForWriting() {
    m_db.run("SELECT pg_advisory_xact_lock($1)", {Param::number(m_lockKey)}, "attente des autres postes");
}

void PgStore::commitOrFail() {
    // The server answers a COMMIT of a transaction that failed earlier with a ROLLBACK.
    if (m_db.exec("COMMIT") != "COMMIT") {
        throw base::Error(
            base::codes::kStorage,
            "Erreur de la base " + m_db.name() + " : la transaction avait échoué, rien n'a été enregistré");
    }
}

std::vector<std::string> PgStore::fileNames() {
    std::vector<std::string> names;
    for (const auto& [name, fi] : m_files)
        names.push_back(name);
    return names;
}

bool PgStore::hasFile(const std::string& file) {
    return m_files.count(file) != 0;
}

void PgStore::createFile(const std::string& file) {
    if (hasFile(file)) return;
    checkNewFileName(file);
    if (file.size() > kMaxFileName) {
        throw base::Error(base::codes::kUnknownFile, "Nom de fichier trop long : « " + file + " » (" +
                                                         std::to_string(kMaxFileName) +
                                                         " caractères au plus)");
    }
    WriteScope scope(*this, false);
    createTables(file, false);
    // Another planner may have made the same file a moment ago: the catalog keeps the first.
    m_db.run("INSERT INTO " + m_schema + ".zd_files(name, indexes) VALUES($1, $2) ON CONFLICT DO NOTHING",
             {{file}, {dictionaryFor(file).describeIndexes()}}, "création du fichier " + file);
    scope.commit();
    m_files[file] = infoFor(file, false);
}

std::optional<std::string> PgStore::read(const std::string& file, const std::string& key) {
    const FileInfo& fi = info(file);
    std::vector<pg::Row> rows = m_db.run("SELECT rec FROM " + fi.table + " WHERE key = $1", {{key}},
                                         "lecture de " + file + ", clé « " + key + " »");
    if (rows.empty()) return std::nullopt;
    return std::move(rows[0][0]);
}

void PgStore::updateIndexEntries(const FileInfo& fi, const std::string& key, const std::string* oldText,
                                 const std::string* newText) {
    // Only the entries that change are touched.
    const auto [gone, added] = indexChanges(*fi.dictionary, key, oldText, newText);
    std::string what = "index de " + fi.name + ", clé « " + key + " »";
    for (const IndexEntry& e : gone) {
        m_db.run("DELETE FROM " + fi.indexTable + " WHERE fld = $1 AND k = $2 AND key = $3",
                 {Param::number(e.field), {e.sortKey}, {key}}, what);
    }
    for (const IndexEntry& e : added) {
        m_db.run("INSERT INTO " + fi.indexTable + "(fld, k, key) VALUES($1, $2, $3) ON CONFLICT DO NOTHING",
                 {Param::number(e.field), {e.sortKey}, {key}}, what);
    }
}

void PgStore::write(const std::string& file, const std::string& key, const std::string& text) {
    const FileInfo& fi = info(file);
    checkKey(file, key);
    WriteScope scope(*this, fi.scratch);
    if (isIndexed(fi)) {
        std::optional<std::string> old = read(file, key);
        updateIndexEntries(fi, key, old ? &*old : nullptr, &text);
    }
    m_db.run("INSERT INTO " + fi.table +
                 "(key, rec) VALUES($1, $2) ON CONFLICT(key) DO UPDATE SET rec = excluded.rec",
             {{key}, {text}}, "écriture dans " + file + ", clé « " + key + " »");
    scope.commit();
}

void PgStore::remove(const std::string& file, const std::string& key) {
    const FileInfo& fi = info(file);
    WriteScope scope(*this, fi.scratch);
    if (isIndexed(fi)) {
        std::optional<std::string> old = read(file, key);
        if (!old) {
            scope.commit();
            return;
        }
        updateIndexEntries(fi, key, &*old, nullptr);
    }
    m_db.run("DELETE FROM " + fi.table + " WHERE key = $1", {{key}},
             "suppression dans " + file + ", clé « " + key + " »");
    scope.commit();
}

void PgStore::removeBatch(const std::string& file, const std::vector<std::string>& keys) {
    const FileInfo& fi = info(file);
    if (keys.empty()) return;
    WriteScope scope(*this, fi.scratch);
    // Keys go to the server by thousands in one array: two statements for each thousand records, where
    // one remove after another would wait on the server several times for each.
    constexpr std::size_t kParEnvoi = 5000;
    const std::string what = "suppression dans " + file;
    for (std::size_t debut = 0; debut < keys.size(); debut += kParEnvoi) {
        const std::size_t fin = std::min(keys.size(), debut + kParEnvoi);
        std::vector<std::string_view> lot(keys.begin() + static_cast<std::ptrdiff_t>(debut),
                                          keys.begin() + static_cast<std::ptrdiff_t>(fin));
        std::vector<pg::Row> gone =
            m_db.run("DELETE FROM " + fi.table + " WHERE key = ANY($1::bytea[]) RETURNING key, rec",
                     {{pg::byteaArray(lot), false}}, what);
        if (!isIndexed(fi) || gone.empty()) continue;
        std::vector<std::pair<std::string_view, std::string_view>> records;
        records.reserve(gone.size());
        for (const pg::Row& row : gone)
            records.emplace_back(row[0], row[1]);
        const IndexEntryArrays entries = indexEntryArrays(*fi.dictionary, records);
        m_db.run("DELETE FROM " + fi.indexTable +
                     " AS x USING unnest($1::integer[], $2::bytea[], $3::bytea[]) AS g(fld, k, key) "
                     "WHERE x.fld = g.fld AND x.k = g.k AND x.key = g.key",
                 {{entries.fields, false}, {entries.sortKeys, false}, {entries.keys, false}},
                 "index de " + fi.name);
    }
    scope.commit();
}

void PgStore::scanAll(const std::string& file, const RecordVisitor& visit) {
    m_db.stream("SELECT key, rec FROM " + info(file).table + " ORDER BY key", {}, records(visit),
                "lecture de " + file);
}

std::string PgStore::rangeSql(const FileInfo& fi, const KeyRange& range) const {
    std::string sql = "SELECT m.key, m.rec FROM " + fi.indexTable + " AS x JOIN " + fi.table +
                      " AS m ON m.key = x.key WHERE x.fld = $1 AND x.k " + (range.lowInclusive ? ">=" : ">") +
                      " $2";
    if (!range.high.empty()) sql += std::string(" AND x.k ") + (range.highInclusive ? "<=" : "<") + " $3";
    return sql;
}

std::vector<Param> PgStore::rangeParams(const KeyRange& range) {
    std::vector<Param> params{Param::number(range.field), {range.low}};
    if (!range.high.empty()) params.push_back({range.high});
    return params;
}

void PgStore::scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) {
    const FileInfo& fi = info(file);
    if (fi.indexTable.empty())
        throw base::Error(base::codes::kStorage, "Le fichier " + file + " n'a pas d'index");
    m_db.stream(rangeSql(fi, range), rangeParams(range), records(visit), "recherche dans " + file);
}

std::size_t PgStore::count(const std::string& file) {
    std::vector<pg::Row> rows =
        m_db.run("SELECT count(*) FROM " + info(file).table, {}, "décompte de " + file);
    return static_cast<std::size_t>(pg::integer(rows[0][0]));
}

std::vector<std::string> PgStore::explainScan(const std::string& file, const std::optional<KeyRange>& range) {
    const FileInfo& fi = info(file);
    if (range && fi.indexTable.empty()) {
        throw base::Error(base::codes::kStorage, "Le fichier " + file + " n'a pas d'index");
    }
    std::string sql = range ? rangeSql(fi, *range) : "SELECT key, rec FROM " + fi.table + " ORDER BY key";
    // On the few records of a new service the server rightly reads small tables whole; with
    // sequential scans priced out it shows the plan it takes once the files are large.
    m_db.exec("SET enable_seqscan = off");
    std::vector<std::string> lines;
    try {
        for (pg::Row& row : m_db.run("EXPLAIN (COSTS OFF) " + sql,
                                     range ? rangeParams(*range) : std::vector<Param>{}, "plan de " + file))
            lines.push_back(std::move(row[0]));
    } catch (...) {
        m_db.quietly("RESET enable_seqscan");
        throw;
    }
    m_db.exec("RESET enable_seqscan");
    return lines;
}

void PgStore::begin() {
    if (m_inTransaction) throw base::Error(base::codes::kStorage, "Une transaction est déjà ouverte");
    endSnapshot();
    m_db.exec("BEGIN");
    try {
        lockForWriting();
    } catch (...) {
        m_db.quietly("ROLLBACK");
        throw;
    }
    m_inTransaction = true;
}

void PgStore::commit() {
    if (!m_inTransaction) throw base::Error(base::codes::kStorage, "Aucune transaction ouverte");
    m_inTransaction = false;
    commitOrFail();
}

void PgStore::rollback() {
    if (!m_inTransaction) return;
    m_inTransaction = false;
    // A lost connection took its transaction with it: the server has undone it already.
    if (m_db.lost()) return;
    m_db.exec("ROLLBACK");
}

std::string PgStore::openTransaction() const {
    if (m_inTransaction) return "une transaction d'écriture";
    if (m_readers > 0) return std::to_string(m_readers) + " lecture(s) cohérente(s) non terminée(s)";
    if (m_snapshot) return "une lecture cohérente";
    return "";
}

void PgStore::beginRead() {
    if (m_readers++ > 0 || m_inTransaction) return;
    // Repeatable read: one snapshot for every statement until the end, taken at the first.
    m_db.exec("BEGIN ISOLATION LEVEL REPEATABLE READ");
    m_snapshot = true;
}

void PgStore::endRead() {
    if (m_readers > 0 && --m_readers == 0) endSnapshot();
}

void PgStore::endSnapshot() {
    if (!m_snapshot) return;
    m_snapshot = false;
    // Only work files can have changed inside; they are kept. A lost connection ended it already.
    if (!m_db.lost()) m_db.exec("COMMIT");
}

}  // namespace mvdb
