// How the ODBC provider describes a result column in ADO's terms: the ADO
// type for the driver's SQL type (with the type words the SQLite3 driver
// reports as text), and DefinedSize, Precision and NumericScale as ADO's ODBC
// provider gave them.
#pragma once

#include <sql.h>

#include "platform/ado/provider.h"

namespace ketrova::ado::odbc {

// Column `col` (1-based) of the statement's result.
ColumnInfo Describe(SQLHSTMT stmt, SQLUSMALLINT col, bool narrow);

// Sets sqlType, type, definedSize, precision and numericScale of `c` from
// what a driver reports; c.typeName must already hold the store's type word.
// The native SQLite provider describes its columns through this too, so that
// both ways to a SQLite file give the same types.
void SetAdoType(ColumnInfo& c, SQLSMALLINT sqlType, SQLULEN size, SQLSMALLINT digits,
                bool isUnsigned);

}  // namespace ketrova::ado::odbc
