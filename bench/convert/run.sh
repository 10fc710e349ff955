#!/usr/bin/env bash
# Conversion benchmark: a CSV file of BENCH_ROWS people (10 columns) converted
# into a new SQLite database by insert.cpf (generated script, table created,
# plain insert), then BENCH_UPDATE_ROWS of them updated by key with
# update.cpf. Each is timed beside sqlite3 and ogr2ogr on the same file, with
# the peak memory of every process; the update also beside bare_update.py,
# a Python loop of just the SELECT and UPDATE per row (SQLite's own share). Ketrova's insert also runs on a tenth of
# the rows: its peak memory must not grow with the number of records. Then
# BENCH_PG_ROWS of the people go into a throwaway PostgreSQL server
# (scripts/test-servers.sh) beside ogr2ogr, psql's \copy and bare_insert_pg.c
# (one prepared INSERT per row through libpq, the round trips alone); their
# CPU is the client's and the server's together.
#
# Everything runs BENCH_ROUNDS times (default 2), the tools taking turns, and
# each figure is the best of its rounds: on a shared virtual machine a run
# can be half again as slow as the one before, which a single round would
# put into the ratios.
#
# Sizes: BENCH_ROWS (default 1000000), BENCH_UPDATE_ROWS (default 100000),
# BENCH_SMALL_ROWS (default BENCH_ROWS / 10), BENCH_PG_ROWS (default 100000;
# 0 leaves PostgreSQL out). Work folder: $KETROVA_BUILD_DIR/bench-convert.
#
# On a loaded machine CPU seconds wander too; instruction counts do not. To
# compare those, run each tool under `valgrind --tool=callgrind` in a folder
# made as prepare() makes one, at two sizes (say 10,000 and 20,000 rows), and
# divide the differences by the difference in rows: that leaves out each
# tool's start-up. Ketrova with grouping off (--no-grouping) shows what the
# commit per record costs.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
build=${KETROVA_BUILD_DIR:-build}
ketrova=$(cd "$build" && pwd)/apps/ketrova/ketrova
rows=${BENCH_ROWS:-1000000}
update_rows=${BENCH_UPDATE_ROWS:-100000}
pg_rows=${BENCH_PG_ROWS:-100000}
small_rows=${BENCH_SMALL_ROWS:-$((rows / 10))}
rounds=${BENCH_ROUNDS:-2}
work=$(mkdir -p "$build/bench-convert" && cd "$build/bench-convert" && pwd)

