#include "platform/ado/providers/excel/excel_module.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_module.h"
#include "platform/ado/file_engine/module_support.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/providers/excel/workbook.h"
#include "support/vb_error.h"

namespace ketrova::excel {

namespace {

using file_engine::ColumnType;

struct Change {
  enum class Kind { kAppend, kReplace, kRemove } kind;
  std::int64_t id = 0;
  std::vector<CellValue> values;
};

struct ExcelTable : sqlite3_vtab {
  Workbook* workbook = nullptr;
  std::size_t table = 0;
  std::vector<Change> pending;  // the changes of the running statement
  std::int64_t next_pending_id = 0;
};

struct ExcelCursor : sqlite3_vtab_cursor {
  std::unique_ptr<TableScan> scan;  // a full scan, or
  std::vector<TableRow> found;      // the rows a lookup by key found
  std::size_t next_found = 0;
  TableRow row;
  bool eof = true;

  bool Advance() {
    if (scan) return scan->Next(row);
    if (next_found >= found.size()) return false;
    row = std::move(found[next_found++]);
    return true;
  }
};

int Fail(sqlite3_vtab* vtab, const VbError& e) {
  sqlite3_free(vtab->zErrMsg);
  vtab->zErrMsg = sqlite3_mprintf("%s", e.Description.c_str());
  file_engine::SetModuleErrorNumber(e.Number);
  return SQLITE_ERROR;
}

int FailUnknown(sqlite3_vtab* vtab, const std::exception& e) {
  return Fail(vtab, VbError(ado::kErrGeneral, e.what()));
}

std::string TextOf(sqlite3_value* v) {
  return std::string(reinterpret_cast<const char*>(sqlite3_value_text(v)),
                     static_cast<std::size_t>(sqlite3_value_bytes(v)));
}

std::string DeclareSql(const TableLayout& layout) {
  std::string sql = "CREATE TABLE x(";
  for (std::size_t i = 0; i < layout.names.size(); ++i) {
    if (i > 0) sql += ", ";
    sql += file_engine::QuoteSqlIdentifier(layout.names[i]);
    sql += " ";
    sql += file_engine::SqlTypeName(layout.types[i]);
  }
  return sql + ")";
}

int Connect(sqlite3* db, void* aux, int argc, const char* const* argv, sqlite3_vtab** out,
            char** err) {
  try {
    auto* workbook = static_cast<Workbook*>(aux);
    if (argc < 4) throw VbError(ado::kErrGeneral, "ketrova_excel: die Tabelle fehlt");
    std::string arg = argv[3];
    if (arg.size() >= 2 && arg.front() == '\'') arg = arg.substr(1, arg.size() - 2);
    auto table = std::make_unique<ExcelTable>();
    table->workbook = workbook;
    table->table = std::stoul(arg);
    const TableLayout& layout = workbook->Layout(table->table);
    if (sqlite3_declare_vtab(db, DeclareSql(layout).c_str()) != SQLITE_OK) {
      throw VbError(ado::kErrGeneral, "Spalten der Tabelle '" + workbook->TableName(table->table) +
                                          "' sind ungültig: " + sqlite3_errmsg(db));
    }
    *out = table.release();
    return SQLITE_OK;
  } catch (const VbError& e) {
    *err = sqlite3_mprintf("%s", e.Description.c_str());
    file_engine::SetModuleErrorNumber(e.Number);
  } catch (const std::exception& e) {
    *err = sqlite3_mprintf("%s", e.what());
    file_engine::SetModuleErrorNumber(ado::kErrGeneral);
  }
  return SQLITE_ERROR;
}

// A cell as the SQL engine sees it in a column of the given type.
struct SqlValue {
  enum class Kind { kNull, kInteger, kDouble, kText } kind = Kind::kNull;
  double number = 0;
  std::string text;
};

SqlValue ValueOf(const Workbook& wb, const CellValue& v, ColumnType type) {
  SqlValue out;
  auto number = [&](double n, bool integer) {
    out.kind = integer ? SqlValue::Kind::kInteger : SqlValue::Kind::kDouble;
    out.number = n;
  };
  auto text = [&](std::string t) {
    out.kind = SqlValue::Kind::kText;
    out.text = std::move(t);
  };
  switch (v.kind) {
    case CellValue::Kind::kEmpty:
      break;
    case CellValue::Kind::kNumber:
      if (type == ColumnType::kDateTime) {
        text(IsoFromOle(OleFromSerial(v.number, wb.date1904())));
      } else if (type == ColumnType::kDouble || type == ColumnType::kCurrency) {
        number(v.number, false);
      } else if (type == ColumnType::kBoolean) {
        number(v.number != 0 ? 1 : 0, true);
      } else if (wb.StyleKind(v.style) == NumberKind::kDate) {
        text(file_engine::GermanDateText(IsoFromOle(OleFromSerial(v.number, wb.date1904()))));
      } else {
        text(file_engine::FormatNumber(v.number));
      }
      break;
    case CellValue::Kind::kBoolean:
      if (type == ColumnType::kBoolean)
        number(v.number != 0 ? 1 : 0, true);
      else
        text(v.number != 0 ? "True" : "False");
      break;
    case CellValue::Kind::kText:
    case CellValue::Kind::kError:
      text(v.text);
      break;
  }
  return out;
}

// The lookup key of a value: numbers, and texts that SQLite would take for
// the same number, share one key.
std::string NumberKey(double n) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "n%.17g", n == 0 ? 0.0 : n);
  return buffer;
}

