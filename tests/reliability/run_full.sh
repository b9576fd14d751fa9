#!/bin/sh
# The full reliability runs, too long for CI: 200 kills, then two planners with 500 validations each on
# their own tournée and 200 each on one tournée, then two `zandorel play` processes with 500 rounds each;
# on an SQLite file, and on PostgreSQL when ZANDOREL_TEST_PG names a server (run it under
# scripts/with_postgres.sh for a throwaway one).
#   run_full.sh BUILD_DIR [SEED]
set -e
bin="$1/tests/reliability/planner_stress"
zandorel="$1/src/app/zandorel"
here=$(dirname "$0")
d=$(mktemp -d)
trap 'rm -rf "$d"' EXIT
export ASAN_OPTIONS=detect_leaks=0
for where in "$d" ${ZANDOREL_TEST_PG:+"$ZANDOREL_TEST_PG"}; do
    case $where in postgres*) echo "== PostgreSQL" ;; *) echo "== SQLite" ;; esac
    "$bin" crash "$where" 200 ${2:-}
    "$bin" planners "$where" 500 200
    sh "$here/two_plays.sh" "$zandorel" "$where" 500
done
