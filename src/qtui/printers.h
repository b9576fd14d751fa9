#pragma once

#include <QPageLayout>
#include <QPainter>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/printer.h"

class QFile;
class QPagedPaintDevice;
class QPrinter;
class QPdfWriter;

namespace qtui {

// The name under which the printer choice offers a PDF file.
inline constexpr const char* kFichierPdf = "Fichier PDF…";

// A printer of the toolkit that paints on a paged Qt device: A4 with margins of half a centimetre,
// the painter set so that one unit is one twip from the top-left corner of the printable area, and
// "Courier New" drawn and measured as Liberation Mono, its metric twin. Lines are 1.1 em apart (220
// twips at size 10), so that a page of 40 entry lines under its heads fits an A4 landscape sheet.
// The device is made when the document opens, with the Orientation and Copies of that moment; an
// orientation changed later applies from the next page. Needs a QGuiApplication.
class PaintedPrinter : public toolkit::Printer {
public:
    explicit PaintedPrinter(std::string deviceName);
    ~PaintedPrinter() override;

protected:
    // The device of a new document, laid out as `layout`; nullptr when it cannot be made.
    virtual QPagedPaintDevice* openDevice(const QPageLayout& layout) = 0;
    // Releases the device once the painter has ended.
    virtual void closeDevice() = 0;
    // What a failure to open names: the device, or the file.
    virtual std::string destination() const { return deviceName(); }

    void startPage(int page) override;
    void drawText(double x, double y, const std::string& text, const Font& font) override;
    void drawLine(double x1, double y1, double x2, double y2, toolkit::Colour colour) override;
    void finishDocument() override;
    Extent measure(const std::string& text, const Font& font) const override;

private:
    QPageLayout layout() const;
    void setTwips();

    QPainter m_painter;
    QPagedPaintDevice* m_device = nullptr;
};

// A printer of the machine, reached through CUPS.
class SystemPrinter : public PaintedPrinter {
public:
    explicit SystemPrinter(const std::string& printerName);
    ~SystemPrinter() override;

protected:
    QPagedPaintDevice* openDevice(const QPageLayout& layout) override;
    void closeDevice() override;

private:
    std::unique_ptr<QPrinter> m_printer;
};

// A PDF file, readable by its owner only. One file whatever the copies: the user prints it as often as
// he likes.
class PdfPrinter : public PaintedPrinter {
public:
    PdfPrinter(std::string deviceName, std::string path);
    ~PdfPrinter() override;
    const std::string& path() const { return m_path; }
    // Where the next document goes; the current one keeps its file.
    void setPath(std::string path) { m_path = std::move(path); }

protected:
    QPagedPaintDevice* openDevice(const QPageLayout& layout) override;
    void closeDevice() override;
    std::string destination() const override { return m_path; }

private:
    std::string m_path;
    std::unique_ptr<QFile> m_file;  // declared before the writer, which writes into it
    std::unique_ptr<QPdfWriter> m_writer;
};

// Printers in the order the printer choice shows them.
class PrinterList : public toolkit::Printers {
public:
    void add(std::unique_ptr<PaintedPrinter> printer);
    std::vector<std::string> deviceNames() const override;
    // The first PDF printer of the list; nullptr when it has none.
    PdfPrinter* pdfPrinter() const;

protected:
    toolkit::Printer& printer(int index) override { return *m_printers.at(static_cast<std::size_t>(index)); }

private:
    std::vector<std::unique_ptr<PaintedPrinter>> m_printers;
};

// The printers of the machine, as CUPS lists them, and last kFichierPdf writing to `pdfPath`.
std::shared_ptr<PrinterList> systemPrinters(const std::string& pdfPath);

}  // namespace qtui
