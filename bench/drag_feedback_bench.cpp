// The time feedback of a drag, SuivreHoraireEtiquette, runs at every mouse move: time per call and
// heap allocations per call, which must be 0 once the caption exists. Allocations are counted by
// replacing the global operator new of this program.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "base/clock.h"
#include "base/date.h"
#include "shell/ctr_zandorel.h"
#include "toolkit/headless_host.h"

namespace {

std::atomic<long> g_allocations{0};

}  // namespace

// GCC inlines these into their callers and then takes the malloc behind new for a mismatch with free.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
#pragma GCC diagnostic pop

namespace {

// Hears every property change, as the screen adapter does, and does nothing with it.
struct Silencieux : toolkit::Observer {
    void changed(toolkit::Control&, toolkit::Property) override {}
};

// The screen on its morning scale (6h00 to 14h00), a label of the detail pane pressed 20 twips in.
struct Ecran {
    toolkit::HeadlessHost host;
    base::FixedClock clock{*base::Date::fromDmy(23, 11, 2026), 8 * 3600};
    control::Ctr_Zandorel c{host, clock};
    Silencieux observateur;

    Ecran() {
        c.UserControl.setObserver(&observateur);
        c.ChargerEtiquetteHeuresDetail(6.00, 14.00);
        c.edition.DecalageSourisX = 20;
        c.edition.DecalageSourisY = 20;
    }
};

// Runs the feedback over `points` pointer positions in turn and reports the allocations per call,
// counted after one warm-up pass so that the caption's first write is left out.
template <typename Point>
void mesurer(benchmark::State& state, Point point, int points) {
    Ecran e;
    for (int i = 0; i < points; ++i)
        e.c.SuivreHoraireEtiquette(point(i).first, point(i).second);
    const long avant = g_allocations.load();
    int i = 0;
    for (auto _ : state) {
        const auto [x, y] = point(i);
        e.c.SuivreHoraireEtiquette(x, y);
        i = (i + 1) % points;
    }
    const long allocations = g_allocations.load() - avant;
    state.counters["allocs/call"] =
        benchmark::Counter(static_cast<double>(allocations), benchmark::Counter::kAvgIterations);
    benchmark::DoNotOptimize(e.c.Etq_Horaire.caption());
}

// The pointer going down the detail pane a few twips at a time: the time changes every 58 twips.
void BM_SuivreHoraire_DescenteDuPanneau(benchmark::State& state) {
    mesurer(
        state,
        [](int i) {
            return std::pair{1500.0f, 780.0f + 7.0f * static_cast<float>(i)};
        },
        800);
}
BENCHMARK(BM_SuivreHoraire_DescenteDuPanneau);

// The pointer trembling on one place: the caption is never rewritten.
void BM_SuivreHoraire_MemeHeure(benchmark::State& state) {
    mesurer(
        state,
        [](int i) {
            return std::pair{1500.0f + static_cast<float>(i % 3), 2210.0f};
        },
        3);
}
BENCHMARK(BM_SuivreHoraire_MemeHeure);

// The pointer over the pane of aidés: the feedback stays hidden.
void BM_SuivreHoraire_HorsDetail(benchmark::State& state) {
    mesurer(
        state,
        [](int i) {
            return std::pair{7000.0f + static_cast<float>(i), 2210.0f};
        },
        100);
}
BENCHMARK(BM_SuivreHoraire_HorsDetail);

}  // namespace

BENCHMARK_MAIN();
