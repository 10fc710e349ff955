#!/usr/bin/env bash
# Configures and builds Ketrova into build/ (or $KETROVA_BUILD_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${KETROVA_BUILD_DIR:-build}
generator=()
if command -v ninja >/dev/null; then generator=(-G Ninja); fi
if [ -f "$build/CMakeCache.txt" ]; then
  # Configure again so that folders added since are picked up.
  cmake -S . -B "$build" >/dev/null
else
  cmake -S . -B "$build" "${generator[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build "$build" -j "$(nproc)"
