// The ODBC provider: a Provider over one unixODBC connection.
//
// Statements are prepared once per SQL text and kept (a small pool per text,
// so that two open cursors on the same text each have their own), with the
// description of their result. DDL through the provider drops them. Rows are
// read with SQLFetch as the cursor is asked, block by block. Text travels as
// UTF-16 through the wide ODBC calls, so umlauts survive whatever the locale.
// The dialect is taken from the DBMS name; PostgreSQL and MySQL/MariaDB get
// their brackets rewritten. PostgreSQL fetches through a server cursor; SQLite
// steps row by row and runs in WAL with synchronous NORMAL (driver options
// added to the connection string on a second connect).
//
// On PostgreSQL and MariaDB the writes (INSERT, UPDATE, DELETE, REPLACE,
// MERGE) are grouped while GroupedCommits() is on: the first write turns
// autocommit off, and the group is committed (autocommit on again) after
// 100 ms or 10,000 writes, on Flush, on close, and before any other kind of
// statement that changes something (DDL, transaction texts, KILL ...). A
// refused statement fails alone: MariaDB rolls back the statement by itself.
// The PostgreSQL driver rolls back the whole transaction (Protocol=7.4-1,
// added unless the connection string names a protocol; its statement-level
// rollback costs a savepoint's round trip per record), and the provider then
// does the group's other writes again from its log of them and commits. A
// read commits the group first (MariaDB's reads in a transaction would see
// its start; a cursor on PostgreSQL would die with a rollback of the group),
// and on PostgreSQL no group begins while a cursor is open. A group is never
// committed while a cursor of the connection is open; it waits for the
// cursor's end. Should the server drop the whole group (the connection gone,
// a deadlock), stderr says how many writes were lost and how many had been
// committed before. A statement on any connection of the process has the
// groups of the others committed first, so that it sees what they wrote.
//
// Every call that reaches the connection holds the provider's mutex (the
// catalog calls rely on the driver's own lock of the connection), so that
// the timer thread of the group never commits in the middle of a statement.
#pragma once

#include <sql.h>

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ado/provider.h"
#include "platform/ado/providers/odbc/odbc_diagnostics.h"
#include "platform/ado/providers/odbc/odbc_handle.h"
#include "platform/ado/write_group.h"

namespace ketrova::ado {

struct OdbcStatement;

class OdbcProvider : public Provider {
 public:
  explicit OdbcProvider(const ConnectionSpec& spec);
  ~OdbcProvider() override;

  std::string Dialect() const override { return dialect_; }
  std::string IdentifierQuote() const override { return quote_; }
  ExecuteResult Execute(const std::string& sql, std::span<const Variant> params = {},
                        std::int64_t maxRows = 0) override;
  bool ConnectionLost() const override;
  std::uint64_t LastWriteGroup() const override;
  GroupFate FateOfGroup(std::uint64_t group, std::string& text) const override;
  void BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;
  void SetCommandTimeout(int seconds) override { timeout_ = seconds; }
  std::vector<TableInfo> Tables() override;
  std::vector<ColumnInfo> TableColumns(const std::string& table) override;
  std::vector<IndexInfo> TableIndexes(const std::string& table) override;
  std::string ColumnTypeSql(const ColumnInfo& column) const override;
  void ForgetTableShapes() override;
  RowIdentity RowIdentityOf() const override;
  // On PostgreSQL the server describes the statement (which checks it); the
  // other drivers are not asked before they run it.
  std::shared_ptr<const std::vector<ColumnInfo>> Prepare(const std::string& sql) override;
  std::uint64_t QueriesRun() const override { return queriesRun_; }
  void Flush() override;

  // The DBMS name the driver reports ("SQLite", "PostgreSQL", "MariaDB" ...).
  const std::string& DbmsName() const { return dbms_; }
  // True for a driver without wide calls (SQLite3): text goes as UTF-8
  // through the narrow calls instead.
  bool Narrow() const { return narrow_; }

