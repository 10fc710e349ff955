// The DBMS-specific text of the ODBC provider: statement rewriting and the
// column types of DDL.
#include "platform/ado/providers/odbc/odbc_dialect.h"

#include <algorithm>
#include <cctype>
#include <span>

#include "platform/ado/providers/odbc/odbc_calls.h"
#include "platform/ado/providers/odbc/odbc_provider.h"

namespace ketrova::ado::odbc {

namespace {

using TypeWord = std::pair<const char*, const char*>;

// The Jet type words of a CREATE TABLE replaced by a DBMS's own. Quoted names
// and literals are left alone; `sizedTypes` says whether the DBMS's TEXT and binary
// types take a length.
std::string ReplaceTypeWords(const std::string& sql, std::span<const TypeWord> words,
                             bool sizedTypes);

}  // namespace

// PostgreSQL knows none of the Jet type words that table creation writes for
// stores it cannot tell from Access; a CREATE TABLE gets PostgreSQL's words
// for them.
std::string PostgresTypeWords(const std::string& sql) {
  static const TypeWord kWords[] = {{"LONG", "INTEGER"},
                                    {"DOUBLE", "DOUBLE PRECISION"},
                                    {"CURRENCY", "NUMERIC(19,4)"},
                                    {"DATETIME", "TIMESTAMP"},
                                    {"YESNO", "BOOLEAN"},
                                    {"LONGTEXT", "TEXT"},
                                    {"NVARCHAR", "VARCHAR"},
                                    {"VARCHAR2", "VARCHAR"},
                                    {"NUMBER", "NUMERIC"},
                                    {"BINARY", "BYTEA"},
                                    {"BLOB", "BYTEA"}};
  return ReplaceTypeWords(sql, kWords, false);
}

// MariaDB and MySQL, reached through a data source that is taken for Access,
// get the same: "YESNO" is unknown there, and "LONG" would be a text type.
std::string MysqlTypeWords(const std::string& sql) {
  static const TypeWord kWords[] = {{"LONG", "INTEGER"},   {"CURRENCY", "DECIMAL(19,4)"},
                                    {"YESNO", "BOOLEAN"},  {"VARCHAR2", "VARCHAR"},
                                    {"NUMBER", "DECIMAL"}, {"BINARY", "VARBINARY"},
                                    {"MEMO", "LONGTEXT"}};
  return ReplaceTypeWords(sql, kWords, true);
}

namespace {

std::string ReplaceTypeWords(const std::string& sql, std::span<const TypeWord> words,
                             bool sizedTypes) {
  std::string out;
  std::size_t i = 0;
  while (i < sql.size()) {
    char c = sql[i];
    if (c == '\'' || c == '"') {
      std::size_t end = sql.find(c, i + 1);
      end = end == std::string::npos ? sql.size() : end + 1;
      out.append(sql, i, end - i);
      i = end;
      continue;
    }
    if (!std::isalpha(static_cast<unsigned char>(c))) {
      out.push_back(c);
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < sql.size() &&
           (std::isalnum(static_cast<unsigned char>(sql[end])) || sql[end] == '_'))
      ++end;
    std::string word = sql.substr(i, end - i);
    std::string upper = AsciiUpper(word);
    const char* replacement = nullptr;
    for (const auto& [from, to] : words)
      if (upper == from) replacement = to;
    // BYTEA takes no length; PostgreSQL's TEXT takes none either.
    std::size_t next = end;
    while (next < sql.size() && sql[next] == ' ') ++next;
    bool sized = next < sql.size() && sql[next] == '(';
    if (!sizedTypes && (upper == "BINARY" || upper == "BLOB") && sized) {
      end = sql.find(')', next);
      end = end == std::string::npos ? sql.size() : end + 1;
    } else if (!sizedTypes && upper == "TEXT" && sized) {
      replacement = "VARCHAR";
    } else if (upper == "DOUBLE" && next + 9 <= sql.size() &&
               std::equal(sql.begin() + next, sql.begin() + next + 9, "PRECISION",
                          [](char a, char b) { return std::toupper(a) == b; })) {
      replacement = nullptr;  // PostgreSQL's own spelling
    }
    out += replacement ? replacement : word;
    i = end;
  }
  return out;
}

}  // namespace

bool IsCreateTable(const std::string& sql) {
  std::size_t start = sql.find_first_not_of(" \t\r\n");
  if (start == std::string::npos || sql.size() - start < 12) return false;
  return AsciiUpper(std::string_view(sql).substr(start, 12)) == "CREATE TABLE";
}

}  // namespace ketrova::ado::odbc

