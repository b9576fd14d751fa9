// Saving: the writes of a tournée of 40 labels (the stored version's records deleted, one record per
// label written, one transaction synced to disk), and the purge run at Init on a file of 1,000,000
// SSIADTOURNEE records of which nine in ten are older than two months and outside the October windows.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>
#include <memory>

#include "base/text.h"
#include "bench_support.h"
#include "data/gateway.h"
#include "data/layouts.h"
#include "data/purge.h"

namespace {

std::string jour(const base::Date& d) {
    return base::zeroPad(d.internalDay(), 5);
}

// The writes of Cmd_Ok for a tournée of `labels` labels, the day's previous version being as long.
void BM_EnregistrementTournee(benchmark::State& state) {
    const int labels = static_cast<int>(state.range(0));
    bench::TempFile file("commit");
    bench::generateService(file.path, 1000);
    base::FixedClock clock(bench::today(), 8 * 3600);
    auto db = std::make_shared<mvdb::Database>(
        mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly), clock);
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
BENCHMARK(BM_EnregistrementTournee)->Arg(40)->Unit(benchmark::kMillisecond)->UseRealTime();

// A file of `records` interventions, nine in ten before the limit two months back and after last
// October's window, the others from the limit to today; written once, copied for each run.
struct FichierApurement {
    bench::TempFile file;
    explicit FichierApurement(long records) : file("purge-" + std::to_string(records)) {
        base::FixedClock clock(bench::today(), 8 * 3600);
        mvdb::Database db(mvdb::SqliteStore::open(file.path, mvdb::OpenMode::CreateIfMissing), clock);
        const data::FenetresApurement f = data::CalculerFenetres(bench::today());
        const int limite = f.DateLimite.internalDay();
        const int aujourdhui = bench::today().internalDay();
        mvdb::Transaction t(db);
        for (long i = 0; i < records; ++i) {
            const bool ancien = i % 10 != 0;
            const long n = i / 10;
            const int d = ancien ? limite - 1 - static_cast<int>(n % 250)
                                 : limite + static_cast<int>(n % (aujourdhui - limite));
            const std::string key = base::zeroPad(1 + n % 97, 3) + base::zeroPad(n % 99999 + 1, 5) +
                                    base::zeroPad(d, 5) +
                                    base::zeroPad(600 + (n / 99999) % 90 * 10 + i % 10, 4);
            mvdb::DynamicRecord r;
            r.set(data::tournee::kHeureFin, "0930");
            r.set(data::tournee::kCleProtocole, key.substr(3, 5) + "210000000011" + "0900");
            db.store().write("SSIADTOURNEE", key, r.text());
        }
        t.commit();
    }
};

void BM_ApurementInit(benchmark::State& state) {
    static std::map<long, std::unique_ptr<FichierApurement>> sources;
    auto& s = sources[state.range(0)];
    if (!s) s = std::make_unique<FichierApurement>(state.range(0));
    FichierApurement& source = *s;
    bench::TempFile copie("purge-run");
    long avant = 0, apres = 0;
    for (auto _ : state) {
        state.PauseTiming();
        copie.clear();
        {
            // A checkpoint folds the journal into the file, so one copy holds everything.
            bench::Floor f(source.file.path);
            f.exec("PRAGMA wal_checkpoint(TRUNCATE)");
        }
        std::filesystem::copy_file(source.file.path, copie.path);
        base::FixedClock clock(bench::today(), 8 * 3600);
        data::FichiersSSIAD fichiers;
        fichiers.TheDatabase = std::make_shared<mvdb::Database>(
            mvdb::SqliteStore::open(copie.path, mvdb::OpenMode::ExistingOnly), clock);
        data::OuvrirFichiersSSIAD(fichiers);
        avant = static_cast<long>(fichiers.TheDatabase->store().count("SSIADTOURNEE"));
        state.ResumeTiming();

        data::ApurerFichierSSIADTOURNEE(fichiers, bench::today(), {});

        state.PauseTiming();
        apres = static_cast<long>(fichiers.TheDatabase->store().count("SSIADTOURNEE"));
        data::FermerFichiersSSIAD(fichiers);
        state.ResumeTiming();
    }
    state.counters["before"] = static_cast<double>(avant);
    state.counters["after"] = static_cast<double>(apres);
    state.counters["peak_MB"] = static_cast<double>(bench::peakResidentKb()) / 1024.0;
}
BENCHMARK(BM_ApurementInit)
    ->Arg(100000)
    ->Arg(1000000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
