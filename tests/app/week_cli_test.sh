#!/usr/bin/env bash
# `zandorel week` as outside tests see it: exit codes, the JSON form, and a database left unchanged.
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

check "no date" 2 "$zandorel" week --db "$work/d.db"
check "a date that is no day" 2 "$zandorel" week --db "$work/d.db" --date 32/11/2026
check "missing database" 1 "$zandorel" week --db "$work/none.db" --date 23/11/2026
[ -e "$work/none.db" ] && { echo "FAIL missing database: created"; failures=$((failures + 1)); }

check "demo data" 0 "$zandorel" demo-data --db "$work/d.db" --today 23/11/2026
check "dump before" 0 "$zandorel" dump --db "$work/d.db"
cp "$work/out" "$work/before"

check "week as JSON" 0 "$zandorel" week --db "$work/d.db" --date 25/11/2026 --json --today 23/11/2026
python3 - "$work/out" <<'PY' || failures=$((failures + 1))
import json, sys
text = open(sys.argv[1]).read()
week = json.loads(text)
assert list(week) == ["week", "soir", "days"], list(week)
assert week["week"] == "23/11/2026" and week["soir"] is False
assert [d["date"][:2] for d in week["days"]] == ["23", "24", "25", "26", "27", "28", "29"]
for day in week["days"]:
    assert list(day) == ["date", "waiting", "tournees"]
    codes = [t["code"] for t in day["tournees"]]
    assert codes == sorted(codes), codes
    for t in day["tournees"]:
        assert list(t) == ["code", "label", "planned", "minutes", "anomalies"], list(t)
        assert t["planned"] >= 0 and t["minutes"] >= 0 and t["anomalies"] >= 0
assert sum(len(d["tournees"]) for d in week["days"]) > 0
assert any(t["planned"] > 0 for d in week["days"] for t in d["tournees"])
PY
check "evening" 0 "$zandorel" week --db "$work/d.db" --date 23/11/2026 --soir --json --today 23/11/2026
grep -q '^{"week": "23/11/2026", "soir": true, "days": \[' "$work/out" || { echo "FAIL evening: $(head -c 80 "$work/out")"; failures=$((failures + 1)); }
check "as a table" 0 "$zandorel" week --db "$work/d.db" --date 23/11/2026 --today 23/11/2026
grep -q "^Semaine du 23/11/2026, matin$" "$work/out" || { echo "FAIL table head"; failures=$((failures + 1)); }
check "a closed output" 1 sh -c '"$0" week --db "$1" --date 23/11/2026 --today 23/11/2026 >/dev/full' "$zandorel" "$work/d.db"

check "dump after" 0 "$zandorel" dump --db "$work/d.db"
cmp -s "$work/before" "$work/out" || { echo "FAIL the week changed the database"; failures=$((failures + 1)); }

[ "$failures" -eq 0 ] && echo "week CLI contract: all checks passed"
exit "$failures"
