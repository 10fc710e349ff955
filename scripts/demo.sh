#!/usr/bin/env bash
# Installs what is missing, builds, and converts the example project: a folder
# of CSV files into an SQLite database.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh
build=${KETROVA_BUILD_DIR:-build}
if [ -f examples/demo/demo.cpf ]; then
  "$build/apps/ketrova/ketrova" run examples/demo/demo.cpf --yes
else
  echo "demo: the example project is not there yet; ketrova --help shows what the tool can do:"
  "$build/apps/ketrova/ketrova" --help
fi
