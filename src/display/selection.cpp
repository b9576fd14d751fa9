#include "shell/ctr_zandorel.h"

// The choice of a tournée and a date: routines of the control, kept with the display they lead to.
#include "base/text.h"
#include "data/layouts.h"
#include "mvdb/database.h"

namespace control {

void Ctr_Zandorel::RequeteTournee() {
    // 1.
    debutCommandeLongue();

    // 2. Labels that begin with what was typed, not deleted, by label; an empty text lists them all.
    mvdb::DynamicRecord requete;
    requete.set(1, "SELECT SSIADCARACTTOURNEE AVEC 1 = \"" + base::UCase(Cbo_Tournee.text()) +
                       "]\" AND AVEC 9 <> \"1\" PAR 1");
    requete.set(2, std::string(data::kSSIADCARACTTOURNEE));
    requete.set(3, "0 1 10");
    RequeteTournees = database().Query(requete.text());

    // 3.
    Cbo_Tournee.clear();
    if (!RequeteTournees(1).empty()) {
        for (std::int64_t i = 1; i <= RequeteTournees.DCount(); ++i)
            Cbo_Tournee.addItem(RequeteTournees(i, 2));
    }

    // 4.
    Cbo_Tournee.setText("");

    // 5. A single match is taken as chosen: writing its code runs the code's change handler.
    if (RequeteTournees.DCount() == 1) {
        Cbo_Tournee.setText(RequeteTournees(1, 2));
        Txt_CodeTournee.setText(RequeteTournees(1, 1));
    } else {
        Cbo_Tournee.setText("");
        Txt_CodeTournee.setText("");
    }

    // 6.
    finCommandeLongue();
}

}  // namespace control
