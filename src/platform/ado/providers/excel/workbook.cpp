#include "platform/ado/providers/excel/workbook.h"

#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <fstream>

#include "platform/ado/enums.h"
#include "platform/ado/providers/excel/xls_file.h"
#include "platform/ado/providers/excel/xls_writer.h"
#include "platform/ado/providers/excel/xlsx_package.h"
#include "platform/ado/providers/excel/xlsx_writer.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

constexpr const char* kSource = "Ketrova.Excel";
constexpr std::size_t kScanRows = 25;
constexpr std::size_t kLongText = 255;

// A name's text without single quotes around it ('Meine Kunden$').
std::string Unquoted(std::string_view name) {
  if (name.size() >= 2 && name.front() == '\'' && name.back() == '\'') {
    std::string out;
    for (std::size_t i = 1; i + 1 < name.size(); ++i) {
      out.push_back(name[i]);
      if (name[i] == '\'' && i + 2 < name.size() && name[i + 1] == '\'') ++i;
    }
    return out;
  }
  return std::string(name);
}

bool SameName(std::string_view a, std::string_view b) {
  return LowerCase(a) == LowerCase(b);
}

// The text a header cell gives as a column name.
std::string HeaderText(const CellValue& v, bool date1904, NumberKind kind) {
  switch (v.kind) {
    case CellValue::Kind::kEmpty:
      return {};
    case CellValue::Kind::kText:
    case CellValue::Kind::kError:
      return v.text;
    case CellValue::Kind::kBoolean:
      return v.number != 0 ? "True" : "False";
    case CellValue::Kind::kNumber:
      if (kind == NumberKind::kDate)
        return file_engine::GermanDateText(IsoFromOle(OleFromSerial(v.number, date1904)));
      return file_engine::FormatNumber(v.number);
  }
  return {};
}

enum Seen : unsigned {
  kSeenDate = 1,
  kSeenCurrency = 2,
  kSeenNumber = 4,
  kSeenBool = 8,
  kSeenText = 16
};

}  // namespace

WorkbookFormat DetectWorkbookFormat(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    std::error_code ec;
    return std::filesystem::exists(file, ec) ? WorkbookFormat::kOther : WorkbookFormat::kMissing;
  }
  char head[8] = {};
  in.read(head, sizeof head);
  if (in.gcount() >= 4 && std::string_view(head, 4) == std::string_view("PK\x03\x04", 4))
    return WorkbookFormat::kXlsx;
  if (in.gcount() == 8 &&
      std::string_view(head, 8) == std::string_view("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8)) {
    // The directory names its streams in UTF-16: an encrypted package is
    // known by its "EncryptedPackage" stream.
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string encrypted;
    for (char c : std::string_view("EncryptedPackage")) {
      encrypted.push_back(c);
      encrypted.push_back('\0');
    }
    if (all.find(encrypted) != std::string::npos) return WorkbookFormat::kEncrypted;
    return WorkbookFormat::kXls;
  }
  return WorkbookFormat::kOther;
}

Workbook::Workbook(std::filesystem::path file) : file_(std::move(file)) {
  OpenFile();
  for (std::size_t i = 0; i < sheets_.size(); ++i)
    tables_.push_back(Table{sheets_[i].name + "$", i, std::nullopt, std::nullopt});
  std::vector<DefinedName> names;
  if (xlsx_) names = xlsx_->names();
  if (xls_) names = xls_->names();
  for (const auto& n : names) {
    if (SameName(n.name, sheets_[n.sheet].name))
      tables_.push_back(Table{n.name, n.sheet, std::nullopt, std::nullopt, true});
    else
      tables_.push_back(Table{n.name, n.sheet, n.range, {}});
  }
}

