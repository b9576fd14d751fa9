// The display of a day (Cmd_Affichage) on generated services of 100, 1,000 and 5,000 aidés, with and
// without a tournée, against its floor: the very reads, writes and deletes one display makes, replayed
// as bare prepared statements on the same file in the same run. Peak memory is reported too. On
// PostgreSQL, the display against the same on SQLite (x_sqlite) with the round trips it makes to the
// server, and the display across a network whose round trips a proxy slows down.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>

#include "bench_support.h"
#include "day_choice.h"
#include "pg_support.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "support/latency_proxy.h"
#include "toolkit/headless_host.h"

namespace {

// A generated service, kept in a temporary file or, on PostgreSQL, in a schema of its own.
struct Service {
    bench::TempFile file;
    std::unique_ptr<bench::PgSchema> schema;

    Service(int aides, bool pg) : file("display-" + std::to_string(aides)) {
        if (pg) {
            schema = std::make_unique<bench::PgSchema>("display_" + std::to_string(aides));
            bench::generateService(*schema, aides);
        } else {
            bench::generateService(file.path, aides);
        }
    }
    // The service's store; on PostgreSQL through `address`, the test server's by default.
    std::unique_ptr<mvdb::Store> open(const std::string& address = bench::pgServer()) const {
        if (schema) return mvdb::PgStore::open(address, mvdb::OpenMode::ExistingOnly, schema->name);
        return mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly);
    }
};

// The screen, started by its host on a service's store.
struct Ecran {
    const Service& service;
    base::FixedClock clock{bench::today(), 8 * 3600};
    bench::RecordingStore* store = nullptr;
    std::shared_ptr<mvdb::Database> db;
    toolkit::HeadlessHost host;
    std::unique_ptr<control::Ctr_Zandorel> c;

    Ecran(const Service& s, std::unique_ptr<mvdb::Store> inner) : service(s) {
        auto recording = std::make_unique<bench::RecordingStore>(std::move(inner));
        store = recording.get();
        db = std::make_shared<mvdb::Database>(std::move(recording), clock);
        c = bench::controleSur(host, clock, db);
        c->Init();
    }

    void afficher(bool avecTournee) {
        bench::choisirJour(*c, avecTournee);
        c->Cmd_Affichage.fireClick();
    }
};

// One service and one screen per size and store, made on first use and kept for the run; dropped
// before exit, screens first.
std::map<std::pair<int, bool>, std::unique_ptr<Service>> g_services;
std::map<std::pair<int, bool>, std::unique_ptr<Ecran>> g_ecrans;

const Service& service(int aides, bool pg) {
    auto& s = g_services[{aides, pg}];
    if (!s) s = std::make_unique<Service>(aides, pg);
    return *s;
}

Ecran& ecran(int aides, bool pg) {
    auto& e = g_ecrans[{aides, pg}];
    if (!e) e = std::make_unique<Ecran>(service(aides, pg), service(aides, pg).open());
    return *e;
}

// The round trips to the server of one display, counted by a proxy that adds `roundTrip` to each;
// the screen is then timed through it by `measure`, if given.
template <class Measure>
std::int64_t throughProxy(const Service& s, bool avecTournee, std::chrono::microseconds roundTrip,
                          Measure measure, bool oneByOne = false) {
    testing_support::LatencyProxy proxy(testing_support::pgSocketOf(bench::pgServer()), roundTrip);
    Ecran e(s, s.open(testing_support::pgAddressThrough(bench::pgServer(), proxy.port())));
    e.afficher(avecTournee);
    e.store->readOneByOne = oneByOne;
    e.afficher(avecTournee);
    proxy.resetRoundTrips();
    e.afficher(avecTournee);
    const std::int64_t trips = proxy.roundTrips();
    measure(e);
    return trips;
}

