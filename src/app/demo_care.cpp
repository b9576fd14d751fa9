#include "app/demo_care.h"

#include <algorithm>

#include "base/text.h"

namespace app {
namespace {

struct CarePlan {
    std::vector<std::string> soins;
    int minDuration;
    int maxDuration;
};

const std::vector<CarePlan> kMorningAide = {
    {{"S01", "S03", "S09"}, 40, 60}, {{"S02", "S05"}, 20, 35}, {{"S03", "S06", "S09"}, 15, 30},
    {{"S01", "S08"}, 45, 60},        {{"S02", "S07"}, 20, 30},
};
const std::vector<CarePlan> kMorningNurse = {
    {{"S10", "S11"}, 15, 20}, {{"S12"}, 15, 25}, {{"S15"}, 15, 15}, {{"S13"}, 20, 30}, {{"S14"}, 15, 20},
};
const std::vector<CarePlan> kMorningMixed = {
    {{"S01", "S12"}, 45, 60},
    {{"S03", "S10", "S11"}, 20, 30},
    {{"S02", "S15"}, 25, 35},
    {{"S01", "S09", "S13"}, 50, 60},
};
const std::vector<CarePlan> kEveningAide = {
    {{"S04", "S05"}, 15, 30}, {{"S04", "S06"}, 15, 20}, {{"S05", "S04", "S08"}, 20, 30}};
const std::vector<CarePlan> kEveningNurse = {{{"S10", "S11"}, 15, 20}, {{"S15"}, 15, 15}};
const std::vector<CarePlan> kEveningMixed = {{{"S04", "S10"}, 20, 30}, {{"S04", "S14"}, 20, 25}};

const std::vector<std::vector<int>> kNurseDays = {{}, {1, 3, 5}, {2, 4}, {1, 4}};

char kindOf(const std::vector<std::string>& soins, const std::vector<DemoSoin>& catalogue) {
    int nurse = 0;
    for (const std::string& code : soins) {
        auto it = std::find_if(catalogue.begin(), catalogue.end(),
                               [&](const DemoSoin& s) { return s.code == code; });
        if (it != catalogue.end() && it->infirmier) ++nurse;
    }
    if (nurse == 0) return 'A';
    return nurse == static_cast<int>(soins.size()) ? 'I' : 'M';
}

// What an aidé's accords look like; the special ones fall on fixed places so that a service of any
// size shows each case, and by chance on a few more.
enum class AccordCase { Current, Renewed, Suspended, Expired, Future };

// The first aidé, who needs two intervenants, is always in care today.
AccordCase accordCase(int index, int count, DemoRandom& random) {
    if (count >= 2 && index == count / 2) return AccordCase::Suspended;
    if (count >= 4 && index == count - 1) return AccordCase::Future;
    if (count >= 4 && index == count - 2) return AccordCase::Expired;
    int draw = random.below(100);
    if (draw < 3 && index > 0) return AccordCase::Expired;
    if (draw < 6 && index > 0) return AccordCase::Future;
    return draw < 20 ? AccordCase::Renewed : AccordCase::Current;
}

std::vector<DemoAccord> drawAccords(const std::string& code, AccordCase which, int today,
                                    DemoRandom& random) {
    DemoAccord accord{code, 1, {today - random.between(30, 700), today + random.between(30, 400)}, false};
    switch (which) {
        case AccordCase::Current:
            break;
        case AccordCase::Suspended:
            accord.suspended = true;
            break;
        case AccordCase::Expired:
            accord.period = {today - random.between(200, 500), today - random.between(5, 40)};
            break;
        case AccordCase::Future:
            accord.period.first = today + random.between(3, 20);
            accord.period.last = accord.period.first + 365;
            break;
        case AccordCase::Renewed: {
            int renewal = today - random.between(1, 120);
            DemoAccord next{code, 2, {renewal, renewal + 365}, false};
            accord.period = {renewal - random.between(300, 400), renewal - 1};
            return {accord, next};
        }
    }
    return {accord};
}

DemoProtocole fromPlan(const CarePlan& plan, int start, int end, DemoRandom& random) {
    DemoProtocole p;
    p.soins = plan.soins;
    p.duration = random.stepped(plan.minDuration, plan.maxDuration, 5);
    p.start = start;
    p.end = end;
    return p;
}

const std::vector<CarePlan>& morningPlans(DemoRandom& random) {
    int draw = random.below(100);
    return draw < 60 ? kMorningAide : draw < 75 ? kMorningNurse : kMorningMixed;
}

const std::vector<CarePlan>& eveningPlans(DemoRandom& random) {
    int draw = random.below(100);
    return draw < 55 ? kEveningAide : draw < 80 ? kEveningNurse : kEveningMixed;
}

// The visits an aidé needs, before dates and keys: the morning one first, then perhaps a nurse's visit
// on some days and an evening one.
std::vector<DemoProtocole> drawVisits(bool twoPeople, DemoRandom& random) {
    std::vector<DemoProtocole> visits;
    int start = random.stepped(700, 900, 50);
    const std::vector<CarePlan>& morning = twoPeople ? kMorningAide : morningPlans(random);
    visits.push_back(
        fromPlan(random.pick(morning), start, std::min(1200, start + random.stepped(200, 300, 50)), random));
    if (!twoPeople && random.chance(20)) visits.front().weekdays = {1, 2, 3, 4, 5};
    if (twoPeople || (visits.front().soins == kMorningAide.front().soins && random.chance(25))) {
        visits.front().intervenants = 2;
    }
    if (random.chance(25)) {
        bool late = random.chance(40);
        visits.push_back(fromPlan(random.pick(kMorningNurse), late ? 1000 : 750, late ? 1200 : 950, random));
        visits.back().weekdays = random.pick(kNurseDays);
    }
    if (random.chance(45)) {
        int evening = random.stepped(1700, 1800, 50);
        visits.push_back(fromPlan(random.pick(eveningPlans(random)), evening,
                                  std::min(2000, evening + random.stepped(150, 200, 50)), random));
        if (random.chance(15)) visits.back().weekdays = {1, 2, 3, 4, 5};
    }
    return visits;
}

// A revision a few weeks ago: the care got lighter. Only for an aidé with no other morning visit, so
// that the screen's fitting of an older tournée finds the new protocole by its window alone.
void reviseMainProtocole(std::vector<DemoProtocole>& protocoles, std::size_t first, int today,
                         DemoRandom& random) {
    DemoProtocole& main = protocoles[first];
    bool otherMorning = first + 1 < protocoles.size() && protocoles[first + 1].morning();
    int change = std::max(main.firstDay + 7, today - random.between(3, 40));
    if (otherMorning || main.duration <= 15 || change >= today || main.lastDay || !random.chance(12)) return;
    DemoProtocole revised = main;
    main.lastDay = change - 1;
    revised.firstDay = change;
    revised.duration -= 5;
    protocoles.insert(protocoles.begin() + static_cast<std::ptrdiff_t>(first) + 1, revised);
}

void addProtocoles(DemoService& service, const std::vector<DemoAccord>& accords, bool twoPeople,
                   DemoRandom& random) {
    int today = service.today.internalDay();
    std::size_t first = service.protocoles.size();
    int sequence = 0;
    for (DemoProtocole& p : drawVisits(twoPeople, random)) {
        p.codeAide = accords.front().codeAide;
        p.firstDay = accords.front().period.first;
        if (accords.back().period.last < today) p.lastDay = accords.back().period.last;
        p.sequence = ++sequence;
        p.kind = kindOf(p.soins, service.soins);
        service.protocoles.push_back(std::move(p));
    }
    reviseMainProtocole(service.protocoles, first, today, random);
}

}  // namespace

std::vector<DemoSoin> demoSoins() {
    return {
        {"S01", "Toilette complète", false},
        {"S02", "Toilette partielle", false},
        {"S03", "Aide au lever", false},
        {"S04", "Aide au coucher", false},
        {"S05", "Change", false},
        {"S06", "Bas de contention", false},
        {"S07", "Prise de tension", false},
        {"S08", "Prévention d'escarres", false},
        {"S09", "Aide à l'habillage", false},
        {"S10", "Injection insuline", true},
        {"S11", "Surveillance glycémie", true},
        {"S12", "Pansement simple", true},
        {"S13", "Pansement complexe", true},
        {"S14", "Pilulier", true},
        {"S15", "Injection anticoagulant", true},
    };
}

void addDemoCare(DemoService& service, DemoRandom& random) {
    int count = static_cast<int>(service.aides.size());
    int today = service.today.internalDay();
    for (int i = 0; i < count; ++i) {
        const std::string& code = service.aides[static_cast<std::size_t>(i)].code;
        std::vector<DemoAccord> accords = drawAccords(code, accordCase(i, count, random), today, random);
        addProtocoles(service, accords, i == 0, random);
        service.accords.insert(service.accords.end(), accords.begin(), accords.end());
    }
}

}  // namespace app
