#!/usr/bin/env bash
# Runs the benchmarks in bench/, each beside a peer tool measured in the same
# run, and prints their ratios. Never part of the tests.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
build=${KETROVA_BUILD_DIR:-build}
shopt -s nullglob
for b in bench/*/run.sh; do
  echo "== $(basename "$(dirname "$b")")"
  KETROVA_BUILD_DIR="$build" bash "$b"
done
