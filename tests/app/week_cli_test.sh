#!/usr/bin/env bash
# `zandorel week` as outside tests see it: exit codes, the JSON form, and a database left unchanged.
zandorel=$1
. "$(dirname "$0")/cli_checks.sh"

check "no date" 2 "$zandorel" week --db "$work/d.db"
check "a date that is no day" 2 "$zandorel" week --db "$work/d.db" --date 32/11/2026
check "missing database" 1 "$zandorel" week --db "$work/none.db" --date 23/11/2026
[ -e "$work/none.db" ] && { echo "FAIL missing database: created"; failures=$((failures + 1)); }

check "demo data" 0 "$zandorel" demo-data --db "$work/d.db" --today 23/11/2026
check "dump before" 0 "$zandorel" dump --db "$work/d.db"
cp "$work/out" "$work/before"

check "week as JSON" 0 "$zandorel" week --db "$work/d.db" --date 25/11/2026 --json --today 23/11/2026
grep -q '^{"week": "23/11/2026", "soir": false, "days": \[{"date": "23/11/2026", "waiting": [0-9]*, "tournees": \[{"code": "001", ' "$work/out" ||
    { echo "FAIL week as JSON: $(head -c 120 "$work/out")"; failures=$((failures + 1)); }
[ "$(grep -o '"date": "[0-9/]*", "waiting": [0-9]*, "tournees": \[' "$work/out" | wc -l)" -eq 7 ] ||
    { echo "FAIL week as JSON: not seven days"; failures=$((failures + 1)); }
tournee='{"code": "[0-9]*", "label": "[^"]*", "planned": [0-9]*, "minutes": [0-9]*, "anomalies": [0-9]*}'
[ "$(grep -o "$tournee" "$work/out" | wc -l)" -gt 7 ] ||
    { echo "FAIL week as JSON: tournées"; failures=$((failures + 1)); }
grep -o "$tournee" "$work/out" | grep -qv '"planned": 0,' ||
    { echo "FAIL week as JSON: nothing planned"; failures=$((failures + 1)); }
check "evening" 0 "$zandorel" week --db "$work/d.db" --date 23/11/2026 --soir --json --today 23/11/2026
grep -q '^{"week": "23/11/2026", "soir": true, "days": \[' "$work/out" || { echo "FAIL evening: $(head -c 80 "$work/out")"; failures=$((failures + 1)); }
check "as a table" 0 "$zandorel" week --db "$work/d.db" --date 23/11/2026 --today 23/11/2026
grep -q "^Semaine du 23/11/2026, matin$" "$work/out" || { echo "FAIL table head"; failures=$((failures + 1)); }
check "a closed output" 1 sh -c '"$0" week --db "$1" --date 23/11/2026 --today 23/11/2026 >/dev/full' "$zandorel" "$work/d.db"

# The same week from the same service on a PostgreSQL server (scripts/with_postgres.sh names one).
if [ -n "${ZANDOREL_TEST_PG:-}" ]; then
    pg="$ZANDOREL_TEST_PG&options=-csearch_path%3Dzw_$$"
    check "week on SQLite" 0 "$zandorel" week --db "$work/d.db" --date 23/11/2026 --json --today 23/11/2026
    cp "$work/out" "$work/sqlite.json"
    check "load into PostgreSQL" 0 "$zandorel" load --db "$pg" "$work/before"
    check "week on PostgreSQL" 0 "$zandorel" week --db "$pg" --date 23/11/2026 --json --today 23/11/2026
    cmp -s "$work/sqlite.json" "$work/out" || { echo "FAIL the week differs on PostgreSQL"; failures=$((failures + 1)); }
    psql -q "$ZANDOREL_TEST_PG" -c "DROP SCHEMA zw_$$ CASCADE" >/dev/null 2>&1
fi

check "dump after" 0 "$zandorel" dump --db "$work/d.db"
cmp -s "$work/before" "$work/out" || { echo "FAIL the week changed the database"; failures=$((failures + 1)); }

[ "$failures" -eq 0 ] && echo "week CLI contract: all checks passed"
exit "$failures"
