// What the ODBC provider changes in a statement for the DBMS behind it, and how
// it tells DDL: brackets become the DBMS's identifier quote (the provider's
// Rewrite), and PostgreSQL gets its own type words in a CREATE TABLE.
#pragma once

#include <string>

#include "platform/ado/provider.h"

namespace ketrova::ado::odbc {

bool IsCreateTable(const std::string& sql);
// The Jet type words of a CREATE TABLE in PostgreSQL's words; quoted names and
// literals stay.
std::string PostgresTypeWords(const std::string& sql);
// The declaration of a column in DDL for a dialect ("sqlite", "postgresql",
// "mysql", "mssql", other): the provider's ColumnTypeSql.
std::string ColumnTypeFor(const std::string& dialect, const ColumnInfo& column);
// The same for MariaDB and MySQL: LONG, CURRENCY, YESNO, VARCHAR2, NUMBER,
// BINARY and MEMO; a sized TEXT becomes VARCHAR.
std::string MysqlTypeWords(const std::string& sql);

}  // namespace ketrova::ado::odbc
