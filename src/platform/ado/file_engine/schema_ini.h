// schema.ini, the classic description of the text files of a folder.
//
// One section per file, named by the file name:
//   [Kunden.csv]
//   ColNameHeader=True
//   Format=Delimited(;)
//   CharacterSet=65001
//   MaxScanRows=25
//   Col1=Name Text Width 50
//   Col2="Geburts Datum" DateTime
// Format takes CSVDelimited, TabDelimited and Delimited(x); CharacterSet takes
// ANSI or 1252 for Windows-1252 and 65001 or UTF-8. Keys and the section name
// are compared without regard to case. Writing a section replaces that section
// and keeps all others as they stand.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ado/file_engine/column_types.h"
#include "platform/ado/file_engine/csv_reader.h"

namespace ketrova::file_engine {

struct SchemaColumn {
  std::string name;
  ColumnType type = ColumnType::kText;
  int width = 0;  // 0 when not given
};

struct SchemaEntry {
  std::string file;  // the section name
  std::optional<char> delimiter;
  std::optional<bool> header;
  std::optional<Charset> charset;
  std::optional<int> max_scan_rows;
  std::vector<SchemaColumn> columns;  // by ColN, in order of N
};

// The section for file_name in folder/schema.ini, or none when there is no
// such file or section. A line that cannot be read raises VbError naming the
// file and the line.
std::optional<SchemaEntry> ReadSchemaIni(const std::filesystem::path& folder,
                                         std::string_view file_name);

// Writes the entry's section into folder/schema.ini, replacing a section of
// the same name and keeping all others; the file is replaced as a whole.
void WriteSchemaIni(const std::filesystem::path& folder, const SchemaEntry& entry);

// The section's text, lines ending in CR LF.
std::string FormatSchemaSection(const SchemaEntry& entry);

}  // namespace ketrova::file_engine
