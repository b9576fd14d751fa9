#pragma once

#include <cctype>
#include <cstdlib>
#include <string>

// The throwaway PostgreSQL server of a test run (scripts/with_postgres.sh starts one and names it in
// ZANDOREL_TEST_PG), and addresses on it that give each test a service of its own.
namespace testing_support {

inline std::string pgTestServer() {
    const char* url = std::getenv("ZANDOREL_TEST_PG");
    return url ? url : "";
}

// A schema name made of `name`: lower-case letters, digits and underscores only.
inline std::string pgSchemaName(const std::string& name) {
    std::string out;
    for (char c : name)
        out += std::isalnum(static_cast<unsigned char>(c)) ? static_cast<char>(std::tolower(c)) : '_';
    return out;
}

// The address of `server` whose current schema is `schema`: the store makes it on first use, as it
// would for a planner's new service.
inline std::string pgServiceAddress(const std::string& server, const std::string& schema) {
    return server + (server.find('?') == std::string::npos ? "?" : "&") + "options=-csearch_path%3D" + schema;
}

}  // namespace testing_support
