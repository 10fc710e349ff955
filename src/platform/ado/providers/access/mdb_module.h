// The SQLite virtual-table module "ketrova_mdb": a table of an Access file as
// a read-only table of the file SQL engine.
//
//   CREATE VIRTUAL TABLE "Kunden" USING ketrova_mdb('Kunden')
//
// Each scan reads the rows from the file through a reader of its own
// (mdb_database.h); nothing is held in memory. Columns are declared with the
// engine's type words (INTEGER, DOUBLE, CURRENCY, DATETIME, BIT, TEXT(n),
// MEMO; BLOB for binary, GUID and DECIMAL as text), dates travel as ISO text.
// Writing is refused.
#pragma once

struct sqlite3;

namespace ketrova::access_provider {

inline constexpr const char* kMdbModuleName = "ketrova_mdb";

class MdbDatabase;

// Registers the module on an engine's connection for one database, which
// must outlive the connection.
void RegisterMdbModule(sqlite3* db, const MdbDatabase* database);

}  // namespace ketrova::access_provider
