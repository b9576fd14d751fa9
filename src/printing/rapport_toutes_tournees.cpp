#include "base/text.h"
#include "data/layouts.h"
#include "model/clock.h"
#include "printing/impression.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {

void Impression::ImpressionToutesTournees() {
    // 1. Sorted by code only: inside a tournée the rows come as the reply gives them.
    const std::string jour = m_ctl.ObjetConversion.DateInterne(dateImprimee());
    mvdb::DynamicRecord reponse = data::Interroger(
        m_ctl.database(), "SELECT SSIADTOURNEE AVEC DateTournee = \"" + jour + "\" PAR CodeTournee",
        data::kSSIADTOURNEE, "0 1 2");
    m_ctl.ecarterInterventionsIncoherentes(reponse);
    m_ctl.ecarterInterventionsDependantes(reponse);

    // 2.
    if (reponse(1).empty()) {
        m_ctl.host().MsgBox("Impression impossible : aucune tournée définie pour cette date.",
                            toolkit::msgbox::kExclamation, kTitreMessage);
        return;
    }

    // 3, 4. Each tournée from a new page; the page number runs on across them.
    toolkit::Printer& p = imprimante();
    std::string precedent;
    for (std::int64_t L = 1; L <= reponse.DCount(); ++L) {
        const std::string code = base::Left(reponse(L, 1), 3);
        if (code != precedent || L == 1) {
            if (L != 1) p.newPage();
            LignesUtilisees = 0;
            EntetePage(code);
            EnteteTableau();
        }
        RemplirTableauToutesTournees(reponse(L, 1), reponse(L, 2), reponse(L, 3));
        Cadre();
        precedent = code;
    }
}

void Impression::RemplirTableauToutesTournees(const std::string& W_Cle, const std::string& W_Fin,
                                              const std::string& W_CleProtocole) {
    const double debut = model::CentiemesVersHeure(base::toNumber(base::Right(W_Cle, 4)) / 100);
    const double fin = model::CentiemesVersHeure(base::toNumber(base::Right(W_Fin, 4)) / 100);
    imprimerEntree(debut, fin, W_CleProtocole, base::Left(W_Cle, 3));
}

}  // namespace control
