// The display of a day as the user sees it: from the click on Cmd_Affichage to the screen painted, on
// the real Qt adapter under the offscreen platform, for services of 100 and 1,000 aidés. The click goes
// through the forms model, as the button's own handler sends it; the window is then painted whole
// into a pixmap (QWidget::grab) once the events the display queued are processed.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDialog>
#include <QPixmap>
#include <QTimer>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>

#include "bench_support.h"
#include "day_choice.h"
#include "qtui/main_window.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"

namespace {

// A dialog the display opens (the list of anomalies of a tournée) would wait for a user: it is closed
// as soon as it shows, and counted.
class FermeDialogues : public QObject {
public:
    int fermes = 0;

protected:
    bool eventFilter(QObject* objet, QEvent* evenement) override {
        if (evenement->type() == QEvent::Show) {
            if (auto* dialogue = qobject_cast<QDialog*>(objet)) {
                ++fermes;
                QTimer::singleShot(0, dialogue, &QDialog::reject);
            }
        }
        return false;
    }
};

// The window on a generated service kept in a temporary file, started as the program starts it.
struct Fenetre {
    bench::TempFile file;
    base::FixedClock clock{bench::today(), 8 * 3600};
    std::shared_ptr<mvdb::Database> db;
    qtui::QtHost host{qtui::Zoom(1.0)};
    std::unique_ptr<control::Ctr_Zandorel> c;
    std::unique_ptr<qtui::MainWindow> window;

    explicit Fenetre(int aides) : file("gui-" + std::to_string(aides)) {
        bench::generateService(file.path, aides);
        db = std::make_shared<mvdb::Database>(
            mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly), clock);
        c = bench::controleSur(host, clock, db);
        window = std::make_unique<qtui::MainWindow>(*c, host, qtui::Zoom(1.0));
        window->show();
        window->start();
        QApplication::processEvents();
    }

    // The choice of the day, made before the clock starts. The labels the last display unloaded are
    // deleted first, as the event loop does between two clicks: without a loop of its own the benchmark
    // would otherwise pile them up and slow every display that follows.
    void choisir(bool avecTournee) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        bench::choisirJour(*c, avecTournee);
        QApplication::processEvents();
    }

    // The click, then the screen painted: what the user waits for.
    qint64 afficher() {
        c->Cmd_Affichage.fireClick();
        QApplication::processEvents();
        return window->grab().cacheKey();
    }
};

// One window per size, made on first use; closed before the application goes.
std::map<int, std::unique_ptr<Fenetre>> g_fenetres;

Fenetre& fenetre(int aides) {
    auto& f = g_fenetres[aides];
    if (!f) f = std::make_unique<Fenetre>(aides);
    return *f;
}

FermeDialogues* g_dialogues = nullptr;

void BM_AffichageEcran(benchmark::State& state) {
    const int aides = static_cast<int>(state.range(0));
    const bool avecTournee = state.range(1) != 0;
    Fenetre& f = fenetre(aides);
    const int avant = g_dialogues->fermes;
    // One display that warms the caches as the others will find them.
    f.choisir(avecTournee);
    f.afficher();
    for (auto _ : state) {
        state.PauseTiming();
        f.choisir(avecTournee);
        state.ResumeTiming();
        benchmark::DoNotOptimize(f.afficher());
    }
    state.counters["labels"] = static_cast<double>(f.c->Etq_Aide.Count() - 1);
    state.counters["dialogs"] =
        static_cast<double>(g_dialogues->fermes - avant) / static_cast<double>(state.iterations() + 1);
    state.SetLabel(avecTournee ? "avec tournée" : "sans tournée");
}

BENCHMARK(BM_AffichageEcran)
    ->ArgNames({"aides", "tournee"})
    ->ArgsProduct({{100, 1000}, {0, 1}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    // No display is needed: the offscreen platform paints into memory as a screen would.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    FermeDialogues dialogues;
    g_dialogues = &dialogues;
    application.installEventFilter(&dialogues);
    return bench::runBenchmarks(argc, argv, [] { g_fenetres.clear(); });
}
