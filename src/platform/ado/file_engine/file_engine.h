// The SQL engine of the file providers (text, Excel, xBase, Access): SQLite in
// memory, on which each file is a virtual table of its format's module.
//
// A provider hands the engine a resolver that maps a table name, as a
// statement names it, to the module and arguments of its virtual table. The
// engine rewrites the statement from the system's syntax (sql_rewrite.h),
// prepares it, and when SQLite reports an unknown table asks the resolver and
// creates the table, then prepares again. Tables stay for the connection's
// life; one whose file was changed from outside is made anew.
//
// The engine has the module "ketrova_csv" and a LIKE that ignores case beyond
// ASCII. A provider for another format registers its module on db().
//
// Prepared statements are kept per SQL text and lent out one user at a time.
// Failures raise VbError: kErrUnknownTable for a name that resolves to no file,
// the module's own number for file failures, kErrStatementRefused otherwise,
// with SQLite's or the module's message as description.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace ketrova::file_engine {

// How to create the virtual table for a name.
struct TableSource {
  std::string module;             // "ketrova_csv"
  std::vector<std::string> args;  // quoted as SQL text literals
};

using TableResolver = std::function<std::optional<TableSource>(const std::string& name)>;

class FileEngine;

// One prepared statement on loan from the engine; returned on destruction.
class Statement {
 public:
  Statement(FileEngine* engine, std::shared_ptr<bool> engine_alive, std::string key,
            sqlite3_stmt* stmt);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  sqlite3_stmt* handle() const { return stmt_; }
  // Steps once: true when a row is ready, false when done. Raises VbError.
  bool Step();

 private:
  FileEngine* engine_;
  // False once the engine is gone: a statement that outlives it (a cursor
  // kept longer than its connection) then only finalizes itself.
  std::shared_ptr<bool> engine_alive_;
  std::string key_;
  sqlite3_stmt* stmt_;
};

// A statement that reads every row of one table in file order and nothing
// else: each result column is a column of the table, nothing is computed,
// filtered, sorted, grouped or limited.
struct PlainScan {
  std::string table;         // the table's name in the engine
  std::vector<int> columns;  // the table's column of each result column
};

class FileEngine {
 public:
  // `source` names the provider in errors ("Ketrova.Text").
  FileEngine(TableResolver resolver, std::string source);
  ~FileEngine();
  FileEngine(const FileEngine&) = delete;
  FileEngine& operator=(const FileEngine&) = delete;

  sqlite3* db() const { return db_; }

  // Rewrites and prepares one statement, creating the tables it names.
  std::unique_ptr<Statement> Prepare(std::string_view sql);
  // Runs a statement without a result; answers the rows it changed.
  std::int64_t Execute(std::string_view sql);

  // Creates the table for `name` now, when it does not exist yet. Raises
  // kErrUnknownTable when the resolver knows no such table.
  void EnsureTable(const std::string& name);
  // Drops the table of a name, so that it is read anew on next use.
  void ForgetTable(const std::string& name);

  [[noreturn]] void RaiseError(int rc, std::string_view sql) const;
  // The provider's name in errors.
  const std::string& source() const { return source_; }

  // The statement as a plain scan, or null when it does more. Worked out from
  // SQLite's program for it, once per statement text while its tables stay.
  const PlainScan* PlainScanOf(const Statement& statement);

 private:
  friend class Statement;
  void Release(const std::string& key, sqlite3_stmt* stmt);
  sqlite3_stmt* PrepareRaw(const std::string& sql);
  void DropStaleTables();

  TableResolver resolver_;
  std::string source_;
  sqlite3* db_ = nullptr;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  std::multimap<std::string, sqlite3_stmt*> idle_;
  std::map<std::string, std::optional<PlainScan>, std::less<>> plain_scans_;
};

}  // namespace ketrova::file_engine
