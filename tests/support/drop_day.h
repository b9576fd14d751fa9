#pragma once

#include <string>
#include <string_view>

#include "base/text.h"
#include "model/labels.h"
#include "support/small_service.h"

namespace testing_support {

// Monday 23/11 of tournée "001" (one intervenant, 6h00 to 14h00: 700 twips an hour, a label of 30
// minutes is 350 high). Planned in "001": DUPONT at 8h00 (Top 2160) and BERNARD at 13h00 (Top 5660).
// Waiting: MARTIN from 9h00, and ROBERT for two, whose first intervenant is in "002" from 8h00 to 8h30.
struct DropDay : SmallService {
    DropDay() {
        f.service.put("SSIADCARACTTOURNEE", "002",
                      {"LUNDI SOIR", "0", "6", "00", "14", "00", "M", "N1", "", "1"});
        for (const char* code : {"00012", "00013", "00014", "00016"})
            aide(code, std::string("NOM") + code);
        protocole("00012", "0800", "0900", "30", "0800");
        protocole("00013", "0900", "1000", "30");
        protocole("00014", "1300", "1400", "30", "1300");
        const std::string cle =
            "00016210000000011"
            "0800";
        f.service.put("SSIADPROTOCOLE", cle, {"", "1400", "S01", "30", "2", "21000", ""});
        f.service.put("SSIADTOURNEE", std::string("002") + "00016" + kLundi + "0800", {"0850", cle});
        start();
        show();
    }
    // The label of the aidé in that pane.
    int etiquette(const std::string& code, model::Pane pane) {
        for (toolkit::Control* e : c.Etq_Aide.elements())
            if (e->index() > 0 && e->tag().rfind(code, 0) == 0 && model::paneAt(e->left(), e->top()) == pane)
                return e->index();
        return 0;
    }
    // Takes the label by a press 20 twips inside it and drops it with its top left corner at (L, T).
    void glisser(int index, double L, double T) {
        c.Etq_Aide_MouseMove(index, 0, 0, 20, 20);
        c.Etq_Aide_MouseDown(index, 1, 0, 20, 20);
        c.SuivreHoraireEtiquette(static_cast<float>(L + 20), static_cast<float>(T + 20));
        c.DeposerEtiquette(static_cast<float>(L + 20), static_cast<float>(T + 20));
        // The drop ends the drag, as the toolkit's does.
        c.UserControl.endDrag();
    }
    std::string boites() {
        std::string out;
        for (const auto& b : f.host.takeShown())
            out += b.text + " [" + b.title + " " + std::to_string(b.style) + "]";
        return out;
    }
    std::string place(int index) {
        const toolkit::Label& e = c.Etq_Aide(index);
        return base::numberText(e.left()) + " " + base::numberText(e.top()) + " " + e.linkItem();
    }
};

}  // namespace testing_support
