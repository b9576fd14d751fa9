#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "base/error.h"
#include "base/text.h"
#include "mvdb/dynamic_record.h"
#include "support/control_fixture.h"
#include "toolkit/recording_printer.h"

namespace {

// Monday 23/11/2026, the day after the fixture's today.
constexpr const char* kLundi = "21512";

// The recording printer's output against tests/golden/NAME.txt; ZANDOREL_UPDATE_GOLDEN=1 rewrites it.
void expectGolden(const std::string& name, const std::string& output) {
    const std::string path = std::string(ZANDOREL_GOLDEN) + "/" + name + ".txt";
    if (std::getenv("ZANDOREL_UPDATE_GOLDEN")) std::ofstream(path, std::ios::binary) << output;
    std::ifstream in(path, std::ios::binary);
    ASSERT_TRUE(in) << "no golden file " << path;
    std::stringstream golden;
    golden << in.rdbuf();
    EXPECT_EQ(output, golden.str()) << "golden file " << path;
}

// A service with two Monday tournées, three soins and three printers; entries are planned on 23/11.
struct Service {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;
    std::shared_ptr<toolkit::RecordingPrinters> printers = std::make_shared<toolkit::RecordingPrinters>(
        std::vector<std::string>{"Laser", "Bureau a4", "Matricielle"});

