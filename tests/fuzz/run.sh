#!/usr/bin/env bash
# Fuzzes the VBScript scanner, parser and compiler, seeded with the test
# corpus. Usage: tests/fuzz/run.sh [seconds]   (default 300)
# Findings land in build-fuzz/findings; keep each crasher as a regression
# case in tests/fuzz/regressions/ (a test runs each one).
set -euo pipefail
cd "$(dirname "$0")/../.."
seconds=${1:-300}
build=build-fuzz
flags="-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -g -O1"
cmake -S . -B "$build" -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_BUILD_TYPE=Debug -DKETROVA_FUZZ=ON -DKETROVA_WERROR=OFF \
  "-DCMAKE_C_FLAGS=$flags" "-DCMAKE_CXX_FLAGS=$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" >/dev/null
cmake --build "$build" -j2 --target vbscript_fuzz
mkdir -p "$build/corpus" "$build/findings"
seeds=(tests/platform/script/vbscript/corpus)
[ -d tests/fuzz/regressions ] && seeds+=(tests/fuzz/regressions)
exec "$build/tests/fuzz/vbscript_fuzz" -max_total_time="$seconds" -max_len=4096 -timeout=5 \
  -rss_limit_mb=2048 -artifact_prefix="$build/findings/" "$build/corpus" "${seeds[@]}"
