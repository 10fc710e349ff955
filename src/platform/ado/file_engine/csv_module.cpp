#include "platform/ado/file_engine/csv_module.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <cassert>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_writer.h"
#include "platform/ado/file_engine/module_support.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/file_engine/text_table.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

namespace {

thread_local std::int32_t t_module_error = 0;

struct FileStamp {
  bool exists = false;
  std::int64_t size = 0;
  std::int64_t mtime_ns = 0;
  std::uint64_t inode = 0;
  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

FileStamp StampOf(const std::filesystem::path& file) {
  struct stat st {};
  FileStamp s;
  if (::stat(file.c_str(), &st) != 0) return s;
  s.exists = true;
  s.size = st.st_size;
  s.mtime_ns = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  s.inode = st.st_ino;
  return s;
}

struct CsvTable : sqlite3_vtab {
  sqlite3* db = nullptr;
  std::string name;
  TextTableLayout layout;
  FileStamp stamp;
  std::string inserts;
  std::vector<std::int64_t> deletes;
  std::map<std::int64_t, std::string> updates;
  std::int64_t next_rowid = 0;
};

struct CsvCursor : sqlite3_vtab_cursor {
  std::unique_ptr<CsvReader> reader;
  CsvRecord record;
  bool eof = true;
  // The file's size when the scan began: lines appended during the scan (by
  // a statement that reads and writes the same file) are not read again.
  std::int64_t end = 0;
  std::string scratch;  // a value converted for SQLite
};

// The tables of each connection, for StaleCsvTables.
std::mutex g_tables_mutex;
std::map<sqlite3*, std::map<std::string, CsvTable*>> g_tables;

int Fail(sqlite3_vtab* vtab, const VbError& e) {
  sqlite3_free(vtab->zErrMsg);
  vtab->zErrMsg = sqlite3_mprintf("%s", e.Description.c_str());
  t_module_error = e.Number;
  return SQLITE_ERROR;
}

int FailUnknown(sqlite3_vtab* vtab, const std::exception& e) {
  return Fail(vtab, VbError(ado::kErrGeneral, e.what()));
}

std::string Unquote(std::string_view arg) {
  while (!arg.empty() && arg.front() == ' ') arg.remove_prefix(1);
  while (!arg.empty() && arg.back() == ' ') arg.remove_suffix(1);
  if (arg.size() >= 2 && (arg.front() == '\'' || arg.front() == '"') && arg.back() == arg.front()) {
    char q = arg.front();
    std::string out;
    for (std::size_t i = 1; i + 1 < arg.size(); ++i) {
      out.push_back(arg[i]);
      if (arg[i] == q && i + 2 < arg.size() && arg[i + 1] == q) ++i;
    }
    return out;
  }
  return std::string(arg);
}

std::string DeclareSql(const TextTableLayout& layout) {
  std::string sql = "CREATE TABLE x(";
  for (std::size_t i = 0; i < layout.names.size(); ++i) {
    if (i > 0) sql += ", ";
    sql += QuoteSqlIdentifier(layout.names[i]);
    sql += " ";
    sql += SqlTypeName(layout.types[i]);
    // A width from schema.ini travels in the declared type: "TEXT(50)".
    if (layout.widths[i] > 0) sql += "(" + std::to_string(layout.widths[i]) + ")";
  }
  sql += ")";
  return sql;
}

int Connect(sqlite3* db, void*, int argc, const char* const* argv, sqlite3_vtab** out, char** err) {
  try {
    if (argc < 4) throw VbError(ado::kErrGeneral, "ketrova_csv: der Dateiname fehlt");
    auto table = std::make_unique<CsvTable>();
    table->db = db;
    table->name = argv[2];
    table->layout = ReadTextTableLayout(Unquote(argv[3]));
    table->stamp = StampOf(table->layout.file);
    table->next_rowid = table->stamp.size;
    int rc = sqlite3_declare_vtab(db, DeclareSql(table->layout).c_str());
    if (rc != SQLITE_OK) {
      throw VbError(ado::kErrGeneral, std::string("Spalten der Datei ") +
                                          table->layout.file.string() +
                                          " sind ungültig: " + sqlite3_errmsg(db));
    }
    {
      std::lock_guard lock(g_tables_mutex);
      g_tables[db][table->name] = table.get();
    }
    *out = table.release();
    return SQLITE_OK;
  } catch (const VbError& e) {
    *err = sqlite3_mprintf("%s", e.Description.c_str());
    t_module_error = e.Number;
  } catch (const std::exception& e) {
    *err = sqlite3_mprintf("%s", e.what());
    t_module_error = ado::kErrGeneral;
  }
  return SQLITE_ERROR;
}

int Disconnect(sqlite3_vtab* vtab) {
  auto* table = static_cast<CsvTable*>(vtab);
  {
    std::lock_guard lock(g_tables_mutex);
    auto it = g_tables.find(table->db);
    if (it != g_tables.end()) {
      it->second.erase(table->name);
      if (it->second.empty()) g_tables.erase(it);
    }
  }
  sqlite3_free(table->zErrMsg);
  delete table;
  return SQLITE_OK;
}

// Reads the next record of a scan that ends at `end` and checks that it fits
// the columns. Surplus fields are accepted only when they are empty (a
// trailing delimiter).
bool ReadRecord(CsvReader& reader, CsvRecord& record, std::int64_t end,
                const TextTableLayout& layout) {
  if (!reader.Next(record) || record.offset >= end) return false;
  const std::size_t columns = layout.names.size();
  for (std::size_t i = columns; i < record.count; ++i) {
    if (!record.fields[i].empty() || record.quoted[i]) {
      throw VbError(ado::kErrGeneral,
                    FileLineMessage(layout.file, record.line,
                                    "zu viele Felder (" + std::to_string(record.count) + " statt " +
                                        std::to_string(columns) + ")"));
    }
  }
  return true;
}

void Advance(CsvCursor* cursor) {
  auto* table = static_cast<CsvTable*>(cursor->pVtab);
  cursor->eof = !ReadRecord(*cursor->reader, cursor->record, cursor->end, table->layout);
}

int Filter(sqlite3_vtab_cursor* base, int, const char*, int, sqlite3_value**) {
  auto* cursor = static_cast<CsvCursor*>(base);
  auto* table = static_cast<CsvTable*>(base->pVtab);
  try {
    if (!cursor->reader) {
      cursor->reader = std::make_unique<CsvReader>(table->layout.file, table->layout.dialect);
    }
    cursor->end = StampOf(table->layout.file).size;
    cursor->reader->Seek(table->layout.data_offset, table->layout.data_line);
    Advance(cursor);
    return SQLITE_OK;
  } catch (const VbError& e) {
    return Fail(base->pVtab, e);
  } catch (const std::exception& e) {
    return FailUnknown(base->pVtab, e);
  }
}

int Next(sqlite3_vtab_cursor* base) {
  auto* cursor = static_cast<CsvCursor*>(base);
  try {
    Advance(cursor);
    return SQLITE_OK;
  } catch (const VbError& e) {
    return Fail(base->pVtab, e);
  } catch (const std::exception& e) {
    return FailUnknown(base->pVtab, e);
  }
}

int Eof(sqlite3_vtab_cursor* base) {
  return static_cast<CsvCursor*>(base)->eof ? 1 : 0;
}

// `text` views the whole of a std::string (a field or the scratch text).
void ResultText(sqlite3_context* ctx, std::string_view text) {
  // Given with its terminator, the copy SQLite makes needs no second
  // allocation when the text is read as a C string; a text with a NUL in it
  // goes by its length.
  assert(text.data()[text.size()] == '\0');
  const bool terminated = std::strlen(text.data()) == text.size();
  sqlite3_result_text(ctx, text.data(), terminated ? -1 : static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
}

int Column(sqlite3_vtab_cursor* base, sqlite3_context* ctx, int n) {
  auto* cursor = static_cast<CsvCursor*>(base);
  auto* table = static_cast<CsvTable*>(base->pVtab);
  const auto i = static_cast<std::size_t>(n);
  std::string& scratch = cursor->scratch;
  const EngineCell cell = CsvCell(cursor->record, i, table->layout.types[i], scratch);
  switch (cell.kind) {
    case EngineCell::Kind::kNull:
      sqlite3_result_null(ctx);
      break;
    case EngineCell::Kind::kInteger:
      sqlite3_result_int64(ctx, cell.integer);
      break;
    case EngineCell::Kind::kReal:
      sqlite3_result_double(ctx, cell.real);
      break;
    case EngineCell::Kind::kText:
      ResultText(ctx, cell.text);
      break;
  }
  return SQLITE_OK;
}

int Rowid(sqlite3_vtab_cursor* base, sqlite3_int64* rowid) {
  *rowid = static_cast<CsvCursor*>(base)->record.offset;
  return SQLITE_OK;
}

std::string RecordText(const CsvTable& table, int argc, sqlite3_value** argv) {
  std::vector<FieldValue> values(table.layout.names.size());
  for (int i = 2; i < argc && static_cast<std::size_t>(i - 2) < values.size(); ++i) {
    sqlite3_value* v = argv[i];
    FieldValue& f = values[static_cast<std::size_t>(i - 2)];
    switch (sqlite3_value_type(v)) {
      case SQLITE_NULL:
        break;
      case SQLITE_INTEGER:
        f.text = std::to_string(sqlite3_value_int64(v));
        break;
      case SQLITE_FLOAT:
        f.text = FormatNumber(sqlite3_value_double(v));
        f.real = true;
        break;
      default:
        f.text = std::string(reinterpret_cast<const char*>(sqlite3_value_text(v)),
                             static_cast<std::size_t>(sqlite3_value_bytes(v)));
        break;
    }
  }
  return FormatTextRecord(table.layout, values);
}

int Update(sqlite3_vtab* vtab, int argc, sqlite3_value** argv, sqlite3_int64* rowid) {
  auto* table = static_cast<CsvTable*>(vtab);
  try {
    if (argc == 1) {
      table->deletes.push_back(sqlite3_value_int64(argv[0]));
      return SQLITE_OK;
    }
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
      table->inserts += RecordText(*table, argc, argv);
      *rowid = table->next_rowid++;
      return SQLITE_OK;
    }
    std::int64_t old_id = sqlite3_value_int64(argv[0]);
    if (sqlite3_value_type(argv[1]) != SQLITE_NULL && sqlite3_value_int64(argv[1]) != old_id) {
      throw VbError(ado::kErrStatementRefused, "Die Zeilennummer kann nicht geändert werden");
    }
    table->updates[old_id] = RecordText(*table, argc, argv);
    return SQLITE_OK;
  } catch (const VbError& e) {
    return Fail(vtab, e);
  } catch (const std::exception& e) {
    return FailUnknown(vtab, e);
  }
}

// Copies the bytes [from, to) of the file to the sink.
void CopyRange(std::ifstream& in, std::int64_t from, std::int64_t to,
               const std::function<void(std::string_view)>& sink) {
  if (to <= from) return;
  in.clear();
  in.seekg(from);
  char buf[1 << 15];
  while (from < to) {
    auto want = static_cast<std::streamsize>(std::min<std::int64_t>(sizeof buf, to - from));
    in.read(buf, want);
    auto got = in.gcount();
    if (got <= 0) break;
    sink(std::string_view(buf, static_cast<std::size_t>(got)));
    from += got;
  }
}

void Rewrite(CsvTable& table) {
  std::sort(table.deletes.begin(), table.deletes.end());
  const auto& layout = table.layout;
  RewriteFile(layout.file, [&](const std::function<void(std::string_view)>& sink) {
    std::ifstream raw(layout.file, std::ios::binary);
    CsvReader reader(layout.file, layout.dialect);
    reader.Seek(layout.data_offset, layout.data_line);
    CsvRecord record;
    std::int64_t copied = 0;
    bool ends_with_break = true;
    auto emit_raw = [&](std::int64_t from, std::int64_t to) {
      if (to <= from) return;
      CopyRange(raw, from, to, [&](std::string_view s) {
        sink(s);
        ends_with_break = s.back() == '\n' || s.back() == '\r';
      });
    };
    while (reader.Next(record)) {
      bool deleted = std::binary_search(table.deletes.begin(), table.deletes.end(), record.offset);
      auto updated = table.updates.find(record.offset);
      if (!deleted && updated == table.updates.end()) continue;
      emit_raw(copied, record.offset);
      if (!ends_with_break) sink(layout.line_break);
      if (!deleted) {
        sink(updated->second);
        ends_with_break = true;
      }
      copied = record.end;
    }
    struct stat st {};
    ::stat(layout.file.c_str(), &st);
    emit_raw(copied, st.st_size);
    if (!table.inserts.empty()) {
      if (!ends_with_break) sink(layout.line_break);
      sink(table.inserts);
    }
  });
}

void ClearPending(CsvTable& table) {
  table.inserts.clear();
  table.deletes.clear();
  table.updates.clear();
}

int Begin(sqlite3_vtab* vtab) {
  ClearPending(*static_cast<CsvTable*>(vtab));
  return SQLITE_OK;
}

int Sync(sqlite3_vtab* vtab) {
  auto* table = static_cast<CsvTable*>(vtab);
  try {
    bool changed = false;
    if (!table->deletes.empty() || !table->updates.empty()) {
      Rewrite(*table);
      changed = true;
    } else if (!table->inserts.empty()) {
      AppendToFile(table->layout.file, table->inserts, table->layout.line_break);
      changed = true;
    }
    ClearPending(*table);
    if (changed) {
      // The table keeps its columns and types through its own changes: rows
      // appended one by one to a header file are all written alike.
      table->stamp = StampOf(table->layout.file);
      table->next_rowid = std::max(table->next_rowid, table->stamp.size);
    }
    return SQLITE_OK;
  } catch (const VbError& e) {
    ClearPending(*table);
    return Fail(vtab, e);
  } catch (const std::exception& e) {
    ClearPending(*table);
    return FailUnknown(vtab, e);
  }
}

int Commit(sqlite3_vtab* vtab) {
  ClearPending(*static_cast<CsvTable*>(vtab));
  return SQLITE_OK;
}

int Rename(sqlite3_vtab* vtab, const char*) {
  return Fail(vtab,
              VbError(ado::kErrStatementRefused, "Eine Textdatei kann so nicht umbenannt werden"));
}

sqlite3_module MakeModule() {
  sqlite3_module m =
      file_engine::ScanModule<CsvTable, CsvCursor>(Connect, Filter, Next, Eof, Column, Rowid);
  m.xDisconnect = Disconnect;  // also forgets the table by name
  m.xDestroy = Disconnect;
  m.xUpdate = Update;
  m.xBegin = Begin;
  m.xSync = Sync;
  m.xCommit = Commit;
  m.xRollback = Commit;
  m.xRename = Rename;
  return m;
}

const sqlite3_module kModule = MakeModule();

}  // namespace

EngineCell CsvCell(const CsvRecord& record, std::size_t i, ColumnType type, std::string& scratch) {
  EngineCell cell;
  if (i >= record.count || (record.fields[i].empty() && !record.quoted[i])) return cell;
  const std::string& text = record.fields[i];
  cell.kind = EngineCell::Kind::kText;
  cell.text = text;
  if (record.quoted[i]) return cell;
  switch (type) {
    case ColumnType::kInteger:
      if (auto v = ParseInteger(text, false)) {
        cell.kind = EngineCell::Kind::kInteger;
        cell.integer = *v;
        return cell;
      }
      [[fallthrough]];
    case ColumnType::kDouble:
    case ColumnType::kCurrency:
      if (auto v = ParseNumber(text, false)) {
        // SQLite would take a NaN for NULL; the parser gives none.
        assert(*v == *v);
        cell.kind = EngineCell::Kind::kReal;
        cell.real = *v;
      }
      break;
    case ColumnType::kDateTime:
      if (auto v = ParseDateText(text)) {
        scratch = std::move(*v);
        cell.text = scratch;
      }
      break;
    case ColumnType::kBoolean:
      if (auto v = ParseBoolean(text)) {
        cell.kind = EngineCell::Kind::kInteger;
        cell.integer = *v ? 1 : 0;
      }
      break;
    case ColumnType::kText:
    case ColumnType::kMemo:
      break;
  }
  // A value that does not read as the column's type stays as it was written.
  return cell;
}

std::unique_ptr<CsvTableScan> CsvTableScan::Open(sqlite3* db, const std::string& table) {
  std::lock_guard lock(g_tables_mutex);
  auto tables = g_tables.find(db);
  if (tables == g_tables.end()) return nullptr;
  auto it = tables->second.find(table);
  if (it == tables->second.end()) return nullptr;
  return std::unique_ptr<CsvTableScan>(new CsvTableScan(it->second->layout));
}

bool CsvTableScan::Next() {
  if (!reader_) {
    // As the virtual table's filter begins a scan.
    reader_ = std::make_unique<CsvReader>(layout_.file, layout_.dialect);
    end_ = StampOf(layout_.file).size;
    reader_->Seek(layout_.data_offset, layout_.data_line);
  }
  return ReadRecord(*reader_, record_, end_, layout_);
}

void RegisterCsvModule(sqlite3* db) {
  sqlite3_create_module_v2(db, kCsvModuleName, &kModule, nullptr, nullptr);
}

std::int32_t TakeModuleErrorNumber() {
  std::int32_t n = t_module_error;
  t_module_error = 0;
  return n;
}

void SetModuleErrorNumber(std::int32_t number) {
  t_module_error = number;
}

std::vector<std::string> StaleCsvTables(sqlite3* db) {
  std::vector<std::string> stale;
  std::vector<CsvTable*> tables;
  {
    std::lock_guard lock(g_tables_mutex);
    auto it = g_tables.find(db);
    if (it == g_tables.end()) return stale;
    for (auto& [name, table] : it->second) tables.push_back(table);
  }
  for (CsvTable* table : tables) {
    FileStamp now = StampOf(table->layout.file);
    if (now == table->stamp) continue;
    if (!now.exists) {
      stale.push_back(table->name);
      continue;
    }
    try {
      TextTableLayout fresh = ReadTextTableLayout(table->layout.file);
      if (fresh.names != table->layout.names || fresh.types != table->layout.types ||
          fresh.data_offset != table->layout.data_offset ||
          fresh.dialect.delimiter != table->layout.dialect.delimiter) {
        stale.push_back(table->name);
        continue;
      }
      table->layout.line_break = fresh.line_break;
      table->stamp = now;
    } catch (const VbError&) {
      stale.push_back(table->name);
    }
  }
  return stale;
}

}  // namespace ketrova::file_engine