void Workbook::OpenFile() {
  format_ = DetectWorkbookFormat(file_);
  const std::string shown = "'" + file_.string() + "'";
  std::vector<std::string> names;
  switch (format_) {
    case WorkbookFormat::kMissing:
      return;
    case WorkbookFormat::kOther:
      throw VbError(ado::kErrGeneral, "Die Datei " + shown + " ist keine Excel-Arbeitsmappe",
                    kSource);
    case WorkbookFormat::kEncrypted:
      throw VbError(ado::kErrGeneral,
                    "Die Excel-Arbeitsmappe " + shown +
                        " ist mit einem Kennwort verschlüsselt und kann nicht gelesen werden",
                    kSource);
    case WorkbookFormat::kXls:
      xls_ = std::make_unique<XlsFile>(file_);
      names = xls_->sheets();
      break;
    case WorkbookFormat::kXlsx:
      xlsx_ = std::make_unique<XlsxPackage>(file_);
      for (const auto& s : xlsx_->sheets()) names.push_back(s.name);
      break;
  }
  // A sheet known before keeps its place; the file's others are added.
  for (std::size_t i = 0; i < names.size(); ++i) {
    auto known = std::find_if(sheets_.begin(), sheets_.end(),
                              [&](const Sheet& s) { return SameName(s.name, names[i]); });
    if (known != sheets_.end()) {
      known->source = i;
      continue;
    }
    Sheet sheet;
    sheet.name = names[i];
    sheet.source = i;
    sheets_.push_back(std::move(sheet));
  }
}

void Workbook::Reopen() {
  if (xlsx_) old_xlsx_.push_back(std::move(xlsx_));
  if (xls_) old_xls_.push_back(std::move(xls_));
  for (auto& sheet : sheets_) {
    sheet.source = SIZE_MAX;
    sheet.replaced.clear();
    sheet.removed.clear();
    sheet.appended.clear();
    sheet.dirty = false;
    sheet.held.reset();
    sheet.indexes.clear();
  }
  const std::size_t known = sheets_.size();
  OpenFile();
  // Every sheet was written, so the file has them all.
  assert(sheets_.size() == known);
  (void)known;
  changed_ = false;
}

Workbook::~Workbook() = default;

bool Workbook::date1904() const {
  if (xls_) return xls_->date1904();
  return xlsx_ && xlsx_->date1904();
}

NumberKind Workbook::StyleKind(std::uint32_t style) const {
  if (xls_) return xls_->StyleKind(style);
  return xlsx_ ? xlsx_->StyleKind(style) : NumberKind::kPlain;
}

std::vector<std::string> Workbook::TableNames() const {
  std::vector<std::string> names;
  for (const auto& t : tables_) names.push_back(t.name);
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return LowerCase(a) < LowerCase(b); });
  return names;
}

std::optional<std::size_t> Workbook::Resolve(std::string_view written) const {
  std::string name = Unquoted(written);
  for (std::size_t i = 0; i < tables_.size(); ++i)
    if (SameName(tables_[i].name, name)) return i;
  // A sheet by its bare name.
  for (std::size_t i = 0; i < tables_.size(); ++i)
    if (!tables_[i].range && SameName(sheets_[tables_[i].sheet].name, name)) return i;
  return std::nullopt;
}

std::unique_ptr<RowReader> Workbook::OpenSheet(std::size_t sheet) const {
  const Sheet& s = sheets_.at(sheet);
  if (s.source == SIZE_MAX) return nullptr;
  if (xls_) return xls_->OpenSheet(s.source);
  return xlsx_ ? xlsx_->OpenSheet(s.source) : nullptr;
}

const TableLayout& Workbook::Layout(std::size_t table) const {
  const Table& t = tables_.at(table);
  if (!t.layout) t.layout = ReadLayout(t);
  return *t.layout;
}

