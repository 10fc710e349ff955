// The JScript loop rewrite on any text: whatever Duktape compiles must still
// compile after the checks went in, with the same number of lines.
#include <duktape.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/script/jscript/js_loop_checks.h"

namespace {

bool Compiles(duk_context* ctx, const std::string& code) {
  bool ok = duk_pcompile_lstring(ctx, 0, code.data(), code.size()) == 0;
  duk_pop(ctx);
  return ok;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static duk_context* ctx = duk_create_heap_default();
  std::string code(reinterpret_cast<const char*>(data), size);
  if (!Compiles(ctx, code)) return 0;
  std::string checked = ketrova::script::jscript::InsertLoopChecks(code, "__check", "__turns");
  bool sameLines = std::count(code.begin(), code.end(), '\n') ==
                   std::count(checked.begin(), checked.end(), '\n');
  if (!sameLines || !Compiles(ctx, checked)) {
    std::fprintf(stderr, "rewrite broke the text:\n%s\n---\n%s\n", code.c_str(), checked.c_str());
    std::abort();
  }
  return 0;
}
