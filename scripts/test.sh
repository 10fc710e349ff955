#!/usr/bin/env bash
# The test command: installs what is missing, builds, starts throwaway database
# servers on loopback, runs every test. Its exit status is the verdict.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
scripts/build.sh
build=${KETROVA_BUILD_DIR:-build}

# Servers for the tests labelled "server", stopped again however the tests end.
if [ -x scripts/test-servers.sh ]; then
  # shellcheck source=/dev/null
  source scripts/test-servers.sh
  trap stop_test_servers EXIT
  start_test_servers
fi

ctest --test-dir "$build" --output-on-failure -j "$(nproc)" --timeout 600
