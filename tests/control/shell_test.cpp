#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/error.h"
#include "base/text.h"
#include "data/layouts.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"

namespace {

using testing_support::ControlFixture;
constexpr toolkit::Colour kGris = 0xC8D0D4;

// A tournée of Monday morning; `suppression` is its deletion mark.
void ecrireTournee(ControlFixture& f, const std::string& code, const std::string& libelle,
                   const std::string& suppression = "") {
    f.service.put("SSIADCARACTTOURNEE", code,
                  {libelle, "0", "7", "30", "13", "45", "I", "", suppression, "2"});
}

// The message of the failure that Init lets through to the host.
std::string echecInit(ControlFixture& f) {
    try {
        f.ctl->Init();
    } catch (const base::Error& e) {
        return e.what();
    }
    return "aucun échec";
}

TEST(Init, FailsWithAClearMessageWhenTheHostSkippedAStepAndStaysDisabled) {
    ControlFixture sansDroits, sansBase;
    sansDroits.ctl->setTheDatabase(sansDroits.service.db);
    sansBase.ctl->setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
    EXPECT_EQ(echecInit(sansDroits),
              "Les droits de l'utilisateur n'ont pas été donnés au contrôle Zandorel avant Init");
    EXPECT_EQ(echecInit(sansBase), "La base de données n'a pas été donnée au contrôle Zandorel");
    EXPECT_FALSE(sansBase.ctl->UserControl.enabled())
        << "the host shows the error; the control stays disabled";
}

TEST(Init, OnlyLevelTwoMayValidate) {
    struct Case {
        const char* name;
        int niveau;
        bool validation;
    } cases[] = {{"level 0", 0, false},
                 {"level 1", 1, false},
                 {"level 2", 2, true},
                 {"level 3: the test is equality", 3, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ControlFixture f;
        control::Ctr_Zandorel& ctl = f.start(c.niveau);
        EXPECT_EQ(ctl.Cmd_Ok.visible(), c.validation);
        EXPECT_TRUE(ctl.Cmd_Imprimer.visible() && ctl.Cmd_Enchainement.visible() &&
                    ctl.Cmd_Affichage.visible());
    }
}

TEST(Init, GreysTheBackgroundButNotTheBoxesAndSwatches) {
    ControlFixture f;
    control::Ctr_Zandorel& ctl = *f.ctl;
    toolkit::TextBox ajoutee("txt_EnMinuscules", &ctl.UserControl);
    struct Case {
        const char* name;
        toolkit::Control& control;
        bool gris;
        toolkit::Colour avant = 0;
    } cases[] = {
        {"a label", ctl.Etq_Date, true},
        {"a frame", ctl.Frame3, true},
        {"a button", ctl.Cmd_Ok, true},
        {"an option", ctl.Opt_Matin, true},
        {"a text box", ctl.Txt_Date, false},
        {"a combo box", ctl.Cbo_Tournee, false},
        {"a colour swatch", ctl.Lst_Infirmier, false},
        {"a name in lower case", ajoutee, false},
        {"a line, passed over", ctl.Line_HeureDetail.model(), false},
    };
    for (Case& c : cases)
        c.avant = c.control.backColor();
    f.start(2);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.control.backColor(), c.gris ? kGris : c.avant);
    }
    EXPECT_EQ(ctl.UserControl.backColor(), kGris);
}

