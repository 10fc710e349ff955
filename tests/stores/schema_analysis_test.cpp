// Schema analysis and table creation on a real store of each back-end.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "jobs/job.h"
#include "jobs/jobs.h"
#include "platform/ado/enums.h"
#include "store_backend.h"

namespace ketrova::testing {
namespace {

class SchemaTest : public StoreTest {
 protected:
  // A table, a view on it and a table whose name holds a quote.
  void CreateSample(CDatabase& store) {
    store.SetActive(true);
    ASSERT_EQ(store.ErrorNumber(), 0) << store.LastErrorMessage();
    Exec(store,
         "CREATE TABLE [kunden] ([nr] INTEGER PRIMARY KEY, [name] VARCHAR(40), "
         "[betrag] DECIMAL(10,2), [geburt] DATE)");
    Exec(store, "CREATE VIEW [v_kunden] AS SELECT [nr], [name] FROM [kunden]");
    Exec(store, "CREATE TABLE [it's] ([a] INTEGER)");
  }

  void TearDown() override {
    if (!database.empty() && db) {
      ExecQuietly("DROP VIEW IF EXISTS [v_kunden]");
      for (const char* t : {"kunden", "it's", "kunden_neu"}) DropTable(t);
    }
    StoreTest::TearDown();
  }
};

TEST_P(SchemaTest, ReloadReadsTablesViewsAndColumnsAndLogsWhatItCannotRead) {
  CDatabase& store = project.SourceDataBase();
  Configure(store);
  CreateSample(store);
  EXPECT_EQ(store.Reload(false, true), "");

  std::string error;
  CDatabaseObject* kunden = store.ObjectByName("KUNDEN", error, false);
  ASSERT_NE(kunden, nullptr);
  EXPECT_EQ(kunden->Name, "kunden");
  EXPECT_EQ(kunden->ObjectType, dboTable);
  EXPECT_TRUE(kunden->Visible);
  ASSERT_EQ(kunden->Fields().Count(), 4);
  const CDatabaseObjectField& nr = kunden->Fields().Item(1);
  EXPECT_EQ(nr.Name, "nr");
  EXPECT_EQ(nr.ColumnName, "nr");
  EXPECT_EQ(nr.ColumnWidth, "20");
  EXPECT_EQ(nr.FieldType, ado::adInteger);
  const CDatabaseObjectField& name = kunden->Fields().Item(2);
  EXPECT_TRUE(name.FieldType == ado::adVarChar || name.FieldType == ado::adVarWChar)
      << name.FieldType;
  EXPECT_EQ(name.DefinedSize, 40);
  const CDatabaseObjectField& betrag = kunden->Fields().Item(3);
  if (Dialect() == "mysql") {
    // The server's own type text decides: decimal(10,2).
    EXPECT_EQ(betrag.DefinedSize, 10);
    EXPECT_EQ(betrag.Precision, 2);
  } else {
    EXPECT_EQ(betrag.Precision, 10);
    EXPECT_EQ(betrag.NumericScale, 2);
  }
  EXPECT_TRUE(kunden->Fields().Item(4).FieldType == ado::adDBDate ||
              kunden->Fields().Item(4).FieldType == ado::adDate)
      << kunden->Fields().Item(4).FieldType;

  CDatabaseObject* view = store.ObjectByName("v_kunden", error, false);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view->ObjectType, dboView);
  EXPECT_EQ(view->Fields().Count(), 2);

  // "it's" is entered without its quote, cannot be read and is taken out.
  EXPECT_EQ(store.Objects().Count(), 2);
  ASSERT_EQ(project.Logs().Count(), 1);
  EXPECT_EQ(project.Logs().Item(1).Message.rfind("Objekt [its] öffnen ", 0), 0u)
      << project.Logs().Item(1).Message;
  EXPECT_EQ(project.Logs().Item(1).Message.find("\r\n"), std::string::npos);  // one line
  ASSERT_EQ(ui->CallsOf("MsgBox").size(), 1u);
  EXPECT_NE(ui->CallsOf("MsgBox")[0].find(
                "\"Insgesammt konnten 1 Tabellen oder Views nicht analysiert werden. Überprüfen "
                "Sie das Ereignisprotokoll !\""),
            std::string::npos);

