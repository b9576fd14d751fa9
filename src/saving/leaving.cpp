#include "saving/sauvegarde.h"

// Leaving the screen. There is no dirty flag: whether the tournée has unsaved changes is worked out from
// the labels of pane "DETAIL" against the records that were loaded.
#include "base/text.h"
#include "model/labels.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {
namespace {

// Cmd_Sortir's own presence test walks the rows of TabTempoDetail, not the items of Etq_Aide as the
// selection's handlers do.
bool presenceParLignes(Ctr_Zandorel& c) {
    for (std::int64_t i = 1; i <= c.TabTempoDetail->DCount(); ++i) {
        const int index = base::toInteger(c.TabTempoDetail(i, model::col::NumEtq));
        if (c.Etq_Aide.exists(index) && c.Etq_Aide(index).left() == model::kLeftDetail) return true;
    }
    return false;
}

void quitter(Ctr_Zandorel& c) {
    c.historique.vider();
    c.TabAnomalies.release();
    c.W_Sortir = true;
    // The form that carries the control goes; the host closes its window on W_Sortir.
    c.UserControl.setVisible(false);
}

}  // namespace

void Sauvegarde::Cmd_Sortir_Click() {
    Ctr_Zandorel& c = m_c;
    // 1. An assignment is taken back without saving, and the screen stays.
    if (c.Mod.FlagAffectationEnCours) return c.EnleveAffectationTournee(false);
    // 2. The button reads "Annuler": it drops the tournée on show without a question, on purpose.
    if (c.JourneeAffichee) {
        if (c.Etq_Aide.Count() > 1) c.DechargerEtiquettes();
        c.Tables.release(model::Pane::Aide);
        c.Tables.release(model::Pane::Detail);
        c.Txt_CodeTournee.setText("");
        c.Cmd_Sortir.setCaption("Sortir");
        c.Txt_CodeTournee.setFocus();
        c.JourneeAffichee = false;
        return;
    }
    // 3 to 6.
    if (c.TourneeAnterieure || !c.TabTempoDetail.exists() || !presenceParLignes(c) ||
        !c.selection().TourneeModifiee(false)) {
        return quitter(c);
    }
    // 7.
    const int reponse = c.selection().DemandeEnregistrement();
    if (reponse == toolkit::msgbox::kYes) {
        Cmd_Ok_Click();
        if (c.ValidationAnomalies) quitter(c);
    } else if (reponse == toolkit::msgbox::kNo) {
        quitter(c);
    }
}

}  // namespace control
