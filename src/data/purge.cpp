#include "data/purge.h"

#include "base/text.h"
#include "data/conversion.h"
#include "data/layouts.h"
#include "mvdb/database.h"

namespace data {
namespace {

// The fate of one old record, by the day in its key compared as text with the windows' day numbers.
// The last test is strict on both sides; every record selected is before the limit anyway.
bool aSupprimer(const std::string& e, const std::string& debut1, const std::string& fin1,
                const std::string& debut2, const std::string& fin2, const std::string& limite) {
    if (e < debut1) return true;
    if (e > fin1 && e < debut2) return true;
    return e > fin2 && e < limite;
}

std::string interne(const base::Date& date) {
    return base::zeroPad(date.internalDay(), 5);
}

}  // namespace

base::Date PremierLundiOctobre(const base::Date& date) {
    base::Date first = *base::Date::fromDmy(1, 10, date.year());
    if (first.weekday() == 1) return first;
    // 9 - weekday is the day of the next Monday: 7 October for a Tuesday, 2 October for a Sunday.
    return *base::Date::fromDmy(9 - first.weekday(), 10, date.year());
}

FenetresApurement CalculerFenetres(const base::Date& today) {
    FenetresApurement f{today.addMonths(-2), today, today, today, today};
    f.DebutFenetre2 = PremierLundiOctobre(f.DateLimite);
    f.FinFenetre2 = f.DebutFenetre2.addDays(13);
    if (today < f.FinFenetre2) {
        f.DebutFenetre2 = PremierLundiOctobre(today.addYears(-1));
        f.FinFenetre2 = f.DebutFenetre2.addDays(13);
        f.DebutFenetre1 = PremierLundiOctobre(today.addYears(-2));
    } else {
        f.DebutFenetre1 = PremierLundiOctobre(today.addYears(-1));
    }
    f.FinFenetre1 = f.DebutFenetre1.addDays(13);
    return f;
}

void ApurerFichierSSIADTOURNEE(FichiersSSIAD& fichiers, const base::Date& today,
                               const CommandeLongue& commande) {
    if (commande.entree) commande.entree();
    FenetresApurement f = CalculerFenetres(today);
    const std::string limite = interne(f.DateLimite);

    mvdb::DynamicRecord reponse = Interroger(
        *fichiers.TheDatabase, "SELECT SSIADTOURNEE AVEC DateTournee < \"" + limite + "\" PAR DateTournee",
        kSSIADTOURNEE, "0 1 ");

    const std::string debut1 = interne(f.DebutFenetre1), fin1 = interne(f.FinFenetre1);
    const std::string debut2 = interne(f.DebutFenetre2), fin2 = interne(f.FinFenetre2);
    mvdb::Transaction transaction(*fichiers.TheDatabase);
    for (std::int64_t i = 1; i <= reponse.DCount(); ++i) {
        std::string cle = reponse(i, 1);
        if (!LireEnregistrement(*fichiers.SSIADTOURNEE, fichiers.EnregSSIADTOURNEE, cle)) continue;
        // The day is the first five of the key's last nine characters: the start's four follow it.
        std::string e = base::Left(base::Right(cle, 9), 5);
        if (aSupprimer(e, debut1, fin1, debut2, fin2, limite)) fichiers.SSIADTOURNEE->Delete(cle);
    }
    transaction.commit();
    if (commande.attente) commande.attente();
    if (commande.sortie) commande.sortie();
}

}  // namespace data
