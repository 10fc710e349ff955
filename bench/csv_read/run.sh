#!/usr/bin/env bash
# Reads a 1,000,000-line CSV of 10 columns through the text provider, beside
# sqlite3's .import of the same file, and reads a tenth of it too, to show that
# the provider's memory does not grow with the file.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${KETROVA_BUILD_DIR:-build}
lines=${CSV_READ_LINES:-1000000}
work=$(mktemp -d "${TMPDIR:-/tmp}/ketrova-csv-read-XXXXXX")
trap 'rm -rf "$work"' EXIT

cmake --build "$build" --target ketrova_file_engine >/dev/null
c++ -std=c++20 -O2 -Isrc bench/csv_read/csv_read.cpp \
  "$build/src/platform/ado/file_engine/libketrova_file_engine.a" \
  "$build/src/platform/ado/libketrova_ado.a" \
  "$build/src/support/libketrova_support.a" \
  $(pkg-config --libs sqlite3 odbc odbcinst uuid) -o "$work/csv_read"

make_csv() {  # lines file
  awk -v n="$1" 'BEGIN {
    printf "Nr;Name;Ort;PLZ;Betrag;Datum;Menge;Notiz;Kennzeichen;Wert\r\n"
    for (i = 1; i <= n; i++)
      printf "%d;Kunde %d;\"Köln; Süd\";%05d;%d,%02d;%02d.%02d.20%02d;%d;\"sagt \"\"Grüß Gott\"\"\";K%d;%d.5\r\n",
        i, i, i % 100000, i % 10000, i % 100, i % 28 + 1, i % 12 + 1, i % 30, i % 97, i % 13, i
  }' > "$2"
}
make_csv "$lines" "$work/bench.csv"
make_csv "$((lines / 10))" "$work/small.csv"
echo "file: $lines lines, $(du -h "$work/bench.csv" | cut -f1)"

now() { date +%s.%N; }

provider=$("$work/csv_read" "$work" bench.csv)
small=$("$work/csv_read" "$work" small.csv)
t0=$(now)
sqlite3 :memory: ".mode csv" ".separator ;" ".import $work/bench.csv t" "SELECT count(*) FROM t;" >/dev/null
t1=$(now)

p_sec=$(sed -E 's/.*seconds=([0-9.]+).*/\1/' <<<"$provider")
p_rss=$(sed -E 's/.*max_rss_kb=([0-9]+).*/\1/' <<<"$provider")
s_rss=$(sed -E 's/.*max_rss_kb=([0-9]+).*/\1/' <<<"$small")
# Arithmetic in awk, which every Debian has (bc is not installed by default).
calc() { awk "BEGIN { printf \"$1\", $2 }"; }
i_sec=$(calc %.3f "$t1 - $t0")
echo "text provider:  $provider"
echo "tenth of it:    $small"
echo "sqlite3 .import: seconds=$i_sec"
echo "ratio provider / .import: $(calc %.2f "$p_sec / $i_sec")"
echo "memory, full file / tenth: $(calc %.2f "$p_rss / $s_rss")"