  // Gives a statement back to the pool (called by the cursor that held it).
  void Release(std::unique_ptr<OdbcStatement> statement);
  // Prepares a statement again on its handle; false when that fails.
  bool PrepareAgain(OdbcStatement& statement);
  // For a cursor: the provider's mutex, held while it reads.
  std::unique_lock<std::recursive_mutex> Lock() const { return std::unique_lock(mutex_); }
  // A cursor of the connection was opened or has ended.
  void CursorOpened() { ++openCursors_; }
  void CursorClosed();

 private:
  void Connect(const std::string& odbcString);
  void Setup();
  std::unique_ptr<OdbcStatement> Acquire(const std::string& sql);
  void PrepareStatement(OdbcStatement& statement);
  void ExecDirect(const std::string& sql);
  odbc::OdbcHandle NewCatalogStatement();
  enum class CatalogFunction { kTables, kPrimaryKeys, kStatistics };
  SQLRETURN CatalogCall(SQLHSTMT stmt, CatalogFunction function, const std::string& table,
                        const std::string& extra = {});
  std::vector<std::pair<int, std::string>> PrimaryKey(const std::string& table, std::string* name);
  // The type a column's table declares for it (SQLite, MySQL); null when unknown.
  const std::string* DeclaredType(const ColumnInfo& c);
  void DeclaredDecimals(std::vector<ColumnInfo>& columns);
  // MySQL and MariaDB: a TINYINT(1) column (BOOLEAN) becomes adBoolean.
  void DeclaredBooleans(std::vector<ColumnInfo>& columns);
  std::string ActualTableName(const std::string& table);
  std::string Rewrite(const std::string& sql) const;
  // Statement text and catalog names through the wide or narrow calls.
  SQLRETURN Prepare(SQLHSTMT stmt, const std::string& sql);
  SQLRETURN ExecDirectText(SQLHSTMT stmt, const std::string& sql);
  std::string ColumnText(SQLHSTMT stmt, SQLUSMALLINT col);
  // Grouped writes: what a statement is to the group, opening it before a
  // write, counting after it, committing.
  enum class StatementKind { kRead, kGroupedWrite, kOther };
  StatementKind KindOf(const std::string& sql) const;
  void BeforeWrite();
  void AfterWrite(const std::string& sql, std::span<const Variant> params);
  void WriteFailed();
  // Runs a statement, whatever the group.
  ExecuteResult ExecuteNow(const std::string& sql, std::span<const Variant> params,
                           std::int64_t maxRows);
  void CommitGroupLocked();
  // Commits the groups of the process's other connections; commits this one's.
  void CommitOthers();
  void CommitGroupFor();
  void EndGroup(SQLSMALLINT completion);

  odbc::OdbcHandle dbc_;
  std::string dialect_ = "odbc";
  std::string dbms_;
  std::string quote_ = "\"";
  int timeout_ = 30;
  std::uint64_t queriesRun_ = 0;
  bool inTransaction_ = false;
  bool narrow_ = false;
  mutable std::recursive_mutex mutex_;
  bool grouping_ = false;
  // A transaction a script began by text (BEGIN, START TRANSACTION): no group
  // until its COMMIT or ROLLBACK.
  bool textTransaction_ = false;
  int openCursors_ = 0;
  std::unique_ptr<WriteGroup> group_;
  // PostgreSQL: a refused statement rolls the group back, whose writes are
  // then done again from this log.
  bool replay_ = false;
  struct LoggedWrite {
    std::string sql;
    std::vector<Variant> params;
  };
  std::vector<LoggedWrite> groupLog_;
  std::vector<OdbcDiagRecord> lastFailure_;
  // Idle prepared statements by SQL text, most recently used first.
  std::list<std::unique_ptr<OdbcStatement>> idle_;
  // Declared column types of SQLite tables (by table and column) and of MySQL
  // tables (by table and lower-case column).
  std::map<std::string, std::map<std::string, std::string>> declaredTypes_;
};

}  // namespace ketrova::ado
