// The diagnostics of a failed ODBC call, kept whole (every record with its
// SQLSTATE and native code), and their translation into a VbError with an
// OLE DB style negative number and the driver's messages as description.
#pragma once

#include <sql.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/vb_error.h"

namespace ketrova::ado {

struct OdbcDiagRecord {
  std::string sqlState;
  std::int32_t nativeError = 0;
  std::string message;
};

// `narrow`: the driver has no wide calls and speaks UTF-8 through the narrow
// ones (the SQLite3 driver); the driver manager would mangle its messages.
std::vector<OdbcDiagRecord> ReadDiagnostics(SQLSMALLINT handleType, SQLHANDLE handle,
                                            bool narrow = false);

// What the failure happened during: it decides the number when the SQLSTATE
// does not.
enum class OdbcPhase { kConnect, kStatement, kOther };

// The number for a list of records: login refused (SQLSTATE 28xxx), unknown
// table (42S02, 42P01 or a "no such table" message), statement refused (during
// a statement), general failure otherwise.
std::int32_t OdbcErrorNumber(const std::vector<OdbcDiagRecord>& records, OdbcPhase phase);

// The messages of all records, one per line (CR LF between them).
std::string OdbcErrorText(const std::vector<OdbcDiagRecord>& records);

[[noreturn]] void ThrowOdbcError(SQLSMALLINT handleType, SQLHANDLE handle, OdbcPhase phase,
                                 bool narrow = false);

}  // namespace ketrova::ado
