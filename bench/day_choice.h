#pragma once

#include "shell/ctr_zandorel.h"

namespace bench {

// The day every display benchmark shows, Monday 23/11/2026: with tournée 001, or the waiting
// interventions alone. Chosen in the boxes as a planner would, before Cmd_Affichage.
inline void choisirJour(control::Ctr_Zandorel& c, bool avecTournee) {
    if (avecTournee) {
        c.Txt_CodeTournee.setText("001");
        c.Cbo_Date.setText("23/11/2026");
    } else {
        c.Txt_CodeTournee.setText("");
        c.Txt_Date.setText("23/11/2026");
    }
}

}  // namespace bench
