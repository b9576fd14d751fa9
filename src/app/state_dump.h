#pragma once

#include <string>
#include <vector>

#include "toolkit/headless_host.h"

namespace control {
class Ctr_Zandorel;
}
namespace toolkit {
class Form;
}

namespace app {

// The screen as one line of JSON, for scenario scripts: boxes shown since the last dump, the instance
// and module values by their names, the controls by name, the loaded labels, the working tables, both
// scales, the focus, the screen's pointer and whether the control is enabled. `errors` lists the
// failures that reached the host since the last dump.
std::string dumpState(const control::Ctr_Zandorel& ctl,
                      const std::vector<toolkit::HeadlessHost::Shown>& messages,
                      const std::vector<std::string>& errors);

// A modal form as it shows, as one line of JSON: the boxes shown since the last dump, the form's name
// and caption, and its controls by name as dumpState gives them.
std::string dumpForm(const toolkit::Form& form, const std::vector<toolkit::HeadlessHost::Shown>& messages);

}  // namespace app
