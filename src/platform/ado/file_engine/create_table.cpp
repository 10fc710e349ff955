#include "platform/ado/file_engine/create_table.h"

#include <sqlite3.h>

#include <memory>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/sqlite_library.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

DeclaredTable ParseCreateTable(std::string_view sql, const std::string& source) {
  ado::SetUpSqliteLibrary();
  sqlite3* scratch = nullptr;
  int rc = sqlite3_open(":memory:", &scratch);
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> guard(scratch, sqlite3_close);
  if (rc != SQLITE_OK) throw VbError(ado::kErrGeneral, sqlite3_errstr(rc), source);
  char* err = nullptr;
  if (sqlite3_exec(scratch, RewriteFileSql(sql).c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
    std::string msg = err ? err : "CREATE TABLE";
    sqlite3_free(err);
    throw VbError(ado::kErrStatementRefused, msg, source);
  }
  DeclaredTable table;
  sqlite3_stmt* h = nullptr;
  sqlite3_prepare_v2(scratch, "SELECT name FROM sqlite_master WHERE type = 'table'", -1, &h,
                     nullptr);
  if (sqlite3_step(h) == SQLITE_ROW)
    table.name = reinterpret_cast<const char*>(sqlite3_column_text(h, 0));
  sqlite3_finalize(h);
  std::string pragma = "PRAGMA table_info(" + QuoteSqlIdentifier(table.name) + ")";
  sqlite3_prepare_v2(scratch, pragma.c_str(), -1, &h, nullptr);
  while (sqlite3_step(h) == SQLITE_ROW) {
    const char* declared = reinterpret_cast<const char*>(sqlite3_column_text(h, 2));
    table.columns.push_back(
        {reinterpret_cast<const char*>(sqlite3_column_text(h, 1)), declared ? declared : ""});
  }
  sqlite3_finalize(h);
  return table;
}

}  // namespace ketrova::file_engine
