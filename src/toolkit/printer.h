#pragma once

#include <string>
#include <vector>

#include "toolkit/control.h"

namespace toolkit {

inline constexpr int kPortrait = 1;
inline constexpr int kLandscape = 2;

// Whether a printed text ends its line.
enum class LineEnd { Newline, Open };

// The printer object of the forms toolkit: a pen position in twips from the top-left corner of the
// printable area, a current font, pages numbered from 1. The reports write fixed-pitch text and draw
// lines over it; all the pen arithmetic lives here, so every backend (the Qt printer, the PDF writer,
// the recording printer of the tests) moves the pen the same way and only draws.
//
// A document opens with the first text or line (or NewPage) and closes with EndDoc; a printer that
// printed nothing produces nothing. Settings and the font may change at any time.
class Printer {
public:
    struct Font {
        std::string name;
        double size = 10;  // points
        bool bold = false;
    };
    struct Extent {
        double width = 0, height = 0;  // twips
    };

    explicit Printer(std::string deviceName);
    virtual ~Printer() = default;
    Printer(const Printer&) = delete;
    Printer& operator=(const Printer&) = delete;

    const std::string& deviceName() const { return m_deviceName; }

    // 1 portrait, 2 landscape. Fails with base::Error for another value, or when the driver refuses the
    // setting; the value is then unchanged.
    int orientation() const { return m_orientation; }
    void setOrientation(int orientation);
    // At least 1. Fails like setOrientation.
    int copies() const { return m_copies; }
    void setCopies(int copies);

    // The font of the next texts; "Courier New" 10 until set, the font the reports are laid out in.
    const std::string& fontName() const { return m_font.name; }
    void setFontName(const std::string& name) { m_font.name = name; }
    double fontSize() const { return m_font.size; }
    void setFontSize(double size) { m_font.size = size; }
    bool fontBold() const { return m_font.bold; }
    void setFontBold(bool bold) { m_font.bold = bold; }

    // The page being written, from 1; back to 1 after EndDoc.
    int page() const { return m_page; }
    double currentX() const { return m_x; }
    double currentY() const { return m_y; }
    void setCurrentX(double x) { m_x = x; }
    void setCurrentY(double y) { m_y = y; }

    // Prints at the pen. With a line end the pen goes to the start of the next line (x 0, y one line
    // lower); without, it stays on the line after the text. Each "\r\n" or "\n" inside the text ends a
    // line, so "a\nb" prints two lines and an empty text with a line end prints an empty line.
    void print(const std::string& text, LineEnd end = LineEnd::Newline);
    // Draws a line in a colour number (blue in the high byte); the pen ends at (x2, y2).
    void line(double x1, double y1, double x2, double y2, Colour colour = 0);
    // Ends the page (opening the document first if nothing was printed) and starts the next one, with
    // the pen at the top-left corner.
    void newPage();
    // Ends the document: the printer produces it. Page 1 and the top-left corner for the next one.
    void endDoc();

    // The size a text would take in the current font: the widest of its lines, and a line height per
    // line (one for an empty text).
    double textWidth(const std::string& text) const;
    double textHeight(const std::string& text) const;

protected:
    // Backend hooks. Pages are started before anything is drawn on them; coordinates are in twips.
    virtual void startPage(int page) = 0;
    virtual void drawText(double x, double y, const std::string& text, const Font& font) = 0;
    virtual void drawLine(double x1, double y1, double x2, double y2, Colour colour) = 0;
    virtual void finishDocument() = 0;
    // The extent of one line of text (no line ends in it) in a font. Real printers measure with the real
    // font (Liberation Mono standing for "Courier New"); the layout of the reports relies on a fixed pitch.
    virtual Extent measure(const std::string& text, const Font& font) const = 0;
    // A setting reaches the driver before the value changes; a driver that refuses throws base::Error.
    virtual void applyOrientation(int) {}
    virtual void applyCopies(int) {}

private:
    void openDocument();
    void printLine(const std::string& text, LineEnd end);

    std::string m_deviceName;
    int m_orientation = kPortrait;
    int m_copies = 1;
    Font m_font{"Courier New", 10, false};
    int m_page = 1;
    double m_x = 0, m_y = 0;
    bool m_open = false;
};

// The printers of the machine, numbered from 0 in the order the printer choice shows them. The list
// owns its printers; the screen makes one of them the current printer.
class Printers {
public:
    virtual ~Printers() = default;
    virtual std::vector<std::string> deviceNames() const = 0;
    int count() const { return static_cast<int>(deviceNames().size()); }
    // The printer of that number; fails with base::Error for a number outside the list.
    Printer& at(int index);

protected:
    // Called with a number inside the list only.
    virtual Printer& printer(int index) = 0;
};

}  // namespace toolkit
