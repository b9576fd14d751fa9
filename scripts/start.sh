#!/usr/bin/env bash
# Sets up Zandorel and opens it on the demo database (created on first use).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
build=${BUILD_DIR:-build/release}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZANDOREL_TESTS=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target zandorel
data="${XDG_DATA_HOME:-$HOME/.local/share}/zandorel"
mkdir -p "$data"
db="$data/zandorel.db"
if [ ! -f "$db" ]; then
    "$build/src/app/zandorel" demo-data --db "$db"
    echo "Demo service written to $db"
fi
exec "$build/src/app/zandorel" query --db "$db" --file SSIADCARACTTOURNEE --list "0 1 10" \
    'SELECT SSIADCARACTTOURNEE AVEC 1 = "]" AND AVEC 9 <> "1" PAR 1' "$@"
