// The command-line tools on records far wider than the screen's own: `query --list` of thousands of
// attributes, and one attribute of tens of thousands of values loaded and dumped as JSON Lines. Each
// must grow as the width does, not as its square: the fitted complexity is printed beside the times.
#include <benchmark/benchmark.h>

#include <memory>
#include <sstream>
#include <string>

#include "app/commands.h"
#include "app/records_json.h"
#include "bench_support.h"
#include "mvdb/database.h"
#include "mvdb/dynamic_record.h"
#include "mvdb/sqlite_store.h"

namespace {

constexpr int kRecords = 20;
const std::string kFile = "LARGE";

struct WideDatabase {
    base::FixedClock clock{bench::today(), 8 * 3600};
    mvdb::Database db{mvdb::SqliteStore::open(":memory:", mvdb::OpenMode::CreateIfMissing), clock};
    WideDatabase() { db.store().createFile(kFile); }
};

// `kRecords` records of `attributes` attributes each, and the list of all of them with the key.
void BM_QueryList(benchmark::State& state) {
    const auto attributes = static_cast<int>(state.range(0));
    WideDatabase w;
    std::string text, list = "0";
    for (int a = 1; a <= attributes; ++a) {
        if (a > 1) text += mvdb::kAttributeMark;
        text += "valeur " + std::to_string(a);
        list += " " + std::to_string(a);
    }
    for (int r = 0; r < kRecords; ++r)
        w.db.store().write(kFile, "K" + std::to_string(r), text);
    for (auto _ : state) {
        std::ostringstream out;
        app::queryRecords(w.db, kFile, list, "SELECT " + kFile, out);
        benchmark::DoNotOptimize(out.tellp());
    }
    state.SetComplexityN(attributes);
}

// One JSON line of a record whose attribute 1 holds `values` values.
std::string longValueLine(int values) {
    std::string text;
    for (int v = 1; v <= values; ++v) {
        if (v > 1) text += mvdb::kValueMark;
        text += std::to_string(v);
    }
    return app::recordToJson({kFile, "K", text});
}

void BM_LoadLongValue(benchmark::State& state) {
    const auto values = static_cast<int>(state.range(0));
    const std::string line = longValueLine(values);
    WideDatabase w;
    for (auto _ : state) {
        std::istringstream in(line);
        benchmark::DoNotOptimize(app::loadRecords(w.db, in, "bench"));
    }
    state.SetComplexityN(values);
}

void BM_DumpLongValue(benchmark::State& state) {
    const auto values = static_cast<int>(state.range(0));
    WideDatabase w;
    std::istringstream in(longValueLine(values));
    app::loadRecords(w.db, in, "bench");
    for (auto _ : state) {
        std::ostringstream out;
        app::dumpRecords(w.db, kFile, out);
        benchmark::DoNotOptimize(out.tellp());
    }
    state.SetComplexityN(values);
}

BENCHMARK(BM_QueryList)
    ->ArgName("attributes")
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(4000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
// One value of 10,000 to 80,000 multi-values, loaded and dumped: the time must grow as the count does.
void valeursLongues(benchmark::internal::Benchmark* b) {
    b->ArgName("values")->Arg(10000)->Arg(20000)->Arg(40000)->Arg(80000)->Complexity()->Unit(
        benchmark::kMillisecond);
}
BENCHMARK(BM_LoadLongValue)->Apply(valeursLongues);
BENCHMARK(BM_DumpLongValue)->Apply(valeursLongues);

}  // namespace

int main(int argc, char** argv) {
    return bench::runBenchmarks(argc, argv, [] {});
}
