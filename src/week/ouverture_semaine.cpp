#include "week/ouverture_semaine.h"

#include "shell/ctr_zandorel.h"
#include "toolkit/host.h"

namespace control {

bool ouvrirTourneeDuJour(Ctr_Zandorel& c, const std::string& code, const base::Date& date) {
    if (c.Mod.FlagAffectationEnCours) return false;
    // A past tournée cannot be changed: nothing to ask.
    if (!c.TourneeAnterieure && c.selection().TourneeModifiee(false)) {
        const int reponse = c.selection().DemandeEnregistrement();
        if (reponse == toolkit::msgbox::kYes) {
            c.Cmd_Ok_Click();
            if (!c.commitReussi()) return false;
        } else if (reponse != toolkit::msgbox::kNo) {
            return false;
        }
    }
    c.Txt_CodeTournee.setText(code);
    if (c.Txt_CodeTournee.text() != code) return false;
    c.Cbo_Date.setText(date.text());
    c.Cmd_Affichage_Click();
    return true;
}

}  // namespace control
