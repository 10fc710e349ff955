// Provider: what record access (Connection, Recordset, Catalog) runs on.
//
// One Provider object is one open connection to one store. Record access never
// talks to a driver itself: it asks the provider to run SQL, to list tables,
// columns and indexes, and to declare column types for DDL. OpenProvider picks
// the implementation from the connection string (see connection_string.h).
//
// To implementers of a provider:
// - Failures are thrown as VbError with a negative number, as OLE DB's were:
//   kErrGeneral, kErrStatementRefused, kErrUnknownTable, kErrLoginRefused
//   (enums.h), and the store's own diagnostic as description. Source is the
//   provider's name. A failed statement must leave the connection usable and
//   must not have written anything half (a single statement is atomic).
// - Execute receives the SQL as the system writes it: identifiers in [brackets].
//   A provider whose SQL engine does not take brackets rewrites them to its own
//   identifier quote (RewriteBrackets below helps). Parameters are "?" markers,
//   bound in order from `params`; Null binds as SQL NULL.
// - Execute of the same SQL text is frequent (once per record): prepare a
//   statement once per text and reuse it, with the description of its result.
//   Two cursors on the same text may be open at once, so reuse only a
//   statement that no open cursor holds. Forget them after DDL and on
//   ForgetTableShapes.
// - A Cursor reads rows in blocks as Fetch asks for them, never the whole
//   result at once. When `maxRows` > 0 no more rows than that are produced.
//   Destroying a cursor releases its statement for reuse.
// - Values are Variants of the type the column's ADO type implies: Null for
//   NULL, Integer/Long/Byte/Double for integers (Double only when a value does
//   not fit in a Long), Single/Double for floats, Decimal for numeric/decimal,
//   Boolean for bit, Date (OLE date) for date, time and timestamp, String
//   (UTF-8) for text, a Byte array for binary.
// - Every statement commits on its own unless BeginTrans was called, as far as
//   anyone can tell: a provider may hold its writes in a transaction of its
//   own (a group) while GroupedCommits() is on, committing it at least every
//   100 ms or 10,000 writes, on Flush and when it closes. A statement the
//   store refuses then rolls back alone; the rest of the group stays.
// - Register a provider for its kind with RegisterProvider, from a function
//   that the program calls at start-up (a static initialiser in a static library
//   may be dropped by the linker). The ODBC provider is built in.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ado/connection_string.h"
#include "platform/ado/enums.h"
#include "support/variant.h"

namespace ketrova::ado {

// A column of a result or of a table.
struct ColumnInfo {
  std::string name;
  DataTypeEnum type = adVarWChar;
  int sqlType = 0;               // the driver's SQL type code, where there is one
  std::string typeName;          // the store's own type name ("varchar", "int4" ...)
  std::int64_t definedSize = 0;  // characters for text, bytes for binary, digits for numerics
  std::uint8_t precision = 0;
  std::uint8_t numericScale = 0;
  bool nullable = true;
  bool autoIncrement = false;
  bool keyColumn = false;  // part of the table's primary key, where known
  std::string baseTable;   // where known; empty otherwise
  std::string baseColumn;
};

using Row = std::vector<Variant>;

// An open result. Columns are known as soon as the cursor exists.
class Cursor {
 public:
  virtual ~Cursor() = default;
  virtual const std::vector<ColumnInfo>& Columns() const = 0;
  // Appends up to `count` further rows to `rows`; returns how many it appended.
  // 0 means the result is at its end.
  virtual std::size_t Fetch(std::vector<Row>& rows, std::size_t count) = 0;
};

struct TableInfo {
  std::string catalog;
  std::string schema;
  std::string name;
  std::string type;  // "TABLE", "VIEW", "SYSTEM TABLE", ... as ADO names them
};

struct IndexInfo {
  std::string name;
  bool unique = false;
  bool primaryKey = false;
  bool clustered = false;
  bool ignoreNulls = false;
  std::vector<std::string> columns;  // in key order
};

// The result of Execute: a cursor when the statement gave a result set,
// otherwise the number of rows it affected (-1 when unknown).
struct ExecuteResult {
  std::unique_ptr<Cursor> cursor;
  std::int64_t rowsAffected = -1;
};

class Provider {
 public:
  virtual ~Provider() = default;

  // Short name of the SQL dialect: "sqlite", "postgresql", "mysql", "mssql",
  // "text", "odbc" (anything else). DDL and bracket rewriting go by it.
  virtual std::string Dialect() const = 0;
  // The quote around identifiers of the store ("\"", "`", "[" ...); the closing
  // quote is the same except for "[" whose closing one is "]".
  virtual std::string IdentifierQuote() const = 0;

  virtual ExecuteResult Execute(const std::string& sql, std::span<const Variant> params = {},
                                std::int64_t maxRows = 0) = 0;

