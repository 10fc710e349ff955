#include "platform/ado/providers/xbase/dbf_module.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_module.h"
#include "platform/ado/file_engine/engine_access.h"
#include "platform/ado/file_engine/module_support.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/providers/xbase/xbase_provider.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::xbase_provider {

namespace {

struct DbfTable : sqlite3_vtab {
  LoadedTable* table = nullptr;
};

// A scan over the loaded rows, or, while the table is not loaded, over the
// file's blocks as they are read.
struct DbfCursor : sqlite3_vtab_cursor {
  std::size_t row = 0;  // the record's number in the table, its rowid
  std::unique_ptr<RowStream> stream;
  std::vector<ado::Row> block;  // the streamed rows from blockStart on
  std::size_t blockStart = 0;
  bool streamEnded = false;
};

LoadedTable& TableOf(sqlite3_vtab_cursor* base) {
  return *static_cast<DbfTable*>(base->pVtab)->table;
}

// Reads blocks until the cursor's row is in the block or the stream ends.
void FillBlock(DbfCursor* cursor) {
  while (!cursor->streamEnded && cursor->row >= cursor->blockStart + cursor->block.size()) {
    cursor->blockStart += cursor->block.size();
    cursor->block.clear();
    if (!cursor->stream->Next(cursor->block)) cursor->streamEnded = true;
  }
}

// Reads the whole table before its first change.
void EnsureLoaded(LoadedTable& t) {
  if (t.file->loaded()) return;
  t.file->Load();
  t.live.assign(t.file->rows().size(), true);
}

bool IsBinary(ado::DataTypeEnum type) {
  return type == ado::adLongVarBinary || type == ado::adVarBinary;
}

std::string EngineType(const ado::ColumnInfo& c) {
  return IsBinary(c.type) ? "BLOB" : file_engine::EngineTypeSql(c.type);
}

// The engine's value for a field as a Variant of the field's kind.
Variant FromEngine(sqlite3_value* v, const TableField& f) {
  switch (sqlite3_value_type(v)) {
    case SQLITE_NULL:
      return Variant::Null();
    case SQLITE_INTEGER: {
      const sqlite3_int64 i = sqlite3_value_int64(v);
      if (f.info.type == ado::adBoolean) return Variant(i != 0);
      if (i >= INT32_MIN && i <= INT32_MAX) return Variant::Long(static_cast<std::int32_t>(i));
      return Variant(static_cast<double>(i));
    }
    case SQLITE_FLOAT:
      return Variant(sqlite3_value_double(v));
    case SQLITE_BLOB: {
      auto array = std::make_shared<SafeArray>();
      array->elementType = vbByte;
      const auto* p = static_cast<const unsigned char*>(sqlite3_value_blob(v));
      const int n = sqlite3_value_bytes(v);
      array->bounds.push_back({0, n});
      for (int i = 0; i < n; ++i) array->data.push_back(Variant::Byte(p[i]));
      return Variant(array);
    }
    default:
      break;
  }
  std::string text(reinterpret_cast<const char*>(sqlite3_value_text(v)),
                   static_cast<std::size_t>(sqlite3_value_bytes(v)));
  if (f.info.type == ado::adDate) {
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    int n = std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d", &y, &mo, &d, &h, &mi, &s);
    if (n == 3 || n == 6) {
      ado::DateParts p;
      p.year = y, p.month = mo, p.day = d, p.hour = h, p.minute = mi, p.second = s;
      return Variant::FromDate(ado::OleDateFromParts(p));
    }
  }
  if (f.info.type == ado::adDouble || f.info.type == ado::adInteger ||
      f.info.type == ado::adSmallInt || f.info.type == ado::adCurrency ||
      f.info.type == ado::adNumeric) {
    std::string dotted = text;
    for (char& c : dotted)
      if (c == ',') c = '.';
    char* end = nullptr;
    double d = std::strtod(dotted.c_str(), &end);
    if (!dotted.empty() && end && *end == '\0') return Variant(d);
  }
  return Variant(text);
}

int Connect(sqlite3* db, void* aux, int argc, const char* const* argv, sqlite3_vtab** out,
            char** err) {
  try {
    if (argc < 4) throw VbError(ado::kErrGeneral, "ketrova_dbf: der Dateiname fehlt");
    const auto* loader = static_cast<const TableLoader*>(aux);
    auto vtab = std::make_unique<DbfTable>();
    vtab->table = &(*loader)(file_engine::UnquoteModuleArgument(argv[3]));
    std::string sql = "CREATE TABLE x(";
    const auto& fields = vtab->table->file->fields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) sql += ", ";
      sql += file_engine::QuoteSqlIdentifier(fields[i].name) + " " + EngineType(fields[i].info);
      if (fields[i].info.type == ado::adVarWChar)
        sql += "(" + std::to_string(fields[i].width) + ")";
    }
    sql += ")";
    if (sqlite3_declare_vtab(db, sql.c_str()) != SQLITE_OK)
      throw VbError(ado::kErrGeneral, std::string("Spalten ungültig: ") + sqlite3_errmsg(db));
    *out = vtab.release();
    return SQLITE_OK;
  } catch (const VbError& e) {
    *err = sqlite3_mprintf("%s", e.Description.c_str());
    file_engine::SetModuleErrorNumber(e.Number);
  }
  return SQLITE_ERROR;
}

