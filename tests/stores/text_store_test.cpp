// A folder of CSV files as a store: opened without any registration by the
// caller, analysed, and reached through the narrow record interface.
#include <gtest/gtest.h>

#include "core/converter.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "stores/database.h"
#include "stores/list_controls.h"

namespace ketrova {
namespace {

class TextStoreTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    Write("kunden.csv", "Nr;Name;Straße\r\n1;Meier;Hauptstr. 1\r\n2;Müller;Ring 2\r\n");
    Write("artikel.txt", "Art;Preis\r\nA1;2,50\r\n");
    Write("notiz.doc", "not a table");
    store().DatabaseType = dbtText;
    store().DatabaseFileName = folder_.string() + "\\";
  }

  CDatabase& store() { return project.SourceDataBase(); }

  CConverter project;
};

TEST_F(TextStoreTest, ReloadListsTheFilesWithTheirColumns) {
  EXPECT_EQ(store().Reload(), "");
  EXPECT_TRUE(store().Active());
  EXPECT_EQ(store().ColBracketLeft(), "'");
  ASSERT_EQ(store().Objects().Count(), 2) << project.Logs().Count();
  std::string error;
  CDatabaseObject* kunden = store().ObjectByName("kunden.csv", error, false);
  ASSERT_NE(kunden, nullptr);
  EXPECT_EQ(error, "");
  ASSERT_EQ(kunden->Fields().Count(), 3);
  EXPECT_EQ(kunden->Fields().Item(3).Name, "Straße");  // a source keeps the spelling
  EXPECT_EQ(kunden->Fields().Item(1).FieldType, ado::adInteger);

  TextList list;
  store().DatabaseObjectsToList(list, jitUndefined);
  ASSERT_EQ(list.ListCount(), 2);
  for (int i = 0; i < list.ListCount(); ++i)
    EXPECT_EQ(list.List(i),
              store().Objects().Item(static_cast<std::int32_t>(list.ItemData(i))).Name);
  store().DatabaseObjectsToList(list, 2);  // views
  EXPECT_EQ(list.ListCount(), 0);
}

TEST_F(TextStoreTest, ATargetReadsColumnNamesAsIdentifiers) {
  store().DatabaseDirection = dbdTarget;
  ASSERT_EQ(store().Reload(), "");
  std::string error;
  CDatabaseObject* kunden = store().ObjectByName("kunden.csv", error, false);
  ASSERT_NE(kunden, nullptr);
  EXPECT_EQ(kunden->Fields().Item(3).Name, "Strasse");
}

TEST_F(TextStoreTest, RecordInterfaceOfATextStore) {
  store().SetActive(true);
  ASSERT_TRUE(store().Active()) << store().LastErrorMessage();
  EXPECT_FALSE(store().RecordsetMoveNext());
  EXPECT_FALSE(store().RecordsetEOF());
  EXPECT_EQ(store().RecordsetRecordCount(), 0);
  // Creating is left to table creation; deleting reaches the store.
  EXPECT_EQ(store().CreateObject("neu", "CREATE TABLE neu.csv (a INTEGER)"), "");
  EXPECT_FALSE(std::filesystem::exists(Path("neu.csv")));
  EXPECT_EQ(store().DeleteRecords("kunden.csv", "DELETE FROM [kunden.csv] WHERE Nr = 1"), "");
  EXPECT_EQ(Read("kunden.csv"), "Nr;Name;Straße\r\n2;Müller;Ring 2\r\n");
  EXPECT_TRUE(store().ObjectExists("ARTIKEL.TXT"));
}

TEST_F(TextStoreTest, JobsAreMadeOnePerFile) {
  CDatabase& dest = project.DestDataBase();
  dest.DatabaseType = dbtAccess;
  dest.DatabaseDirection = dbdTarget;
  ASSERT_EQ(store().Reload(), "");
  store().CopyDataBaseObjectsToJobs();
  ASSERT_EQ(project.Jobs().Count(), 2);
  std::string error;
  CJob* kunden = nullptr;
  for (CJob& job : project.Jobs())
    if (job.ObjectName == "kunden.csv") kunden = &job;
  ASSERT_NE(kunden, nullptr);
  EXPECT_EQ(kunden->Caption, "Konvertierung der Tabelle kunden.csv");
  EXPECT_TRUE(kunden->CancelOnError);
  EXPECT_EQ(kunden->JobSource().JobType, jitText);
  EXPECT_EQ(kunden->JobSource().ItemObjectName, "kunden.csv");
  EXPECT_EQ(kunden->JobDest().ItemObjectName, "kunden_csv");
  EXPECT_TRUE(kunden->JobDest().CreateTable);
  ASSERT_EQ(kunden->JobDest().Columns().Count(), 3);
  const CJobItemColumn& street = kunden->JobDest().Columns().Item(3);
  EXPECT_EQ(street.SourceColumn, "Straße");
  EXPECT_EQ(street.TargetColumn, "Strasse");
  EXPECT_EQ(street.Quote, "'");
  EXPECT_EQ(kunden->JobSource().Columns().Item(1).Quote, "");
}

}  // namespace
}  // namespace ketrova
