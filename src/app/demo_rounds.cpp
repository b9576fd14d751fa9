#include "app/demo_rounds.h"

#include <algorithm>

#include "base/date.h"
#include "base/text.h"

namespace app {
namespace {

const std::vector<std::string> kSectorNames = {"NORD",  "SUD",  "CENTRE",  "EST",
                                               "OUEST", "GARE", "PLATEAU", "VALLEE"};

int ceilDiv(int a, int b) {
    return (a + b - 1) / b;
}

// How many tournées run on one half-day. With the caps, seven days of both half-days stay well under
// the 999 codes that three digits allow.
int tourneeCount(int aides, int sectors, bool morning, bool weekend) {
    int count = morning ? std::clamp(ceilDiv(aides, 6), 2, 80) : std::clamp(ceilDiv(aides, 10), 1, 60);
    return weekend ? std::max(sectors, count * 3 / 4) : count;
}

std::string typeWord(char type) {
    switch (type) {
        case 'I':
            return "INFIRMIER";
        case 'M':
            return "MIXTE";
        default:
            return "SOIGNANT";
    }
}

std::string weekdayWord(int weekday) {
    return base::UCase(base::weekdayName(weekday + 1));
}

void setHours(DemoTournee& t, int startHour, int startMinute, int endHour, int endMinute) {
    t.startHour = startHour;
    t.startMinute = startMinute;
    t.endHour = endHour;
    t.endMinute = endMinute;
}

// Nurses start earliest, for the insulin before breakfast; soignants start later in the evening.
void setUsualHours(DemoTournee& t, bool morning) {
    if (!morning) return setHours(t, 17, t.type == 'S' ? 30 : 0, 20, 30);
    if (t.type == 'I') return setHours(t, 6, 30, 13, 0);
    if (t.type == 'M') return setHours(t, 7, 0, 13, 0);
    setHours(t, 7, 0, 12, 30);
}

// Tournée `index` of a half-day: the first ones, one per sector, carry the infirmier's acts (types
// alternate so that both I and M exist even with one sector); the rest are soignant tournées that
// share the sectors out in turn.
DemoTournee regularTournee(const std::vector<std::string>& sectors, int weekday, bool morning, int index) {
    int sectorCount = static_cast<int>(sectors.size());
    int sector = index % sectorCount;
    DemoTournee t;
    t.weekday = weekday;
    bool nursing = index < sectorCount;
    t.type = !nursing ? 'S' : ((sector % 2 == 0) == morning ? 'I' : 'M');
    t.sectors.push_back(sectors[static_cast<std::size_t>(sector)]);
    if (t.type == 'M' && sectorCount > 1)
        t.sectors.push_back(sectors[static_cast<std::size_t>((sector + 1) % sectorCount)]);
    setUsualHours(t, morning);
    std::string label = typeWord(t.type) + (morning ? " MATIN" : " SOIR");
    for (const std::string& s : t.sectors)
        label.append(" ").append(s);
    int rank = nursing ? 1 : (index - sectorCount) / sectorCount + 1;
    if (rank > 1) label.append(" ").append(std::to_string(rank));
    t.label = label + " " + weekdayWord(weekday);
    return t;
}

DemoTournee binome(const std::vector<std::string>& sectors, int weekday) {
    DemoTournee t;
    t.weekday = weekday;
    t.type = 'S';
    t.intervenants = 2;
    t.sectors = sectors;
    setHours(t, 7, 30, 11, 30);
    t.label = "BINOME MATIN " + weekdayWord(weekday);
    return t;
}

DemoTournee retired(const std::vector<std::string>& sectors) {
    DemoTournee t;
    t.weekday = 0;
    t.type = 'S';
    t.sectors.push_back(sectors.front());
    setUsualHours(t, false);
    t.deleted = true;
    t.label = "ANCIENNE SOIGNANT SOIR " + sectors.front() + " " + weekdayWord(0);
    return t;
}

}  // namespace

std::vector<std::string> demoSectors(int aides) {
    int count = std::clamp(ceilDiv(aides, 15), 1, 40);
    std::vector<std::string> sectors;
    for (int k = 0; k < count; ++k) {
        int round = k / static_cast<int>(kSectorNames.size());
        sectors.push_back(kSectorNames[static_cast<std::size_t>(k) % kSectorNames.size()] +
                          (round > 0 ? std::to_string(round + 1) : ""));
    }
    return sectors;
}

void addDemoTournees(DemoService& service, int aides) {
    const std::vector<std::string>& sectors = service.sectors;
    int sectorCount = static_cast<int>(sectors.size());
    std::vector<DemoTournee>& out = service.tournees;
    for (int weekday = 0; weekday < 7; ++weekday) {
        for (bool morning : {true, false}) {
            int count = tourneeCount(aides, sectorCount, morning, weekday >= 5);
            for (int index = 0; index < count; ++index)
                out.push_back(regularTournee(sectors, weekday, morning, index));
        }
    }
    out.push_back(binome(sectors, service.today.weekday() - 1));
    out.push_back(retired(sectors));
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i].code = base::zeroPad(static_cast<std::int64_t>(i) + 1, 3);
}

}  // namespace app
