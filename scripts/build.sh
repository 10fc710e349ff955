#!/usr/bin/env bash
# Configures and builds Ketrova into build/ (or $KETROVA_BUILD_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${KETROVA_BUILD_DIR:-build}
generator=()
if command -v ninja >/dev/null; then generator=(-G Ninja); fi
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" "${generator[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build "$build" -j "$(nproc)"