// The floor of one display: its calls replayed on the same file or schema, through a connection of its
// own. Each run gives the rows read.
class Plancher {
public:
    Plancher(Ecran& e, const std::vector<bench::Call>& calls) {
        if (e.service.schema) {
            auto store =
                mvdb::PgStore::open(bench::pgServer(), mvdb::OpenMode::ExistingOnly, e.service.schema->name);
            m_pgFloor = std::make_unique<bench::PgFloor>(bench::pgServer(), e.service.schema->name);
            m_pgReplay = std::make_unique<bench::PgReplay>(*m_pgFloor, calls, *store);
        } else {
            auto store = mvdb::SqliteStore::open(e.service.file.path, mvdb::OpenMode::ExistingOnly);
            m_floor = std::make_unique<bench::Floor>(e.service.file.path);
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

// The calls of one display, after one that warms the caches as the others will find them.
std::vector<bench::Call> appelsDUnAffichage(Ecran& e, bool avecTournee) {
    e.afficher(avecTournee);
    e.store->calls.clear();
    e.store->recording = true;
    e.afficher(avecTournee);
    e.store->recording = false;
    std::vector<bench::Call> calls = std::move(e.store->calls);
    e.store->calls.clear();
    if (std::getenv("ZD_BENCH_CALLS")) bench::printCalls(calls);
    return calls;
}

void compterAppels(benchmark::State& state, const std::vector<bench::Call>& calls) {
    std::size_t reads = 0, scans = 0, writes = 0;
    for (const bench::Call& c : calls) {
        if (c.kind == bench::Call::Read)
            ++reads;
        else if (c.kind == bench::Call::Write || c.kind == bench::Call::Remove)
            ++writes;
        else if (c.kind == bench::Call::ScanAll || c.kind == bench::Call::ScanRange)
            ++scans;
    }
    state.counters["pt_reads"] = static_cast<double>(reads);
    state.counters["scans"] = static_cast<double>(scans);
    state.counters["writes"] = static_cast<double>(writes);
}

// On SQLite, the display against its floors and against the same display reading one record at a
// time: floor_ms replays the reads of the latter (every record the display needs, one by one, as the
// floor was before the display read in bulk), bulk_floor_ms the display's own calls.
void BM_Affichage(benchmark::State& state) {
    const int aides = static_cast<int>(state.range(0));
    const bool avecTournee = state.range(1) != 0;
    Ecran& e = ecran(aides, false);
    const std::vector<bench::Call> calls = appelsDUnAffichage(e, avecTournee);
    e.store->readOneByOne = true;
    const std::vector<bench::Call> unParUn = appelsDUnAffichage(e, avecTournee);
    e.store->readOneByOne = false;

    Plancher plancher(e, unParUn);
    Plancher plancherGroupe(e, calls);
    long rows = plancher.run();
    plancherGroupe.run();

    using Clock = std::chrono::steady_clock;
    const auto since = [](Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    double floorSeconds = 0, bulkFloorSeconds = 0, oneByOneSeconds = 0;
    const bench::PairedSeconds seconds = bench::alternately(
        state, [&] { e.afficher(avecTournee); },
        [&] {
            auto start = Clock::now();
            rows = plancher.run();
            floorSeconds += since(start);
            start = Clock::now();
            plancherGroupe.run();
            bulkFloorSeconds += since(start);
            start = Clock::now();
            e.store->readOneByOne = true;
            e.afficher(avecTournee);
            e.store->readOneByOne = false;
            oneByOneSeconds += since(start);
        });

    const double iterations = static_cast<double>(state.iterations());
    state.counters["floor_ms"] = floorSeconds / iterations * 1e3;
    state.counters["x_floor"] = seconds.measured / floorSeconds;
    state.counters["bulk_floor_ms"] = bulkFloorSeconds / iterations * 1e3;
    state.counters["one_by_one_ms"] = oneByOneSeconds / iterations * 1e3;
    state.counters["x_one_by_one"] = seconds.measured / oneByOneSeconds;
    compterAppels(state, calls);
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["peak_MB"] = static_cast<double>(bench::peakResidentKb()) / 1024.0;
    state.SetLabel(avecTournee ? "avec tournée" : "sans tournée");
}

// On PostgreSQL, the display against the same display on SQLite, and its round trips to the server.
void BM_AffichagePg(benchmark::State& state) {
    const int aides = static_cast<int>(state.range(0));
    const bool avecTournee = state.range(1) != 0;
    Ecran& e = ecran(aides, true);
    Ecran& sqlite = ecran(aides, false);
    const std::vector<bench::Call> calls = appelsDUnAffichage(e, avecTournee);
    sqlite.afficher(avecTournee);
    const std::int64_t trips =
        throughProxy(e.service, avecTournee, std::chrono::microseconds(0), [](Ecran&) {});
    const std::int64_t tripsOneByOne = throughProxy(
        e.service, avecTournee, std::chrono::microseconds(0), [](Ecran&) {}, true);

    const bench::PairedSeconds seconds = bench::alternately(
        state, [&] { e.afficher(avecTournee); }, [&] { sqlite.afficher(avecTournee); });

    const double iterations = static_cast<double>(state.iterations());
    state.counters["sqlite_ms"] = seconds.reference / iterations * 1e3;
    state.counters["x_sqlite"] = seconds.measured / seconds.reference;
    state.counters["round_trips"] = static_cast<double>(trips);
    state.counters["trips_one_by_one"] = static_cast<double>(tripsOneByOne);
    compterAppels(state, calls);
    state.SetLabel(avecTournee ? "avec tournée" : "sans tournée");
}

// On PostgreSQL across a network of `ms` milliseconds per round trip, made by a proxy.
void BM_AffichagePgLatence(benchmark::State& state) {
    const int aides = static_cast<int>(state.range(0));
    const bool avecTournee = state.range(1) != 0;
    const auto roundTrip = std::chrono::milliseconds(state.range(2));
    const std::int64_t trips = throughProxy(service(aides, true), avecTournee, roundTrip, [&](Ecran& e) {
        for (auto _ : state)
            e.afficher(avecTournee);
    });
    state.counters["round_trips"] = static_cast<double>(trips);
    state.SetLabel(avecTournee ? "avec tournée" : "sans tournée");
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("BM_Affichage", BM_Affichage)
        ->ArgNames({"aides", "tournee"})
        ->ArgsProduct({{100, 1000, 5000}, {0, 1}})
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    // On PostgreSQL up to 1,000 aidés: generating 5,000 through the store takes minutes there.
    if (!bench::pgServer().empty()) {
        benchmark::RegisterBenchmark("BM_AffichagePg", BM_AffichagePg)
            ->ArgNames({"aides", "tournee"})
            ->ArgsProduct({{40, 100, 1000}, {0, 1}})
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RegisterBenchmark("BM_AffichagePgLatence", BM_AffichagePgLatence)
            ->ArgNames({"aides", "tournee", "ms"})
            ->ArgsProduct({{40}, {0, 1}, {5, 20}})
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    return bench::runBenchmarks(argc, argv, [] {
        g_ecrans.clear();
        g_services.clear();
    });
}
