#include "platform/ado/file_engine/csv_writer.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

namespace {

[[noreturn]] void FailFile(const std::filesystem::path& file, const std::string& what) {
  throw VbError(ado::kErrGeneral, "Datei " + file.string() + " " + what);
}

[[noreturn]] void FailErrno(const std::filesystem::path& file, const char* action) {
  int e = errno;
  if (e == EWOULDBLOCK) FailFile(file, "ist von einem anderen Programm gesperrt");
  if (e == EACCES || e == EPERM || e == EROFS) FailFile(file, "ist schreibgeschützt");
  FailFile(file, std::string(action) + ": " + std::strerror(e));
}

// An open file descriptor, closed on scope exit.
struct Fd {
  int fd = -1;
  ~Fd() {
    if (fd >= 0) ::close(fd);
  }
};

// Refuses a file without any write permission, as Windows refuses a file
// marked read-only, also to root; then locks the whole file for writing, or
// fails naming it: flock for programs that use it, and a POSIX record lock,
// which office programs take.
void LockForWriting(int fd, const std::filesystem::path& file) {
  struct stat st {};
  if (::fstat(fd, &st) == 0 && (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
    FailFile(file, "ist schreibgeschützt");
  if (::flock(fd, LOCK_EX | LOCK_NB) < 0) FailErrno(file, "kann nicht gesperrt werden");
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  if (::fcntl(fd, F_SETLK, &lock) < 0) {
    if (errno == EACCES || errno == EAGAIN) errno = EWOULDBLOCK;
    FailErrno(file, "kann nicht gesperrt werden");
  }
}

void WriteAll(int fd, std::string_view text, const std::filesystem::path& file) {
  while (!text.empty()) {
    ssize_t n = ::write(fd, text.data(), text.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) FailErrno(file, "kann nicht geschrieben werden");
    text.remove_prefix(static_cast<std::size_t>(n));
  }
}

bool NeedsQuotes(std::string_view text, char delimiter) {
  if (text.empty()) return false;
  if (text.front() == ' ' || text.back() == ' ') return true;
  for (char c : text) {
    if (c == delimiter || c == '"' || c == '\n' || c == '\r') return true;
  }
  return false;
}

}  // namespace

void AppendCsvField(std::string& out, std::string_view text, char delimiter, bool force_quotes) {
  if (!force_quotes && !NeedsQuotes(text, delimiter)) {
    out.append(text);
    return;
  }
  out.push_back('"');
  for (char c : text) {
    if (c == '"') out.push_back('"');
    out.push_back(c);
  }
  out.push_back('"');
}

void AppendToFile(const std::filesystem::path& file, std::string_view text,
                  std::string_view line_break) {
  Fd f;
  f.fd = ::open(file.c_str(), O_RDWR | O_APPEND | O_CLOEXEC);
  if (f.fd < 0) FailErrno(file, "kann nicht zum Schreiben geöffnet werden");
  LockForWriting(f.fd, file);
  std::string block;
  struct stat st {};
  if (::fstat(f.fd, &st) == 0 && st.st_size > 0) {
    char last = 0;
    if (::pread(f.fd, &last, 1, st.st_size - 1) == 1 && last != '\n' && last != '\r') {
      block.append(line_break);
    }
  }
  block.append(text);
  WriteAll(f.fd, block, file);
}

void RewriteFile(const std::filesystem::path& file,
                 const std::function<void(const std::function<void(std::string_view)>&)>& produce) {
  Fd original;
  original.fd = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
  if (original.fd < 0) FailErrno(file, "kann nicht zum Schreiben geöffnet werden");
  LockForWriting(original.fd, file);
  struct stat st {};
  ::fstat(original.fd, &st);

  std::string temp_name =
      (file.parent_path() / ("." + file.filename().string() + ".XXXXXX")).string();
  Fd temp;
  temp.fd = ::mkstemp(temp_name.data());
  if (temp.fd < 0) FailErrno(file, "kann nicht neu geschrieben werden");
  ::fchmod(temp.fd, st.st_mode & 07777);
  // The temporary file goes again unless it has replaced the original.
  struct RemoveTemporary {
    const std::string& name;
    bool renamed = false;
    ~RemoveTemporary() {
      if (!renamed) ::unlink(name.c_str());
    }
  } temporary{temp_name};
  std::string pending;
  produce([&](std::string_view text) {
    pending.append(text);
    if (pending.size() >= (1 << 16)) {
      WriteAll(temp.fd, pending, file);
      pending.clear();
    }
  });
  WriteAll(temp.fd, pending, file);
  if (::fsync(temp.fd) < 0) FailErrno(file, "kann nicht neu geschrieben werden");
  if (::rename(temp_name.c_str(), file.c_str()) < 0) {
    FailErrno(file, "kann nicht ersetzt werden");
  }
  temporary.renamed = true;
}

}  // namespace ketrova::file_engine
