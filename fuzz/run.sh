#!/bin/sh
# Builds the fuzzers with clang and runs each for SECONDS (60 by default), on a scratch copy of its
# corpus folder; crashes are written to build/fuzz/findings/. Inputs worth keeping are copied by hand
# into fuzz/corpus/<target>/, which the test suite replays.
#   fuzz/run.sh [SECONDS] [TARGET...]      targets: sentence record load_line play_lines
set -e
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build/fuzz"
seconds=${1:-60}
[ $# -gt 0 ] && shift
targets=${*:-sentence record load_line play_lines}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZANDOREL_FUZZ=ON -DZANDOREL_TESTS=OFF >/dev/null
mkdir -p "$build/findings"
for t in $targets; do
    case $t in
        load_line) exe=fuzz_loadLine ;;
        play_lines) exe=fuzz_playLines ;;
        *) exe=fuzz_$t ;;
    esac
    ninja -C "$build" "$exe" >/dev/null
    work="$build/work/$t"
    mkdir -p "$work"
    cp "$root/fuzz/corpus/$t/"* "$work/"
    echo "== $t, ${seconds}s"
    ASAN_OPTIONS=detect_leaks=1 "$build/fuzz/$exe" -max_total_time="$seconds" -max_len=4096 -timeout=10 \
        -rss_limit_mb=2048 -artifact_prefix="$build/findings/$t-" -print_final_stats=1 "$work" 2>&1 |
        grep -E "^(#[0-9]+.*DONE|stat::number_of_executed_units|==[0-9]+==ERROR|SUMMARY|Done)" || true
done
