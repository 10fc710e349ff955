// The native SQLite provider: a Provider over one SQLite file, opened through
// the SQLite library for connections that name the SQLite3 ODBC driver (by
// driver name or through a data source whose driver it is).
//
// It answers as the ODBC path did (same column types and type words, the
// driver's "[SQLite]text (code)" diagnostics, WAL with synchronous NORMAL),
// but keeps each statement prepared by its text and rebinds it, and groups
// writes into transactions of its own while GroupedCommits() is on: a group is
// committed 100 ms after its first write at the latest (a timer thread sees to
// it while the caller waits elsewhere), after 10,000 writes, on Flush, on
// close, before a user's BeginTrans, and before another connection of this
// process writes the same file. A refused statement rolls back alone (SQLite's
// statement journal); a failure that takes the whole group with it, and a
// commit that fails (the group is then rolled back), lose the group:
// FateOfGroup answers it with the store's text, and stderr says how many
// writes had been committed before it.
//
// Every call takes the provider's mutex, so that the timer thread never
// commits in the middle of a write. Values are read by their storage class
// where it differs from the declared type (a text in an INTEGER column stays
// text).
#pragma once

#include <sqlite3.h>

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/ado/provider.h"
#include "platform/ado/write_group.h"

namespace ketrova::ado {

// The SQLite file a connection names when its driver is the SQLite3 ODBC
// driver (named in the string or as the driver of its data source); nullopt
// for any other connection.
std::optional<std::string> SqliteFileOf(const ConnectionSpec& spec);

struct SqliteStatement;

class SqliteProvider : public Provider {
 public:
  // Opens `file` (created when missing, as the driver does). Raises VbError
  // with the driver's text when it cannot be opened.
  SqliteProvider(const std::string& file, const ConnectionSpec& spec);
  ~SqliteProvider() override;

  std::string Dialect() const override { return "sqlite"; }
  std::string IdentifierQuote() const override { return "\""; }
  ExecuteResult Execute(const std::string& sql, std::span<const Variant> params = {},
                        std::int64_t maxRows = 0) override;
  std::shared_ptr<const std::vector<ColumnInfo>> Prepare(const std::string& sql) override;
  void Flush() override;
  std::uint64_t LastWriteGroup() const override;
  GroupFate FateOfGroup(std::uint64_t group, std::string& text) const override;
  std::uint64_t QueriesRun() const override { return queriesRun_; }
  void BeginTrans() override;
  void CommitTrans() override;
  void RollbackTrans() override;
  void SetCommandTimeout(int seconds) override {}
  std::vector<TableInfo> Tables() override;
  std::vector<ColumnInfo> TableColumns(const std::string& table) override;
  std::vector<IndexInfo> TableIndexes(const std::string& table) override;
  std::string ColumnTypeSql(const ColumnInfo& column) const override;
  void ForgetTableShapes() override;
  RowIdentity RowIdentityOf() const override { return {"rowid", "rowid = ?"}; }

  // For the cursor: steps its statement and reads rows; gives it back.
  std::size_t FetchRows(SqliteStatement& statement, std::vector<Row>& rows, std::size_t count);
  void Release(std::unique_ptr<SqliteStatement> statement);
  // Commits the group of this connection, if any (another connection of the
  // process is about to write the same file).
  void CommitGroupFor(const SqliteProvider* writer);

 private:
  std::unique_ptr<SqliteStatement> Acquire(const std::string& sql);
  void Describe(SqliteStatement& statement);
  [[noreturn]] void Fail(int rc, bool statement);
  void ExecPlain(const char* sql);
  // Commits the groups of the other connections of this process on the file.
  void CommitOthers();
  void BeforeWrite();
  // `failure` is the store's text of a write that did not go through.
  void AfterWrite(bool succeeded, const std::string& failure = {});
  void CommitGroupLocked();
  // Commits the group when it is due, unless a read under way would keep its
  // snapshot over the commit: the WAL could then not be checkpointed past
  // the group and would grow for the whole run (an update by key commits
  // while its SELECT is open). Such a group waits for the read to end, but
  // no longer than WriteGroup::kGrace.
  void CommitIfDue();
  // A cursor's statement has finished or is given back: its snapshot ends.
  void EndRead(SqliteStatement& s);
  std::string DeclaredType(const std::string& table, const std::string& column);

  sqlite3* db_ = nullptr;
  std::string file_;  // as opened, made absolute
  mutable std::recursive_mutex mutex_;
  std::list<std::unique_ptr<SqliteStatement>> idle_;
  std::list<std::unique_ptr<SqliteStatement>> spare_;  // empty elements for idle_
  // The text Prepare described last, the statement prepared for it (with a
  // trailing literal made a parameter, and that literal's value) and its
  // columns. Execute of the same text takes the statement from here.
  struct Prepared {
    std::string sql;
    std::string statement;
    std::optional<Variant> parameter;
    std::shared_ptr<const std::vector<ColumnInfo>> columns;
  };
  std::optional<Prepared> lastPrepared_;
  std::map<std::string, std::map<std::string, std::string>> declared_;
  std::uint64_t queriesRun_ = 0;
  int reads_ = 0;  // statements with reading set

  bool grouping_ = true;
  bool userTransaction_ = false;
  std::unique_ptr<WriteGroup> group_;
};

}  // namespace ketrova::ado
