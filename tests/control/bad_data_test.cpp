#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/error.h"
#include "support/small_service.h"
#include "toolkit/input.h"

namespace {

using testing_support::SmallService;
namespace input = toolkit::input;

// Every record of SSIADTOURNEE, to compare before and after.
std::string tournees(SmallService& s) {
    std::string all;
    s.f.service.db->store().scanAll("SSIADTOURNEE", [&](const std::string& key, const std::string& text) {
        all += key + "=" + text + "\n";
        return true;
    });
    return all;
}

// Shows tournée 001; the message of what stopped it, empty when it showed.
std::string montrer(SmallService& s) {
    try {
        s.show();
    } catch (const base::Error& e) {
        return e.what();
    }
    return "";
}

// A sound tournée 002 beside the broken one: the screen stays usable when it can still be shown.
void tourneeSaine(SmallService& s) {
    s.f.service.put("SSIADCARACTTOURNEE", "002", {"MARDI", "0", "6", "00", "14", "00", "M", "N1", "", "1"});
    s.aide("00077", "SAIN");
    const std::string cle = s.protocole("00077", "0900", "1000", "20");
    s.f.service.put("SSIADTOURNEE", "00200077" + std::string(SmallService::kLundi) + "0900", {"0933", cle});
}

TEST(BadData, EachGivesItsMessageOrSkipsAndTheScreenStaysUsable) {
    const std::string longue(100000, 'X');
    struct Case {
        const char* name;
        std::function<void(SmallService&)> abimer;
        std::string message;  // a part of the error's text; empty when the display goes through
        int etiquettes;       // labels loaded when the display went through
        bool anomalies = false;
    } cases[] = {
        {"start equal to end",
         [](SmallService& s) {
             s.f.service.put("SSIADCARACTTOURNEE", "001",
                             {"LUNDI", "0", "6", "00", "6", "00", "M", "N1", "", "1"});
         },
         "Heures de tournée incorrectes", 0},
        {"an hour that is no number",
         [](SmallService& s) {
             s.f.service.put("SSIADCARACTTOURNEE", "001",
                             {"LUNDI", "0", "6h", "00", "14", "00", "M", "N1", "", "1"});
         },
         "Heure illisible dans la tournée 001", 0},
        {"a planned key shorter than its layout",
         [](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "0010001221512", {"0900", "00012210000000011"});
         },
         "", 3, true},
        {"a name of 100 000 characters",
         [&](SmallService& s) {
             s.f.service.put("CIVILAIDE", "00012", {"", longue, "Marie"});
         },
         "", 2},
        {"an end of 100 000 characters",
         [&](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "00100012215120800", {longue, "000122100000000110800"});
         },
         "", 2},
        {"a name that is not UTF-8",
         [](SmallService& s) {
             s.f.service.put("CIVILAIDE", "00012", {"", "DUP\xC3\x28NT\xFF", "M"});
         },
         "", 2},
        {"a missing SSIADSOINS record: the care is skipped",
         [](SmallService& s) {
             s.f.service.put("SSIADPROTOCOLE", "000122100000000110800",
                             {"", "0950", "S99", "20", "1", "21000", ""});
         },
         "", 2},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        SmallService s;
        s.aide("00012", "DUPONT");
        s.protocole("00012", "0800", "0950", "20", "0800");
        tourneeSaine(s);
        k.abimer(s);
        s.start();
        const std::string avant = tournees(s);
        bool anomalies = false;
        s.f.host.queueDialog("Frm_Anomalies", [&](toolkit::Form& form) {
            anomalies = true;
            form.find("Cmd_Annuler")->fireClick();
        });
        const std::string message = montrer(s);
        if (k.message.empty()) {
            EXPECT_EQ(message, "");
            EXPECT_EQ(s.c.Etq_Aide.Count(), k.etiquettes);
            EXPECT_EQ(anomalies, k.anomalies) << "a start that can't be read is a start out of its window";
        } else {
            EXPECT_NE(message.find(k.message), std::string::npos) << message;
        }
        s.f.host.takeShown();
        EXPECT_EQ(tournees(s), avant) << "nothing is written";

        // A later action works: the sound tournée shows.
        s.c.Txt_CodeTournee.setText("");
        try {
            s.c.Txt_CodeTournee.setText("002");
            s.c.Cbo_Date.setText("23/11/2026");
            s.c.Cmd_Affichage.fireClick();
        } catch (const std::exception& e) {
            ADD_FAILURE() << e.what();
        }
        EXPECT_EQ(s.c.Txt_CodeTournee.text(), "002");
        EXPECT_EQ(s.c.TabTempoDetail->DCount(), 1);
    }
}

TEST(BadData, TypedTextsReachTheDatabaseOnlyAsValues) {
    for (const char* tape :
         {"O'BRIEN\"; DROP TABLE f_SSIADTOURNEE; --", "LUNDI\" OR 1=1 --", "'); DELETE FROM x; --"}) {
        SCOPED_TRACE(tape);
        SmallService s;
        s.aide("00012", "DUPONT");
        s.protocole("00012", "0800", "0950", "20", "0800");
        s.start();
        const std::string avant = tournees(s);
        std::string message;
        try {
            input::type(s.c.Cbo_Tournee, tape);
            input::key(s.c.Cbo_Tournee, toolkit::Key::Enter);
        } catch (const base::Error& e) {
            message = e.what();
        }
        // The sentence answers, or fails with its own message naming where.
        if (!message.empty()) {
            EXPECT_NE(message.find("SELECT SSIADCARACTTOURNEE"), std::string::npos) << message;
        }
        EXPECT_EQ(tournees(s), avant);
        EXPECT_EQ(s.f.service.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\"").size(),
                  1u);
    }
}

}  // namespace
