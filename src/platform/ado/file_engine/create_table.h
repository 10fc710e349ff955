// CREATE TABLE as the file providers take it: the statement is read by SQLite
// itself on a scratch database, so that every form of column list is
// understood, and answers the table's name and its columns with their
// declared types as written ("TEXT(50)", "INTEGER", or empty).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ketrova::file_engine {

struct DeclaredColumn {
  std::string name;
  std::string declared;
};

struct DeclaredTable {
  std::string name;
  std::vector<DeclaredColumn> columns;
};

// Raises VbError kErrStatementRefused, with `source` and SQLite's message,
// for a statement SQLite does not take.
DeclaredTable ParseCreateTable(std::string_view sql, const std::string& source);

}  // namespace ketrova::file_engine
