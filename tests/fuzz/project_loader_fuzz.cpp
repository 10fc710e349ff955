// libFuzzer entry: feeds arbitrary bytes to CConverter::LoadProject as a
// project file and saves what was loaded. Any input must end in a text
// result, never in a crash, a hang or a sanitizer report.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "core/converter.h"
#include "platform/ui/scripted_ui.h"

namespace {

namespace fs = std::filesystem;

// One folder per fuzzing process for the input and the saved file. The stores
// that an input names find no ODBC drivers (see CMakeLists.txt).
const fs::path& WorkFolder() {
  static const fs::path folder = [] {
    fs::path dir = fs::temp_directory_path() / ("ketrova_fuzz_" + std::to_string(::getpid()));
    fs::create_directories(dir);
    return dir;
  }();
  return folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fs::path in = WorkFolder() / "in.cpf";
  const fs::path out = WorkFolder() / "out.cpf";
  std::ofstream(in, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  // A fresh double per input, so that its call record does not grow.
  auto ui = std::make_shared<ketrova::ui::ScriptedUserInterface>();
  ketrova::ui::SetCurrent(ui);
  {
    ketrova::CConverter project;
    if (project.LoadProject(in.string()).empty()) project.SaveProject(out.string());
  }
  ketrova::ui::SetCurrent(nullptr);
  return 0;
}
