#!/usr/bin/env bash
# Renders Ketrova's windows offscreen into PNG files for review and for the
# README: kor on the demo project, started as a user would start it in a copy
# of examples/demo, with a fresh home folder so that the first start's seeding
# shows. Writes docs/images/kor.png (or into the folder given as $1), and
# each document of the navigator into its documents/ subfolder, and each
# dialog (every page of the data-store dialog) into dialogs/.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh >/dev/null
build=$(cd "${KETROVA_BUILD_DIR:-build}" && pwd)
out=$(mkdir -p "${1:-docs/images}" && cd "${1:-docs/images}" && pwd)

work=$build/screenshots
rm -rf "$work"
mkdir -p "$work/home" "$work/demo"
cp -r examples/demo/. "$work/demo"
cd "$work/demo"
run_kor() {
  HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_DATA_HOME=$work/home/data \
    QT_QPA_PLATFORM=offscreen "$build/apps/kor/kor" "$@"
}
run_kor --grab "$out/kor.png" demo.cpf
mkdir -p "$out/documents"
run_kor --grab-documents "$out/documents" demo.cpf >/dev/null
mkdir -p "$out/dialogs"
run_kor --grab-dialogs "$out/dialogs" demo.cpf >/dev/null
echo "screenshots: $out/kor.png, $out/documents/, $out/dialogs/"
