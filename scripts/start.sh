#!/usr/bin/env bash
# Sets up Zandorel and opens the planning screen on the user's database, which is made with the demo
# service on first use (~/.local/share/zandorel/zandorel.db). Extra arguments go to zandorel
# (for instance --today 23/11/2026 --zoom 1.5).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
build=${BUILD_DIR:-build/release}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZANDOREL_TESTS=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target zandorel
exec "$build/src/app/zandorel" gui "$@"
