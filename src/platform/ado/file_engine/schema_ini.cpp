#include "platform/ado/file_engine/schema_ini.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_writer.h"
#include "platform/ado/file_engine/text_encoding.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

namespace {

std::string_view Trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) {
    s.remove_suffix(1);
  }
  return s;
}

// The lines of schema.ini, decoded like the data files; none when it is missing.
std::optional<std::vector<std::string>> ReadLines(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return std::nullopt;
  std::vector<std::string> lines;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (lines.empty() && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    if (!IsValidUtf8(line)) {
      std::string decoded;
      std::size_t bad = 0;
      if (!AppendWindows1252AsUtf8(line, decoded, bad)) {
        throw VbError(ado::kErrGeneral,
                      FileLineMessage(file, static_cast<std::int64_t>(lines.size()) + 1,
                                      "Zeichen ist weder UTF-8 noch Windows-1252"));
      }
      line.swap(decoded);
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

bool IsSection(std::string_view line, std::string* name) {
  line = Trim(line);
  if (line.size() < 2 || line.front() != '[' || line.back() != ']') return false;
  if (name) *name = std::string(line.substr(1, line.size() - 2));
  return true;
}

void ParseColumn(std::string_view value, SchemaColumn& column, const std::filesystem::path& file,
                 std::int64_t line_no) {
  value = Trim(value);
  std::string_view rest;
  if (!value.empty() && value.front() == '"') {
    auto close = value.find('"', 1);
    if (close == std::string_view::npos) {
      throw VbError(ado::kErrGeneral, FileLineMessage(file, line_no, "Anführungszeichen fehlt"));
    }
    column.name = std::string(value.substr(1, close - 1));
    rest = value.substr(close + 1);
  } else {
    // The name runs to the last blank before the type word.
    std::vector<std::string_view> words;
    std::size_t pos = 0;
    while (pos < value.size()) {
      auto next = value.find(' ', pos);
      if (next == std::string_view::npos) next = value.size();
      if (next > pos) words.push_back(value.substr(pos, next - pos));
      pos = next + 1;
    }
    std::size_t type_at = words.size();
    for (std::size_t i = 1; i < words.size(); ++i) {
      if (ParseTypeName(words[i])) {
        type_at = i;
        break;
      }
    }
    if (type_at == words.size()) {
      column.name = std::string(value);
      return;
    }
    column.name = std::string(value.substr(0, words[type_at].data() - value.data()));
    column.name = std::string(Trim(column.name));
    rest = value.substr(words[type_at].data() - value.data());
  }
  std::istringstream words{std::string(rest)};
  std::string word;
  if (words >> word) {
    auto type = ParseTypeName(word);
    if (!type) {
      throw VbError(ado::kErrGeneral,
                    FileLineMessage(file, line_no, "unbekannter Spaltentyp " + word));
    }
    column.type = *type;
  }
  while (words >> word) {
    if (AsciiLower(word) == "width") words >> column.width;
  }
}

}  // namespace

std::optional<SchemaEntry> ReadSchemaIni(const std::filesystem::path& folder,
                                         std::string_view file_name) {
  const auto path = folder / "schema.ini";
  auto lines = ReadLines(path);
  if (!lines) return std::nullopt;
  const std::string wanted = AsciiLower(file_name);
  std::optional<SchemaEntry> entry;
  std::vector<std::pair<int, SchemaColumn>> columns;
  for (std::size_t i = 0; i < lines->size(); ++i) {
    std::string_view line = Trim((*lines)[i]);
    std::string section;
    if (IsSection(line, &section)) {
      if (entry) break;
      if (AsciiLower(Trim(section)) == wanted) {
        entry.emplace();
        entry->file = std::string(Trim(section));
      }
      continue;
    }
    if (!entry || line.empty() || line.front() == ';') continue;
    auto eq = line.find('=');
    if (eq == std::string_view::npos) continue;
    std::string key = AsciiLower(Trim(line.substr(0, eq)));
    std::string_view value = Trim(line.substr(eq + 1));
    std::string lvalue = AsciiLower(value);
    auto line_no = static_cast<std::int64_t>(i) + 1;
    if (key == "colnameheader") {
      entry->header = lvalue == "true" || lvalue == "1" || lvalue == "yes";
    } else if (key == "format") {
      if (lvalue == "csvdelimited") {
        entry->delimiter = ',';
      } else if (lvalue == "tabdelimited") {
        entry->delimiter = '\t';
      } else if (lvalue.starts_with("delimited(") && lvalue.size() == 12 && lvalue[11] == ')') {
        entry->delimiter = value[10];
      } else {
        throw VbError(ado::kErrGeneral,
                      FileLineMessage(path, line_no,
                                      "Format " + std::string(value) + " wird nicht unterstützt"));
      }
    } else if (key == "characterset") {
      if (lvalue == "ansi" || lvalue == "1252") {
        entry->charset = Charset::kWindows1252;
      } else if (lvalue == "65001" || lvalue == "utf-8" || lvalue == "utf8") {
        entry->charset = Charset::kUtf8;
      }
    } else if (key == "maxscanrows") {
      entry->max_scan_rows = std::atoi(std::string(value).c_str());
    } else if (key.size() > 3 && key.starts_with("col") &&
               key.find_first_not_of("0123456789", 3) == std::string::npos) {
      SchemaColumn column;
      ParseColumn(value, column, path, line_no);
      columns.emplace_back(std::atoi(key.c_str() + 3), std::move(column));
    }
  }
  if (entry) {
    std::stable_sort(columns.begin(), columns.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (auto& [n, column] : columns) entry->columns.push_back(std::move(column));
  }
  return entry;
}

std::string FormatSchemaSection(const SchemaEntry& entry) {
  std::string out = "[" + entry.file + "]\r\n";
  if (entry.header)
    out += std::string("ColNameHeader=") + (*entry.header ? "True" : "False") + "\r\n";
  if (entry.delimiter) {
    if (*entry.delimiter == ',') {
      out += "Format=CSVDelimited\r\n";
    } else if (*entry.delimiter == '\t') {
      out += "Format=TabDelimited\r\n";
    } else {
      out += std::string("Format=Delimited(") + *entry.delimiter + ")\r\n";
    }
  }
  if (entry.charset && *entry.charset != Charset::kAuto) {
    out += *entry.charset == Charset::kUtf8 ? "CharacterSet=65001\r\n" : "CharacterSet=ANSI\r\n";
  }
  if (entry.max_scan_rows) out += "MaxScanRows=" + std::to_string(*entry.max_scan_rows) + "\r\n";
  for (std::size_t i = 0; i < entry.columns.size(); ++i) {
    const auto& c = entry.columns[i];
    out += "Col" + std::to_string(i + 1) + "=";
    bool quote = c.name.find(' ') != std::string::npos;
    out += quote ? "\"" + c.name + "\"" : c.name;
    switch (c.type) {
      case ColumnType::kText:
        out += " Text";
        break;
      case ColumnType::kInteger:
        out += " Long";
        break;
      case ColumnType::kDouble:
        out += " Double";
        break;
      case ColumnType::kCurrency:
        out += " Currency";
        break;
      case ColumnType::kDateTime:
        out += " DateTime";
        break;
      case ColumnType::kBoolean:
        out += " Bit";
        break;
      case ColumnType::kMemo:
        out += " Memo";
        break;
    }
    if (c.width > 0) out += " Width " + std::to_string(c.width);
    out += "\r\n";
  }
  return out;
}

void WriteSchemaIni(const std::filesystem::path& folder, const SchemaEntry& entry) {
  const auto path = folder / "schema.ini";
  auto lines = ReadLines(path);
  const std::string wanted = AsciiLower(entry.file);
  std::string out;
  bool skipping = false;
  bool written = false;
  if (lines) {
    for (const auto& line : *lines) {
      std::string section;
      if (IsSection(line, &section)) {
        skipping = AsciiLower(Trim(section)) == wanted;
        if (skipping && !written) {
          out += FormatSchemaSection(entry);
          written = true;
        }
      }
      if (!skipping) out += line + "\r\n";
    }
  }
  if (!written) out += FormatSchemaSection(entry);
  if (!lines) {
    std::ofstream create(path, std::ios::binary);
    if (!create) {
      throw VbError(ado::kErrGeneral, "Datei " + path.string() + " kann nicht angelegt werden");
    }
    create << out;
    return;
  }
  RewriteFile(path, [&](const auto& sink) { sink(out); });
}

}  // namespace ketrova::file_engine
