#!/usr/bin/env bash
# Installs what is missing, builds, and converts the example project: a folder
# of CSV files (customers and orders) into a new SQLite database through the
# SQLite3 ODBC driver. The project names its folder and database relative to
# itself, so it runs in a fresh copy under the build folder; the source tree
# stays clean. Then shows the run's log and a few converted rows.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh
build=${KETROVA_BUILD_DIR:-build}
ketrova=$(cd "$build" && pwd)/apps/ketrova/ketrova
work=$build/demo
rm -rf "$work"
mkdir -p "$work"
cp -r examples/demo/. "$work"
cd "$work"

status=0
"$ketrova" run demo.cpf --yes || status=$?

# A failed run has printed its log already.
if [ "$status" -eq 0 ] && [ -f demo.LOG ]; then
  echo
  echo "== Protokoll $work/demo.LOG"
  tr -d '\r' <demo.LOG
fi
if [ -f demo.sqlite ]; then
  echo "== Kunden in $work/demo.sqlite (K1003 ist umgezogen: die zweite Zeile hat die erste aktualisiert)"
  sqlite3 -header -column demo.sqlite \
    "SELECT KundenNr, Name, Vorname, PLZ, Ort, Kreditlimit FROM Kunden ORDER BY KundenNr" || true
  echo "== Auftraege (DM in Euro umgerechnet)"
  sqlite3 -header -column demo.sqlite \
    "SELECT AuftragNr, KundenNr, Datum, Artikel, Betrag, Waehrung, Status FROM Auftraege ORDER BY AuftragNr" || true
fi
exit "$status"
