#include "toolkit/recording_printer.h"

#include "base/error.h"
#include "base/text.h"

namespace toolkit {
namespace {

// A character is 0.6 and a line 1.2 times the font size, at 20 twips a point: whole twips per point of
// size, so that sums of widths stay exact.
constexpr double kCharWidthPerPoint = 12;
constexpr double kLineHeightPerPoint = 24;

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

}  // namespace

RecordingPrinter::RecordingPrinter(std::string deviceName, Settings settings)
    : Printer(std::move(deviceName)), m_settings(settings) {}

void RecordingPrinter::startPage(int page) {
    m_output += "page " + std::to_string(page) + "\n";
}

void RecordingPrinter::drawText(double x, double y, const std::string& text, const Font& font) {
    m_output += "text x=" + base::numberText(x) + " y=" + base::numberText(y) + " font=" + quoted(font.name) +
                " " + base::numberText(font.size) + (font.bold ? " bold " : " ") + quoted(text) + "\n";
}

void RecordingPrinter::drawLine(double x1, double y1, double x2, double y2, Colour colour) {
    m_output += "line " + base::numberText(x1) + " " + base::numberText(y1) + " " + base::numberText(x2) +
                " " + base::numberText(y2) + " colour=" + std::to_string(colour) + "\n";
}

void RecordingPrinter::finishDocument() {
    m_output += "enddoc\n";
}

Printer::Extent RecordingPrinter::measure(const std::string& text, const Font& font) const {
    return {kCharWidthPerPoint * font.size * static_cast<double>(base::Len(text)),
            kLineHeightPerPoint * font.size};
}

void RecordingPrinter::applyOrientation(int orientation) {
    refuseIfAsked("l'orientation");
    m_output += "orientation " + std::to_string(orientation) + "\n";
}

void RecordingPrinter::applyCopies(int copies) {
    refuseIfAsked("le nombre de copies");
    m_output += "copies " + std::to_string(copies) + "\n";
}

void RecordingPrinter::refuseIfAsked(const char* setting) const {
    if (m_settings == Settings::Refused) {
        throw base::Error(base::codes::kBadData, "Le pilote de " + deviceName() + " refuse " + setting);
    }
}

RecordingPrinters::RecordingPrinters(const std::vector<std::string>& deviceNames, Settings settings) {
    for (const std::string& name : deviceNames)
        m_printers.push_back(std::make_unique<RecordingPrinter>(name, settings));
}

std::vector<std::string> RecordingPrinters::deviceNames() const {
    std::vector<std::string> names;
    for (const auto& p : m_printers)
        names.push_back(p->deviceName());
    return names;
}

}  // namespace toolkit
