// The subcommands of the ketrova tool. Each lives in its own file and is listed
// in the table of main.cpp. A command gets its arguments after its own name and
// answers the process exit status: 0 success, 1 failure, 2 bad usage.
#pragma once

#include <string>
#include <vector>

namespace ketrova::cli {

using Args = std::vector<std::string>;

struct Command {
  const char* name;
  const char* usage;  // the line shown by --help
  int (*run)(const Args& args);
};

// The commands, in the order --help lists them.
const std::vector<Command>& Commands();

// One function per command, each in its own cmd_*.cpp.
int RunProject(const Args& args);
int RunScript(const Args& args);
int RunResave(const Args& args);
int RunNew(const Args& args);
int RunShow(const Args& args);
int RunDsn(const Args& args);
int RunVerify(const Args& args);

}  // namespace ketrova::cli
