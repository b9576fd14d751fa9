#include "app/demo_model.h"

#include <algorithm>

#include "base/text.h"
#include "data/layouts.h"

namespace app {

bool DemoAide::absentOn(int day) const {
    return std::any_of(absences.begin(), absences.end(),
                       [day](const DemoPeriod& p) { return p.contains(day); });
}

std::string DemoAccord::key() const {
    return codeAide + base::zeroPad(number, 3) + kDemoElement;
}

std::string DemoProtocole::key() const {
    return codeAide + base::zeroPad(firstDay, 5) + kDemoElement + std::to_string(sequence) +
           base::zeroPad(start, 4);
}

std::string DemoProtocole::assignmentElementKey() const {
    return data::elemgest::cleSecteurAffectation(key());
}

bool DemoProtocole::inForceOn(int day, int weekday) const {
    if (day < firstDay || (lastDay && day > *lastDay)) return false;
    return weekdays.empty() || std::find(weekdays.begin(), weekdays.end(), weekday) != weekdays.end();
}

std::string DemoVisit::key() const {
    return data::tournee::cle(tournee, codeAide, base::zeroPad(day, 5), std::to_string(start));
}

int demoHundredths(int minutes) {
    return (minutes * 100 + 30) / 60;
}

}  // namespace app
