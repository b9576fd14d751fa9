#!/bin/sh
# Two planners as two `zandorel play` processes on one database, each validating tournées of Monday
# 30/11/2026 over and over on the demo service:
#   phase 1: one validates tournée 001 and the other tournée 003, ROUNDS times each, at once;
#   phase 2: both validate tournée 001, ROUNDS times each, at once.
# Every round shows the tournée and presses "OK", and dumps the screen. Holds when both processes end
# normally, no dump carries a message or an error (a busy database never reaches the user), each
# tournée of the day is afterwards exactly the records of one validation, and no other record of
# SSIADTOURNEE has appeared or gone.
#   two_plays.sh ZANDOREL WHERE ROUNDS
# WHERE is a folder, for an SQLite file, or the address of a PostgreSQL server (postgresql://...), where
# the run makes a schema of its own and drops it at the end.
set -eu
exe=$1
where=$2
rounds=${3:-50}
work=$(mktemp -d)
case $where in
    postgres://* | postgresql://*)
        schema=zp_$$
        case $where in *\?*) db="$where&options=-csearch_path%3D$schema" ;; *) db="$where?options=-csearch_path%3D$schema" ;; esac
        trap 'psql -q "$where" -c "DROP SCHEMA IF EXISTS $schema CASCADE" >/dev/null 2>&1; rm -rf "$work"' EXIT ;;
    *)
        db=$where/two_plays.db
        rm -f "$db" "$db-wal" "$db-shm"
        trap 'rm -rf "$work"' EXIT ;;
esac

fail() {
    echo "two_plays: $*" >&2
    exit 1
}

"$exe" demo-data --db "$db" --today 23/11/2026 >"$work/demo" 2>&1 || fail "demo-data: $(cat "$work/demo")"

script() {  # TOURNEE -> a script of ROUNDS validations of it
    echo "today 23/11/2026"
    echo "init"
    i=0
    while [ $i -lt "$rounds" ]; do
        printf 'type Txt_CodeTournee %s\nchoose Cbo_Date "30/11/2026"\nclick Cmd_Affichage\nclick Cmd_Ok\ndump\n' "$1"
        i=$((i + 1))
    done
}

# The records of one tournée on the day (key: tournée, aidé, day 21519, hour), and of the whole file.
records() { "$exe" dump --db "$db" --file SSIADTOURNEE | grep -E "\"key\":\"$1.{5}21519" || true; }
all() { "$exe" dump --db "$db" --file SSIADTOURNEE | sort; }

together() {  # TOURNEE_A TOURNEE_B: both planners at once, then the checks every round must pass
    script "$1" >"$work/a.play"
    script "$2" >"$work/b.play"
    "$exe" play --db "$db" "$work/a.play" >"$work/a.out" 2>"$work/a.err" &
    a=$!
    "$exe" play --db "$db" "$work/b.play" >"$work/b.out" 2>"$work/b.err" &
    b=$!
    wait $a || fail "planner $1 ended with status $? : $(tail -n 3 "$work/a.err")"
    wait $b || fail "planner $2 ended with status $? : $(tail -n 3 "$work/b.err")"
    for p in a b; do
        dumps=$(grep -c '^{"messages"' "$work/$p.out" || true)
        [ "$dumps" -eq "$rounds" ] || fail "planner $p: $dumps dumps for $rounds rounds"
        shown=$(grep '^{"messages"' "$work/$p.out" | grep -cv '^{"messages":\[\],"errors":\[\]' || true)
        [ "$shown" -eq 0 ] || fail "planner $p: $shown rounds showed a message or an error"
    done
}

# One validation alone gives each tournée its version of the day: the reference.
all >"$work/before"
together 001 003
records 001 >"$work/t001"
records 003 >"$work/t003"
[ -s "$work/t001" ] && [ -s "$work/t003" ] || fail "a tournée has no record after its validations"
all >"$work/after1"
# Only the two tournées of the day may have changed.
grep -vE '"key":"00[13].{5}21519' "$work/before" >"$work/rest0" || true
grep -vE '"key":"00[13].{5}21519' "$work/after1" >"$work/rest1" || true
cmp -s "$work/rest0" "$work/rest1" || fail "records of other tournées changed"

together 001 001
records 001 | cmp -s - "$work/t001" || fail "tournée 001 is not the records of one validation"
all | cmp -s - "$work/after1" || fail "the file changed beyond tournée 001"

echo "two_plays: $rounds + $rounds validations of two tournées, then $rounds + $rounds of one; no message," \
    "no error, each tournée whole ($(wc -l <"$work/t001") and $(wc -l <"$work/t003") records), nothing else touched"
