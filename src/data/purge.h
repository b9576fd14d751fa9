#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "base/date.h"
#include "data/gateway.h"

namespace data {

// The dates that decide which old tournées are kept: the two October windows (first Monday of
// October to the Sunday of the week after, ends included) and the limit two months back.
struct FenetresApurement {
    base::Date DateLimite;
    base::Date DebutFenetre1, FinFenetre1;
    base::Date DebutFenetre2, FinFenetre2;
};

// The first Monday of October of the year of `date`.
base::Date PremierLundiOctobre(const base::Date& date);

// The windows for a given today. Until the current year's window is over, the two Octobers before;
// in January and February both windows are the same October, deliberately: only one is kept then.
FenetresApurement CalculerFenetres(const base::Date& today);

// What a long command does around its work: hourglass and disabled control on entry, one yield to the
// event queue, default pointer and enabled control on exit. Empty hooks do nothing.
struct CommandeLongue {
    std::function<void()> entree;
    std::function<void()> attente;
    std::function<void()> sortie;
};

// Removes from SSIADTOURNEE the records more than two months old whose day lies outside both October
// windows, and moves each into SSIADTOURNEE_APURE (made, empty, at the first purge), same key and attributes,
// replacing an archived record of that key. Only records before the limit are ever read. The selection,
// the archive and the deletes run in one transaction: either the purge is done or nothing is.
void ApurerFichierSSIADTOURNEE(FichiersSSIAD& fichiers, const base::Date& today,
                               const CommandeLongue& commande);

// What restorePurged did.
struct PurgedRestore {
    std::size_t restored = 0;
    // Left in the archive because SSIADTOURNEE holds a record of that key again: the newer one stays.
    std::size_t keptInArchive = 0;
};

// Moves back into SSIADTOURNEE the archived records whose day (in the key, as the purge reads it) lies
// from `from` to `to`, ends included; a missing end is open. One transaction. A database that never
// purged anything restores nothing.
PurgedRestore restorePurged(mvdb::Database& database, const std::optional<base::Date>& from,
                            const std::optional<base::Date>& to);

// "N enregistrement(s) remis dans SSIADTOURNEE", with the records kept in the archive when there are.
std::string restoreSummaryText(const PurgedRestore& restore);

}  // namespace data
