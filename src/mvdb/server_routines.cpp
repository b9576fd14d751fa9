#include "mvdb/server_routines.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/date.h"
#include "base/error.h"
#include "base/text.h"
#include "mvdb/query.h"
#include "mvdb/store.h"

namespace mvdb {
namespace {

std::vector<std::string> splitBars(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    while (true) {
        std::size_t bar = line.find('|', start);
        fields.push_back(line.substr(start, bar == std::string::npos ? std::string::npos : bar - start));
        if (bar == std::string::npos) return fields;
        start = bar + 1;
    }
}

std::optional<DynamicRecord> readRecord(Store& store, const std::string& file, const std::string& key) {
    std::optional<std::string> text = store.read(file, key);
    if (!text) return std::nullopt;
    return DynamicRecord(*text);
}

// A day of a period as other programs may have written it: empty, a number, or neither.
bool isDayOrEmpty(const std::string& day) {
    return day.empty() || base::parseNumber(day).has_value();
}

// A period whose days are not numbers, or whose last day is before its first, tells nothing.
bool isReadablePeriod(const std::string& first, const std::string& last) {
    if (!isDayOrEmpty(first) || !isDayOrEmpty(last)) return false;
    return first.empty() || last.empty() || base::compareValues(first, last) <= 0;
}

bool isAbsent(Store& store, const std::string& codeAide, const std::string& day) {
    std::optional<DynamicRecord> civil = readRecord(store, "CIVILAIDE", codeAide);
    if (!civil) return false;
    for (std::int64_t v = 1; v <= civil->DCount(20); ++v) {
        std::string first = (*civil)(20, v);
        std::string last = (*civil)(21, v);
        if (first.empty() || !isReadablePeriod(first, last)) continue;
        // An absence with no last day has not ended.
        if (base::compareValues(first, day) <= 0 && (last.empty() || base::compareValues(day, last) <= 0)) {
            return true;
        }
    }
    return false;
}

bool inForce(const DynamicRecord& protocole, const std::string& day, int weekday) {
    std::string first = protocole(6), last = protocole(7);
    // Passed on for the screen to name: left out here, it would vanish without a word.
    if (!isReadablePeriod(first, last)) return true;
    if (!first.empty() && base::compareValues(first, day) > 0) return false;
    if (!last.empty() && base::compareValues(day, last) > 0) return false;
    if (protocole.DCount(1) == 0) return true;  // no weekday listed: every day
    for (std::int64_t v = 1; v <= protocole.DCount(1); ++v) {
        if (base::toNumber(protocole.view(1, v)) == weekday) return true;
    }
    return false;
}

std::string kindOfSoins(Store& store, const DynamicRecord& protocole,
                        std::map<std::string, bool>& infirmierActs) {
    int acts = 0, infirmier = 0;
    for (std::int64_t v = 1; v <= protocole.DCount(3); ++v) {
        std::string soin = protocole(3, v);
        if (soin.empty()) continue;
        auto it = infirmierActs.find(soin);
        if (it == infirmierActs.end()) {
            std::optional<DynamicRecord> record = readRecord(store, "SSIADSOINS", soin);
            it = infirmierActs.emplace(soin, record && (*record)(5) == "O").first;
        }
        ++acts;
        infirmier += it->second ? 1 : 0;
    }
    if (acts > 0 && infirmier == acts) return "I";
    return infirmier == 0 ? "A" : "M";
}

}  // namespace

DynamicRecord periodeActive(Database& database, const DynamicRecord& arguments) {
    std::optional<DynamicRecord> accord = readRecord(database.store(), "SSIADACCORDS", arguments(1));
    bool active = accord && (*accord)(3) != "S" && base::compareValues(arguments(2), arguments(3)) <= 0;
    return DynamicRecord(active ? "1" : "0");
}

DynamicRecord afficheProtocSsiad(Database& database, const DynamicRecord& request) {
    std::string line = request(1);
    std::vector<std::string> fields = splitBars(line);
    if (fields.size() < 9 || fields[1].empty()) {
        throw base::Error(base::codes::kBadData,
                          "Ligne de commande incorrecte pour AFFICHEPROTOCSSIAD : « " + line + " »");
    }
    const std::string& workKey = fields[1];
    const std::string& day = fields[4];
    const std::string& codeAide = fields[8];
    Store& store = database.store();

    DynamicRecord reply;
    std::optional<double> dayNumber = base::parseNumber(day);
    if (dayNumber && *dayNumber >= 1 && *dayNumber <= 3000000 && !codeAide.empty()) {
        int weekday = base::Date::fromInternal(static_cast<int>(*dayNumber)).weekday();
        if (isAbsent(store, codeAide, day)) {
            reply.set(1, 1, 1, "AbsAide");
        } else {
            Sentence sentence{
                "SSIADPROTOCOLE", {Condition{Field{-1, "CodeAide"}, CompareOp::Equal, codeAide}}, {}};
            std::map<std::string, bool> infirmierActs;
            std::int64_t row = 0;
            for (const SelectedRecord& p : select(store, sentence, "")) {
                if (!inForce(p.record, day, weekday)) continue;
                ++row;
                reply.set(1, 1, row, "IntervS");
                reply.set(1, 2, row, base::Right(p.key, 4));
                reply.set(1, 3, row, p.record(2));
                reply.set(1, 4, row, p.key);
                reply.set(1, 5, row, p.record(4));
                reply.set(1, 6, row, kindOfSoins(store, p.record, infirmierActs));
            }
        }
    }
    store.write("TPSTEMPO", workKey + "AFFICHEPROTOCSSIAD", reply.text());
    return DynamicRecord();
}

void registerServerRoutines(std::map<std::string, ServerRoutine>& subroutines,
                            std::map<std::string, ServerRoutine>& programs) {
    subroutines["SSIADPERIODEACTIVE"] = periodeActive;
    programs["AFFICHEPROTOCSSIAD"] = afficheProtocSsiad;
}

}  // namespace mvdb
