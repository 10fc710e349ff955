// The native SQLite provider's connection and statements: finding the file of
// a SQLite3 ODBC connection, opening it, the pool of prepared statements,
// executing with bound parameters, the cursor, transactions and the grouped
// commits.
#include "platform/ado/providers/sqlite/sqlite_provider.h"

#include <odbcinst.h>

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>

#include "platform/ado/providers/odbc/odbc_columns.h"
#include "platform/ado/providers/odbc/odbc_dialect.h"
#include "platform/ado/providers/sqlite/sqlite_statement.h"
#include "platform/ado/providers/sqlite/sqlite_values.h"
#include "platform/ado/sql_tokens.h"
#include "platform/ado/sqlite_library.h"
#include "support/collection.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::ado {

// A prepared statement and the description of its result.

namespace {

constexpr std::size_t kIdleStatements = 64;
// What the provider raises its failures as: the spelling the ODBC path used,
// which run logs show ("Quelle: Ketrova.ODBC").
constexpr const char* kSource = "Ketrova.ODBC";

std::string PrivateProfile(const std::string& section, const char* key, const char* file) {
  char value[1024] = {};
  int n = SQLGetPrivateProfileString(section.c_str(), key, "", value, sizeof value, file);
  return n > 0 ? std::string(value) : std::string();
}

bool IsSqlite3Driver(const std::string& driver) {
  if (driver.empty()) return false;
  if (KeyEquals(driver, "SQLite3")) return true;
  if (AsciiUpper(driver).find("SQLITE3ODBC") != std::string::npos) return true;
  // An installed driver under another name whose library is the SQLite3 one.
  return AsciiUpper(PrivateProfile(driver, "Driver", "odbcinst.ini")).find("SQLITE3ODBC") !=
         std::string::npos;
}

std::string WithoutBraces(std::string s) {
  s = Trim(s);
  if (s.size() >= 2 && s.front() == '{' && s.back() == '}') s = s.substr(1, s.size() - 2);
  return s;
}

// The open providers by file, so that a connection about to write can have
// the groups of the others on the same file committed first.
struct OpenFiles {
  std::mutex mutex;
  std::multimap<std::string, SqliteProvider*> providers;
};

OpenFiles& TheOpenFiles() {
  static OpenFiles files;
  return files;
}

class SqliteCursor : public Cursor {
 public:
  SqliteCursor(SqliteProvider& provider, std::unique_ptr<SqliteStatement> statement)
      : provider_(provider), statement_(std::move(statement)) {}
  ~SqliteCursor() override { provider_.Release(std::move(statement_)); }
  const std::vector<ColumnInfo>& Columns() const override { return statement_->columns; }
  std::size_t Fetch(std::vector<Row>& rows, std::size_t count) override {
    return provider_.FetchRows(*statement_, rows, count);
  }

