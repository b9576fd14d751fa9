#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/date.h"

// The demo service as it is built in memory, before it becomes records. Days are internal day numbers,
// times hundredths of an hour (850 is 8h30).
namespace app {

// Every aidé has one management element; accords, protocoles and SSIADELEMGEST share its code.
inline constexpr const char* kDemoElement = "SSI001";

struct DemoSoin {
    std::string code;
    std::string label;
    bool infirmier = false;
};

struct DemoTournee {
    std::string code;
    std::string label;
    int weekday = 0;  // 0 Monday to 6 Sunday
    int startHour = 0;
    int startMinute = 0;
    int endHour = 0;
    int endMinute = 0;
    char type = 'S';  // 'I' infirmier, 'S' soignant, 'M' mixte
    std::vector<std::string> sectors;
    bool deleted = false;
    int intervenants = 1;

    int start() const { return startHour * 100 + startMinute * 100 / 60; }
    int end() const { return endHour * 100 + endMinute * 100 / 60; }
    bool morning() const { return startHour < 14; }
};

// First and last day, both included.
struct DemoPeriod {
    int first = 0;
    int last = 0;
    bool contains(int day) const { return first <= day && day <= last; }
};

struct DemoAide {
    std::string code;
    std::string nom;
    std::string prenom;
    std::string numero;
    std::string typeVoie;
    std::string voie;
    std::string complement;
    std::string codePostal;
    std::string ville;
    std::string telephone;
    std::string sector;
    std::vector<DemoPeriod> absences;

    bool absentOn(int day) const;
};

struct DemoAccord {
    std::string codeAide;
    int number = 1;
    DemoPeriod period;
    bool suspended = false;

    std::string key() const;
};

struct DemoProtocole {
    std::string codeAide;
    int firstDay = 0;
    std::optional<int> lastDay;
    int sequence = 1;
    int start = 0;  // window, hundredths
    int end = 0;
    std::vector<int> weekdays;  // 1 Monday to 7 Sunday; empty: every day
    std::vector<std::string> soins;
    int duration = 30;  // minutes
    int intervenants = 1;
    char kind = 'A';  // 'I' every soin an infirmier's act, 'A' none, 'M' both

    // CodeAide + first day + element + sequence + start bound: 21 characters.
    std::string key() const;
    // The SSIADELEMGEST key under which the assignment dialog looks for the sector of a label of this
    // protocole: the aidé's code joined to characters 1 to 5 and 9 to 14 of the label's Tag, whose first
    // 21 characters are key(). Sixteen characters: the code twice, the last two digits of the first
    // day and the first four of the element.
    std::string assignmentElementKey() const;
    bool inForceOn(int day, int weekday) const;
    bool morning() const { return start < 1400; }
};

// One saved intervention: a record of SSIADTOURNEE.
struct DemoVisit {
    std::string tournee;
    std::string codeAide;
    int day = 0;
    int start = 0;
    int end = 0;
    std::string protocole;

    std::string key() const;
};

struct DemoService {
    base::Date today = base::Date::fromInternal(0);
    std::vector<std::string> sectors;
    std::vector<DemoSoin> soins;
    std::vector<DemoTournee> tournees;
    std::vector<DemoAide> aides;
    std::vector<DemoAccord> accords;
    std::vector<DemoProtocole> protocoles;
    std::vector<DemoVisit> visits;
};

// Hundredths of an hour for a number of minutes, to the nearest (25 minutes is 42).
int demoHundredths(int minutes);

}  // namespace app
