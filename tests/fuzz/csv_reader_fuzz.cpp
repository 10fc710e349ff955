// The CSV reader on any bytes: it answers records or the German file error,
// never anything else, and every record it reads comes back the same after
// the writer quoted it (a record of one empty field is a blank line, which the
// reader skips, so it is left out).
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/ado/file_engine/csv_reader.h"
#include "platform/ado/file_engine/csv_writer.h"
#include "support/vb_error.h"

namespace fe = ketrova::file_engine;

namespace {

std::filesystem::path Scratch(const char* name) {
  static const std::filesystem::path folder = [] {
    auto path =
        std::filesystem::temp_directory_path() / ("ketrova-csv-fuzz-" + std::to_string(getpid()));
    std::filesystem::create_directories(path);
    return path;
  }();
  return folder / name;
}

void Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

std::vector<std::vector<std::string>> ReadAll(const std::filesystem::path& path, char delimiter) {
  fe::CsvReader reader(path, fe::CsvDialect{delimiter, false, fe::Charset::kUtf8});
  std::vector<std::vector<std::string>> records;
  fe::CsvRecord record;
  while (reader.Next(record))
    records.emplace_back(record.fields.begin(), record.fields.begin() + record.count);
  return records;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  char delimiter = data[0] % 3 == 0 ? ';' : data[0] % 3 == 1 ? ',' : '\t';
  std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  auto input = Scratch("input.csv");
  Write(input, bytes);
  std::vector<std::vector<std::string>> records;
  try {
    fe::CsvReader reader(input, fe::CsvDialect{delimiter, false, fe::Charset::kAuto});
    fe::CsvRecord record;
    while (reader.Next(record)) {
      if (record.count == 1 && record.fields[0].empty()) continue;
      records.emplace_back(record.fields.begin(), record.fields.begin() + record.count);
    }
  } catch (const ketrova::VbError&) {
    return 0;  // a broken file is refused with its text
  }
  // A file that starts with a byte order mark loses it on reading, as it should.
  if (!records.empty() && records[0][0].starts_with("\xEF\xBB\xBF")) return 0;
  std::string written;
  for (const auto& fields : records) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) written += delimiter;
      fe::AppendCsvField(written, fields[i], delimiter, false);
    }
    written += "\r\n";
  }
  auto output = Scratch("output.csv");
  Write(output, written);
  if (ReadAll(output, delimiter) != records) {
    std::fprintf(stderr, "records changed on the way through the writer\n");
    std::abort();
  }
  return 0;
}
