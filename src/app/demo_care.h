#pragma once

#include <vector>

#include "app/demo_model.h"
#include "app/demo_random.h"

namespace app {

// The service's catalogue of soins, "S01" to "S15"; the nurse's acts are marked.
std::vector<DemoSoin> demoSoins();

// Gives every aidé its accords and protocoles. Most aidés are taken in charge from months ago to months
// ahead, some through a renewed accord; a few left the service lately or join it soon, and exactly one
// accord is suspended (when there are two aidés or more). Each aidé has a morning protocole, many an
// evening one and some a second nurse's visit; a few need two intervenants, always
// the first aidé. A few protocoles were revised lately: the old one ends the day before the new one
// begins, with the same window, so that saved tournées keep fitting. Needs the aidés and the soins.
void addDemoCare(DemoService& service, DemoRandom& random);

}  // namespace app
