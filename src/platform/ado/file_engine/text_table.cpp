#include "platform/ado/file_engine/text_table.h"

#include <set>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_writer.h"
#include "platform/ado/file_engine/schema_ini.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

namespace {

std::string LowerAscii(std::string s) {
  for (char& c : s) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return s;
}

// True when every field is an unquoted number or date, and one at least is
// not empty: no header line looks like that.
bool LooksLikeData(const CsvRecord& record) {
  bool any = false;
  for (std::size_t i = 0; i < record.count; ++i) {
    const std::string& f = record.fields[i];
    if (f.empty() && !record.quoted[i]) continue;
    if (record.quoted[i] || !(ParseNumber(f, false) || ParseDateText(f))) return false;
    any = true;
  }
  return any;
}

}  // namespace

TextTableLayout ReadTextTableLayout(const std::filesystem::path& file) {
  TextTableLayout layout;
  layout.file = file;
  auto schema = ReadSchemaIni(file.parent_path(), file.filename().string());
  if (schema) {
    if (schema->delimiter) layout.dialect.delimiter = *schema->delimiter;
    if (schema->header) layout.dialect.header = *schema->header;
    if (schema->charset) layout.dialect.charset = *schema->charset;
    if (schema->max_scan_rows && *schema->max_scan_rows > 0) {
      layout.scan_rows = static_cast<std::size_t>(*schema->max_scan_rows);
    }
  }
  CsvReader reader(file, layout.dialect);
  CsvRecord record;
  std::vector<std::string> header;
  bool have_first = reader.Next(record);
  if (layout.dialect.header) {
    if (!have_first) {
      throw VbError(ado::kErrGeneral, FileLineMessage(file, 1,
                                                      "die Datei ist leer, die Kopfzeile mit "
                                                      "den Spaltennamen fehlt"));
    }
    if (LooksLikeData(record) && !(schema && schema->header)) {
      // A first line of numbers and dates only is data: the file has no header.
      layout.dialect.header = false;
      layout.data_offset = record.offset;
      layout.data_line = record.line;
    } else {
      header.assign(record.fields.begin(), record.fields.begin() + record.count);
      layout.data_offset = record.end;
      layout.data_line = reader.line();
      have_first = reader.Next(record);
    }
  } else {
    layout.data_offset = have_first ? record.offset : 0;
    layout.data_line = have_first ? record.line : 1;
  }

  std::size_t count = header.size();
  if (!layout.dialect.header && have_first) count = record.count;
  if (schema && schema->columns.size() > count) count = schema->columns.size();
  if (count == 0) {
    throw VbError(ado::kErrGeneral,
                  FileLineMessage(file, 1, "die Datei ist leer, es sind keine Spalten bekannt"));
  }
  layout.names.resize(count);
  layout.types.assign(count, ColumnType::kText);
  layout.widths.assign(count, 0);
  std::vector<bool> typed(count, false);
  for (std::size_t i = 0; i < count; ++i) {
    if (schema && i < schema->columns.size() && !schema->columns[i].name.empty()) {
      layout.names[i] = schema->columns[i].name;
      layout.types[i] = schema->columns[i].type;
      layout.widths[i] = schema->columns[i].width;
      typed[i] = true;
    } else if (i < header.size()) {
      layout.names[i] = header[i];
    }
  }
  std::set<std::string> seen;
  for (std::size_t i = 0; i < count; ++i) {
    std::string& name = layout.names[i];
    if (name.empty()) name = "F" + std::to_string(i + 1);
    if (!seen.insert(LowerAscii(name)).second) {
      name += "_" + std::to_string(i + 1);
      seen.insert(LowerAscii(name));
    }
  }

  TypeInference inference(count);
  std::size_t rows = 0;
  while (have_first && rows < layout.scan_rows) {
    for (std::size_t i = 0; i < record.count && i < count; ++i) {
      inference.Add(i, record.fields[i], record.quoted[i] != 0);
    }
    ++rows;
    have_first = reader.Next(record);
  }
  layout.sampled_rows = rows;
  auto inferred = inference.Result();
  layout.decimal_comma.assign(count, 0);
  layout.german_dates.assign(count, 0);
  for (std::size_t i = 0; i < count; ++i) {
    if (!typed[i]) layout.types[i] = inferred[i];
    layout.decimal_comma[i] = inference.DecimalComma(i);
    layout.german_dates[i] = inference.GermanDates(i);
  }
  layout.line_break = reader.line_break();
  return layout;
}

std::string FormatTextRecord(const TextTableLayout& layout, const std::vector<FieldValue>& values) {
  std::string line;
  const char delimiter = layout.dialect.delimiter;
  for (std::size_t i = 0; i < layout.names.size(); ++i) {
    if (i > 0) line.push_back(delimiter);
    if (i >= values.size() || !values[i].text) continue;
    std::string text = *values[i].text;
    if (values[i].real && layout.decimal_comma[i]) {
      auto dot = text.find('.');
      if (dot != std::string::npos) text[dot] = ',';
    } else if (layout.types[i] == ColumnType::kDateTime && layout.german_dates[i]) {
      text = GermanDateText(text);
    }
    AppendCsvField(line, text, delimiter, text.empty());
  }
  line.append(layout.line_break);
  return line;
}

}  // namespace ketrova::file_engine
