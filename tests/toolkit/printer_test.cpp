#include "toolkit/printer.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/error.h"
#include "base/text.h"
#include "toolkit/recording_printer.h"

namespace toolkit {
namespace {

struct Row {
    const char* name;
    std::function<void()> step;
    const char* expected;
};

// Runs the rows in order on the same printers; a row's result is its failure's message, else `after`.
template <std::size_t N>
void playAll(const Row (&rows)[N], const std::function<std::string()>& after) {
    for (const Row& row : rows) {
        std::string result;
        try {
            row.step();
            result = after();
        } catch (const base::Error& e) {
            result = e.what();
        }
        EXPECT_EQ(result, row.expected) << row.name;
    }
}

TEST(Printer, PenMovesLikeTheToolkits) {
    RecordingPrinter p("HP A4");
    // Courier New 10 at first: 120 twips a character, 240 a line.
    const Row rows[] = {
        {"line end", [&] { p.print("abc"); }, "0 240 1"},
        {"open line", [&] { p.print("abc", LineEnd::Open); }, "360 240 1"},
        {"open line ended", [&] { p.print("c"); }, "0 480 1"},
        {"empty line", [&] { p.print(""); }, "0 720 1"},
        {"CRLF and LF", [&] { p.print("a\r\nbc\nd"); }, "0 1440 1"},
        {"ends in a line end", [&] { p.print("ab\r\n", LineEnd::Open); }, "0 1680 1"},
        {"last line open", [&] { p.print("a\nbcd", LineEnd::Open); }, "360 1920 1"},
        {"accented characters count once", [&] { p.print("Aidé", LineEnd::Open); }, "840 1920 1"},
        {"pen set by hand", [&] { p.setCurrentX(50); }, "50 1920 1"},
        {"bigger font", [&] { p.setFontSize(14); }, "50 1920 1"},
        {"taller line", [&] { p.print("ab"); }, "0 2256 1"},
        {"line", [&] { p.line(10, 20, 300.5, 400); }, "300,5 400 1"},
        {"new page", [&] { p.newPage(); }, "0 0 2"},
        {"end of document", [&] { p.endDoc(); }, "0 0 1"},
    };
    playAll(rows, [&] {
        return base::numberText(p.currentX()) + " " + base::numberText(p.currentY()) + " " +
               std::to_string(p.page());
    });
}

TEST(Printer, RecordsWhatIsDrawn) {
    RecordingPrinter p("HP A4");
    RecordingPrinter refusing("Epson matricielle", Settings::Refused);
    const Row rows[] = {
        {"orientation 3", [&] { p.setOrientation(3); }, "Orientation 3 impossible pour l'imprimante HP A4"},
        {"no copies", [&] { p.setCopies(0); }, "Nombre de copies 0 impossible pour l'imprimante HP A4"},
        {"refused orientation", [&] { refusing.setOrientation(kLandscape); },
         "Le pilote de Epson matricielle refuse l'orientation"},
        {"refused copies", [&] { refusing.setCopies(2); },
         "Le pilote de Epson matricielle refuse le nombre de copies"},
        {"nothing printed, nothing produced", [&] { p.endDoc(); }, ""},
        {"same orientation", [&] { p.setOrientation(kPortrait); }, ""},
        {"copies", [&] { p.setCopies(3); }, "copies 3\n"},
        {"same copies", [&] { p.setCopies(3); }, ""},
        {"landscape", [&] { p.setOrientation(kLandscape); }, "orientation 2\n"},
        {"an empty line draws nothing", [&] { p.print("\r\n"); }, "page 1\n"},
        {"bold", [&] { p.setFontBold(true); }, ""},
        {"quotes escaped", [&] { p.print(R"(a "b" \)"); },
         R"(text x=0 y=480 font="Courier New" 10 bold "a \"b\" \\")"
         "\n"},
        {"line", [&] { p.line(0, 0, 1, 1, 0xFF); }, "line 0 0 1 1 colour=255\n"},
        {"end", [&] { p.endDoc(); }, "enddoc\n"},
        {"new page first keeps a blank page", [&] { p.newPage(); }, "page 1\npage 2\n"},
    };
    playAll(rows, [&] {
        std::string out = p.output();
        p.clearOutput();
        return out;
    });
    EXPECT_EQ(refusing.orientation(), kPortrait);
    EXPECT_EQ(refusing.copies(), 1);
    EXPECT_EQ(refusing.output(), "");
}

TEST(Printer, MeasuresEveryLineOfAText) {
    RecordingPrinter printer("HP A4");
    printer.setFontSize(9.75);
    EXPECT_EQ(printer.textWidth("Aidé"), 468);
    EXPECT_EQ(printer.textHeight("Aidé"), 234);
    EXPECT_EQ(printer.textWidth("ab\r\nabcd\nabc"), 468);
    EXPECT_EQ(printer.textHeight("ab\r\nabcd\nabc"), 702);
    EXPECT_EQ(printer.textHeight(""), 234);
    EXPECT_EQ(printer.textWidth(""), 0);
}

TEST(Printer, GoldenPageHead) {
    RecordingPrinter printer("HP LaserJet");
    const double u = 567;
    printer.setOrientation(kLandscape);
    printer.print("");
    printer.print(" Date : 23/11/2026 Page : " + std::to_string(printer.page()));
    printer.setFontBold(true);
    printer.setFontSize(14);
    printer.print("TOURNEE : 001");
    printer.setFontBold(false);
    printer.setFontSize(10);
    printer.print("   De     A", LineEnd::Open);
    printer.line(0.2 * u, 2.9 * u, 28 * u, 2.9 * u);
    printer.print(" suite");
    printer.newPage();
    printer.print("fin");
    printer.endDoc();
    EXPECT_EQ(printer.output(),
              "orientation 2\n"
              "page 1\n"
              "text x=0 y=240 font=\"Courier New\" 10 \" Date : 23/11/2026 Page : 1\"\n"
              "text x=0 y=480 font=\"Courier New\" 14 bold \"TOURNEE : 001\"\n"
              "text x=0 y=816 font=\"Courier New\" 10 \"   De     A\"\n"
              "line 113,4 1644,3 15876 1644,3 colour=0\n"
              "text x=15876 y=1644,3 font=\"Courier New\" 10 \" suite\"\n"
              "page 2\n"
              "text x=0 y=0 font=\"Courier New\" 10 \"fin\"\n"
              "enddoc\n");
}

TEST(Printers, ChoosesByNumberFromZero) {
    RecordingPrinters printers({"HP A4", "Epson matricielle"});
    const Row rows[] = {
        {"below the list", [&] { printers.at(-1); }, "L'imprimante -1 n'existe pas (2 imprimantes)"},
        {"past the list", [&] { printers.at(2); }, "L'imprimante 2 n'existe pas (2 imprimantes)"},
        {"second", [&] { printers.at(1).print("x"); },
         "page 1\ntext x=0 y=0 font=\"Courier New\" 10 \"x\"\n"},
    };
    playAll(rows, [&] { return printers.recorder(0).output() + printers.recorder(1).output(); });
    EXPECT_EQ(printers.deviceNames(), (std::vector<std::string>{"HP A4", "Epson matricielle"}));
}

}  // namespace
}  // namespace toolkit
