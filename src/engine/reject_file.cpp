#include "engine/reject_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "support/system.h"

namespace ketrova {

namespace {

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

std::string Row(const std::vector<std::string>& fields) {
  std::string row;
  for (const std::string& field : fields) {
    if (!row.empty()) row += ',';
    row += CsvField(field);
  }
  return row + "\r\n";
}

}  // namespace

std::string CsvField(const std::string& value) {
  const bool quote = value.find_first_of(",\"\r\n") != std::string::npos ||
                     (!value.empty() && (value.front() == ' ' || value.back() == ' '));
  if (!quote) return value;
  std::string text = "\"";
  for (char c : value) {
    if (c == '"') text += '"';
    text += c;
  }
  return text + "\"";
}

void RejectFile::Reset(const std::string& path) {
  path_ = path;
  lastJob_.clear();
  writeError_.clear();
  count_ = 0;
  created_ = false;
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove(path_, ignored);
}

void RejectFile::Add(const std::string& job, std::int32_t record, const std::string& text,
                     const Values& values) {
  ++count_;
  if (path_.empty() || !writeError_.empty()) return;
  std::string rows;
  if (!created_ || job != lastJob_) {
    std::vector<std::string> header = {"Aufgabe", "Datensatz", "Meldung"};
    for (const auto& [name, value] : values) header.push_back(name);
    rows += Row(header);
  }
  std::vector<std::string> fields = {job, std::to_string(record), text};
  for (const auto& [name, value] : values) fields.push_back(value);
  rows += Row(fields);

  std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path_.c_str(), created_ ? "ab" : "wb"));
  bool written = file && std::fwrite(rows.data(), 1, rows.size(), file.get()) == rows.size();
  if (file) written = std::fclose(file.release()) == 0 && written;
  if (!written) {
    writeError_ = SystemErrorText(errno);
    return;
  }
  created_ = true;
  lastJob_ = job;
}

std::string RejectFile::Note() const {
  if (count_ == 0) return {};
  const std::string what =
      count_ == 1 ? "1 Datensatz wurde" : std::to_string(count_) + " Datensätze wurden";
  if (path_.empty()) return what + " vom Ziel abgelehnt.";
  if (!writeError_.empty()) {
    return what + " vom Ziel abgelehnt; " + path_ +
           " konnte nicht geschrieben werden: " + writeError_;
  }
  return what + " vom Ziel abgelehnt und in " + path_ + " gespeichert.";
}

}  // namespace ketrova
