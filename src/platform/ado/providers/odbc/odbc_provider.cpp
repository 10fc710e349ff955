// The ODBC provider's connection and statements: connecting, the pool of
// prepared statements, executing with bound parameters, the cursor that reads
// a result block by block, and transactions.
#include "platform/ado/providers/odbc/odbc_provider.h"

#include <algorithm>

#include "platform/ado/providers/odbc/odbc_calls.h"
#include "platform/ado/providers/odbc/odbc_columns.h"
#include "platform/ado/providers/odbc/odbc_dialect.h"
#include "platform/ado/providers/odbc/odbc_values.h"

namespace ketrova::ado {

using namespace odbc;

// A prepared statement and what describing its result told.
struct OdbcStatement {
  std::string sql;
  OdbcHandle stmt;
  bool described = false;
  std::vector<ColumnInfo> columns;
  std::int64_t maxRows = 0;
  int timeout = -1;
};

namespace {

constexpr std::size_t kIdleStatements = 64;

class OdbcCursor : public Cursor {
 public:
  OdbcCursor(OdbcProvider& provider, std::unique_ptr<OdbcStatement> statement)
      : provider_(provider), statement_(std::move(statement)) {}
  ~OdbcCursor() override {
    // A statement the driver cannot close is not used again.
    if (!SQL_SUCCEEDED(SQLFreeStmt(statement_->stmt, SQL_CLOSE))) return;
    // The SQLite3 driver neither resets a statement left before its end nor
    // ends its read, so it would go on where it stopped, and the open read
    // would hold back the checkpoints of the log. Prepared again at once on
    // its handle, it starts afresh and keeps its description.
    if (!atEnd_ && provider_.Narrow() && !provider_.PrepareAgain(*statement_)) return;
    provider_.Release(std::move(statement_));
  }
  const std::vector<ColumnInfo>& Columns() const override { return statement_->columns; }
  std::size_t Fetch(std::vector<Row>& rows, std::size_t count) override {
    std::size_t got = 0;
    SQLHSTMT stmt = statement_->stmt;
    const auto& cols = statement_->columns;
    while (!atEnd_ && got < count) {
      if (!FetchRow(stmt, provider_.Narrow())) {
        atEnd_ = true;
        break;
      }
      Row row;
      row.reserve(cols.size());
      for (std::size_t i = 0; i < cols.size(); ++i)
        row.push_back(
            GetValue(stmt, static_cast<SQLUSMALLINT>(i + 1), cols[i], provider_.Narrow()));
      rows.push_back(std::move(row));
      ++got;
    }
    return got;
  }

 private:
  OdbcProvider& provider_;
  std::unique_ptr<OdbcStatement> statement_;
  bool atEnd_ = false;
};

}  // namespace

OdbcProvider::OdbcProvider(const ConnectionSpec& spec) {
  dbc_ = OdbcHandle::Allocate(SQL_HANDLE_DBC, SQL_HANDLE_ENV, Env());
  Connect(spec.odbcString);
  SQLCHAR info[256] = {};
  SQLSMALLINT len = 0;
  Check(SQLGetInfo(dbc_, SQL_DBMS_NAME, info, sizeof info, &len), SQL_HANDLE_DBC, dbc_,
        OdbcPhase::kConnect, true);
  dbms_ = reinterpret_cast<char*>(info);
  // The PostgreSQL and SQLite3 drivers read a whole result at execution unless
  // told to fetch through a cursor or step by step; a record set must cost a
  // block, not a table.
  std::string upperString = AsciiUpper(spec.odbcString);
  std::string more;
  if (AsciiUpper(dbms_).find("POSTGRES") != std::string::npos) {
    if (upperString.find("USEDECLAREFETCH") == std::string::npos)
      more = ";UseDeclareFetch=1;Fetch=64";
    // The driver reports a boolean column as a text of five by default, which
    // makes a boolean value its text ("Wahr") that the server refuses.
    if (upperString.find("BOOLSASCHAR") == std::string::npos) more += ";BoolsAsChar=0";
  }
  if (AsciiUpper(dbms_).find("SQLITE") != std::string::npos) {
    // Each record commits on its own; WAL with synchronous NORMAL makes that
    // cheap. The driver sets these itself (a PRAGMA through it does not hold).
    if (upperString.find("STEPAPI") == std::string::npos) more += ";StepAPI=1";
    if (upperString.find("JOURNALMODE") == std::string::npos) more += ";JournalMode=WAL";
    if (upperString.find("SYNCPRAGMA") == std::string::npos) more += ";SyncPragma=NORMAL";
  }
  if (!more.empty()) {
    Check(SQLDisconnect(dbc_), SQL_HANDLE_DBC, dbc_, OdbcPhase::kConnect, true);
    Connect(spec.odbcString + more);
  }
  Setup();
}

void OdbcProvider::Connect(const std::string& odbcString) {
  Check(SQLSetConnectAttr(dbc_, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(15), 0),
        SQL_HANDLE_DBC, dbc_, OdbcPhase::kConnect, true);
  // The narrow call: connection strings are ASCII in practice, and a driver
  // without wide calls (SQLite3) then gets a UTF-8 file name unchanged.
  std::string in = odbcString;
  SQLCHAR out[2048];
  SQLSMALLINT outLen = 0;
  SQLRETURN rc = SQLDriverConnect(dbc_, nullptr, N(in), static_cast<SQLSMALLINT>(in.size()), out,
                                  sizeof out, &outLen, SQL_DRIVER_NOPROMPT);
  if (!SQL_SUCCEEDED(rc)) {
    auto records = ReadDiagnostics(SQL_HANDLE_DBC, dbc_, true);
    std::string text = OdbcErrorText(records);
    if (text.empty()) text = "Verbindung fehlgeschlagen: " + odbcString;
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kConnect), text, "Ketrova.ODBC");
  }
}

