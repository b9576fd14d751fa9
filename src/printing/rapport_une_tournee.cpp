#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "model/labels.h"
#include "printing/impression.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {
namespace {

namespace civil = data::civilaide;

// Blanks after a text up to `largeur` characters; a longer text stays whole.
std::string complete(const std::string& texte, std::size_t largeur) {
    const std::size_t longueur = base::Len(texte);
    return longueur >= largeur ? texte : texte + std::string(largeur - longueur, ' ');
}

// An H.MM time as HHhMM.
std::string hhMM(double heure) {
    const std::string chiffres = base::padZeros(base::numberText(heure * 100), 4);
    return base::Left(chiffres, 2) + "h" + base::Right(chiffres, 2);
}

bool rempli(const std::string& texte) {
    return !texte.empty();
}

}  // namespace

void Impression::ImpressionUneTournee() {
    // 1. A tournée is on the screen when one of its labels stands in pane "DETAIL".
    const auto elements = m_ctl.Etq_Aide.elements();
    const bool surEcran = std::any_of(
        elements.begin(), elements.end(),
        [](const toolkit::Control* etiquette) { return etiquette->left() == model::kLeftDetail; });

    // 2. From the screen, unsaved moves included: the rules are drawn again after each entry.
    const std::string code = m_ctl.Txt_CodeTournee.text();
    if (surEcran) {
        const model::WorkTable& detail = m_ctl.TabTempoDetail;
        for (std::int64_t L = 1; L <= detail->DCount(); ++L) {
            if (L == 1) {
                EntetePage(code);
                EnteteTableau();
            }
            RemplirTableauUneTournee(detail(L, model::col::CleProtocole),
                                     static_cast<int>(base::toNumber(detail(L, model::col::NumEtq))),
                                     base::toNumber(detail(L, model::col::DureeMn)));
            Cadre();
        }
        return;
    }

    // 3. From the file. The sentence has no blank before its AND, as the system always sent it.
    const std::string jour = m_ctl.ObjetConversion.DateInterne(dateImprimee());
    mvdb::DynamicRecord reponse =
        data::Interroger(m_ctl.database(),
                         "SELECT SSIADTOURNEE AVEC DateTournee = \"" + jour + "\"AND AVEC CodeTournee = \"" +
                             code + "\" PAR HeureDebut",
                         data::kSSIADTOURNEE, "0 1 2");
    m_ctl.ecarterInterventionsIncoherentes(reponse);
    m_ctl.ecarterInterventionsDependantes(reponse);
    if (reponse(1).empty()) {
        m_ctl.host().MsgBox("Impression impossible : tournée non définie pour cette date.",
                            toolkit::msgbox::kExclamation, kTitreMessage);
        return;
    }
    LignesUtilisees = 0;
    for (std::int64_t L = 1; L <= reponse.DCount(); ++L) {
        if (L == 1) {
            EntetePage(code);
            EnteteTableau();
        }
        RemplirTableauToutesTournees(reponse(L, 1), reponse(L, 2), reponse(L, 3));
        Cadre();
    }
}

void Impression::RemplirTableauUneTournee(const std::string& CleProtocole, int NumEtq, double DureeMn) {
    // The end is cut to four characters before the division, as everywhere in the system.
    const double linkItem = base::toNumber(m_ctl.Etq_Aide(NumEtq).linkItem());
    const double debut = model::CentiemesVersHeure(linkItem / 100);
    const double fin = model::CentiemesVersHeure(base::toNumber(model::finDetail(linkItem, DureeMn)) / 100);
    imprimerEntree(debut, fin, CleProtocole, m_ctl.Txt_CodeTournee.text());
}

