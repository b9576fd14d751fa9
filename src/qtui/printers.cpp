#include "qtui/printers.h"

#include <QFile>
#include <QFont>
#include <QFontMetricsF>
#include <QPageSize>
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <cmath>

#include "base/error.h"
#include "qtui/geometry.h"

namespace qtui {
namespace {

constexpr double kTwipsParPouce = 1440;
constexpr double kMargeMm = 5;
// Rules as thin as a pen of the time: 0.18 mm.
constexpr double kTraitTwips = 10;
constexpr int kResolutionPdf = 1200;
// Lines are 1.1 em apart, a little closer than the font's own 1.13: the head's text then falls between
// the rules that the reports draw at fixed places, and 40 entry lines leave a bottom margin.
constexpr double kInterligneParPoint = 22;

// A font whose pixels are twips: 20 twips a point. The painter draws in twips, so it scales it with
// everything else, and the metrics it gives are twips whatever the device.
QFont policeEnTwips(const toolkit::Printer::Font& font) {
    QFont f(QString::fromStdString(font.name));
    if (font.name == "Courier New") f.setStyleHint(QFont::TypeWriter);
    f.setPixelSize(std::max(1, static_cast<int>(std::lround(font.size * 20))));
    f.setBold(font.bold);
    return f;
}

}  // namespace

PaintedPrinter::PaintedPrinter(std::string deviceName) : toolkit::Printer(std::move(deviceName)) {
    // The reports are laid out in Courier New; its metric twin stands in for it on this platform.
    QFont::insertSubstitution("Courier New", "Liberation Mono");
}

PaintedPrinter::~PaintedPrinter() {
    if (m_painter.isActive()) m_painter.end();
}

QPageLayout PaintedPrinter::layout() const {
    return QPageLayout(QPageSize(QPageSize::A4),
                       orientation() == toolkit::kLandscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                       QMarginsF(kMargeMm, kMargeMm, kMargeMm, kMargeMm), QPageLayout::Millimeter);
}

void PaintedPrinter::setTwips() {
    const double echelle = m_device->logicalDpiX() / kTwipsParPouce;
    m_painter.resetTransform();
    m_painter.scale(echelle, m_device->logicalDpiY() / kTwipsParPouce);
    QPen trait(Qt::black);
    trait.setWidthF(kTraitTwips);
    m_painter.setPen(trait);
}

void PaintedPrinter::startPage(int page) {
    if (page == 1 || !m_device) {
        m_device = openDevice(layout());
        if (!m_device || !m_painter.begin(m_device)) {
            m_device = nullptr;
            throw base::Error(base::codes::kStorage, "Impression impossible sur " + destination());
        }
    } else {
        m_device->setPageOrientation(orientation() == toolkit::kLandscape ? QPageLayout::Landscape
                                                                          : QPageLayout::Portrait);
        m_device->newPage();
    }
    setTwips();
}

void PaintedPrinter::drawText(double x, double y, const std::string& text, const Font& font) {
    if (!m_device) return;
    const QFont f = policeEnTwips(font);
    m_painter.setFont(f);
    // The pen is the top of the line; Qt draws from the baseline, placed as the font places it in a
    // line of its own height.
    const QFontMetricsF metriques(f);
    const double ligne = kInterligneParPoint * font.size;
    m_painter.drawText(QPointF(x, y + ligne * metriques.ascent() / metriques.height()),
                       QString::fromStdString(text));
}

void PaintedPrinter::drawLine(double x1, double y1, double x2, double y2, toolkit::Colour colour) {
    if (!m_device) return;
    QPen trait(toQColor(colour));
    trait.setWidthF(kTraitTwips);
    m_painter.setPen(trait);
    m_painter.drawLine(QPointF(x1, y1), QPointF(x2, y2));
}

void PaintedPrinter::finishDocument() {
    if (m_painter.isActive()) m_painter.end();
    m_device = nullptr;
    closeDevice();
}

toolkit::Printer::Extent PaintedPrinter::measure(const std::string& text, const Font& font) const {
    const QFontMetricsF metriques(policeEnTwips(font));
    return {metriques.horizontalAdvance(QString::fromStdString(text)), kInterligneParPoint * font.size};
}

SystemPrinter::SystemPrinter(const std::string& printerName) : PaintedPrinter(printerName) {}

SystemPrinter::~SystemPrinter() {
    // The painter ends, and the job is sent, before the QPrinter goes.
    endDoc();
}

QPagedPaintDevice* SystemPrinter::openDevice(const QPageLayout& layout) {
    const QPrinterInfo info = QPrinterInfo::printerInfo(QString::fromStdString(deviceName()));
    if (info.isNull()) return nullptr;
    m_printer = std::make_unique<QPrinter>(info, QPrinter::HighResolution);
    m_printer->setDocName("Zandorel");
    m_printer->setCopyCount(copies());
    m_printer->setPageLayout(layout);
    return m_printer.get();
}

void SystemPrinter::closeDevice() {
    m_printer.reset();
}

PdfPrinter::PdfPrinter(std::string deviceName, std::string path)
    : PaintedPrinter(std::move(deviceName)), m_path(std::move(path)) {}

PdfPrinter::~PdfPrinter() {
    endDoc();
}

QPagedPaintDevice* PdfPrinter::openDevice(const QPageLayout& layout) {
    if (m_path.empty()) return nullptr;
    // The reports name patients and their addresses: the file is its owner's alone, a file that was
    // there before included.
    constexpr auto kProprietaire = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    m_file = std::make_unique<QFile>(QString::fromStdString(m_path));
    if (!m_file->open(QIODevice::WriteOnly | QIODevice::Truncate, kProprietaire) ||
        !m_file->setPermissions(kProprietaire)) {
        m_file.reset();
        return nullptr;
    }
    m_writer = std::make_unique<QPdfWriter>(m_file.get());
    m_writer->setResolution(kResolutionPdf);
    m_writer->setCreator("Zandorel");
    m_writer->setTitle("Tournées");
    m_writer->setPageLayout(layout);
    return m_writer.get();
}

void PdfPrinter::closeDevice() {
    m_writer.reset();
    m_file.reset();
}

void PrinterList::add(std::unique_ptr<PaintedPrinter> printer) {
    m_printers.push_back(std::move(printer));
}

std::vector<std::string> PrinterList::deviceNames() const {
    std::vector<std::string> noms;
    for (const auto& p : m_printers)
        noms.push_back(p->deviceName());
    return noms;
}

PdfPrinter* PrinterList::pdfPrinter() const {
    for (const auto& p : m_printers) {
        if (auto* pdf = dynamic_cast<PdfPrinter*>(p.get())) return pdf;
    }
    return nullptr;
}

std::shared_ptr<PrinterList> systemPrinters(const std::string& pdfPath) {
    auto liste = std::make_shared<PrinterList>();
    for (const QPrinterInfo& info : QPrinterInfo::availablePrinters())
        liste->add(std::make_unique<SystemPrinter>(info.printerName().toStdString()));
    liste->add(std::make_unique<PdfPrinter>(kFichierPdf, pdfPath));
    return liste;
}

}  // namespace qtui
