#include "model/scales.h"

#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "toolkit/headless_host.h"

namespace model {
namespace {

// Both scales with the invisible models of their arrays, rebuilt for the given hours.
struct Scales {
    toolkit::HeadlessHost host;
    toolkit::Form form{"Ctr_Zandorel", host};
    toolkit::Frame label1{"Label1", &form};
    toolkit::ControlArray<toolkit::Line> lineAide{"Line_HeureAide", &label1};
    toolkit::ControlArray<toolkit::Label> etqAide{"Etq_HeureAide", &label1};
    toolkit::ControlArray<toolkit::Label> etqDetail{"Etq_HeureDetail", &form};
    toolkit::ControlArray<toolkit::Line> lineDetail{"Line_HeureDetail", &form};
    int pas = 0;

    Scales(double debut, double fin) {
        lineAide.model().setEnds(1560, 600, 1560, 680);
        lineDetail.model().setEnds(720, 2160, 600, 2160);
        pas = loadHorizontalScale(etqAide, lineAide, debut, fin);
        EXPECT_EQ(loadDetailScale(etqDetail, lineDetail, debut, fin), pas);
    }
};

std::string errorOf(double debut, double fin) {
    try {
        layoutScale(debut, fin);
    } catch (const base::Error& e) {
        return e.what();
    }
    return "";
}

TEST(TimeScales, HoursThatGiveNoQuarterAreRefusedByName) {
    EXPECT_EQ(errorOf(8.30, 8.30), "Heures de tournée incorrectes : début 8,3 et fin 8,3");
    EXPECT_EQ(errorOf(14.00, 6.00), "Heures de tournée incorrectes : début 14 et fin 6");
    EXPECT_EQ(errorOf(0, 1e7), "Heures de tournée incorrectes : début 0 et fin 10000000");
    Scales s(6.00, 14.00);
    EXPECT_THROW(loadHorizontalScale(s.etqAide, s.lineAide, 9.00, 9.00), base::Error);
    EXPECT_EQ(s.lineAide.Count(), 34) << "the scale shown stays";
}

TEST(TimeScales, StepTicksAndCaptions) {
    struct Row {
        const char* name;
        double debut, fin;
        int pas, ticks, captions;
        const char* firstCaption;
        int firstK;
        double lastTickY1;
    } const rows[] = {
        {"morning", 6.00, 14.00, 175, 33, 9, "6", 1, 490},
        {"evening, one tick past the end at 22.15", 14.00, 22.00, 175, 34, 9, "14", 1, 570},
        {"tournée on quarters", 7.30, 13.45, 224, 26, 6, "8", 3, 570},
        {"start at half past", 6.30, 14.00, 187, 31, 8, "7", 3, 490},
        {"start off the quarters, no caption", 6.10, 6.45, 2800, 4, 0, "", 0, 600},
    };
    for (const Row& row : rows) {
        Scales s(row.debut, row.fin);
        EXPECT_EQ(s.pas, row.pas) << row.name;
        EXPECT_EQ(s.lineAide.Count() - 1, row.ticks) << row.name;
        EXPECT_EQ(s.lineDetail.Count() - 1, row.ticks) << row.name;
        EXPECT_EQ(s.etqAide.Count() - 1, row.captions) << row.name;
        EXPECT_EQ(s.lineAide(row.ticks).y1(), row.lastTickY1) << row.name;
        if (row.captions == 0) continue;
        EXPECT_EQ(s.etqAide(1).caption(), row.firstCaption) << row.name;
        EXPECT_EQ(s.etqAide(1).left(), row.pas * (row.firstK - 1)) << row.name;
        EXPECT_EQ(s.etqDetail(1).caption(), row.firstCaption + std::string("h00")) << row.name;
    }
}

TEST(TimeScales, PositionsAndTickLengthsOfBothAxes) {
    Scales s(6.30, 14.00);
    // 6h30, 6h45, 7h00: the tick lengths follow the clock, not the position.
    const double y1[] = {540, 570, 490}, x2[] = {630, 660, 600};
    for (int k = 1; k <= 3; ++k) {
        const toolkit::Line &h = s.lineAide(k), &v = s.lineDetail(k);
        EXPECT_TRUE(h.visible() && v.visible()) << k;
        EXPECT_EQ(h.x1(), 187 * (k - 1)) << k;
        EXPECT_EQ(h.x2(), h.x1()) << k;
        EXPECT_EQ(h.y1(), y1[k - 1]) << k;
        EXPECT_EQ(h.y2(), 600) << k;
        EXPECT_EQ(v.x1(), 720) << k;
        EXPECT_EQ(v.x2(), x2[k - 1]) << k;
        EXPECT_EQ(v.y1(), 740 + 187 * (k - 1)) << k;
        EXPECT_EQ(v.y2(), v.y1()) << k;
    }
    EXPECT_EQ(s.etqAide(1).top(), 240);
    EXPECT_EQ(s.etqDetail(1).left(), 120);
    EXPECT_EQ(s.etqDetail(1).top(), 600 + 2 * 187);
}

TEST(TimeScales, StartOffTheQuartersRunsMinutesPast60) {
    // 6.1, 6.25, 6.4, 6.55, 6.7, 6.85: no quarter, so the model's length, until the sum comes back to 7.
    Scales s(6.10, 14.00);
    for (int k = 1; k <= 6; ++k)
        EXPECT_EQ(s.lineAide(k).y1(), 600) << k;
    EXPECT_EQ(s.etqAide(1).caption(), "7");
    EXPECT_EQ(s.etqAide(1).left(), s.pas * 6);
}

}  // namespace
}  // namespace model
