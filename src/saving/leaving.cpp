#include "shell/ctr_zandorel.h"

// Leaving the screen. There is no dirty flag: whether the tournée has unsaved changes is worked out from
// the labels of pane "DETAIL" against the records that were loaded.
#include "base/text.h"
#include "model/labels.h"
#include "toolkit/host.h"

namespace control {
namespace {

// Cmd_Sortir's own presence test walks the rows of TabTempoDetail, not the items of Etq_Aide as the
// selection's handlers do.
bool presenceParLignes(Ctr_Zandorel& c) {
    for (std::int64_t i = 1; i <= c.TabTempoDetail->DCount(); ++i) {
        int index =
            static_cast<int>(base::roundHalfEven(base::toNumber(c.TabTempoDetail(i, model::col::NumEtq))));
        if (c.Etq_Aide.exists(index) && c.Etq_Aide(index).left() == model::kLeftDetail) return true;
    }
    return false;
}

void quitter(Ctr_Zandorel& c) {
    c.TabAnomalies.release();
    c.W_Sortir = true;
    // The form that carries the control goes; the host closes its window on W_Sortir.
    c.UserControl.setVisible(false);
}

}  // namespace

void Ctr_Zandorel::Cmd_Sortir_Click() {
    // 1. An assignment is taken back without saving, and the screen stays.
    if (Mod.FlagAffectationEnCours) return EnleveAffectationTournee(false);
    // 2. The button reads "Annuler": it drops the tournée on show without a question, on purpose.
    if (JourneeAffichee) {
        if (Etq_Aide.Count() > 1) DechargerEtiquettes();
        Tables.release(model::Pane::Aide);
        Tables.release(model::Pane::Detail);
        Txt_CodeTournee.setText("");
        Cmd_Sortir.setCaption("Sortir");
        Txt_CodeTournee.setFocus();
        JourneeAffichee = false;
        return;
    }
    // 3 to 6.
    if (TourneeAnterieure || !TabTempoDetail.exists() || !presenceParLignes(*this) ||
        !TourneeModifiee(false)) {
        return quitter(*this);
    }
    // 7.
    const int reponse = DemandeEnregistrement();
    if (reponse == toolkit::msgbox::kYes) {
        Cmd_Ok_Click();
        if (ValidationAnomalies) quitter(*this);
    } else if (reponse == toolkit::msgbox::kNo) {
        quitter(*this);
    }
}

}  // namespace control
