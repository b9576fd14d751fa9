#include "app/print_command.h"

#include <QGuiApplication>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>

#include "app/commands.h"
#include "base/clock.h"
#include "base/error.h"
#include "data/gateway.h"
#include "data/record_checks.h"
#include "mvdb/private_files.h"
#include "qtui/printers.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/headless_host.h"

namespace app {
namespace {

// What the screen told the user during the print, as the failure of the command. The box that names
// records left out is no failure: the rest of the day is printed, and its lines are kept in `laisses`
// for standard error.
void echecSiMessage(toolkit::HeadlessHost& host, std::string& laisses) {
    for (const toolkit::HeadlessHost::Shown& boite : host.takeShown()) {
        if (!std::string_view(boite.text).starts_with(data::kFaultsHead))
            throw base::Error(base::codes::kBadData, boite.text);
        std::string texte = boite.text;
        for (std::size_t i = texte.find("\r\n"); i != std::string::npos; i = texte.find("\r\n", i + 1))
            texte.replace(i, 2, "\n");
        laisses += "zandorel : " + texte + "\n";
    }
}

// The PDF file of a print: made for its owner only when absent, and checked once written, since the
// PDF writer says nothing when a write fails. A file this command made is removed if the print fails.
class SortiePdf {
public:
    explicit SortiePdf(const std::string& path) : m_path(path) {
        std::error_code ignored;
        m_cree = !std::filesystem::exists(path, ignored);
        if (!m_cree && !std::filesystem::is_regular_file(path, ignored)) {
            throw base::Error(base::codes::kStorage, "Écriture impossible du fichier " + path +
                                                         " : ce n'est pas un fichier ordinaire");
        }
        if (m_cree) mvdb::createPrivateFile(path);
        // Opened for appending, which changes nothing, to learn before printing that it cannot be kept.
        if (!std::ofstream(path, std::ios::binary | std::ios::app)) {
            abandonner();
            throw base::Error(base::codes::kStorage, "Écriture impossible du fichier " + path);
        }
    }
    ~SortiePdf() {
        if (!m_garde) abandonner();
    }
    SortiePdf(const SortiePdf&) = delete;
    SortiePdf& operator=(const SortiePdf&) = delete;

    // Fails when the file is not a whole PDF: a full disk cuts it short.
    void verifier() {
        if (!complet()) {
            throw base::Error(base::codes::kStorage,
                              "Écriture impossible du fichier " + m_path + " : le PDF est incomplet");
        }
        m_garde = true;
    }

private:
    // Begins with the PDF header and ends with its end mark, blanks after it aside.
    bool complet() const {
        std::ifstream in(m_path, std::ios::binary);
        std::string debut(5, '\0');
        if (!in.read(debut.data(), 5) || debut != "%PDF-") return false;
        in.seekg(0, std::ios::end);
        const std::streamoff taille = in.tellg();
        const std::streamoff queue = std::min<std::streamoff>(taille, 64);
        std::string fin(static_cast<std::size_t>(queue), '\0');
        in.seekg(taille - queue);
        if (!in.read(fin.data(), queue)) return false;
        const std::size_t dernier = fin.find_last_not_of(" \r\n");
        return dernier != std::string::npos && dernier >= 4 && fin.compare(dernier - 4, 5, "%%EOF") == 0;
    }

    void abandonner() {
        std::error_code ignored;
        if (m_cree) std::filesystem::remove(m_path, ignored);
    }
    std::string m_path;
    bool m_cree = false;
    bool m_garde = false;
};

// Prints, and returns the records left out of the paper as the lines that tell them; empty when none.
std::string imprimer(const PrintOptions& o, int argc, char** argv) {
    // A command without a window: fonts and the PDF writer need Qt, a display they do not.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv);

    base::SystemClock clock =
        o.today.empty() ? base::SystemClock() : base::SystemClock(parseTodayOption(o.today));
    std::shared_ptr<mvdb::Database> db = openDatabase(o.db, mvdb::OpenMode::ExistingOnly, clock);
    auto printers = std::make_shared<qtui::PrinterList>();
    printers->add(std::make_unique<qtui::PdfPrinter>(qtui::kFichierPdf, o.out));

    toolkit::HeadlessHost host;
    std::string laisses;
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
        echecSiMessage(host, laisses);
        ctl.Cbo_Date.setText(o.date);
    }
    host.queuePrinter(qtui::kFichierPdf, 1);
    ctl.Cmd_Imprimer_Click();
    echecSiMessage(host, laisses);
    ctl.UserControl_Terminate();
    return laisses;
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
    SortiePdf sortie(o.out);
    const std::string laisses = imprimer(o, argc, argv);
    // Told even when the file fails: they are faults of the database, to be mended whatever happens.
    std::cerr << laisses << std::flush;
    sortie.verifier();
}

}  // namespace app
