#!/bin/sh
# The full reliability runs, too long for CI: 200 kills, then two planners with 500 validations each on
# their own tournée and 200 each on one tournée. Usage: run_full.sh BUILD_DIR [SEED]
set -e
bin="$1/tests/reliability/planner_stress"
d=$(mktemp -d)
trap 'rm -rf "$d"' EXIT
"$bin" crash "$d" 200 ${2:-}
"$bin" planners "$d" 500 200