void SkipDead(DbfCursor* cursor) {
  const auto& live = TableOf(cursor).live;
  while (cursor->row < live.size() && !live[cursor->row]) ++cursor->row;
}

int Filter(sqlite3_vtab_cursor* base, int, const char*, int, sqlite3_value**) {
  auto* cursor = static_cast<DbfCursor*>(base);
  cursor->row = 0;
  try {
    if (TableOf(base).file->loaded()) {
      cursor->stream.reset();
      SkipDead(cursor);
    } else {
      cursor->stream = TableOf(base).file->Stream();
      cursor->block.clear();
      cursor->blockStart = 0;
      cursor->streamEnded = false;
      FillBlock(cursor);
    }
    return SQLITE_OK;
  } catch (const VbError& e) {
    return file_engine::FailModule(base->pVtab, e);
  }
}

int Next(sqlite3_vtab_cursor* base) {
  auto* cursor = static_cast<DbfCursor*>(base);
  ++cursor->row;
  try {
    if (cursor->stream)
      FillBlock(cursor);
    else
      SkipDead(cursor);
    return SQLITE_OK;
  } catch (const VbError& e) {
    return file_engine::FailModule(base->pVtab, e);
  }
}

int Eof(sqlite3_vtab_cursor* base) {
  auto* cursor = static_cast<DbfCursor*>(base);
  if (cursor->stream) return cursor->row >= cursor->blockStart + cursor->block.size() ? 1 : 0;
  return cursor->row >= TableOf(base).live.size() ? 1 : 0;
}

int Column(sqlite3_vtab_cursor* base, sqlite3_context* ctx, int n) {
  auto* cursor = static_cast<DbfCursor*>(base);
  LoadedTable& t = TableOf(base);
  const ado::Row& row = cursor->stream ? cursor->block[cursor->row - cursor->blockStart]
                                       : t.file->rows()[cursor->row];
  const Variant& v = row[static_cast<std::size_t>(n)];
  const auto type = t.file->fields()[static_cast<std::size_t>(n)].info.type;
  if (v.IsNull() || v.IsEmpty()) {
    sqlite3_result_null(ctx);
  } else if (type == ado::adDate) {
    std::string iso = file_engine::IsoDateText(v.ToDate().value);
    sqlite3_result_text(ctx, iso.data(), static_cast<int>(iso.size()), SQLITE_TRANSIENT);
  } else if (type == ado::adBoolean) {
    sqlite3_result_int(ctx, v.ToBool() ? 1 : 0);
  } else if (type == ado::adInteger || type == ado::adSmallInt) {
    sqlite3_result_int64(ctx, v.ToLong());
  } else if (type == ado::adDouble || type == ado::adCurrency || type == ado::adNumeric) {
    sqlite3_result_double(ctx, v.ToDouble());
  } else if (IsBinary(type)) {
    std::string bytes;
    for (const auto& b : v.AsArray()->data) bytes.push_back(static_cast<char>(b.ToLong()));
    sqlite3_result_blob(ctx, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
  } else {
    std::string text = v.ToString();
    sqlite3_result_text(ctx, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }
  return SQLITE_OK;
}

int Rowid(sqlite3_vtab_cursor* base, sqlite3_int64* rowid) {
  *rowid = static_cast<sqlite3_int64>(static_cast<DbfCursor*>(base)->row);
  return SQLITE_OK;
}

int Update(sqlite3_vtab* vtab, int argc, sqlite3_value** argv, sqlite3_int64* rowid) {
  LoadedTable& t = *static_cast<DbfTable*>(vtab)->table;
  try {
    EnsureLoaded(t);
    if (argc == 1) {
      auto id = static_cast<std::size_t>(sqlite3_value_int64(argv[0]));
      if (id < t.live.size()) t.live[id] = false;
      t.changed = true;
      return SQLITE_OK;
    }
    const auto& fields = t.file->fields();
    ado::Row row;
    for (std::size_t i = 0; i < fields.size(); ++i)
      row.push_back(static_cast<int>(i) + 2 < argc ? FromEngine(argv[i + 2], fields[i])
                                                   : Variant::Null());
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) t.file->CompleteNewRow(row);
    t.file->Check(row);
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
      t.file->rows().push_back(std::move(row));
      t.live.push_back(true);
      *rowid = static_cast<sqlite3_int64>(t.live.size() - 1);
    } else {
      auto id = static_cast<std::size_t>(sqlite3_value_int64(argv[0]));
      if (sqlite3_value_int64(argv[1]) != sqlite3_value_int64(argv[0]))
        throw VbError(ado::kErrStatementRefused, "Die Zeilennummer kann nicht geändert werden");
      t.file->rows()[id] = std::move(row);
    }
    t.changed = true;
    return SQLITE_OK;
  } catch (const VbError& e) {
    return file_engine::FailModule(vtab, e);
  }
}

sqlite3_module MakeModule() {
  sqlite3_module m =
      file_engine::ScanModule<DbfTable, DbfCursor>(Connect, Filter, Next, Eof, Column, Rowid);
  m.xUpdate = Update;
  return m;
}

const sqlite3_module kModule = MakeModule();

}  // namespace

void RegisterDbfModule(sqlite3* db, const TableLoader* loader) {
  sqlite3_create_module_v2(db, kDbfModuleName, &kModule, const_cast<TableLoader*>(loader), nullptr);
}

}  // namespace ketrova::xbase_provider