  // A second Reload adds every object again.
  EXPECT_EQ(store.Reload(), "");
  EXPECT_EQ(store.Objects().Count(), 4);
}

TEST_P(SchemaTest, GeneratedTableRunsOnTheStore) {
  CDatabase& source = project.SourceDataBase();
  CDatabase& dest = project.DestDataBase();
  Configure(source);
  Configure(dest);
  CreateSample(source);
  ASSERT_EQ(source.Reload(), "");
  dest.SetActive(true);
  ASSERT_EQ(dest.Reload(), "");

  source.CopyDataBaseObjectsToJobs();
  ASSERT_EQ(project.Jobs().Count(), 2);
  CJob& job = project.Jobs().Item(1);
  EXPECT_EQ(job.Caption, "Konvertierung der Tabelle kunden");
  EXPECT_FALSE(job.JobDest().CreateTable);  // the destination has it
  EXPECT_EQ(project.Jobs().Item(2).Caption, "Konvertierung der View v_kunden");
  ASSERT_EQ(job.JobDest().Columns().Count(), 4);

  job.JobDest().ItemObjectName = "kunden_neu";
  std::string error;
  std::string sql = job.JobDest().GenerateTableStructure(error, "kunden");
  ASSERT_EQ(error, "");
  // SQLite and PostgreSQL stores are not told from Access, MariaDB is MySQL.
  std::string expected = Dialect() == "mysql" ? "CREATE TABLE `kunden_neu`(\r\n"
                                                "        `nr`                   INTEGER\r\n"
                                                "        ,`name`                CHAR(40)\r\n"
                                                "        ,`betrag`              NUMERIC(10,2)\r\n"
                                                "        ,`geburt`              DATE\r\n"
                                                ")\r\n"
                                              : "CREATE TABLE [kunden_neu](\r\n"
                                                "        [nr]                   LONG\r\n"
                                                "        ,[name]                TEXT\r\n"
                                                "        ,[betrag]              DOUBLE\r\n"
                                                "        ,[geburt]              DATETIME\r\n"
                                                ")\r\n";
  EXPECT_EQ(sql, expected);
  EXPECT_FALSE(dest.ObjectExists("kunden_neu"));
  EXPECT_EQ(dest.CreateObject("kunden_neu", sql), "");
  EXPECT_TRUE(dest.ObjectExists("KUNDEN_NEU"));
}

TEST_P(SchemaTest, VerifyTablesCopiesATableFromAnotherStore) {
  // The source is a SQLite file of its own, the destination the back-end.
  std::filesystem::path sourceFolder =
      std::filesystem::temp_directory_path() / ("ketrova-quelle-" + std::to_string(::getpid()));
  std::filesystem::create_directories(sourceFolder);
  CDatabase& source = project.SourceDataBase();
  source.DatabaseType = dbtODBC;
  source.DriverName = "SQLite3";
  source.DatabaseName = (sourceFolder / "quelle.sqlite").string();
  source.SetActive(true);
  Exec(source,
       "CREATE TABLE [Bestellte Artikel] (nr INTEGER PRIMARY KEY, bez VARCHAR(30), "
       "menge INTEGER, preis DECIMAL(10,2))");
  for (const char* index : {"CREATE INDEX ix_bez ON [Bestellte Artikel] (bez)",
                            "CREATE INDEX ix_menge ON [Bestellte Artikel] (menge)",
                            "CREATE INDEX ix_s_preis ON [Bestellte Artikel] (preis)"})
    Exec(source, index);
  ASSERT_EQ(source.Reload(), "");

  CDatabase& dest = project.DestDataBase();
  Configure(dest);
  dest.SetActive(true);
  ASSERT_EQ(dest.ErrorNumber(), 0) << dest.LastErrorMessage();
  EXPECT_EQ(dest.VerifyTables(), "");
  EXPECT_EQ(project.Logs().Count(), 0);
  std::string error;
  CDatabaseObject* copied = dest.ObjectByName("Bestellte Artikel", error, false);
  ASSERT_NE(copied, nullptr);
  EXPECT_EQ(copied->Name, "Bestellte_Artikel");
  ASSERT_EQ(copied->Fields().Count(), 4);
  EXPECT_EQ(copied->Fields().Item(2).Name, "bez");
  EXPECT_EQ(copied->Fields().Item(2).DefinedSize, 30);

  source.SetActive(false);
  std::filesystem::remove_all(sourceFolder);
  ExecQuietly("DROP TABLE IF EXISTS [Bestellte_Artikel]");
}

INSTANTIATE_TEST_SUITE_P(Stores, SchemaTest, ::testing::ValuesIn(ado::testing::TestBackends()),
                         ado::testing::BackendName);

}  // namespace
}  // namespace ketrova::testing
