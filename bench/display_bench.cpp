// The display of a day (Cmd_Affichage) on generated services of 100, 1,000 and 5,000 aidés, with and
// without a tournée, against its floor: the very reads, writes and deletes one display makes, replayed
// as bare prepared statements on the same file in the same run. Peak memory is reported too.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>

#include "bench_support.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "toolkit/headless_host.h"

namespace {

// The screen, started by its host on a generated service kept in a temporary file.
struct Ecran {
    bench::TempFile file;
    base::FixedClock clock{bench::today(), 8 * 3600};
    bench::RecordingStore* store = nullptr;
    std::shared_ptr<mvdb::Database> db;
    toolkit::HeadlessHost host;
    std::unique_ptr<control::Ctr_Zandorel> c;

    explicit Ecran(int aides) : file("display-" + std::to_string(aides)) {
        bench::generateService(file.path, aides);
        auto recording = std::make_unique<bench::RecordingStore>(
            mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly));
        store = recording.get();
        db = std::make_shared<mvdb::Database>(std::move(recording), clock);
        c = std::make_unique<control::Ctr_Zandorel>(host, clock);
        c->setTheClient(nullptr);
        c->setTheDatabase(db);
        c->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
        c->Init();
    }

    void afficher(bool avecTournee) {
        if (avecTournee) {
            c->Txt_CodeTournee.setText("001");
            c->Cbo_Date.setText("23/11/2026");
        } else {
            c->Txt_CodeTournee.setText("");
            c->Txt_Date.setText("23/11/2026");
        }
        c->Cmd_Affichage.fireClick();
    }
};

// One service per size, generated on first use and kept for the run.
Ecran& ecran(int aides) {
    static std::map<int, std::unique_ptr<Ecran>> ecrans;
    auto& e = ecrans[aides];
    if (!e) e = std::make_unique<Ecran>(aides);
    return *e;
}

void BM_Affichage(benchmark::State& state) {
    const int aides = static_cast<int>(state.range(0));
    const bool avecTournee = state.range(1) != 0;
    Ecran& e = ecran(aides);

    // One display recorded, after one that warms the caches as the others will find them.
    e.afficher(avecTournee);
    e.store->calls.clear();
    e.store->recording = true;
    e.afficher(avecTournee);
    e.store->recording = false;
    std::vector<bench::Call> calls = std::move(e.store->calls);
    e.store->calls.clear();

    auto debutAffichage = std::chrono::steady_clock::now();
    if (std::getenv("ZD_BENCH_CALLS")) bench::printCalls(calls);
    for (auto _ : state)
        e.afficher(avecTournee);
    const double affichage =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - debutAffichage).count() /
        static_cast<double>(state.iterations());

    // The floor, timed the same way on its own connection.
    bench::Floor floor(e.file.path);
    bench::Replay replay(floor, calls);
    long rows = replay.run();
    const int tours = 20;
    auto debut = std::chrono::steady_clock::now();
    for (int i = 0; i < tours; ++i)
        rows = replay.run();
    const double plancher =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - debut).count() / tours;

    std::size_t reads = 0, scans = 0, writes = 0;
    for (const bench::Call& c : calls) {
        if (c.kind == bench::Call::Read)
            ++reads;
        else if (c.kind == bench::Call::Write || c.kind == bench::Call::Remove)
            ++writes;
        else
            ++scans;
    }
    state.counters["floor_ms"] = plancher * 1e3;
    state.counters["x_floor"] = affichage / plancher;
    state.counters["pt_reads"] = static_cast<double>(reads);
    state.counters["scans"] = static_cast<double>(scans);
    state.counters["writes"] = static_cast<double>(writes);
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["peak_MB"] = static_cast<double>(bench::peakResidentKb()) / 1024.0;
    state.SetLabel(avecTournee ? "avec tournée" : "sans tournée");
}

BENCHMARK(BM_Affichage)
    ->ArgNames({"aides", "tournee"})
    ->ArgsProduct({{100, 1000, 5000}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
