// What a shell command prints on stdout, for tests that compare with an
// independent tool (mdb-export, python3-dbf).
#pragma once

#include <cstdio>
#include <string>

namespace ketrova::testing {

// `status` receives the command's exit status as pclose answers it.
inline std::string CommandOutput(const std::string& command, int* status = nullptr) {
  std::string out;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (!pipe) return out;
  char buf[65536];
  std::size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) out.append(buf, n);
  const int rc = ::pclose(pipe);
  if (status) *status = rc;
  return out;
}

}  // namespace ketrova::testing
