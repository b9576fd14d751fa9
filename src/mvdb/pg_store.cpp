#include "mvdb/pg_store.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>

#include "base/error.h"
#include "mvdb/dictionary.h"
#include "mvdb/pg_address.h"

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
    // Without a schema named by the caller, the service lives in the first schema that the connection's
    // search_path names (options=-csearch_path%3Dname in the address), made below when it is new;
    // "$user" counts only when that schema exists, as the server itself reads it.
    std::string name = schema;
    if (name.empty()) {
        pg::Row setting = m_db.run(
            "SELECT current_setting('search_path'), current_user::text, "
            "EXISTS(SELECT 1 FROM pg_catalog.pg_namespace WHERE nspname = current_user)",
            {}, "schéma courant")[0];
        for (const std::string& named : pg::searchPathSchemas(setting[0])) {
            if (named != "$user") {
                name = named;
                break;
            }
            if (setting[2] == std::string(1, '\1')) {
                name = setting[1];
                break;
            }
        }
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
    beginTransaction(true);
    try {
        execute("CREATE SCHEMA IF NOT EXISTS " + m_schema);
        execute("CREATE TABLE IF NOT EXISTS " + m_schema +
                ".zd_mark(program TEXT NOT NULL, version INTEGER NOT NULL)");
        m_db.run("INSERT INTO " + m_schema +
                     ".zd_mark(program, version) SELECT $1::text, $2::integer WHERE NOT EXISTS "
                     "(SELECT 1 FROM " +
                     m_schema + ".zd_mark)",
                 {{kProgram}, Param::number(kSchemaVersion)}, "marque de la base");
        execute("CREATE TABLE IF NOT EXISTS " + m_schema +
                ".zd_files(name TEXT PRIMARY KEY, indexes TEXT NOT NULL)");
        createServiceFiles();
        commitTransaction();
    } catch (...) {
        quietly("ROLLBACK");
        throw;
    }
}

std::string PgStore::qualifiedTable(const std::string& table, bool scratch) const {
    return (scratch ? std::string("pg_temp") : m_schema) + "." + quoteIdentifier(table);
}

void PgStore::createTables(const FileInfo& fi) {
    execute(statementSql(StoreStatement::CreateTable, fi));
    if (fi.indexTable.empty()) return;
    execute("CREATE TABLE IF NOT EXISTS " + fi.indexTable +
            "(fld INTEGER NOT NULL, k BYTEA NOT NULL, key BYTEA NOT NULL, PRIMARY KEY(fld, k, key))");
}

std::vector<std::pair<std::string, std::string>> PgStore::readCatalog() {
    std::vector<std::pair<std::string, std::string>> catalog;
    for (pg::Row& row :
         m_db.run("SELECT name, indexes FROM " + m_schema + ".zd_files ORDER BY name", {}, "catalogue"))
        catalog.emplace_back(std::move(row[0]), std::move(row[1]));
    return catalog;
}

void PgStore::addToCatalog(const std::string& file, const std::string& indexes) {
    m_db.run("INSERT INTO " + m_schema + ".zd_files(name, indexes) VALUES($1, $2) ON CONFLICT DO NOTHING",
             {{file}, {indexes}}, "catalogue des fichiers");
}

void PgStore::setCatalogIndexes(const std::string& file, const std::string& indexes) {
    m_db.run("UPDATE " + m_schema + ".zd_files SET indexes = $2 WHERE name = $1", {{file}, {indexes}},
             "catalogue des fichiers");
}

void PgStore::checkFileName(const std::string& file) const {
    if (file.size() <= kMaxFileName) return;
    throw base::Error(base::codes::kUnknownFile, "Nom de fichier trop long : « " + file + " » (" +
                                                     std::to_string(kMaxFileName) + " caractères au plus)");
}

std::string PgStore::statementText(StoreStatement statement, const std::string& file,
                                   const std::optional<KeyRange>& range) {
    const FileInfo& fi = statement == StoreStatement::ScanRange ? indexedInfo(file) : info(file);
    return statementSql(statement, fi, range ? &*range : nullptr);
}