 private:
  SqliteProvider& provider_;
  std::unique_ptr<SqliteStatement> statement_;
};

// A SELECT that ends in "= literal" (an update by key searches so, with a
// new literal per record) as the same text with "?" and the literal's value,
// so that it is prepared once; SQLite compares a bound value as it compares
// the literal. nullopt for any other statement.
std::optional<std::pair<std::string, Variant>> WithTrailingParameter(const std::string& sql) {
  if (FirstSqlWord(sql) != "SELECT") return std::nullopt;
  std::size_t end = sql.find_last_not_of(" \t\r\n");
  if (end == std::string::npos || end < 8) return std::nullopt;
  std::size_t start = end;
  Variant value;
  if (sql[end] == '\'') {
    start = StringStartBefore(sql, end);
    if (start == std::string::npos) return std::nullopt;
    value = Variant(ReplaceAll(sql.substr(start + 1, end - start - 1), "''", "'"));
  } else {
    while (start > 0 &&
           (std::isdigit(static_cast<unsigned char>(sql[start - 1])) || sql[start - 1] == '.'))
      --start;
    if (start > 0 && sql[start - 1] == '-') --start;
    std::string number = sql.substr(start, end + 1 - start);
    if (number.empty() || !std::isdigit(static_cast<unsigned char>(number.back())) ||
        number.size() > 15)
      return std::nullopt;
    // Integers only: a decimal literal is left to SQLite's own reading.
    if (number.find('.') != std::string::npos ||
        (number[0] != '-' && !std::isdigit(static_cast<unsigned char>(number[0]))))
      return std::nullopt;
    long long n = std::stoll(number);
    if (n < INT32_MIN || n > INT32_MAX) return std::nullopt;
    value = Variant::Long(static_cast<std::int32_t>(n));
  }
  std::size_t eq = sql.find_last_not_of(" \t\r\n", start == 0 ? 0 : start - 1);
  if (eq == std::string::npos || eq == 0 || sql[eq] != '=') return std::nullopt;
  char before = sql[eq - 1];
  if (before == '<' || before == '>' || before == '!' || before == '=') return std::nullopt;
  // A literal glued to a word ("x=a5") is no literal.
  if (start > 0 &&
      (std::isalnum(static_cast<unsigned char>(sql[start - 1])) || sql[start - 1] == '_'))
    return std::nullopt;
  return std::make_pair(sql.substr(0, start) + "?", std::move(value));
}

}  // namespace

std::optional<std::string> SqliteFileOf(const ConnectionSpec& spec) {
  std::string driver = WithoutBraces(spec.Get("Driver"));
  std::string database = spec.database;
  if (driver.empty()) {
    std::string dsn = spec.Get("DSN");
    if (dsn.empty()) dsn = spec.Get("Data Source");
    if (dsn.empty()) return std::nullopt;
    driver = PrivateProfile(dsn, "Driver", "odbc.ini");
    if (database.empty()) database = PrivateProfile(dsn, "Database", "odbc.ini");
  }
  if (!IsSqlite3Driver(driver) || database.empty()) return std::nullopt;
  return database;
}

