#pragma once

#include "app/demo_model.h"
#include "app/demo_random.h"

namespace app {

// Adds `count` aidés with codes "00001" up: names of the region's elderly, addresses in the service's
// town and villages (the village follows the sector), telephones, and hospital stays. Needs the
// sectors of the service. About one aidé in fifteen is absent today or in the coming days, one in
// fifteen was absent within the last weeks, and some have both.
void addDemoAides(DemoService& service, int count, DemoRandom& random);

}  // namespace app
