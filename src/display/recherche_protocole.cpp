#include "display/affichage.h"

// What an aidé needs on the day shown. Nothing stores it: the server expands the protocoles for the
// date into a temporary record, which this routine reads, sifts and deletes.
#include <string>
#include <string_view>

#include "base/clock.h"
#include "base/text.h"
#include "data/layouts.h"
#include "data/record_checks.h"
#include "model/clock.h"
#include "mvdb/database.h"
#include "shell/ctr_zandorel.h"

namespace control {

namespace {

// The reply of AFFICHEPROTOCSSIAD: attribute 1, one value per column, one sub-value per row.
namespace reponse {
constexpr int kType = 1;
constexpr int kDebut = 2;
constexpr int kFin = 3;
constexpr int kCle = 4;
constexpr int kDureeMn = 5;
constexpr int kNature = 6;
constexpr std::string_view kIntervention = "IntervS";
constexpr std::string_view kAbsence = "AbsAide";
}  // namespace reponse

constexpr std::string_view kProgramme = "AFFICHEPROTOCSSIAD";
constexpr std::string_view kTourneeSoignant = "S";
constexpr std::string_view kNatureSoignant = "A";

// The present time as "hhnnss": with the user name it keeps two commands a second apart in two
// different records.
std::string heureHhnnss(int secondes) {
    return base::zeroPad(secondes / 3600, 2) + base::zeroPad(secondes / 60 % 60, 2) +
           base::zeroPad(secondes % 60, 2);
}

// A window overlaps the scale by some amount. The bounds are first rounded to five minutes, and both
// tests are strict: a window that only touches an edge of the scale would give a label of no width.
bool chevaucheEchelle(std::string_view debut, std::string_view fin, double heureDebutEchelle,
                      double heureFinEchelle) {
    const double heureDebut = model::CentiemesVersHeure(base::toNumber(debut) / 100);
    const double heureFin = model::CentiemesVersHeure(base::toNumber(fin) / 100);
    return heureDebut < heureFinEchelle && heureDebutEchelle < heureFin;
}

// What a shown tournée takes: a protocole that still exists, of kind "A" for a tournée of
// aides-soignants, and of two people for a tournée of two. A one-person tournée takes a two-person
// protocole too, of which it brings one person. Leaves the protocole in its buffer.
bool retenuParLaTournee(data::FichiersSSIAD& f, bool protocoleLu, std::string_view nature,
                        int nbIntervenantsTournee) {
    if (!protocoleLu) return false;
    if (f.EnregSSIADCARACTTOURNEE(data::caracttournee::kType) == kTourneeSoignant &&
        nature != kNatureSoignant) {
        return false;
    }
    return nbIntervenantsTournee != 2 ||
           base::compareValues(f.EnregSSIADPROTOCOLE(data::protocole::kNbIntervenants, 1), "2") == 0;
}

// The system's user name, asked once for the life of the process: the login of the session and the
// owner of the process do not change while it runs, and each asking reads the user database, for every
// aidé of a display.
const std::string& nomUtilisateur(const Ctr_Zandorel& c) {
    static const std::string nom = c.NomUtilisateurSysteme();
    return nom;
}

}  // namespace

bool Affichage::protocoleSain(const std::optional<data::RecordFault>& defaut) {
    if (enregistrementSain(defaut)) return true;
    ProtocolesEcartes.push_back(*defaut);
    return false;
}

void Affichage::RechercheProtocole(const std::string& CodeAide) {
    Ctr_Zandorel& c = m_c;
    data::FichiersSSIAD& f = c.Mod.fichiers;

    // 1.
    const bool avecTournee = !c.Txt_CodeTournee.text().empty();

    // 2.
    mvdb::DynamicRecord commande;
    c.TabProtocole.renew();
    ProtocolesEcartes.clear();
    int ligne = 0;

    // 3.
    const std::string nomTemporaire = base::UCase(nomUtilisateur(c)) + heureHhnnss(c.clock().secondsOfDay());

    // 4. The range is one day long.
    const std::string premierJour =
        c.ObjetConversion.DateInterne(avecTournee ? c.DateAffichee : c.Txt_Date.text());
    const std::string dernierJour = premierJour;

    // 5.
    commande.set(1, std::string(kProgramme) + " |" + nomTemporaire + "||S|" + premierJour + "|" +
                        dernierJour + "|" + "|" + "|" + CodeAide + "|AA" + "|");
    c.database().RunProgram(commande.text());

    // 6.
    f.EnregTPSTEMPO =
        data::LireEnregistrementOuVide(*f.TPSTEMPO, nomTemporaire + std::string(kProgramme), true);
    const mvdb::DynamicRecord& res = f.EnregTPSTEMPO;

    // 7. An absent aidé needs nothing that day.
    if (res(1, reponse::kType, 1) != reponse::kAbsence) {
        // 8.
        for (std::int64_t i = 1; !res(1, reponse::kType, i).empty(); ++i) {
            const std::string nature = res(1, reponse::kNature, i);
            if (res(1, reponse::kType, i) != reponse::kIntervention || base::Len(nature) != 1) continue;
            const std::string cle = base::Left(res(1, reponse::kCle, i), data::protocole::kLongueurCle);
            if (!protocoleSain(data::checkProtocole(cle, res(1, reponse::kDebut, i), res(1, reponse::kFin, i),
                                                    res(1, reponse::kDureeMn, i))))
                continue;
            if (!chevaucheEchelle(res(1, reponse::kDebut, i), res(1, reponse::kFin, i), c.HeureDebutEchelle,
                                  c.HeureFinEchelle)) {
                continue;
            }
            // The server passes on the protocoles whose days it cannot judge: checked here with the rest.
            const bool lu = data::LireEnregistrement(*f.SSIADPROTOCOLE, f.EnregSSIADPROTOCOLE, cle);
            if (lu && !protocoleSain(data::checkRecord(data::kSSIADPROTOCOLE, cle, f.EnregSSIADPROTOCOLE)))
                continue;
            // 9.
            if (avecTournee && !retenuParLaTournee(f, lu, nature, c.NbIntervenantsTournee)) continue;

            ++ligne;
            c.TabProtocole->set(ligne, Ctr_Zandorel::ColProtocole::CleProtocole, cle);
            c.TabProtocole->set(ligne, Ctr_Zandorel::ColProtocole::HeureDebut, res(1, reponse::kDebut, i));
            c.TabProtocole->set(ligne, Ctr_Zandorel::ColProtocole::HeureFin, res(1, reponse::kFin, i));
            c.TabProtocole->set(ligne, Ctr_Zandorel::ColProtocole::TypeEtq, nature);
            c.TabProtocole->set(ligne, Ctr_Zandorel::ColProtocole::DureeMn, res(1, reponse::kDureeMn, i));
            c.TabProtocole->set(ligne, Ctr_Zandorel::ColProtocole::NbPlaces, "0");

            // Without a tournée a protocole that cannot be read keeps its row with no count of people:
            // the pane builders then make no label of it.
            if (avecTournee || lu) {
                c.TabProtocole->set(ligne, Ctr_Zandorel::ColProtocole::NbIntervenantsProtocole,
                                    f.EnregSSIADPROTOCOLE(data::protocole::kNbIntervenants, 1));
            }
        }
    }

    // 10. A reply that never came is no record of the file, and leaves nothing to delete.
    if (res.isBound()) res.DBDelete();
}

}  // namespace control
