// The SQLite virtual-table module "ketrova_dbf": a dBase table held in memory
// (LoadedTable of xbase_provider.h) as a table of the file SQL engine.
//
//   CREATE VIRTUAL TABLE "Kunden" USING ketrova_dbf('/daten/KUNDEN.DBF')
//
// The module asks its loader for the table by file; writes change the loaded
// rows and mark the table changed. A value that does not fit its field is
// refused with kErrStatementRefused before anything changes.
#pragma once

#include <functional>
#include <string>

struct sqlite3;

namespace ketrova::xbase_provider {

inline constexpr const char* kDbfModuleName = "ketrova_dbf";

struct LoadedTable;
using TableLoader = std::function<LoadedTable&(const std::string& file)>;

// Registers the module on an engine's connection; the loader must outlive it.
void RegisterDbfModule(sqlite3* db, const TableLoader* loader);

}  // namespace ketrova::xbase_provider
