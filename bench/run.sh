#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them: `bench/run.sh short` (small services, three
# repetitions, about two minutes) or `bench/run.sh full` (every size, five repetitions; the 1,000,000
# record files take several minutes to generate). Medians are printed; raw JSON goes to $OUT.
set -euo pipefail
mode=${1:-short}
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD:-$root/build/bench-release}
out=${OUT:-$build/results}
mkdir -p "$out"

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZANDOREL_BENCH=ON -DZANDOREL_TESTS=OFF >/dev/null
ninja -C "$build" drag_feedback_bench display_bench sentence_bench commit_bench

case "$mode" in
    short)
        reps=3 min=0.2
        display='aides:(100|1000)/'
        sentence='records:100000$'
        commit='EnregistrementTournee|ApurementInit/100000/'
        ;;
    full)
        reps=5 min=1
        display='.'
        sentence='.'
        commit='EnregistrementTournee|ApurementInit/1000000/'
        ;;
    *)
        echo "usage: $0 short|full" >&2
        exit 2
        ;;
esac

run() {
    local name=$1 filter=$2
    shift 2
    echo "== $name"
    "$build/bench/$name" --benchmark_filter="$filter" --benchmark_repetitions="$reps" \
        --benchmark_report_aggregates_only=true --benchmark_out="$out/$name.json" \
        --benchmark_out_format=json "$@" | grep -E '_median|^-|^Benchmark'
}

uptime
run drag_feedback_bench . --benchmark_min_time="$min"
run display_bench "$display" --benchmark_min_time="$min"
run sentence_bench "$sentence" --benchmark_min_time="$min"
# The purge runs once per repetition on a fresh copy of its file.
run commit_bench "$commit"
# Peak memory of a process that only ever held the largest service.
if [ "$mode" = full ]; then
    echo "== peak memory, 5,000 aidés alone"
    "$build/bench/display_bench" --benchmark_filter='aides:5000/' --benchmark_min_time=0.5 |
        grep -oE 'BM_Affichage[^ ]*|peak_MB=[0-9.]+'
fi
uptime
