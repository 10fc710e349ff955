// The catalogue side of the native SQLite provider: how a result column is
// described (the SQLite3 ODBC driver's reading of declared types, so that both
// ways to a file give the same ADO types and sizes), and tables, columns with
// their key, and indexes as the driver's catalogue calls listed them.
#include <sqlext.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "platform/ado/providers/odbc/odbc_columns.h"
#include "platform/ado/providers/sqlite/sqlite_provider.h"
#include "platform/ado/providers/sqlite/sqlite_statement.h"
#include "support/collection.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::ado {

namespace {

bool StartsWith(const std::string& lower, const char* word) {
  return lower.compare(0, std::strlen(word), word) == 0;
}

// The SQL type the driver gives a declared type, by its first word.
SQLSMALLINT SqlTypeOf(const std::string& lower, bool& testSign) {
  testSign = false;
  if (StartsWith(lower, "inter")) return SQL_VARCHAR;
  if (StartsWith(lower, "int") || StartsWith(lower, "mediumint")) {
    testSign = true;
    return SQL_INTEGER;
  }
  if (StartsWith(lower, "numeric")) return SQL_DOUBLE;
  if (StartsWith(lower, "tinyint")) {
    testSign = true;
    return SQL_TINYINT;
  }
  if (StartsWith(lower, "smallint")) {
    testSign = true;
    return SQL_SMALLINT;
  }
  if (StartsWith(lower, "float") || StartsWith(lower, "double") || StartsWith(lower, "real"))
    return SQL_DOUBLE;
  if (StartsWith(lower, "timestamp") || StartsWith(lower, "datetime")) return SQL_TYPE_TIMESTAMP;
  if (StartsWith(lower, "time")) return SQL_TYPE_TIME;
  if (StartsWith(lower, "date")) return SQL_TYPE_DATE;
  if (StartsWith(lower, "text") || StartsWith(lower, "memo") || StartsWith(lower, "longvarchar"))
    return SQL_LONGVARCHAR;
  if (StartsWith(lower, "bool") || StartsWith(lower, "bit")) return SQL_BIT;
  if (StartsWith(lower, "bigint")) {
    testSign = true;
    return SQL_BIGINT;
  }
  if (StartsWith(lower, "blob")) return SQL_BINARY;
  if (StartsWith(lower, "varbinary")) return SQL_VARBINARY;
  if (StartsWith(lower, "longvarbinary")) return SQL_LONGVARBINARY;
  return SQL_VARCHAR;
}

// The column size the driver reports for a declared type.
SQLULEN SizeOf(const std::string& declared, SQLSMALLINT type) {
  int m = 0;
  switch (type) {
    case SQL_INTEGER:
      m = 10;
      break;
    case SQL_TINYINT:
      m = 4;
      break;
    case SQL_SMALLINT:
      m = 6;
      break;
    case SQL_DOUBLE:
      m = 54;
      break;
    case SQL_VARCHAR:
    case SQL_VARBINARY:
    case SQL_BINARY:
      m = 255;
      break;
    case SQL_TYPE_DATE:
      m = 10;
      break;
    case SQL_TYPE_TIME:
      m = 8;
      break;
    case SQL_TYPE_TIMESTAMP:
      m = 32;
      break;
    case SQL_LONGVARCHAR:
    case SQL_LONGVARBINARY:
      m = 65536;
      break;
    case SQL_BIGINT:
      m = 20;
      break;
    case SQL_BIT:
      m = 1;
      break;
    default:
      break;
  }
  int mm = 0;
  if (type != SQL_BINARY && !declared.empty() && type != SQL_TYPE_TIMESTAMP &&
      std::sscanf(declared.c_str(), "%*[^(](%d", &mm) == 1)
    m = mm;
  return static_cast<SQLULEN>(m < 0 ? 0 : m);
}

}  // namespace

void SqliteProvider::Describe(SqliteStatement& s) {
  s.columns.clear();
  int n = sqlite3_column_count(s.stmt);
  for (int i = 0; i < n; ++i) {
    ColumnInfo c;
    const char* name = sqlite3_column_name(s.stmt, i);
    const char* declared = sqlite3_column_decltype(s.stmt, i);
    const char* table = sqlite3_column_table_name(s.stmt, i);
    const char* origin = sqlite3_column_origin_name(s.stmt, i);
    c.name = name ? name : "";
    std::string decl = declared ? declared : "";
    std::string word = Trim(decl.substr(0, decl.find('(')));
    c.typeName = word.empty() ? "varchar" : word;
    std::string lower = AsciiLower(decl);
    bool testSign = false;
    SQLSMALLINT type = SqlTypeOf(lower, testSign);
    SQLULEN size = SizeOf(decl, type);
    if (type == SQL_VARCHAR && size > 255) type = SQL_LONGVARCHAR;
    if (type == SQL_VARBINARY && size > 255) type = SQL_LONGVARBINARY;
    bool isUnsigned = testSign && lower.find("unsigned") != std::string::npos;
    c.baseTable = table ? table : "";
    // The driver names an expression's base column after its label, except
    // in a result of one column.
    c.baseColumn = origin ? origin : n == 1 ? "" : c.name;
    c.nullable = true;
    if (table && origin) {
      int autoinc = 0;
      if (sqlite3_table_column_metadata(db_, sqlite3_column_database_name(s.stmt, i), table, origin,
                                        nullptr, nullptr, nullptr, nullptr, &autoinc) == SQLITE_OK)
        c.autoIncrement = autoinc != 0;
    }
    odbc::SetAdoType(c, type, size, 0, isUnsigned);
    // The declared "DECIMAL(p,s)" gives precision and scale.
    if (c.type == adNumeric && !c.baseTable.empty()) {
      unsigned p = 0, sc = 0;
      auto open = decl.find('(');
      if (open != std::string::npos && std::sscanf(decl.c_str() + open, "(%u,%u)", &p, &sc) >= 1) {
        c.precision = static_cast<std::uint8_t>(std::min(p, 255u));
        c.numericScale = static_cast<std::uint8_t>(std::min(sc, 255u));
      }
    }
    s.columns.push_back(std::move(c));
  }
}