TableLayout Workbook::ReadLayout(const Table& table) const {
  TableLayout layout;
  auto reader = OpenSheet(table.sheet);
  std::vector<RawRow> rows;  // the header and the sample
  if (reader) {
    RawRow row;
    while (rows.size() <= kScanRows && reader->Next(row)) {
      if (table.range && row.row < table.range->first_row) continue;
      if (table.range && row.row > table.range->last_row) break;
      rows.push_back(std::move(row));
    }
  }
  int first = INT32_MAX;
  int last = 0;
  if (table.range) {
    first = table.range->first_column;
    last = table.range->last_column;
    layout.first_row = table.range->first_row + 1;
    layout.last_row = table.range->last_row;
    layout.header_row = table.range->first_row;
    if (!rows.empty() && rows.front().row != table.range->first_row) {
      rows.insert(rows.begin(), RawRow{table.range->first_row, {}});
    }
  } else {
    if (reader && reader->used) {
      first = reader->used->first_column;
      last = reader->used->last_column;
    }
    // Cells further out than the recorded used range, in rows below the
    // sample, widen the table too.
    if (reader) {
      if (auto extent = reader->RemainingColumns()) {
        first = std::min(first, extent->first);
        last = std::max(last, extent->second);
      }
    }
    for (const auto& r : rows) {
      for (const auto& c : r.cells) {
        first = std::min(first, c.column);
        last = std::max(last, c.column);
      }
    }
    if (!rows.empty()) {
      layout.header_row = rows.front().row;
      layout.first_row = layout.header_row + 1;
    }
  }
  if (last < first) {
    // An empty sheet: one column, as the driver gave it.
    first = last = 1;
  }
  layout.first_column = first;
  const auto count = static_cast<std::size_t>(last - first + 1);
  layout.names.assign(count, "");
  layout.types.assign(count, file_engine::ColumnType::kText);
  layout.styles.assign(count, 0);

  const bool d1904 = date1904();
  auto kind_of = [&](const CellValue& v) { return StyleKind(v.style); };
  if (!rows.empty()) {
    for (const auto& c : rows.front().cells) {
      if (c.column < first || c.column > last) continue;
      layout.names[static_cast<std::size_t>(c.column - first)] =
          HeaderText(c.value, d1904, kind_of(c.value));
    }
  }
  std::vector<std::string> seen;
  for (std::size_t i = 0; i < count; ++i) {
    std::string& name = layout.names[i];
    std::replace(name.begin(), name.end(), '.', '#');
    bool taken = name.empty() || std::any_of(seen.begin(), seen.end(), [&](const std::string& s) {
                   return SameName(s, name);
                 });
    if (taken) name = "F" + std::to_string(i + 1);
    seen.push_back(name);
  }

  std::vector<unsigned> kinds(count, 0);
  std::vector<bool> long_text(count, false);
  for (std::size_t r = 1; r < rows.size(); ++r) {
    for (const auto& c : rows[r].cells) {
      if (c.column < first || c.column > last) continue;
      auto i = static_cast<std::size_t>(c.column - first);
      switch (c.value.kind) {
        case CellValue::Kind::kNumber:
          switch (kind_of(c.value)) {
            case NumberKind::kDate:
              kinds[i] |= kSeenDate;
              break;
            case NumberKind::kCurrency:
              kinds[i] |= kSeenCurrency;
              break;
            case NumberKind::kPlain:
              kinds[i] |= kSeenNumber;
              break;
          }
          break;
        case CellValue::Kind::kBoolean:
          kinds[i] |= kSeenBool;
          break;
        case CellValue::Kind::kText:
          kinds[i] |= kSeenText;
          if (CharacterCount(c.value.text) > kLongText) long_text[i] = true;
          break;
        case CellValue::Kind::kError:
        case CellValue::Kind::kEmpty:
          break;
      }
      if (kinds[i] != 0 && layout.styles[i] == 0) layout.styles[i] = c.value.style;
    }
  }
  using file_engine::ColumnType;
  for (std::size_t i = 0; i < count; ++i) {
    switch (kinds[i]) {
      case kSeenDate:
        layout.types[i] = ColumnType::kDateTime;
        break;
      case kSeenCurrency:
        layout.types[i] = ColumnType::kCurrency;
        break;
      case kSeenNumber:
      case kSeenNumber | kSeenCurrency:
        layout.types[i] = ColumnType::kDouble;
        break;
      case kSeenBool:
        layout.types[i] = ColumnType::kBoolean;
        break;
      default:
        layout.types[i] = long_text[i] ? ColumnType::kMemo : ColumnType::kText;
        break;
    }
  }
  return layout;
}

std::size_t Workbook::CreateSheet(const std::string& written,
                                  const std::vector<std::string>& columns) {
  std::string name = Unquoted(written);
  if (name.size() > 1 && name.back() == '$') name.pop_back();
  if (name.empty() || CharacterCount(name) > 31 ||
      name.find_first_of(":\\/?*[]") != std::string::npos || name.front() == '\'' ||
      name.back() == '\'') {
    throw VbError(ado::kErrStatementRefused,
                  "'" + name + "' ist kein gültiger Name für ein Tabellenblatt", kSource);
  }
  for (const auto& s : sheets_) {
    if (SameName(s.name, name))
      throw VbError(ado::kErrStatementRefused, "Das Tabellenblatt '" + name + "' existiert bereits",
                    kSource);
  }
  if (columns.empty())
    throw VbError(ado::kErrStatementRefused, "Die Tabelle '" + name + "' hat keine Spalten",
                  kSource);
  Sheet sheet;
  sheet.name = name;
  sheet.dirty = true;
  sheets_.push_back(std::move(sheet));
  Table table{name + "$", sheets_.size() - 1, std::nullopt, TableLayout{}};
  table.layout->names = columns;
  table.layout->types.assign(columns.size(), file_engine::ColumnType::kText);
  table.layout->styles.assign(columns.size(), 0);
  table.layout->header_row = 1;
  table.layout->first_row = 2;
  Table alias = table;
  alias.name = name;
  alias.alias = true;
  tables_.push_back(std::move(table));
  tables_.push_back(std::move(alias));
  changed_ = true;
  return tables_.size() - 2;
}