TEST(Init, PurgesOldTourneesThenLeavesTheMorningScreenReadyForAChoice) {
    ControlFixture f;
    control::Ctr_Zandorel& ctl = *f.ctl;
    ASSERT_EQ(ctl.Etq_HeureAide.Count(), 1) << "a new control runs no handler";
    auto cle = [](int jour, int mois) {
        return data::tournee::cle(
            "001", "00012", base::zeroPad(base::Date::fromDmy(jour, mois, 2026)->internalDay(), 5), "800");
    };
    f.service.put("SSIADTOURNEE", cle(15, 3), {"0900", "P"});
    f.service.put("SSIADTOURNEE", cle(1, 11), {"0900", "P"});
    f.start(2);
    EXPECT_EQ(f.service.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE"), std::vector<std::string>{cle(1, 11)})
        << "March is purged before the first screen";
    EXPECT_EQ(ctl.Txt_Date.text(), "22/11/2026");
    EXPECT_FALSE(ctl.Cbo_Date.visible());
    EXPECT_TRUE(ctl.Opt_Matin.value());
    EXPECT_EQ(ctl.HeureDebutEchelle, 6.0);
    EXPECT_EQ(ctl.HeureFinEchelle, 14.0);
    EXPECT_GT(ctl.Etq_HeureAide.Count(), 1);
    EXPECT_GT(ctl.Etq_HeureDetail.Count(), 1);
    EXPECT_EQ(ctl.Etq_Aide.Count(), 1);
    EXPECT_FALSE(ctl.VScroll.visible());
    EXPECT_TRUE(ctl.Txt_CodeTournee.hasFocus());
    EXPECT_EQ(ctl.UserControl.nextInTabOrder(nullptr, true), &ctl.Txt_CodeTournee);
    EXPECT_EQ(f.host.screenMousePointer(), toolkit::kPointerDefault);
    EXPECT_TRUE(ctl.UserControl.enabled());
    EXPECT_GE(f.host.doEventsCount(), 1);
    EXPECT_EQ(base::toNumber(ctl.CouleurInfirmier), ctl.Lst_Infirmier.backColor());
}

TEST(Init, EachLongCommandWaitsUnderTheHourglassWithTheControlDisabled) {
    ControlFixture f;
    std::vector<std::pair<int, bool>> attentes;
    f.host.onDoEvents = [&] {
        attentes.emplace_back(f.host.screenMousePointer(), f.ctl->UserControl.enabled());
    };
    f.start(2);
    ASSERT_GE(attentes.size(), 2u) << "the purge and the list of tournées each yield once";
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(attentes[i], std::make_pair(toolkit::kPointerHourglass, false)) << "wait " << i;
    }
    attentes.clear();
    f.ctl->RequeteTournee();
    EXPECT_EQ(attentes, (std::vector<std::pair<int, bool>>{{toolkit::kPointerHourglass, false}}));
    EXPECT_EQ(f.host.screenMousePointer(), toolkit::kPointerDefault);
    EXPECT_TRUE(f.ctl->UserControl.enabled());
}

TEST(RequeteTournee, ListsTheTourneesInForceThatBeginWithTheText) {
    ControlFixture f;
    ecrireTournee(f, "001", "SOIR CENTRE");
    ecrireTournee(f, "002", "MATIN NORD");
    ecrireTournee(f, "003", "MATIN SUD", "1");
    ecrireTournee(f, "004", "APRES-MIDI", "X");
    ecrireTournee(f, "005", "MATIN EST");
    control::Ctr_Zandorel& ctl = f.start(2);
    using Liste = std::vector<std::string>;
    EXPECT_EQ(ctl.Cbo_Tournee.items(), (Liste{"APRES-MIDI", "MATIN EST", "MATIN NORD", "SOIR CENTRE"}))
        << "by label, only the mark \"1\" left out";
    struct Case {
        const char* name;
        std::string saisie;
        Liste libelles;
        std::string code;
    } cases[] = {
        {"two labels begin with the text, typed in lower case", "matin", {"MATIN EST", "MATIN NORD"}, ""},
        {"one match fills the code", "soir", {"SOIR CENTRE"}, "001"},
        {"no match clears the code again", "zzz", {}, ""},
        {"a deleted tournée only", "MATIN S", {}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ctl.Cbo_Tournee.setText(c.saisie);
        ctl.RequeteTournee();
        EXPECT_EQ(ctl.Cbo_Tournee.items(), c.libelles);
        EXPECT_EQ(ctl.Txt_CodeTournee.text(), c.code);
        EXPECT_EQ(ctl.Cbo_Tournee.text(), c.code.empty() ? "" : c.libelles[0]);
        if (!c.code.empty()) {
            EXPECT_EQ(ctl.selection().RequeteTournees(1, 3), "2");
        }
    }
}

TEST(UserControl_Terminate, ReleasesTablesRightsAndTheDatabase) {
    ControlFixture f;
    control::Ctr_Zandorel& ctl = f.start(2);
    ctl.Tables.renew(model::Pane::Aide);
    std::weak_ptr<mvdb::Database> base = f.service.db;
    f.service.db.reset();
    ctl.UserControl_Terminate();
    EXPECT_FALSE(ctl.TabTempoAide.exists());
    EXPECT_EQ(ctl.Droits, nullptr);
    EXPECT_EQ(ctl.DroitsElement, nullptr);
    EXPECT_TRUE(base.expired());
}

TEST(NomUtilisateurSysteme, FitsTheSystemBufferOfTwentyCharacters) {
    ControlFixture f;
    std::string nom = f.ctl->NomUtilisateurSysteme();
    EXPECT_FALSE(nom.empty());
    EXPECT_LE(base::Len(nom), 19u);
}

}  // namespace
