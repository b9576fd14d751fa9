# Sourced by the command-line tests: a scratch folder removed on exit, a count of failures, and check,
# which runs a command and compares its exit code; its output is left in $work/out and $work/err.
set -u
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL $*"; failures=$((failures + 1)); }
check() {  # name, expected exit code, command...
    local name=$1 expected=$2
    shift 2
    "$@" >"$work/out" 2>"$work/err"
    local code=$?
    if [ "$code" -ne "$expected" ]; then
        echo "FAIL $name: exit $code, expected $expected"; cat "$work/err"; failures=$((failures + 1))
    fi
}
