#include "app/demo_schedule.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "app/demo_random.h"

namespace app {
namespace {

int roundUpToQuarter(int hundredths) {
    return (hundredths + 24) / 25 * 25;
}

int lengthInMinutes(const DemoTournee& t) {
    return (t.endHour * 60 + t.endMinute) - (t.startHour * 60 + t.startMinute);
}

// True when a visit of `p` fits in `t` at all: started at the first quarter hour both allow, it ends
// within the window and the tournée.
bool fits(const DemoTournee& t, const DemoProtocole& p) {
    int start = roundUpToQuarter(std::max(t.start(), p.start));
    return start + demoHundredths(p.duration) <= std::min(t.end(), p.end);
}

bool servedBy(const DemoTournee& t, const DemoProtocole& p) {
    if (t.type == 'S' && p.kind != 'A') return false;
    if (t.intervenants == 2 && p.intervenants != 2) return false;
    return fits(t, p);
}

class VisitPlanner {
public:
    VisitPlanner(DemoService& service, std::uint64_t seed);
    void planDay(int day);
    void addAnomaly();

private:
    bool takesCare(const DemoProtocole& p, std::size_t aide, int day, int weekday) const;
    bool accordActive(std::size_t aide, int day) const;
    void assign(const DemoProtocole& p, const std::vector<std::size_t>& candidates);
    std::size_t leastLoaded(const DemoProtocole& p, const std::vector<std::size_t>& candidates,
                            std::size_t skip) const;
    bool savedOn(const DemoTournee& t, int day) const;
    void schedule(std::size_t tournee, int day);

