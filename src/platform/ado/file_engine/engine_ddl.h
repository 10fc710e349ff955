// What the file providers read of a statement themselves instead of running
// it on the engine: its first words, and the table and columns of a CREATE
// TABLE, which each provider turns into a file or a sheet of its own.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ketrova::file_engine {

// True when the statement begins with these words (case ignored), each
// followed by a blank or the end.
bool StartsWithWords(std::string_view sql, std::initializer_list<std::string_view> words);

struct CreatedTable {
  std::string name;
  // Each column's name and declared type as written ("TEXT(50)", "" for none).
  std::vector<std::pair<std::string, std::string>> columns;
};

// Reads a CREATE TABLE in the system's syntax with SQLite itself, on a
// scratch database, so that every form of column list is understood. Raises
// VbError kErrStatementRefused with SQLite's message and `source`.
CreatedTable ParseCreateTable(const std::string& sql, const std::string& source);

}  // namespace ketrova::file_engine
