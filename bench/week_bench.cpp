// The week at a glance on the demo services of 40 and 1,000 aidés, against what a planner would do to
// learn the same: seven displays without a tournée and one display per tournée and day, on a started
// screen, alternately in one loop.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>

#include "bench_support.h"
#include "day_choice.h"
#include "shell/ctr_zandorel.h"
#include "shell/droits.h"
#include "toolkit/form.h"
#include "toolkit/headless_host.h"
#include "week/semaine.h"

namespace {

struct Service {
    bench::TempFile file;
    base::FixedClock clock{bench::today(), 8 * 3600};
    std::shared_ptr<mvdb::Database> db;
    toolkit::HeadlessHost host;
    std::unique_ptr<control::Ctr_Zandorel> c;

    explicit Service(int aides) : file("week-" + std::to_string(aides)) {
        bench::generateService(file.path, aides);
        db = std::make_shared<mvdb::Database>(
            mvdb::SqliteStore::open(file.path, mvdb::OpenMode::ExistingOnly), clock);
        c = bench::controleSur(host, clock, db);
        c->Init();
    }

    control::Semaine semaine() {
        return control::calculerSemaine(*db, clock, bench::today(), control::DemiJournee::Matin);
    }

    // The displays the week stands for, on the screen: each day without a tournée, then each tournée on
    // its day. An anomaly list that opens is closed at once, as a planner would.
    void affichages(const control::Semaine& semaine) {
        for (const control::JourDeSemaine& jour : semaine.jours) {
            c->Txt_CodeTournee.setText("");
            c->Txt_Date.setText(jour.date.text());
            c->Cmd_Affichage.fireClick();
        }
        for (const control::JourDeSemaine& jour : semaine.jours) {
            for (const control::TourneeDuJour& t : jour.tournees) {
                c->Txt_CodeTournee.setText(t.code);
                c->Cbo_Date.setText(jour.date.text());
                if (t.anomalies > 0 && jour.date >= clock.today())
                    host.queueDialog("Frm_Anomalies",
                                     [](toolkit::Form& f) { f.find("Cmd_Annuler")->fireClick(); });
                c->Cmd_Affichage.fireClick();
            }
        }
        host.takeShown();
    }
};

std::map<int, std::unique_ptr<Service>> g_services;

Service& service(int aides) {
    auto& s = g_services[aides];
    if (!s) s = std::make_unique<Service>(aides);
    return *s;
}

void BM_Semaine(benchmark::State& state) {
    Service& s = service(static_cast<int>(state.range(0)));
    const control::Semaine reference = s.semaine();
    s.affichages(reference);
    std::size_t tournees = 0;
    for (const control::JourDeSemaine& jour : reference.jours)
        tournees += jour.tournees.size();

    const bench::PairedSeconds seconds = bench::alternately(
        state, [&] { benchmark::DoNotOptimize(s.semaine()); }, [&] { s.affichages(reference); });

    const double iterations = static_cast<double>(state.iterations());
    state.counters["displays_ms"] = seconds.reference / iterations * 1e3;
    state.counters["x_displays"] = seconds.measured / seconds.reference;
    state.counters["displays"] = static_cast<double>(7 + tournees);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("BM_Semaine", BM_Semaine)
        ->ArgNames({"aides"})
        ->Args({40})
        ->Args({1000})
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    return bench::runBenchmarks(argc, argv, [] { g_services.clear(); });
}
