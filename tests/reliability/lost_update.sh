#!/bin/sh
# Two planners as two `zandorel play` processes on one database, driven line by line through their
# standard input, on tournée 001 of Monday 30/11/2026 of the demo service:
#   round 1: A and B show the day; B takes a label out and validates; A validates the day as shown and
#            is asked whether to replace B's version: No writes nothing and shows B's version, which A
#            then validates again without a question;
#   round 2: both show the day; A takes a label out and validates; B validates and answers Yes: B's
#            version replaces A's.
# Holds when each answer is asked exactly where another planner's validation came between the display
# and the validation, never otherwise, and the stored day is the version the answers chose.
#   lost_update.sh ZANDOREL WHERE
# WHERE is a folder, for an SQLite file, or the address of a PostgreSQL server (postgresql://...), where
# the run makes a schema of its own and drops it at the end.
set -eu
exe=$1
where=$2
work=$(mktemp -d)
case $where in
    postgres://* | postgresql://*)
        schema=zl_$$
        case $where in *\?*) db="$where&options=-csearch_path%3D$schema" ;; *) db="$where?options=-csearch_path%3D$schema" ;; esac
        cleanup() { psql -q "$where" -c "DROP SCHEMA IF EXISTS $schema CASCADE" >/dev/null 2>&1 || true; } ;;
    *)
        db=$where/lost_update.db
        rm -f "$db" "$db-wal" "$db-shm"
        cleanup() { :; } ;;
esac
r=0
finish() {
    exec 3>&- 4>&- 2>/dev/null || true
    [ -n "${pa:-}" ] && kill "$pa" 2>/dev/null || true
    [ -n "${pb:-}" ] && kill "$pb" 2>/dev/null || true
    cleanup
    rm -rf "$work"
}
trap finish EXIT

fail() {
    echo "lost_update: $*" >&2
    for p in a b; do [ -s "$work/$p.err" ] && sed "s/^/  $p: /" "$work/$p.err" >&2; done
    exit 1
}

"$exe" demo-data --db "$db" --today 23/11/2026 >"$work/demo" 2>&1 || fail "demo-data: $(cat "$work/demo")"

# Starts both planners afresh for round $1, each reading a pipe of its own.
start_pair() {
    r=$1
    mkfifo "$work/a$r.in" "$work/b$r.in"
    "$exe" play --db "$db" <"$work/a$r.in" >"$work/a$r.out" 2>"$work/a.err" &
    pa=$!
    "$exe" play --db "$db" <"$work/b$r.in" >"$work/b$r.out" 2>"$work/b.err" &
    pb=$!
    exec 3>"$work/a$r.in" 4>"$work/b$r.in"
    dumps_a=0
    dumps_b=0
    say a "today 23/11/2026" init
    say b "today 23/11/2026" init
}
stop_pair() {
    exec 3>&- 4>&-
    wait "$pa" || fail "planner A ended with status $?"
    wait "$pb" || fail "planner B ended with status $?"
    pa=
    pb=
}

# Sends lines to a planner, then a dump, and waits until that dump is out: the lines have been played.
say() {  # a|b LINE...
    who=$1
    shift
    for line in "$@" dump; do
        if [ "$who" = a ]; then echo "$line" >&3; else echo "$line" >&4; fi
    done
    if [ "$who" = a ]; then dumps_a=$((dumps_a + 1)); want=$dumps_a; else dumps_b=$((dumps_b + 1)); want=$dumps_b; fi
    tries=0
    while [ "$(grep -c '^{"messages"' "$work/$who$r.out" || true)" -lt "$want" ]; do
        tries=$((tries + 1))
        [ $tries -lt 600 ] || fail "planner $who did not play its lines"
        kill -0 "$(if [ "$who" = a ]; then echo "$pa"; else echo "$pb"; fi)" 2>/dev/null || fail "planner $who ended"
        sleep 0.1
    done
}

# The messages of a planner's last dump: title, text and answer of each box.
last_messages() {
    grep '^{"messages"' "$work/$1$r.out" | tail -n 1 | sed 's/^{"messages":\[\([^]]*\)\].*/\1/'
}
question='Cette tournée a été modifiée sur un autre poste depuis son affichage. Voulez-vous remplacer sa version par la vôtre ?'
expect_question() {  # a|b ANSWER
    m=$(last_messages "$1")
    case $m in *"\"$question\""*) ;; *) fail "planner $1 was not asked: $m" ;; esac
    case $m in *"\"answer\":$2"*) ;; *) fail "planner $1: the answer is not $2: $m" ;; esac
    [ "$(printf '%s' "$m" | grep -o '"title"' | wc -l)" -eq 1 ] || fail "planner $1: more than the question: $m"
}
expect_silence() {  # a|b
    m=$(last_messages "$1")
    [ -z "$m" ] || fail "planner $1 was told something: $m"
}
day() { "$exe" dump --db "$db" --file SSIADTOURNEE | grep -E '"key":"001.{5}21519' | sort || true; }

show='type Txt_CodeTournee 001'
date='choose Cbo_Date "30/11/2026"'
# The first detail label goes back to the waiting pane.
out='drag Etq_Aide(1) 20 20 to 8000 3000'

start_pair 1
say a "$show" "$date" "click Cmd_Affichage"
say b "$show" "$date" "click Cmd_Affichage"
say b "$out" "click Cmd_Ok"
expect_silence b
day >"$work/b_version"
[ -s "$work/b_version" ] || fail "B's validation wrote nothing"
say a "answer 7" "click Cmd_Ok"
expect_question a 7
day | cmp -s - "$work/b_version" || fail "No wrote something"
# A now shows B's version, and validates it without a question.
say a "click Cmd_Ok"
expect_silence a
day | cmp -s - "$work/b_version" || fail "A's second validation changed B's version"
stop_pair

start_pair 2
say a "$show" "$date" "click Cmd_Affichage"
say b "$show" "$date" "click Cmd_Affichage"
say a "$out" "click Cmd_Ok"
expect_silence a
day >"$work/a_version"
cmp -s "$work/a_version" "$work/b_version" && fail "A's second version is B's first"
say b "answer 6" "click Cmd_Ok"
expect_question b 6
day | cmp -s - "$work/b_version" || fail "Yes did not put B's version in place of A's"
stop_pair

echo "lost_update: asked twice where the other planner validated between display and validation (No kept" \
    "theirs, Yes replaced it), never otherwise; day of $(wc -l <"$work/b_version") records"
