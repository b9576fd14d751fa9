#!/usr/bin/env bash
# The command-line contract as outside tests see it: exit codes, messages and the round trip of a service.
zandorel=$1
. "$(dirname "$0")/cli_checks.sh"

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
check "bad --today" 2 "$zandorel" demo-data --db "$work/g.db" --today 31/02/2026

# A --today outside the years 1980 to 2199 is a bad argument for every command, refused before anything
# opens or is written.
for today in 31/12/1979 01/01/2200 23/11/20620; do
    check "demo-data --today $today" 2 "$zandorel" demo-data --db "$work/h.db" --today "$today"
    check "play --today $today" 2 "$zandorel" play --db "$work/d.db" --today "$today" /dev/null
    check "print --today $today" 2 "$zandorel" print --db "$work/d.db" --date 30/11/2026 --out "$work/p.pdf" \
        --today "$today"
    check "gui --today $today" 2 "$zandorel" --db "$work/d.db" --today "$today"
done
grep -q -- "--today" "$work/err" || { echo "FAIL --today: message"; cat "$work/err"; failures=$((failures + 1)); }
[ ! -e "$work/h.db" ] || { echo "FAIL --today: a database was made"; failures=$((failures + 1)); }
printf 'today 01/01/1900\ninit\n' >"$work/early.play"
check "play: today line out of range" 2 "$zandorel" play --db "$work/d.db" "$work/early.play"
grep -q "ligne 1 : date « 01/01/1900 » hors des années 1980 à 2199" "$work/err" ||
    { echo "FAIL play today line: message"; cat "$work/err"; failures=$((failures + 1)); }

# A typo in the date purges the whole history into the archive, from where restore-purged puts it back.
"$zandorel" dump --db "$work/d.db" --file SSIADTOURNEE >"$work/tournees.before"
printf 'init\nterminate\n' >"$work/init.play"
check "init far ahead" 0 "$zandorel" play --db "$work/d.db" --today 23/11/2062 "$work/init.play"
check "nothing left" 0 "$zandorel" dump --db "$work/d.db" --file SSIADTOURNEE
[ ! -s "$work/out" ] || { echo "FAIL init far ahead: records left"; failures=$((failures + 1)); }
check "restore a range" 0 "$zandorel" restore-purged --db "$work/d.db" --from 22/11/2026 --to 23/11/2026
grep -Eq "^[1-9][0-9]* enregistrement\(s\) remis dans SSIADTOURNEE$" "$work/out" ||
    { echo "FAIL restore a range: $(cat "$work/out")"; failures=$((failures + 1)); }
check "restore the rest" 0 "$zandorel" restore-purged --db "$work/d.db"
check "history back" 0 "$zandorel" dump --db "$work/d.db" --file SSIADTOURNEE
cmp -s "$work/tournees.before" "$work/out" || { echo "FAIL restore: history differs"; failures=$((failures + 1)); }
check "restore: bad date" 2 "$zandorel" restore-purged --db "$work/d.db" --from 32/01/2026
check "restore: missing database" 1 "$zandorel" restore-purged --db "$work/none.db"

# Writes that fail are errors: a full disk, an output that cannot be a file.
checkfull() {  # name, command...: exit 1 and a message when standard output is full
    local name=$1
    shift
    "$@" >/dev/full 2>"$work/err"
    local code=$?
    if [ "$code" -ne 1 ] || ! grep -q "Écriture impossible sur la sortie" "$work/err"; then
        echo "FAIL $name to a full disk: exit $code"; cat "$work/err"; failures=$((failures + 1))
    fi
}
checkfull "dump" "$zandorel" dump --db "$work/d.db"
"$zandorel" dump --db "$work/d.db" 2>"$work/err" | head -c 1 >/dev/null
code=${PIPESTATUS[0]}
if [ "$code" -ne 1 ] || ! grep -q "Écriture impossible sur la sortie standard" "$work/err"; then
    echo "FAIL dump to a closed pipe: exit $code"; cat "$work/err"; failures=$((failures + 1))
