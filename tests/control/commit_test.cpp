#include <gtest/gtest.h>

#include "mvdb/dynamic_record.h"
#include "support/small_service.h"
#include "toolkit/host.h"

namespace {

using testing_support::SmallService;

// Moves a detail label as a drop would leave it: its planned start (LinkItem) and its Top.
void deplacer(SmallService& s, int index, const std::string& debut) {
    s.c.Etq_Aide(index).setLinkItem(debut);
}

std::string fin(const std::string& text) {
    return mvdb::DynamicRecord(text)(1);
}

TEST(Cmd_Ok_Click, WritesTheMovedTimeAndShowsItAgain) {
    SmallService s;
    s.aide("00012", "DUPONT");
    s.protocole("00012", "0800", "0950", "20", "0800");
    s.start();
    s.show();
    ASSERT_EQ(s.c.Etq_Aide(1).linkItem(), "0800");
    deplacer(s, 1, "850");
    s.c.Cmd_Ok.fireClick();

    // The key ends in 0850 from a LinkItem of 850; the end is 850 + 33 (20 minutes), cut to four digits.
    EXPECT_EQ(s.record("00100012215120800"), "(absent)");
    EXPECT_EQ(fin(s.record("00100012215120850")), "0883");
    EXPECT_EQ(s.c.Txt_CodeTournee.text(), "");
    EXPECT_EQ(s.c.Etq_Aide.Count(), 1);

    // Shown again: the label's index is the table's to tell (the save leaves IndiceEtqMax where it was).
    s.show();
    ASSERT_EQ(s.c.Etq_Aide.Count(), 2);
    EXPECT_EQ(s.c.Etq_Aide(std::stoi(s.c.TabTempoDetail(1, 1))).linkItem(), "0850");
}

TEST(Cmd_Ok_Click, AnAnomalyAsksAndCancelWritesNothing) {
    struct Case {
        const char* name;
        std::string finFenetre, duree, debut;
        bool anomalie;
    } cases[] = {
        {"one hundredth past the window's end", "0950", "90", "801", true},
        {"exactly at both ends of the window", "0950", "90", "0800", false},
        {"883,67 compares as 883, the window's end", "0883", "19", "852", false},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        SmallService s;
        s.aide("00012", "DUPONT");
        s.protocole("00012", "0800", k.finFenetre, k.duree, "0800");
        s.start();
        s.show();
        deplacer(s, 1, k.debut);
        bool montree = false;
        if (k.anomalie) {
            s.f.host.queueDialog("Frm_Anomalies", [&](toolkit::Form& form) {
                montree = true;
                form.find("Cmd_Annuler")->fireClick();
            });
        }
        s.c.Cmd_Ok.fireClick();
        EXPECT_EQ(montree, k.anomalie);
        EXPECT_EQ(s.c.ValidationAnomalies, !k.anomalie);
        // Cancelled: nothing deleted, nothing written, the labels stay.
        EXPECT_EQ(s.record("00100012215120800") != "(absent)", k.anomalie || k.debut == "0800");
        EXPECT_EQ(s.c.Etq_Aide.Count() > 1, k.anomalie);
    }
}

TEST(Cmd_Ok_Click, AFailureInTheWritePassLeavesTheStoredTournee) {
    SmallService s;
    s.aide("00012", "DUPONT");
    s.aide("00013", "MARTIN");
    s.protocole("00012", "0800", "0950", "20", "0800");
    s.protocole("00013", "0900", "1000", "20", "0900");
    s.start();
    s.show();
    deplacer(s, 1, "0810");
    deplacer(s, 2, "0910");
    // Two deletes pass, the first write fails.
    s.f.service.faults->failChange(3);
    s.c.Cmd_Ok.fireClick();

    EXPECT_NE(s.record("00100012215120800"), "(absent)");
    EXPECT_NE(s.record("00100013215120900"), "(absent)");
    EXPECT_EQ(s.record("00100012215120810"), "(absent)");
    EXPECT_FALSE(s.c.ValidationAnomalies);
    EXPECT_EQ(s.c.Etq_Aide(1).linkItem(), "0810") << "the user's work is still on screen";
    std::vector<toolkit::HeadlessHost::Shown> shown = s.f.host.takeShown();
    ASSERT_FALSE(shown.empty());
    EXPECT_NE(shown.back().text.find("n'a pas pu être enregistrée"), std::string::npos);
    EXPECT_NE(shown.back().text.find("panne simulée"), std::string::npos);
}

TEST(Cmd_Ok_Click, APastDayOrNothingToSaveOnlyClears) {
    SmallService s;
    s.aide("00012", "DUPONT");
    s.protocole("00012", "0800", "0950", "20", "0800", "21505");
    s.start();
    s.show("16/11/2026");
    ASSERT_TRUE(s.c.TourneeAnterieure);
    deplacer(s, 1, "0900");
    s.c.Cmd_Ok.fireClick();
    EXPECT_NE(s.record("00100012215050800"), "(absent)");
    EXPECT_EQ(s.record("00100012215050900"), "(absent)");
    EXPECT_EQ(s.c.Etq_Aide.Count(), 1);
    EXPECT_EQ(s.c.Txt_CodeTournee.text(), "");
}

}  // namespace
