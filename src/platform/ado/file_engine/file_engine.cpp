#include "platform/ado/file_engine/file_engine.h"

#include <sqlite3.h>

#include <set>

#include "platform/ado/enums.h"
#include "platform/ado/file_engine/csv_module.h"
#include "platform/ado/file_engine/like_function.h"
#include "platform/ado/file_engine/sql_rewrite.h"
#include "platform/ado/sql_tokens.h"
#include "platform/ado/sqlite_library.h"
#include "support/vb_error.h"

namespace ketrova::file_engine {

namespace {

constexpr std::string_view kNoSuchTable = "no such table: ";
constexpr std::size_t kMaxIdleStatements = 64;

std::string SqlText(std::string_view s) {
  std::string out = "'";
  for (char c : s) {
    if (c == '\'') out.push_back('\'');
    out.push_back(c);
  }
  out.push_back('\'');
  return out;
}

// The table name of SQLite's "no such table: [schema.]name", or empty.
std::string MissingTable(sqlite3* db) {
  std::string_view msg = sqlite3_errmsg(db);
  if (!msg.starts_with(kNoSuchTable)) return {};
  msg.remove_prefix(kNoSuchTable.size());
  for (std::string_view schema : {"main.", "temp."}) {
    if (msg.starts_with(schema)) msg.remove_prefix(schema.size());
  }
  return std::string(msg);
}

}  // namespace

Statement::Statement(FileEngine* engine, std::shared_ptr<bool> engine_alive, std::string key,
                     sqlite3_stmt* stmt)
    : engine_(engine), engine_alive_(std::move(engine_alive)), key_(std::move(key)), stmt_(stmt) {}

Statement::~Statement() {
  if (*engine_alive_) {
    engine_->Release(key_, stmt_);
  } else {
    sqlite3_finalize(stmt_);  // completes the engine's deferred close
  }
}

bool Statement::Step() {
  TakeModuleErrorNumber();
  int rc = sqlite3_step(stmt_);
  if (rc == SQLITE_ROW) return true;
  if (rc == SQLITE_DONE) return false;
  // A table dropped since the statement was prepared: make it anew, then retry
  // once, which is safe because nothing was produced yet.
  std::string missing = MissingTable(engine_->db());
  if (!missing.empty()) {
    sqlite3_reset(stmt_);
    engine_->EnsureTable(missing);
    rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
  }
  sqlite3_reset(stmt_);
  engine_->RaiseError(rc, sqlite3_sql(stmt_) ? sqlite3_sql(stmt_) : "");
}

// A connection serves one thread at a time, as record access does: SQLite's
// own locking is left out.
FileEngine::FileEngine(TableResolver resolver, std::string source)
    : resolver_(std::move(resolver)), source_(std::move(source)) {
  ado::SetUpSqliteLibrary();
  int rc = sqlite3_open_v2(
      ":memory:", &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (rc != SQLITE_OK) {
    std::string msg = db_ ? sqlite3_errmsg(db_) : "out of memory";
    sqlite3_close(db_);
    throw VbError(ado::kErrGeneral, msg, source_);
  }
  // A double-quoted name that names no column is an error, not a text.
  sqlite3_db_config(db_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(db_, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  RegisterCsvModule(db_);
  RegisterLikeFunction(db_);
}

FileEngine::~FileEngine() {
  *alive_ = false;
  for (auto& [key, stmt] : idle_) sqlite3_finalize(stmt);
  // Closes once the last statement on loan is finalized.
  sqlite3_close_v2(db_);
}

void FileEngine::RaiseError(int rc, std::string_view sql) const {
  std::int32_t number = TakeModuleErrorNumber();
  if (number == 0) number = ado::kErrStatementRefused;
  std::string msg = sqlite3_errmsg(db_);
  if (msg.empty() || msg == "not an error") msg = sqlite3_errstr(rc);
  throw VbError(number, msg, source_);
}

void FileEngine::EnsureTable(const std::string& name) {
  auto source = resolver_(name);
  if (!source) {
    throw VbError(ado::kErrUnknownTable, "Die Tabelle '" + name + "' wurde nicht gefunden",
                  source_);
  }
  std::string sql = "CREATE VIRTUAL TABLE IF NOT EXISTS main." + QuoteSqlIdentifier(name) +
                    " USING " + source->module + "(";
  for (std::size_t i = 0; i < source->args.size(); ++i) {
    if (i > 0) sql += ", ";
    sql += SqlText(source->args[i]);
  }
  sql += ")";
  TakeModuleErrorNumber();
  char* err = nullptr;
  int rc = sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &err);
  if (rc != SQLITE_OK) {
    std::string msg = err ? err : sqlite3_errstr(rc);
    sqlite3_free(err);
    std::int32_t number = TakeModuleErrorNumber();
    throw VbError(number ? number : ado::kErrGeneral, msg, source_);
  }
}

void FileEngine::ForgetTable(const std::string& name) {
  plain_scans_.clear();
  // Idle statements may name the table; they would only be prepared again.
  for (auto& [key, stmt] : idle_) sqlite3_finalize(stmt);
  idle_.clear();
  std::string sql = "DROP TABLE IF EXISTS main." + QuoteSqlIdentifier(name);
  // A table that an open cursor still reads cannot go; it stays as it is.
  sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr);
}

void FileEngine::DropStaleTables() {
  for (const auto& name : StaleCsvTables(db_)) ForgetTable(name);
}

sqlite3_stmt* FileEngine::PrepareRaw(const std::string& sql) {
  for (int attempt = 0; attempt < 32; ++attempt) {
    sqlite3_stmt* stmt = nullptr;
    const char* tail = nullptr;
    TakeModuleErrorNumber();
    int rc = sqlite3_prepare_v2(db_, sql.c_str(), static_cast<int>(sql.size()), &stmt, &tail);
    if (rc == SQLITE_OK) {
      if (stmt == nullptr) {
        throw VbError(ado::kErrStatementRefused, "Die Anweisung ist leer", source_);
      }
      return stmt;
    }
    std::string missing = MissingTable(db_);
    if (missing.empty()) RaiseError(rc, sql);
    EnsureTable(missing);
  }
  throw VbError(ado::kErrStatementRefused, "Zu viele Tabellen in der Anweisung", source_);
}

std::unique_ptr<Statement> FileEngine::Prepare(std::string_view sql) {
  DropStaleTables();
  std::string key(sql);
  auto it = idle_.find(key);
  if (it != idle_.end()) {
    sqlite3_stmt* stmt = it->second;
    idle_.erase(it);
    return std::make_unique<Statement>(this, alive_, std::move(key), stmt);
  }
  sqlite3_stmt* stmt = PrepareRaw(RewriteFileSql(sql));
  return std::make_unique<Statement>(this, alive_, std::move(key), stmt);
}

namespace {

// Whether the text can be a plain scan at all: no literal, no call or
// subquery, none of the words that filter, sort, group, limit or combine. A
// statement sent once per record with its own key is turned down here
// without a second prepare.
bool MayBePlainScan(std::string_view sql) {
  static constexpr std::string_view kWords[] = {"WHERE",  "ORDER",  "GROUP",    "HAVING",
                                                "LIMIT",  "OFFSET", "UNION",    "INTERSECT",
                                                "EXCEPT", "JOIN",   "DISTINCT", "VALUES"};
  for (std::size_t i = 0; i < sql.size();) {
    const ado::SqlToken t = ado::NextSqlToken(sql, i);
    if (t.kind == ado::SqlTokenKind::kString || t.Is('(')) return false;
    if (t.kind == ado::SqlTokenKind::kWord)
      for (std::string_view word : kWords)
        if (t.IsWord(word)) return false;
  }
  return true;
}

// Reads SQLite's program for a statement (EXPLAIN): a plain scan opens one
// virtual table, loads its columns into the result registers and hands the
// row over, with nothing else between the loop's ends.
std::optional<PlainScan> ReadPlainScan(sqlite3* db, sqlite3_stmt* statement) {
  const char* text = sqlite3_sql(statement);
  const int results = sqlite3_column_count(statement);
  if (text == nullptr || results <= 0 || !MayBePlainScan(text)) return std::nullopt;
  const std::string explain = std::string("EXPLAIN ") + text;
  sqlite3_stmt* program = nullptr;
  if (sqlite3_prepare_v2(db, explain.c_str(), -1, &program, nullptr) != SQLITE_OK) {
    sqlite3_finalize(program);
    return std::nullopt;
  }
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> owned(program, sqlite3_finalize);
  int cursor = -1, opens = 0, filters = 0, nexts = 0, rows = 0, first_result = 0;
  std::map<int, int> column_in;  // register -> the table column loaded into it
  std::set<int> constants;       // registers loaded with a number
  while (sqlite3_step(program) == SQLITE_ROW) {
    const std::string_view op = reinterpret_cast<const char*>(sqlite3_column_text(program, 1));
    const int p1 = sqlite3_column_int(program, 2);
    const int p2 = sqlite3_column_int(program, 3);
    const int p3 = sqlite3_column_int(program, 4);
    if (op == "Init" || op == "Goto" || op == "Transaction" || op == "Halt") continue;
    if (op == "VOpen") {
      ++opens;
      cursor = p1;
    } else if (op == "VFilter") {
      ++filters;
    } else if (op == "VNext") {
      ++nexts;
    } else if (op == "Integer") {
      constants.insert(p2);
    } else if (op == "VColumn") {
      if (p1 != cursor) return std::nullopt;
      column_in[p3] = p2;
    } else if (op == "ResultRow") {
      ++rows;
      if (p2 != results) return std::nullopt;
      first_result = p1;
    } else {
      return std::nullopt;
    }
  }
  if (opens != 1 || filters != 1 || nexts != 1 || rows != 1) return std::nullopt;
  PlainScan scan;
  for (int i = 0; i < results; ++i) {
    auto it = column_in.find(first_result + i);
    if (it == column_in.end() || constants.count(first_result + i)) return std::nullopt;
    const char* table = sqlite3_column_table_name(statement, i);
    if (table == nullptr || (i > 0 && scan.table != table)) return std::nullopt;
    scan.table = table;
    scan.columns.push_back(it->second);
  }
  return scan;
}

}  // namespace

const PlainScan* FileEngine::PlainScanOf(const Statement& statement) {
  const char* text = sqlite3_sql(statement.handle());
  if (text == nullptr) return nullptr;
  auto it = plain_scans_.find(std::string_view(text));
  if (it == plain_scans_.end()) {
    // Statements made per record would have the answers grow without end.
    if (plain_scans_.size() >= kMaxIdleStatements) plain_scans_.clear();
    it = plain_scans_.emplace(text, ReadPlainScan(db_, statement.handle())).first;
  }
  return it->second ? &*it->second : nullptr;
}

std::int64_t FileEngine::Execute(std::string_view sql) {
  auto stmt = Prepare(sql);
  while (stmt->Step()) {
  }
  return sqlite3_changes64(db_);
}

void FileEngine::Release(const std::string& key, sqlite3_stmt* stmt) {
  sqlite3_reset(stmt);
  sqlite3_clear_bindings(stmt);
  if (idle_.size() >= kMaxIdleStatements) {
    sqlite3_finalize(stmt);
    return;
  }
  idle_.emplace(key, stmt);
}

}  // namespace ketrova::file_engine
