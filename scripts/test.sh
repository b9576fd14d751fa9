#!/usr/bin/env bash
# Sets up and runs the whole test suite, built with AddressSanitizer and UndefinedBehaviorSanitizer,
# beside a throwaway PostgreSQL server so that the shared store's tests run too.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
build=${BUILD_DIR:-build/test}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZANDOREL_SANITIZE=ON -DZANDOREL_TESTS=ON >/dev/null
cmake --build "$build" -j "$(nproc)"
with_postgres=$PWD/scripts/with_postgres.sh
cd "$build"
"$with_postgres" ctest --output-on-failure -j "$(nproc)" "$@"