fi
checkfull "query" "$zandorel" query --db "$work/d.db" --file SSIADSOINS --list "0 1" "SELECT SSIADSOINS"
checkfull "play dump" "$zandorel" play --db "$work/d.db" --today 23/11/2026 <(printf 'init\ndump\n')
checkfull "play db" "$zandorel" play --db "$work/d.db" <(printf 'db SSIADSOINS\n')
checkfull "restore-purged" "$zandorel" restore-purged --db "$work/d.db"
mkdir -p "$work/folder"
for out in "$work/folder" "$work/nofolder/p.pdf" /dev/full; do
    check "print --out $out" 1 "$zandorel" print --db "$work/d.db" --date 23/11/2026 --out "$out" \
        --today 23/11/2026
    grep -q "impossible du fichier $out" "$work/err" ||
        { echo "FAIL print --out $out: message"; cat "$work/err"; failures=$((failures + 1)); }
done
check "print a PDF" 0 "$zandorel" print --db "$work/d.db" --date 23/11/2026 --out "$work/p.pdf" --today 23/11/2026
[ "$(stat -c %a "$work/p.pdf")" = 600 ] || { echo "FAIL print: PDF not private"; failures=$((failures + 1)); }
# A record another program wrote badly is left out of the paper and named; the rest of the day prints.
cp "$work/d.db" "$work/bad.db"
bad=$(sqlite3 "$work/bad.db" "SELECT key FROM f_SSIADTOURNEE WHERE substr(key, 9, 5) = '21512' LIMIT 1")
sqlite3 "$work/bad.db" "UPDATE f_SSIADTOURNEE SET rec = CAST('8h30' AS BLOB) || substr(rec, instr(rec, X'FE'))
    WHERE key = '$bad'"
check "print over a bad record" 0 "$zandorel" print --db "$work/bad.db" --date 23/11/2026 --out "$work/bad.pdf" \
    --today 23/11/2026
grep -qx "SSIADTOURNEE « $bad », attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre" "$work/err" ||
    { echo "FAIL print over a bad record: message"; cat "$work/err"; failures=$((failures + 1)); }
[ -s "$work/bad.pdf" ] || { echo "FAIL print over a bad record: no PDF"; failures=$((failures + 1)); }
check "print an unknown tournée" 1 "$zandorel" print --db "$work/bad.db" --date 23/11/2026 --tournee 999 \
    --out "$work/none.pdf" --today 23/11/2026
grep -q "Cette tournée n'existe pas." "$work/err" ||
    { echo "FAIL print an unknown tournée: message"; cat "$work/err"; failures=$((failures + 1)); }
check "load a folder" 1 "$zandorel" load --db "$work/i.db" "$work/folder"
grep -q "Lecture impossible de $work/folder" "$work/err" ||
    { echo "FAIL load a folder: message"; cat "$work/err"; failures=$((failures + 1)); }
[ -e "$work/i.db" ] && { echo "FAIL load a folder: a database was left"; failures=$((failures + 1)); }
check "load a missing file" 1 "$zandorel" load --db "$work/i.db" "$work/none.jsonl"
grep -q "Lecture impossible du fichier $work/none.jsonl" "$work/err" ||
    { echo "FAIL load a missing file: message"; cat "$work/err"; failures=$((failures + 1)); }
check "load a bad line" 1 "$zandorel" load --db "$work/i.db" <(printf '{oops\n')
ls "$work"/i.db* >/dev/null 2>&1 && { echo "FAIL load: a database was left"; failures=$((failures + 1)); }

# What Zandorel creates is its owner's alone, whatever the umask.
(umask 000 && "$zandorel" demo-data --db "$work/private.db" --today 23/11/2026 2>/dev/null)
[ "$(stat -c %a "$work/private.db")" = 600 ] ||
    { echo "FAIL private database: $(stat -c %a "$work/private.db")"; failures=$((failures + 1)); }

check "unknown sort name" 1 "$zandorel" query --db "$work/d.db" --file SSIADTOURNEE --list "0" \
    'SELECT SSIADTOURNEE PAR Nope'
grep -q "position 25" "$work/err" || { echo "FAIL unknown sort name: position"; failures=$((failures + 1)); }

if [ "$failures" -eq 0 ]; then echo "cli: all checks passed"; fi
exit "$failures"
