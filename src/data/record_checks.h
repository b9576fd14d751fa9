#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mvdb/dynamic_record.h"

// Checks of what other programs may have written badly into the files the screen shares. A record that
// fails one gives no label and no printed line, and whoever read it says which file, key and field; the
// rest of the day goes on. `zandorel load` refuses it.
namespace data {

// One field that makes no sense, with what is wrong with it.
struct RecordFault {
    std::string file;
    std::string key;
    std::string field;   // "clé", "attribut 1 (fin prévue)", ...
    std::string reason;  // "« 8h30 » n'est pas un nombre"

    // "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre"
    std::string text() const;
    bool operator==(const RecordFault& other) const = default;
};

// A planned intervention of SSIADTOURNEE: a key of 17 characters whose date is an internal day and whose
// start is in hundredths within the day, an end within the day after the start.
std::optional<RecordFault> checkPlanned(std::string_view key, std::string_view end);

// A protocole window as the screen uses it: the start bound (the last four characters of its key) and
// the end bound within the day, the end not before the start, and a duration of 1 to 1,440 minutes.
std::optional<RecordFault> checkProtocole(std::string_view key, std::string_view startBound,
                                          std::string_view endBound, std::string_view durationMn);

// The hours of a SSIADCARACTTOURNEE record: whole hours of 0 to 24 (attributes 3 and 5), minutes of 0 to
// 59 (attributes 4 and 6, empty reading as 0), and an end after the start.
std::optional<RecordFault> checkTourneeHours(std::string_view code, const mvdb::DynamicRecord& tournee);

// The days of an accord (attributes 1 and 2): internal days, the last not before the first.
std::optional<RecordFault> checkAccordDays(std::string_view key, std::string_view firstDay,
                                           std::string_view lastDay);

// Every check above that the file's records carry, and the days of accords, protocoles and absences
// (internal day numbers, a last day not before the first). Files without checks always pass.
std::optional<RecordFault> checkRecord(std::string_view file, std::string_view key,
                                       const mvdb::DynamicRecord& record);

// The head line of the box that tells the faults: whoever reads the boxes of a command tells it from
// the others by it.
inline constexpr std::string_view kFaultsHead = "Enregistrements incohérents, laissés de côté :";

// The line that opens, in the same box, the planned interventions left off the screen for the fault of
// a record they depend on, and stored on as they are.
inline constexpr std::string_view kKeptHead =
    "Interventions planifiées non affichées, gardées telles quelles :";

// A planned intervention of SSIADTOURNEE left off the screen because a record it depends on is at fault.
struct KeptRecord {
    std::string key;
    RecordFault cause;

    // "SSIADTOURNEE « 00100012215120800 », qui dépend de SSIADPROTOCOLE « 000122100000000110800 »"
    std::string text() const;
};

// The text that names faulty records: the head line, then one line per fault; then, when some planned
// interventions were left off because of them, their head line and one line each; lines joined by `saut`.
std::string faultsText(const std::vector<std::string>& defauts, const std::vector<std::string>& gardes,
                       std::string_view saut);

// The faults one display or print met, each field once, in the order met, and the planned interventions
// left off the screen because of them, each once.
class FaultList {
public:
    void add(const RecordFault& fault);
    // Names the fault too.
    void addKept(const std::string& key, const RecordFault& cause);
    void clear() {
        m_faults.clear();
        m_kept.clear();
    }
    bool empty() const { return m_faults.empty() && m_kept.empty(); }
    const std::vector<RecordFault>& faults() const { return m_faults; }
    const std::vector<KeptRecord>& kept() const { return m_kept; }
    // The text of the one box that tells them: a head line, then one line per fault; then, when some
    // planned interventions were left off, their head line and one line each.
    std::string message() const;

private:
    std::vector<RecordFault> m_faults;
    std::vector<KeptRecord> m_kept;
};

}  // namespace data
