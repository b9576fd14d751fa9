#include "display/affichage.h"

// What is already planned for an aidé on the day shown: the records of SSIADTOURNEE, which the pane
// builders match with TabProtocole by the protocole's key.
#include <string_view>

#include "base/text.h"
#include "data/layouts.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"

namespace control {

namespace {

// The attributes listed for each record; the server takes the trailing blank as it stands.
constexpr std::string_view kListe = "0 1 2 ";
// Columns of ResTournee.
constexpr int kCle = 1;
constexpr int kFin = 2;
constexpr int kCleProtocole = 3;

constexpr std::string_view kTourneeSoignant = "S";
constexpr std::string_view kActeInfirmier = "O";

std::string entreGuillemets(std::string_view valeur) {
    return "\"" + std::string(valeur) + "\"";
}

std::string phraseJour(std::string_view code, std::string_view jour) {
    return "SELECT SSIADTOURNEE AVEC CodeAide = " + entreGuillemets(code) +
           " AND AVEC DateTournee = " + entreGuillemets(jour);
}

// The half-day of the scale, in whole hundreds as the scale's H.MM bounds times 100, and the tournée
// shown taken in (=) or left out (<>).
std::string phraseDemiJournee(std::string_view debut, std::string_view fin, std::string_view operateur,
                              std::string_view tournee) {
    return " AND AVEC HeureDebut >= " + entreGuillemets(debut) +
           " AND AVEC HeureDebut <= " + entreGuillemets(fin) + " AND AVEC CodeTournee " +
           std::string(operateur) + " " + entreGuillemets(tournee) + " ";
}

// Row `ligne` of TabValidees from row i of ResTournee. The tournée of the record says what kind of
// team did it and how many people the record stands for. Leaves that tournée in the shared buffer.
void ecrireValidee(Ctr_Zandorel& c, std::int64_t ligne, std::int64_t i) {
    using Col = Ctr_Zandorel::ColValidees;
    data::FichiersSSIAD& f = c.Mod.fichiers;
    const std::string cle = c.affichage.ResTournee(i, kCle);
    c.TabValidees->set(ligne, Col::HeureValidee, base::Right(cle, 4));
    c.TabValidees->set(ligne, Col::HeureFinValidee, c.affichage.ResTournee(i, kFin));
    c.TabValidees->set(ligne, Col::CleProtocole, c.affichage.ResTournee(i, kCleProtocole));
    if (data::LireEnregistrement(*f.SSIADCARACTTOURNEE, f.EnregSSIADCARACTTOURNEE,
                                 data::tournee::codeTournee(cle))) {
        const std::string nb = f.EnregSSIADCARACTTOURNEE(data::caracttournee::kNbIntervenants);
        c.TabValidees->set(ligne, Col::TypeTournee, f.EnregSSIADCARACTTOURNEE(data::caracttournee::kType));
        c.TabValidees->set(ligne, Col::NbIntervenantsValides, nb.empty() ? "1" : nb);
    }
}

}  // namespace

void Affichage::RechercheInterventionsValidees(const std::string& CodeAide, bool DemiJournee, int Portee) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;

    // 1.
    c.TabValidees.renew();
    std::int64_t ligneCible = 1;

    // 2, 3.
    const std::string tournee = c.Txt_CodeTournee.text();
    const bool avecTournee = !tournee.empty();
    const std::string debut = base::numberText(c.HeureDebutEchelle * 100);
    const std::string fin = base::numberText(c.HeureFinEchelle * 100);
    std::string phrase;
    if (!avecTournee) {
        phrase = phraseJour(CodeAide, c.ObjetConversion.DateInterne(c.Txt_Date.text()));
    } else if (DemiJournee && Portee == 1) {
        phrase = phraseJour(CodeAide, c.ObjetConversion.DateInterne(c.DateAffichee)) +
                 phraseDemiJournee(debut, fin, "<>", tournee);
    } else if (DemiJournee) {
        phrase = phraseJour(CodeAide, c.ObjetConversion.DateInterne(c.DateAffichee));
    } else {
        // No caller asks for this form at present; DateTourneeInterne is already internal.
        phrase = phraseJour(CodeAide, DateTourneeInterne) + phraseDemiJournee(debut, fin, "=", tournee);
    }

    // 4.
    ResTournee = data::Interroger(c.database(), phrase, data::kSSIADTOURNEE, kListe);
    ecarterInterventionsIncoherentes(ResTournee);

    // 6, without a tournée: every record at its own row.
    if (!avecTournee) {
        for (std::int64_t i = 1; !ResTournee(i, kCle).empty(); ++i)
            ecrireValidee(c, i, i);
        return;
    }

    // 5. The two counts are not set back between rows, deliberately: a record of infirmier's acts only
    // passes a tournée of aides-soignants when an earlier row of the same call brought an aide's act.
    // And the rows that pass by 5.2 and 5.3 land at their own row number while 5.5 writes at the target
    // row: a row filtered out before one that is not leaves an empty row 1 or a hole, and the readers,
    // who stop at the first empty HeureValidee, see nothing behind it. Both are kept as they are.
    int actesInfirmiers = 0;
    int autresActes = 0;
    for (std::int64_t i = 1; !ResTournee(i, kCle).empty(); ++i) {
        // 5.1.
        if (!data::LireEnregistrement(*f.SSIADCARACTTOURNEE, f.EnregSSIADCARACTTOURNEE, tournee)) continue;

        // 5.2.
        if (f.EnregSSIADCARACTTOURNEE(data::caracttournee::kType) != kTourneeSoignant) {
            ecrireValidee(c, i, i);
            continue;
        }

        // 5.3.
        if (!data::LireEnregistrement(*f.SSIADPROTOCOLE, f.EnregSSIADPROTOCOLE,
                                      ResTournee(i, kCleProtocole))) {
            ecrireValidee(c, i, i);
            continue;
        }

        // 5.4.
        CompterActes(f.EnregSSIADPROTOCOLE, actesInfirmiers, autresActes);

        // 5.5.
        if (autresActes == 0) continue;
        ecrireValidee(c, ligneCible, i);
        ++ligneCible;
    }
}

void Affichage::CompterActes(const mvdb::DynamicRecord& protocole, int& actesInfirmiers, int& autresActes) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;
    for (std::int64_t v = 1; v <= protocole.DCount(data::protocole::kSoins); ++v) {
        if (!data::LireEnregistrement(*f.SSIADSOINS, f.EnregSSIADSOINS,
                                      protocole(data::protocole::kSoins, v)))
            continue;
        if (f.EnregSSIADSOINS(data::soins::kActeInfirmier) == kActeInfirmier) {
            ++actesInfirmiers;
        } else {
            ++autresActes;
        }
    }
}

}  // namespace control
