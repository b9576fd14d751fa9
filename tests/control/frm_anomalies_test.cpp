#include "saving/frm_anomalies.h"

#include <gtest/gtest.h>

#include "support/control_fixture.h"
#include "toolkit/input.h"
#include "toolkit/recording_printer.h"

namespace {

using Ligne = std::vector<std::string>;  // CodeAide, name, start, end, protocole's start and end

class AnomalyListTest : public ::testing::Test {
protected:
    AnomalyListTest() { ctl.setPrinters(printers); }

    // TabAnomalies as a scan leaves it.
    void anomalies(const std::vector<Ligne>& rows) {
        ctl.TabAnomalies.renew();
        for (std::size_t r = 0; r < rows.size(); ++r) {
            for (std::size_t c = 0; c < rows[r].size(); ++c)
                ctl.TabAnomalies->set(static_cast<std::int64_t>(r + 1), static_cast<std::int64_t>(c + 1),
                                      rows[r][c]);
        }
    }
    // A list loaded and filled by its caller.
    std::unique_ptr<control::Frm_Anomalies> liste(const std::vector<Ligne>& rows) {
        anomalies(rows);
        auto f = std::make_unique<control::Frm_Anomalies>(ctl);
        f->W_TableauAnomalie.renew();
        *f->W_TableauAnomalie = *ctl.TabAnomalies;
        f->W_AnomalieCodeTournee = "001 Tournée du matin";
        f->W_AnomalieDateTournee = "23/11/2026";
        f->Init();
        return f;
    }
    // Shows the list through the control and plays the user's steps on it.
    void afficher(bool affichage, std::function<void(control::Frm_Anomalies&)> steps) {
        fixture.host.queueDialog(
            "Frm_Anomalies", [steps](toolkit::Form& f) { steps(static_cast<control::Frm_Anomalies&>(f)); });
        ctl.AfficherAnomalies(affichage);
    }

