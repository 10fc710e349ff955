#include "platform/ado/providers/odbc/odbc_diagnostics.h"

#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>
#include <limits>

#include "platform/ado/enums.h"
#include "platform/ado/value_text.h"

namespace ketrova::ado {

namespace {

// Record `i` through the narrow (SQLCHAR) or the wide (SQLWCHAR) call: false
// when there is none. The message buffer grows to the length the driver
// reports, so that no message is cut.
template <typename Char>
bool ReadRecord(SQLSMALLINT handleType, SQLHANDLE handle, SQLSMALLINT i, OdbcDiagRecord& r) {
  Char state[6] = {};
  SQLINTEGER native = 0;
  std::vector<Char> message(512, Char{});
  for (;;) {
    SQLSMALLINT length = 0;
    SQLSMALLINT capacity = static_cast<SQLSMALLINT>(message.size());
    SQLRETURN rc;
    if constexpr (sizeof(Char) == 1)
      rc = SQLGetDiagRec(handleType, handle, i, state, &native, message.data(), capacity, &length);
    else
      rc = SQLGetDiagRecW(handleType, handle, i, state, &native, message.data(), capacity, &length);
    if (!SQL_SUCCEEDED(rc)) return false;
    if (length < capacity || capacity == std::numeric_limits<SQLSMALLINT>::max()) {
      message.resize(static_cast<std::size_t>(std::clamp<SQLSMALLINT>(length, 0, capacity - 1)));
      break;
    }
    message.assign(static_cast<std::size_t>(
                       std::min<int>(length + 1, std::numeric_limits<SQLSMALLINT>::max())),
                   Char{});
  }
  auto text = [](const Char* p, std::size_t n) {
    if constexpr (sizeof(Char) == 1)
      return std::string(reinterpret_cast<const char*>(p), n);
    else
      return Utf16ToUtf8(std::u16string_view(reinterpret_cast<const char16_t*>(p), n));
  };
  std::size_t stateLength = 0;
  while (stateLength < 5 && state[stateLength] != 0) ++stateLength;
  r.sqlState = text(state, stateLength);
  r.nativeError = native;
  r.message = text(message.data(), message.size());
  while (!r.message.empty() && (r.message.back() == '\n' || r.message.back() == '\r'))
    r.message.pop_back();
  return true;
}

}  // namespace

std::vector<OdbcDiagRecord> ReadDiagnostics(SQLSMALLINT handleType, SQLHANDLE handle, bool narrow) {
  std::vector<OdbcDiagRecord> records;
  if (!handle) return records;
  for (SQLSMALLINT i = 1;; ++i) {
    OdbcDiagRecord r;
    bool read = narrow ? ReadRecord<SQLCHAR>(handleType, handle, i, r)
                       : ReadRecord<SQLWCHAR>(handleType, handle, i, r);
    if (!read) break;
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
