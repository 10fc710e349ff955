// The SQLite virtual-table module "ketrova_csv": a delimited text file as a
// table of the file SQL engine.
//
//   CREATE VIRTUAL TABLE "Kunden" USING ketrova_csv('/data/Kunden.csv')
//
// Rows stream from the file on every scan; nothing of it is held in memory.
// The rowid of a row is the byte offset of its record. INSERT appends a record
// at the end of the file; DELETE and UPDATE rewrite the file through a
// temporary file that replaces it. Changes are collected during a statement
// and written when it commits, so a failed statement writes nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct sqlite3;

namespace ketrova::file_engine {

inline constexpr const char* kCsvModuleName = "ketrova_csv";

// Registers the module on a connection.
void RegisterCsvModule(sqlite3* db);

// The VbError number of the last failure inside the module on this thread, 0
// when the last failure was SQLite's own. The engine reads and resets it.
std::int32_t TakeModuleErrorNumber();
void SetModuleErrorNumber(std::int32_t number);

}  // namespace ketrova::file_engine

namespace ketrova::file_engine {

// Names of the module's tables on `db` whose file was changed from outside so
// that its columns or their types are no longer what the table declares (or
// whose file is gone). The engine drops them, to be made anew on next use.
std::vector<std::string> StaleCsvTables(sqlite3* db);

}  // namespace ketrova::file_engine
