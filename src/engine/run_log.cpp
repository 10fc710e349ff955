#include "engine/run_log.h"

#include <cerrno>
#include <cstring>

#include "support/system.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova {

void RunLog::Open(const std::string& path) {
  Close();
  file_ = path.empty() ? nullptr : std::fopen(path.c_str(), "wb");
  openError_.clear();
  if (!file_) {
    openError_ = path.empty() ? "kein Dateiname" : SystemErrorText(errno);
    throw VbError(75);
  }
}

void RunLog::WriteLine(std::string_view text) {
  if (!file_) return;
  std::fwrite(text.data(), 1, text.size(), file_);
  std::fwrite("\r\n", 1, 2, file_);
}

void RunLog::Close() {
  if (!file_) return;
  std::fclose(file_);
  file_ = nullptr;
}

std::string LogFrame(char c, int count) {
  return std::string(static_cast<std::size_t>(count), c);
}

std::string LogPad(std::string_view text) {
  return PadRight(text, 50);
}

}  // namespace ketrova
