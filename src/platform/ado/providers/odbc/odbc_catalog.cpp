// The catalogue side of the ODBC provider: tables, columns with their key,
// indexes, and what only a table's definition tells: the declared decimals of
// SQLite and MySQL's BOOLEAN, a TINYINT(1).
#include <algorithm>
#include <cstdio>

#include "platform/ado/providers/odbc/odbc_calls.h"
#include "platform/ado/providers/odbc/odbc_columns.h"
#include "platform/ado/providers/odbc/odbc_provider.h"
#include "support/collection.h"
#include "support/text.h"
#include "support/utf8.h"

namespace ketrova::ado {

using namespace odbc;


OdbcHandle OdbcProvider::NewCatalogStatement() {
  return OdbcHandle::Allocate(SQL_HANDLE_STMT, SQL_HANDLE_DBC, dbc_, narrow_);
}

const std::string* OdbcProvider::DeclaredType(const ColumnInfo& c) {
  // Read once per table: SQLite's through the catalogue, MySQL's from
  // information_schema (the catalogue there gives the type without its width),
  // by lower-case column name, since MySQL's column names ignore case.
  const bool mysql = dialect_ == "mysql";
  auto& declared = declaredTypes_[c.baseTable];
  if (declared.empty()) {
    OdbcHandle stmt = NewCatalogStatement();
    std::string table = c.baseTable;
    SQLRETURN rc = SQL_ERROR;
    if (mysql) {
      rc = ExecDirectText(stmt,
                          "SELECT NULL, NULL, NULL, COLUMN_NAME, NULL, COLUMN_TYPE FROM "
                          "information_schema.COLUMNS WHERE TABLE_SCHEMA = DATABASE() AND "
                          "TABLE_NAME = '" +
                              ReplaceAll(ReplaceAll(table, "\\", "\\\\"), "'", "''") + "'");
    } else {
      rc = SQLColumns(stmt, nullptr, 0, nullptr, 0, N(table), SQL_NTS, nullptr, 0);
    }
    if (SQL_SUCCEEDED(rc)) {
      while (FetchRow(stmt, narrow_)) {
        const std::string column = ColumnText(stmt, 4);
        declared[mysql ? AsciiLower(column) : column] = ColumnText(stmt, 6);
      }
    }
  }
  const std::string& column = c.baseColumn.empty() ? c.name : c.baseColumn;
  auto it = declared.find(mysql ? AsciiLower(column) : column);
  return it == declared.end() ? nullptr : &it->second;
}

void OdbcProvider::DeclaredDecimals(std::vector<ColumnInfo>& columns) {
  // SQLite keeps the declared "DECIMAL(p,s)" only in the table's definition.
  for (auto& c : columns) {
    if (c.type != adNumeric || c.baseTable.empty()) continue;
    const std::string* declared = DeclaredType(c);
    if (!declared) continue;
    unsigned p = 0, sc = 0;
    auto open = declared->find('(');
    if (open == std::string::npos) continue;
    if (std::sscanf(declared->c_str() + open, "(%u,%u)", &p, &sc) >= 1) {
      c.precision = static_cast<std::uint8_t>(std::min(p, 255u));
      c.numericScale = static_cast<std::uint8_t>(std::min(sc, 255u));
    }
  }
}

void OdbcProvider::DeclaredBooleans(std::vector<ColumnInfo>& columns) {
  // The driver describes a TINYINT(1) as any TINYINT. As a truth value, True
  // is written as 1, which MySQL's TRUE is, rather than VB's -1.
  for (auto& c : columns) {
    if (c.type != adTinyInt || c.baseTable.empty()) continue;
    const std::string* declared = DeclaredType(c);
    if (!declared || AsciiLower(*declared) != "tinyint(1)") continue;
    c.type = adBoolean;
    c.definedSize = 2;
    c.precision = 255;
    c.numericScale = 255;
  }
}

namespace {
// A whole number of a catalogue row.
SQLSMALLINT ShortColumn(SQLHSTMT stmt, SQLUSMALLINT col, bool narrow) {
  SQLSMALLINT value = 0;
  SQLLEN ind = 0;
  Check(SQLGetData(stmt, col, SQL_C_SSHORT, &value, 0, &ind), SQL_HANDLE_STMT, stmt,
        OdbcPhase::kOther, narrow);
  return ind == SQL_NULL_DATA ? 0 : value;
}
}  // namespace

SQLRETURN OdbcProvider::CatalogCall(SQLHSTMT stmt, CatalogFunction function,
                                    const std::string& table, const std::string& extra) {
  // Empty text means "no argument" (a null pointer), as the catalog calls take it.
  if (narrow_) {
    std::string t = table, x = extra;
    SQLCHAR* tp = t.empty() ? nullptr : N(t);
    SQLCHAR* xp = x.empty() ? nullptr : N(x);
    switch (function) {
      case CatalogFunction::kTables:
        return SQLTables(stmt, nullptr, 0, nullptr, 0, nullptr, 0, xp, xp ? SQL_NTS : 0);
      case CatalogFunction::kPrimaryKeys:
        return SQLPrimaryKeys(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS);
      case CatalogFunction::kStatistics:
        return SQLStatistics(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS, SQL_INDEX_ALL, SQL_QUICK);
    }
  }
  std::u16string t = Utf8ToUtf16(table), x = Utf8ToUtf16(extra);
  SQLWCHAR* tp = t.empty() ? nullptr : W(t);
  SQLWCHAR* xp = x.empty() ? nullptr : W(x);
  switch (function) {
    case CatalogFunction::kTables:
      if (dialect_ == "postgresql") {
        // Only the public schema, as a user of the database sees it.
        std::u16string schema = u"public";
        return SQLTablesW(stmt, nullptr, 0, W(schema), SQL_NTS, nullptr, 0, xp, xp ? SQL_NTS : 0);
      }
      if (dialect_ == "mysql") {
        // Only the connection's database; the driver lists every one it may see.
        SQLWCHAR current[256] = {};
        SQLINTEGER length = 0;
        if (SQL_SUCCEEDED(SQLGetConnectAttrW(dbc_, SQL_ATTR_CURRENT_CATALOG, current,
                                             sizeof current, &length)) &&
            current[0] != 0)
          return SQLTablesW(stmt, current, SQL_NTS, nullptr, 0, nullptr, 0, xp, xp ? SQL_NTS : 0);
      }
      return SQLTablesW(stmt, nullptr, 0, nullptr, 0, nullptr, 0, xp, xp ? SQL_NTS : 0);
    case CatalogFunction::kPrimaryKeys:
      return SQLPrimaryKeysW(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS);
    case CatalogFunction::kStatistics:
      return SQLStatisticsW(stmt, nullptr, 0, nullptr, 0, tp, SQL_NTS, SQL_INDEX_ALL, SQL_QUICK);
  }
  return SQL_ERROR;
}

std::vector<TableInfo> OdbcProvider::Tables() {
  OdbcHandle stmt = NewCatalogStatement();
  Check(CatalogCall(stmt, CatalogFunction::kTables, {}, "TABLE,VIEW,SYSTEM TABLE"), SQL_HANDLE_STMT,
        stmt, OdbcPhase::kOther, narrow_);
  std::vector<TableInfo> tables;
  while (FetchRow(stmt, narrow_)) {
    TableInfo t;
    t.catalog = ColumnText(stmt, 1);
    t.schema = ColumnText(stmt, 2);
    t.name = ColumnText(stmt, 3);
    t.type = AsciiUpper(ColumnText(stmt, 4));
    if (t.type == "BASE TABLE") t.type = "TABLE";
    tables.push_back(std::move(t));
  }
  return tables;
}

std::string OdbcProvider::ActualTableName(const std::string& table) {
  auto tables = Tables();
  for (const auto& t : tables)
    if (t.name == table) return table;
  for (const auto& t : tables)
    if (KeyEquals(t.name, table)) return t.name;
  throw VbError(kErrUnknownTable, "Die Tabelle '" + table + "' existiert nicht.", "Ketrova.ODBC");
}

std::vector<std::pair<int, std::string>> OdbcProvider::PrimaryKey(const std::string& table,
                                                                  std::string* name) {
  std::vector<std::pair<int, std::string>> keyed;
  OdbcHandle stmt = NewCatalogStatement();
  Check(CatalogCall(stmt, CatalogFunction::kPrimaryKeys, table), SQL_HANDLE_STMT, stmt,
        OdbcPhase::kOther, narrow_);
  while (FetchRow(stmt, narrow_)) {
    SQLSMALLINT seq = ShortColumn(stmt, 5, narrow_);
    keyed.emplace_back(seq, ColumnText(stmt, 4));
    if (name) *name = ColumnText(stmt, 6);
  }
  std::sort(keyed.begin(), keyed.end());
  return keyed;
}

std::vector<ColumnInfo> OdbcProvider::TableColumns(const std::string& table) {
  std::string name = ActualTableName(table);
  std::vector<ColumnInfo> columns;
  {
    OdbcHandle stmt = NewCatalogStatement();
    Check(ExecDirectText(stmt, Rewrite("SELECT * FROM [" + name + "] WHERE 1=0")), SQL_HANDLE_STMT,
          stmt, OdbcPhase::kStatement, narrow_);
    SQLSMALLINT n = 0;
    Check(SQLNumResultCols(stmt, &n), SQL_HANDLE_STMT, stmt, OdbcPhase::kStatement, narrow_);
    for (SQLSMALLINT c = 1; c <= n; ++c) {
      ColumnInfo info = Describe(stmt, static_cast<SQLUSMALLINT>(c), narrow_);
      if (info.baseTable.empty()) info.baseTable = name;
      if (info.baseColumn.empty()) info.baseColumn = info.name;
      columns.push_back(std::move(info));
    }
  }
  if (dialect_ == "sqlite") DeclaredDecimals(columns);
  if (dialect_ == "mysql") DeclaredBooleans(columns);
  for (const auto& [seq, col] : PrimaryKey(name, nullptr))
    for (auto& c : columns)
      if (c.name == col) c.keyColumn = true;
  return columns;
}

std::vector<IndexInfo> OdbcProvider::TableIndexes(const std::string& table) {
  std::string name = ActualTableName(table);
  std::string pkName;
  std::vector<std::string> pkColumns;
  for (auto& [seq, col] : PrimaryKey(name, &pkName)) pkColumns.push_back(col);
  std::vector<IndexInfo> indexes;
  {
    OdbcHandle stmt = NewCatalogStatement();
    Check(CatalogCall(stmt, CatalogFunction::kStatistics, name), SQL_HANDLE_STMT, stmt,
          OdbcPhase::kOther, narrow_);
    while (FetchRow(stmt, narrow_)) {
      SQLSMALLINT type = ShortColumn(stmt, 7, narrow_);
      if (type == SQL_TABLE_STAT) continue;
      SQLSMALLINT nonUnique = ShortColumn(stmt, 4, narrow_);
      std::string indexName = ColumnText(stmt, 6);
      std::string column = ColumnText(stmt, 9);
      auto it = std::find_if(indexes.begin(), indexes.end(),
                             [&](const IndexInfo& i) { return i.name == indexName; });
      if (it == indexes.end()) {
        IndexInfo info;
        info.name = indexName;
        info.unique = nonUnique == SQL_FALSE;
        info.clustered = type == SQL_INDEX_CLUSTERED;
        indexes.push_back(info);
        it = indexes.end() - 1;
      }
      it->columns.push_back(column);
    }
  }
  if (!pkColumns.empty()) {
    bool found = false;
    for (auto& i : indexes) {
      if ((!pkName.empty() && i.name == pkName) || (i.unique && i.columns == pkColumns)) {
        i.primaryKey = true;
        found = true;
        break;
      }
    }
    if (!found) {
      IndexInfo pk;
      pk.name = pkName.empty() ? "PrimaryKey" : pkName;
      pk.unique = true;
      pk.primaryKey = true;
      pk.columns = pkColumns;
      indexes.insert(indexes.begin(), pk);
    }
  }
  return indexes;
}

}  // namespace ketrova::ado
