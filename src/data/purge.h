#pragma once

#include <functional>

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

// Deletes for good the SSIADTOURNEE records more than two months old whose day lies outside both
// October windows. Only records before the limit are ever read. A record gone since the selection is
// skipped. The deletes run in one transaction: either the purge is done or nothing is.
void ApurerFichierSSIADTOURNEE(FichiersSSIAD& fichiers, const base::Date& today,
                               const CommandeLongue& commande);

}  // namespace data
