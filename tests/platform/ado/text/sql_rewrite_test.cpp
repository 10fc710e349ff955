#include "platform/ado/file_engine/sql_rewrite.h"

#include <gtest/gtest.h>

namespace ketrova::file_engine {
namespace {

TEST(SqlRewriteTest, TextFromPartBecomesAQuotedPathWithItsAlias) {
  // The select of a text source, with its filters, as the system writes it.
  EXPECT_EQ(
      RewriteFileSql(" SELECT \r\n\t\"Name\",\r\n\t\"Ort\"\r\n\r\n FROM     `/daten/k`\\"
                     "Kunden.csv.TXT    Kunden WHERE ('Name'  LIKE '%Mü%'\r\n AND 'Nr'  >= 5\r\n)"),
      " SELECT \r\n\t\"Name\",\r\n\t\"Ort\"\r\n\r\n FROM     \"/daten/k\\Kunden.csv.TXT\"    "
      "\"Kunden\" WHERE (\"Name\"  LIKE '%Mü%'\r\n AND \"Nr\"  >= 5\r\n)");
  EXPECT_EQ(
      RewriteFileSql(" SELECT COUNT(*)\r\n FROM     `C:\\Daten`\\Kunden Liste.TXT    Kunden Liste"),
      " SELECT COUNT(*)\r\n FROM     \"C:\\Daten\\Kunden Liste.TXT\"    \"Kunden Liste\"");
  EXPECT_EQ(RewriteFileSql("DELETE FROM  `/d`\\a.TXT WHERE ('Nr'  < 3\r\n)"),
            "DELETE FROM  \"/d\\a.TXT\" WHERE (\"Nr\"  < 3\r\n)");
}

TEST(SqlRewriteTest, ApostropheNamesOnlyWhereANameStands) {
  // The target of an updating job on a text store.
  EXPECT_EQ(RewriteFileSql("SELECT * FROM 'Kunden.csv' WHERE  'Kunden.csv'.'Nr' = 5"),
            "SELECT * FROM \"Kunden.csv\" WHERE  \"Kunden.csv\".\"Nr\" = 5");
  // Values stay values: right of an operator, in lists, as a whole condition.
  EXPECT_EQ(RewriteFileSql("SELECT 'x' FROM t WHERE a = 'O''Neil' AND b IN ('a', 'b')"),
            "SELECT 'x' FROM t WHERE a = 'O''Neil' AND b IN ('a', 'b')");
  EXPECT_EQ(RewriteFileSql("INSERT INTO 'k.csv' VALUES ('[kein Name]', '#1#')"),
            "INSERT INTO \"k.csv\" VALUES ('[kein Name]', '#1#')");
}

TEST(SqlRewriteTest, BracketsAndDateLiterals) {
  EXPECT_EQ(RewriteFileSql("SELECT [Größe] FROM [Kunden.csv] WHERE [Datum]  > #2002-12-31#"),
            "SELECT \"Größe\" FROM \"Kunden.csv\" WHERE \"Datum\"  > '2002-12-31'");
  EXPECT_EQ(RewriteFileSql("d >= #12/31/2002# AND d < #31.12.2003 10:30#"),
            "d >= '2002-12-31' AND d < '2003-12-31 10:30:00'");
  EXPECT_EQ(RewriteFileSql("SELECT a # b"), "SELECT a # b");
}

}  // namespace
}  // namespace ketrova::file_engine