    DemoService& m_service;
    std::uint64_t m_seed;
    int m_today;
    std::map<std::string, std::size_t> m_aideIndex;
    std::map<std::string, std::size_t> m_sectorIndex;
    std::vector<std::vector<const DemoAccord*>> m_accords;  // by aidé
    // Tournées able to take a visit: by weekday (0 Monday), half-day (0 morning) and sector.
    std::vector<std::vector<std::vector<std::vector<std::size_t>>>> m_candidates;
    std::vector<std::vector<std::size_t>> m_byWeekday;
    std::vector<int> m_load;  // minutes given to each tournée on the day being planned
    std::vector<std::vector<const DemoProtocole*>> m_buckets;
};

VisitPlanner::VisitPlanner(DemoService& service, std::uint64_t seed)
    : m_service(service),
      m_seed(seed),
      m_today(service.today.internalDay()),
      m_accords(service.aides.size()),
      m_byWeekday(7),
      m_load(service.tournees.size()),
      m_buckets(service.tournees.size()) {
    for (std::size_t i = 0; i < service.aides.size(); ++i)
        m_aideIndex[service.aides[i].code] = i;
    for (std::size_t s = 0; s < service.sectors.size(); ++s)
        m_sectorIndex[service.sectors[s]] = s;
    for (const DemoAccord& a : service.accords)
        m_accords[m_aideIndex.at(a.codeAide)].push_back(&a);
    m_candidates.assign(7, std::vector(2, std::vector(service.sectors.size(), std::vector<std::size_t>())));
    for (std::size_t i = 0; i < service.tournees.size(); ++i) {
        const DemoTournee& t = service.tournees[i];
        if (t.deleted) continue;
        auto weekday = static_cast<std::size_t>(t.weekday);
        m_byWeekday[weekday].push_back(i);
        for (const std::string& sector : t.sectors)
            m_candidates[weekday][t.morning() ? 0 : 1][m_sectorIndex.at(sector)].push_back(i);
    }
}

bool VisitPlanner::accordActive(std::size_t aide, int day) const {
    // A suspension is recent: the aidé was still visited before today.
    return std::any_of(m_accords[aide].begin(), m_accords[aide].end(), [&](const DemoAccord* a) {
        return a->period.contains(day) && (!a->suspended || day < m_today);
    });
}

bool VisitPlanner::takesCare(const DemoProtocole& p, std::size_t aide, int day, int weekday) const {
    return p.inForceOn(day, weekday) && !m_service.aides[aide].absentOn(day) && accordActive(aide, day);
}

// The tournée with the least work so far among those that serve `p`: the usual kind first (soignants
// for care, nurses for acts), then one with room left, then any.
std::size_t VisitPlanner::leastLoaded(const DemoProtocole& p, const std::vector<std::size_t>& candidates,
                                      std::size_t skip) const {
    std::size_t best = m_service.tournees.size();
    std::tuple<bool, bool, int> bestScore{true, true, 0};
    for (std::size_t i : candidates) {
        const DemoTournee& t = m_service.tournees[i];
        if (i == skip || !servedBy(t, p)) continue;
        bool full = m_load[i] + p.duration > lengthInMinutes(t);
        bool unusual = (p.kind == 'A') != (t.type == 'S');
        std::tuple<bool, bool, int> score{full, unusual, m_load[i]};
        if (best == m_service.tournees.size() || score < bestScore) {
            best = i;
            bestScore = score;
        }
    }
    return best;
}

void VisitPlanner::assign(const DemoProtocole& p, const std::vector<std::size_t>& candidates) {
    std::vector<std::size_t> chosen;
    auto pair = std::find_if(candidates.begin(), candidates.end(), [&](std::size_t i) {
        return m_service.tournees[i].intervenants == 2 && servedBy(m_service.tournees[i], p);
    });
    if (pair != candidates.end()) {
        chosen.push_back(*pair);
    } else {
        std::size_t none = m_service.tournees.size();
        chosen.push_back(leastLoaded(p, candidates, none));
        if (p.intervenants == 2 && chosen.front() != none)
            chosen.push_back(leastLoaded(p, candidates, chosen.front()));
    }
    for (std::size_t i : chosen) {
        if (i == m_service.tournees.size()) continue;
        m_load[i] += p.duration + 10;
        m_buckets[i].push_back(&p);
    }
}

bool VisitPlanner::savedOn(const DemoTournee& t, int day) const {
    return static_cast<int>(demoHash(m_seed, t.code, day) % 100) < (day < m_today ? 80 : 65);
}

// Visits in the order of their windows, each on the first quarter hour after the previous one and ten
// minutes of road; one that would overrun its window or the tournée is left out.
void VisitPlanner::schedule(std::size_t tournee, int day) {
    const DemoTournee& t = m_service.tournees[tournee];
    std::vector<const DemoProtocole*>& bucket = m_buckets[tournee];
    std::sort(bucket.begin(), bucket.end(), [](const DemoProtocole* a, const DemoProtocole* b) {
        return std::tie(a->start, a->end, a->codeAide, a->sequence) <
               std::tie(b->start, b->end, b->codeAide, b->sequence);
    });
    int cursor = t.start();
    for (const DemoProtocole* p : bucket) {
        int start = roundUpToQuarter(std::max(cursor, p->start));
        int end = start + demoHundredths(p->duration);
        if (end > std::min(p->end, t.end())) continue;
        m_service.visits.push_back({t.code, p->codeAide, day, start, end, p->key()});
        cursor = end + demoHundredths(10);
    }
}

void VisitPlanner::planDay(int day) {
    int weekday = base::Date::fromInternal(day).weekday();
    auto tw = static_cast<std::size_t>(weekday - 1);
    for (std::size_t i : m_byWeekday[tw]) {
        m_load[i] = 0;
        m_buckets[i].clear();
    }
    for (const DemoProtocole& p : m_service.protocoles) {
        std::size_t aide = m_aideIndex.at(p.codeAide);
        if (!takesCare(p, aide, day, weekday)) continue;
        std::size_t sector = m_sectorIndex.at(m_service.aides[aide].sector);
        assign(p, m_candidates[tw][p.morning() ? 0 : 1][sector]);
    }
    for (std::size_t i : m_byWeekday[tw]) {
        if (savedOn(m_service.tournees[i], day)) schedule(i, day);
    }
}

// Moves one visit a quarter of an hour before its protocole's window, still within its tournée: the
// first one from today on that allows it, so that the screen lists it when the day is shown.
void VisitPlanner::addAnomaly() {
    std::map<std::string, const DemoProtocole*> protocoles;
    for (const DemoProtocole& p : m_service.protocoles)
        protocoles[p.key()] = &p;
    std::map<std::string, const DemoTournee*> tournees;
    for (const DemoTournee& t : m_service.tournees)
        tournees[t.code] = &t;
    std::vector<DemoVisit>& visits = m_service.visits;
    auto movable = [&](const DemoVisit& v) {
        DemoVisit early = v;
        early.start = protocoles.at(v.protocole)->start - 25;
        if (early.start < tournees.at(v.tournee)->start()) return false;
        return std::none_of(visits.begin(), visits.end(),
                            [&](const DemoVisit& o) { return o.key() == early.key(); });
    };
    auto found = std::find_if(visits.begin(), visits.end(),
                              [&](const DemoVisit& v) { return v.day >= m_today && movable(v); });
    if (found == visits.end()) found = std::find_if(visits.begin(), visits.end(), movable);
    if (found == visits.end()) return;
    const DemoProtocole& p = *protocoles.at(found->protocole);
    found->start = p.start - 25;
    found->end = found->start + demoHundredths(p.duration);
}

}  // namespace

void addDemoVisits(DemoService& service, int historyDays, std::uint64_t seed) {
    VisitPlanner planner(service, seed);
    int today = service.today.internalDay();
    for (int day = today - historyDays; day <= today + 2; ++day)
        planner.planDay(day);
    planner.addAnomaly();
}

}  // namespace app
