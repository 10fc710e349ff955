// What the virtual-table modules of the file providers share: the callbacks
// every one of them has in the same form (a full scan, a table and a cursor
// object freed with the vtab), reading a module argument, reporting a failure
// through SQLite with its VbError number, and the engine's text form of a
// date.
#pragma once

#include <sqlite3.h>

#include <string>
#include <string_view>

namespace ketrova {
class VbError;
}

namespace ketrova::file_engine {

// The scanning part of a module whose table type `Table` derives from
// sqlite3_vtab and whose cursor type `Cursor` from sqlite3_vtab_cursor: the
// given callbacks, xCreate the same as xConnect, and a full scan for every
// query (the modules offer no index). Writes and transactions are the
// caller's to add; a table without xUpdate is read-only to SQLite.
template <typename Table, typename Cursor>
sqlite3_module ScanModule(decltype(sqlite3_module::xConnect) connect,
                          decltype(sqlite3_module::xFilter) filter,
                          decltype(sqlite3_module::xNext) next, decltype(sqlite3_module::xEof) eof,
                          decltype(sqlite3_module::xColumn) column,
                          decltype(sqlite3_module::xRowid) rowid) {
  sqlite3_module m{};
  m.iVersion = 1;
  m.xCreate = connect;
  m.xConnect = connect;
  m.xBestIndex = [](sqlite3_vtab*, sqlite3_index_info* info) {
    info->estimatedCost = 1e6;
    info->estimatedRows = 1000000;
    return SQLITE_OK;
  };
  m.xDisconnect = [](sqlite3_vtab* vtab) {
    sqlite3_free(vtab->zErrMsg);
    delete static_cast<Table*>(vtab);
    return SQLITE_OK;
  };
  m.xDestroy = m.xDisconnect;
  m.xOpen = [](sqlite3_vtab*, sqlite3_vtab_cursor** out) {
    *out = new Cursor();
    return SQLITE_OK;
  };
  m.xClose = [](sqlite3_vtab_cursor* cursor) {
    delete static_cast<Cursor*>(cursor);
    return SQLITE_OK;
  };
  m.xFilter = filter;
  m.xNext = next;
  m.xEof = eof;
  m.xColumn = column;
  m.xRowid = rowid;
  return m;
}

// A module argument as written in CREATE VIRTUAL TABLE: an SQL text literal
// ('it''s') loses its quotes; anything else stays as it is.
std::string UnquoteModuleArgument(std::string_view arg);

// Hands a failure to SQLite as the table's error message and keeps its
// number for the engine (TakeModuleErrorNumber); answers SQLITE_ERROR.
int FailModule(sqlite3_vtab* vtab, const VbError& e);

// An OLE date as the engine keeps dates: "yyyy-mm-dd", or
// "yyyy-mm-dd hh:mm:ss" when it has a time.
std::string IsoDateText(double oleDate);

}  // namespace ketrova::file_engine
