// Runs the ketrova tool as a user calls it: in a given folder, stdin empty,
// stdout and stderr caught apart. The test target defines KETROVA_BINARY as
// the path of the built tool.
#pragma once

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace ketrova::testing {

struct KetrovaOutcome {
  int status = -1;  // exit status, -1 when the tool did not exit normally
  std::string out;
  std::string err;
};

// `arguments` are shell words (quote paths with blanks); `environment` adds
// variables for this run only. The output goes through two files in `folder`
// that are removed afterwards.
inline KetrovaOutcome RunKetrova(
    const std::filesystem::path& folder, const std::string& arguments,
    const std::vector<std::pair<std::string, std::string>>& environment = {}) {
  std::string settings;
  for (const auto& [name, value] : environment) settings += name + "='" + value + "' ";
  std::string command = "cd '" + folder.string() + "' && " + settings + "'" KETROVA_BINARY "' " +
                        arguments + " </dev/null >.ketrova-stdout 2>.ketrova-stderr";
  int raw = std::system(command.c_str());
  auto take = [&folder](const char* name) {
    std::ifstream in(folder / name, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    in.close();
    std::error_code ec;
    std::filesystem::remove(folder / name, ec);
    return s.str();
  };
  KetrovaOutcome o;
  o.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  o.out = take(".ketrova-stdout");
  o.err = take(".ketrova-stderr");
  return o;
}

}  // namespace ketrova::testing
