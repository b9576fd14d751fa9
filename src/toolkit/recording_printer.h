#pragma once

#include <memory>
#include <string>
#include <vector>

#include "toolkit/printer.h"

namespace toolkit {

// Whether a printer's driver takes the Orientation and Copies settings. Some drivers refuse them.
enum class Settings { Accepted, Refused };

// A printer that writes what it is asked to draw as lines of text, for golden files of the reports.
// One line per event, in order, each ending in "\n"; numbers are written as the system writes them
// (decimal comma, no trailing zeros), texts between double quotes with `"` and `\` escaped by a `\`:
//
//   orientation 2                                      a change of Orientation
//   copies 3                                           a change of Copies
//   page 1                                             a page starts (page 1 opens the document)
//   text x=120 y=240 font="Courier New" 10 bold "Hi"   a text at the pen; "bold" only for a bold font
//   line 113,4 1644,3 15876 1644,3 colour=0            a line from (x1, y1) to (x2, y2)
//   enddoc                                             the document is finished
//
// Empty texts draw nothing and leave no line; their effect shows in the next position. Metrics are
// those of a fixed-pitch font whatever its name: a character is 0.6 x the size wide and a line 1.2 x
// the size high (Courier New 10: 120 twips a character, 240 a line). Real printers measure the real font.
class RecordingPrinter : public Printer {
public:
    explicit RecordingPrinter(std::string deviceName, Settings settings = Settings::Accepted);

    const std::string& output() const { return m_output; }
    void clearOutput() { m_output.clear(); }

protected:
    void startPage(int page) override;
    void drawText(double x, double y, const std::string& text, const Font& font) override;
    void drawLine(double x1, double y1, double x2, double y2, Colour colour) override;
    void finishDocument() override;
    Extent measure(const std::string& text, const Font& font) const override;
    void applyOrientation(int orientation) override;
    void applyCopies(int copies) override;

private:
    void refuseIfAsked(const char* setting) const;

    Settings m_settings;
    std::string m_output;
};

// A fixed list of recording printers, by device name, for tests that choose a printer by number.
class RecordingPrinters : public Printers {
public:
    explicit RecordingPrinters(const std::vector<std::string>& deviceNames,
                               Settings settings = Settings::Accepted);

    std::vector<std::string> deviceNames() const override;
    RecordingPrinter& recorder(int index) { return *m_printers.at(static_cast<std::size_t>(index)); }

protected:
    Printer& printer(int index) override { return recorder(index); }

private:
    std::vector<std::unique_ptr<RecordingPrinter>> m_printers;
};

}  // namespace toolkit
