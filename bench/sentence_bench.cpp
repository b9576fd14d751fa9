// The selections the screen sends, run as sentences through the database, against the SQL a developer
// would write by hand on the same file: the index table for the narrowest condition, the other
// conditions in SQL where the key holds them and in C++ where an attribute does, the same order.
// On 100,000 and 1,000,000 SSIADTOURNEE records beside a demo service of 200 aidés.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <memory>

#include "base/text.h"
#include "bench_support.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/indexed_store.h"
#include "mvdb/sort_key.h"
#include "pg_support.h"

namespace {

constexpr int kTournees = 60;
constexpr int kAides = 5000;

// The last day of the generated history: today.
int jourFin() {
    return bench::today().internalDay();
}

std::string pad(long value, int width) {
    std::string s = std::to_string(value);
    return std::string(static_cast<std::size_t>(std::max(0, width - static_cast<int>(s.size()))), '0') + s;
}

// A service with `records` interventions, in a file or, on PostgreSQL, in a schema of its own: each aidé
// has one a day in a tournée of its own, going back as many days as it takes.
struct Fichier {
    bench::TempFile file;
    std::unique_ptr<bench::PgSchema> schema;
    base::FixedClock clock{bench::today(), 8 * 3600};
    std::unique_ptr<mvdb::Database> db;

    Fichier(long records, bool pg) : file("sentences-" + std::to_string(records)) {
        if (pg) {
            schema = std::make_unique<bench::PgSchema>("sentences_" + std::to_string(records));
            bench::generateService(*schema, 200);
            db = std::make_unique<mvdb::Database>(schema->open(mvdb::OpenMode::ExistingOnly), clock);
            bench::writeInBulk(*schema, "SSIADTOURNEE", [&](auto write) { ecrire(records, write); });
            return;
        }
        bench::generateService(file.path, 200);
        db = std::make_unique<mvdb::Database>(
            mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly), clock);
        mvdb::Transaction t(*db);
        ecrire(records, [&](const std::string& key, const std::string& text) {
            db->store().write("SSIADTOURNEE", key, text);
        });
        t.commit();
    }

    template <class Write>
    void ecrire(long records, Write write) {
        const long present = static_cast<long>(db->store().count("SSIADTOURNEE"));
        for (long i = present; i < records; ++i) {
            const long aide = 1 + i % kAides;
            const long jour = jourFin() - i / kAides;
            const std::string heure = pad(700 + (i % 7) * 100, 4);
            const std::string key = pad(1 + aide % kTournees, 3) + pad(aide, 5) + pad(jour, 5) + heure;
            mvdb::DynamicRecord r;
            r.set(1, heure);
            r.set(2, pad(aide, 5) + "210000000011" + heure);
            write(key, r.text());
        }
    }
};

std::map<std::pair<long, bool>, std::unique_ptr<Fichier>> g_fichiers;

Fichier& fichier(long records, bool pg) {
    auto& f = g_fichiers[{records, pg}];
    if (!f) f = std::make_unique<Fichier>(records, pg);
    return *f;
}

long interroger(mvdb::Database& db, const std::string& file, const std::string& sentence,
                const std::string& list) {
    mvdb::DynamicRecord request;
    request.set(1, sentence);
    request.set(2, file);
    request.set(3, list);
    return static_cast<long>(db.Query(request.text()).DCount());
}

// Value `n` (1-based) of attribute `a` of a record's text, without building the record.
std::string_view attribut(std::string_view text, int a) {
    std::size_t begin = 0;
    for (int i = 1; i < a; ++i) {
        begin = text.find('\xFE', begin);
        if (begin == std::string_view::npos) return {};
        ++begin;
    }
    std::size_t end = text.find_first_of("\xFE\xFD", begin);
    return text.substr(begin, end == std::string_view::npos ? std::string_view::npos : end - begin);
}

