#!/usr/bin/env bash
# Calls the generated conversion function with ten field assignments 1,000,000
# times: in VBScript on our interpreter, in JScript on Duktape, both through
# the script engine on bound in-memory record sets, and in Python 3.
set -euo pipefail
cd "$(dirname "$0")/../.."
build=${KETROVA_BUILD_DIR:-build}
calls=${VBSCRIPT_BENCH_CALLS:-1000000}
work=$(mktemp -d "${TMPDIR:-/tmp}/ketrova-vbscript-XXXXXX")
trap 'rm -rf "$work"' EXIT

cmake --build "$build" --target ketrova_script ketrova_file_providers >/dev/null
c++ -std=c++20 -O2 -Isrc bench/vbscript/convert_bench.cpp \
  "$build/src/platform/script/libketrova_script.a" \
  "$build/src/platform/ui/libketrova_ui.a" \
  "$build/src/platform/ado/libketrova_file_providers.a" \
  "$build/src/platform/ado/providers/excel/libketrova_excel.a" \
  "$build/src/platform/ado/providers/access/libketrova_access.a" \
  "$build/src/platform/ado/providers/xbase/libketrova_xbase.a" \
  "$build/src/platform/ado/file_engine/libketrova_file_engine.a" \
  "$build/src/platform/ado/libketrova_ado.a" \
  "$build/src/support/libketrova_support.a" \
  $(pkg-config --libs duktape odbc odbcinst sqlite3 uuid libzip expat libgsf-1 libmdb pugixml) \
  -lshp -o "$work/convert_bench"

# Processor seconds: the machine may be busy with other work.
seconds() { sed -E 's/.*cpu_seconds=([0-9.]+).*/\1/' <<<"$1"; }
vb=$("$work/convert_bench" VBScript "$calls")
js=$("$work/convert_bench" JScript "$calls")
py=$(python3 bench/vbscript/convert_bench.py "$calls")
echo "$vb"
echo "$js"
echo "$py"
printf 'ratio VBScript / Duktape: %.2f\n' "$(echo "$(seconds "$vb") / $(seconds "$js")" | bc -l)"
printf 'ratio VBScript / Python: %.2f\n' "$(echo "$(seconds "$vb") / $(seconds "$py")" | bc -l)"