# The peers, installed here only: the tests do not need them.
need=()
command -v ogr2ogr >/dev/null || need+=(gdal-bin)
[ -x /usr/bin/time ] || need+=(time)
command -v sqlite3 >/dev/null || need+=(sqlite3)
command -v psql >/dev/null || need+=(postgresql-client)
pkg-config --exists libpq 2>/dev/null || need+=(libpq-dev)
if [ ${#need[@]} -gt 0 ]; then
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
  echo "bench: installing ${need[*]}"
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${need[@]}"
fi

# A folder with the data and the projects; the projects name "daten" and
# "ketrova.sqlite" relative to themselves.
prepare() {  # folder rows
  rm -rf "$1"
  mkdir -p "$1/daten"
  cp "$here/insert.cpf" "$here/update.cpf" "$1/"
  cp "$here/schema.ini" "$1/daten/"
  awk -v rows="$2" -f "$here/make_csv.awk" >"$1/daten/personen.csv"
}

results=()
# Runs a command in a folder; records seconds and peak memory (MB).
measure() {  # label folder command...
  local label=$1 dir=$2
  shift 2
  local start end
  start=$(date +%s.%N)
  if ! (cd "$dir" && /usr/bin/time -v -o "$work/time.txt" "$@" >"$work/out.txt" 2>"$work/err.txt"); then
    echo "bench: $label failed:" >&2
    tail -n 20 "$work/err.txt" "$work/out.txt" >&2
    results+=("$label|failed|")
    return 0
  fi
  end=$(date +%s.%N)
  local kb cpu
  kb=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$work/time.txt")
  cpu=$(awk -F': ' '/User time|System time/ {s += $2} END {printf "%.2f", s}' "$work/time.txt")
  # A server's part of the work, where one served the command.
  if [ -n "${server_cpu_before:-}" ]; then
    cpu=$(awk -v a="$cpu" -v b="$server_cpu_before" -v c="$(server_cpu)" 'BEGIN {printf "%.2f", a + c - b}')
  fi
  results+=("$label|$(awk -v a="$start" -v b="$end" 'BEGIN {printf "%.2f", b - a}')|$((kb / 1024))|$cpu")
  echo "  $label: done"
}

echo "bench: $rows rows, update of $update_rows, memory check on $small_rows (in $work)"
prepare "$work/small" "$small_rows"
prepare "$work/full" "$rows"
step=$((rows / update_rows))
[ "$step" -ge 1 ] || step=1
awk -v rows="$update_rows" -v first=1 -v step="$step" -v status=geändert \
  -f "$here/make_csv.awk" >"$work/full/daten/aenderungen.csv"

for round in $(seq "$rounds"); do
  rm -f "$work/small/"*.sqlite* "$work/full/"*.sqlite*
  measure "ketrova insert ($small_rows)" "$work/small" "$ketrova" run insert.cpf --quiet --yes
  measure "ketrova insert ($rows)" "$work/full" "$ketrova" run insert.cpf --quiet --yes
  measure "sqlite3 .import ($rows)" "$work/full" sqlite3 sqlite3.sqlite \
    ".separator ;" ".import daten/personen.csv Personen"
  measure "ogr2ogr ($rows)" "$work/full" ogr2ogr -f SQLite ogr2ogr.sqlite daten/personen.csv \
    -nln Personen

  # The update looks each row up by Nr: every target gets the same index.
  # ogr2ogr has no update by key into SQLite (its -upsert serves GeoPackage),
  # so the update is compared with sqlite3 alone.
  for db in ketrova.sqlite sqlite3.sqlite ogr2ogr.sqlite; do
    [ -f "$work/full/$db" ] && sqlite3 "$work/full/$db" "CREATE UNIQUE INDEX Personen_Nr ON Personen (Nr)" || true
  done
  # The bare loop works on a copy of ketrova's table as it was before the update.
  cp "$work/full/ketrova.sqlite" "$work/full/bare.sqlite"
  measure "ketrova update ($update_rows)" "$work/full" "$ketrova" run update.cpf --quiet --yes
  measure "sqlite3 update ($update_rows)" "$work/full" sqlite3 sqlite3.sqlite \
    ".separator ;" ".import daten/aenderungen.csv Aenderungen" \
    "UPDATE Personen SET Name = a.Name, Vorname = a.Vorname, Strasse = a.Strasse, PLZ = a.PLZ, Ort = a.Ort,
       Geburtstag = a.Geburtstag, Umsatz = a.Umsatz, Menge = a.Menge, Status = a.Status
     FROM Aenderungen a WHERE Personen.Nr = a.Nr"
  measure "bare SQLite update loop ($update_rows)" "$work/full" /usr/bin/python3 "$here/bare_update.py" \
    bare.sqlite daten/aenderungen.csv
done

# PostgreSQL: the people into a server of their own, by ketrova (insert.cpf
# with the data source ketrova_pg as target), ogr2ogr and psql's \copy.
server_cpu() {  # seconds of CPU the PostgreSQL server and its ended backends used
  local pid
  pid=$(head -1 "$KETROVA_SERVERS_DIR/pg/data/postmaster.pid")
  awk -v hz="$(getconf CLK_TCK)" '{printf "%.2f", ($14 + $15 + $16 + $17) / hz}' "/proc/$pid/stat"
}
if [ "$pg_rows" -gt 0 ]; then
  # shellcheck source=../../scripts/test-servers.sh
  source scripts/test-servers.sh
  start_test_servers >/dev/null 2>&1 || true
  trap stop_test_servers EXIT
  if [ -n "${KETROVA_TEST_PG:-}" ]; then
    pg="psql -h 127.0.0.1 -p $KETROVA_PG_PORT -U $KETROVA_TEST_USER -d $KETROVA_TEST_DB -q"
    prepare "$work/pg" "$pg_rows"
    sed -e 's/DATABASETYPE="9" DATABASEDIRECTION="2" CONNECTIONSTRING="[^"]*" DATASOURCENAME=""/DATABASETYPE="9" DATABASEDIRECTION="2" CONNECTIONSTRING="" DATASOURCENAME="ketrova_pg"/' \
      -e 's/DATABASENAME="ketrova.sqlite" DRIVERNAME="SQLite3"/DATABASENAME="" DRIVERNAME=""/' \
      "$here/insert.cpf" >"$work/pg/insert.cpf"
    # One round trip per row and nothing else, through libpq itself.
    cc -O2 -o "$work/bare_insert_pg" "$here/bare_insert_pg.c" $(pkg-config --cflags --libs libpq)
    for round in $(seq "$rounds"); do
      $pg -c 'DROP TABLE IF EXISTS "Personen", personen_ogr, personen_copy, personen_bare' 2>/dev/null
      server_cpu_before=$(server_cpu)
      measure "ketrova into PostgreSQL ($pg_rows)" "$work/pg" "$ketrova" run insert.cpf --quiet --yes
      server_cpu_before=$(server_cpu)
      measure "ogr2ogr into PostgreSQL ($pg_rows)" "$work/pg" ogr2ogr -f PostgreSQL \
        "PG:host=127.0.0.1 port=$KETROVA_PG_PORT user=$KETROVA_TEST_USER dbname=$KETROVA_TEST_DB" \
        daten/personen.csv -nln personen_ogr
      $pg -c "CREATE TABLE personen_copy (Nr INTEGER, Name VARCHAR(40), Vorname VARCHAR(40),
        Strasse VARCHAR(60), PLZ VARCHAR(5), Ort VARCHAR(40), Geburtstag VARCHAR(10),
        Umsatz VARCHAR(20), Menge INTEGER, Status VARCHAR(10))"
      server_cpu_before=$(server_cpu)
      measure "psql copy into PostgreSQL ($pg_rows)" "$work/pg" $pg \
        -c "\\copy personen_copy FROM 'daten/personen.csv' WITH (FORMAT csv, DELIMITER ';', HEADER)"
      $pg -c "CREATE TABLE personen_bare (LIKE personen_copy)"
      server_cpu_before=$(server_cpu)
      measure "bare libpq insert loop ($pg_rows)" "$work/pg" "$work/bare_insert_pg" \
        "host=127.0.0.1 port=$KETROVA_PG_PORT user=$KETROVA_TEST_USER dbname=$KETROVA_TEST_DB" \
        personen_bare daten/personen.csv
    done
    unset server_cpu_before
    echo
    printf '  PostgreSQL rows: ketrova %s, ogr2ogr %s, psql %s, bare loop %s\n' \
      "$($pg -At -c 'SELECT COUNT(*) FROM "Personen"' 2>/dev/null || echo '?')" \
      "$($pg -At -c 'SELECT COUNT(*) FROM personen_ogr' 2>/dev/null || echo '?')" \
      "$($pg -At -c 'SELECT COUNT(*) FROM personen_copy' 2>/dev/null || echo '?')" \
      "$($pg -At -c 'SELECT COUNT(*) FROM personen_bare' 2>/dev/null || echo '?')"
  else
    echo "bench: no PostgreSQL server, its part is left out" >&2
  fi
fi

# What each target holds afterwards: rows, and rows carrying the update.
echo
for db in ketrova sqlite3 bare ogr2ogr; do
  f="$work/full/$db.sqlite"
  [ -f "$f" ] || continue
  printf '  %-8s rows %s, updated %s\n' "$db" \
    "$(sqlite3 "$f" 'SELECT COUNT(*) FROM Personen' 2>/dev/null || echo '?')" \
    "$(sqlite3 "$f" "SELECT COUNT(*) FROM Personen WHERE Status = 'geändert'" 2>/dev/null || echo '?')"
done

echo
# Wall seconds suffer from other work on a shared machine; CPU seconds (user
# and system) do less.
# The best of the rounds per run: least seconds, least CPU, most memory.
mapfile -t results < <(printf '%s\n' "${results[@]}" | awk -F'|' '
  !($1 in secs) { order[++n] = $1; secs[$1] = $2; mb[$1] = $3; cpu[$1] = $4; next }
  $2 == "failed" || secs[$1] == "failed" { secs[$1] = "failed"; next }
  { if ($2 + 0 < secs[$1] + 0) secs[$1] = $2
    if ($4 + 0 < cpu[$1] + 0) cpu[$1] = $4
    if ($3 + 0 > mb[$1] + 0) mb[$1] = $3 }
  END { for (i = 1; i <= n; i++) print order[i] "|" secs[order[i]] "|" mb[order[i]] "|" cpu[order[i]] }')
echo "best of $rounds rounds:"
printf '%-32s %10s %10s %10s %12s\n' "run" "seconds" "CPU s" "peak MB" "rows/s"
base_insert="" base_update="" cpu_insert="" cpu_update="" base_pg="" cpu_pg=""
for r in "${results[@]}"; do
  IFS='|' read -r label secs mb cpu <<<"$r"
  n=$(sed -E 's/.*\(([0-9]+)\).*/\1/' <<<"$label")
  rate="-"
  if [ "$secs" != failed ]; then rate=$(awk -v n="$n" -v s="$secs" 'BEGIN {printf "%.0f", (s > 0 ? n / s : 0)}'); fi
  printf '%-32s %10s %10s %10s %12s\n' "$label" "$secs" "$cpu" "$mb" "$rate"
  case "$label" in
    "ketrova insert ($rows)") base_insert=$secs cpu_insert=$cpu ;;
    "ketrova update"*) base_update=$secs cpu_update=$cpu ;;
    "ketrova into PostgreSQL"*) base_pg=$secs cpu_pg=$cpu ;;
  esac