    testing_support::ControlFixture fixture;
    control::Ctr_Zandorel& ctl = *fixture.ctl;
    std::shared_ptr<toolkit::RecordingPrinters> printers =
        std::make_shared<toolkit::RecordingPrinters>(std::vector<std::string>{"Laser A4", "Bureau"});
};

const Ligne kPeres = {"00001", "PÉRÈS Zoé", "830", "900", "800", "845"};
const std::string kHeures = "  / Validé 08h30 - 09h00 / Protocole 08h00 - 08h45\r\n";

TEST_F(AnomalyListTest, OneLinePerRowWithTheNameInTwentyFiveCharacters) {
    struct Case {
        const char* name;
        Ligne row;
        std::string line;
    };
    const Case cases[] = {
        {"no name: 25 blanks",
         {"00001", "", "830", "900", "800", "845"},
         " 00001 " + std::string(25, ' ') + kHeures},
        {"20 characters, padded to 25",
         {"00001", "LEFÈVRE Marie-Hélène", "830", "900", "800", "845"},
         " 00001 LEFÈVRE Marie-Hélène     " + kHeures},
        {"23 characters, kept whole",
         {"00001", "DUPRÉ-LÉGER Anne-Sophie", "830", "900", "800", "845"},
         " 00001 DUPRÉ-LÉGER Anne-Sophie  " + kHeures},
        {"25 characters, no padding",
         {"00001", "MÉNARD-ÉTIENNE Marie-Noël", "830", "900", "800", "845"},
         " 00001 MÉNARD-ÉTIENNE Marie-Noël" + kHeures},
        {"30 characters, cut to 25",
         {"00001", "BÉRANGER-CHÂTEAU Marie-Thérèse", "830", "900", "800", "845"},
         " 00001 BÉRANGER-CHÂTEAU Marie-Th" + kHeures},
        {"time 0 and the day's bounds",
         {"00002", "PÉRÈS Zoé", "0", "5", "1200", "2359"},
         " 00002 PÉRÈS Zoé                  / Validé 00h00 - 00h05 / Protocole 12h00 - 23h59\r\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(liste({c.row})->Text1.text(), c.line);
    }
}

TEST_F(AnomalyListTest, InitWritesTheTimesBackOnFourDigits) {
    auto form = liste({{"00002", "PÉRÈS Zoé", "0", "830", "1200", "2359"}});
    const model::WorkTable& t = form->W_TableauAnomalie;
    EXPECT_EQ((Ligne{t(1, 3), t(1, 4), t(1, 5), t(1, 6)}), (Ligne{"0000", "0830", "1200", "2359"}));
}

TEST_F(AnomalyListTest, TheMaskCoversTheScrollBarUpToTwentyRows) {
    const struct {
        const char* name;
        std::size_t rows;
        bool masked;
    } cases[] = {{"1 row", 1, true}, {"20 rows", 20, true}, {"21 rows", 21, false}, {"40 rows", 40, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(liste(std::vector<Ligne>(c.rows, kPeres))->Label1.visible(), c.masked);
    }
}

TEST_F(AnomalyListTest, TheTwoUsesAndTheirAnswers) {
    const struct {
        const char* name;
        bool affichage;
        const char* button;
        bool okVisible;
        double imprimerLeft;
        const char* annulerCaption;
        bool validation;
    } cases[] = {
        {"asking, going on", false, "Cmd_Ok", true, 5760, "Annuler", true},
        {"asking, going back", false, "Cmd_Annuler", true, 5760, "Annuler", false},
        {"informing, closed by the button that reads OK", true, "Cmd_Annuler", false, 6960, "OK", false},
    };
    anomalies({kPeres});
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ctl.ValidationAnomalies = !c.validation;
        afficher(c.affichage, [&](control::Frm_Anomalies& f) {
            EXPECT_EQ(f.Cmd_Ok.visible(), c.okVisible);
            EXPECT_EQ(f.Cmd_Imprimer.left(), c.imprimerLeft);
            EXPECT_EQ(f.Cmd_Imprimer.top(), 4800);
            EXPECT_EQ(f.Cmd_Annuler.caption(), c.annulerCaption);
            toolkit::input::click(*f.find(c.button));
            EXPECT_FALSE(f.W_TableauAnomalie.exists());
        });
        EXPECT_EQ(ctl.ValidationAnomalies, c.validation);
        EXPECT_EQ(ctl.TabAnomalies(1, 3), "830") << "the form pads its own copy";
    }
}

TEST_F(AnomalyListTest, TheCloseBoxTheTextAndTheHelpMenuLeaveTheListOpen) {
    anomalies({kPeres});
    fixture.host.queueMenuChoice("Mnu_Sommaire");
    afficher(false, [](control::Frm_Anomalies& f) {
        EXPECT_FALSE(f.unload(0));
        toolkit::input::focus(f.Text1);
        EXPECT_EQ(f.activeControl(), &f.Cmd_Imprimer);
        f.MouseDown(1, 0, 100, 100);  // the left button opens nothing: no menu choice is taken
        f.MouseDown(2, 0, 100, 100);
        EXPECT_TRUE(f.isLoaded());
        toolkit::input::click(f.Cmd_Ok);
    });
    EXPECT_EQ(fixture.host.menuChoicesQueued(), 0u);
}

// One copy on Courier New 10: a line is 240 twips high, and empty lines draw nothing.
const std::string kCopie =
    "text x=0 y=240 font=\"Courier New\" 10 \" Tournée : 001 Tournée du matin\"\n"
    "text x=0 y=720 font=\"Courier New\" 10 \" Date : 23/11/2026\"\n"
    "text x=0 y=1200 font=\"Courier New\" 10 "
    "\" 00001 PÉRÈS Zoé                  / Validé 08h30 - 09h00 / Protocole 08h00 - 08h45\"\n";

TEST_F(AnomalyListTest, PrintsTheCopiesAsPagesOfOneDocument) {
    auto form = liste({kPeres});
    fixture.host.queuePrinter("Bureau", 2);
    toolkit::input::click(form->Cmd_Imprimer);
    EXPECT_EQ(printers->recorder(1).output(), "page 1\n" + kCopie + "page 2\n" + kCopie + "enddoc\n");
    EXPECT_EQ(printers->recorder(0).output(), "");
    EXPECT_EQ(ctl.impression().currentPrinter(), &printers->recorder(1));
}

TEST_F(AnomalyListTest, AChoiceGivenUpPrintsNothingAndKeepsTheCopies) {
    auto form = liste({kPeres});
    fixture.host.queuePrinter("Laser A4", 3);
    EXPECT_EQ(ctl.ObjetConversion.ChoisirImprimante("A4"), "0");
    fixture.host.queuePrinterCancel();
    toolkit::input::click(form->Cmd_Imprimer);
    EXPECT_EQ(printers->recorder(0).output() + printers->recorder(1).output(), "");
    EXPECT_EQ(ctl.ObjetConversion.NombreCopies(), 3);
    EXPECT_THROW(toolkit::input::click(form->Cmd_Imprimer), toolkit::Unanswered);
}

}  // namespace