std::string TextKey(std::string_view text) {
  std::string_view trimmed = text;
  while (!trimmed.empty() && trimmed.front() == ' ') trimmed.remove_prefix(1);
  while (!trimmed.empty() && trimmed.back() == ' ') trimmed.remove_suffix(1);
  if (!trimmed.empty()) {
    std::string copy(trimmed);
    char* end = nullptr;
    double n = std::strtod(copy.c_str(), &end);
    if (end == copy.c_str() + copy.size() && std::isfinite(n)) return NumberKey(n);
  }
  return "t" + std::string(text);
}

std::string CellKeyOf(const Workbook& wb, const CellValue& cell, ColumnType type) {
  SqlValue v = ValueOf(wb, cell, type);
  switch (v.kind) {
    case SqlValue::Kind::kNull:
      return {};
    case SqlValue::Kind::kInteger:
    case SqlValue::Kind::kDouble:
      return NumberKey(v.number);
    case SqlValue::Kind::kText:
      return TextKey(v.text);
  }
  return {};
}

// An equality on a column is offered to Filter (idxNum: the column + 1),
// which looks it up by key in a sheet being written; SQLite compares the rows
// found all the same.
int BestIndex(sqlite3_vtab*, sqlite3_index_info* info) {
  info->estimatedCost = 1e6;
  info->estimatedRows = 1000000;
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& c = info->aConstraint[i];
    if (!c.usable || c.op != SQLITE_INDEX_CONSTRAINT_EQ || c.iColumn < 0) continue;
    info->aConstraintUsage[i].argvIndex = 1;
    info->aConstraintUsage[i].omit = 0;
    info->idxNum = c.iColumn + 1;
    info->estimatedCost = 10;
    info->estimatedRows = 10;
    break;
  }
  return SQLITE_OK;
}

// The key a value compared with a column gives; nullopt for NULL, which
// equals nothing.
std::optional<std::string> ValueKey(sqlite3_value* v) {
  switch (sqlite3_value_type(v)) {
    case SQLITE_NULL:
      return std::nullopt;
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
      return NumberKey(sqlite3_value_double(v));
    default:
      return TextKey(TextOf(v));
  }
}

int Filter(sqlite3_vtab_cursor* base, int idx, const char*, int argc, sqlite3_value** argv) {
  auto* cursor = static_cast<ExcelCursor*>(base);
  auto* table = static_cast<ExcelTable*>(base->pVtab);
  try {
    cursor->scan.reset();
    cursor->found.clear();
    cursor->next_found = 0;
    if (idx > 0 && argc == 1 && table->workbook->Indexed(table->table)) {
      if (auto key = ValueKey(argv[0])) {
        cursor->found = table->workbook->RowsByKey(table->table, static_cast<std::size_t>(idx - 1),
                                                   *key, CellKeyOf);
      }
    } else {
      cursor->scan = std::make_unique<TableScan>(*table->workbook, table->table);
    }
    cursor->eof = !cursor->Advance();
    return SQLITE_OK;
  } catch (const VbError& e) {
    return Fail(base->pVtab, e);
  } catch (const std::exception& e) {
    return FailUnknown(base->pVtab, e);
  }
}

