#include "platform/ado/providers/odbc/odbc_diagnostics.h"

#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>

#include "platform/ado/enums.h"
#include "platform/ado/value_text.h"

namespace ketrova::ado {

std::vector<OdbcDiagRecord> ReadDiagnostics(SQLSMALLINT handleType, SQLHANDLE handle, bool narrow) {
  std::vector<OdbcDiagRecord> records;
  if (!handle) return records;
  if (narrow) {
    for (SQLSMALLINT i = 1;; ++i) {
      SQLCHAR state[6] = {};
      SQLINTEGER native = 0;
      SQLCHAR message[4096] = {};
      SQLSMALLINT length = 0;
      if (!SQL_SUCCEEDED(SQLGetDiagRec(handleType, handle, i, state, &native, message,
                                       sizeof message, &length)))
        break;
      OdbcDiagRecord r;
      r.sqlState = reinterpret_cast<char*>(state);
      r.nativeError = native;
      r.message = reinterpret_cast<char*>(message);
      while (!r.message.empty() && (r.message.back() == '\n' || r.message.back() == '\r'))
        r.message.pop_back();
      records.push_back(std::move(r));
    }
    return records;
  }
  for (SQLSMALLINT i = 1;; ++i) {
    SQLWCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLWCHAR message[4096];
    SQLSMALLINT length = 0;
    SQLRETURN rc =
        SQLGetDiagRecW(handleType, handle, i, state, &native, message,
                       static_cast<SQLSMALLINT>(sizeof message / sizeof message[0]), &length);
    if (!SQL_SUCCEEDED(rc)) break;
    OdbcDiagRecord r;
    r.sqlState = Utf16ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(state), 5));
    r.nativeError = native;
    std::size_t n =
        std::min<std::size_t>(static_cast<std::size_t>(std::max<SQLSMALLINT>(length, 0)),
                              sizeof message / sizeof message[0] - 1);
    r.message = Utf16ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(message), n));
    while (!r.message.empty() && (r.message.back() == '\n' || r.message.back() == '\r'))
      r.message.pop_back();
    records.push_back(std::move(r));
  }
  return records;
}

std::int32_t OdbcErrorNumber(const std::vector<OdbcDiagRecord>& records, OdbcPhase phase) {
  for (const auto& r : records) {
    if (r.sqlState.rfind("28", 0) == 0) return kErrLoginRefused;
    if (r.sqlState == "42S02" || r.sqlState == "42P01" ||
        r.message.find("no such table") != std::string::npos)
      return kErrUnknownTable;
  }
  if (phase == OdbcPhase::kStatement) return kErrStatementRefused;
  return kErrGeneral;
}

std::string OdbcErrorText(const std::vector<OdbcDiagRecord>& records) {
  std::string text;
  for (const auto& r : records) {
    if (!text.empty()) text += "\r\n";
    text += r.message;
  }
  return text;
}

void ThrowOdbcError(SQLSMALLINT handleType, SQLHANDLE handle, OdbcPhase phase, bool narrow) {
  auto records = ReadDiagnostics(handleType, handle, narrow);
  std::string text = OdbcErrorText(records);
  if (text.empty()) text = "ODBC-Fehler";
  throw VbError(OdbcErrorNumber(records, phase), text, "Ketrova.ODBC");
}

}  // namespace ketrova::ado
