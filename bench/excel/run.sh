#!/usr/bin/env bash
# Workbook benchmark: BENCH_ROWS people (the ten columns of bench/convert)
# written into one sheet of an .xlsx workbook by openpyxl, then converted by
# ketrova into a new SQLite database, beside the same rows from a CSV file;
# each with its time and peak memory. The workbook is converted once more
# with a tenth of the rows: the peak memory must not grow with the rows.
#
# Sizes: BENCH_ROWS (default 100000). Work folder: $KETROVA_BUILD_DIR/bench-excel.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
build=${KETROVA_BUILD_DIR:-build}
ketrova=$(cd "$build" && pwd)/apps/ketrova/ketrova
rows=${BENCH_ROWS:-100000}
work=$(mkdir -p "$build/bench-excel" && cd "$build/bench-excel" && pwd)

# A folder with the CSV file and the same rows in kunden.xlsx.
prepare() {  # folder rows
  rm -rf "$1"
  mkdir -p "$1/daten"
  awk -v rows="$2" -f "$here/../convert/make_csv.awk" >"$1/daten/personen.csv"
  (cd "$1" && /usr/bin/python3 - <<'PY'
import openpyxl
wb = openpyxl.Workbook(write_only=True)
ws = wb.create_sheet("Personen")
with open("daten/personen.csv", encoding="utf-8") as f:
    header = f.readline().rstrip("\n").split(";")
    ws.append(header)
    for line in f:
        v = line.rstrip("\n").split(";")
        ws.append([int(v[0])] + v[1:7] + [float(v[7].replace(",", ".")), int(v[8]), v[9]])
wb.save("personen.xlsx")
PY
  )
}

results=()
measure() {  # label folder command...
  local label=$1 dir=$2
  shift 2
  local start end
  start=$(date +%s.%N)
  (cd "$dir" && /usr/bin/time -v -o "$work/time.txt" "$@" >"$work/out.txt" 2>"$work/err.txt") || {
    echo "bench: $label failed" >&2
    tail -n 20 "$work/err.txt" "$work/out.txt" >&2
    return 1
  }
  end=$(date +%s.%N)
  local kb
  kb=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$work/time.txt")
  results+=("$(printf '%-34s %8.1f s %8.1f MB' "$label" "$(echo "$end - $start" | bc)" \
    "$(echo "scale=1; $kb / 1024" | bc)")")
}

convert() {  # label folder source-options
  local label=$1 dir=$2
  shift 2
  rm -f "$dir/ziel.sqlite" "$dir/p.cpf"
  (cd "$dir" && "$ketrova" new p.cpf --name Bench "$@" --dest odbc --dest-driver SQLite3 \
    --dest-database ziel.sqlite >/dev/null)
  measure "$label" "$dir" "$ketrova" run --quiet p.cpf --yes
  local count
  count=$(sqlite3 "$dir/ziel.sqlite" 'SELECT COUNT(*) FROM sqlite_master' 2>/dev/null || echo "?")
  [ "$count" != "0" ] || { echo "bench: $label wrote no table" >&2; return 1; }
}

prepare "$work/big" "$rows"
prepare "$work/small" "$((rows / 10))"
convert "xlsx -> SQLite, $rows rows" "$work/big" --source excel --source-file personen.xlsx
convert "CSV  -> SQLite, $rows rows" "$work/big" --source text --source-file daten
convert "xlsx -> SQLite, $((rows / 10)) rows" "$work/small" --source excel --source-file personen.xlsx
printf '%s\n' "${results[@]}"