void OdbcProvider::Setup() {
  SQLCHAR info[256] = {};
  SQLSMALLINT len = 0;
  std::string upper = AsciiUpper(dbms_);
  if (upper.find("SQLITE") != std::string::npos) {
    dialect_ = "sqlite";
    quote_ = "\"";
    narrow_ = true;
  } else if (upper.find("POSTGRES") != std::string::npos) {
    dialect_ = "postgresql";
    quote_ = "\"";
  } else if (upper.find("MYSQL") != std::string::npos ||
             upper.find("MARIADB") != std::string::npos) {
    dialect_ = "mysql";
    quote_ = "`";
  } else if (upper.find("SQL SERVER") != std::string::npos) {
    dialect_ = "mssql";
    quote_ = "[";
  } else {
    Check(SQLGetInfo(dbc_, SQL_IDENTIFIER_QUOTE_CHAR, info, sizeof info, &len), SQL_HANDLE_DBC,
          dbc_, OdbcPhase::kConnect, true);
    quote_ = reinterpret_cast<char*>(info);
    if (quote_ == " " || quote_.empty()) quote_ = "\"";
  }
}

OdbcProvider::~OdbcProvider() {
  idle_.clear();
  // What a destructor cannot report: the driver's own rollback at disconnect
  // stands behind a failed one here.
  if (dbc_ && inTransaction_) SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
}

SQLRETURN OdbcProvider::Prepare(SQLHSTMT stmt, const std::string& sql) {
  if (narrow_) {
    std::string s = sql;
    return SQLPrepare(stmt, N(s), static_cast<SQLINTEGER>(s.size()));
  }
  std::u16string w = Utf8ToUtf16(sql);
  return SQLPrepareW(stmt, W(w), static_cast<SQLINTEGER>(w.size()));
}

SQLRETURN OdbcProvider::ExecDirectText(SQLHSTMT stmt, const std::string& sql) {
  if (narrow_) {
    std::string s = sql;
    return SQLExecDirect(stmt, N(s), static_cast<SQLINTEGER>(s.size()));
  }
  std::u16string w = Utf8ToUtf16(sql);
  return SQLExecDirectW(stmt, W(w), static_cast<SQLINTEGER>(w.size()));
}

std::string OdbcProvider::ColumnText(SQLHSTMT stmt, SQLUSMALLINT col) {
  if (narrow_) {
    std::string text;
    if (!GetChunks(stmt, col, SQL_C_CHAR, text, true)) return {};
    return text;
  }
  std::u16string text;
  if (!GetChunks(stmt, col, SQL_C_WCHAR, text)) return {};
  return Utf16ToUtf8(text);
}

void OdbcProvider::ExecDirect(const std::string& sql) {
  OdbcHandle stmt = OdbcHandle::Allocate(SQL_HANDLE_STMT, SQL_HANDLE_DBC, dbc_, narrow_);
  Check(ExecDirectText(stmt, sql), SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow_);
}

std::unique_ptr<OdbcStatement> OdbcProvider::Acquire(const std::string& sql) {
  for (auto it = idle_.begin(); it != idle_.end(); ++it) {
    if ((*it)->sql == sql) {
      auto s = std::move(*it);
      idle_.erase(it);
      return s;
    }
  }
  auto s = std::make_unique<OdbcStatement>();
  s->sql = sql;
  s->stmt = OdbcHandle::Allocate(SQL_HANDLE_STMT, SQL_HANDLE_DBC, dbc_, narrow_);
  PrepareStatement(*s);
  return s;
}

void OdbcProvider::PrepareStatement(OdbcStatement& s) {
  SQLRETURN rc = Prepare(s.stmt, Rewrite(s.sql));
  if (!SQL_SUCCEEDED(rc)) {
    auto records = ReadDiagnostics(SQL_HANDLE_STMT, s.stmt, narrow_);
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kStatement), OdbcErrorText(records),
                  "Ketrova.ODBC");
  }
}

bool OdbcProvider::PrepareAgain(OdbcStatement& statement) {
  return SQL_SUCCEEDED(Prepare(statement.stmt, Rewrite(statement.sql)));
}

void OdbcProvider::ForgetTableShapes() {
  idle_.clear();
  declaredTypes_.clear();
}