std::string PgStore::statementSql(StoreStatement statement, const FileInfo& fi, const KeyRange* range) const {
    switch (statement) {
        case StoreStatement::Read:
            return "SELECT rec FROM " + fi.table + " WHERE key = $1";
        case StoreStatement::Write:
            return "INSERT INTO " + fi.table +
                   "(key, rec) VALUES($1, $2) ON CONFLICT(key) DO UPDATE SET rec = excluded.rec";
        case StoreStatement::Remove:
            return "DELETE FROM " + fi.table + " WHERE key = $1";
        case StoreStatement::ScanAll:
            return "SELECT key, rec FROM " + fi.table + " ORDER BY key";
        case StoreStatement::ScanRange: {
            const KeyRange r = range ? *range : KeyRange{};
            std::string sql = "SELECT m.key, m.rec FROM " + fi.indexTable + " AS x JOIN " + fi.table +
                              " AS m ON m.key = x.key WHERE x.fld = $1 AND x.k " +
                              (r.lowInclusive ? ">=" : ">") + " $2";
            if (!r.high.empty()) sql += std::string(" AND x.k ") + (r.highInclusive ? "<=" : "<") + " $3";
            return sql;
        }
        case StoreStatement::CreateTable:
            return std::string("CREATE ") + (fi.scratch ? "TEMP " : "") + "TABLE IF NOT EXISTS " + fi.table +
                   "(key BYTEA PRIMARY KEY, rec BYTEA NOT NULL)";
    }
    return {};
}

bool PgStore::readRecord(const FileInfo& fi, const std::string& key, std::string& text) {
    std::vector<pg::Row> rows = m_db.run(statementSql(StoreStatement::Read, fi), {{key}},
                                         "lecture de " + fi.name + ", clé « " + key + " »");
    if (rows.empty()) return false;
    text = std::move(rows[0][0]);
    return true;
}

void PgStore::putRecord(const FileInfo& fi, const std::string& key, const std::string& text) {
    m_db.run(statementSql(StoreStatement::Write, fi), {{key}, {text}},
             "écriture dans " + fi.name + ", clé « " + key + " »");
}

void PgStore::deleteRecord(const FileInfo& fi, const std::string& key) {
    m_db.run(statementSql(StoreStatement::Remove, fi), {{key}},
             "suppression dans " + fi.name + ", clé « " + key + " »");
}

void PgStore::deleteIndexEntries(const FileInfo& fi, const std::string& key,
                                 const std::vector<IndexEntry>& entries) {
    for (const IndexEntry& e : entries) {
        m_db.run("DELETE FROM " + fi.indexTable + " WHERE fld = $1 AND k = $2 AND key = $3",
                 {Param::number(e.field), {e.sortKey}, {key}},
                 "index de " + fi.name + ", clé « " + key + " »");
    }
}

void PgStore::insertIndexEntries(const FileInfo& fi, const std::string& key,
                                 const std::vector<IndexEntry>& entries) {
    for (const IndexEntry& e : entries) {
        m_db.run("INSERT INTO " + fi.indexTable + "(fld, k, key) VALUES($1, $2, $3) ON CONFLICT DO NOTHING",
                 {Param::number(e.field), {e.sortKey}, {key}},
                 "index de " + fi.name + ", clé « " + key + " »");
    }
}

void PgStore::clearIndex(const FileInfo& fi) {
    execute("DELETE FROM " + fi.indexTable);
}

void PgStore::removeBatch(const std::string& file, const std::vector<std::string>& keys) {
    const FileInfo& fi = info(file);
    if (keys.empty()) return;
    WriteScope scope(*this, fi);
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
        Records records;
        records.reserve(gone.size());
        for (const pg::Row& row : gone)
            records.emplace_back(row[0], row[1]);
        deleteIndexEntriesOf(fi, records);
    }
    scope.commit();
}

void PgStore::deleteIndexEntriesOf(const FileInfo& fi, const Records& records) {
    const IndexEntryArrays entries = indexEntryArrays(*fi.dictionary, records);
    m_db.run("DELETE FROM " + fi.indexTable +
                 " AS x USING unnest($1::integer[], $2::bytea[], $3::bytea[]) AS g(fld, k, key) "
                 "WHERE x.fld = g.fld AND x.k = g.k AND x.key = g.key",
             {{entries.fields, false}, {entries.sortKeys, false}, {entries.keys, false}},
             "index de " + fi.name);
}

