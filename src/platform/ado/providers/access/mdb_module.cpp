#include "platform/ado/providers/access/mdb_module.h"

#include <sqlite3.h>

#include <cstdio>
#include <memory>
#include <string>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_module.h"
#include "platform/ado/file_engine/module_support.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/providers/access/mdb_database.h"
#include "platform/ado/value_text.h"
#include "support/vb_error.h"

namespace ketrova::access_provider {

namespace {

struct MdbTable : sqlite3_vtab {
  const MdbDatabase* database = nullptr;
  std::string name;
  std::vector<JetColumn> columns;
};

struct MdbCursor : sqlite3_vtab_cursor {
  std::unique_ptr<MdbRowReader> reader;
  bool eof = true;
};

const char* EngineType(const JetColumn& c) {
  switch (c.info.type) {
    case ado::adBoolean:
      return "BIT";
    case ado::adUnsignedTinyInt:
    case ado::adSmallInt:
    case ado::adInteger:
      return "INTEGER";
    case ado::adSingle:
    case ado::adDouble:
      return "DOUBLE";
    case ado::adCurrency:
      return "CURRENCY";
    case ado::adDate:
      return "DATETIME";
    case ado::adLongVarWChar:
      return "MEMO";
    case ado::adGUID:
      return "GUID";
    case ado::adNumeric:
      return "DECIMAL";
    case ado::adVarBinary:
    case ado::adLongVarBinary:
      return "BLOB";
    default:
      return "TEXT";
  }
}

std::string DeclareSql(const std::vector<JetColumn>& columns) {
  std::string sql = "CREATE TABLE x(";
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) sql += ", ";
    sql += file_engine::QuoteSqlIdentifier(columns[i].info.name) + " " + EngineType(columns[i]);
    if (columns[i].info.type == ado::adVarWChar)
      sql += "(" + std::to_string(columns[i].info.definedSize) + ")";
  }
  return sql + ")";
}

int Connect(sqlite3* db, void* aux, int argc, const char* const* argv, sqlite3_vtab** out,
            char** err) {
  try {
    if (argc < 4) throw VbError(ado::kErrGeneral, "ketrova_mdb: der Tabellenname fehlt");
    auto table = std::make_unique<MdbTable>();
    table->database = static_cast<const MdbDatabase*>(aux);
    table->name = file_engine::UnquoteModuleArgument(argv[3]);
    table->columns = table->database->Columns(table->name);
    if (sqlite3_declare_vtab(db, DeclareSql(table->columns).c_str()) != SQLITE_OK) {
      throw VbError(ado::kErrGeneral, "Die Spalten der Tabelle '" + table->name +
                                          "' sind ungültig: " + sqlite3_errmsg(db));
    }
    *out = table.release();
    return SQLITE_OK;
  } catch (const VbError& e) {
    *err = sqlite3_mprintf("%s", e.Description.c_str());
    file_engine::SetModuleErrorNumber(e.Number);
  }
  return SQLITE_ERROR;
}

int Filter(sqlite3_vtab_cursor* base, int, const char*, int, sqlite3_value**) {
  auto* cursor = static_cast<MdbCursor*>(base);
  auto* table = static_cast<MdbTable*>(base->pVtab);
  try {
    cursor->reader = std::make_unique<MdbRowReader>(*table->database, table->name);
    cursor->eof = !cursor->reader->Next();
    return SQLITE_OK;
  } catch (const VbError& e) {
    return file_engine::FailModule(base->pVtab, e);
  }
}

int Next(sqlite3_vtab_cursor* base) {
  auto* cursor = static_cast<MdbCursor*>(base);
  try {
    cursor->eof = !cursor->reader->Next();
    return SQLITE_OK;
  } catch (const VbError& e) {
    return file_engine::FailModule(base->pVtab, e);
  }
}

int Eof(sqlite3_vtab_cursor* base) {
  return static_cast<MdbCursor*>(base)->eof ? 1 : 0;
}

int Column(sqlite3_vtab_cursor* base, sqlite3_context* ctx, int n) {
  auto* cursor = static_cast<MdbCursor*>(base);
  const auto i = static_cast<std::size_t>(n);
  try {
    JetValue v = cursor->reader->Value(i);
    const auto type = cursor->reader->columns()[i].info.type;
    switch (v.kind) {
      case JetValue::Kind::kNull:
        sqlite3_result_null(ctx);
        break;
      case JetValue::Kind::kInteger:
        sqlite3_result_int64(ctx, v.integer);
        break;
      case JetValue::Kind::kReal:
        if (type == ado::adDate) {
          std::string iso = file_engine::IsoDateText(v.real);
          sqlite3_result_text(ctx, iso.data(), static_cast<int>(iso.size()), SQLITE_TRANSIENT);
        } else {
          sqlite3_result_double(ctx, v.real);
        }
        break;
      case JetValue::Kind::kText:
        sqlite3_result_text(ctx, v.bytes.data(), static_cast<int>(v.bytes.size()),
                            SQLITE_TRANSIENT);
        break;
      case JetValue::Kind::kBlob:
        sqlite3_result_blob(ctx, v.bytes.data(), static_cast<int>(v.bytes.size()),
                            SQLITE_TRANSIENT);
        break;
    }
    return SQLITE_OK;
  } catch (const VbError& e) {
    return file_engine::FailModule(base->pVtab, e);
  }
}

int Rowid(sqlite3_vtab_cursor* base, sqlite3_int64* rowid) {
  *rowid = static_cast<MdbCursor*>(base)->reader->RowNumber();
  return SQLITE_OK;
}

sqlite3_module MakeModule() {
  sqlite3_module m =
      file_engine::ScanModule<MdbTable, MdbCursor>(Connect, Filter, Next, Eof, Column, Rowid);
  return m;  // no xUpdate: SQLite refuses every write
}

const sqlite3_module kModule = MakeModule();

}  // namespace

void RegisterMdbModule(sqlite3* db, const MdbDatabase* database) {
  sqlite3_create_module_v2(db, kMdbModuleName, &kModule, const_cast<MdbDatabase*>(database),
                           nullptr);
}

}  // namespace ketrova::access_provider
