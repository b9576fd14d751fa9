#pragma once

#include <string>
#include <vector>

#include "base/date.h"

namespace base {
class Clock;
}
namespace mvdb {
class Database;
}

// The week at a glance: for each day of one week, what the planning screen would show.
namespace control {

enum class DemiJournee { Matin, Soir };

// One tournée on one day, as displaying it would show it.
struct TourneeDuJour {
    std::string code;
    std::string libelle;
    int prevues = 0;    // labels of pane "DETAIL"
    int minutes = 0;    // their durations, summed
    int anomalies = 0;  // rows of the anomaly list; none on a past day, which has no list
    int capacite = 0;   // minutes between the tournée's first and last hour
    // A day before today with no version of its own: the screen refuses to show it.
    bool nonDefinie = false;
};

struct JourDeSemaine {
    base::Date date;
    int enAttente = 0;  // labels of pane "AIDE" of a display without a tournée, in the half-day chosen
    std::vector<TourneeDuJour> tournees;  // every tournée not deleted that runs on the day, by code
};

struct Semaine {
    DemiJournee demiJournee = DemiJournee::Matin;
    std::vector<JourDeSemaine> jours;  // Monday to Sunday
    // What the displays of the week named as they went, each line once, in the order met: the records
    // that make no sense (file, key, field and what is wrong), and the planned interventions left out
    // because a record they depend on is one of them.
    std::vector<std::string> defauts;
    std::vector<std::string> laissees;
    const base::Date& lundi() const { return jours.front().date; }
};

// What the week named, as the planner reads it: the heading of the records that make no sense and their
// lines, then, when there are any, the heading of the interventions left out and theirs; one line each,
// ended by "\n". Empty when the week named nothing.
std::string defautsNommes(const Semaine& semaine);

// The Monday of the week (Monday to Sunday) that holds `jour`.
base::Date lundiDe(base::Date jour);

// The week that holds `jour`, computed by the display's own routines on a private control whose reads
// all see the database at one moment, each record read once. Nothing is written and no other control
// is touched. `clock` gives today, which decides the past days as on the screen. A failure of the
// database travels as base::Error.
Semaine calculerSemaine(mvdb::Database& database, const base::Clock& clock, base::Date jour,
                        DemiJournee demiJournee);

}  // namespace control
