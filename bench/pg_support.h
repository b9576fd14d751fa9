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

// The calls of a routine replayed as bare prepared statements on PostgreSQL, those that `store` runs for
// them; read transactions as the store opens them.
class PgReplay {
public:
    PgReplay(PgFloor& floor, const std::vector<Call>& calls, mvdb::IndexedStore& store) : m_floor(floor) {
        for (const Call& c : calls) {
            if (c.kind == Call::BeginRead || c.kind == Call::EndRead) {
                m_steps.push_back({&c, {}});
                continue;
            }
            if (mvdb::dictionaryFor(c.file).scratch)
                floor.exec(store.statementText(mvdb::StoreStatement::CreateTable, c.file));
            m_steps.push_back({&c, floor.prepare(store.statementText(statementOf(c), c.file, c.range))});
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

// Writes into `file` of the schema, in one transaction, the records that `generate` makes: it is called
// with a function to call for each key and text. They go to the store by thousands, as a load sends
// them; generating a million records one store write at a time would take long. The server then
// gathers its statistics.
template <class Generate>
void writeInBulk(const PgSchema& schema, const std::string& file, Generate generate) {
    std::unique_ptr<mvdb::Store> store = schema.open(mvdb::OpenMode::ExistingOnly);
    std::vector<std::pair<std::string, std::string>> batch;
    store->begin();
    generate([&](const std::string& key, const std::string& text) {
        batch.emplace_back(key, text);
        if (batch.size() < 5000) return;
        store->writeBatch(file, batch);
        batch.clear();
    });
    store->writeBatch(file, batch);
    store->commit();
    PgFloor(pgServer(), schema.name).exec("ANALYZE");
}

}  // namespace bench