struct Selection {
    const char* nom;
    const char* file;
    std::string sentence;
    const char* list;
    std::string sql;                 // the conditions after the store's join of index and records
    std::string pgSql;               // the same on PostgreSQL, where keys are bytea
    std::vector<std::string> binds;  // the first an integer, then sort keys as blobs
    std::size_t premierTexte;        // binds from this one on compare with text: bound as text
    // Keeps a row the SQL could not judge; null: every row.
    bool (*garder)(std::string_view rec);
    // The order of rows the SQL could not give; null: the SQL's own.
    bool (*avant)(const std::pair<std::string, std::string>&, const std::pair<std::string, std::string>&);
};

// The store's own join of a file's index entries with its records, up to the conditions on the sort key,
// which the hand-written SQL sets as it needs.
std::string indexJoin(mvdb::Store& store, const std::string& file) {
    const std::string range = dynamic_cast<mvdb::IndexedStore&>(store).statementText(
        mvdb::StoreStatement::ScanRange, file, mvdb::KeyRange{});
    return range.substr(0, range.rfind("x.k "));
}

std::vector<Selection> selections() {
    const std::string jour = std::to_string(jourFin() - 3);
    const std::string accord = std::to_string(jourFin());
    return {
        {"tournee_by_aide_and_date",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"" + jour + "\"",
         "0 1 2",
         "x.k = ?2 AND substr(m.key, 9, 5) = ?3 ORDER BY m.key",
         "x.k = $2 AND substring(m.key from 9 for 5) = $3 ORDER BY m.key",
         {"1", mvdb::sortKey("00012"), jour},
         2,
         nullptr,
         nullptr},
        {"tournee_by_code_and_date_desc",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC CodeTournee = \"013\" AND AVEC DateTournee <= \"" + jour +
             "\" PAR-DECR DateTournee",
         "0",
         "x.k = ?2 AND substr(m.key, 9, 5) <= ?3 ORDER BY substr(m.key, 9, 5) DESC, m.key",
         "x.k = $2 AND substring(m.key from 9 for 5) <= $3 "
         "ORDER BY substring(m.key from 9 for 5) DESC, m.key",
         {"0", mvdb::sortKey("013"), jour},
         2,
         nullptr,
         nullptr},
        {"accords_by_dates",
         "SSIADACCORDS",
         "SELECT SSIADACCORDS AVEC 1 <= \"" + accord + "\" AND AVEC 2 >= \"" + accord + "\" PAR CodeAide",
         "0 1 2 3",
         "x.k >= ?2 AND x.k <= ?3 ORDER BY m.key",
         "x.k >= $2 AND x.k <= $3 ORDER BY m.key",
         {"1", std::string(1, mvdb::kNumberSegment), mvdb::sortKey(accord)},
         99,
         [](std::string_view rec) {
             std::string_view fin = attribut(rec, 2);
             return base::compareValues(fin, std::to_string(jourFin())) >= 0;
         },
         nullptr},
        {"caracttournee_by_label_prefix",
         "SSIADCARACTTOURNEE",
         "SELECT SSIADCARACTTOURNEE AVEC 1 = \"SOIGNANT]\" AND AVEC 9 <> \"1\" PAR 1",
         "0 1 10",
         "x.k >= ?2 AND x.k < ?3",
         "x.k >= $2 AND x.k < $3",
         {"0", std::string(1, mvdb::kTextSegment) + "SOIGNANT",
          mvdb::prefixEnd(std::string(1, mvdb::kTextSegment) + "SOIGNANT")},
         99,
         [](std::string_view rec) { return attribut(rec, 9) != "1"; },
         [](const std::pair<std::string, std::string>& a, const std::pair<std::string, std::string>& b) {
             return attribut(a.second, 1) < attribut(b.second, 1);
         }},
    };
}

