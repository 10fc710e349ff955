#!/usr/bin/env bash
# Configures and builds Ketrova into build/ (or $KETROVA_BUILD_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${KETROVA_BUILD_DIR:-build}
generator=()
if command -v ninja >/dev/null; then generator=(-G Ninja); fi
# ccache, where installed, shares objects between checkouts of the same tree.
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
  export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$(cd .. && pwd)} CCACHE_NOHASHDIR=1
fi
if [ -f "$build/CMakeCache.txt" ]; then
  # Configure again so that folders added since are picked up.
  cmake -S . -B "$build" "${launcher[@]}" >/dev/null
else
  cmake -S . -B "$build" "${generator[@]}" "${launcher[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build "$build" -j "$(nproc)"