void Workbook::CheckWritable(std::size_t table) {
  if (tables_.at(table).range) {
    throw VbError(ado::kErrStatementRefused,
                  "Der Bereich '" + tables_[table].name +
                      "' kann nur gelesen werden; Daten werden in Tabellenblätter geschrieben",
                  kSource);
  }
  CheckWritableFile();
}

void Workbook::CheckWritableFile() {
  if (checked_writable_) return;
  const std::string shown = "'" + file_.string() + "'";
  std::filesystem::path folder = file_.parent_path();
  if (folder.empty()) folder = ".";
  // A file without write permission is read only, also to a user who could
  // write it anyway.
  std::error_code ec;
  const auto perms = std::filesystem::status(file_, ec).permissions();
  const bool no_write_bit =
      (perms & (std::filesystem::perms::owner_write | std::filesystem::perms::group_write |
                std::filesystem::perms::others_write)) == std::filesystem::perms::none;
  if (exists() && (no_write_bit || ::access(file_.c_str(), W_OK) != 0)) {
    throw VbError(ado::kErrGeneral, "Die Excel-Arbeitsmappe " + shown + " ist schreibgeschützt",
                  kSource);
  }
  if (::access(folder.c_str(), W_OK) != 0) {
    throw VbError(ado::kErrGeneral,
                  "Die Excel-Arbeitsmappe " + shown +
                      " kann nicht geschrieben werden: der Ordner ist schreibgeschützt",
                  kSource);
  }
  checked_writable_ = true;
}

Workbook::Sheet& Workbook::WritableSheet(std::size_t table) {
  CheckWritable(table);
  Sheet& sheet = sheets_.at(tables_[table].sheet);
  sheet.dirty = true;
  changed_ = true;
  return sheet;
}

void Workbook::IndexRow(Sheet& sheet, std::int64_t id, const std::vector<CellValue>& values) {
  for (auto& index : sheet.indexes) {
    if (index.column < values.size())
      index.rows[index.key_of(*this, values[index.column], index.type)].push_back(id);
  }
}

bool Workbook::Indexed(std::size_t table) const {
  const Table& t = tables_.at(table);
  return !t.range && sheets_.at(t.sheet).dirty;
}

std::vector<TableRow> Workbook::RowsByKey(std::size_t table, std::size_t column,
                                          const std::string& key, CellKey key_of) {
  assert(Indexed(table));
  Sheet& sheet = sheets_.at(tables_[table].sheet);
  const TableLayout& layout = Layout(table);
  assert(column < layout.names.size());
  auto index = std::find_if(sheet.indexes.begin(), sheet.indexes.end(),
                            [&](const Sheet::KeyIndex& i) { return i.column == column; });
  if (index == sheet.indexes.end()) {
    if (!sheet.held) {
      sheet.held.emplace();
      TableScan scan(*this, table);
      TableRow row;
      while (scan.Next(row)) {
        if (row.id < kAppendedIds) sheet.held->emplace(row.id, std::move(row.values));
      }
    }
    sheet.indexes.push_back({column, layout.types.at(column), key_of, {}});
    index = sheet.indexes.end() - 1;
    auto add = [&](std::int64_t id, const std::vector<CellValue>& values) {
      if (column < values.size())
        index->rows[key_of(*this, values[column], index->type)].push_back(id);
    };
    for (const auto& [id, values] : *sheet.held) add(id, values);
    for (const auto& [id, values] : sheet.appended) add(id, values);
  }
  std::vector<TableRow> found;
  auto hit = index->rows.find(key);
  if (hit == index->rows.end()) return found;
  std::vector<std::int64_t> ids = hit->second;
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  const std::size_t count = layout.names.size();
  for (std::int64_t id : ids) {
    const std::vector<CellValue>* values = nullptr;
    if (id >= kAppendedIds) {
      auto it = sheet.appended.find(id);
      if (it != sheet.appended.end()) values = &it->second;
    } else if (!sheet.removed.count(id)) {
      auto it = sheet.replaced.find(id);
      if (it != sheet.replaced.end()) {
        values = &it->second;
      } else if (auto held = sheet.held->find(id); held != sheet.held->end()) {
        values = &held->second;
      }
    }
    if (!values) continue;
    TableRow row{id, *values};
    row.values.resize(count);
    found.push_back(std::move(row));
  }
  return found;
}

