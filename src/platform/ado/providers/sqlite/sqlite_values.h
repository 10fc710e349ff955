// Values between the native SQLite provider and Variants: binding a Variant
// the way the SQLite3 ODBC driver stored what the ODBC path bound (dates as
// "YYYY-MM-DD HH:MM:SS.000" text, decimals and currency as text, booleans as
// 1 and 0), and reading a column as the Variant its ADO type implies. A value
// whose storage class does not fit the declared type (a text in an INTEGER
// column, a fraction in an integer column, a text that is no date in a date
// column) is read as what it is, never as 0 or Null.
#pragma once

#include <sqlite3.h>

#include "platform/ado/provider.h"
#include "support/variant.h"

namespace ketrova::ado::sqlite {

// Binds parameter `n` (1-based); returns SQLite's result code. With
// `inPlace` a text value is bound where it is: `v` must then live until the
// statement has run.
int BindValue(sqlite3_stmt* stmt, int n, const Variant& v, bool inPlace);

// Column `i` (0-based) of the current row.
Variant ReadValue(sqlite3_stmt* stmt, int i, const ColumnInfo& c);

}  // namespace ketrova::ado::sqlite