std::pair<int, int> Impression::remplirTabImpression(const std::string& CleProtocole) {
    data::FichiersSSIAD& fichiers = m_ctl.Mod.fichiers;
    TabImpression = mvdb::DynamicRecord();
    int n = 1;
    mvdb::DynamicRecord& aide = fichiers.EnregCIVILAIDE;
    if (data::LireEnregistrement(*fichiers.CIVILAIDE, aide, model::codeAideOf(CleProtocole))) {
        TabImpression.set(n++, 1, aide.key() + "  " + aide(civil::kNom) + " " + aide(civil::kPrenom));
        if (rempli(aide(civil::kAdresse1)) || rempli(aide(civil::kAdresse2)) ||
            rempli(aide(civil::kAdresse3)))
            TabImpression.set(
                n++, 1, aide(civil::kAdresse1) + " " + aide(civil::kAdresse2) + " " + aide(civil::kAdresse3));
        if (rempli(aide(civil::kLigne9))) TabImpression.set(n++, 1, aide(civil::kLigne9));
        if (rempli(aide(civil::kCodePostal)) || rempli(aide(civil::kVille)))
            TabImpression.set(n++, 1, aide(civil::kCodePostal) + " " + aide(civil::kVille));
        // Deliberate: n does not move past this row, so the page test counts one aidé line short.
        if (rempli(aide(civil::kTelephone))) TabImpression.set(n, 1, aide(civil::kTelephone));
    }

    int s = 1;
    mvdb::DynamicRecord& protocole = fichiers.EnregSSIADPROTOCOLE;
    if (data::LireEnregistrement(*fichiers.SSIADPROTOCOLE, protocole, CleProtocole)) {
        const auto soins = static_cast<int>(protocole.DCount(data::protocole::kSoins));
        mvdb::DynamicRecord& soin = fichiers.EnregSSIADSOINS;
        for (; s <= soins; ++s) {
            if (data::LireEnregistrement(*fichiers.SSIADSOINS, soin, protocole(data::protocole::kSoins, s)))
                TabImpression.set(s, 2, soin(data::soins::kLibelle));
        }
    }
    return {n, s};
}

void Impression::imprimerEntree(double Debut, double Fin, const std::string& CleProtocole,
                                const std::string& CodeEntete) {
    toolkit::Printer& p = imprimante();
    const double u = UniteCm;
    // 2.
    const auto [n, s] = remplirTabImpression(CleProtocole);
    const std::string horaires = "  " + hhMM(Debut) + " " + hhMM(Fin) + " ";

    // 3. Strict: an entry that fills the page to its last line stays on it.
    if (n + LignesUtilisees + 1 > MaxLignesPage) {
        Cadre();
        p.newPage();
        LignesUtilisees = 0;
        EntetePage(CodeEntete);
        EnteteTableau();
    }

    // 4.
    const bool coupure = n < s && (s - n) + (n + LignesUtilisees) + 1 > MaxLignesPage;

    // 5, 6. A row is printed while either of its columns holds something.
    int c = 1;
    for (std::int64_t r = 1; rempli(TabImpression(r, 1)) || rempli(TabImpression(r, 2)); ++r, ++c) {
        if (coupure && c + LignesUtilisees > MaxLignesPage - 1) {
            BasCadre = p.currentY();
            p.line(0.2 * u, p.currentY(), 28 * u, p.currentY(), 0);
            Cadre();
            p.newPage();
            LignesUtilisees = 0;
            EntetePage(CodeEntete);
            EnteteTableau();
            // The aidé's first line comes again beside the soin that opens the new page.
            p.print("");
            p.print(horaires, toolkit::LineEnd::Open);
            p.print(complete(TabImpression(1, 1), 58) + TabImpression(r, 2));
            c = 0;
        } else if (r == 1) {
            p.print("");
            p.print(horaires, toolkit::LineEnd::Open);
            p.print(complete(TabImpression(1, 1), 58) + TabImpression(1, 2));
        } else {
            p.print(std::string(21, ' ') + complete(TabImpression(r, 1), 51) + TabImpression(r, 2));
        }
    }

    // 7.
    LignesUtilisees += static_cast<int>(TabImpression.DCount()) + 1;
    BasCadre = p.currentY();
    DernierX = p.currentX();
    p.line(0.2 * u, p.currentY(), 28 * u, p.currentY(), 0);
}

}  // namespace control