std::int64_t Workbook::Append(std::size_t table, std::vector<CellValue> values) {
  Sheet& sheet = WritableSheet(table);
  std::int64_t id = sheet.next_id++;
  IndexRow(sheet, id, values);
  sheet.appended.emplace(id, std::move(values));
  return id;
}

void Workbook::Replace(std::size_t table, std::int64_t id, std::vector<CellValue> values) {
  Sheet& sheet = WritableSheet(table);
  IndexRow(sheet, id, values);
  if (id >= kAppendedIds)
    sheet.appended[id] = std::move(values);
  else
    sheet.replaced[id] = std::move(values);
}

void Workbook::Remove(std::size_t table, std::int64_t id) {
  Sheet& sheet = WritableSheet(table);
  if (id >= kAppendedIds) {
    sheet.appended.erase(id);
  } else {
    sheet.replaced.erase(id);
    sheet.removed.insert(id);
  }
}

bool Workbook::WritesXls() const {
  return format_ == WorkbookFormat::kXls ||
         (format_ == WorkbookFormat::kMissing && LowerCase(file_.extension().string()) == ".xls");
}

namespace {

// A sheet's rows with a table's changes: rows replaced (the table's cells
// written anew, a cell keeping its format unless the value brings one, the
// other cells kept), rows removed (those below moving up), rows appended
// below the last row that holds a value.
void EditRows(std::vector<RawRow>& rows, const TableLayout& layout,
              const std::map<std::int64_t, std::vector<CellValue>>& replaced,
              const std::set<std::int64_t>& removed,
              const std::map<std::int64_t, std::vector<CellValue>>& appended) {
  for (auto& row : rows) {
    auto it = replaced.find(row.row);
    if (it == replaced.end()) continue;
    const int first = layout.first_column;
    const int last = first + static_cast<int>(it->second.size()) - 1;
    std::vector<RawCell> cells;
    for (auto& c : row.cells) {
      if (c.column < first || c.column > last) {
        cells.push_back(std::move(c));
        continue;
      }
      const auto i = static_cast<std::size_t>(c.column - first);
      CellValue value = it->second[i];
      if (value.empty()) continue;
      if (value.style == 0) value.style = c.value.style;
      cells.push_back(RawCell{c.column, std::move(value)});
    }
    for (std::size_t i = 0; i < it->second.size(); ++i) {
      const int column = first + static_cast<int>(i);
      const bool present = std::any_of(cells.begin(), cells.end(),
                                       [&](const RawCell& c) { return c.column == column; });
      if (!present && !it->second[i].empty()) cells.push_back(RawCell{column, it->second[i]});
    }
    std::sort(cells.begin(), cells.end(),
              [](const RawCell& a, const RawCell& b) { return a.column < b.column; });
    row.cells = std::move(cells);
  }
  if (!removed.empty()) {
    std::vector<RawRow> kept;
    std::int64_t gone = 0;
    for (auto& row : rows) {
      if (removed.count(row.row)) {
        ++gone;
        continue;
      }
      row.row -= gone;
      kept.push_back(std::move(row));
    }
    rows = std::move(kept);
  }
  std::erase_if(rows, [](const RawRow& r) { return r.cells.empty(); });
  std::int64_t next = rows.empty() ? 0 : rows.back().row;
  for (const auto& [id, values] : appended) {
    RawRow row;
    row.row = ++next;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (!values[i].empty())
        row.cells.push_back(RawCell{layout.first_column + static_cast<int>(i), values[i]});
    }
    rows.push_back(std::move(row));
  }
}

}  // namespace

