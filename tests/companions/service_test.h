#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "shell/ctr_zandorel.h"
#include "support/small_service.h"
#include "toolkit/form.h"
#include "toolkit/input.h"

namespace testing_support {

// The small service with aidé 00012 DUPONT Marie waiting on Monday 23/11/2026 from 8h00 to 9h00 (soin
// S01, an infirmier's act), and the service screens opened from the control as the host's menu opens them.
struct ServiceEcrans : SmallService {
    ServiceEcrans() {
        aide("00012", "DUPONT");
        cle = protocole("00012", "0800", "0900", "30");
        start();
    }
    std::string cle;

    // Opens the screen of `type`, named `forme`, plays `jeu` on it, and closes it.
    template <typename Ecran>
    void ouvrir(control::EcranServiceType type, const std::string& forme, std::function<void(Ecran&)> jeu) {
        f.host.queueDialog(forme, [jeu](toolkit::Form& form) {
            auto& ecran = static_cast<Ecran&>(form);
            jeu(ecran);
            toolkit::input::click(ecran.Cmd_Fermer);
        });
        c.ouvrirEcranService(type);
    }
    std::string enreg(const std::string& fichier, const std::string& key) {
        return mvdb::DynamicRecord(f.service.db->store().read(fichier, key).value_or("(absent)")).text();
    }
    // The text of the only box shown since the last call, "" when none, and "(n boxes)" when more.
    std::string message() {
        const auto boites = f.host.takeShown();
        if (boites.size() > 1) return "(" + std::to_string(boites.size()) + " boxes)";
        return boites.empty() ? "" : boites.front().text;
    }
    // The waiting labels after a display of tournée 001 on Monday: CodeAide and TypeEtq of each row.
    std::vector<std::string> enAttente() {
        show();
        std::vector<std::string> out;
        for (std::int64_t i = 1; i <= c.TabTempoAide->DCount(); ++i)
            if (!c.TabTempoAide(i, 1).empty())
                out.push_back(c.TabTempoAide(i, 6).substr(0, 5) + " " + c.TabTempoAide(i, 7));
        return out;
    }
};

}  // namespace testing_support
