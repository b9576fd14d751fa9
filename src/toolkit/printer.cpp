#include "toolkit/printer.h"

#include <algorithm>

#include "base/error.h"

namespace toolkit {
namespace {

// The lines of a text: "\r\n" and "\n" both end one; a lone "\r" is an ordinary character.
std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        std::size_t cut = end > start && text[end - 1] == '\r' ? end - 1 : end;
        lines.push_back(text.substr(start, cut - start));
    }
    lines.push_back(text.substr(start));
    return lines;
}

}  // namespace

Printer::Printer(std::string deviceName) : m_deviceName(std::move(deviceName)) {}

void Printer::setOrientation(int orientation) {
    if (orientation != kPortrait && orientation != kLandscape) {
        throw base::Error(base::codes::kBadData, "Orientation " + std::to_string(orientation) +
                                                     " impossible pour l'imprimante " + m_deviceName);
    }
    if (orientation == m_orientation) return;
    applyOrientation(orientation);
    m_orientation = orientation;
}

void Printer::setCopies(int copies) {
    if (copies < 1) {
        throw base::Error(base::codes::kBadData, "Nombre de copies " + std::to_string(copies) +
                                                     " impossible pour l'imprimante " + m_deviceName);
    }
    if (copies == m_copies) return;
    applyCopies(copies);
    m_copies = copies;
}

void Printer::print(const std::string& text, LineEnd end) {
    openDocument();
    std::vector<std::string> lines = splitLines(text);
    for (std::size_t i = 0; i + 1 < lines.size(); ++i)
        printLine(lines[i], LineEnd::Newline);
    printLine(lines.back(), end);
}

void Printer::printLine(const std::string& text, LineEnd end) {
    if (!text.empty()) drawText(m_x, m_y, text, m_font);
    if (end == LineEnd::Open) {
        m_x += measure(text, m_font).width;
        return;
    }
    m_x = 0;
    m_y += measure(text, m_font).height;
}

void Printer::line(double x1, double y1, double x2, double y2, Colour colour) {
    openDocument();
    drawLine(x1, y1, x2, y2, colour);
    m_x = x2;
    m_y = y2;
}

void Printer::newPage() {
    openDocument();
    ++m_page;
    m_x = 0;
    m_y = 0;
    startPage(m_page);
}

void Printer::endDoc() {
    if (m_open) finishDocument();
    m_open = false;
    m_page = 1;
    m_x = 0;
    m_y = 0;
}

void Printer::openDocument() {
    if (m_open) return;
    m_open = true;
    startPage(m_page);
}

double Printer::textWidth(const std::string& text) const {
    double width = 0;
    for (const std::string& line : splitLines(text))
        width = std::max(width, measure(line, m_font).width);
    return width;
}

double Printer::textHeight(const std::string& text) const {
    double height = 0;
    for (const std::string& line : splitLines(text))
        height += measure(line, m_font).height;
    return height;
}

Printer& Printers::at(int index) {
    int n = count();
    if (index < 0 || index >= n) {
        throw base::Error(base::codes::kBadData, "L'imprimante " + std::to_string(index) + " n'existe pas (" +
                                                     std::to_string(n) + " imprimantes)");
    }
    return printer(index);
}

}  // namespace toolkit