void PgStore::writeBatch(const std::string& file,
                         const std::vector<std::pair<std::string, std::string>>& records) {
    const FileInfo& fi = info(file);
    for (const auto& [key, text] : records)
        checkKey(file, key);
    if (records.empty()) return;
    // One statement may change a row once only: the last text of each key, in the order first given.
    std::unordered_map<std::string_view, std::size_t> last;
    std::vector<std::string_view> order;
    for (std::size_t i = 0; i < records.size(); ++i) {
        auto [it, fresh] = last.try_emplace(records[i].first, i);
        if (fresh) order.push_back(records[i].first);
        it->second = i;
    }
    WriteScope scope(*this, fi);
    // As the batch remove: thousands of records in a few statements, where one write after another
    // would wait on the server several times for each.
    constexpr std::size_t kPerStatement = 5000;
    const std::string what = "écriture dans " + file;
    for (std::size_t begin = 0; begin < order.size(); begin += kPerStatement) {
        const std::size_t end = std::min(order.size(), begin + kPerStatement);
        Records batch;
        std::vector<std::string_view> keys, texts;
        for (std::size_t i = begin; i < end; ++i) {
            const auto& [key, text] = records[last.at(order[i])];
            batch.emplace_back(key, text);
            keys.push_back(key);
            texts.push_back(text);
        }
        if (isIndexed(fi)) {
            const std::vector<pg::Row> old =
                m_db.run("SELECT key, rec FROM " + fi.table + " WHERE key = ANY($1::bytea[])",
                         {{pg::byteaArray(keys), false}}, what);
            Records replaced;
            for (const pg::Row& row : old)
                replaced.emplace_back(row[0], row[1]);
            if (!replaced.empty()) deleteIndexEntriesOf(fi, replaced);
        }
        m_db.run("INSERT INTO " + fi.table +
                     "(key, rec) SELECT * FROM unnest($1::bytea[], $2::bytea[]) "
                     "ON CONFLICT(key) DO UPDATE SET rec = excluded.rec",
                 {{pg::byteaArray(keys), false}, {pg::byteaArray(texts), false}}, what);
        if (!isIndexed(fi)) continue;
        const IndexEntryArrays entries = indexEntryArrays(*fi.dictionary, batch);
        m_db.run("INSERT INTO " + fi.indexTable +
                     "(fld, k, key) SELECT * FROM unnest($1::integer[], $2::bytea[], $3::bytea[]) "
                     "ON CONFLICT DO NOTHING",
                 {{entries.fields, false}, {entries.sortKeys, false}, {entries.keys, false}},
                 "index de " + fi.name);
    }
    scope.commit();
}

void PgStore::scanAll(const std::string& file, const RecordVisitor& visit) {
    m_db.stream(statementText(StoreStatement::ScanAll, file), {}, records(visit), "lecture de " + file);
}

std::vector<Param> PgStore::rangeParams(const KeyRange& range) {
    std::vector<Param> params{Param::number(range.field), {range.low}};
    if (!range.high.empty()) params.push_back({range.high});
    return params;
}

void PgStore::scanRange(const std::string& file, const KeyRange& range, const RecordVisitor& visit) {
    m_db.stream(statementText(StoreStatement::ScanRange, file, range), rangeParams(range), records(visit),
                "recherche dans " + file);
}

std::size_t PgStore::count(const std::string& file) {
    std::vector<pg::Row> rows =
        m_db.run("SELECT count(*) FROM " + info(file).table, {}, "décompte de " + file);
    return static_cast<std::size_t>(pg::integer(rows[0][0]));
}

std::vector<std::string> PgStore::explainScan(const std::string& file, const std::optional<KeyRange>& range) {
    const std::string sql =
        statementText(range ? StoreStatement::ScanRange : StoreStatement::ScanAll, file, range);
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

void PgStore::execute(const std::string& sql) {
    m_db.exec(sql);
}

void PgStore::quietly(const char* sql) {
    m_db.quietly(sql);
}

void PgStore::beginTransaction(bool lock) {
    m_db.exec("BEGIN");
    if (!lock) return;
    try {
        m_db.run("SELECT pg_advisory_xact_lock($1)", {Param::number(m_lockKey)}, "attente des autres postes");
    } catch (...) {
        m_db.quietly("ROLLBACK");
        throw;
    }
}

void PgStore::commitTransaction() {
    // The server answers a COMMIT of a transaction that failed earlier with a ROLLBACK.
    if (m_db.exec("COMMIT") != "COMMIT") {
        throw base::Error(
            base::codes::kStorage,
            "Erreur de la base " + m_db.name() + " : la transaction avait échoué, rien n'a été enregistré");
    }
}

void PgStore::rollbackTransaction() {
    // A lost connection took its transaction with it: the server has undone it already.
    if (m_db.lost()) return;
    m_db.exec("ROLLBACK");
}

bool PgStore::transactionOpen() const {
    return m_db.inTransaction();
}

void PgStore::beginSnapshot() {
    m_db.exec("BEGIN ISOLATION LEVEL REPEATABLE READ");
}

void PgStore::endSnapshotTransaction() {
    // Only work files can have changed inside; they are kept. A lost connection ended it already.
    if (!m_db.lost()) m_db.exec("COMMIT");
}

}  // namespace mvdb
