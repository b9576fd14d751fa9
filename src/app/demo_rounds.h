#pragma once

#include <string>
#include <vector>

#include "app/demo_model.h"

namespace app {

// The sector codes of a service of `aides` aidés, about one sector per fifteen aidés: "NORD", "SUD",
// "CENTRE"... then "NORD2"... At least one, at most forty.
std::vector<std::string> demoSectors(int aides);

// The tournées of the service, codes "001" up. Every weekday has, in the morning and in the evening, one
// infirmier or mixte tournée per sector (a mixte one also serves the next sector), then soignant
// tournées up to about one per six aidés in the morning and one per ten in the evening; weekends run
// about a quarter fewer. Two more close the list: the one two-intervenant tournée (a morning "BINOME"
// over every sector, on today's weekday) and one deleted tournée. Needs the service's sectors and
// today; never more than 999 tournées.
void addDemoTournees(DemoService& service, int aides);

}  // namespace app