SqliteProvider::SqliteProvider(const std::string& file, const ConnectionSpec& spec) {
  std::error_code ec;
  std::filesystem::path absolute = std::filesystem::absolute(file, ec);
  file_ = ec ? file : absolute.lexically_normal().string();
  SetUpSqliteLibrary();
  int rc =
      sqlite3_open_v2(file.c_str(), &db_,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (rc != SQLITE_OK) {
    sqlite3_close_v2(db_);
    db_ = nullptr;
    // The driver's own words for a file it cannot open.
    throw VbError(kErrGeneral, "[SQLite]connect failed", kSource);
  }
  int timeout = 100000;
  if (std::string t = spec.Get("Timeout"); !t.empty()) timeout = std::atoi(t.c_str());
  sqlite3_busy_timeout(db_, timeout);
  // Each record commits on its own, as far as the record loop can tell; WAL
  // with synchronous NORMAL makes a commit cheap and lets readers go on.
  sqlite3_exec(db_, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
  sqlite3_exec(db_, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
  grouping_ = GroupedCommits();
  group_ = std::make_unique<WriteGroup>(
      mutex_, [this] { CommitIfDue(); }, "SQLite " + file_);
  {
    auto& files = TheOpenFiles();
    std::lock_guard lock(files.mutex);
    files.providers.emplace(file_, this);
  }
  if (grouping_) group_->StartTimer();
}

SqliteProvider::~SqliteProvider() {
  group_->Stop();
  {
    auto& files = TheOpenFiles();
    std::lock_guard lock(files.mutex);
    for (auto it = files.providers.begin(); it != files.providers.end(); ++it) {
      if (it->second == this) {
        files.providers.erase(it);
        break;
      }
    }
  }
  std::lock_guard lock(mutex_);
  try {
    CommitGroupLocked();
  } catch (const VbError& e) {
    std::cerr << e.Description << "\n";
  }
  if (userTransaction_) sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
  idle_.clear();
  sqlite3_close_v2(db_);
}

void SqliteProvider::Fail(int rc, bool statement) {
  std::string message = sqlite3_errmsg(db_);
  int code = rc & 0xff;
  std::string text = "[SQLite]" + message + " (" + std::to_string(code) + ")";
  std::int32_t number = statement ? kErrStatementRefused : kErrGeneral;
  if (message.find("no such table") != std::string::npos) number = kErrUnknownTable;
  throw VbError(number, text, kSource);
}

void SqliteProvider::ExecPlain(const char* sql) {
  int rc = sqlite3_exec(db_, sql, nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) Fail(rc, false);
}

std::unique_ptr<SqliteStatement> SqliteProvider::Acquire(const std::string& sql) {
  for (auto it = idle_.begin(); it != idle_.end(); ++it) {
    if ((*it)->sql == sql) {
      auto s = std::move(*it);
      // The list's element is kept for the statement's return (once per
      // statement and record).
      spare_.splice(spare_.begin(), idle_, it);
      return s;
    }
  }
  auto s = std::make_unique<SqliteStatement>();
  s->sql = sql;
  const char* tail = nullptr;
  int rc = sqlite3_prepare_v3(db_, sql.c_str(), static_cast<int>(sql.size()),
                              SQLITE_PREPARE_PERSISTENT, &s->stmt, &tail);
  if (rc != SQLITE_OK) Fail(rc, true);
  if (!s->stmt) {
    // Only blanks or a comment: nothing to run, as an empty statement.
    return s;
  }
  // One statement per text, as the driver allows.
  if (tail && std::string_view(tail).find_first_not_of(" \t\r\n;") != std::string_view::npos)
    throw VbError(kErrStatementRefused, "[SQLite]only one SQL statement allowed", kSource);
  s->readOnly = sqlite3_stmt_readonly(s->stmt) != 0;
  Describe(*s);
  return s;
}

void SqliteProvider::Release(std::unique_ptr<SqliteStatement> statement) {
  if (!statement) return;
  std::lock_guard lock(mutex_);
  if (statement->stmt) {
    sqlite3_reset(statement->stmt);
    sqlite3_clear_bindings(statement->stmt);
  }
  if (statement->reading) {
    EndRead(*statement);
    try {
      CommitIfDue();
    } catch (const VbError&) {
      // The group is lost with the store's text; Fate tells whoever wrote to it.
    }
  }
  statement->produced = 0;
  statement->done = false;
  if (spare_.empty()) {
    idle_.push_front(std::move(statement));
  } else {
    idle_.splice(idle_.begin(), spare_, spare_.begin());
    idle_.front() = std::move(statement);
  }
  if (idle_.size() > kIdleStatements) idle_.pop_back();
}

void SqliteProvider::ForgetTableShapes() {
  std::lock_guard lock(mutex_);
  lastPrepared_.reset();
  idle_.clear();
  declared_.clear();
}

std::shared_ptr<const std::vector<ColumnInfo>> SqliteProvider::Prepare(const std::string& sql) {
  std::lock_guard lock(mutex_);
  CommitOthers();
  // A record loop opens its target with the same text for every record.
  if (lastPrepared_ && lastPrepared_->sql == sql) return lastPrepared_->columns;
  if (IsDdlStatement(sql) || IsTransactionStatement(sql)) return nullptr;
  auto parameterized = WithTrailingParameter(sql);
  const std::string& statement = parameterized ? parameterized->first : sql;
  // An update by key opens its target with another literal per record: the
  // same statement has the same columns.
  std::optional<Variant> parameter;
  if (parameterized) parameter = std::move(parameterized->second);
  if (lastPrepared_ && lastPrepared_->statement == statement) {
    lastPrepared_->sql = sql;
    lastPrepared_->parameter = std::move(parameter);
    return lastPrepared_->columns;
  }
  auto s = Acquire(statement);
  if (!s->stmt || !s->readOnly) {
    Release(std::move(s));
    return nullptr;
  }
  lastPrepared_.emplace(Prepared{sql, statement, std::move(parameter),
                                 std::make_shared<const std::vector<ColumnInfo>>(s->columns)});
  Release(std::move(s));
  return lastPrepared_->columns;
}

ExecuteResult SqliteProvider::Execute(const std::string& sql, std::span<const Variant> params,
                                      std::int64_t maxRows) {
  std::lock_guard lock(mutex_);
  CommitOthers();
  const bool ddl = IsDdlStatement(sql);
  if (ddl) {
    lastPrepared_.reset();
    idle_.clear();
    declared_.clear();
  }
  if (IsTransactionStatement(sql)) CommitGroupLocked();
  std::optional<std::pair<std::string, Variant>> parameterized;
  const std::string* statement = &sql;
  if (params.empty()) {
    if (lastPrepared_ && lastPrepared_->sql == sql) {
      // The text the record set's open described a moment ago.
      statement = &lastPrepared_->statement;
      if (lastPrepared_->parameter)
        params = std::span<const Variant>(&*lastPrepared_->parameter, 1);
    } else if ((parameterized = WithTrailingParameter(sql))) {
      statement = &parameterized->first;
      params = std::span<const Variant>(&parameterized->second, 1);
    }
  }
  auto s = Acquire(*statement);
  ExecuteResult result;
  if (!s->stmt) return result;
  sqlite3_stmt* stmt = s->stmt;
  int count = sqlite3_bind_parameter_count(stmt);
  for (int i = 0; i < count && static_cast<std::size_t>(i) < params.size(); ++i) {
    // A statement without a result has run before `params` goes.
    int rc =
        sqlite::BindValue(stmt, i + 1, params[static_cast<std::size_t>(i)], s->columns.empty());
    if (rc != SQLITE_OK) {
      Release(std::move(s));
      Fail(rc, true);
    }
  }
  const bool writes = !s->readOnly;
  if (!s->columns.empty()) {
    // A statement with a result runs as its rows are read; one that also
    // writes (a PRAGMA that sets) belongs to the group from its first row.
    if (writes) BeforeWrite();
    s->maxRows = maxRows;
    s->reading = true;
    ++reads_;
    ++queriesRun_;
    result.cursor = std::make_unique<SqliteCursor>(*this, std::move(s));
    return result;
  }
  if (writes) BeforeWrite();
  int rc;
  while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
  }
  if (rc != SQLITE_DONE) {
    // The message before the reset, which would replace it.
    std::string message = sqlite3_errmsg(db_);
    sqlite3_reset(stmt);
    Release(std::move(s));
    int code = rc & 0xff;
    std::int32_t number = kErrStatementRefused;
    if (message.find("no such table") != std::string::npos) number = kErrUnknownTable;
    const std::string text = "[SQLite]" + message + " (" + std::to_string(code) + ")";
    if (writes) AfterWrite(false, text);
    throw VbError(number, text, kSource);
  }
  result.rowsAffected = ddl ? -1 : sqlite3_changes(db_);
  Release(std::move(s));
  if (writes) AfterWrite(true);
  return result;
}

std::size_t SqliteProvider::FetchRows(SqliteStatement& s, std::vector<Row>& rows,
                                      std::size_t count) {
  std::lock_guard lock(mutex_);
  std::size_t got = 0;
  while (!s.done && got < count) {
    if (s.maxRows > 0 && s.produced >= s.maxRows) {
      s.done = true;
      break;
    }
    int rc = sqlite3_step(s.stmt);
    if (rc == SQLITE_DONE) {
      s.done = true;
      // A finished read gives its snapshot back at once.
      sqlite3_reset(s.stmt);
      EndRead(s);
      break;
    }
    if (rc != SQLITE_ROW) {
      std::string message = sqlite3_errmsg(db_);
      sqlite3_reset(s.stmt);
      EndRead(s);
      s.done = true;
      throw VbError(kErrStatementRefused,
                    "[SQLite]" + message + " (" + std::to_string(rc & 0xff) + ")", kSource);
    }
    Row row;
    row.reserve(s.columns.size());
    for (std::size_t i = 0; i < s.columns.size(); ++i)
      row.push_back(sqlite::ReadValue(s.stmt, static_cast<int>(i), s.columns[i]));
    rows.push_back(std::move(row));
    ++s.produced;
    ++got;
  }
  return got;
}

void SqliteProvider::CommitOthers() {
  // Another connection of this process holding a group on the same file
  // would keep a write waiting, and a read would not see what that connection
  // wrote: its group is committed first, as if each of its writes had been.
  std::vector<SqliteProvider*> others;
  {
    auto& files = TheOpenFiles();
    std::lock_guard lock(files.mutex);
    auto [from, to] = files.providers.equal_range(file_);
    for (auto it = from; it != to; ++it)
      if (it->second != this) others.push_back(it->second);
  }
  for (SqliteProvider* other : others) other->CommitGroupFor(this);
}

void SqliteProvider::BeforeWrite() {
  if (!grouping_ || userTransaction_ || group_->IsOpen() || !sqlite3_get_autocommit(db_)) return;
  ExecPlain("BEGIN");
  group_->Opened();
}

void SqliteProvider::AfterWrite(bool succeeded, const std::string& failure) {
  if (!group_->IsOpen()) {
    if (succeeded && sqlite3_get_autocommit(db_)) group_->WroteAlone();
    return;
  }
  if (sqlite3_get_autocommit(db_)) {
    // The failure took the whole group with it (a full disk, an I/O error).
    group_->Lost(failure);
    return;
  }
  if (succeeded) group_->Wrote();
  CommitIfDue();
}

void SqliteProvider::CommitIfDue() {
  if (group_->Due() && (reads_ == 0 || group_->Overdue())) CommitGroupLocked();
}

void SqliteProvider::EndRead(SqliteStatement& s) {
  if (!s.reading) return;
  s.reading = false;
  --reads_;
  assert(reads_ >= 0);
}

void SqliteProvider::CommitGroupLocked() {
  if (!group_->IsOpen()) return;
  int rc = sqlite3_exec(db_, "COMMIT", nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) {
    const std::string text =
        "[SQLite]" + std::string(sqlite3_errmsg(db_)) + " (" + std::to_string(rc & 0xff) + ")";
    // A commit that could not be made is not tried again later: the group is
    // rolled back, so that what became of its writes is known now.
    if (!sqlite3_get_autocommit(db_)) sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
    group_->Lost(text);
    throw VbError(kErrGeneral, text, kSource);
  }
  group_->Committed();
}

std::uint64_t SqliteProvider::LastWriteGroup() const {
  std::lock_guard lock(mutex_);
  return group_->LastWrite();
}

Provider::GroupFate SqliteProvider::FateOfGroup(std::uint64_t group, std::string& text) const {
  std::lock_guard lock(mutex_);
  return group_->Fate(group, text);
}

void SqliteProvider::CommitGroupFor(const SqliteProvider*) {
  std::lock_guard lock(mutex_);
  CommitGroupLocked();
}

void SqliteProvider::Flush() {
  std::lock_guard lock(mutex_);
  CommitGroupLocked();
}

void SqliteProvider::BeginTrans() {
  std::lock_guard lock(mutex_);
  CommitGroupLocked();
  ExecPlain("BEGIN");
  userTransaction_ = true;
}

void SqliteProvider::CommitTrans() {
  std::lock_guard lock(mutex_);
  if (!userTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", kSource);
  userTransaction_ = false;
  ExecPlain("COMMIT");
}

void SqliteProvider::RollbackTrans() {
  std::lock_guard lock(mutex_);
  if (!userTransaction_) throw VbError(kErrGeneral, "Keine Transaktion aktiv.", kSource);
  userTransaction_ = false;
  ExecPlain("ROLLBACK");
}

std::string SqliteProvider::ColumnTypeSql(const ColumnInfo& column) const {
  return odbc::ColumnTypeFor("sqlite", column);
}

}  // namespace ketrova::ado