void Workbook::SaveXls() {
  XlsWorkbook book;
  if (xls_) {
    book.formats = xls_->formats();
    book.date1904 = xls_->date1904();
  }
  std::vector<std::optional<CellRange>> areas(sheets_.size());  // of each sheet's table
  for (std::size_t s = 0; s < sheets_.size(); ++s) {
    const Sheet& sheet = sheets_[s];
    XlsSheet out;
    out.name = sheet.name;
    std::optional<std::size_t> table;
    for (std::size_t t = 0; t < tables_.size(); ++t)
      if (tables_[t].sheet == s && !tables_[t].range && !tables_[t].alias) table = t;
    std::unique_ptr<RowReader> reader;
    if (xls_ && sheet.source != SIZE_MAX) reader = xls_->OpenSheet(sheet.source, &out.formatting);
    if (reader) {
      RawRow row;
      while (reader->Next(row)) out.rows.push_back(std::move(row));
    } else if (table) {
      // A sheet made by CREATE TABLE: its header row.
      RawRow header{1, {}};
      const auto& names = Layout(*table).names;
      for (std::size_t i = 0; i < names.size(); ++i) {
        CellValue c;
        c.kind = CellValue::Kind::kText;
        c.text = names[i];
        header.cells.push_back(RawCell{static_cast<int>(i) + 1, std::move(c)});
      }
      out.rows.push_back(std::move(header));
    }
    if (table && sheet.dirty) {
      const TableLayout& layout = Layout(*table);
      EditRows(out.rows, layout, sheet.replaced, sheet.removed, sheet.appended);
      CellRange area;
      area.first_column = layout.first_column;
      area.last_column = layout.first_column + static_cast<int>(layout.names.size()) - 1;
      area.first_row = std::max<std::int64_t>(layout.header_row, 1);
      area.last_row = std::max(area.first_row, out.rows.empty() ? 1 : out.rows.back().row);
      areas[s] = area;
    }
    book.sheets.push_back(std::move(out));
  }
  // The defined names: ranges as they were, a name standing for a sheet
  // over its table as it now is.
  std::vector<DefinedName> file_names;
  if (xls_) file_names = xls_->names();
  for (const auto& t : tables_) {
    if (t.range) {
      book.names.push_back(DefinedName{t.name, t.sheet, *t.range});
    } else if (t.alias) {
      if (areas[t.sheet]) {
        book.names.push_back(DefinedName{t.name, t.sheet, *areas[t.sheet]});
      } else {
        for (const auto& n : file_names)
          if (SameName(n.name, t.name)) book.names.push_back(n);
      }
    }
  }
  WriteXlsWorkbook(file_, book);
}

void Workbook::Save() {
  if (!changed_) return;
  if (WritesXls())
    SaveXls();
  else
    XlsxWriter(*this).Write();
  Reopen();
}

void Workbook::DiscardChanges() {
  bool made = false;
  for (auto& sheet : sheets_) {
    sheet.replaced.clear();
    sheet.removed.clear();
    sheet.appended.clear();
    sheet.held.reset();
    sheet.indexes.clear();
    sheet.dirty = sheet.source == SIZE_MAX;
    made = made || sheet.dirty;
  }
  changed_ = made;
}

TableScan::TableScan(const Workbook& workbook, std::size_t table)
    : workbook_(workbook), table_(table), layout_(workbook.Layout(table)) {
  reader_ = workbook.OpenSheet(workbook.tables_[table].sheet);
  file_done_ = reader_ == nullptr;
}

bool TableScan::Next(TableRow& row) {
  const auto& sheet = workbook_.sheets_[workbook_.tables_[table_].sheet];
  const std::size_t count = layout_.names.size();
  while (!file_done_) {
    if (!reader_->Next(raw_)) {
      file_done_ = true;
      break;
    }
    if (raw_.row < layout_.first_row) continue;
    if (raw_.row > layout_.last_row) {
      file_done_ = true;
      break;
    }
    if (sheet.removed.count(raw_.row)) continue;
    row.id = raw_.row;
    if (auto it = sheet.replaced.find(raw_.row); it != sheet.replaced.end()) {
      row.values = it->second;
      row.values.resize(count);
      return true;
    }
    row.values.assign(count, CellValue{});
    for (auto& c : raw_.cells) {
      auto i = c.column - layout_.first_column;
      if (i < 0 || static_cast<std::size_t>(i) >= count) continue;
      row.values[static_cast<std::size_t>(i)] = std::move(c.value);
    }
    return true;
  }
  if (workbook_.tables_[table_].range) return false;
  auto it = sheet.appended.upper_bound(appended_after_);
  if (it == sheet.appended.end()) return false;
  appended_after_ = it->first;
  row.id = it->first;
  row.values = it->second;
  row.values.resize(count);
  return true;
}

}  // namespace ketrova::excel
