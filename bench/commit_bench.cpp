// Saving: the writes of a tournée of 40 labels (the stored version's records deleted, one record per
// label written, one transaction synced to disk), and the purge run at Init on a file of 1,000,000
// SSIADTOURNEE records of which nine in ten are older than two months and outside the October windows.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <new>

#include "base/text.h"
#include "bench_support.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "data/purge.h"
#include "pg_support.h"

// Live bytes of the program's own allocations, and their high-water mark: what the purge holds, apart
// from the engine's page cache and the mapped file that its resident size also counts.
namespace {
std::atomic<long> g_live{0};
std::atomic<long> g_peak{0};
}  // namespace

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
    void* p = std::malloc(size == 0 ? 1 : size);
    if (!p) throw std::bad_alloc();
    const long live =
        g_live.fetch_add(static_cast<long>(malloc_usable_size(p))) + static_cast<long>(malloc_usable_size(p));
    long peak = g_peak.load();
    while (live > peak && !g_peak.compare_exchange_weak(peak, live)) {
    }
    return p;
}
void operator delete(void* p) noexcept {
    if (p) g_live.fetch_sub(static_cast<long>(malloc_usable_size(p)));
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    operator delete(p);
}
#pragma GCC diagnostic pop

namespace {

std::string jour(const base::Date& d) {
    return base::zeroPad(d.internalDay(), 5);
}

// The writes of Cmd_Ok for a tournée of `labels` labels, the day's previous version being as long.
void BM_EnregistrementTournee(benchmark::State& state, bool pg) {
    const int labels = static_cast<int>(state.range(0));
    bench::TempFile file("commit");
    std::unique_ptr<bench::PgSchema> schema;
    std::unique_ptr<mvdb::Store> store;
    if (pg) {
        // A smaller service on PostgreSQL, whose generation goes through the store: the tournée written
        // is one of its own either way.
        schema = std::make_unique<bench::PgSchema>("commit");
        bench::generateService(*schema, 100);
        store = schema->open(mvdb::OpenMode::ExistingOnly);
    } else {
        bench::generateService(file.path, 1000);
        store = mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly);
    }
    base::FixedClock clock(bench::today(), 8 * 3600);
    auto db = std::make_shared<mvdb::Database>(std::move(store), clock);
    auto tournees = db->OpenFile("SSIADTOURNEE");
    const std::string day = jour(bench::today().addDays(1));
    auto cle = [&](int i, int version) {
        return data::tournee::cle("050", base::zeroPad(10000 + i, 5), day,
                                  base::zeroPad(600 + (i * 11 + version) % 800, 4));
    };
    int version = 0;
    for (auto _ : state) {
        mvdb::Transaction transaction(*db);
        for (int i = 0; i < labels; ++i)
            tournees->Delete(cle(i, version));
        ++version;
        for (int i = 0; i < labels; ++i) {
            mvdb::DynamicRecord r = tournees->New(cle(i, version));
            r.set(data::tournee::kHeureFin, "0930");
            r.set(data::tournee::kCleProtocole, base::zeroPad(10000 + i, 5) + "210000000011" + "0900");
            r.DBWrite();
        }
        transaction.commit();
    }
}

// The `records` interventions of the purge's file, nine in ten before the limit two months back and
// after last October's window, the others from the limit to today.
template <class Write>
void interventionsApurement(long records, Write write) {
    const data::FenetresApurement f = data::CalculerFenetres(bench::today());
    const int limite = f.DateLimite.internalDay();
    const int aujourdhui = bench::today().internalDay();
    for (long i = 0; i < records; ++i) {
        const bool ancien = i % 10 != 0;
        const long n = i / 10;
        const int d = ancien ? limite - 1 - static_cast<int>(n % 250)
                             : limite + static_cast<int>(n % (aujourdhui - limite));
        const std::string key = base::zeroPad(1 + n % 97, 3) + base::zeroPad(n % 99999 + 1, 5) +
                                base::zeroPad(d, 5) + base::zeroPad(600 + (n / 99999) % 90 * 10 + i % 10, 4);
        mvdb::DynamicRecord r;
        r.set(data::tournee::kHeureFin, "0930");
        r.set(data::tournee::kCleProtocole, key.substr(3, 5) + "210000000011" + "0900");
        write(key, r.text());
    }
}

