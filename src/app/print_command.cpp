#include "app/print_command.h"

#include <QGuiApplication>
#include <cstdlib>

#include "app/commands.h"
#include "base/clock.h"
#include "base/error.h"
#include "data/gateway.h"
#include "qtui/printers.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/headless_host.h"

namespace app {
namespace {

// What the screen told the user during the print, as the failure of the command.
void echecSiMessage(toolkit::HeadlessHost& host) {
    const auto boites = host.takeShown();
    if (!boites.empty()) throw base::Error(base::codes::kBadData, boites.front().text);
}

}  // namespace

PlayPdfFiles::PlayPdfFiles(int& argc, char** argv) : m_argc(argc), m_argv(argv) {}

PlayPdfFiles::~PlayPdfFiles() = default;

std::unique_ptr<toolkit::Printer> PlayPdfFiles::make(const std::string& device, const std::string& path) {
    if (!m_application && !QGuiApplication::instance()) {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        m_application = std::make_unique<QGuiApplication>(m_argc, m_argv);
    }
    return std::make_unique<qtui::PdfPrinter>(device, path);
}

void runPrint(const PrintOptions& o, int argc, char** argv) {
    // A command without a window: fonts and the PDF writer need Qt, a display they do not.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv);

    base::SystemClock clock =
        o.today.empty() ? base::SystemClock() : base::SystemClock(parseTodayOption(o.today));
    std::shared_ptr<mvdb::Database> db = openDatabase(o.db, mvdb::OpenMode::ExistingOnly, clock);
    auto printers = std::make_shared<qtui::PrinterList>();
    printers->add(std::make_unique<qtui::PdfPrinter>(qtui::kFichierPdf, o.out));

    toolkit::HeadlessHost host;
    control::Ctr_Zandorel ctl(host, clock);
    ctl.setTheClient(nullptr);
    ctl.setTheDatabase(db);
    ctl.setPrinters(printers);
    // The files only: Init would purge the tournées file, and a print changes nothing.
    data::OuvrirFichiersSSIAD(ctl.Mod.fichiers);

    // The screen as the user leaves it before pressing Imprimer: a free date, or a tournée and one of
    // its dates.
    ctl.Cbo_Date.setVisible(false);
    ctl.Txt_Date.setText(o.date);
    if (!o.tournee.empty()) {
        ctl.Txt_CodeTournee.setText(o.tournee);
        echecSiMessage(host);
        ctl.Cbo_Date.setText(o.date);
    }
    host.queuePrinter(qtui::kFichierPdf, 1);
    ctl.Cmd_Imprimer_Click();
    echecSiMessage(host);
    ctl.UserControl_Terminate();
}

}  // namespace app
