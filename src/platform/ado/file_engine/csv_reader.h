// Streaming reader of delimited text files (RFC 4180 quoting).
//
// Reads one record at a time through a fixed buffer, so memory stays flat in
// the size of the file. A record may span lines when a quoted field holds line
// breaks; each record knows the line it starts on and its byte range, which the
// writer uses to rewrite a file without touching the other records' bytes.
//
// Each record is decoded on its own: as UTF-8 when its bytes are valid UTF-8,
// else as Windows-1252. A file written in Windows-1252 thus reads right, and so
// do UTF-8 lines appended to it later. A UTF-8 byte order mark is skipped.
//
// Failures (a file that cannot be opened, a quote that is never closed, bytes
// that are neither UTF-8 nor Windows-1252) raise VbError -2147467259 with a
// German description naming the file and the line.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ketrova::file_engine {

enum class Charset { kAuto, kUtf8, kWindows1252 };

struct CsvDialect {
  char delimiter = ';';
  bool header = true;
  Charset charset = Charset::kAuto;
};

struct CsvRecord {
  // Decoded fields; only the first `count` entries are valid (the vectors are
  // reused from record to record).
  std::vector<std::string> fields;
  std::vector<char> quoted;  // the field was written in quotes
  std::vector<char> high;    // the field has a byte of 0x80 or above
  std::size_t count = 0;
  std::int64_t line = 0;    // 1-based line on which the record starts
  std::int64_t offset = 0;  // byte offset of its first byte
  std::int64_t end = 0;     // byte offset behind its line break
};

class CsvReader {
 public:
  CsvReader(std::filesystem::path path, CsvDialect dialect);
  ~CsvReader();
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;

  // Continues at a byte offset where a record starts, on the given line.
  void Seek(std::int64_t offset, std::int64_t line);
  // The next record, skipping blank lines; false at the end of the file.
  bool Next(CsvRecord& record);

  const std::filesystem::path& path() const { return path_; }
  // The line on which the next record starts.
  std::int64_t line() const { return line_; }
  // True when the file ended without a line break behind its last record.
  bool missing_final_break() const { return missing_final_break_; }
  // "\r\n" or "\n": the break behind the first record, "\r\n" when none was seen.
  const std::string& line_break() const { return line_break_; }

 private:
  bool Fill();
  int Get();
  int Peek();
  void Decode(CsvRecord& record);
  [[noreturn]] void Fail(std::int64_t line, const std::string& what) const;

  std::filesystem::path path_;
  CsvDialect dialect_;
  int fd_ = -1;
  std::vector<char> buffer_;
  std::size_t pos_ = 0;
  std::size_t len_ = 0;
  std::int64_t buffer_offset_ = 0;  // file offset of buffer_[0]
  std::int64_t line_ = 1;
  bool eof_ = false;
  bool missing_final_break_ = false;
  bool break_seen_ = false;
  std::string line_break_ = "\r\n";
  std::string scratch_;
  std::array<bool, 256> ends_field_{};  // the delimiter, CR and LF
};

// The description used for file failures: "Datei <path>, Zeile <n>: <what>".
std::string FileLineMessage(const std::filesystem::path& path, std::int64_t line,
                            const std::string& what);

}  // namespace ketrova::file_engine
