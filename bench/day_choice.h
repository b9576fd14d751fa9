#pragma once

#include <memory>

#include "shell/ctr_zandorel.h"
#include "shell/droits.h"

namespace bench {

// The control as a host hands it over, on `db`, with the planner's rights (level 2); not yet started.
inline std::unique_ptr<control::Ctr_Zandorel> controleSur(toolkit::Host& host, const base::Clock& clock,
                                                          std::shared_ptr<mvdb::Database> db) {
    auto c = std::make_unique<control::Ctr_Zandorel>(host, clock);
    c->setTheClient(nullptr);
    c->setTheDatabase(std::move(db));
    c->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
    return c;
}

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