namespace ketrova::ado {

using namespace odbc;

std::string OdbcProvider::Rewrite(const std::string& sql) const {
  if (dialect_ == "postgresql") {
    std::string rewritten = RewriteBrackets(sql, quote_, quote_);
    return IsCreateTable(rewritten) ? PostgresTypeWords(rewritten) : rewritten;
  }
  if (dialect_ == "mysql") {
    std::string rewritten = RewriteBrackets(sql, quote_, quote_);
    return IsCreateTable(rewritten) ? MysqlTypeWords(rewritten) : rewritten;
  }
  return sql;
}

std::string OdbcProvider::ColumnTypeSql(const ColumnInfo& c) const {
  return odbc::ColumnTypeFor(dialect_, c);
}

std::string odbc::ColumnTypeFor(const std::string& d, const ColumnInfo& c) {
  auto size = [&](std::int64_t fallback) {
    std::int64_t s = c.definedSize > 0 ? c.definedSize : fallback;
    return std::to_string(s);
  };
  if (c.autoIncrement) {
    if (d == "sqlite") return "INTEGER PRIMARY KEY AUTOINCREMENT";
    if (d == "postgresql") return c.type == adBigInt ? "BIGSERIAL" : "SERIAL";
    if (d == "mysql")
      return (c.type == adBigInt ? std::string("BIGINT") : std::string("INTEGER")) +
             " NOT NULL AUTO_INCREMENT";
    if (d == "mssql") return "INTEGER IDENTITY(1,1)";
  }
  switch (c.type) {
    case adSmallInt:
    case adTinyInt:
    case adUnsignedTinyInt:
      return "SMALLINT";
    case adInteger:
    case adUnsignedSmallInt:
      return "INTEGER";
    case adBigInt:
    case adUnsignedInt:
    case adUnsignedBigInt:
      return "BIGINT";
    case adSingle:
      return "REAL";
    case adDouble:
      return d == "postgresql" ? "DOUBLE PRECISION" : d == "mssql" ? "FLOAT" : "DOUBLE";
    case adCurrency:
      return "NUMERIC(19,4)";
    case adNumeric:
    case adDecimal:
    case adVarNumeric: {
      int p = c.precision > 0 && c.precision != 255 ? c.precision : 18;
      int s = c.numericScale != 255 ? c.numericScale : 0;
      p = std::min(p, 38);
      s = std::min(s, p);
      return "NUMERIC(" + std::to_string(p) + "," + std::to_string(s) + ")";
    }
    case adBoolean:
      return d == "mssql" ? "BIT" : d == "mysql" ? "TINYINT(1)" : "BOOLEAN";
    case adDBDate:
      return "DATE";
    case adDBTime:
      return "TIME";
    case adDate:
    case adDBTimeStamp:
    case adFileTime:
      return d == "postgresql" || d == "sqlite" ? "TIMESTAMP" : "DATETIME";
    case adBinary:
    case adVarBinary:
      if (d == "postgresql") return "BYTEA";
      if (d == "sqlite") return "BLOB";
      return "VARBINARY(" + size(255) + ")";
    case adLongVarBinary:
      return d == "postgresql" ? "BYTEA"
             : d == "mysql"    ? "LONGBLOB"
             : d == "mssql"    ? "VARBINARY(MAX)"
                               : "BLOB";
    case adLongVarChar:
    case adLongVarWChar:
      return d == "mysql" ? "LONGTEXT" : d == "mssql" ? "NVARCHAR(MAX)" : "TEXT";
    case adGUID:
      return "VARCHAR(38)";
    case adChar:
    case adWChar:
    case adVarChar:
    case adVarWChar:
    case adBSTR:
    default:
      if (c.definedSize > 65535 || c.definedSize < 0)
        return d == "mysql" ? "LONGTEXT" : d == "mssql" ? "NVARCHAR(MAX)" : "TEXT";
      return (d == "mssql" ? "NVARCHAR(" : "VARCHAR(") + size(255) + ")";
  }
}

}  // namespace ketrova::ado
