#include "app/demo_data.h"

#include "app/commands.h"
#include "app/demo_care.h"
#include "app/demo_model.h"
#include "app/demo_people.h"
#include "app/demo_random.h"
#include "app/demo_records.h"
#include "app/demo_rounds.h"
#include "app/demo_schedule.h"
#include "base/error.h"
#include "data/layouts.h"
#include "mvdb/database.h"
#include "mvdb/store.h"

namespace app {
namespace {

// Keys hold days on five digits: with accords reaching two years back and a year ahead, these bounds
// keep every day written between 1 and 99999.
void checkOptions(const DemoOptions& options) {
    auto fail = [](const std::string& what) {
        throw base::Error(base::codes::kBadData, "demo-data : " + what);
    };
    if (options.aides < 1 || options.aides > 99999)
        fail("le nombre d'aidés doit être compris entre 1 et 99999");
    if (options.historyDays < 0 || options.historyDays > 3660) {
        fail("l'historique doit être compris entre 0 et 3660 jours");
    }
    int year = options.today.year();
    if (year < kFirstTodayYear || year > kLastTodayYear) {
        fail("la date du jour doit être comprise entre " + std::to_string(kFirstTodayYear) + " et " +
             std::to_string(kLastTodayYear));
    }
}

void refuseExistingService(mvdb::Store& store) {
    if (store.count(std::string(data::kSSIADCARACTTOURNEE)) > 0 ||
        store.count(std::string(data::kCIVILAIDE)) > 0) {
        throw base::Error(base::codes::kBadData,
                          "La base contient déjà un service : demo-data ne l'écrase pas");
    }
}

// The order matters: tournées need the sectors, aidés the sectors, care the aidés and soins, saved
// tournées everything. Each step draws from the same sequence, so any change to one step changes the
// draws of the steps after it.
DemoService buildDemoService(const DemoOptions& options) {
    DemoRandom random(options.seed);
    DemoService service;
    service.today = options.today;
    service.sectors = demoSectors(options.aides);
    service.soins = demoSoins();
    addDemoTournees(service, options.aides);
    addDemoAides(service, options.aides, random);
    addDemoCare(service, random);
    addDemoVisits(service, options.historyDays, options.seed);
    return service;
}

}  // namespace

DemoSummary writeDemoService(mvdb::Database& database, const DemoOptions& options) {
    checkOptions(options);
    mvdb::Transaction transaction(database);
    refuseExistingService(database.store());
    DemoSummary summary = writeDemoRecords(database.store(), buildDemoService(options));
    transaction.commit();
    return summary;
}

std::string demoSummaryText(const DemoSummary& s) {
    return std::to_string(s.aides) + " aidés, " + std::to_string(s.tournees) + " tournées, " +
           std::to_string(s.soins) + " soins, " + std::to_string(s.accords) + " accords, " +
           std::to_string(s.protocoles) + " protocoles, " + std::to_string(s.interventions) +
           " interventions enregistrées.";
}

}  // namespace app
