#include "app/gui.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QFont>
#include <QFontDatabase>
#include <QMessageBox>
#include <QScreen>
#include <QSessionManager>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "app/commands.h"
#include "app/demo_data.h"
#include "base/clock.h"
#include "base/error.h"
#include "mvdb/pg_address.h"
#include "mvdb/private_files.h"
#include "qtui/main_window.h"
#include "qtui/printers.h"
#include "qtui/traductions.h"
#include "qtui/transaction_guard.h"
#include "shell/ctr_zandorel.h"

namespace app {
namespace {

// The screen was drawn for 800 x 600 displays; today's are larger. Take the largest usual zoom at which
// the control still fits the screen.
double zoomForScreen() {
    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) return 1.5;
    QSize room = screen->availableSize();
    for (double zoom : {2.0, 1.75, 1.5, 1.25}) {
        if (11355 * zoom / 15 + 40 < room.width() && 7110 * zoom / 15 + 80 < room.height()) return zoom;
    }
    return 1.0;
}

std::shared_ptr<mvdb::Database> openOrCreate(const GuiOptions& o, const base::Clock& clock) {
    std::string path = o.db.empty() ? defaultDatabasePath() : o.db;
    // A server's service is opened as it stands: its address is no file, and may hold a password.
    if (mvdb::pg::isServerAddress(path)) return openDatabase(path, mvdb::OpenMode::ExistingOnly, clock);
    bool fresh = !std::filesystem::exists(path);
    if (fresh && !o.db.empty())
        throw base::Error(base::codes::kStorage, "Base de données introuvable : " + path);
    // The default folder is Zandorel's own: made owner-only even when an older version or another
    // program left it open to others.
    if (o.db.empty()) mvdb::makeOwnFolderPrivate(std::filesystem::path(path).parent_path().string());
    auto db = openDatabase(path, mvdb::OpenMode::CreateIfMissing, clock);
    if (fresh) writeDemoService(*db, DemoOptions{clock.today(), 40, 60, 1});
    return db;
}

// SIGTERM and SIGINT end the program as leaving it does, so that the database is closed and nothing
// committed waits in its journal. A handler may only write to a pipe; the event loop reads it.
int g_signalPipe[2] = {-1, -1};

void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(g_signalPipe[1], &byte, 1);
}

void quitOnSignals(QObject* owner) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalPipe) != 0) return;
    auto* notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, owner);
    QObject::connect(notifier, &QSocketNotifier::activated, owner, [] {
        char byte = 0;
        [[maybe_unused]] const ssize_t read = ::read(g_signalPipe[0], &byte, 1);
        // exit, not quit: quit would ask each window to close, and the planning screen asks a question
        // when a tournée has changes. Every event loop ends, modal ones included.
        QCoreApplication::exit(0);
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

}  // namespace

std::string defaultDatabasePath() {
    const char* data = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    std::filesystem::path folder = data && *data
                                       ? std::filesystem::path(data)
                                       : std::filesystem::path(home ? home : ".") / ".local" / "share";
    return (folder / "zandorel" / "zandorel.db").string();
}

int runGui(const GuiOptions& o, int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("Zandorel");
    if (!qtui::installerTraductionsQt(application)) {
        std::cerr << "zandorel : traductions françaises de Qt introuvables (paquet qt6-translations-l10n) : "
                     "les fenêtres de Qt restent en anglais\n";
    }
    // Fonts shipped beside the program, for machines that lack them.
    QDir fonts(QCoreApplication::applicationDirPath() + "/../share/zandorel/fonts");
    for (const QString& file : fonts.entryList({"*.ttf"}, QDir::Files))
        QFontDatabase::addApplicationFont(fonts.filePath(file));
    // The screen was laid out for the fonts of its time; their metric twins keep captions within their boxes.
    QFont::insertSubstitution("MS Sans Serif", "Liberation Sans");
    QFont::insertSubstitution("Courier New", "Liberation Mono");
    base::SystemClock clock =
        o.today.empty() ? base::SystemClock() : base::SystemClock(parseTodayOption(o.today));
    std::shared_ptr<mvdb::Database> db;
    try {
        db = openOrCreate(o, clock);
    } catch (const base::Error& e) {
        QMessageBox::critical(nullptr, "Zandorel", QString::fromStdString(e.what()));
        std::cerr << "zandorel : " << e.what() << '\n';
        return 1;
    }
    qtui::Zoom zoom(o.zoom > 0 ? o.zoom : zoomForScreen());
    qtui::QtHost host(zoom);
    control::Ctr_Zandorel ctl(host, clock);
    ctl.setTheClient(nullptr);
    ctl.setTheDatabase(db);
    ctl.setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(o.rights));
    // The printers of the machine, and a PDF file in the user's documents.
    auto printers = qtui::systemPrinters(
        (QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/tournees.pdf")
            .toStdString());
    host.setPdfPrinter(printers->pdfPrinter());
    ctl.setPrinters(printers);
#ifdef ZANDOREL_GUARD_TRANSACTIONS
    qtui::TransactionGuard guard([&db] { return db ? db->store().openTransaction() : std::string(); });
#endif
    qtui::MainWindow window(ctl, host, zoom);
    quitOnSignals(&window);
    // The end of the desktop session: the planner is asked about a changed tournée when the session
    // allows it, and may keep the session from ending.
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &window,
                     [&](QSessionManager& session) {
                         if (ctl.W_Sortir || !session.allowsInteraction()) return;
                         if (!window.close()) session.cancel();
                         session.release();
                     });
    // However the program ends, the control lets go of its files and the database is closed.
    bool termine = false;
    auto terminer = [&] {
        if (termine) return;
        termine = true;
        ctl.UserControl_Terminate();
        ctl.setTheDatabase(nullptr);
        db.reset();
    };
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &window, terminer);
    window.show();
    window.start();
    int code = QApplication::exec();
    terminer();
    return code;
}

}  // namespace app
