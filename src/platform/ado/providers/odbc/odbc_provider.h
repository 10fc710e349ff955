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
#pragma once

#include <sql.h>

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/provider.h"
#include "platform/ado/providers/odbc/odbc_handle.h"

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
  std::optional<std::vector<ColumnInfo>> Prepare(const std::string& sql) override;
  std::uint64_t QueriesRun() const override { return queriesRun_; }

  // The DBMS name the driver reports ("SQLite", "PostgreSQL", "MariaDB" ...).
  const std::string& DbmsName() const { return dbms_; }
  // True for a driver without wide calls (SQLite3): text goes as UTF-8
  // through the narrow calls instead.
  bool Narrow() const { return narrow_; }

  // Gives a statement back to the pool (called by the cursor that held it).
  void Release(std::unique_ptr<OdbcStatement> statement);
  // Prepares a statement again on its handle; false when that fails.
  bool PrepareAgain(OdbcStatement& statement);

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
  void DeclaredDecimals(std::vector<ColumnInfo>& columns);
  std::string ActualTableName(const std::string& table);
  std::string Rewrite(const std::string& sql) const;
  // Statement text and catalog names through the wide or narrow calls.
  SQLRETURN Prepare(SQLHSTMT stmt, const std::string& sql);
  SQLRETURN ExecDirectText(SQLHSTMT stmt, const std::string& sql);
  std::string ColumnText(SQLHSTMT stmt, SQLUSMALLINT col);

  odbc::OdbcHandle dbc_;
  std::string dialect_ = "odbc";
  std::string dbms_;
  std::string quote_ = "\"";
  int timeout_ = 30;
  std::uint64_t queriesRun_ = 0;
  bool inTransaction_ = false;
  bool narrow_ = false;
  // Idle prepared statements by SQL text, most recently used first.
  std::list<std::unique_ptr<OdbcStatement>> idle_;
  // Declared column types of SQLite tables, by table and column.
  std::map<std::string, std::map<std::string, std::string>> declaredTypes_;
};

}  // namespace ketrova::ado
