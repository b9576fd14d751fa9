#pragma once

// The benchmarks on PostgreSQL, when ZANDOREL_TEST_PG names a server (scripts/with_postgres.sh starts a
// throwaway one): a service in a schema of its own, dropped at the end, and the floor as bare libpq
// prepared statements on a second connection to the same schema.
#include <libpq-fe.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench_support.h"
#include "mvdb/dictionary.h"
#include "mvdb/pg_connection.h"
#include "mvdb/pg_store.h"

namespace bench {

inline std::string pgServer() {
    const char* url = std::getenv("ZANDOREL_TEST_PG");
    return url ? url : "";
}

// A schema of this process on the server, dropped when the object goes.
struct PgSchema {
    std::string name;
    explicit PgSchema(const std::string& what) : name("zb_" + std::to_string(::getpid()) + "_" + what) {
        mvdb::PgStore::dropSchema(pgServer(), name);
    }
    ~PgSchema() {
        try {
            mvdb::PgStore::dropSchema(pgServer(), name);
        } catch (...) {
        }
    }
    std::unique_ptr<mvdb::Store> open(mvdb::OpenMode mode) const {
        return mvdb::PgStore::open(pgServer(), mode, name);
    }
};

// The demo service of `aides` aidés with 60 days of history, written once into `schema`.
inline void generateService(const PgSchema& schema, int aides) {
    base::FixedClock clock(today(), 8 * 3600);
    mvdb::Database database(schema.open(mvdb::OpenMode::CreateIfMissing), clock);
    app::writeDemoService(database, {today(), aides, 60, 1});
}

// A bare connection to a service's schema, with the statements a hand-written program would prepare
// once; values go and rows come in binary, as the store's own do.
class PgFloor {
public:
    PgFloor(const std::string& url, const std::string& schema) : m_conn(PQconnectdb(url.c_str())) {
        if (PQstatus(m_conn) != CONNECTION_OK)
            throw std::runtime_error("pg floor: " + std::string(PQerrorMessage(m_conn)));
        m_schema = "\"" + schema + "\"";
        exec("SET search_path TO " + m_schema);
    }
    ~PgFloor() { PQfinish(m_conn); }
    PgFloor(const PgFloor&) = delete;
    PgFloor& operator=(const PgFloor&) = delete;

    const std::string& schema() const { return m_schema; }
    void exec(const std::string& sql) {
        PGresult* r = PQexec(m_conn, sql.c_str());
        const bool ok = PQresultStatus(r) == PGRES_COMMAND_OK || PQresultStatus(r) == PGRES_TUPLES_OK;
        PQclear(r);
        if (!ok) throw std::runtime_error("pg floor: " + std::string(PQerrorMessage(m_conn)) + " in " + sql);
    }
    // The name of the statement prepared for `sql`.
    const std::string& prepare(const std::string& sql) {
        auto [it, fresh] = m_prepared.try_emplace(sql, "f" + std::to_string(m_prepared.size()));
        if (fresh) {
            PGresult* r = PQprepare(m_conn, it->second.c_str(), sql.c_str(), 0, nullptr);
            const bool ok = PQresultStatus(r) == PGRES_COMMAND_OK;
            PQclear(r);
            if (!ok)
                throw std::runtime_error("pg floor: " + std::string(PQerrorMessage(m_conn)) + " in " + sql);
        }
        return it->second;
    }
    // Runs a prepared statement with binary values (an integer as its text) and reads every column of
    // every row as a caller would; gives the rows.
    // With `rows`, the first two columns of each row that `keep` (null: every row) takes are copied there.
    long run(const std::string& name, const std::vector<std::string_view>& values, int textValues = 0,
             std::vector<std::pair<std::string, std::string>>* rows = nullptr,
             bool (*keep)(std::string_view rec) = nullptr) {
        std::vector<const char*> data;
        std::vector<int> lengths, formats;
        for (std::size_t i = 0; i < values.size(); ++i) {
            data.push_back(values[i].data());
            lengths.push_back(static_cast<int>(values[i].size()));
            formats.push_back(static_cast<int>(i) < textValues ? 0 : 1);
        }
        PGresult* r = PQexecPrepared(m_conn, name.c_str(), static_cast<int>(values.size()), data.data(),
                                     lengths.data(), formats.data(), 1);
        if (PQresultStatus(r) != PGRES_COMMAND_OK && PQresultStatus(r) != PGRES_TUPLES_OK) {
            std::string message = PQerrorMessage(m_conn);
            PQclear(r);
            throw std::runtime_error("pg floor: " + message);
        }
        const int n = PQntuples(r);
        for (int i = 0; i < n; ++i) {
            for (int c = 0; c < PQnfields(r); ++c)
                Floor::benchmarkSink += static_cast<std::size_t>(PQgetlength(r, i, c)) +
                                        (reinterpret_cast<std::uintptr_t>(PQgetvalue(r, i, c)) & 1);
            if (!rows || PQnfields(r) < 2) continue;
            const std::string_view rec(PQgetvalue(r, i, 1), static_cast<std::size_t>(PQgetlength(r, i, 1)));
            if (!keep || keep(rec))
                rows->emplace_back(
                    std::string(PQgetvalue(r, i, 0), static_cast<std::size_t>(PQgetlength(r, i, 0))),
                    std::string(PQgetvalue(r, i, 1), static_cast<std::size_t>(PQgetlength(r, i, 1))));
        }
        PQclear(r);
        return n;
    }

private:
    PGconn* m_conn;
    std::string m_schema;
    std::map<std::string, std::string> m_prepared;
};

// The calls of a routine replayed as bare prepared statements on PostgreSQL; read transactions as the
// store opens them.
class PgReplay {
public:
    PgReplay(PgFloor& floor, const std::vector<Call>& calls) : m_floor(floor) {
        for (const Call& c : calls) {
            if (c.kind == Call::BeginRead || c.kind == Call::EndRead) {
                m_steps.push_back({&c, {}});
                continue;
            }
            const bool scratch = mvdb::dictionaryFor(c.file).scratch;
            const std::string table =
                (scratch ? std::string("pg_temp") : floor.schema()) + ".\"f_" + c.file + "\"";
            const std::string index = floor.schema() + ".\"x_" + c.file + "\"";
            if (scratch)
                floor.exec("CREATE TEMP TABLE IF NOT EXISTS \"f_" + c.file +
                           "\"(key BYTEA PRIMARY KEY, rec BYTEA NOT NULL)");
            std::string sql;
            switch (c.kind) {
                case Call::Read:
                    sql = "SELECT rec FROM " + table + " WHERE key = $1";
                    break;
                case Call::Write:
                    sql = "INSERT INTO " + table +
                          "(key, rec) VALUES($1, $2) ON CONFLICT(key) DO UPDATE SET rec = excluded.rec";
                    break;
                case Call::Remove:
                    sql = "DELETE FROM " + table + " WHERE key = $1";
                    break;
                case Call::ScanAll:
                    sql = "SELECT key, rec FROM " + table + " ORDER BY key";
                    break;
                case Call::ScanRange:
                    sql = "SELECT m.key, m.rec FROM " + index + " AS x JOIN " + table +
                          " AS m ON m.key = x.key WHERE x.fld = $1 AND x.k " +
                          (c.range.lowInclusive ? ">=" : ">") + " $2";
                    if (!c.range.high.empty())
                        sql += std::string(" AND x.k ") + (c.range.highInclusive ? "<=" : "<") + " $3";
                    break;
                case Call::BeginRead:
                case Call::EndRead:
                    break;
            }
            m_steps.push_back({&c, floor.prepare(sql)});
        }
    }

