// libFuzzer harness for the VBScript front end: any text must come back as
// tokens, a tree and compiled code, or as a compile error with a position.
// Nothing is run, so a text with an endless loop does not stall the fuzzer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/script/engine.h"
#include "platform/script/vbscript/compiler.h"
#include "platform/script/vbscript/parser.h"
#include "platform/script/vbscript/program.h"
#include "platform/script/vbscript/scanner.h"

using namespace ketrova::script;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    vbscript::Scan(text);
  } catch (const ScriptError& e) {
    if (e.Line < 1 || e.Column < 1) std::abort();
  }
  try {
    vbscript::Module module;
    module.name = "Global";
    std::vector<vbscript::HostObject> hosts;
    vbscript::CompileScope scope{&module, &hosts, nullptr, nullptr};
    vbscript::CompileText(vbscript::ParseText(text), scope);
  } catch (const ScriptError& e) {
    if (e.Line < 1 || e.Column < 1) std::abort();
  }
  try {
    vbscript::ParseExpression(text);
  } catch (const ScriptError& e) {
    if (e.Line < 1 || e.Column < 1) std::abort();
  }
  return 0;
}