// The hand-written SQL of a selection, prepared once on its own connection; each run gives the rows.
class SqlALaMain {
public:
    SqlALaMain(Fichier& f, const Selection& s) : m_s(s) {
        if (f.schema) {
            m_pgFloor = std::make_unique<bench::PgFloor>(bench::pgServer(), f.schema->name);
            m_pgName = m_pgFloor->prepare(indexJoin(f.db->store(), s.file) + s.pgSql);
        } else {
            m_floor = std::make_unique<bench::Floor>(f.file.path);
            m_stmt = m_floor->prepare(indexJoin(f.db->store(), s.file) + s.sql);
        }
    }

    long run() {
        m_found.clear();
        if (m_pgFloor) {
            const std::vector<std::string_view> binds(m_s.binds.begin(), m_s.binds.end());
            m_pgFloor->run(m_pgName, binds, 1, &m_found, m_s.garder);
        } else {
            sqlite3_bind_int(m_stmt, 1, std::stoi(m_s.binds[0]));
            for (std::size_t i = 1; i < m_s.binds.size(); ++i) {
                const auto size = static_cast<int>(m_s.binds[i].size());
                const int at = static_cast<int>(i + 1);
                if (i >= m_s.premierTexte)
                    sqlite3_bind_text(m_stmt, at, m_s.binds[i].data(), size, SQLITE_STATIC);
                else
                    sqlite3_bind_blob(m_stmt, at, m_s.binds[i].data(), size, SQLITE_STATIC);
            }
            while (sqlite3_step(m_stmt) == SQLITE_ROW) {
                std::string_view rec(static_cast<const char*>(sqlite3_column_blob(m_stmt, 1)),
                                     static_cast<std::size_t>(sqlite3_column_bytes(m_stmt, 1)));
                if (m_s.garder && !m_s.garder(rec)) continue;
                m_found.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, 0)), rec);
            }
            sqlite3_reset(m_stmt);
        }
        if (m_s.avant) std::sort(m_found.begin(), m_found.end(), m_s.avant);
        benchmark::DoNotOptimize(m_found.data());
        return static_cast<long>(m_found.size());
    }

private:
    const Selection& m_s;
    std::unique_ptr<bench::Floor> m_floor;
    sqlite3_stmt* m_stmt = nullptr;
    std::unique_ptr<bench::PgFloor> m_pgFloor;
    std::string m_pgName;
    std::vector<std::pair<std::string, std::string>> m_found;
};

// The sentence, each run followed by its SQL; x_sql is the ratio of their times.
void BM_Phrase(benchmark::State& state, std::size_t which, bool pg) {
    Fichier& f = fichier(state.range(0), pg);
    const Selection s = selections()[which];
    SqlALaMain sql(f, s);
    long rows = interroger(*f.db, s.file, s.sentence, s.list);
    long sqlRows = sql.run();
    const bench::PairedSeconds seconds = bench::alternately(
        state, [&] { rows = interroger(*f.db, s.file, s.sentence, s.list); }, [&] { sqlRows = sql.run(); });
    if (rows != sqlRows) state.SkipWithError("the sentence and its SQL disagree on the rows");
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["records"] = static_cast<double>(f.db->store().count("SSIADTOURNEE"));
    state.counters["sql_us"] = seconds.reference / static_cast<double>(state.iterations()) * 1e6;
    state.counters["x_sql"] = seconds.measured / seconds.reference;
}

void registerAll() {
    const auto all = selections();
    // On PostgreSQL 100,000 records: a million take long to generate there.
    const bool pg = !bench::pgServer().empty();
    for (std::size_t i = 0; i < all.size(); ++i) {
        benchmark::RegisterBenchmark((std::string("phrase/") + all[i].nom).c_str(), BM_Phrase, i, false)
            ->ArgName("records")
            ->Arg(100000)
            ->Arg(1000000)
            ->Unit(benchmark::kMicrosecond);
        if (!pg) continue;
        benchmark::RegisterBenchmark((std::string("pg/phrase/") + all[i].nom).c_str(), BM_Phrase, i, true)
            ->ArgName("records")
            ->Arg(100000)
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    return bench::runBenchmarks(argc, argv, [] { g_fichiers.clear(); });
}
