// Plays every scenario of this folder through `zandorel play` (in process) and checks its expectations,
// on a fresh SQLite file and, when ZANDOREL_TEST_PG names a server, on a fresh PostgreSQL schema.
//
// A scenario is a script for the runner, with lines for this harness:
//   #! demo today=23/11/2026 [aides=40] [seed=1] [history=60]   the service to play on (a fresh database)
//   #! empty                                                     a fresh database with no record at all
//   #! load FILE                                                 records to load, from this folder
//   #! exit N                                                    the runner's expected exit code (0 by
//   default)
//   #= D /json/pointer VALUE      in the D-th dump, the value at the pointer equals VALUE (JSON)
//   #= D /json/pointer #len N     ... is an array or object of N elements
//   #= D /json/pointer #has TEXT  ... is a text that contains TEXT
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/commands.h"
#include "app/demo_data.h"
#include "app/play.h"
#include "base/clock.h"
#include "mvdb/pg_store.h"
#include "support/pg_service.h"

namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

struct Expectation {
    int line = 0;
    std::size_t dump = 0;
    std::string pointer, kind, value;
};

struct Scenario {
    std::string script;
    std::vector<std::string> setup;
    std::vector<Expectation> expectations;
    int exitCode = 0;
};

std::string trim(const std::string& s) {
    std::size_t b = s.find_first_not_of(" \t"), e = s.find_last_not_of(" \t\r");
    return b == std::string::npos ? "" : s.substr(b, e - b + 1);
}

Scenario readScenario(const fs::path& path) {
    Scenario s;
    std::ifstream in(path);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        s.script += line + "\n";
        if (line.rfind("#!", 0) == 0) {
            std::string directive = trim(line.substr(2));
            if (directive.rfind("exit ", 0) == 0) {
                s.exitCode = std::stoi(directive.substr(5));
            } else {
                s.setup.push_back(directive);
            }
        } else if (line.rfind("#=", 0) == 0) {
            std::istringstream words(line.substr(2));
            Expectation e;
            e.line = number;
            words >> e.dump >> e.pointer;
            std::string rest;
            std::getline(words, rest);
            rest = trim(rest);
            if (rest.rfind("#len ", 0) == 0 || rest.rfind("#has ", 0) == 0) {
                e.kind = rest.substr(0, 4);
                e.value = rest.substr(5);
            } else {
                e.value = rest;
            }
            s.expectations.push_back(e);
        }
    }
    return s;
}

std::string option(const std::string& directive, const std::string& name, const std::string& fallback) {
    std::size_t at = directive.find(name + "=");
    if (at == std::string::npos) return fallback;
    std::size_t start = at + name.size() + 1;
    return directive.substr(start, directive.find(' ', start) - start);
}

// Builds the scenario's service in a fresh database file.
void prepare(const Scenario& s, const fs::path& folder, const std::string& db) {
    base::SystemClock clock;
    auto database = app::openDatabase(db, mvdb::OpenMode::CreateIfMissing, clock);
    for (const std::string& d : s.setup) {
        if (d.rfind("demo", 0) == 0) {
            app::DemoOptions o{app::parseTodayOption(option(d, "today", "23/11/2026")),
                               std::stoi(option(d, "aides", "40")), std::stoi(option(d, "history", "60")),
                               static_cast<unsigned>(std::stoul(option(d, "seed", "1")))};
            app::writeDemoService(*database, o);
        } else if (d == "empty") {
            // The database was just made: nothing to add.
        } else if (d.rfind("load ", 0) == 0) {
            std::ifstream in(folder / trim(d.substr(5)));
            ASSERT_TRUE(in) << "cannot read " << d;
            app::loadRecords(*database, in, d.substr(5));
        } else {
            FAIL() << "unknown directive #! " << d;
        }
    }
}

enum class Store { Sqlite, Pg };

struct Case {
    Store store;
    fs::path path;
};
void PrintTo(const Case& c, std::ostream* out) {
    *out << (c.store == Store::Pg ? "PostgreSQL " : "SQLite ") << c.path.filename().string();
}

// The database a scenario plays on, made empty before and removed after.
class Service {
public:
    Service(Store store, const std::string& name) : m_store(store) {
        const std::string own =
            testing_support::pgSchemaName("zs_" + std::to_string(::getpid()) + "_" + name);
        if (store == Store::Pg) {
            m_address = testing_support::pgServiceAddress(testing_support::pgTestServer(), own);
            mvdb::PgStore::dropSchema(testing_support::pgTestServer(), own);
            m_schema = own;
        } else {
            m_address = (fs::temp_directory_path() / (own + ".db")).string();
            fs::remove(m_address);
        }
    }
    ~Service() {
        if (m_store == Store::Pg) {
            mvdb::PgStore::dropSchema(testing_support::pgTestServer(), m_schema);
        } else {
            for (const char* suffix : {"", "-wal", "-shm"})
                fs::remove(m_address + suffix);
        }
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    const std::string& address() const { return m_address; }

private:
    Store m_store;
    std::string m_address, m_schema;
};

class ScenarioTest : public ::testing::TestWithParam<Case> {};

TEST_P(ScenarioTest, PlaysAsExpected) {
    const fs::path path = GetParam().path;
    if (GetParam().store == Store::Pg && testing_support::pgTestServer().empty())
        GTEST_SKIP()
            << "ZANDOREL_TEST_PG is not set: run under scripts/with_postgres.sh to play on PostgreSQL";
    Scenario s = readScenario(path);
    Service service(GetParam().store, path.stem().string());
    const std::string& db = service.address();
    prepare(s, path.parent_path(), db);

    std::istringstream script(s.script);
    std::ostringstream out, err;
    int code = app::runPlay({db, ""}, script, out, err);
    EXPECT_EQ(code, s.exitCode) << err.str();

    std::vector<json> dumps;
    std::istringstream lines(out.str());
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty() && line[0] == '{' && line.find("\"messages\"") != std::string::npos)
            dumps.push_back(json::parse(line));
    }
    for (const Expectation& e : s.expectations) {
        SCOPED_TRACE(path.filename().string() + ":" + std::to_string(e.line));
        ASSERT_GE(dumps.size(), e.dump) << "no dump number " << e.dump;
        const json& dump = dumps[e.dump - 1];
        json::json_pointer pointer(e.pointer);
        ASSERT_TRUE(dump.contains(pointer)) << e.pointer << " missing";
        const json& actual = dump.at(pointer);
        if (e.kind == "#len") {
            EXPECT_EQ(actual.size(), std::stoul(e.value)) << e.pointer;
        } else if (e.kind == "#has") {
            ASSERT_TRUE(actual.is_string()) << e.pointer;
            EXPECT_NE(actual.get<std::string>().find(e.value), std::string::npos) << actual;
        } else {
            EXPECT_EQ(actual, json::parse(e.value)) << e.pointer;
        }
    }
}

std::vector<Case> scenarios() {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(ZANDOREL_SCENARIOS)) {
        if (entry.path().extension() == ".play") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Case> out;
    for (Store store : {Store::Sqlite, Store::Pg}) {
        for (const fs::path& path : paths)
            out.push_back({store, path});
    }
    return out;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, ScenarioTest, ::testing::ValuesIn(scenarios()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             std::string name = (info.param.store == Store::Pg ? "PostgreSQL_" : "SQLite_") +
                                                info.param.path.stem().string();
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             }
                             return name;
                         });

}  // namespace
