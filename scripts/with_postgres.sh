#!/usr/bin/env bash
# Runs a command beside a throwaway PostgreSQL server of its own:
#   scripts/with_postgres.sh COMMAND [ARGS...]
# The server lives in a temporary folder, listens on a unix socket in that folder only, and holds one
# empty database; ZANDOREL_TEST_PG names it for the command. The server is stopped and the folder
# removed whatever happens, and the command's exit status is the script's.
set -euo pipefail
if [ $# -eq 0 ]; then
    echo "usage: $0 COMMAND [ARGS...]" >&2
    exit 2
fi

bin=${ZANDOREL_PG_BIN:-}
if [ -z "$bin" ]; then
    bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
fi
if [ -z "$bin" ] || [ ! -x "$bin/initdb" ]; then
    echo "PostgreSQL server programs not found (Debian package postgresql; see scripts/deps.sh)" >&2
    exit 1
fi

# initdb refuses to run as root: the server then runs as the postgres user, or one made for it.
run_as=()
owner=""
if [ "$(id -u)" -eq 0 ]; then
    owner=postgres
    if ! id "$owner" >/dev/null 2>&1; then
        owner=zandorel-pg
        id "$owner" >/dev/null 2>&1 || useradd --system --no-create-home --shell /usr/sbin/nologin "$owner"
    fi
    run_as=(runuser -u "$owner" --)
fi

dir=$(mktemp -d "${TMPDIR:-/tmp}/zandorel-pg.XXXXXX")
server_started=0
cleanup() {
    if [ "$server_started" -eq 1 ]; then
        "${run_as[@]}" "$bin/pg_ctl" stop -D "$dir/data" -m immediate -s >/dev/null 2>&1 || true
    fi
    rm -rf "$dir"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Every user may reach the socket; only the owner may read the data.
chmod 755 "$dir"
mkdir "$dir/data"
if [ -n "$owner" ]; then chown "$owner" "$dir" "$dir/data"; fi

superuser=zandorel
database=zandorel_test
"${run_as[@]}" "$bin/initdb" -D "$dir/data" -U "$superuser" -A trust -E UTF8 --locale=C.UTF-8 \
    --no-sync >"$dir/initdb.log" 2>&1 || { cat "$dir/initdb.log" >&2; exit 1; }
# A throwaway server needs no durability: fsync off makes the test runs faster.
server_options="-k $dir -c listen_addresses= -c fsync=off"
server_started=1
"${run_as[@]}" "$bin/pg_ctl" start -D "$dir/data" -l "$dir/server.log" -w -s -o "$server_options" ||
    { cat "$dir/server.log" >&2; exit 1; }
"$bin/createdb" -h "$dir" -U "$superuser" "$database"

export ZANDOREL_TEST_PG="postgresql:///$database?host=$dir&user=$superuser"
set +e
"$@"
status=$?
set -e
exit "$status"
