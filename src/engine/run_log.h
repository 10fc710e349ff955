// RunLog: the run's log file beside the project. One line per WriteLine,
// ended by CR LF, no time stamps; the file is overwritten by each run. Writes
// to a log that is not open are dropped, so that the failure path of a run
// that never got as far as opening it stays harmless.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace ketrova {

class RunLog {
 public:
  RunLog() = default;
  ~RunLog() { Close(); }
  RunLog(const RunLog&) = delete;
  RunLog& operator=(const RunLog&) = delete;

  // Opens `path` for output, truncating it; raises 75 when it cannot, and
  // OpenError then says why ("" after a successful open).
  void Open(const std::string& path);
  bool IsOpen() const { return file_ != nullptr; }
  const std::string& OpenError() const { return openError_; }
  void WriteLine(std::string_view text);
  void Close();

 private:
  std::FILE* file_ = nullptr;
  std::string openError_;
};

// The line frames of the log: `count` times the character.
std::string LogFrame(char c, int count);
// The text filled with blanks, or cut, to 50 characters.
std::string LogPad(std::string_view text);

}  // namespace ketrova
