// Opening a store and its record interface, on SQLite files through the ODBC
// driver.
#include <gtest/gtest.h>

#include "core/converter.h"
#include "platform/ado/enums.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "stores/database.h"

namespace ketrova {
namespace {

class StoreAccessTest : public testing::TempFolderTest {
 protected:
  void OnSQLite(CDatabase& store, const std::string& file = "lager.sqlite") {
    store.Clear();
    store.DatabaseType = dbtODBC;
    store.DriverName = "SQLite3";
    store.DatabaseName = Path(file).string();
  }

  CConverter project;
};

TEST_F(StoreAccessTest, AFailedOpenIsKeptUntilClear) {
  CDatabase& store = project.SourceDataBase();
  store.DatabaseType = dbtOracle;  // builds no string without login or database
  store.SetActive(true);
  EXPECT_FALSE(store.Active());
  EXPECT_EQ(store.ErrorNumber(), 1000);
  EXPECT_EQ(store.LastErrorMessage(),
            "\r\nEin Fehler ist aufgetreten!\r\n\r\nFehler Nr.: 1000\r\nBeschreibung: Keine "
            "Verbindungsparameter vorhanden !\r\n\r\nQuelle: Database\r\n\r\nAusgeführte "
            "Aktion: Open Database\r\n\r\n");

  // A later good open leaves the old failure standing, and Reload refuses.
  std::string failure = store.LastErrorMessage();
  store.DatabaseType = dbtODBC;
  store.DriverName = "SQLite3";
  store.DatabaseName = Path("lager.sqlite").string();
  store.SetActive(true);
  EXPECT_TRUE(store.Active());
  EXPECT_EQ(store.ErrorNumber(), 1000);
  EXPECT_EQ(store.Reload(), failure);
  EXPECT_EQ(store.ColBracketLeft(), "[");
  EXPECT_EQ(store.ColBracketRight(), "]");

  // Opening an open store does nothing, even with other parameters.
  store.DatabaseName = Path("missing/none.sqlite").string();
  store.SetActive(true);
  EXPECT_TRUE(store.Active());
  EXPECT_EQ(store.LastErrorMessage(), failure);

  store.SetActive(false);
  EXPECT_FALSE(store.Active());
  store.Clear();
  EXPECT_EQ(store.ErrorNumber(), 0);
  EXPECT_EQ(store.LastErrorMessage(), "");
}

TEST_F(StoreAccessTest, AMissingAccessFileIsCreatedOnlyForADestination) {
  std::string file = Path("neu.mdb").string();
  CDatabase& dest = project.DestDataBase();
  dest.DatabaseType = dbtAccess;
  dest.DatabaseDirection = dbdTarget;
  dest.DatabaseFileName = file;
  dest.SetActive(true);
  EXPECT_FALSE(dest.Active());
  EXPECT_LT(dest.ErrorNumber(), 0);
  // Access files cannot be made here; the message says where it stopped.
  EXPECT_NE(dest.LastErrorMessage().find("Ausgeführte Aktion: Create Database -> " + file),
            std::string::npos)
      << dest.LastErrorMessage();
  EXPECT_NE(
      dest.LastErrorMessage().find("\r\nProvider=Microsoft.Jet.OLEDB.4.0;Data Source=" + file),
      std::string::npos);

  CDatabase& source = project.SourceDataBase();
  source.DatabaseType = dbtAccess;
  source.DatabaseFileName = file;
  source.SetActive(true);
  EXPECT_FALSE(source.Active());
  EXPECT_NE(source.LastErrorMessage().find("Ausgeführte Aktion: Open Database"), std::string::npos)
      << source.LastErrorMessage();
}

TEST_F(StoreAccessTest, RecordInterfaceWritesReadsAndDeletes) {
  CDatabase& store = project.DestDataBase();
  OnSQLite(store);
  store.SetActive(true);
  ASSERT_TRUE(store.Active()) << store.LastErrorMessage();
  EXPECT_FALSE(store.ObjectExists("kunden"));
  EXPECT_EQ(store.CreateObject("kunden",
                               "CREATE TABLE kunden (nr INTEGER PRIMARY KEY, name "
                               "VARCHAR(20))"),
            "");
  EXPECT_TRUE(store.ObjectExists(" KUNDEN "));

  std::shared_ptr<ado::Recordset> rs;
  ASSERT_EQ(store.RecordSetOpen(rs, "SELECT * FROM kunden", "kunden", 1, ado::adOpenKeyset,
                                ado::adLockBatchOptimistic),
            "");
  ASSERT_TRUE(rs);
  std::string outlookError = "untouched";
  std::string error = "stale";
  for (int nr : {1, 2}) {
    rs->AddNew();
    rs->GetFields().Item("nr").SetValue(Variant(nr));
    rs->GetFields().Item("name").SetValue(Variant("Kunde"));
    store.RecordSetWrite(rs, outlookError, error);
    EXPECT_EQ(error, "");
  }
  // A refused record gives the store's plain description.
  rs->AddNew();
  rs->GetFields().Item("nr").SetValue(Variant(1));
  store.RecordSetWrite(rs, outlookError, error);
  EXPECT_NE(error, "");
  EXPECT_EQ(error.find("Ein Fehler ist aufgetreten"), std::string::npos) << error;
  EXPECT_EQ(outlookError, "untouched");
  EXPECT_EQ(store.RecordSetClose(rs), "");

  EXPECT_EQ(store.DeleteRecords("kunden", "DELETE FROM kunden WHERE nr = 1"), "");
  ASSERT_EQ(store.RecordSetOpen(rs, "SELECT nr FROM kunden", "kunden", 0, ado::adOpenKeyset,
                                ado::adLockPessimistic),
            "");
  EXPECT_EQ(rs->RecordCount(), 1);
  store.RecordSetClose(rs);

  // Failures come back as the formatted text, with real line breaks.
  std::string refused = store.DeleteRecords("kunden", "DELETE FROM nirgends");
  EXPECT_EQ(refused.rfind("\r\nEin Fehler ist aufgetreten!", 0), 0u) << refused;
  EXPECT_EQ(refused.find("\\n"), std::string::npos);
  EXPECT_NE(store.RecordSetOpen(rs, "SELECT * FROM nirgends", "", 0, 1, 2), "");
  EXPECT_NE(store.CreateObject("x", "CREATE TABLE kunden (a INTEGER)"), "");
  EXPECT_EQ(store.CreateObject("x", ""), "");
}

TEST_F(StoreAccessTest, TransactionsUndoAndKeep) {
  CDatabase& store = project.DestDataBase();
  OnSQLite(store);
  store.SetActive(true);
  ASSERT_EQ(store.CreateObject("", "CREATE TABLE t (a INTEGER)"), "");
  EXPECT_EQ(store.BeginTrans(), "");
  EXPECT_TRUE(store.OnTransaction());
  store.CreateObject("", "INSERT INTO t VALUES (1)");
  EXPECT_EQ(store.RollbackTrans(), "");
  EXPECT_FALSE(store.OnTransaction());
  EXPECT_EQ(store.BeginTrans(), "");
  store.CreateObject("", "INSERT INTO t VALUES (2)");
  EXPECT_EQ(store.CommitTrans(), "");
  std::shared_ptr<ado::Recordset> rs;
  ASSERT_EQ(store.RecordSetOpen(rs, "SELECT a FROM t", "", 0, 1, 2), "");
  EXPECT_EQ(rs->GetFields().Item("a").Value().ToLong(), 2);
  rs->MoveNext();
  EXPECT_TRUE(rs->Eof());

  // Committing with nothing open is refused by the store, and the flag stays.
  std::string refused = store.CommitTrans();
  EXPECT_NE(refused, "");
  EXPECT_FALSE(store.OnTransaction());
}

TEST_F(StoreAccessTest, VerifyTablesCopiesMissingTablesWithTheirIndexes) {
  CDatabase& source = project.SourceDataBase();
  OnSQLite(source, "quelle.sqlite");
  source.SetActive(true);
  ASSERT_EQ(source.CreateObject("",
                                "CREATE TABLE [Müller Liste] (nr INTEGER PRIMARY KEY, "
                                "name VARCHAR(30), ort VARCHAR(20), plz VARCHAR(5))"),
            "");
  for (const char* index : {"CREATE INDEX ix_name ON [Müller Liste] (name)",
                            "CREATE INDEX ix_ort ON [Müller Liste] (ort)",
                            "CREATE INDEX idx_s_plz ON [Müller Liste] (plz)"})
    ASSERT_EQ(source.CreateObject("", index), "");
  ASSERT_EQ(source.CreateObject("", "CREATE TABLE vorhanden (a INTEGER)"), "");
  ASSERT_EQ(source.Reload(), "");

  CDatabase& dest = project.DestDataBase();
  OnSQLite(dest, "ziel.sqlite");
  dest.DatabaseDirection = dbdTarget;
  dest.SetActive(true);
  ASSERT_EQ(dest.CreateObject("", "CREATE TABLE vorhanden (a INTEGER)"), "");
  ASSERT_EQ(dest.Reload(), "");

  EXPECT_EQ(dest.VerifyTables(), "");
  EXPECT_TRUE(dest.ObjectExists("Mueller_Liste"));
  std::string error;
  CDatabaseObject* copied = dest.ObjectByName("Müller Liste", error, false);
  ASSERT_NE(copied, nullptr);
  EXPECT_EQ(copied->Name, "Mueller_Liste");
  ASSERT_EQ(copied->Fields().Count(), 4);
  EXPECT_EQ(copied->Fields().Item(2).Name, "name");
  EXPECT_EQ(copied->Fields().Item(2).DefinedSize, 30);

  // The indexes come along, but not those with "s_" in their name.
  std::shared_ptr<ado::Recordset> rs;
  ASSERT_EQ(dest.RecordSetOpen(rs,
                               "SELECT name FROM sqlite_master WHERE type = 'index' AND "
                               "tbl_name = 'Mueller_Liste' AND sql IS NOT NULL ORDER BY name",
                               "", 0, 1, 1),
            "");
  std::vector<std::string> indexes;
  for (; !rs->Eof(); rs->MoveNext()) indexes.push_back(rs->GetFields().Item(0).Value().ToText());
  EXPECT_EQ(indexes, (std::vector<std::string>{"ix_name", "ix_ort"}));

  // A source store does nothing.
  EXPECT_EQ(source.VerifyTables(), "");
}

}  // namespace
}  // namespace ketrova
