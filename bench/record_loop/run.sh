#!/usr/bin/env bash
# Records per second of the engine's write pattern (record_loop.cpp) on SQLite
# and PostgreSQL, beside sqlite3 .import and psql \copy of the same rows.
# KETROVA_BENCH_RECORDS sets the number of records (100000).
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${KETROVA_BUILD_DIR:-build}
records=${KETROVA_BENCH_RECORDS:-100000}
work=$(mktemp -d "${TMPDIR:-/tmp}/ketrova-bench.XXXXXX")
servers_started=
cleanup() {
  [ -n "$servers_started" ] && stop_test_servers
  rm -rf "$work"
}
trap cleanup EXIT

# The benchmark links against the record-access library of the build.
c++ -std=c++20 -O2 -Isrc bench/record_loop/record_loop.cpp -o "$work/record_loop" \
  "$build/src/platform/ado/libketrova_ado.a" "$build/src/support/libketrova_support.a" \
  $(pkg-config --libs odbc odbcinst sqlite3 uuid)
"$work/record_loop" --csv "$work/rows.csv" "$records"

now() { date +%s.%N; }
rate() { awk -v n="$records" -v a="$1" -v b="$2" 'BEGIN { printf "%d", n / (b - a) }'; }
report() {  # store, loop rate, peer name, peer rate
  PEER=$3 awk -v s="$1" -v l="$2" -v r="$4" \
    'BEGIN { printf "%-11s record loop %8d rec/s   %-15s %9d rec/s   ratio %.3f\n", s, l, ENVIRON["PEER"], r, l / r }'
}
table_sql="CREATE TABLE T (ID INTEGER NOT NULL PRIMARY KEY, Name VARCHAR(40), Vorname VARCHAR(40),
  Strasse VARCHAR(60), PLZ VARCHAR(10), Ort VARCHAR(40), Betrag DECIMAL(10,2), Menge INTEGER,
  Faktor DOUBLE PRECISION, Datum DATE)"

echo "$records records"

# SQLite.
loop=$("$work/record_loop" "Driver={SQLite3};Database=$work/loop.db" "$records")
t0=$(now)
sqlite3 "$work/import.db" "$table_sql;" ".mode csv" ".import $work/rows.csv T"
t1=$(now)
report SQLite "$loop" "sqlite3 .import" "$(rate "$t0" "$t1")"

# PostgreSQL, on the throwaway server of the tests unless one is set up.
if [ -z "${KETROVA_TEST_PG:-}" ]; then
  # shellcheck source=/dev/null
  source scripts/test-servers.sh
  start_test_servers
  servers_started=1
fi
if [ -n "${KETROVA_TEST_PG:-}" ]; then
  loop=$("$work/record_loop" "Provider=MSDASQL.1;Data Source=ketrova_pg" "$records")
  psql_args=(-h 127.0.0.1 -p "${KETROVA_PG_PORT:?}" -U ketrova -d ketrova_test -q)
  psql "${psql_args[@]}" -c "SET client_min_messages = warning; DROP TABLE IF EXISTS T; $table_sql"
  t0=$(now)
  psql "${psql_args[@]}" -c "\\copy T FROM '$work/rows.csv' WITH (FORMAT csv)"
  t1=$(now)
  report PostgreSQL "$loop" "psql \\copy" "$(rate "$t0" "$t1")"
else
  echo "PostgreSQL: no server, skipped"
fi
