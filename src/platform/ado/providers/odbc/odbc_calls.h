// Helpers over the ODBC calls that every file of the ODBC provider uses: the
// one environment of the process, text into and out of the wide and narrow
// calls, checking a return code, and reading a long column in chunks.
#pragma once

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <string>

#include "platform/ado/providers/odbc/odbc_diagnostics.h"
#include "platform/ado/providers/odbc/odbc_handle.h"
#include "platform/ado/value_text.h"
#include "support/text.h"

namespace ketrova::ado::odbc {

// An environment set up for ODBC 3; raises what the driver manager says when
// it cannot be.
inline OdbcHandle NewEnvironment() {
  OdbcHandle env = OdbcHandle::Allocate(SQL_HANDLE_ENV, SQL_HANDLE_ENV, SQL_NULL_HANDLE);
  SQLRETURN rc =
      SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  if (!SQL_SUCCEEDED(rc)) ThrowOdbcError(SQL_HANDLE_ENV, env, OdbcPhase::kOther);
  return env;
}

// The process's one environment, made at the first use (tried again at the
// next when it failed).
inline SQLHENV Env() {
  static const OdbcHandle env = NewEnvironment();
  return env;
}

// The next row of a result: false at its end; a failure raises.
inline bool FetchRow(SQLHSTMT stmt, bool narrow) {
  SQLRETURN rc = SQLFetch(stmt);
  if (rc == SQL_NO_DATA) return false;
  if (!SQL_SUCCEEDED(rc)) ThrowOdbcError(SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow);
  return true;
}

inline SQLWCHAR* W(std::u16string& s) {
  return reinterpret_cast<SQLWCHAR*>(s.data());
}

inline SQLCHAR* N(std::string& s) {
  return reinterpret_cast<SQLCHAR*>(s.data());
}

inline std::string FromW(const SQLWCHAR* s, std::size_t n) {
  return Utf16ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(s), n));
}

inline void Check(SQLRETURN rc, SQLSMALLINT type, SQLHANDLE h, OdbcPhase phase,
                  bool narrow = false) {
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) ThrowOdbcError(type, h, phase, narrow);
}

// Reads the whole of a long column with repeated SQLGetData calls.
template <typename Char>
bool GetChunks(SQLHSTMT stmt, SQLUSMALLINT col, SQLSMALLINT cType, std::basic_string<Char>& out,
               bool narrow = false) {
  out.clear();
  Char buf[2048];
  for (;;) {
    SQLLEN ind = 0;
    SQLRETURN rc = SQLGetData(stmt, col, cType, buf, sizeof buf, &ind);
    if (rc == SQL_NO_DATA) break;
    if (!SQL_SUCCEEDED(rc)) ThrowOdbcError(SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow);
    if (ind == SQL_NULL_DATA) return false;
    std::size_t terminator = (cType == SQL_C_BINARY) ? 0 : 1;
    std::size_t capacity = sizeof buf / sizeof(Char) - terminator;
    std::size_t got =
        (ind == SQL_NO_TOTAL || static_cast<std::size_t>(ind) / sizeof(Char) > capacity)
            ? capacity
            : static_cast<std::size_t>(ind) / sizeof(Char);
    out.append(buf, got);
    if (rc == SQL_SUCCESS) break;
  }
  return true;
}

}  // namespace ketrova::ado::odbc
