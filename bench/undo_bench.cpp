// Undo and redo of moves: what keeping the screen before and after each move adds to a drop, what an undo
// and a redo take, and the memory an entry holds, on tournée 001 of demo services of 100 and 1,000
// aidés (Monday 30/11/2026, displayed with its waiting pane).
#include <malloc.h>

#include <map>
#include <memory>

#include "bench_support.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "toolkit/headless_host.h"
#include "toolkit/input.h"

namespace {

std::map<int, std::unique_ptr<bench::TempFile>> g_services;

const std::string& service(int aides) {
    auto& file = g_services[aides];
    if (!file) {
        file = std::make_unique<bench::TempFile>("undo-" + std::to_string(aides));
        bench::generateService(file->path, aides);
    }
    return file->path;
}

// The screen of a planner on tournée 001, its first placed label pressed 20 twips in.
struct Ecran {
    base::FixedClock clock{bench::today(), 8 * 3600};
    std::shared_ptr<mvdb::Database> db;
    toolkit::HeadlessHost host;
    control::Ctr_Zandorel c{host, clock};
    int etiquette = 0;

    explicit Ecran(int aides)
        : db(std::make_shared<mvdb::Database>(
              mvdb::SqliteStore::open(service(aides), mvdb::OpenMode::ExistingOnly), clock)) {
        c.setTheClient(nullptr);
        c.setTheDatabase(db);
        c.setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
        c.Init();
        host.queueDialog("Frm_Anomalies",
                         [](toolkit::Form& f) { toolkit::input::click(*f.find("Cmd_Annuler")); });
        c.Txt_CodeTournee.setText("001");
        c.Cbo_Date.setText("30/11/2026");
        c.Cmd_Affichage.fireClick();
        etiquette = std::stoi(c.TabTempoDetail(1, 1));
    }

    // The label taken and dropped in the tournée with its top at T, as the drag of the toolkit does it.
    void deposer(double T) {
        toolkit::Label& e = c.Etq_Aide(etiquette);
        e.MouseMove(0, 0, 20, 20);
        e.MouseDown(1, 0, 20, 20);
        toolkit::input::dragOver(c.UserControl, 1020, T + 20, 0);
        toolkit::input::dragDrop(c.UserControl, 1020, T + 20);
    }

    void compter(benchmark::State& state) const {
        state.counters["controls"] = static_cast<double>(c.UserControl.controls().size());
        state.counters["labels"] = c.Etq_Aide.Count() - 1;
    }
};

// Two drops that the history records, against the same drop while the history records nothing (the span
// of a display): the difference is the captures of the screen that a move costs.
void BM_DepotAvecHistorique(benchmark::State& state) {
    Ecran e(static_cast<int>(state.range(0)));
    const bench::PairedSeconds t = bench::alternately(
        state,
        [&] {
            e.deposer(5000);
            e.deposer(1200);
            if (e.c.historique.annulables() >= control::Historique::kEntreesMax) e.c.historique.vider();
        },
        [&] {
            const control::Historique::Oubli sansHistorique(e.c.historique);
            e.deposer(5000);
            e.deposer(1200);
        });
    state.counters["x_sans_historique"] = t.reference > 0 ? t.measured / t.reference : 0;
    e.compter(state);
}
BENCHMARK(BM_DepotAvecHistorique)->ArgName("aides")->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// One undo and one redo of a drop.
void BM_AnnulerRetablir(benchmark::State& state) {
    Ecran e(static_cast<int>(state.range(0)));
    e.deposer(5000);
    for (auto _ : state) {
        e.c.Annuler();
        e.c.Retablir();
    }
    e.compter(state);
}
BENCHMARK(BM_AnnulerRetablir)->ArgName("aides")->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// The heap that a full history holds, per entry: the growth over as many moves as it keeps.
void BM_MemoireParEntree(benchmark::State& state) {
    Ecran e(static_cast<int>(state.range(0)));
    double parEntree = 0;
    for (auto _ : state) {
        e.c.historique.vider();
        const std::size_t avant = mallinfo2().uordblks;
        for (std::size_t i = 0; i < control::Historique::kEntreesMax; ++i)
            e.deposer(i % 2 ? 1200 : 5000);
        parEntree = static_cast<double>(mallinfo2().uordblks - avant) /
                    static_cast<double>(e.c.historique.annulables());
    }
    state.counters["KB/entry"] = parEntree / 1024;
    e.compter(state);
}
BENCHMARK(BM_MemoireParEntree)
    ->ArgName("aides")
    ->Arg(100)
    ->Arg(1000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return bench::runBenchmarks(argc, argv, [] { g_services.clear(); });
}