void OdbcProvider::Release(std::unique_ptr<OdbcStatement> statement) {
  if (!statement) return;
  // A statement whose parameters cannot be reset is not used again.
  if (!SQL_SUCCEEDED(SQLFreeStmt(statement->stmt, SQL_RESET_PARAMS))) return;
  idle_.push_front(std::move(statement));
  if (idle_.size() > kIdleStatements) idle_.pop_back();
}

std::optional<std::vector<ColumnInfo>> OdbcProvider::Prepare(const std::string& sql) {
  if (dialect_ != "postgresql" || IsDdlStatement(sql)) return std::nullopt;
  auto s = Acquire(sql);
  if (!s->described) {
    SQLSMALLINT columns = 0;
    SQLRETURN rc = SQLNumResultCols(s->stmt, &columns);
    if (!SQL_SUCCEEDED(rc)) {
      auto records = ReadDiagnostics(SQL_HANDLE_STMT, s->stmt, narrow_);
      throw VbError(OdbcErrorNumber(records, OdbcPhase::kStatement), OdbcErrorText(records),
                    "Ketrova.ODBC");
    }
    s->columns.clear();
    for (SQLSMALLINT c = 1; c <= columns; ++c)
      s->columns.push_back(Describe(s->stmt, static_cast<SQLUSMALLINT>(c), narrow_));
    s->described = true;
  }
  std::vector<ColumnInfo> columns = s->columns;
  Release(std::move(s));
  return columns;
}

ExecuteResult OdbcProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                    std::int64_t maxRows) {
  if (IsDdlStatement(sql)) {
    // The shape of tables may change: prepared statements would describe the old one.
    ForgetTableShapes();
    ExecDirect(Rewrite(sql));
    return {};
  }
  auto s = Acquire(sql);
  SQLHSTMT stmt = s->stmt;
  if (s->maxRows != maxRows) {
    Check(SQLSetStmtAttr(stmt, SQL_ATTR_MAX_ROWS,
                         reinterpret_cast<SQLPOINTER>(
                             static_cast<SQLULEN>(std::max<std::int64_t>(maxRows, 0))),
                         0),
          SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow_);
    s->maxRows = maxRows;
  }
  if (s->timeout != timeout_) {
    Check(SQLSetStmtAttr(stmt, SQL_ATTR_QUERY_TIMEOUT,
                         reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(std::max(timeout_, 0))),
                         0),
          SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow_);
    s->timeout = timeout_;
  }
  std::vector<ParamBuffer> buffers(params.size());
  for (std::size_t i = 0; i < params.size(); ++i)
    BindParam(stmt, static_cast<SQLUSMALLINT>(i + 1), params[i], buffers[i], narrow_);
  SQLRETURN rc = SQLExecute(stmt);
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) {
    auto records = ReadDiagnostics(SQL_HANDLE_STMT, stmt, narrow_);
    // A statement that failed may be in a state the driver cannot reuse.
    s.reset();
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kStatement), OdbcErrorText(records),
                  "Ketrova.ODBC");
  }
  SQLSMALLINT columns = 0;
  Check(SQLNumResultCols(stmt, &columns), SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow_);
  ExecuteResult result;
  if (columns > 0) {
    if (!s->described || s->columns.size() != static_cast<std::size_t>(columns)) {
      s->columns.clear();
      for (SQLSMALLINT c = 1; c <= columns; ++c)
        s->columns.push_back(Describe(stmt, static_cast<SQLUSMALLINT>(c), narrow_));
      if (dialect_ == "sqlite") DeclaredDecimals(s->columns);
      s->described = true;
    }
    ++queriesRun_;
    result.cursor = std::make_unique<OdbcCursor>(*this, std::move(s));
  } else {
    SQLLEN count = -1;
    Check(SQLRowCount(stmt, &count), SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow_);
    result.rowsAffected = count;
    // A statement the driver cannot close is not used again.
    if (SQL_SUCCEEDED(SQLFreeStmt(stmt, SQL_CLOSE))) Release(std::move(s));
  }
  return result;
}

Provider::RowIdentity OdbcProvider::RowIdentityOf() const {
  // The SQLite3 driver's rowid is not kept apart from a column of that name;
  // PostgreSQL's ctid is the row's place, which the driver reads as text.
  if (dialect_ == "postgresql") return {"ctid", "ctid = CAST(? AS tid)"};
  return {};
}

void OdbcProvider::BeginTrans() {
  Check(SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                          reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0),
        SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  inTransaction_ = true;
}

void OdbcProvider::CommitTrans() {
  if (!inTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", "Ketrova.ODBC");
  SQLRETURN rc = SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_COMMIT);
  SQLRETURN autocommit = SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                                           reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
  inTransaction_ = false;
  Check(rc, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  Check(autocommit, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
}

void OdbcProvider::RollbackTrans() {
  if (!inTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", "Ketrova.ODBC");
  SQLRETURN rc = SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
  SQLRETURN autocommit = SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                                           reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
  inTransaction_ = false;
  Check(rc, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  Check(autocommit, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
}

}  // namespace ketrova::ado
