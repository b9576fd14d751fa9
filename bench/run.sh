#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them: `bench/run.sh short` (small services, three
# repetitions, a few minutes) or `bench/run.sh full` (every size, five repetitions; the 1,000,000
# record files take several minutes to generate). Medians are printed; raw JSON goes to $OUT.
#
# `--pg` runs the display, sentence and commit benchmarks on PostgreSQL as well, beside a throwaway
# server that scripts/with_postgres.sh starts: `bench/run.sh short --pg`. PostgreSQL services are
# generated through the store (display, commit) or in bulk (100,000 records for the sentences and the
# purge; a million would take long there), so that mode adds a few minutes.
set -euo pipefail
mode=${1:-short}
pg=${2:-}
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD:-$root/build/bench-release}
out=${OUT:-$build/results}
mkdir -p "$out"

if [ "$pg" = --pg ] && [ -z "${ZANDOREL_TEST_PG:-}" ]; then
    exec "$root/scripts/with_postgres.sh" "$0" "$mode" --pg
fi
if [ -n "$pg" ] && [ "$pg" != --pg ]; then
    echo "usage: $0 short|full [--pg]" >&2
    exit 2
fi

# A new folder builds the benchmarks alone; an existing one keeps its tests.
tests=()
[ -f "$build/CMakeCache.txt" ] || tests=(-DZANDOREL_TESTS=OFF)
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZANDOREL_BENCH=ON "${tests[@]}" >/dev/null
ninja -C "$build" drag_feedback_bench display_bench sentence_bench commit_bench gui_display_bench week_bench \
    undo_bench

case "$mode" in
    short)
        reps=3 min=0.2
        display='BM_Affichage/aides:(100|1000)/'
        sentence='^phrase/.*records:100000$'
        commit='EnregistrementTournee/|ApurementInit/100000/'
        gui='aides:(100|1000)/'
        ;;
    full)
        reps=5 min=1
        display='BM_Affichage/'
        sentence='^phrase/'
        commit='EnregistrementTournee/|ApurementInit/'
        gui='.'
        ;;
    *)
        echo "usage: $0 short|full [--pg]" >&2
        exit 2
        ;;
esac

run() {
    local name=$1 filter=$2 tag=${3:-}
    shift 3
    echo "== $name$tag"
    "$build/bench/$name" --benchmark_filter="$filter" --benchmark_repetitions="$reps" \
        --benchmark_report_aggregates_only=true --benchmark_out="$out/$name$tag.json" \
        --benchmark_out_format=json "$@" | grep -E '_median|^-|^Benchmark'
}

uptime
if [ "$pg" = --pg ]; then
    # PostgreSQL alone: the SQLite figures come from a run without --pg.
    # x_sqlite: the display's time over the same display's on SQLite, measured alternately in one loop;
    # round_trips: those a proxy between the display and the server counted.
    run display_bench 'BM_AffichagePg/' -pg --benchmark_min_time="$min"
    # Across a network: a proxy holds each round trip 5 or 20 ms.
    run display_bench 'BM_AffichagePgLatence/' -pg-latence --benchmark_min_time="$min"
    run sentence_bench '^pg/' -pg --benchmark_min_time="$min"
    run commit_bench 'Pg/' -pg
    uptime
    exit 0
fi
run drag_feedback_bench . "" --benchmark_min_time="$min"
# x_sans_historique: the drops over the same drops while the history records nothing.
run undo_bench . "" --benchmark_min_time="$min"
run display_bench "$display" "" --benchmark_min_time="$min"
# Each sentence runs alternately with its hand-written SQL; x_sql is their ratio.
run sentence_bench "$sentence" "" --benchmark_min_time="$min"
# The purge runs once per repetition on a fresh copy of its file.
run commit_bench "$commit" ""
# The week at a glance, alternately with the displays it stands for; x_displays is their ratio.
run week_bench . "" --benchmark_min_time="$min"
# From the click on Cmd_Affichage to the window painted, under the offscreen platform.
QT_QPA_PLATFORM=offscreen run gui_display_bench "$gui" "" --benchmark_min_time="$min"
# Peak memory of a process that only ever held the largest service.
if [ "$mode" = full ]; then
    echo "== peak memory, 5,000 aidés alone"
    "$build/bench/display_bench" --benchmark_filter='BM_Affichage/aides:5000/' --benchmark_min_time=0.5 |
        grep -oE 'BM_Affichage[^ ]*|peak_MB=[0-9.]+'
fi
uptime
