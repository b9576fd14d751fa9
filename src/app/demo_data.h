#pragma once

#include <cstddef>
#include <string>

#include "base/date.h"

namespace mvdb {
class Database;
}

namespace app {

struct DemoOptions {
    base::Date today = base::Date::fromInternal(0);  // the caller sets it: everything is dated from it
    int aides = 40;                                  // 1 to 99999
    int historyDays = 60;                            // saved tournées reach this far back; 0 to 3660
    unsigned seed = 1;
};

// Records written, by file.
struct DemoSummary {
    std::size_t soins = 0;          // SSIADSOINS
    std::size_t tournees = 0;       // SSIADCARACTTOURNEE
    std::size_t aides = 0;          // CIVILAIDE
    std::size_t elements = 0;       // SSIADELEMGEST
    std::size_t accords = 0;        // SSIADACCORDS
    std::size_t protocoles = 0;     // SSIADPROTOCOLE
    std::size_t interventions = 0;  // SSIADTOURNEE
};

// Writes a whole demo service into an empty database: soins, tournées of every type on every weekday,
// morning and evening, aidés with their sectors, accords and protocoles, and saved tournées from
// `historyDays` before today to two days after. The same options give the same records, byte for
// byte, on any platform. All or nothing: one transaction, rolled back on any failure. Fails with
// base::Error (kBadData) when the database already holds a service (tournées or aidés), or for options
// out of range, and writes nothing then.
DemoSummary writeDemoService(mvdb::Database& database, const DemoOptions& options);

// One line for the user: "40 aidés, 79 tournées, 15 soins, ... interventions enregistrées."
std::string demoSummaryText(const DemoSummary& summary);

}  // namespace app
