#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/error.h"
#include "data/record_checks.h"
#include "mvdb/dynamic_record.h"
#include "support/small_service.h"
#include "toolkit/host.h"
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

// Shows tournée 001; the message of what stopped it, or else the texts of the boxes shown, empty when
// it showed without a word.
std::string montrer(SmallService& s) {
    try {
        s.show();
    } catch (const base::Error& e) {
        return e.what();
    }
    std::string textes;
    for (const auto& boite : s.f.host.takeShown())
        textes += boite.text;
    return textes;
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
        std::string message;  // a part of what was said; empty when the display goes through silent
        int etiquettes;       // labels loaded
        bool anomalies = false;
    } cases[] = {
        {"start equal to end",
         [](SmallService& s) {
             s.f.service.put("SSIADCARACTTOURNEE", "001",
                             {"LUNDI", "0", "6", "00", "6", "00", "M", "N1", "", "1"});
         },
         "Cette tournée ne peut pas être ouverte : SSIADCARACTTOURNEE « 001 », attribut 5 (heure de fin) : "
         "la fin « 6h00 » n'est pas après le début « 6h00 »",
         3},
        {"an hour that is no number",
         [](SmallService& s) {
             s.f.service.put("SSIADCARACTTOURNEE", "001",
                             {"LUNDI", "0", "6h", "00", "14", "00", "M", "N1", "", "1"});
         },
         "SSIADCARACTTOURNEE « 001 », attribut 3 (heure de début) : « 6h » n'est pas un nombre", 3},
        {"a planned key shorter than its layout",
         [](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "0010001221512", {"0900", "00012210000000011"});
         },
         "SSIADTOURNEE « 0010001221512 », clé : 13 caractères au lieu de 17", 2},
        {"a name of 100 000 characters",
         [&](SmallService& s) {
             s.f.service.put("CIVILAIDE", "00012", {"", longue, "Marie"});
         },
         "", 2},
        {"an end of 100 000 characters, quoted cut",
         [&](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "00100012215120800", {longue, "000122100000000110800"});
         },
         "attribut 1 (fin prévue) : « " + std::string(40, 'X') + "… » n'est pas un nombre", 2},
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
        } else {
            EXPECT_NE(message.find(k.message), std::string::npos) << message;
        }
        EXPECT_EQ(s.c.Etq_Aide.Count(), k.etiquettes);
        EXPECT_EQ(anomalies, k.anomalies);
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