std::vector<TableInfo> SqliteProvider::Tables() {
  std::lock_guard lock(mutex_);
  CommitOthers();
  std::vector<TableInfo> tables;
  sqlite3_stmt* stmt = nullptr;
  int rc = sqlite3_prepare_v2(
      db_, "SELECT name, type FROM sqlite_master WHERE type IN ('table', 'view')", -1, &stmt,
      nullptr);
  if (rc != SQLITE_OK) Fail(rc, false);
  while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    TableInfo t;
    t.name = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    t.type = AsciiUpper(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1)));
    tables.push_back(std::move(t));
  }
  sqlite3_finalize(stmt);
  if (rc != SQLITE_DONE) Fail(rc, false);
  return tables;
}

namespace {

std::string ActualName(const std::vector<TableInfo>& tables, const std::string& table) {
  for (const auto& t : tables)
    if (t.name == table) return table;
  for (const auto& t : tables)
    if (KeyEquals(t.name, table)) return t.name;
  throw VbError(kErrUnknownTable, "Die Tabelle '" + table + "' existiert nicht.", "Ketrova.ODBC");
}

struct TableColumnRow {
  std::string name;
  std::string type;
  int pk = 0;
};

std::vector<TableColumnRow> TableInfoRows(sqlite3* db, const std::string& table) {
  std::vector<TableColumnRow> rows;
  sqlite3_stmt* stmt = nullptr;
  std::string sql = "PRAGMA table_info(\"" + ReplaceAll(table, "\"", "\"\"") + "\")";
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) return rows;
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    TableColumnRow r;
    r.name = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 1));
    const unsigned char* type = sqlite3_column_text(stmt, 2);
    r.type = type ? reinterpret_cast<const char*>(type) : "";
    r.pk = sqlite3_column_int(stmt, 5);
    rows.push_back(std::move(r));
  }
  sqlite3_finalize(stmt);
  return rows;
}

}  // namespace

std::vector<ColumnInfo> SqliteProvider::TableColumns(const std::string& table) {
  std::lock_guard lock(mutex_);
  CommitOthers();
  std::string name = ActualName(Tables(), table);
  std::vector<ColumnInfo> columns;
  {
    auto s = Acquire("SELECT * FROM [" + name + "] WHERE 1=0");
    columns = s->columns;
    Release(std::move(s));
  }
  for (auto& c : columns) {
    if (c.baseTable.empty()) c.baseTable = name;
    if (c.baseColumn.empty()) c.baseColumn = c.name;
  }
  for (const auto& row : TableInfoRows(db_, name))
    if (row.pk > 0)
      for (auto& c : columns)
        if (c.name == row.name) c.keyColumn = true;
  return columns;
}

std::vector<IndexInfo> SqliteProvider::TableIndexes(const std::string& table) {
  std::lock_guard lock(mutex_);
  CommitOthers();
  std::string name = ActualName(Tables(), table);
  // The key's columns in the table's order, as the driver numbers them.
  std::vector<std::string> pkColumns;
  std::string rowidKey;
  auto info = TableInfoRows(db_, name);
  for (const auto& row : info)
    if (row.pk > 0) pkColumns.push_back(row.name);
  if (pkColumns.size() == 1)
    for (const auto& row : info)
      if (row.pk > 0 && KeyEquals(row.type, "INTEGER")) rowidKey = row.name;

  std::vector<IndexInfo> indexes;
  if (!rowidKey.empty()) {
    // The rowid's alias has no index of its own; the driver lists one.
    IndexInfo i;
    i.name = "sqlite_autoindex_0";
    i.unique = true;
    i.columns.push_back(rowidKey);
    indexes.push_back(i);
  }
  std::string quoted = "\"" + ReplaceAll(name, "\"", "\"\"") + "\"";
  sqlite3_stmt* list = nullptr;
  if (sqlite3_prepare_v2(db_, ("PRAGMA index_list(" + quoted + ")").c_str(), -1, &list, nullptr) ==
      SQLITE_OK) {
    while (sqlite3_step(list) == SQLITE_ROW) {
      IndexInfo i;
      i.name = reinterpret_cast<const char*>(sqlite3_column_text(list, 1));
      i.unique = sqlite3_column_int(list, 2) != 0;
      sqlite3_stmt* cols = nullptr;
      std::string sql = "PRAGMA index_info(\"" + ReplaceAll(i.name, "\"", "\"\"") + "\")";
      if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &cols, nullptr) == SQLITE_OK) {
        while (sqlite3_step(cols) == SQLITE_ROW) {
          const unsigned char* col = sqlite3_column_text(cols, 2);
          i.columns.push_back(col ? reinterpret_cast<const char*>(col) : "");
        }
      }
      sqlite3_finalize(cols);
      indexes.push_back(std::move(i));
    }
  }
  sqlite3_finalize(list);
  if (!pkColumns.empty()) {
    bool found = false;
    for (auto& i : indexes) {
      if (i.unique && i.columns == pkColumns) {
        i.primaryKey = true;
        found = true;
        break;
      }
    }
    if (!found) {
      IndexInfo pk;
      pk.name = "PrimaryKey";
      pk.unique = true;
      pk.primaryKey = true;
      pk.columns = pkColumns;
      indexes.insert(indexes.begin(), pk);
    }
  }
  return indexes;
}

}  // namespace ketrova::ado
