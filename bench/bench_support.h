#pragma once

// What the benchmarks share: a generated service in a temporary file, a store that records the calls
// made on it, and the replay of those calls as bare SQL on the same file, which is the floor a routine
// is compared with.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/demo_data.h"
#include "base/clock.h"
#include "base/date.h"
#include "mvdb/database.h"
#include "mvdb/dictionary.h"
#include "mvdb/forwarding_store.h"
#include "mvdb/indexed_store.h"
#include "mvdb/sqlite_store.h"
#include "mvdb/store.h"

namespace bench {

inline base::Date today() {
    return *base::Date::fromDmy(23, 11, 2026);
}

// A file under the temporary directory, removed with its journal when the object goes.
struct TempFile {
    std::string path;
    explicit TempFile(const std::string& name)
        : path((std::filesystem::temp_directory_path() /
                ("zd-bench-" + std::to_string(::getpid()) + "-" + name + ".db"))
                   .string()) {
        clear();
    }
    ~TempFile() { clear(); }
    void clear() const {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"})
            std::filesystem::remove(path + suffix);
    }
};

// The demo service of `aides` aidés with 60 days of history, written once into `path`.
inline void generateService(const std::string& path, int aides) {
    base::FixedClock clock(today(), 8 * 3600);
    mvdb::Database database(mvdb::SqliteStore::open(path, mvdb::OpenMode::CreateIfMissing), clock);
    app::writeDemoService(database, {today(), aides, 60, 1});
}

// The process's peak resident memory, from the kernel's high-water mark, which resetPeakResident
// brings back to the present size (Linux): a routine's own peak, apart from the generation of its data.
inline long statusKb(const char* field) {
    long kb = -1;
    if (std::FILE* status = std::fopen("/proc/self/status", "r")) {
        char line[256];
        const std::size_t n = std::strlen(field);
        while (std::fgets(line, sizeof line, status)) {
            if (std::strncmp(line, field, n) == 0 && line[n] == ':') {
                kb = std::atol(line + n + 1);
                break;
            }
        }
        std::fclose(status);
    }
    return kb;
}

inline long peakResidentKb() {
    if (long kb = statusKb("VmHWM"); kb >= 0) return kb;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

inline long residentKb() {
    return statusKb("VmRSS");
}

inline void resetPeakResident() {
    if (std::FILE* refs = std::fopen("/proc/self/clear_refs", "w")) {
        std::fputs("5", refs);
        std::fclose(refs);
    }
}

// The main of a benchmark program once its benchmarks are registered: runs those the command line
// selects, then `dropData` (the generated services, removed while what they need still lives). Gives
// the program's exit status.
template <class DropData>
int runBenchmarks(int argc, char** argv, DropData dropData) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    dropData();
    return 0;
}

// The seconds that `measured` and `reference` took over the benchmark's iterations.
struct PairedSeconds {
    double measured = 0;
    double reference = 0;
};

// Runs `measured` at each iteration of the benchmark, followed by `reference`, which the benchmark does
// not time but this does: both meet the machine in the same state, so that the ratio of their times
// holds even when the machine's speed drifts from one second to the next.
template <class Measured, class Reference>
PairedSeconds alternately(benchmark::State& state, Measured measured, Reference reference) {
    using Clock = std::chrono::steady_clock;
    const auto since = [](Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    PairedSeconds total;
    for (auto _ : state) {
        auto start = Clock::now();
        measured();
        total.measured += since(start);
        state.PauseTiming();
        start = Clock::now();
        reference();
        total.reference += since(start);
        state.ResumeTiming();
    }
    return total;
}

// One call made on the store, as much of it as a replay needs.
struct Call {
    enum Kind { Read, Write, Remove, ScanAll, ScanRange, BeginRead, EndRead } kind;
    std::string file;
    std::string key;
    std::string text;
    mvdb::KeyRange range;
};

// Passes everything to the real store and, while recording, keeps each read, write, delete and scan.
class RecordingStore : public mvdb::ForwardingStore {
public:
    using ForwardingStore::ForwardingStore;

    bool recording = false;
    std::vector<Call> calls;
    // Makes the layers above read one record at a time, as a display did before it read in bulk: the
    // store says a transaction is open, inside which nothing is held.
    bool readOneByOne = false;

    bool inTransaction() const override { return readOneByOne || ForwardingStore::inTransaction(); }

    std::optional<std::string> read(const std::string& f, const std::string& k) override {
        if (recording) keep({Call::Read, f, k, {}, {}});
        return ForwardingStore::read(f, k);
    }
    bool readInto(const std::string& f, const std::string& k, std::string& t) override {
        if (recording) keep({Call::Read, f, k, {}, {}});
        return ForwardingStore::readInto(f, k, t);
    }
    void write(const std::string& f, const std::string& k, const std::string& t) override {
        if (recording) keep({Call::Write, f, k, t, {}});
        ForwardingStore::write(f, k, t);
    }
    void remove(const std::string& f, const std::string& k) override {
        if (recording) keep({Call::Remove, f, k, {}, {}});
        ForwardingStore::remove(f, k);
    }
    void scanAll(const std::string& f, const mvdb::RecordVisitor& v) override {
        if (recording) keep({Call::ScanAll, f, {}, {}, {}});
        ForwardingStore::scanAll(f, v);
    }
    // Replayed as one scan per file: on a server the floor then waits more often than the store did.
    void scanFiles(const std::vector<std::string>& f, const mvdb::FileRecordVisitor& v) override {
        if (recording) {
            for (const std::string& file : f)
                keep({Call::ScanAll, file, {}, {}, {}});
        }
        ForwardingStore::scanFiles(f, v);
    }
    void scanRange(const std::string& f, const mvdb::KeyRange& r, const mvdb::RecordVisitor& v) override {
        if (recording) keep({Call::ScanRange, f, {}, {}, r});
        ForwardingStore::scanRange(f, r, v);
    }

    // A routine that reads inside one read transaction pays its locks once: the floor does the same.
    void beginRead() override {
        if (recording) keep({Call::BeginRead, {}, {}, {}, {}});
        ForwardingStore::beginRead();
    }
    void endRead() override {
        if (recording) keep({Call::EndRead, {}, {}, {}, {}});
        ForwardingStore::endRead();
    }

private:
    // Called only while recording: a display timed must not pay for copies it does not keep.
    void keep(Call call) { calls.push_back(std::move(call)); }
};

// The calls by kind and file, on stderr: where a routine's reads go.
inline void printCalls(const std::vector<Call>& calls) {
    static const char* const kinds[] = {"read",      "write",     "remove", "scanAll",
                                        "scanRange", "beginRead", "endRead"};
    std::map<std::string, int> tally;
    for (const Call& c : calls)
        ++tally[std::string(kinds[c.kind]) + " " + c.file +
                (c.kind == Call::ScanRange ? " fld " + std::to_string(c.range.field) : "")];
    for (const auto& [what, n] : tally)
        std::fprintf(stderr, "%8d %s\n", n, what.c_str());
}

// A bare connection to a service file, with the statements a hand-written program would prepare once.
// Work files live in this connection's temp schema, as they do in the store's.
class Floor {
public:
    explicit Floor(const std::string& path) {
        if (sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
            SQLITE_OK)
            throw std::runtime_error("floor: cannot open " + path);
        exec("PRAGMA journal_mode=WAL");
        exec("PRAGMA synchronous=FULL");
        exec("PRAGMA temp_store=MEMORY");
        // The store's own settings: the floor is what the same connection could do at best.
        exec("PRAGMA cache_size=-65536");
        exec("PRAGMA mmap_size=268435456");
    }
    ~Floor() {
        for (sqlite3_stmt* s : m_owned)
            sqlite3_finalize(s);
        sqlite3_close(m_db);
    }
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    sqlite3* db() { return m_db; }
    void exec(const std::string& sql) {
        if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error("floor: " + std::string(sqlite3_errmsg(m_db)) + " in " + sql);
    }
    sqlite3_stmt* prepare(const std::string& sql) {
        sqlite3_stmt* s = nullptr;
        if (sqlite3_prepare_v3(m_db, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &s, nullptr) != SQLITE_OK)
            throw std::runtime_error("floor: " + std::string(sqlite3_errmsg(m_db)) + " in " + sql);
        m_owned.push_back(s);
        return s;
    }
    // Steps to the end, reading every column of every row as a caller would, and gives the rows.
    static long drain(sqlite3_stmt* s) {
        long rows = 0;
        while (sqlite3_step(s) == SQLITE_ROW) {
            ++rows;
            for (int i = 0; i < sqlite3_column_count(s); ++i) {
                benchmarkSink += sqlite3_column_bytes(s, i);
                benchmarkSink += reinterpret_cast<std::uintptr_t>(sqlite3_column_blob(s, i)) & 1;
            }
        }
        sqlite3_reset(s);
        sqlite3_clear_bindings(s);
        return rows;
    }
    static inline std::size_t benchmarkSink = 0;

private:
    sqlite3* m_db = nullptr;
    std::vector<sqlite3_stmt*> m_owned;
};

// The statement that a store runs for a recorded call.
inline mvdb::StoreStatement statementOf(const Call& c) {
    switch (c.kind) {
        case Call::Read:
            return mvdb::StoreStatement::Read;
        case Call::Write:
            return mvdb::StoreStatement::Write;
        case Call::Remove:
            return mvdb::StoreStatement::Remove;
        case Call::ScanAll:
            return mvdb::StoreStatement::ScanAll;
        default:
            return mvdb::StoreStatement::ScanRange;
    }
}

// The calls of a routine, each turned into the one prepared statement that the store runs for it on the
// file; `store` names the statements and runs none of them.
class Replay {
public:
    Replay(Floor& floor, const std::vector<Call>& calls, mvdb::IndexedStore& store) : m_floor(floor) {
        for (const Call& c : calls) {
            std::string sql;
            if (c.kind == Call::BeginRead || c.kind == Call::EndRead) {
                sql = c.kind == Call::BeginRead ? "BEGIN" : "COMMIT";
            } else {
                if (mvdb::dictionaryFor(c.file).scratch)
                    floor.exec(store.statementText(mvdb::StoreStatement::CreateTable, c.file));
                sql = store.statementText(statementOf(c), c.file, c.range);
            }
            auto [it, fresh] = m_statements.try_emplace(sql, nullptr);
            if (fresh) it->second = floor.prepare(sql);
            m_steps.push_back({&c, it->second});
        }
    }

    // Runs every statement once, in the routine's order; gives the rows read.
    long run() {
        long rows = 0;
        int readers = 0;  // read transactions nest; the outermost pair is the one that counts
        for (const auto& [c, s] : m_steps) {
            switch (c->kind) {
                case Call::BeginRead:
                    if (readers++ > 0) continue;
                    break;
                case Call::EndRead:
                    if (readers == 0 || --readers > 0) continue;
                    break;
                case Call::Read:
                case Call::Remove:
                    bindText(s, 1, c->key);
                    break;
                case Call::Write:
                    bindText(s, 1, c->key);
                    sqlite3_bind_blob(s, 2, c->text.data(), static_cast<int>(c->text.size()), SQLITE_STATIC);
                    break;
                case Call::ScanAll:
                    break;
                case Call::ScanRange:
                    sqlite3_bind_int(s, 1, c->range.field);
                    bindBlob(s, 2, c->range.low);
                    if (!c->range.high.empty()) bindBlob(s, 3, c->range.high);
                    break;
            }
            rows += Floor::drain(s);
        }
        return rows;
    }

private:
    static void bindText(sqlite3_stmt* s, int i, const std::string& v) {
        sqlite3_bind_text(s, i, v.data(), static_cast<int>(v.size()), SQLITE_STATIC);
    }
    static void bindBlob(sqlite3_stmt* s, int i, const std::string& v) {
        sqlite3_bind_blob(s, i, v.data(), static_cast<int>(v.size()), SQLITE_STATIC);
    }
    Floor& m_floor;
    std::map<std::string, sqlite3_stmt*> m_statements;
    std::vector<std::pair<const Call*, sqlite3_stmt*>> m_steps;
};

}  // namespace bench
