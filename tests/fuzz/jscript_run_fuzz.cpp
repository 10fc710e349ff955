// libFuzzer harness for running JScript through the engine: any text either
// runs or ends in a ScriptError; nothing crashes, and the loop checks end
// endless loops under a time limit. Texts that make objects by ProgID are
// passed over, since those reach the file system.
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/script/engine.h"

using namespace ketrova::script;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  std::string lower = text;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (lower.find("object") != std::string::npos) return 0;
  static auto engine = CreateJScriptEngine();
  engine->Reset();
  engine->SetTimeout(100);
  try {
    engine->AddCode(kGlobalModule, text);
  } catch (const ScriptError&) {
  }
  return 0;
}