    long run() {
        long rows = 0;
        int readers = 0;
        for (const auto& [c, name] : m_steps) {
            switch (c->kind) {
                case Call::BeginRead:
                    if (readers++ == 0) m_floor.exec("BEGIN ISOLATION LEVEL REPEATABLE READ");
                    break;
                case Call::EndRead:
                    if (readers > 0 && --readers == 0) m_floor.exec("COMMIT");
                    break;
                case Call::Read:
                case Call::Remove:
                    rows += m_floor.run(name, {c->key});
                    break;
                case Call::Write:
                    rows += m_floor.run(name, {c->key, c->text});
                    break;
                case Call::ScanAll:
                    rows += m_floor.run(name, {});
                    break;
                case Call::ScanRange: {
                    const std::string field = std::to_string(c->range.field);
                    std::vector<std::string_view> values{field, c->range.low};
                    if (!c->range.high.empty()) values.push_back(c->range.high);
                    rows += m_floor.run(name, values, 1);
                    break;
                }
            }
        }
        return rows;
    }

private:
    PgFloor& m_floor;
    std::vector<std::pair<const Call*, std::string>> m_steps;
};

// Writes records straight into a service's tables, index entries included as the store makes them, by
// thousands per statement: generating a million records one store write at a time would take long.
// Only for making a benchmark's data; flush() writes what is still kept.
class PgBulkWriter {
public:
    PgBulkWriter(PgFloor& floor, std::string file) : m_floor(floor), m_file(std::move(file)) {}
    void write(const std::string& key, const std::string& text) {
        m_keys.push_back(key);
        m_texts.push_back(text);
        if (m_keys.size() >= 5000) flush();
    }
    void flush() {
        if (m_keys.empty()) return;
        std::vector<std::string_view> keys(m_keys.begin(), m_keys.end()),
            texts(m_texts.begin(), m_texts.end());
        std::vector<std::pair<std::string_view, std::string_view>> pairs;
        for (std::size_t i = 0; i < m_keys.size(); ++i)
            pairs.emplace_back(m_keys[i], m_texts[i]);
        const mvdb::IndexEntryArrays entries = mvdb::indexEntryArrays(mvdb::dictionaryFor(m_file), pairs);
        const std::string records = mvdb::pg::byteaArray(keys), contents = mvdb::pg::byteaArray(texts);
        m_floor.run(m_floor.prepare("INSERT INTO " + m_floor.schema() + ".\"f_" + m_file +
                                    "\"(key, rec) SELECT * FROM unnest($1::bytea[], $2::bytea[]) "
                                    "ON CONFLICT(key) DO UPDATE SET rec = excluded.rec"),
                    {records, contents}, 2);
        m_floor.run(
            m_floor.prepare("INSERT INTO " + m_floor.schema() + ".\"x_" + m_file +
                            "\"(fld, k, key) SELECT * FROM unnest($1::integer[], $2::bytea[], $3::bytea[]) "
                            "ON CONFLICT DO NOTHING"),
            {entries.fields, entries.sortKeys, entries.keys}, 3);
        m_keys.clear();
        m_texts.clear();
    }

private:
    PgFloor& m_floor;
    std::string m_file;
    std::vector<std::string> m_keys, m_texts;
};

// Writes into `file` of the schema, in bulk and in one transaction, the records that `generate` makes:
// it is called with a function to call for each key and text. The server then gathers its statistics.
template <class Generate>
void writeInBulk(const PgSchema& schema, const std::string& file, Generate generate) {
    PgFloor floor(pgServer(), schema.name);
    floor.exec("BEGIN");
    PgBulkWriter writer(floor, file);
    generate([&](const std::string& key, const std::string& text) { writer.write(key, text); });
    writer.flush();
    floor.exec("COMMIT");
    floor.exec("ANALYZE");
}

}  // namespace bench
