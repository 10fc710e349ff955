#!/usr/bin/env bash
# Conversion benchmark: a CSV file of BENCH_ROWS people (10 columns) converted
# into a new SQLite database by insert.cpf (generated script, table created,
# plain insert), then BENCH_UPDATE_ROWS of them updated by key with
# update.cpf. Each is timed beside sqlite3 and ogr2ogr on the same file, with
# the peak memory of every process. Ketrova's insert also runs on a tenth of
# the rows: its peak memory must not grow with the number of records.
#
# Sizes: BENCH_ROWS (default 1000000), BENCH_UPDATE_ROWS (default 100000),
# BENCH_SMALL_ROWS (default BENCH_ROWS / 10). Work folder:
# $KETROVA_BUILD_DIR/bench-convert.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
build=${KETROVA_BUILD_DIR:-build}
ketrova=$(cd "$build" && pwd)/apps/ketrova/ketrova
rows=${BENCH_ROWS:-1000000}
update_rows=${BENCH_UPDATE_ROWS:-100000}
small_rows=${BENCH_SMALL_ROWS:-$((rows / 10))}
work=$(mkdir -p "$build/bench-convert" && cd "$build/bench-convert" && pwd)

# The peers, installed here only: the tests do not need them.
need=()
command -v ogr2ogr >/dev/null || need+=(gdal-bin)
[ -x /usr/bin/time ] || need+=(time)
command -v sqlite3 >/dev/null || need+=(sqlite3)
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
measure "ketrova update ($update_rows)" "$work/full" "$ketrova" run update.cpf --quiet --yes
measure "sqlite3 update ($update_rows)" "$work/full" sqlite3 sqlite3.sqlite \
  ".separator ;" ".import daten/aenderungen.csv Aenderungen" \
  "UPDATE Personen SET Name = a.Name, Vorname = a.Vorname, Strasse = a.Strasse, PLZ = a.PLZ, Ort = a.Ort,
     Geburtstag = a.Geburtstag, Umsatz = a.Umsatz, Menge = a.Menge, Status = a.Status
   FROM Aenderungen a WHERE Personen.Nr = a.Nr"

# What each target holds afterwards: rows, and rows carrying the update.
echo
for db in ketrova sqlite3 ogr2ogr; do
  f="$work/full/$db.sqlite"
  [ -f "$f" ] || continue
  printf '  %-8s rows %s, updated %s\n' "$db" \
    "$(sqlite3 "$f" 'SELECT COUNT(*) FROM Personen' 2>/dev/null || echo '?')" \
    "$(sqlite3 "$f" "SELECT COUNT(*) FROM Personen WHERE Status = 'geändert'" 2>/dev/null || echo '?')"
done

echo
# Wall seconds suffer from other work on a shared machine; CPU seconds (user
# and system) do less.
printf '%-32s %10s %10s %10s %12s\n' "run" "seconds" "CPU s" "peak MB" "rows/s"
base_insert="" base_update="" cpu_insert="" cpu_update=""
for r in "${results[@]}"; do
  IFS='|' read -r label secs mb cpu <<<"$r"
  n=$(sed -E 's/.*\(([0-9]+)\).*/\1/' <<<"$label")
  rate="-"
  if [ "$secs" != failed ]; then rate=$(awk -v n="$n" -v s="$secs" 'BEGIN {printf "%.0f", (s > 0 ? n / s : 0)}'); fi
  printf '%-32s %10s %10s %10s %12s\n' "$label" "$secs" "$cpu" "$mb" "$rate"
  case "$label" in
    "ketrova insert ($rows)") base_insert=$secs cpu_insert=$cpu ;;
    "ketrova update"*) base_update=$secs cpu_update=$cpu ;;
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
    sqlite3\ update*)
      if [ -n "$base_update" ] && [ "$base_update" != failed ]; then
        ratio update "$base_update" "$cpu_update" "$label" "$secs" "$cpu"
      fi ;;
  esac
done
exit 0
