#pragma once

#include <string>

#include "mvdb/dynamic_record.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"

namespace testing_support {

// A small service on which a control is started: Monday tournée "001", 6h00 to 14h00, sector N1, one
// intervenant, and aidés of N1 added one by one with an accord for the year. Today is Sunday
// 22/11/2026; the tournée is shown for Monday 23/11/2026 (internal day 21512).
struct SmallService {
    static constexpr const char* kLundi = "21512";
    ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;

    SmallService() {
        for (const char* file :
             {"CIVILAIDE", "SSIADACCORDS", "SSIADELEMGEST", "SSIADPROTOCOLE", "SSIADTOURNEE"})
            f.service.db->store().createFile(file);
        f.service.put("SSIADCARACTTOURNEE", "001",
                      {"LUNDI MATIN", "0", "6", "00", "14", "00", "M", "N1", "", "1"});
        f.service.put("SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
        f.service.put("SSIADSOINS", "S02", {"Toilette", "", "", "", ""});
    }
    void aide(const std::string& code, const std::string& nom) {
        f.service.put("CIVILAIDE", code, {"", nom, "Marie"});
        f.service.put("SSIADACCORDS", code + "001000001", {"21000", "22000", ""});
        mvdb::DynamicRecord gestion;
        gestion.set(23, "N1");
        f.service.db->store().write("SSIADELEMGEST", code + "000001", gestion.text());
    }
    // A protocole of `code` for every day with a window from `debut` to `fin` (hundredths, four digits);
    // planned in tournée "001" on `jour` at `planifie` when given. Returns its key.
    std::string protocole(const std::string& code, const std::string& debut, const std::string& fin,
                          const std::string& duree, const std::string& planifie = "",
                          const std::string& jour = kLundi) {
        const std::string cle = code + "210000000011" + debut;
        f.service.put("SSIADPROTOCOLE", cle, {"", fin, "S01", duree, "1", "21000", ""});
        if (!planifie.empty()) f.service.put("SSIADTOURNEE", "001" + code + jour + planifie, {fin, cle});
        return cle;
    }
    void start() { f.start(); }
    void show(const std::string& date = "23/11/2026") {
        c.Txt_CodeTournee.setText("001");
        c.Cbo_Date.setText(date);
        c.Cmd_Affichage.fireClick();
    }
    std::string record(const std::string& key) {
        return f.service.db->store().read("SSIADTOURNEE", key).value_or("(absent)");
    }
};

}  // namespace testing_support
