// The display of a day (Cmd_Affichage) on generated services of 100, 1,000 and 5,000 aidés, with and
// without a tournée, against its floor: the very reads, writes and deletes one display makes, replayed
// as bare prepared statements on the same file in the same run. Peak memory is reported too.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <map>
#include <memory>

#include "bench_support.h"
#include "day_choice.h"
#include "pg_support.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "toolkit/headless_host.h"

namespace {

// The screen, started by its host on a generated service kept in a temporary file or, on PostgreSQL, in
// a schema of its own.
struct Ecran {
    bench::TempFile file;
    std::unique_ptr<bench::PgSchema> schema;
    base::FixedClock clock{bench::today(), 8 * 3600};
    bench::RecordingStore* store = nullptr;
    std::shared_ptr<mvdb::Database> db;
    toolkit::HeadlessHost host;
    std::unique_ptr<control::Ctr_Zandorel> c;

    Ecran(int aides, bool pg) : file("display-" + std::to_string(aides)) {
        std::unique_ptr<mvdb::Store> inner;
        if (pg) {
            schema = std::make_unique<bench::PgSchema>("display_" + std::to_string(aides));
            bench::generateService(*schema, aides);
            inner = schema->open(mvdb::OpenMode::ExistingOnly);
        } else {
            bench::generateService(file.path, aides);
            inner = mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly);
        }
        auto recording = std::make_unique<bench::RecordingStore>(std::move(inner));
        store = recording.get();
        db = std::make_shared<mvdb::Database>(std::move(recording), clock);
        c = std::make_unique<control::Ctr_Zandorel>(host, clock);
        c->setTheClient(nullptr);
        c->setTheDatabase(db);
        c->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
        c->Init();
    }

    void afficher(bool avecTournee) {
        bench::choisirJour(*c, avecTournee);
        c->Cmd_Affichage.fireClick();
    }
};

// One service per size and store, generated on first use and kept for the run; dropped before exit.
std::map<std::pair<int, bool>, std::unique_ptr<Ecran>> g_ecrans;

Ecran& ecran(int aides, bool pg) {
    auto& e = g_ecrans[{aides, pg}];
    if (!e) e = std::make_unique<Ecran>(aides, pg);
    return *e;
}

// The floor of one display: its calls replayed on the same file or schema, through a connection of its
// own. Each run gives the rows read.
class Plancher {
public:
    Plancher(Ecran& e, const std::vector<bench::Call>& calls) {
        if (e.schema) {
            auto store = mvdb::PgStore::open(bench::pgServer(), mvdb::OpenMode::ExistingOnly, e.schema->name);
            m_pgFloor = std::make_unique<bench::PgFloor>(bench::pgServer(), e.schema->name);
            m_pgReplay = std::make_unique<bench::PgReplay>(*m_pgFloor, calls, *store);
        } else {
            auto store = mvdb::SqliteStore::open(e.file.path, mvdb::OpenMode::ExistingOnly);
            m_floor = std::make_unique<bench::Floor>(e.file.path);
            m_replay = std::make_unique<bench::Replay>(*m_floor, calls, *store);
        }
    }
    long run() { return m_replay ? m_replay->run() : m_pgReplay->run(); }

private:
    std::unique_ptr<bench::Floor> m_floor;
    std::unique_ptr<bench::Replay> m_replay;
    std::unique_ptr<bench::PgFloor> m_pgFloor;
    std::unique_ptr<bench::PgReplay> m_pgReplay;
};

void BM_Affichage(benchmark::State& state, bool pg) {
    const int aides = static_cast<int>(state.range(0));
    const bool avecTournee = state.range(1) != 0;
    Ecran& e = ecran(aides, pg);

    // One display recorded, after one that warms the caches as the others will find them.
    e.afficher(avecTournee);
    e.store->calls.clear();
    e.store->recording = true;
    e.afficher(avecTournee);
    e.store->recording = false;
    std::vector<bench::Call> calls = std::move(e.store->calls);
    e.store->calls.clear();
    if (std::getenv("ZD_BENCH_CALLS")) bench::printCalls(calls);

    Plancher plancher(e, calls);
    long rows = plancher.run();

    const bench::PairedSeconds seconds = bench::alternately(
        state, [&] { e.afficher(avecTournee); }, [&] { rows = plancher.run(); });

    std::size_t reads = 0, scans = 0, writes = 0;
    for (const bench::Call& c : calls) {
        if (c.kind == bench::Call::Read)
            ++reads;
        else if (c.kind == bench::Call::Write || c.kind == bench::Call::Remove)
            ++writes;
        else if (c.kind == bench::Call::ScanAll || c.kind == bench::Call::ScanRange)
            ++scans;
    }
    const double iterations = static_cast<double>(state.iterations());
    state.counters["floor_ms"] = seconds.reference / iterations * 1e3;
    state.counters["x_floor"] = seconds.measured / seconds.reference;
    state.counters["pt_reads"] = static_cast<double>(reads);
    state.counters["scans"] = static_cast<double>(scans);
    state.counters["writes"] = static_cast<double>(writes);
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["peak_MB"] = static_cast<double>(bench::peakResidentKb()) / 1024.0;
    state.SetLabel(avecTournee ? "avec tournée" : "sans tournée");
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("BM_Affichage", BM_Affichage, false)
        ->ArgNames({"aides", "tournee"})
        ->ArgsProduct({{100, 1000, 5000}, {0, 1}})
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    // On PostgreSQL up to 1,000 aidés: generating 5,000 through the store takes minutes there.
    if (!bench::pgServer().empty()) {
        benchmark::RegisterBenchmark("BM_AffichagePg", BM_Affichage, true)
            ->ArgNames({"aides", "tournee"})
            ->ArgsProduct({{100, 1000}, {0, 1}})
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    return bench::runBenchmarks(argc, argv, [] { g_ecrans.clear(); });
}
