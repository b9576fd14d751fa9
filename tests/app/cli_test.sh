#!/usr/bin/env bash
# The command-line contract as outside tests see it: exit codes, messages and the round trip of a service.
set -u
zandorel=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
check() {  # name, expected exit code, command...
    local name=$1 expected=$2
    shift 2
    "$@" >"$work/out" 2>"$work/err"
    local code=$?
    if [ "$code" -ne "$expected" ]; then
        echo "FAIL $name: exit $code, expected $expected"; cat "$work/err"; failures=$((failures + 1))
    fi
}

check "demo data" 0 "$zandorel" demo-data --db "$work/d.db" --today 23/11/2026
check "demo data twice is refused" 1 "$zandorel" demo-data --db "$work/d.db" --today 23/11/2026
check "tournées by label" 0 "$zandorel" query --db "$work/d.db" --file SSIADCARACTTOURNEE --list "0 1 10" \
    'SELECT SSIADCARACTTOURNEE AVEC 1 = "]" AND AVEC 9 <> "1" PAR 1'
[ -s "$work/out" ] || { echo "FAIL tournées by label: empty listing"; failures=$((failures + 1)); }
cut -f2 "$work/out" >"$work/labels"
sort -c "$work/labels" 2>/dev/null || { echo "FAIL tournées by label: not sorted"; failures=$((failures + 1)); }

check "dump" 0 "$zandorel" dump --db "$work/d.db"
cp "$work/out" "$work/dump1"
check "load" 0 "$zandorel" load --db "$work/e.db" "$work/dump1"
check "dump again" 0 "$zandorel" dump --db "$work/e.db"
cmp -s "$work/dump1" "$work/out" || { echo "FAIL dump, load, dump differ"; failures=$((failures + 1)); }

# A service moves to a PostgreSQL server and back unchanged, by an address and by the PG* variables
# (scripts/with_postgres.sh names a throwaway server in ZANDOREL_TEST_PG).
if [ -n "${ZANDOREL_TEST_PG:-}" ]; then
    pg="$ZANDOREL_TEST_PG&options=-csearch_path%3Dzc_$$"
    check "load into PostgreSQL" 0 "$zandorel" load --db "$pg" "$work/dump1"
    check "dump from PostgreSQL" 0 "$zandorel" dump --db "$pg"
    cmp -s "$work/dump1" "$work/out" || { echo "FAIL SQLite and PostgreSQL dumps differ"; failures=$((failures + 1)); }
    check "the same tournées on PostgreSQL" 0 "$zandorel" query --db "$pg" --file SSIADCARACTTOURNEE \
        --list "0 1 10" 'SELECT SSIADCARACTTOURNEE AVEC 1 = "]" AND AVEC 9 <> "1" PAR 1'
    cut -f2 "$work/out" | cmp -s - "$work/labels" || { echo "FAIL PostgreSQL listing differs"; failures=$((failures + 1)); }
    field() { printf '%s' "$ZANDOREL_TEST_PG" | sed -n "s/.*[?&]$1=\([^&]*\).*/\1/p"; }
    check "PG* variables" 0 env PGHOST="$(field host)" PGUSER="$(field user)" PGOPTIONS="-csearch_path=zc_$$" \
        PGDATABASE="$(printf '%s' "$ZANDOREL_TEST_PG" | sed 's|^postgresql:///\([^?]*\).*|\1|')" \
        "$zandorel" dump --db "" --file SSIADSOINS
    grep '"file":"SSIADSOINS"' "$work/dump1" | cmp -s - "$work/out" ||
        { echo "FAIL PG* variables: not the service"; failures=$((failures + 1)); }
    check "back to SQLite" 0 "$zandorel" load --db "$work/back.db" <("$zandorel" dump --db "$pg")
    check "dump back" 0 "$zandorel" dump --db "$work/back.db"
    cmp -s "$work/dump1" "$work/out" || { echo "FAIL round trip through PostgreSQL"; failures=$((failures + 1)); }
    check "lost server" 1 "$zandorel" dump --db "postgresql:///none?host=$work/nosocket"
    grep -q "PostgreSQL" "$work/err" || { echo "FAIL lost server: message"; cat "$work/err"; failures=$((failures + 1)); }
    psql -q "$ZANDOREL_TEST_PG" -c "DROP SCHEMA zc_$$ CASCADE" >/dev/null 2>&1
fi

check "malformed sentence" 1 "$zandorel" query --db "$work/d.db" --file SSIADTOURNEE --list "0" 'SELECT SSIADTOURNEE AVEC'
grep -q "position 25" "$work/err" || { echo "FAIL malformed sentence: no position"; failures=$((failures + 1)); }
check "unknown file" 1 "$zandorel" dump --db "$work/d.db" --file NOFILE
grep -q "Fichier inconnu : NOFILE" "$work/err" || { echo "FAIL unknown file message"; failures=$((failures + 1)); }
check "missing database" 1 "$zandorel" dump --db "$work/none.db"
printf 'not a database at all, just some text that fills a page or so\n' >"$work/text.db"
check "not a database" 1 "$zandorel" dump --db "$work/text.db"
check "bad load line" 1 "$zandorel" load --db "$work/f.db" <(printf '{"file":"CIVILAIDE","key":"1","attrs":[]}\n{oops\n')
grep -q "ligne 2" "$work/err" || { echo "FAIL bad load line: no line number"; failures=$((failures + 1)); }
check "unknown option" 2 "$zandorel" dump --db "$work/d.db" --frobnicate
check "bad --today" 1 "$zandorel" demo-data --db "$work/g.db" --today 31/02/2026

if [ "$failures" -eq 0 ]; then echo "cli: all checks passed"; fi
exit "$failures"
