// Values between the ODBC provider and Variants: reading a column of the
// current row as the Variant its ADO type implies, and binding a Variant as a
// statement parameter.
#pragma once

#include <sql.h>

#include <string>
#include <vector>

#include "platform/ado/provider.h"
#include "support/variant.h"

namespace ketrova::ado::odbc {

// Column `col` (1-based) of the current row; Null for SQL NULL.
Variant GetValue(SQLHSTMT stmt, SQLUSMALLINT col, const ColumnInfo& c, bool narrow);

// Buffers of bound parameters; they live until the statement has executed.
struct ParamBuffer {
  std::u16string text;
  std::string narrow;
  SQLBIGINT integer = 0;
  double real = 0;
  unsigned char bit = 0;
  SQL_TIMESTAMP_STRUCT timestamp{};
  std::vector<unsigned char> bytes;
  SQLLEN ind = 0;
};

// Binds parameter `n` (1-based) to `v`, through `b`, which must live until the
// statement has executed (or is bound again); `b` may have served before.
void BindParam(SQLHSTMT stmt, SQLUSMALLINT n, const Variant& v, ParamBuffer& b, bool narrow);

}  // namespace ketrova::ado::odbc
