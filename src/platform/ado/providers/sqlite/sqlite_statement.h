// A prepared statement of the native SQLite provider with the description of
// its result and where a read of it stands. Private to the provider.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ado/provider.h"

namespace ketrova::ado {

struct SqliteStatement {
  std::string sql;
  sqlite3_stmt* stmt = nullptr;
  std::vector<ColumnInfo> columns;
  bool readOnly = true;
  std::int64_t maxRows = 0;   // of the read under way; 0 for no limit
  std::int64_t produced = 0;  // rows read so far
  bool done = false;
  bool reading = false;  // a cursor reads it and it may hold the connection's snapshot
  SqliteStatement() = default;
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;
  ~SqliteStatement() { sqlite3_finalize(stmt); }
};

}  // namespace ketrova::ado
