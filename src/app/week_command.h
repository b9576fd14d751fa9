#pragma once

#include <iosfwd>
#include <string>

#include "week/semaine.h"

namespace app {

struct WeekOptions {
    std::string db;
    std::string date;   // "dd/mm/yyyy": any day of the week
    std::string today;  // "dd/mm/yyyy", empty for the computer's date
    bool soir = false;
    bool json = false;
};

// The week as one line of JSON: {"week": "dd/mm/yyyy", "soir": false, "days": [{"date": ..., "waiting":
// N, "tournees": [{"code": ..., "label": ..., "planned": N, "minutes": N, "anomalies": N}]}]}.
std::string weekJson(const control::Semaine& semaine);
// The week as a text table, one block per day, for a reader.
std::string weekTable(const control::Semaine& semaine);

// What the displays of the week left out, as lines for standard error; empty when nothing was.
std::string weekFaults(const control::Semaine& semaine);

// `zandorel week`: the overview of the week that holds the date, written to `out`, and the records left
// out of it named on `err`. The database is only read. Fails with base::Error for a database that cannot
// be opened or an output that cannot be written.
void runWeek(const WeekOptions& options, std::ostream& out, std::ostream& err);

}  // namespace app
