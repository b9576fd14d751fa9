#include <gtest/gtest.h>

#include "support/small_service.h"
#include "toolkit/host.h"

namespace {

using testing_support::SmallService;

// A stored tournée on show, one label moved, then the button Cmd_Sortir after "Annuler" was pressed
// once (the button then reads "Sortir" and asks).
struct Depart {
    SmallService s;
    Depart() {
        s.aide("00012", "DUPONT");
        s.protocole("00012", "0800", "0950", "20", "0800");
        s.start();
        s.show();
    }
};

TEST(Cmd_Sortir_Click, AnnulerDropsTheTourneeWithoutAQuestion) {
    Depart d;
    ASSERT_EQ(d.s.c.Cmd_Sortir.caption(), "Annuler");
    d.s.c.Etq_Aide(1).setLinkItem("0900");
    d.s.c.Cmd_Sortir.fireClick();
    EXPECT_TRUE(d.s.f.host.takeShown().empty());
    EXPECT_EQ(d.s.c.Cmd_Sortir.caption(), "Sortir");
    EXPECT_EQ(d.s.c.Txt_CodeTournee.text(), "");
    EXPECT_FALSE(d.s.c.W_Sortir);
    EXPECT_NE(d.s.record("00100012215120800"), "(absent)") << "nothing saved";
}

TEST(Cmd_Sortir_Click, LeavesAtOnceWithNothingOnShow) {
    Depart d;
    d.s.c.Cmd_Sortir.fireClick();  // "Annuler"
    d.s.c.Cmd_Sortir.fireClick();  // "Sortir"
    EXPECT_TRUE(d.s.c.W_Sortir);
    EXPECT_FALSE(d.s.c.TabAnomalies.exists());
}

// With the button reading "Sortir" and a moved label on show (reached here by clearing the flag the
// display sets), the question is asked and each answer draws its own consequence.
TEST(Cmd_Sortir_Click, AsksAboutUnsavedChanges) {
    struct Case {
        const char* name;
        int reponse;
        bool quitte, enregistre;
    } cases[] = {
        {"Yes saves and leaves", toolkit::msgbox::kYes, true, true},
        {"No leaves without saving", toolkit::msgbox::kNo, true, false},
        {"Cancel stays", toolkit::msgbox::kCancel, false, false},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        Depart d;
        d.s.c.JourneeAffichee = false;
        d.s.c.Etq_Aide(1).setLinkItem("0900");
        d.s.f.host.queueAnswer(k.reponse);
        d.s.c.Cmd_Sortir.fireClick();
        std::vector<toolkit::HeadlessHost::Shown> shown = d.s.f.host.takeShown();
        ASSERT_EQ(shown.size(), 1u);
        EXPECT_EQ(shown[0].text, "Voulez-vous enregistrer les modifications apportées à cette tournée ?");
        EXPECT_EQ(shown[0].style, 51);
        EXPECT_EQ(d.s.c.W_Sortir, k.quitte);
        EXPECT_EQ(d.s.record("00100012215120900") != "(absent)", k.enregistre);
    }
}

}  // namespace