int Next(sqlite3_vtab_cursor* base) {
  auto* cursor = static_cast<ExcelCursor*>(base);
  try {
    cursor->eof = !cursor->Advance();
    return SQLITE_OK;
  } catch (const VbError& e) {
    return Fail(base->pVtab, e);
  } catch (const std::exception& e) {
    return FailUnknown(base->pVtab, e);
  }
}

int Eof(sqlite3_vtab_cursor* base) {
  return static_cast<ExcelCursor*>(base)->eof ? 1 : 0;
}

void ResultText(sqlite3_context* ctx, const std::string& text) {
  sqlite3_result_text(ctx, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

int Column(sqlite3_vtab_cursor* base, sqlite3_context* ctx, int n) {
  auto* cursor = static_cast<ExcelCursor*>(base);
  auto* table = static_cast<ExcelTable*>(base->pVtab);
  const Workbook& wb = *table->workbook;
  const TableLayout& layout = wb.Layout(table->table);
  auto i = static_cast<std::size_t>(n);
  SqlValue v = ValueOf(wb, cursor->row.values.at(i), layout.types.at(i));
  switch (v.kind) {
    case SqlValue::Kind::kNull:
      sqlite3_result_null(ctx);
      break;
    case SqlValue::Kind::kInteger:
      sqlite3_result_int(ctx, static_cast<int>(v.number));
      break;
    case SqlValue::Kind::kDouble:
      sqlite3_result_double(ctx, v.number);
      break;
    case SqlValue::Kind::kText:
      ResultText(ctx, v.text);
      break;
  }
  return SQLITE_OK;
}

int Rowid(sqlite3_vtab_cursor* base, sqlite3_int64* rowid) {
  *rowid = static_cast<ExcelCursor*>(base)->row.id;
  return SQLITE_OK;
}

CellValue TextCell(std::string text) {
  CellValue c;
  c.kind = CellValue::Kind::kText;
  c.text = std::move(text);
  return c;
}

CellValue NumberCell(double number, std::uint32_t style) {
  CellValue c;
  c.kind = CellValue::Kind::kNumber;
  c.number = number;
  c.style = style;
  return c;
}

// The cell a written value gives in a column of the given type.
CellValue CellOf(const Workbook& wb, const TableLayout& layout, std::size_t i, sqlite3_value* v) {
  const int kind = sqlite3_value_type(v);
  if (kind == SQLITE_NULL) return {};
  const std::uint32_t style = layout.styles.at(i);
  switch (layout.types.at(i)) {
    case ColumnType::kDouble:
    case ColumnType::kCurrency:
    case ColumnType::kInteger:
      if (kind == SQLITE_INTEGER || kind == SQLITE_FLOAT)
        return NumberCell(sqlite3_value_double(v), style);
      if (auto n = file_engine::ParseNumber(TextOf(v), false)) return NumberCell(*n, style);
      break;
    case ColumnType::kDateTime: {
      if (kind == SQLITE_INTEGER || kind == SQLITE_FLOAT)
        return NumberCell(SerialFromOle(sqlite3_value_double(v), wb.date1904()), style);
      std::string text = TextOf(v);
      auto iso =
          OleFromIso(text) ? std::optional<std::string>(text) : file_engine::ParseDateText(text);
      if (iso) {
        if (auto ole = OleFromIso(*iso))
          return NumberCell(SerialFromOle(*ole, wb.date1904()), style);
      }
      break;
    }
    case ColumnType::kBoolean: {
      std::optional<bool> b;
      if (kind == SQLITE_INTEGER || kind == SQLITE_FLOAT) {
        b = sqlite3_value_double(v) != 0;
      } else {
        b = file_engine::ParseBoolean(TextOf(v));
      }
      if (b) {
        CellValue c;
        c.kind = CellValue::Kind::kBoolean;
        c.number = *b ? 1 : 0;
        c.style = style;
        return c;
      }
      break;
    }
    case ColumnType::kText:
    case ColumnType::kMemo:
      if (kind == SQLITE_INTEGER) return TextCell(std::to_string(sqlite3_value_int64(v)));
      if (kind == SQLITE_FLOAT) return TextCell(file_engine::FormatNumber(sqlite3_value_double(v)));
      break;
  }
  return TextCell(TextOf(v));
}

std::vector<CellValue> RowOf(const ExcelTable& table, int argc, sqlite3_value** argv) {
  const Workbook& wb = *table.workbook;
  const TableLayout& layout = wb.Layout(table.table);
  std::vector<CellValue> values(layout.names.size());
  for (int a = 2; a < argc && static_cast<std::size_t>(a - 2) < values.size(); ++a) {
    auto i = static_cast<std::size_t>(a - 2);
    values[i] = CellOf(wb, layout, i, argv[a]);
    if (values[i].kind == CellValue::Kind::kText &&
        CharacterCount(values[i].text) > kMaxCellCharacters) {
      throw VbError(ado::kErrStatementRefused,
                    "Der Text für die Spalte '" + layout.names[i] + "' ist mit " +
                        std::to_string(CharacterCount(values[i].text)) +
                        " Zeichen länger, als eine Excel-Zelle fasst (32767 Zeichen)");
    }
  }
  return values;
}

int Update(sqlite3_vtab* vtab, int argc, sqlite3_value** argv, sqlite3_int64* rowid) {
  auto* table = static_cast<ExcelTable*>(vtab);
  try {
    table->workbook->CheckWritable(table->table);
    if (argc == 1) {
      table->pending.push_back({Change::Kind::kRemove, sqlite3_value_int64(argv[0]), {}});
      return SQLITE_OK;
    }
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
      table->pending.push_back({Change::Kind::kAppend, 0, RowOf(*table, argc, argv)});
      // The id the row will have; only the engine's bookkeeping sees it.
      *rowid = -(++table->next_pending_id);
      return SQLITE_OK;
    }
    std::int64_t id = sqlite3_value_int64(argv[0]);
    if (sqlite3_value_type(argv[1]) != SQLITE_NULL && sqlite3_value_int64(argv[1]) != id) {
      throw VbError(ado::kErrStatementRefused, "Die Zeilennummer kann nicht geändert werden");
    }
    table->pending.push_back({Change::Kind::kReplace, id, RowOf(*table, argc, argv)});
    return SQLITE_OK;
  } catch (const VbError& e) {
    return Fail(vtab, e);
  } catch (const std::exception& e) {
    return FailUnknown(vtab, e);
  }
}

int Begin(sqlite3_vtab* vtab) {
  static_cast<ExcelTable*>(vtab)->pending.clear();
  return SQLITE_OK;
}

int Sync(sqlite3_vtab* vtab) {
  auto* table = static_cast<ExcelTable*>(vtab);
  try {
    for (auto& change : table->pending) {
      switch (change.kind) {
        case Change::Kind::kAppend:
          table->workbook->Append(table->table, std::move(change.values));
          break;
        case Change::Kind::kReplace:
          table->workbook->Replace(table->table, change.id, std::move(change.values));
          break;
        case Change::Kind::kRemove:
          table->workbook->Remove(table->table, change.id);
          break;
      }
    }
    table->pending.clear();
    return SQLITE_OK;
  } catch (const VbError& e) {
    table->pending.clear();
    return Fail(vtab, e);
  }
}

int Rollback(sqlite3_vtab* vtab) {
  static_cast<ExcelTable*>(vtab)->pending.clear();
  return SQLITE_OK;
}

int Rename(sqlite3_vtab* vtab, const char*) {
  return Fail(
      vtab, VbError(ado::kErrStatementRefused, "Ein Tabellenblatt kann so nicht umbenannt werden"));
}

sqlite3_module MakeModule() {
  sqlite3_module m =
      file_engine::ScanModule<ExcelTable, ExcelCursor>(Connect, Filter, Next, Eof, Column, Rowid);
  m.xBestIndex = BestIndex;
  m.xUpdate = Update;
  m.xBegin = Begin;
  m.xSync = Sync;
  m.xCommit = Rollback;  // Sync has applied the changes
  m.xRollback = Rollback;
  m.xRename = Rename;
  return m;
}

const sqlite3_module kModule = MakeModule();

}  // namespace

void RegisterExcelModule(sqlite3* db, Workbook* workbook) {
  sqlite3_create_module_v2(db, kExcelModuleName, &kModule, workbook, nullptr);
}

}  // namespace ketrova::excel
