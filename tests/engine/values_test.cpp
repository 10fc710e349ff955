// Values arrive as they are: jobs made from the source's catalogue (generated
// scripts, tables created by the run) carry booleans, doubles and long texts
// into each back-end. MariaDB is reached here through its ODBC data source, the
// way around the MySQL store type's own statements.
#include <gtest/gtest.h>

#include "engine_fixture.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"
#include "support/utf8.h"

namespace ketrova::testing {
namespace {

using ado::testing::BackendName;
using ado::testing::TestBackends;
using RowList = std::vector<std::string>;

class ValuesTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    if (IsSkipped()) return;
    // A file ending in .db, as the fixture's, would count as Paradox.
    if (Dialect() == "sqlite")
      project->DestDataBase().DatabaseName = (folder / "werte.sqlite").string();
    if (Dialect() == "mysql") {
      CDatabase& dest = project->DestDataBase();
      dest.DatabaseType = dbtODBC;
      dest.DataSourceName = "ketrova_maria";
      dest.ServerName.clear();
      dest.PortAdress.clear();
      dest.UserName.clear();
      dest.Password.clear();
    }
  }
  // The rows of a query on the destination.
  RowList Query(const std::string& sql) {
    if (Dialect() != "sqlite") return Rows(sql);
    auto connection = std::make_shared<ado::Connection>();
    connection->Open("Driver={SQLite3};Database=" + (folder / "werte.sqlite").string());
    RowList rows;
    ado::RecordsetPtr rs = connection->Execute(sql);
    for (; !rs->Eof(); rs->MoveNext()) rows.push_back(rs->GetFields().Item(0).Value().ToText());
    rs->Close();
    connection->Close();
    return rows;
  }
  // One job per source table, with generated scripts, as after both store
  // dialogs.
  void MakeJobs() {
    project->SourceDataBase().DatabaseDirection = dbdSource;
    project->DestDataBase().DatabaseDirection = dbdTarget;
    ASSERT_EQ(project->ApplyDatabaseSource(false), "");
    ASSERT_EQ(project->ApplyDatabaseDest(false), "");
    ASSERT_GT(project->Jobs().Count(), 0);
  }
};

TEST_P(ValuesTest, BooleansAndNumbersFromSQLiteArriveUnchanged) {
  DropTable("Werte");
  SourceSQLite({"CREATE TABLE Werte (Nr INTEGER PRIMARY KEY, Ja BOOLEAN, Betrag DOUBLE)",
                "INSERT INTO Werte VALUES (1, 1, 1234.5)", "INSERT INTO Werte VALUES (2, 0, -0.25)",
                "INSERT INTO Werte VALUES (3, 1, 0.125)"});
  MakeJobs();
  EXPECT_EQ(Run(), "") << Log();
  EXPECT_EQ(engine->ErrorCount(), 0) << Log();
  EXPECT_EQ(engine->Rejects().Count(), 0) << engine->Rejects().Note();
  // PostgreSQL's driver reports a boolean as a text of five unless told
  // otherwise, and the value became "Wahr", which the server refused.
  EXPECT_EQ(Query("SELECT [Nr] FROM [Werte] WHERE [Ja] IS TRUE ORDER BY [Nr]"),
            (RowList{"1", "3"}));
  EXPECT_EQ(Query("SELECT [Nr] FROM [Werte] WHERE [Betrag] IN (1234.5, -0.25, 0.125)"),
            (RowList{"1", "2", "3"}));

  // A script of an older project cuts the boolean to its text: "Wahr" and
  // "Falsch" become True and False again, as on a German system.
  CJob& job = project->Jobs().Item(1);
  job.Script =
      ReplaceAll(job.Script, "= Source.Fields(\"Ja\")", "= Left(Source.Fields(\"Ja\"),255)");
  ASSERT_NE(job.Script.find("Left(Source.Fields(\"Ja\"),255)"), std::string::npos);
  job.JobDest().DeleteBeforeInsert = true;
  EXPECT_EQ(Run(), "") << Log();
  EXPECT_EQ(engine->Rejects().Count(), 0) << engine->Rejects().Note();
  EXPECT_EQ(Query("SELECT [Nr] FROM [Werte] WHERE [Ja] IS TRUE ORDER BY [Nr]"),
            (RowList{"1", "3"}));
  // MariaDB's BOOLEAN is a TINYINT(1): True arrives as its TRUE, 1, not as -1.
  if (Dialect() == "mysql") {
    EXPECT_EQ(Query("SELECT [Nr] FROM [Werte] WHERE [Ja] = TRUE ORDER BY [Nr]"),
              (RowList{"1", "3"}));
  }
}

TEST_P(ValuesTest, ATextOfA384CharacterFieldArrivesWhole) {
  std::string longText;
  for (int i = 0; i < 54; ++i) longText += "Grüße, ";
  longText += "Ende!!";
  ASSERT_EQ(CodePointCount(longText), 384u);
  SourceCsv("lang.csv", "Nr;Text\r\n1;\"" + longText + "\"\r\n2;kurz\r\n");
  MakeJobs();
  const std::string table = project->Jobs().Item(1).JobDest().ItemObjectName;
  DropTable(table);
  EXPECT_EQ(Run(), "") << Log();
  EXPECT_EQ(Query("SELECT [Text] FROM [" + table + "] ORDER BY [Nr]"), (RowList{longText, "kurz"}));
}

INSTANTIATE_TEST_SUITE_P(Backends, ValuesTest, ::testing::ValuesIn(TestBackends()), BackendName);

}  // namespace
}  // namespace ketrova::testing
