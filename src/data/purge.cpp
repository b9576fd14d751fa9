#include "data/purge.h"

#include <tuple>
#include <utility>
#include <vector>

#include "base/text.h"
#include "data/conversion.h"
#include "data/layouts.h"
#include "mvdb/database.h"
#include "mvdb/dictionary.h"
#include "mvdb/query.h"
#include "mvdb/sentence.h"
#include "mvdb/sort_key.h"
#include "mvdb/store.h"

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

// The day that decides a record's fate, kept as text: the first five of the key's last nine characters,
// the start's four following it.
std::string jourDeCle(const std::string& cle) {
    return base::Left(base::Right(cle, 9), 5);
}

// The last record of the selection in its order (by day, then key), found while the records come in
// no set order.
class Dernier {
public:
    void suivre(const std::string& cle, const mvdb::DynamicRecord& enregistrement) {
        static const mvdb::FieldSource& jour = *mvdb::dictionaryFor(kSSIADTOURNEE).find("DateTournee");
        std::string ordre = mvdb::sortKey(jour.firstValue(cle, enregistrement));
        std::string ordreCle = mvdb::sortKey(cle);
        if (m_trouve && std::tie(ordre, ordreCle, cle) <= std::tie(m_ordre, m_ordreCle, m_cle)) return;
        m_trouve = true;
        m_ordre = std::move(ordre);
        m_ordreCle = std::move(ordreCle);
        m_cle = cle;
        m_enregistrement = enregistrement;
    }
    void ranger(FichiersSSIAD& fichiers) {
        if (!m_trouve) return;
        m_enregistrement.bind(fichiers.SSIADTOURNEE, m_cle);
        fichiers.EnregSSIADTOURNEE = std::move(m_enregistrement);
    }

private:
    bool m_trouve = false;
    std::string m_ordre, m_ordreCle, m_cle;
    mvdb::DynamicRecord m_enregistrement;
};

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
    const std::string debut1 = interne(f.DebutFenetre1), fin1 = interne(f.FinFenetre1);
    const std::string debut2 = interne(f.DebutFenetre2), fin2 = interne(f.FinFenetre2);
    mvdb::Database& db = *fichiers.TheDatabase;

    // The archive is made first, on its own: a file made inside a transaction that then fails would
    // be undone in the database but not in what the store knows of its files.
    mvdb::Store& store = db.store();
    const std::string archive(kSSIADTOURNEE_APURE);
    if (!store.hasFile(archive)) store.createFile(archive);
    // One transaction from the selection on: what is archived is exactly what is removed, whatever
    // another planner commits meanwhile, and either the purge is done or nothing is.
    mvdb::Transaction transaction(db);
    // The old records are taken as the selection finds them: a service holds a million, and neither
    // the reply of their keys nor a sort of them is needed to know which go. Only the records that go
    // are kept, for the archive.
    const std::string phrase = "SELECT SSIADTOURNEE AVEC DateTournee < \"" + limite + "\" PAR DateTournee";
    std::vector<std::string> cles, textes;
    Dernier dernier;
    mvdb::selectEach(store, mvdb::parseSentence(phrase), phrase,
                     [&](const std::string& cle, const mvdb::DynamicRecord& enregistrement) {
                         dernier.suivre(cle, enregistrement);
                         if (!aSupprimer(jourDeCle(cle), debut1, fin1, debut2, fin2, limite)) return;
                         cles.push_back(cle);
                         textes.push_back(enregistrement.text());
                     });

    // The archive is written once the selection is over: a store may not take writes while it streams
    // a selection. The store is given every key at once to choose how to remove them.
    for (std::size_t i = 0; i < cles.size(); ++i)
        store.write(archive, cles[i], textes[i]);
    textes = std::vector<std::string>();
    store.removeBatch(std::string(kSSIADTOURNEE), cles);
    transaction.commit();
    // The record buffer holds the last record of the selection, as reading each in its order left it.
    dernier.ranger(fichiers);
    if (commande.attente) commande.attente();
    if (commande.sortie) commande.sortie();
}

PurgedRestore restorePurged(mvdb::Database& database, const std::optional<base::Date>& from,
                            const std::optional<base::Date>& to) {
    const std::string archive(kSSIADTOURNEE_APURE), tournees(kSSIADTOURNEE);
    const std::string premier = from ? interne(*from) : std::string();
    const std::string dernier = to ? interne(*to) : std::string();
    mvdb::Store& store = database.store();
    PurgedRestore restore;
    if (!store.hasFile(archive)) return restore;
    if (!store.hasFile(tournees)) store.createFile(tournees);
    mvdb::Transaction transaction(database);
    // Read first, written after: a store may not take writes while it walks a file.
    std::vector<std::pair<std::string, std::string>> choisis;
    store.scanAll(archive, [&](const std::string& cle, const std::string& texte) {
        const std::string jour = jourDeCle(cle);
        if ((from && jour < premier) || (to && jour > dernier)) return true;
        choisis.emplace_back(cle, texte);
        return true;
    });
    std::string present;
    for (const auto& [cle, texte] : choisis) {
        if (store.readInto(tournees, cle, present)) {
            ++restore.keptInArchive;
            continue;
        }
        store.write(tournees, cle, texte);
        store.remove(archive, cle);
        ++restore.restored;
    }
    transaction.commit();
    return restore;
}

std::string restoreSummaryText(const PurgedRestore& restore) {
    std::string text =
        std::to_string(restore.restored) + " enregistrement(s) remis dans " + std::string(kSSIADTOURNEE);
    if (restore.keptInArchive > 0) {
        text += " ; " + std::to_string(restore.keptInArchive) + " laissé(s) dans " +
                std::string(kSSIADTOURNEE_APURE) + " : leur clé existe de nouveau dans " +
                std::string(kSSIADTOURNEE);
    }
    return text;
}

}  // namespace data
