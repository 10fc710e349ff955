// libFuzzer harness for running scripts, built once per language
// (KETROVA_FUZZ_LANGUAGE "VBScript" or "JScript"): any text either runs or ends
// in a ScriptError, a VBScript one with its position; nothing crashes. A time
// limit ends endless loops. Texts that could reach outside the process
// (objects made by ProgID, which include the file system) or wait for a user
// are passed over.
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/script/engine.h"

using namespace ketrova::script;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr bool kVBScript = std::string_view(KETROVA_FUZZ_LANGUAGE) == "VBScript";
  std::string text(reinterpret_cast<const char*>(data), size);
  std::string lower = text;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const char* word : {"object", "msgbox", "inputbox"})
    if (lower.find(word) != std::string::npos) return 0;
  static auto engine = kVBScript ? CreateVBScriptEngine() : CreateJScriptEngine();
  engine->Reset();
  engine->SetTimeout(100);
  try {
    engine->AddCode(kGlobalModule, text);
  } catch (const ScriptError& e) {
    if (kVBScript && e.Number != kTimeoutErrorNumber && (e.Line < 1 || e.Column < 1)) std::abort();
  }
  return 0;
}