// The purge's file on SQLite: written once, copied for each run.
struct FichierApurement {
    bench::TempFile file;
    explicit FichierApurement(long records) : file("purge-" + std::to_string(records)) {
        base::FixedClock clock(bench::today(), 8 * 3600);
        mvdb::Database db(mvdb::SqliteStore::open(file.path, mvdb::OpenMode::CreateIfMissing), clock);
        mvdb::Transaction t(db);
        interventionsApurement(records, [&](const std::string& key, const std::string& text) {
            db.store().write("SSIADTOURNEE", key, text);
        });
        t.commit();
    }
};

// The purge's service on PostgreSQL, in a schema made for one run.
std::unique_ptr<mvdb::Store> serviceApurementPg(const bench::PgSchema& schema, long records) {
    std::unique_ptr<mvdb::Store> store = schema.open(mvdb::OpenMode::CreateIfMissing);
    bench::writeInBulk(schema, "SSIADTOURNEE", [&](auto write) { interventionsApurement(records, write); });
    return store;
}

std::map<long, std::unique_ptr<FichierApurement>> g_sources;

void BM_ApurementInit(benchmark::State& state, bool pg) {
    bench::TempFile copie("purge-run");
    long avant = 0, apres = 0, peak = 0, rise = 0, heap = 0;
    int run = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::unique_ptr<bench::PgSchema> schema;
        std::unique_ptr<mvdb::Store> store;
        if (pg) {
            schema = std::make_unique<bench::PgSchema>("purge_" + std::to_string(state.range(0)) + "_" +
                                                       std::to_string(run++));
            store = serviceApurementPg(*schema, state.range(0));
        } else {
            auto& source = g_sources[state.range(0)];
            if (!source) source = std::make_unique<FichierApurement>(state.range(0));
            copie.clear();
            {
                // A checkpoint folds the journal into the file, so one copy holds everything.
                bench::Floor f(source->file.path);
                f.exec("PRAGMA wal_checkpoint(TRUNCATE)");
            }
            std::filesystem::copy_file(source->file.path, copie.path);
            store = mvdb::SqliteStore::open(copie.path, mvdb::OpenMode::ExistingOnly);
        }
        base::FixedClock clock(bench::today(), 8 * 3600);
        data::FichiersSSIAD fichiers;
        fichiers.TheDatabase = std::make_shared<mvdb::Database>(std::move(store), clock);
        data::OuvrirFichiersSSIAD(fichiers);
        avant = static_cast<long>(fichiers.TheDatabase->store().count("SSIADTOURNEE"));
        bench::resetPeakResident();
        const long depart = bench::residentKb();
        const long tas = g_live.load();
        g_peak.store(tas);
        state.ResumeTiming();

        data::ApurerFichierSSIADTOURNEE(fichiers, bench::today(), {});

        state.PauseTiming();
        peak = std::max(peak, bench::peakResidentKb());
        rise = std::max(rise, bench::peakResidentKb() - depart);
        heap = std::max(heap, g_peak.load() - tas);
        apres = static_cast<long>(fichiers.TheDatabase->store().count("SSIADTOURNEE"));
        data::FermerFichiersSSIAD(fichiers);
        schema.reset();
        state.ResumeTiming();
    }
    state.counters["before"] = static_cast<double>(avant);
    state.counters["after"] = static_cast<double>(apres);
    // The purge's own peak: the high-water mark is brought down to the present size before it starts
    // (which holds the mapped file and the generation's leftovers); rise_MB is what the purge added.
    state.counters["peak_MB"] = static_cast<double>(peak) / 1024.0;
    state.counters["rise_MB"] = static_cast<double>(rise) / 1024.0;
    state.counters["heap_MB"] = static_cast<double>(heap) / (1024.0 * 1024.0);
}
}  // namespace

int main(int argc, char** argv) {
    const bool pg = !bench::pgServer().empty();
    for (bool surPg : {false, true}) {
        if (surPg && !pg) break;
        const std::string prefixe = surPg ? "Pg" : "";
        benchmark::RegisterBenchmark(("BM_EnregistrementTournee" + prefixe).c_str(), BM_EnregistrementTournee,
                                     surPg)
            ->Arg(40)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        // On PostgreSQL 100,000 records: a million take long to generate there.
        auto* purge =
            benchmark::RegisterBenchmark(("BM_ApurementInit" + prefixe).c_str(), BM_ApurementInit, surPg)
                ->Arg(100000);
        if (!surPg) purge->Arg(1000000);
        purge->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
    }
    return bench::runBenchmarks(argc, argv, [] { g_sources.clear(); });
}
