#include "platform/ado/file_engine/csv_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/text_encoding.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

namespace {
constexpr std::size_t kBufferSize = 1 << 16;
}

std::string FileLineMessage(const std::filesystem::path& path, std::int64_t line,
                            const std::string& what) {
  return "Datei " + path.string() + ", Zeile " + std::to_string(line) + ": " + what;
}

CsvReader::CsvReader(std::filesystem::path path, CsvDialect dialect)
    : path_(std::move(path)), dialect_(dialect), buffer_(kBufferSize) {
  ends_field_[static_cast<unsigned char>(dialect_.delimiter)] = true;
  ends_field_['\n'] = ends_field_['\r'] = true;
  fd_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) {
    throw VbError(ado::kErrGeneral, "Datei " + path_.string() +
                                        " kann nicht gelesen werden: " + std::strerror(errno));
  }
  // Skip a UTF-8 byte order mark.
  if (Fill() && len_ >= 3 && std::memcmp(buffer_.data(), "\xEF\xBB\xBF", 3) == 0) pos_ = 3;
}

CsvReader::~CsvReader() {
  if (fd_ >= 0) ::close(fd_);
}

void CsvReader::Seek(std::int64_t offset, std::int64_t line) {
  if (::lseek(fd_, offset, SEEK_SET) < 0) Fail(line, std::strerror(errno));
  buffer_offset_ = offset;
  pos_ = len_ = 0;
  eof_ = false;
  line_ = line;
}

bool CsvReader::Fill() {
  if (eof_) return false;
  buffer_offset_ += static_cast<std::int64_t>(len_);
  pos_ = len_ = 0;
  for (;;) {
    ssize_t n = ::read(fd_, buffer_.data(), buffer_.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) Fail(line_, std::strerror(errno));
    if (n == 0) {
      eof_ = true;
      return false;
    }
    len_ = static_cast<std::size_t>(n);
    return true;
  }
}

inline int CsvReader::Peek() {
  if (pos_ == len_ && !Fill()) return -1;
  return static_cast<unsigned char>(buffer_[pos_]);
}

inline int CsvReader::Get() {
  if (pos_ == len_ && !Fill()) return -1;
  return static_cast<unsigned char>(buffer_[pos_++]);
}

void CsvReader::Fail(std::int64_t line, const std::string& what) const {
  throw VbError(ado::kErrGeneral, FileLineMessage(path_, line, what));
}

bool CsvReader::Next(CsvRecord& record) {
  const char delimiter = dialect_.delimiter;
  for (;;) {
    if (Peek() < 0) return false;
    record.count = 0;
    record.line = line_;
    record.offset = buffer_offset_ + static_cast<std::int64_t>(pos_);
    bool any_high = false;
    bool ended = false;
    while (!ended) {
      if (record.count == record.fields.size()) {
        record.fields.emplace_back();
        record.quoted.push_back(0);
        record.high.push_back(0);
      }
      std::string& field = record.fields[record.count];
      field.clear();
      record.quoted[record.count] = 0;
      char& high = record.high[record.count];
      high = 0;
      ++record.count;
      int c = Peek();
      if (c == '"') {
        record.quoted[record.count - 1] = 1;
        ++pos_;
        for (;;) {
          c = Get();
          if (c < 0) Fail(record.line, "Anführungszeichen wird nicht geschlossen");
          if (c == '"') {
            if (Peek() == '"') {
              ++pos_;
              field.push_back('"');
              continue;
            }
            break;
          }
          if (c == '\n') ++line_;
          if (c == '\r' && Peek() != '\n') ++line_;
          if (c >= 0x80) high = 1;
          field.push_back(static_cast<char>(c));
        }
      }
      // Unquoted text, or what follows a closing quote up to the delimiter.
      for (;;) {
        if (pos_ == len_ && !Fill()) {
          ended = true;
          missing_final_break_ = true;
          break;
        }
        const char* start = buffer_.data() + pos_;
        const char* stop = buffer_.data() + len_;
        const char* p = start;
        unsigned char bits = 0;  // every byte's bits or-ed: is one of them high?
        for (; p < stop; ++p) {
          const auto b = static_cast<unsigned char>(*p);
          if (ends_field_[b]) break;
          bits |= b;
        }
        if (bits & 0x80) high = 1;
        field.append(start, p);
        pos_ += static_cast<std::size_t>(p - start);
        if (p == stop) continue;
        char c2 = *p;
        ++pos_;
        if (c2 == delimiter) break;
        // A line break ends the record: CR LF, LF, or a lone CR.
        if (c2 == '\r' && Peek() == '\n') ++pos_;
        if (!break_seen_) {
          break_seen_ = true;
          line_break_ = c2 == '\n' ? "\n" : "\r\n";
        }
        ++line_;
        missing_final_break_ = false;
        ended = true;
        break;
      }
      if (high) any_high = true;
    }
    record.end = buffer_offset_ + static_cast<std::int64_t>(pos_);
    // A blank line holds no record.
    if (record.count == 1 && record.fields[0].empty() && !record.quoted[0]) continue;
    if (any_high || dialect_.charset == Charset::kWindows1252) Decode(record);
    return true;
  }
}

void CsvReader::Decode(CsvRecord& record) {
  bool as_1252 = dialect_.charset == Charset::kWindows1252;
  if (!as_1252) {
    for (std::size_t i = 0; i < record.count && !as_1252; ++i) {
      if (record.high[i] && !IsValidUtf8(record.fields[i])) as_1252 = true;
    }
    if (!as_1252) return;
    if (dialect_.charset == Charset::kUtf8) Fail(record.line, "Zeile ist kein gültiges UTF-8");
  }
  for (std::size_t i = 0; i < record.count; ++i) {
    if (!record.high[i]) continue;
    std::string& field = record.fields[i];
    scratch_.clear();
    std::size_t bad = 0;
    if (!AppendWindows1252AsUtf8(field, scratch_, bad)) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "0x%02X", static_cast<unsigned char>(field[bad]));
      Fail(record.line, std::string("Byte ") + hex + " ist weder UTF-8 noch Windows-1252");
    }
    field.swap(scratch_);
  }
}

}  // namespace ketrova::file_engine
