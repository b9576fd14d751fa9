#pragma once

#include <cstdint>

#include "app/demo_model.h"

namespace app {

// Fills the saved tournées: for each day from `historyDays` before today to two days after it, each
// tournée of that weekday is saved on most days (fewer ahead of today), so that the days without a
// save of their own are covered by an older version that the screen fits. Every intervention belongs
// to a protocole of its aidé in force that day, in the aidé's sector, of a kind and a number of
// intervenants that the tournée takes, with the aidé present and taken in charge; it starts on a
// quarter hour and lies within both the protocole's window and the tournée's hours. What does not fit
// stays to be placed, as in a real service. One intervention, on a day from today on when there is
// one, starts a quarter of an hour before its window, for the anomaly list. Needs everything else.
void addDemoVisits(DemoService& service, int historyDays, std::uint64_t seed);

}  // namespace app
