// The ODBC provider's connection and statements: connecting, the pool of
// prepared statements, executing with bound parameters, the cursor that reads
// a result block by block, and transactions.
#include "platform/ado/providers/odbc/odbc_provider.h"

#include <algorithm>
#include <cassert>
#include <iostream>

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
  // The columns as Prepare answered them, until they are described again.
  std::shared_ptr<const std::vector<ColumnInfo>> prepared;
  // What its parameters are bound to, kept with it: the next run of the same
  // text binds them again without the driver making its arrays anew.
  std::vector<ParamBuffer> params;
  std::size_t bound = 0;
  std::int64_t maxRows = 0;
  int timeout = -1;
};

namespace {

constexpr std::size_t kIdleStatements = 64;

// The providers of this process that group their writes: a statement on one
// has the others' groups committed first, so that it sees what they wrote.
struct GroupingProviders {
  std::mutex mutex;
  std::vector<OdbcProvider*> all;
};

GroupingProviders& TheGroupingProviders() {
  static GroupingProviders providers;
  return providers;
}

class OdbcCursor : public Cursor {
 public:
  // Made with the provider's mutex held.
  OdbcCursor(OdbcProvider& provider, std::unique_ptr<OdbcStatement> statement)
      : provider_(provider), statement_(std::move(statement)) {
    provider_.CursorOpened();
  }
  ~OdbcCursor() override {
    auto lock = provider_.Lock();
    // A statement the driver cannot close is not used again.
    if (!SQL_SUCCEEDED(SQLFreeStmt(statement_->stmt, SQL_CLOSE))) {
      provider_.CursorClosed();
      return;
    }
    // The SQLite3 driver neither resets a statement left before its end nor
    // ends its read, so it would go on where it stopped, and the open read
    // would hold back the checkpoints of the log. Prepared again at once on
    // its handle, it starts afresh and keeps its description.
    if (atEnd_ || !provider_.Narrow() || provider_.PrepareAgain(*statement_))
      provider_.Release(std::move(statement_));
    provider_.CursorClosed();
  }
  const std::vector<ColumnInfo>& Columns() const override { return statement_->columns; }
  std::size_t Fetch(std::vector<Row>& rows, std::size_t count) override {
    auto lock = provider_.Lock();
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
  const std::string upperDbms = AsciiUpper(dbms_);
  grouping_ = GroupedCommits() && (upperDbms.find("POSTGRES") != std::string::npos ||
                                   upperDbms.find("MYSQL") != std::string::npos ||
                                   upperDbms.find("MARIADB") != std::string::npos);
  if (upperDbms.find("POSTGRES") != std::string::npos) {
    if (upperString.find("USEDECLAREFETCH") == std::string::npos)
      more = ";UseDeclareFetch=1;Fetch=64";
    // A refused statement inside a group: the driver rolls the transaction
    // back (Protocol=7.4-1), and the group's other writes are done again. Its
    // statement-level rollback would cost a round trip per record for the
    // savepoint; a string that asks for it keeps it. Without any rollback
    // (-0) nothing is grouped.
    std::size_t protocol = upperString.find("PROTOCOL=");
    std::string level = "-1";
    if (protocol == std::string::npos) {
      if (grouping_) more += ";Protocol=7.4-1";
    } else {
      std::size_t end = upperString.find(';', protocol);
      std::string value = upperString.substr(protocol, end - protocol);
      std::size_t dash = value.find('-');
      level = dash == std::string::npos ? "-2" : value.substr(dash);
    }
    replay_ = level == "-1";
    if (level != "-1" && level != "-2") grouping_ = false;
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
  group_ = std::make_unique<WriteGroup>(
      mutex_,
      [this] {
        if (openCursors_ == 0) CommitGroupLocked();
      },
      dbms_);
  if (grouping_) {
    group_->StartTimer();
    auto& providers = TheGroupingProviders();
    std::lock_guard lock(providers.mutex);
    providers.all.push_back(this);
  }
}

void OdbcProvider::CommitOthers() {
  std::vector<OdbcProvider*> others;
  {
    auto& providers = TheGroupingProviders();
    std::lock_guard lock(providers.mutex);
    for (OdbcProvider* p : providers.all)
      if (p != this) others.push_back(p);
  }
  for (OdbcProvider* other : others) other->CommitGroupFor();
}

void OdbcProvider::CommitGroupFor() {
  std::lock_guard lock(mutex_);
  try {
    CommitGroupLocked();
  } catch (const VbError&) {
    // Its failure is this connection's own, which stderr has told.
  }
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
  {
    auto& providers = TheGroupingProviders();
    std::lock_guard lock(providers.mutex);
    std::erase(providers.all, this);
  }
  if (group_) group_->Stop();
  std::lock_guard lock(mutex_);
  idle_.clear();
  try {
    CommitGroupLocked();
  } catch (const VbError& e) {
    std::cerr << e.Description << "\n";
  }
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
  std::lock_guard lock(mutex_);
  idle_.clear();
  declaredTypes_.clear();
}

void OdbcProvider::Release(std::unique_ptr<OdbcStatement> statement) {
  if (!statement) return;
  // A statement whose parameters cannot be reset is not used again.
  // Its parameters stay bound to its own buffers (see ExecuteNow).
  if (!statement->stmt) return;
  idle_.push_front(std::move(statement));
  if (idle_.size() > kIdleStatements) idle_.pop_back();
}

std::shared_ptr<const std::vector<ColumnInfo>> OdbcProvider::Prepare(const std::string& sql) {
  if (dialect_ != "postgresql" || IsDdlStatement(sql)) return nullptr;
  std::lock_guard lock(mutex_);
  CommitOthers();
  auto s = Acquire(sql);
  if (!s->described) {
    // A statement the server refuses to describe ends the transaction it is
    // in: the group goes first.
    CommitGroupLocked();
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
    s->prepared.reset();
  }
  if (!s->prepared) s->prepared = std::make_shared<const std::vector<ColumnInfo>>(s->columns);
  std::shared_ptr<const std::vector<ColumnInfo>> columns = s->prepared;
  Release(std::move(s));
  return columns;
}

OdbcProvider::StatementKind OdbcProvider::KindOf(const std::string& sql) const {
  const std::string word = FirstSqlWord(sql);
  if (word == "SELECT" || word == "WITH" || word == "SHOW" || word == "DESCRIBE" ||
      word == "DESC" || word == "EXPLAIN" || word == "VALUES")
    return StatementKind::kRead;
  if (word == "INSERT" || word == "UPDATE" || word == "DELETE" || word == "REPLACE" ||
      word == "MERGE")
    return StatementKind::kGroupedWrite;
  return StatementKind::kOther;
}

void OdbcProvider::BeforeWrite() {
  if (!grouping_ || inTransaction_ || textTransaction_ || group_->IsOpen()) return;
  // A group replayed after a refusal would take an open cursor with it.
  if (replay_ && openCursors_ > 0) return;
  Check(SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                          reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0),
        SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  group_->Opened();
}

void OdbcProvider::AfterWrite(const std::string& sql, std::span<const Variant> params) {
  if (!group_->IsOpen()) {
    group_->WroteAlone();
    return;
  }
  if (replay_) groupLog_.push_back({sql, std::vector<Variant>(params.begin(), params.end())});
  group_->Wrote();
  if (openCursors_ == 0 && group_->Due()) CommitGroupLocked();
}

void OdbcProvider::WriteFailed() {
  if (!group_->IsOpen()) return;
  // The connection gone (08) or the transaction rolled back as a whole
  // (40: a deadlock) takes the group with the statement.
  for (const auto& record : lastFailure_) {
    if (record.sqlState.starts_with("08") || record.sqlState.starts_with("40")) {
      EndGroup(SQL_ROLLBACK);
      group_->Lost(OdbcErrorText(lastFailure_));
      return;
    }
  }
  if (!replay_) return;  // the store rolled back the statement alone
  // The driver rolled the whole group back with the statement: its writes go
  // again, and are committed at once, so that a further refusal has little
  // to repeat.
  std::vector<LoggedWrite> writes = std::move(groupLog_);
  groupLog_.clear();
  try {
    for (const auto& write : writes) ExecuteNow(write.sql, write.params, 0);
    CommitGroupLocked();
  } catch (const VbError& e) {
    if (group_->IsOpen()) {
      EndGroup(SQL_ROLLBACK);
      group_->Lost(e.Description);
    }
  }
}

void OdbcProvider::EndGroup(SQLSMALLINT completion) {
  // Called where a failure is being reported already: a rollback that fails
  // too adds nothing to it, and the driver rolls back at disconnect anyway.
  groupLog_.clear();
  SQLEndTran(SQL_HANDLE_DBC, dbc_, completion);
  SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
}

void OdbcProvider::CommitGroupLocked() {
  if (!group_ || !group_->IsOpen()) return;
  SQLRETURN rc = SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_COMMIT);
  if (!SQL_SUCCEEDED(rc)) {
    auto records = ReadDiagnostics(SQL_HANDLE_DBC, dbc_, narrow_);
    EndGroup(SQL_ROLLBACK);
    group_->Lost(OdbcErrorText(records));
    throw VbError(OdbcErrorNumber(records, OdbcPhase::kOther), OdbcErrorText(records),
                  "Ketrova.ODBC");
  }
  groupLog_.clear();
  group_->Committed();
  Check(SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                          reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0),
        SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
}

void OdbcProvider::CursorClosed() {
  assert(openCursors_ > 0);
  --openCursors_;
  if (openCursors_ == 0 && group_ && group_->Due()) group_->Nudge();
}

void OdbcProvider::Flush() {
  std::lock_guard lock(mutex_);
  CommitGroupLocked();
}

ExecuteResult OdbcProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                    std::int64_t maxRows) {
  std::lock_guard lock(mutex_);
  CommitOthers();
  const StatementKind kind = grouping_ ? KindOf(sql) : StatementKind::kOther;
  // A read, and whatever else changes something, sees the group committed
  // first, as if each of its writes had been: a read inside the group would
  // see MariaDB's snapshot of the group's start, and its cursor would not
  // outlive a rollback of the group on PostgreSQL.
  if (kind != StatementKind::kGroupedWrite) CommitGroupLocked();
  if (kind == StatementKind::kOther) {
    if (grouping_ && IsTransactionStatement(sql)) {
      const std::string word = FirstSqlWord(sql);
      if (word == "BEGIN" || word == "START") textTransaction_ = true;
      if (word == "COMMIT" || word == "END" ||
          (word == "ROLLBACK" && AsciiUpper(sql).find(" TO ") == std::string::npos))
        textTransaction_ = false;
    }
  }
  if (kind != StatementKind::kGroupedWrite) return ExecuteNow(sql, params, maxRows);
  BeforeWrite();
  ExecuteResult result;
  try {
    result = ExecuteNow(sql, params, maxRows);
  } catch (const VbError&) {
    WriteFailed();
    throw;
  }
  AfterWrite(sql, params);
  return result;
}

ExecuteResult OdbcProvider::ExecuteNow(const std::string& sql, std::span<const Variant> params,
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
  // Every parameter given is bound again; bindings of a run with more of
  // them go first, so that a parameter not given is unbound, as ever.
  if (params.size() < s->bound) {
    Check(SQLFreeStmt(stmt, SQL_RESET_PARAMS), SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement,
          narrow_);
    s->bound = 0;
  }
  if (s->params.size() < params.size()) s->params.resize(params.size());
  for (std::size_t i = 0; i < params.size(); ++i)
    BindParam(stmt, static_cast<SQLUSMALLINT>(i + 1), params[i], s->params[i], narrow_);
  s->bound = params.size();
  SQLRETURN rc = SQLExecute(stmt);
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) {
    auto records = ReadDiagnostics(SQL_HANDLE_STMT, stmt, narrow_);
    // A statement that failed may be in a state the driver cannot reuse.
    s.reset();
    lastFailure_ = records;
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
      if (dialect_ == "mysql") DeclaredBooleans(s->columns);
      s->described = true;
      s->prepared.reset();
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

bool OdbcProvider::ConnectionLost() const {
  SQLUINTEGER dead = SQL_CD_FALSE;
  if (!SQL_SUCCEEDED(SQLGetConnectAttr(dbc_, SQL_ATTR_CONNECTION_DEAD, &dead, 0, nullptr)))
    return false;
  return dead == SQL_CD_TRUE;
}

std::uint64_t OdbcProvider::LastWriteGroup() const {
  std::lock_guard lock(mutex_);
  return group_ ? group_->LastWrite() : 0;
}

Provider::GroupFate OdbcProvider::FateOfGroup(std::uint64_t group, std::string& text) const {
  std::lock_guard lock(mutex_);
  return group_ ? group_->Fate(group, text) : GroupFate::kCommitted;
}

void OdbcProvider::BeginTrans() {
  std::lock_guard lock(mutex_);
  CommitGroupLocked();
  Check(SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                          reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0),
        SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  inTransaction_ = true;
}

void OdbcProvider::CommitTrans() {
  std::lock_guard lock(mutex_);
  if (!inTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", "Ketrova.ODBC");
  SQLRETURN rc = SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_COMMIT);
  SQLRETURN autocommit = SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                                           reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
  inTransaction_ = false;
  Check(rc, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  Check(autocommit, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
}

void OdbcProvider::RollbackTrans() {
  std::lock_guard lock(mutex_);
  if (!inTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", "Ketrova.ODBC");
  SQLRETURN rc = SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
  SQLRETURN autocommit = SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                                           reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
  inTransaction_ = false;
  Check(rc, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
  Check(autocommit, SQL_HANDLE_DBC, dbc_, OdbcPhase::kOther, narrow_);
}

}  // namespace ketrova::ado