done
echo
echo "Ratios, ketrova / peer (wall seconds, CPU seconds):"
ratio() {  # what ketrova-wall ketrova-cpu peer-label peer-wall peer-cpu
  awk -v w="$1" -v k="$2" -v c="$3" -v l="$4" -v pw="$5" -v pc="$6" \
    'BEGIN {printf "  %s vs %-28s %8.1f %8.1f\n", w, l, (pw > 0 ? k / pw : 0), (pc > 0 ? c / pc : 0)}'
}
for r in "${results[@]}"; do
  IFS='|' read -r label secs mb cpu <<<"$r"
  [ "$secs" != failed ] || continue
  case "$label" in
    sqlite3\ .import* | ogr2ogr\ \(*)
      if [ -n "$base_insert" ] && [ "$base_insert" != failed ]; then
        ratio insert "$base_insert" "$cpu_insert" "$label" "$secs" "$cpu"
      fi ;;
    sqlite3\ update* | bare\ SQLite\ update*)
      if [ -n "$base_update" ] && [ "$base_update" != failed ]; then
        ratio update "$base_update" "$cpu_update" "$label" "$secs" "$cpu"
      fi ;;
    "ogr2ogr into PostgreSQL"* | "psql copy into PostgreSQL"* | "bare libpq insert"*)
      if [ -n "$base_pg" ] && [ "$base_pg" != failed ]; then
        ratio postgres "$base_pg" "$cpu_pg" "$label" "$secs" "$cpu"
      fi ;;
  esac
done
# The update against ketrova's own insert rate (the target: at least half).
if [ -n "$base_update" ] && [ "$base_update" != failed ] && [ -n "$base_insert" ]; then
  awk -v u="$update_rows" -v us="$base_update" -v i="$rows" -v is="$base_insert" \
    'BEGIN {printf "  update rate / insert rate %22.2f\n", (us > 0 && is > 0 ? (u / us) / (i / is) : 0)}'
fi
exit 0
