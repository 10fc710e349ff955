// What the virtual-table modules of the file providers share: reading a
// module argument, reporting a failure through SQLite with its VbError
// number, and the engine's text form of a date.
#pragma once

#include <string>
#include <string_view>

struct sqlite3_vtab;

namespace ketrova {
class VbError;
}

namespace ketrova::file_engine {

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