    Service() {
        for (const char* fichier : {"CIVILAIDE", "SSIADACCORDS", "SSIADELEMGEST", "SSIADPROTOCOLE",
                                    "SSIADSOINS", "SSIADTOURNEE", "TPSTEMPO"})
            f.service.db->store().createFile(fichier);
        f.service.put("SSIADCARACTTOURNEE", "001", {"Matin", "0", "6", "00", "14", "00", "M", "N1", "", "1"});
        f.service.put("SSIADCARACTTOURNEE", "002", {"Soir", "0", "14", "00", "22", "00", "M", "N1", "", "1"});
        for (int s = 1; s <= 15; ++s)
            f.service.put("SSIADSOINS", "S" + base::zeroPad(s, 2), {"Soin " + std::to_string(s)});
        c.setPrinters(printers);
        f.start();
    }
    // An aidé with his name and, when given, his address line.
    void aide(const std::string& code, const std::string& nom, const std::string& adresse = "") {
        f.service.put("CIVILAIDE", code, {"", nom, "Marie", "", adresse});
    }
    // An entry of tournée `tournee` at `debut` for 30 minutes with soins "S01|S02|..." of its protocole.
    void entree(const std::string& tournee, const std::string& code, const std::string& debut,
                const std::string& soins) {
        const std::string cle = code + "210000000011" + debut;
        f.service.put("SSIADPROTOCOLE", cle, {"", "2200", soins, "30", "1", "21000", ""});
        f.service.put("SSIADTOURNEE", tournee + code + kLundi + debut,
                      {base::zeroPad(static_cast<int>(base::toNumber(debut)) + 50, 4), cle});
    }
    // Prints the tournée `code` (every tournée when empty) of 23/11 on printer `numero`.
    std::string imprimer(const std::string& code, int numero = 0, int copies = 1) {
        if (code.empty()) c.Txt_Date.setText("23/11/2026");
        if (!code.empty()) c.Txt_CodeTournee.setText(code);
        f.host.queuePrinter(printers->deviceNames()[static_cast<std::size_t>(numero)], copies);
        c.Cmd_Imprimer.fireClick();
        return printers->recorder(numero).output();
    }
};

std::string soins(int nombre) {
    std::string liste;
    for (int s = 1; s <= nombre; ++s)
        liste += (s > 1 ? "|S" : "S") + base::zeroPad(s, 2);
    return liste;
}

TEST(Impression, RefusesAPrinterItWasNotGivenAndForgetsTheChoiceWithANewList) {
    struct Cas {
        const char* nom;
        bool avecListe;
        std::function<void(control::Impression&)> appel;
        const char* message;
    } const cas[] = {
        {"a choice before any list", false, [](control::Impression& i) { i.setCurrentPrinter(0); },
         "Aucune imprimante n'a été donnée au contrôle Zandorel"},
        {"a number past the list", true, [](control::Impression& i) { i.setCurrentPrinter(3); },
         "L'imprimante 3 n'existe pas (3 imprimantes)"},
        {"a page before any choice", true, [](control::Impression& i) { i.EnteteDate(); },
         "Aucune imprimante n'a été choisie pour l'impression"},
        {"a page after a new list", true,
         [](control::Impression& i) {
             i.setCurrentPrinter(1);
             i.setPrinters(std::make_shared<toolkit::RecordingPrinters>(std::vector<std::string>{"Autre"}));
             EXPECT_EQ(i.currentPrinter(), nullptr);
             i.EnteteTableau();
         },
         "Aucune imprimante n'a été choisie pour l'impression"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        testing_support::ControlFixture f;
        if (k.avecListe)
            f.ctl->setPrinters(std::make_shared<toolkit::RecordingPrinters>(
                std::vector<std::string>{"Laser", "Bureau a4", "Matricielle"}));
        std::string message;
        try {
            k.appel(f.ctl->impression());
        } catch (const base::Error& e) {
            message = e.what();
        }
        EXPECT_EQ(message, k.message);
    }
}

TEST(Cmd_Imprimer_Click, PrintsTheReportsAsTheirGoldenFilesHold) {
    struct Cas {
        const char* golden;
        std::function<void(Service&)> donnees;
        const char* code;
    } const cas[] = {
        {"print_short_tournee",
         [](Service& s) {
             s.f.service.put("CIVILAIDE", "00011",
                             {"", "DUPONT", "Jean", "", "12", "", "rue", "des Lilas", "Bâtiment B", "75011",
                              "PARIS", "", "", "01 43 00 00 00"});
             s.aide("00012", "MARTIN");
             s.entree("001", "00011", "0800", "S01|S02");
             s.entree("001", "00012", "0900", "S03|S99|S04");  // S99 is no soin: it ends the entry
             s.entree("001", "00013", "1000", "S05");          // no civil state
         },
         "001"},
        {"print_overflow",  // 13 entries of 3 lines fill page 1 to its 39th line; the 14th breaks
         [](Service& s) {
             for (int a = 1; a <= 14; ++a) {
                 s.aide(base::zeroPad(a, 5), "NOM" + std::to_string(a), "rue " + std::to_string(a));
                 s.entree("001", base::zeroPad(a, 5), base::zeroPad(600 + 25 * a, 4), "S01");
             }
         },
         "001"},
        {"print_split",  // 6 entries use 30 lines; the 12 soins of the 7th go on over a page break
         [](Service& s) {
             for (int a = 1; a <= 6; ++a) {
                 s.aide(base::zeroPad(a, 5), "NOM" + std::to_string(a));
                 s.entree("001", base::zeroPad(a, 5), base::zeroPad(600 + 25 * a, 4), soins(4));
             }
             s.aide("00007", "LONGUE", "rue Haute");
             s.entree("001", "00007", "0800", soins(12));
             s.aide("00008", "APRES");
             s.entree("001", "00008", "0900", "S01");
         },
         "001"},
        {"print_all_tournees",  // "009" has lost its record: a head without title, then bold 14
         [](Service& s) {
             s.aide("00021", "PREMIER");
             s.aide("00022", "SECOND");
             s.entree("002", "00022", "1500", "S02");
             s.entree("001", "00021", "0800", "S01");
             s.entree("009", "00021", "1700", "S03");
             s.entree("001", "00022", "0900", "S01");
         },
         ""},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.golden);
        Service s;
        k.donnees(s);
        expectGolden(k.golden, s.imprimer(k.code));
        EXPECT_TRUE(s.f.host.takeShown().empty());
        EXPECT_TRUE(s.c.UserControl.enabled() && s.f.host.screenMousePointer() == 0);
    }
}

TEST(Cmd_Imprimer_Click, SetsCopiesAndOrientationByThePrintersName) {
    struct Cas {
        const char* nom;
        int imprimante;
        toolkit::Settings reglages;
        const char* avantLaPage;  // what the recording shows before "page 1"
    } const cas[] = {
        {"a refusing driver prints all the same", 0, toolkit::Settings::Refused, ""},
        {"any printer: landscape and the copies", 0, toolkit::Settings::Accepted,
         "copies 3\norientation 2\n"},
        {"A4 in any case keeps its orientation", 1, toolkit::Settings::Accepted, "copies 3\n"},
        {"a matrix printer keeps its count", 2, toolkit::Settings::Accepted, "orientation 2\n"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Service s;
        s.printers = std::make_shared<toolkit::RecordingPrinters>(
            std::vector<std::string>{"Laser", "Bureau a4", "Matricielle"}, k.reglages);
        s.c.setPrinters(s.printers);
        s.aide("00001", "NOM");
        s.entree("001", "00001", "0800", "S01");
        const std::string sortie = s.imprimer("001", k.imprimante, 3);
        EXPECT_EQ(sortie.substr(0, sortie.find("page 1\n")), k.avantLaPage);
        EXPECT_NE(sortie.find("enddoc\n"), std::string::npos);
    }
}

TEST(Cmd_Imprimer_Click, PrintsNothingWhenGivenUpOrWithNothingPlanned) {
    struct Cas {
        const char* nom;
        const char* code;  // empty: the date is typed instead
        bool abandon;
        const char* message;
        const char* enregistre;  // the settings only, never a page
    } const cas[] = {
        {"the choice given up", "001", true, "", ""},
        {"no tournée on the date", "", false,
         "Impression impossible : aucune tournée définie pour cette date.", "orientation 2\n"},
        {"the tournée not planned", "002", false,
         "Impression impossible : tournée non définie pour cette date.", "orientation 2\n"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Service s;
        s.aide("00001", "NOM");
        s.entree("001", "00001", "0800", "S01");
        if (*k.code) s.c.Txt_CodeTournee.setText(k.code);
        if (!*k.code) s.c.Txt_Date.setText("30/11/2026");
        k.abandon ? s.f.host.queuePrinterCancel() : s.f.host.queuePrinter("Laser", 1);
        s.c.Cmd_Imprimer.fireClick();
        EXPECT_EQ(s.printers->recorder(0).output(), k.enregistre);
        std::string boites;
        for (const auto& b : s.f.host.takeShown())
            boites += b.text + " " + b.title + " " + std::to_string(b.style);
        EXPECT_EQ(boites, *k.message ? std::string(k.message) + " Message KORVELINE 48" : "");
        EXPECT_EQ(s.c.impression().currentPrinter() == nullptr, k.abandon);
        EXPECT_TRUE(s.c.UserControl.enabled() && s.f.host.screenMousePointer() == 0);
    }
}

TEST(Cmd_Imprimer_Click, ATitleTooLongToCentreFailsAndGivesTheScreenBack) {
    Service s;
    s.f.service.put("SSIADCARACTTOURNEE", "003", {std::string(95, 'X'), "0", "6", "00", "14", "00", "M"});
    s.aide("00001", "NOM");
    s.entree("003", "00001", "0800", "S01");
    s.c.Txt_CodeTournee.setText("003");
    s.f.host.queuePrinter("Laser", 1);
    EXPECT_THROW(s.c.Cmd_Imprimer_Click(), base::Error);
    EXPECT_TRUE(s.c.UserControl.enabled() && s.f.host.screenMousePointer() == 0);
    EXPECT_NE(s.printers->recorder(0).output().find("enddoc\n"), std::string::npos);
}

TEST(ImpressionUneTournee, ATournéeOnTheScreenPrintsItsLabelsMovedTimes) {
    Service s;
    s.aide("00001", "DUPONT");
    s.f.service.put("SSIADACCORDS", "00001001000001", {"21000", "22000", ""});
    mvdb::DynamicRecord gestion;
    gestion.set(23, "N1");
    s.f.service.db->store().write("SSIADELEMGEST", "00001000001", gestion.text());
    const std::string cle = std::string("00001210000000011") + "0800";
    s.f.service.put("SSIADPROTOCOLE", cle, {"", "1200", "S01", "30", "1", "21000", ""});
    // Planned the Monday before: the file has nothing on 23/11, the screen shows that version.
    s.f.service.put("SSIADTOURNEE", std::string("00100001") + "21505" + "0800", {"0850", cle});
    s.c.Txt_CodeTournee.setText("001");
    s.c.Cmd_Affichage.fireClick();
    s.c.Etq_Aide(1).setLinkItem("1000");
    const std::string sortie = s.imprimer("001");
    EXPECT_NE(sortie.find("\"  10h00 10h30 \""), std::string::npos) << sortie;
    EXPECT_TRUE(s.f.host.takeShown().empty());
}

TEST(Cmd_Imprimer_Click, RecordsThatMakeNoSensePrintNoLineAndAreNamedOnce) {
    struct Cas {
        const char* name;
        const char* code;  // empty: every tournée of the day
        std::string cle, fin, defaut;
    } const cas[] = {
        {"an end of 8h30, one tournée", "001", std::string("00100002") + kLundi + "0900", "8h30",
         "SSIADTOURNEE « 00100002215120900 », attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre"},
        {"a 40-digit end, every tournée", "", std::string("00200002") + kLundi + "1500", std::string(40, '9'),
         "SSIADTOURNEE « 00200002215121500 », attribut 1 (fin prévue) : « "
         "9999999999999999999999999999999999999999 » est hors de 0 à 2400 centièmes d'heure"},
        {"a key of 16 characters, every tournée", "", std::string("00100002") + kLundi + "090", "0950",
         "SSIADTOURNEE « 0010000221512090 », clé : 16 caractères au lieu de 17"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.name);
        Service s;
        s.aide("00001", "SAIN");
        s.aide("00002", "ABIME");
        s.entree("001", "00001", "0800", "S01");
        s.f.service.put("SSIADPROTOCOLE", "00002210000000011" + base::Right(k.cle, 4),
                        {"", "2200", "S02", "30", "1", "21000", ""});
        s.f.service.put("SSIADTOURNEE", k.cle, {k.fin, "00002210000000011" + base::Right(k.cle, 4)});
        const std::string sortie = s.imprimer(k.code);
        EXPECT_NE(sortie.find("SAIN"), std::string::npos) << "the rest of the day prints";
        EXPECT_EQ(sortie.find("ABIME"), std::string::npos) << sortie;
        const auto boites = s.f.host.takeShown();
        ASSERT_EQ(boites.size(), 1u);
        EXPECT_EQ(boites[0].title, "Message KORVELINE");
        EXPECT_EQ(boites[0].text, "Enregistrements incohérents, laissés de côté :\r\n" + k.defaut);
    }
}

// A sound record whose protocole or accord makes no sense prints no line, as the screen shows no label of
// it, and is named with the fault; the rest of the day prints.
TEST(Cmd_Imprimer_Click, RecordsOfAFaultyProtocoleOrAccordPrintNoLineAndAreNamed) {
    const std::string protocole = "000022100000000110900";
    const std::string garde =
        "\r\nInterventions planifiées non affichées, gardées telles quelles :\r\n"
        "SSIADTOURNEE « 00100002215120900 », qui dépend de ";
    struct Cas {
        const char* name;
        const char* code;  // empty: every tournée of the day
        std::string fichier, cle;
        std::vector<std::string> attributs;
        std::string message;
    } const cas[] = {
        {"a protocole of -30 minutes, one tournée",
         "001",
         "SSIADPROTOCOLE",
         protocole,
         {"", "2200", "S02", "-30", "1", "21000", ""},
         "SSIADPROTOCOLE « 000022100000000110900 », attribut 4 (durée) : « -30 » est hors de 1 à 1440 "
         "minutes" +
             garde + "SSIADPROTOCOLE « 000022100000000110900 »"},
        {"a protocole of -30 minutes, every tournée",
         "",
         "SSIADPROTOCOLE",
         protocole,
         {"", "2200", "S02", "-30", "1", "21000", ""},
         "SSIADPROTOCOLE « 000022100000000110900 », attribut 4 (durée) : « -30 » est hors de 1 à 1440 "
         "minutes" +
             garde + "SSIADPROTOCOLE « 000022100000000110900 »"},
        {"an accord that ends on no day, every tournée",
         "",
         "SSIADACCORDS",
         "00002001000001",
         {"21000", "2200a", ""},
         "SSIADACCORDS « 00002001000001 », attribut 2 (dernier jour) : « 2200a » n'est pas un jour interne "
         "(5 chiffres au plus)" +
             garde + "SSIADACCORDS « 00002001000001 »"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.name);
        Service s;
        s.aide("00001", "SAIN");
        s.aide("00002", "ABIME");
        s.entree("001", "00001", "0800", "S01");
        s.entree("001", "00002", "0900", "S02");
        mvdb::DynamicRecord r;
        for (std::size_t a = 0; a < k.attributs.size(); ++a)
            r.set(static_cast<std::int64_t>(a + 1), k.attributs[a]);
        s.f.service.db->store().write(k.fichier, k.cle, r.text());
        const std::string sortie = s.imprimer(k.code);
        EXPECT_NE(sortie.find("SAIN"), std::string::npos) << "the rest of the day prints";
        EXPECT_EQ(sortie.find("ABIME"), std::string::npos) << sortie;
        const auto boites = s.f.host.takeShown();
        ASSERT_EQ(boites.size(), 1u);
        EXPECT_EQ(boites[0].text, "Enregistrements incohérents, laissés de côté :\r\n" + k.message);
        EXPECT_TRUE(s.c.UserControl.enabled() && s.f.host.screenMousePointer() == 0);
    }
}

}  // namespace
