// Which provider a connection string opens, and what the driver manager gets.
#include "platform/ado/connection_string.h"

#include <gtest/gtest.h>

#include "platform/ado/provider.h"
#include "support/vb_error.h"

namespace ketrova::ado {
namespace {

TEST(ConnectionString, DsnWithTheCommonTail) {
  auto spec = ParseConnection(
      "Provider=MSDASQL.1;Data Source=Lager;Persist Security Info=False;User "
      "ID=u;PWD=p;Database=d");
  EXPECT_EQ(spec.kind, ProviderKind::kOdbc);
  EXPECT_EQ(spec.odbcString, "DSN=Lager;UID=u;PWD=p;DATABASE=d");
  EXPECT_EQ(spec.user, "u");
  EXPECT_EQ(spec.password, "p");
  EXPECT_EQ(spec.database, "d");
  // User and password of Open win over the string's.
  EXPECT_EQ(ParseConnection("Provider=MSDASQL;Data Source=Lager;User ID=a", "b", "c").odbcString,
            "DSN=Lager;UID=b;PWD=c");
}

TEST(ConnectionString, MySqlInnerStringWithItsTailTwiceAndTheMariaDbDriver) {
  auto spec = ParseConnection(
      "Provider=MSDASQL;Persist Security Info=False;Extended Properties=\"DRIVER={MySQL ODBC 3.51 "
      "Driver};Server=db1;Database=lager;UID=u;PASSWORD=p;OPTION=35 ;PORT=3306\";User ID=u;PWD=p;"
      "Database=lager");
  EXPECT_EQ(spec.kind, ProviderKind::kOdbc);
  // The MySQL driver is not installed here; the MariaDB driver stands in.
  EXPECT_EQ(spec.odbcString, "DRIVER={" + ResolveOdbcDriverName("MySQL ODBC 3.51 Driver") +
                                 "};SERVER=db1;DATABASE=lager;UID=u;PWD=p;OPTION=35 ;PORT=3306");
  EXPECT_NE(ResolveOdbcDriverName("{MySQL ODBC 3.51 Driver}").find("MariaDB"), std::string::npos);
  EXPECT_EQ(ResolveOdbcDriverName("{sqlite3}"), "SQLite3");
  EXPECT_EQ(ResolveOdbcDriverName("Nirgends"), "Nirgends");
}

TEST(ConnectionString, OdbcPrefixSqlServerAndUnknownProviders) {
  EXPECT_EQ(ParseConnection("ODBC;Driver={SQLite3};Server=;Database=/tmp/x.db").odbcString,
            "DRIVER={SQLite3};DATABASE=/tmp/x.db");
  auto sql = ParseConnection(
      "Provider=SQLOLEDB.1;Initial Catalog=Lager;Data Source=srv;Persist Security Info=False;User "
      "ID=sa");
  EXPECT_EQ(sql.odbcString, "DRIVER={FreeTDS};SERVER=srv;DATABASE=Lager;UID=sa");
  EXPECT_EQ(ParseConnection("User ID=u;PWD=p").odbcString, "UID=u;PWD=p");
}

TEST(ConnectionString, FileProvidersTakeTheirFileOrFolder) {
  auto excel = ParseConnection(
      "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/d/a.xls;Extended Properties=\"Excel 8.0;\";");
  EXPECT_EQ(excel.kind, ProviderKind::kExcel);
  EXPECT_EQ(excel.dataSource, "/d/a.xls");
  auto paradox = ParseConnection(
      "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/d/px;Extended Properties=Paradox "
      "5.x;Persist Security Info=False");
  EXPECT_EQ(paradox.kind, ProviderKind::kXbase);
  EXPECT_EQ(paradox.dataSource, "/d/px");
  EXPECT_EQ(ParseConnection("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=x.mdb;User ID=u").kind,
            ProviderKind::kAccess);
  auto text = ParseConnection(
      "Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=/d/csv;Extensions=asc,csv,tab,txt;"
      "Persist Security Info=False;FIL=TEXT;MaxBufferSize=2048;TT=CHARACTER;DC=\";\";FLN=1");
  EXPECT_EQ(text.kind, ProviderKind::kText);
  EXPECT_EQ(text.dataSource, "/d/csv");
  EXPECT_EQ(text.Get("dc"), ";");
  EXPECT_EQ(text.Get("FLN"), "1");
}

TEST(ConnectionString, ProviderWithoutAnImplementationFailsWithANegativeNumber) {
  try {
    OpenProvider("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/nirgends/x.mdb");
    FAIL();
  } catch (const VbError& e) {
    EXPECT_LT(e.Number, 0);
  }
}

TEST(RewriteBrackets, OutsideStringLiteralsOnly) {
  EXPECT_EQ(RewriteBrackets("SELECT [a b] FROM [T] WHERE x = '[kein]' AND [c]='it''s'", "\"", "\""),
            "SELECT \"a b\" FROM \"T\" WHERE x = '[kein]' AND \"c\"='it''s'");
}

}  // namespace
}  // namespace ketrova::ado