// Records that other programs wrote badly: no label, one box per display naming file, key and field, the
// rest of the day shown, and a validation that writes nothing out of them.
TEST(BadData, RecordsThatMakeNoSenseGiveNoLabelAndAreNamedOnce) {
    const std::string lundi = SmallService::kLundi;
    struct Case {
        const char* name;
        std::function<void(SmallService&)> abimer;
        std::string defaut;  // the one line of the box
        int etiquettes;      // labels loaded, the model included
    } cases[] = {
        {"a saved end of 8h30",
         [&](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "00100012" + lundi + "0800", {"8h30", "000122100000000110800"});
         },
         "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre", 3},
        {"a 40-digit end",
         [&](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "00100012" + lundi + "0800",
                             {std::string(40, '9'), "000122100000000110800"});
         },
         "SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : « "
         "9999999999999999999999999999999999999999 » est hors de 0 à 2400 centièmes d'heure",
         3},
        {"a protocole duration of -30",
         [](SmallService& s) {
             s.f.service.put("SSIADPROTOCOLE", "000122100000000110800",
                             {"", "0950", "S01", "-30", "1", "21000", ""});
         },
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 4 (durée) : « -30 » est hors de 1 à 1440 "
         "minutes",
         2},
        {"a key of 15 characters",
         [&](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "00100012" + lundi + "08", {"0950", "000122100000000110800"});
         },
         "SSIADTOURNEE « 001000122151208 », clé : 15 caractères au lieu de 17", 3},
        {"a key of 16 characters",
         [&](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "00100012" + lundi + "080", {"0950", "000122100000000110800"});
         },
         "SSIADTOURNEE « 0010001221512080 », clé : 16 caractères au lieu de 17", 3},
        {"a key of 18 characters",
         [&](SmallService& s) {
             s.f.service.put("SSIADTOURNEE", "00100012" + lundi + "08000", {"0950", "000122100000000110800"});
         },
         "SSIADTOURNEE « 001000122151208000 », clé : 18 caractères au lieu de 17", 3},
        {"an accord whose last day is no day",
         [](SmallService& s) {
             s.f.service.put("SSIADACCORDS", "00012001000001", {"21000", "2200a", ""});
         },
         "SSIADACCORDS « 00012001000001 », attribut 2 (dernier jour) : « 2200a » n'est pas un jour interne "
         "(5 chiffres au plus)",
         2},
        {"an absence that begins on no day",
         [](SmallService& s) {
             mvdb::DynamicRecord civil;
             civil.set(2, "DUPONT");
             civil.set(20, "2150x");
             civil.set(21, "21600");
             s.f.service.db->store().write("CIVILAIDE", "00012", civil.text());
         },
         "CIVILAIDE « 00012 », attribut 20 (début d'absence) : « 2150x » n'est pas un jour interne "
         "(5 chiffres au plus)",
         2},
        {"an absence of a planned aidé that ends on no day: the planned record stays",
         [](SmallService& s) {
             mvdb::DynamicRecord civil;
             civil.set(2, "MARTIN");
             civil.set(20, "21500");
             civil.set(21, "-1");
             s.f.service.db->store().write("CIVILAIDE", "00013", civil.text());
         },
         "CIVILAIDE « 00013 », attribut 21 (fin d'absence) : « -1 » n'est pas un jour interne "
         "(5 chiffres au plus)",
         3},
        {"a protocole whose first day is no day",
         [](SmallService& s) {
             s.f.service.put("SSIADPROTOCOLE", "000122100000000110800",
                             {"", "0950", "S01", "20", "1", "2100O", ""});
         },
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 6 (premier jour) : « 2100O » n'est pas un jour "
         "interne (5 chiffres au plus)",
         2},
        {"a protocole that ends before it begins",
         [](SmallService& s) {
             s.f.service.put("SSIADPROTOCOLE", "000122100000000110800",
                             {"", "0950", "S01", "20", "1", "21600", "21500"});
         },
         "SSIADPROTOCOLE « 000122100000000110800 », attribut 7 (dernier jour) : la fin « 21500 » est avant "
         "le "
         "début « 21600 »",
         2},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        SmallService s;
        s.aide("00012", "DUPONT");
        s.protocole("00012", "0800", "0950", "20");
        s.aide("00013", "MARTIN");
        s.protocole("00013", "0900", "1050", "20", "0900");
        k.abimer(s);
        s.start();
        s.show();
        const auto boites = s.f.host.takeShown();
        ASSERT_EQ(boites.size(), 1u);
        EXPECT_EQ(boites[0].title, "Message KORVELINE");
        EXPECT_EQ(boites[0].style, toolkit::msgbox::kExclamation);
        EXPECT_EQ(boites[0].text, "Enregistrements incohérents, laissés de côté :\r\n" + k.defaut);
        EXPECT_EQ(s.c.Etq_Aide.Count(), k.etiquettes);
        // The sound intervention is shown; no label is drawn from what makes no sense.
        bool martin = false;
        for (const toolkit::Control* e : s.c.Etq_Aide.elements()) {
            if (e->index() == 0) continue;
            EXPECT_GT(e->height(), 0) << e->caption();
            EXPECT_GE(e->top(), 0) << e->caption();
            EXPECT_EQ(e->linkItem().find('|'), std::string::npos) << e->caption();
            martin = martin || (e->tag().rfind("00013", 0) == 0 && e->linkItem() == "0900");
        }
        EXPECT_TRUE(martin);

        // A validation writes only keys of 17 characters that end after they start, and leaves the bad
        // record for whoever wrote it.
        const std::string avant = tournees(s);
        s.c.Cmd_Ok.fireClick();
        s.f.service.db->store().scanAll("SSIADTOURNEE", [&](const std::string& key, const std::string& text) {
            if (avant.find(key + "=" + text) == std::string::npos) {
                EXPECT_FALSE(data::checkPlanned(key, mvdb::DynamicRecord(text)(1))) << key;
            }
            return true;
        });
        for (const char* origine : {"00100013215120900"})
            EXPECT_NE(tournees(s).find(origine), std::string::npos);
    }
}

TEST(BadData, ATournéeWithHoursThatMakeNoSenseIsNotOpened) {
    struct Case {
        const char* name;
        std::string heureDebut, minuteDebut, heureFin, defaut;
    } cases[] = {
        {"a start of -3", "-3", "00", "14", "attribut 3 (heure de début) : « -3 » est hors de 0 à 24 heures"},
        {"a minute of 75", "6", "75", "14",
         "attribut 4 (minute de début) : « 75 » est hors de 0 à 59 minutes"},
        {"an end of 25", "6", "00", "25", "attribut 5 (heure de fin) : « 25 » est hors de 0 à 24 heures"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        SmallService s;
        s.f.service.put("SSIADCARACTTOURNEE", "001",
                        {"LUNDI", "0", k.heureDebut, k.minuteDebut, k.heureFin, "00", "M", "N1", "", "1"});
        s.start();
        s.f.host.takeShown();  // the only tournée of the list is opened at start-up, and refused already
        const double debut = s.c.HeureDebutEchelle;
        input::type(s.c.Txt_CodeTournee, "001");
        const auto boites = s.f.host.takeShown();
        ASSERT_EQ(boites.size(), 1u);
        EXPECT_EQ(boites[0].text,
                  "Cette tournée ne peut pas être ouverte : SSIADCARACTTOURNEE « 001 », " + k.defaut);
        EXPECT_EQ(s.c.Txt_CodeTournee.text(), "");
        EXPECT_EQ(s.c.HeureDebutEchelle, debut) << "no scale is drawn from the tournée's hours";
    }
}

}  // namespace
