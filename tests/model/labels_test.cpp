#include "model/labels.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/error.h"

namespace model {
namespace {

constexpr const char* kCle = "000122150000001101850";
const ScaleRef kMatin{6.00, 175};  // 6h00 to 14h00

TEST(LabelModel, UnreadableTagsAndColoursAreRefused) {
    EXPECT_THROW(dureeMnFromTag("00012|"), base::Error);
    EXPECT_THROW(colourNumber("bleu"), base::Error);
    EXPECT_EQ(dureeMnFromTag(makeTag(kCle, "45")), 45);
    EXPECT_EQ(codeAideOf(makeTag(kCle, "45")), "00012");
}

TEST(LabelModel, TriCouleurEtqPlaceKeepsTopEtqRising) {
    struct Row {
        const char* name;
        std::vector<int> tops;
        int newTop;
        std::int64_t expected;
    } const rows[] = {
        {"empty table", {}, 1500, 1},
        {"above the last row", {1000, 2000}, 2500, 3},
        {"equal to the last row goes before it", {1000, 2000}, 2000, 2},
        {"a tie: the new row goes first", {1000, 1000, 2000}, 1000, 1},
        {"compared as numbers, not text", {900, 1000}, 950, 2},
    };
    for (const Row& row : rows) {
        mvdb::DynamicRecord table;
        for (std::size_t i = 0; i < row.tops.size(); ++i)
            insertLabelRow(table, static_cast<std::int64_t>(i) + 1,
                           {1, 800, 900, 30, row.tops[i], kCle, "I"});
        EXPECT_EQ(rowForTopEtq(table, row.newTop), row.expected) << row.name;
    }
}

TEST(LabelModel, Texts) {
    const LabelFacts facts{"00012", "DUPONT", "Marie", "30", "08h30", "10h00", "- 2/2"};
    struct Row {
        const char* name;
        std::string actual;
        const char* expected;
    } const rows[] = {
        {"list, one person", suffixeAide("I"), ""},
        {"list, both places free", suffixeAide("A|2"), "- 0/2"},
        {"list, one place free", suffixeAide("M|1"), "- 1/2"},
        {"tournée of two", suffixeDetail("I|1", 2), "- 2/2"},
        {"tournée of one", suffixeDetail("I|2", 1), "- 1/2"},
        {"hour digits kept while the minutes round over", texteHeure(899), "08h00"},
        {"quarter to", texteHeure(1375), "13h45"},
        {"detail end cut to four characters", finDetail(850, 20), "883,"},
        {"caption of the list", captionAide(facts), "DUPONT\r\nMarie\r\n30mn\r\n2/2"},
        {"tooltip of the list", toolTipAide(facts), "00012 - DUPONT Marie - 08h30 à 10h00 - 30mn - 2/2"},
        {"caption of the detail", captionDetail(facts), "DUPONT Marie 30mn 2/2"},
        {"tooltip of the detail", toolTipDetail(facts), "00012 - DUPONT Marie - 08h30 à 10h00 = 30mn - 2/2"},
        {"kind A", couleurParType("A", "1", "2", "3"), "2"},
        {"unknown kind", couleurParType("X", "1", "2", "3"), "3"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.actual, row.expected) << row.name;
}

TEST(LabelModel, DetailFontShrinksForShortIntervals) {
    struct Row {
        const char* name;
        double hours, minutes;
        bool small;
    } const rows[] = {
        {"8 hours, 19 minutes", 8, 19, true},      {"8 hours, 20 minutes", 8, 20, false},
        {"6 hours, 14 minutes", 6, 14, true},      {"6 hours, 15 minutes", 6, 15, false},
        {"5.75 hours, 5 minutes", 5.75, 5, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(fontDetail(row.hours, row.minutes).size, row.small ? 6 : 8) << row.name;
        EXPECT_EQ(fontDetail(row.hours, row.minutes).bold, row.small) << row.name;
    }
}

TEST(LabelModel, GeometryAndClippingOfPaneAide) {
    struct Row {
        const char* name;
        double debut, fin, left, width;
    } const rows[] = {
        {"inside the scale", 850, 1000, 7040, 1050},
        {"from before to after the scale", 500, 1500, 5290, 5610},
        {"ending past the scale", 1200, 1450, 9490, 1410},
        {"starting before the scale", 550, 700, 5290, 700},
        {"wholly after the scale", 1450, 1550, 11240, -340},
    };
    for (const Row& row : rows) {
        const Geometry g = clipAide(geometryAide(row.debut, row.fin, 2, 800, kMatin));
        EXPECT_EQ(g.left, row.left) << row.name;
        EXPECT_EQ(g.width, row.width) << row.name;
        EXPECT_EQ(g.top, 1920) << row.name;
    }
    const Geometry d = geometryDetail(850, 30, kMatin);
    EXPECT_EQ(d.top, 2510);
    EXPECT_EQ(d.height, 350);
}

TEST(LabelModel, PaneIsToldFromThePosition) {
    EXPECT_EQ(paneAt(5290, 1081), Pane::Aide);
    EXPECT_EQ(paneAt(10999, 6359), Pane::Aide);
    EXPECT_EQ(paneAt(5289, 2000), Pane::Detail);
    EXPECT_EQ(paneAt(11000, 2000), Pane::Detail);
    EXPECT_EQ(paneAt(6000, 1080), Pane::Detail);
}

}  // namespace
}  // namespace model
