#pragma once

#include <string>

#include "base/date.h"

namespace control {

class Ctr_Zandorel;

// Opens a tournée on a day on the planning screen `c`, as the planner would by hand: a tournée on show
// with unsaved changes asks the screen's question first (Yes saves, No drops the changes, Cancel stays),
// then the code is chosen, the date set and the day displayed. False when the screen stays as it was:
// the planner cancelled, the save was refused, an assignment is pending, or the code was refused (the
// screen said why).
bool ouvrirTourneeDuJour(Ctr_Zandorel& c, const std::string& code, const base::Date& date);

}  // namespace control