  // Prepares and checks a statement without running it: raises what Execute
  // would raise for the text itself (syntax, unknown table or column) and
  // answers the columns of its result, empty for a statement without one.
  // nullptr when the provider cannot tell without running it; the caller
  // then executes. A later Execute of the same text reuses the work. The
  // same text prepared again while nothing changed the shape of tables
  // answers the same description object, so that a caller can tell.
  virtual std::shared_ptr<const std::vector<ColumnInfo>> Prepare(const std::string& sql) {
    return nullptr;
  }
  // Commits the writes the provider has grouped: afterwards every other
  // connection sees them. Raises when the commit fails.
  virtual void Flush() {}
  // Where a provider that groups writes put them. Groups are numbered from 1
  // in the order they begin; LastWriteGroup answers the group of the last
  // write that went through (0 when that write was committed on its own) and
  // FateOfGroup what became of a group: still open, committed, or lost as a
  // whole (a failed commit, a failure that rolled the group back), with the
  // store's text in `text` for a lost one. A provider that does not group
  // answers 0 and kCommitted.
  enum class GroupFate { kOpen, kCommitted, kLost };
  virtual std::uint64_t LastWriteGroup() const { return 0; }
  virtual GroupFate FateOfGroup(std::uint64_t group, std::string& text) const {
    return GroupFate::kCommitted;
  }
  // Whether the connection to the store is gone (the server ended it or
  // died), asked after a statement failed; false where the provider cannot
  // tell or has no server.
  virtual bool ConnectionLost() const { return false; }
  // What names a row of a table for an UPDATE of it: the expression a SELECT
  // adds to read it (SQLite's rowid, PostgreSQL's ctid) and the condition that
  // finds the row by it, with one "?"; empty where the store has none.
  struct RowIdentity {
    std::string column;
    std::string condition;
  };
  virtual RowIdentity RowIdentityOf() const { return {}; }
  // How many statements with a result the provider has run (for tests and
  // benchmarks; 0 where it does not count).
  virtual std::uint64_t QueriesRun() const { return 0; }

  virtual void BeginTrans() = 0;
  virtual void CommitTrans() = 0;
  virtual void RollbackTrans() = 0;
  // Seconds a statement may run; 0 for no limit.
  virtual void SetCommandTimeout(int seconds) {}

  // Tables and views of the store, with ADO's TABLE_TYPE words.
  virtual std::vector<TableInfo> Tables() = 0;
  // Columns of a table in order, with keyColumn and autoIncrement set.
  // Throws kErrUnknownTable when the table does not exist.
  virtual std::vector<ColumnInfo> TableColumns(const std::string& table) = 0;
  virtual std::vector<IndexInfo> TableIndexes(const std::string& table) = 0;

  // The type of a column in CREATE TABLE / ALTER TABLE of this store: the
  // declaration after the column name ("VARCHAR(50)", "INTEGER", "SERIAL" ...).
  virtual std::string ColumnTypeSql(const ColumnInfo& column) const = 0;

  // Raises the store's own refusal when it takes no writes at all (a file
  // that is only read): record sets call it at AddNew and field assignment.
  virtual void CheckWritable() const {}

  // Forgets what the provider keeps about the shape of tables and results
  // (prepared statements with their columns, declared types): the schema may
  // have changed in a way the provider did not see.
  virtual void ForgetTableShapes() {}
};

// True for a statement that may change the shape of tables: CREATE, ALTER or
// DROP as its first word.
bool IsDdlStatement(std::string_view sql);

// The first word of a statement in upper case ("SELECT", "INSERT" ...).
std::string FirstSqlWord(std::string_view sql);
// True for a statement that begins or ends a transaction or a savepoint
// (BEGIN, START, COMMIT, END, ROLLBACK, SAVEPOINT, RELEASE).
bool IsTransactionStatement(std::string_view sql);

// Rewrites [name] to quote+name+quote outside string literals ('...').
std::string RewriteBrackets(std::string_view sql, std::string_view openQuote,
                            std::string_view closeQuote);

// Whether providers group writes into transactions of their own (on unless
// switched off). Read when a provider opens. The program sets it from its
// command line; until it has, a store's open takes Ketrova's own setting.
void SetGroupedCommits(bool on);
bool GroupedCommits();
// True once SetGroupedCommits was called.
bool GroupedCommitsSet();

using ProviderFactory = std::function<std::unique_ptr<Provider>(const ConnectionSpec&)>;

// Sets the factory for a kind; a later registration replaces an earlier one.
void RegisterProvider(ProviderKind kind, ProviderFactory factory);

// Opens the provider for a connection string. Throws VbError (negative number)
// when there is no provider for it or the provider cannot open.
std::unique_ptr<Provider> OpenProvider(std::string_view connectionString,
                                       std::string_view user = {}, std::string_view password = {});

}  // namespace ketrova::ado
