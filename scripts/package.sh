#!/usr/bin/env bash
# Makes the Debian package build/ketrova_VERSION_amd64.deb (or in
# $KETROVA_BUILD_DIR) from the build: builds what the package holds, then
# lets CPack install it into a staging folder and pack it.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${KETROVA_BUILD_DIR:-build}
if [ ! -f "$build/CMakeCache.txt" ]; then
  scripts/install-deps.sh
  scripts/build.sh
fi
cmake --build "$build" -j "$(nproc)" --target ketrova kor ketrovator ketrova_package_files
build=$(cd "$build" && pwd)
cd "$build"
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$build"
ls "$build"/ketrova_*.deb
