// A job side on a real SQLite store, opened through the ODBC driver: opening
// its record set, rebuilding its columns from the fields, and what a failure
// leaves behind.
#include <gtest/gtest.h>

#include <filesystem>

#include "jobs/job_fixture.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"

namespace ketrova {
namespace {

class JobItemTest : public testing::JobTest {
 protected:
  void SetUp() override {
    JobTest::SetUp();
    ASSERT_FALSE(Folder().empty());
    for (CDatabase* store : {&project_.SourceDataBase(), &project_.DestDataBase()}) {
      store->DatabaseType = dbtODBC;
      store->DriverName = "SQLite3";
    }
    project_.SourceDataBase().DatabaseName = (folder_ / "source.sqlite").string();
    project_.DestDataBase().DatabaseName = (folder_ / "dest.sqlite").string();
    Execute(project_.SourceDataBase(),
            "CREATE TABLE [Kunden Liste] ([Kunden Nr] INTEGER, [Straße] VARCHAR(40), Ort TEXT)");
    Execute(
        project_.SourceDataBase(),
        "INSERT INTO [Kunden Liste] VALUES (1, 'Hauptstraße 1', 'Köln'), (2, 'Ring 2', 'Bonn')");
    Execute(project_.DestDataBase(), "CREATE TABLE Kunden (Straße VARCHAR(40), Nummer INTEGER)");
    source().ItemObjectName = "Kunden Liste";
    dest().ItemObjectName = "Kunden";
  }
  void TearDown() override {
    project_.SourceDataBase().SetActive(false);
    project_.DestDataBase().SetActive(false);
    JobTest::TearDown();
  }
  void Execute(CDatabase& store, const std::string& sql) {
    store.SetActive(true);
    ASSERT_EQ(store.LastErrorMessage(), "");
    store.Connection->Execute(sql);
  }
  std::vector<std::string> ColumnList(const CJobItem& side) {
    std::vector<std::string> list;
    side.ColumnsToList(list, true);
    return list;
  }
};

TEST_F(JobItemTest, ColumnsComeFromTheFieldsAndMapByEqualNames) {
  ASSERT_TRUE(source().ReloadColumns(true));
  ASSERT_EQ(source().Columns().Count(), 3);
  const CJobItemColumn& street = source().Columns().Item(2);
  EXPECT_EQ(street.Name, "Straße");
  EXPECT_EQ(street.SourceColumn, "Straße");
  EXPECT_EQ(street.TargetColumn, "Strasse");
  EXPECT_EQ(street.DisplayName, "Strasse");
  EXPECT_EQ(street.Quote, "'");
  EXPECT_EQ(source().Columns().Item(1).TargetColumn, "Kunden_Nr");
  EXPECT_EQ(source().Columns().Item(1).Quote, "");
  EXPECT_EQ(ColumnList(source()), (std::vector<std::string>{"", "Kunden Nr", "Straße", "Ort"}));

  // The select list reads the fields under their identifiers.
  ASSERT_TRUE(source().OpenRecordSet());
  EXPECT_EQ(source().Recordset->GetFields().Item(1).Name(), "Strasse");
  EXPECT_EQ(source().Recordset->GetFields().Item(1).Value().ToString(), "Hauptstraße 1");
  EXPECT_TRUE(source().ValidRecordset());

  ASSERT_TRUE(dest().ReloadColumns(true));
  EXPECT_EQ(dest().Columns().Item(1).SourceColumn, "Straße");
  EXPECT_EQ(dest().Columns().Item(2).SourceColumn, "");

  // Without a reload the open record set gives the columns, no statement runs.
  source().ItemObjectName = "gone";
  ASSERT_TRUE(source().ReloadColumns(false));
  EXPECT_EQ(source().Columns().Item(2).Name, "Strasse");
}

TEST_F(JobItemTest, AUserStatementRunsWithoutTheFilter) {
  source().Filtered = true;
  CJobItemFilter& filter = source().Filters().Add();
  filter.Column = "Ort";
  filter.FieldType = 202;
  filter.FilterType = jftEqual;
  filter.Value = "Bonn";
  ASSERT_TRUE(source().OpenRecordSet());
  EXPECT_EQ(source().Recordset->GetFields().Item("Ort").Value().ToString(), "Bonn");

  ASSERT_TRUE(source().OpenRecordSet(0, false, "SELECT Ort FROM [Kunden Liste] ORDER BY Ort DESC"));
  EXPECT_EQ(source().Recordset->GetFields().Item("Ort").Value().ToString(), "Köln");
  source().Recordset->MoveNext();
  source().Recordset->MoveNext();
  EXPECT_FALSE(source().ValidRecordset());
}

TEST_F(JobItemTest, AFailedOpenEndsWithTheStatement) {
  source().ItemObjectName = "Fehlt";
  EXPECT_FALSE(source().OpenRecordSet());
  EXPECT_LT(source().LastErrorNumber, 0);
  const std::string tail = "\r\nSQL:\r\n SELECT *  FROM [Fehlt]";
  ASSERT_GT(source().LastErrorMessage.size(), tail.size());
  EXPECT_EQ(source().LastErrorMessage.substr(source().LastErrorMessage.size() - tail.size()), tail);
  EXPECT_FALSE(source().ValidRecordset());
  EXPECT_FALSE(source().ReloadColumns(true));

  // Clear keeps the failure; ClearError drops it.
  source().Clear();
  EXPECT_LT(source().LastErrorNumber, 0);
  source().ClearError();
  EXPECT_EQ(source().LastErrorMessage, "");
}

TEST_F(JobItemTest, ATargetOpenedForInsertStandsOnANewRecord) {
  ASSERT_TRUE(dest().ReloadColumns(true));
  ASSERT_TRUE(dest().OpenRecordSet(0, true));
  EXPECT_EQ(dest().Recordset->EditMode(), ado::adEditAdd);
  dest().Recordset->GetFields().Item("Nummer").SetValue(Variant(42));
  dest().Recordset->Update();
  dest().Recordset->Close();
  auto count = project_.DestDataBase().Connection->Execute("SELECT COUNT(*) FROM Kunden");
  EXPECT_EQ(count->GetFields().Item(0).Value().ToLong(), 1);
}

TEST_F(JobItemTest, AStoreOfItsOwnServesEditingButNotTheOpen) {
  auto other = std::make_unique<CDatabase>();
  other->DatabaseType = dbtODBC;
  other->DriverName = "SQLite3";
  other->DatabaseName = (folder_ / "dest.sqlite").string();
  CDatabase* own = other.get();
  // With no object named yet, nothing can be read.
  EXPECT_EQ(source().ChangeDataBase(std::move(other), false), Variant(false).ToString());
  EXPECT_TRUE(source().DifferentDataBase());
  EXPECT_EQ(source().Database(), own);
  EXPECT_EQ(own->Objects().Count(), 1);

  source().ItemObjectName = "Kunden Liste";
  ASSERT_TRUE(source().OpenRecordSet()) << source().LastErrorMessage;
  EXPECT_EQ(source().Recordset->GetFields().Item("Ort").Value().ToString(), "Köln");
  own->SetActive(false);
}

}  // namespace
}  // namespace ketrova
