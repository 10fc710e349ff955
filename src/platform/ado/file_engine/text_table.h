// The layout of one delimited text file as a table: where its columns come
// from, their types, the dialect, and where the data starts.
//
// The delimiter is ";" unless schema.ini in the file's folder says otherwise.
// The first line holds the column names unless schema.ini says
// ColNameHeader=False, or the line holds nothing but numbers and dates (a file
// without a header, whose first line is data and must not be lost); then the
// columns are F1, F2, ... A ColN entry of
// schema.ini names and types column N; columns without one take their name
// from the header and their type from the first rows (MaxScanRows, 25 by
// default). A header field that is empty becomes F<n>; a name seen before
// gets "_<n>" behind it, so that every column can be addressed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/ado/file_engine/column_types.h"
#include "platform/ado/file_engine/csv_reader.h"

namespace ketrova::file_engine {

struct TextTableLayout {
  std::filesystem::path file;
  CsvDialect dialect;
  std::vector<std::string> names;
  std::vector<ColumnType> types;
  std::vector<int> widths;          // from schema.ini; 0 when not given
  std::vector<char> decimal_comma;  // the sample wrote numbers with ","
  std::vector<char> german_dates;   // the sample wrote dates as dd.mm.yyyy
  std::int64_t data_offset = 0;     // byte offset of the first data record
  std::int64_t data_line = 1;       // its line number
  std::string line_break = "\r\n";  // the break the file uses
  std::size_t sampled_rows = 0;     // rows the types were inferred from
  std::size_t scan_rows = 25;       // rows the inference would look at
};

// Reads schema.ini, the header and the sample. An empty file, or one without a
// header where a header is expected, raises VbError naming the file.
TextTableLayout ReadTextTableLayout(const std::filesystem::path& file);

// The text of one record in the file's dialect, with its line break. `values`
// holds the fields' texts, nullopt for NULL; an empty text is written as ""
// so that it reads back as an empty text, not as NULL. A text that looks like a
// number is written as it is: a column of such texts reads back as numbers,
// which is what record access gave as text to a column typed Text. Numbers and
// dates follow the style the column's rows already have ("," as decimal mark,
// dd.mm.yyyy), so that a file keeps one style.
struct FieldValue {
  std::optional<std::string> text;  // nullopt is NULL
  bool real = false;                // text is FormatNumber of a double
};
std::string FormatTextRecord(const TextTableLayout& layout, const std::vector<FieldValue>& values);

}  // namespace ketrova::file_engine
