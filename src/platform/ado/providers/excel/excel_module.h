// The SQLite virtual-table module "ketrova_excel": one table of a workbook
// (workbook.h) as a table of the file SQL engine. Its one argument is the
// table's index in the workbook.
//
// Values come as the column's type declares them (numbers as REAL, dates as
// ISO text, booleans as 1 and 0, text as TEXT); a value that does not fit
// comes as text. Written values become cells of the column's type: text
// cells in TEXT and MEMO columns, number cells in DOUBLE and CURRENCY
// columns, date cells in the column's own date format in DATETIME columns,
// TRUE/FALSE in BIT columns; a value that does not read as the type is
// written as text. A text longer than a cell holds (32,767 characters) is
// refused. A statement's changes reach the workbook when it ends, or not at
// all when it fails.
//
// A statement comparing a column with a value (an update by key) reads a
// sheet being written through the workbook's index of that column instead
// of the whole sheet; SQLite compares the rows found as it would the others.
#pragma once

#include <sqlite3.h>

namespace ketrova::excel {

class Workbook;

inline constexpr const char* kExcelModuleName = "ketrova_excel";

// The workbook must outlive the connection's tables.
void RegisterExcelModule(sqlite3* db, Workbook* workbook);

}  // namespace ketrova::excel
