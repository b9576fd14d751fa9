#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/text.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"
#include "toolkit/input.h"

namespace {

struct Placee {
    double top;
    int dureeMn;
    const char* linkItem;
};

// Top and LinkItem of each label after a click on Enchaînement, on the morning scale (175 twips a
// quarter), the table's column 5 beside the label's Top; then the boxes shown.
std::vector<std::string> enchainer(const std::vector<Placee>& placees, bool anterieure) {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c = f.start();
    c.Tables.renew(model::Pane::Detail);
    c.TourneeAnterieure = anterieure;
    int i = 0;
    for (const Placee& p : placees) {
        ++i;
        toolkit::Label& e = c.Etq_Aide.Load(i);
        e.setTop(p.top);
        e.setLinkItem(p.linkItem);
        c.CouleurAjoutEtqLst(i, i, 600, 1400, p.dureeMn, static_cast<int>(p.top), "000122100000000110600",
                             "A");
    }
    toolkit::input::click(c.Cmd_Enchainement);
    std::vector<std::string> out;
    for (int k = 1; k <= i; ++k) {
        out.push_back(c.TabTempoDetail(k, 5) + "=" + base::numberText(c.Etq_Aide(k).top()) + " " +
                      c.Etq_Aide(k).linkItem());
    }
    for (const auto& boite : f.host.takeShown())
        out.push_back(boite.title + " " + std::to_string(boite.style) + " " + boite.text);
    return out;
}

TEST(Cmd_Enchainement_Click, BringsEachLabelUpToTheEndOfTheOneBeforeIt) {
    // clang-format off
    struct Cas {
        const char* nom; bool anterieure; std::vector<Placee> placees; std::vector<std::string> attendu;
    } const cas[] = {
        {"a past date is refused", true, {{760, 30, "0600"}, {2000, 30, "0800"}},
         {"760=760 0600", "2000=2000 0800",
          "Message KORVELINE 48 Enchaînement impossible : date de la tournée antérieure à la date du "
          "jour."}},
        {"no label", false, {}, {}},
        {"one label stays", false, {{1500, 30, "0700"}}, {"1500=1500 0700"}},
        {"overlapping labels stay", false, {{760, 30, "0600"}, {1000, 30, "0620"}},
         {"760=760 0600", "1000=1000 0620"}},
        {"touching labels stay", false, {{760, 30, "0600"}, {1110, 30, "0650"}},
         {"760=760 0600", "1110=1110 0650"}},
        {"850 and 30 minutes give 900", false, {{2160, 30, "0850"}, {3000, 20, "1010"}},
         {"2160=2160 0850", "2510=2510 900"}},
        {"one click closes every gap, the end unrounded, the half added inside Int", false,
         {{760, 20, "0600"}, {2000, 25, "0745"}, {4000, 10, "1030"}},
         {"760=760 0600", "993,333333333333=993,333333333333 633", "1285=1285 675"}},
    };
    // clang-format on
    for (const Cas& k : cas)
        EXPECT_EQ(enchainer(k.placees, k.anterieure), k.attendu) << k.nom;
}

TEST(Cmd_Enchainement_Click, BeforeAnyDisplayDoesNothing) {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c = f.start();
    EXPECT_NO_THROW(toolkit::input::click(c.Cmd_Enchainement));
    EXPECT_TRUE(f.host.takeShown().empty());
}

}  // namespace
