// The statements a job sends to its stores, byte for byte, per store type and
// side kind. The field values come from a real SQLite table read through the
// ODBC driver.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "engine/script_host_object.h"
#include "jobs/job_fixture.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/script/script_control.h"

namespace ketrova {
namespace {

using testing::UseStore;

class StatementsTest : public testing::JobTest {
 protected:
  void SetUp() override {
    JobTest::SetUp();
    source().ItemObjectName = "Kunden";
    dest().ItemObjectName = "Kunden";
  }
  void AddNameFilter(const char* andOr, const char* column, std::int32_t type,
                     std::int32_t filterType, const char* value) {
    CJobItemFilter& filter = source().Filters().Add();
    filter.AndOr = andOr;
    filter.Column = column;
    filter.FieldType = type;
    filter.FilterType = filterType;
    filter.Value = value;
  }
};

TEST_F(StatementsTest, SourceSelectPerStoreTypeAndKind) {
  // No columns: the star, two blanks before FROM.
  UseStore(project_.SourceDataBase(), dbtAccess);
  EXPECT_EQ(source().GetSourceSQL(), " SELECT *  FROM [Kunden]");

  AddColumn(source(), "Id", 3);
  CJobItemColumn& name = AddColumn(source(), "Straße", 202);
  name.DisplayName = "Strasse";
  UseStore(project_.SourceDataBase(), dbtSQLServer);
  EXPECT_EQ(source().GetSourceSQL(),
            " SELECT \r\n\t[Id] AS [Id],\r\n\t[Straße] AS [Strasse]\r\n FROM [Kunden]");

  UseStore(project_.SourceDataBase(), dbtParadox);
  EXPECT_EQ(source().GetSourceSQL(),
            " SELECT \r\n\t\"Id\",\r\n\t\"Straße\"\r\n FROM    \"Kunden\"");

  // MySQL never selects a column list.
  UseStore(project_.SourceDataBase(), dbtMySQL);
  EXPECT_EQ(source().GetSourceSQL(), " SELECT *  FROM `Kunden`");

  UseStore(project_.SourceDataBase(), dbtText);
  source().JobType = jitText;
  source().ItemObjectName = "kunden";
  EXPECT_EQ(source().GetSourceSQL(),
            " SELECT \r\n\t\"Id\",\r\n\t\"Straße\"\r\n\r\n"
            " FROM     `/data`\\kunden.TXT    kunden");

  UseStore(project_.SourceDataBase(), dbtExcel);
  source().JobType = jitExcel;
  source().ItemObjectName = "Tabelle1$";
  EXPECT_EQ(source().GetSourceSQL(), " SELECT *  FROM [Tabelle1$]");
  EXPECT_EQ(source().GetListFields(), "\r\n\t[Id] AS [Id],\r\n\t[Straße] AS [Strasse]\r\n");

  source().JobType = jitXML;
  EXPECT_EQ(source().GetSourceSQL(), "");
}

TEST_F(StatementsTest, HiddenColumnsLeaveTheSelectList) {
  UseStore(project_.SourceDataBase(), dbtSQLServer);
  AddColumn(source(), "Id", 3);
  AddColumn(source(), "Name", 202).Visible = false;
  EXPECT_EQ(source().GetSourceSQL(), " SELECT \r\n\t[Id] AS [Id]\r\n FROM [Kunden]");
  source().Columns().Item(1).Visible = false;
  EXPECT_EQ(source().GetSourceSQL(), " SELECT *\r\n FROM [Kunden]");

  // A target column follows the visibility of the source column of its name.
  UseStore(project_.DestDataBase(), dbtSQLServer);
  AddColumn(dest(), "Name", 202, "Name");
  AddColumn(dest(), "Ort", 202);
  EXPECT_EQ(dest().GetListFields(), "\r\n\t[Ort] AS [Ort]\r\n");
}

TEST_F(StatementsTest, FiltersWithNoneOneAndTwoEntries) {
  UseStore(project_.SourceDataBase(), dbtSQLServer);
  source().Filtered = true;
  EXPECT_EQ(source().GetSourceSQL(), " SELECT *  FROM [Kunden]");

  AddNameFilter("AND", "Name", 202, jftLike, "abc");
  EXPECT_EQ(source().GetSourceSQL(), " SELECT *  FROM [Kunden] WHERE ([Name]  LIKE '%abc%'\r\n)");

  // The first filter's joining word is not used.
  AddNameFilter("OR", "Id", 3, jftGreater, "5");
  const std::string two = "[Name]  LIKE '%abc%'\r\n OR [Id]  > 5\r\n";
  EXPECT_EQ(source().GetSourceSQL(), " SELECT *  FROM [Kunden] WHERE (" + two + ")");
  EXPECT_EQ(source().GetFilter(" SELECT * FROM x where a = 1"), " AND (" + two + ")");

  UseStore(project_.SourceDataBase(), dbtMySQL);
  EXPECT_EQ(source().GetFilter(""), " WHERE (`Name`  LIKE '%abc%'\r\n OR `Id`  > 5\r\n)");

  // The contact store takes the bare conditions.
  UseStore(project_.SourceDataBase(), dbtOutlook);
  source().JobType = jitOutlook;
  EXPECT_EQ(source().GetSourceSQL(), "Name  LIKE '%abc%'\r\n OR Id  > 5\r\n");

  source().Filtered = false;
  EXPECT_EQ(source().GetFilter(""), "");
}

TEST_F(StatementsTest, AUserStatementIsNeverExtended) {
  UseStore(project_.SourceDataBase(), dbtSQLServer);
  source().JobType = jitUDFView;
  source().SQL = "SELECT k.* FROM Kunden k WHERE k.Id > 10";
  source().Filtered = true;
  AddNameFilter("", "Name", 202, jftEqual, "'abc'");
  EXPECT_EQ(source().GetSourceSQL(), "SELECT k.* FROM Kunden k WHERE k.Id > 10");
  source().JobType = jitSQLInsertUpdate;
  EXPECT_EQ(source().GetSourceSQL(), "SELECT k.* FROM Kunden k WHERE k.Id > 10");
}

TEST_F(StatementsTest, CountAndDeletePerStoreType) {
  source().ItemObjectName = "Kunden Liste";
  UseStore(project_.SourceDataBase(), dbtSQLServer);
  EXPECT_EQ(source().GenerateSQLCount(), "SELECT COUNT(*) FROM [Kunden_Liste]");
  UseStore(project_.SourceDataBase(), dbtMySQL);
  EXPECT_EQ(source().GenerateSQLCount(), "SELECT count(*)  FROM Kunden_Liste");
  // A file store keeps the name as it is.
  UseStore(project_.SourceDataBase(), dbtExcel);
  EXPECT_EQ(source().GenerateSQLCount(), "SELECT COUNT(*) FROM [Kunden Liste]");
  UseStore(project_.SourceDataBase(), dbtText);
  source().ItemObjectName = "kunden";
  EXPECT_EQ(source().GenerateSQLCount(),
            " SELECT COUNT(*)\r\n FROM     `/data`\\kunden.TXT    kunden");
  UseStore(project_.SourceDataBase(), dbtOutlook);
  EXPECT_EQ(source().GenerateSQLCount(), "");

  UseStore(project_.DestDataBase(), dbtSQLServer);
  EXPECT_EQ(dest().GenerateSQLDelete(), "DELETE FROM [Kunden]");
  dest().Filtered = true;
  dest().Filters().Add().Column = "Id";
  dest().Filters().Item(1).FieldType = 3;
  dest().Filters().Item(1).FilterType = jftEqual;
  dest().Filters().Item(1).Value = "5";
  EXPECT_EQ(dest().GenerateSQLDelete(), "DELETE FROM [Kunden] WHERE ([Id]  = 5\r\n)");
  UseStore(project_.DestDataBase(), dbtText, "/out");
  dest().Filtered = false;
  dest().ItemObjectName = "kunden";
  EXPECT_EQ(dest().GenerateSQLDelete(), "DELETE FROM  `/out`\\kunden.TXT");
  UseStore(project_.DestDataBase(), dbtOutlook);
  EXPECT_EQ(dest().GenerateSQLDelete(), "ALL");
}

TEST_F(StatementsTest, TargetOpenForPlainInsertPerStoreType) {
  std::string error = "old";
  UseStore(project_.DestDataBase(), dbtSQLServer);
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), "");
  EXPECT_EQ(error,
            "\r\nEin Fehler ist aufgetreten!\r\n\r\nFehler Nr.: 1000\r\nBeschreibung: Keine "
            "Zielfelder definiert\r\n\r\nQuelle: JobItem.GenerateSQLInsertRecord\r\n\r\n");

  AddColumn(dest(), "Id", 3);
  AddColumn(dest(), "Name", 202);
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), " SELECT * \r\n FROM    [Kunden]    Kunden");
  EXPECT_EQ(error, "");

  // Column 1 = -99999 keeps the opened set empty; the back quote on both sides.
  UseStore(project_.DestDataBase(), dbtMySQL);
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error),
            " SELECT * \r\n FROM    Kunden WHERE `Id`= -99999");

  UseStore(project_.DestDataBase(), dbtExcel);
  dest().ItemObjectName = "Tabelle1$";
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), " SELECT *  FROM    [Tabelle1$]");

  UseStore(project_.DestDataBase(), dbtText, "/out");
  dest().JobType = jitText;
  dest().ItemObjectName = "kunden";
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error),
            " SELECT \r\n\t\"Id\",\r\n\t\"Name\"\r\n\r\n FROM     `/out`\\kunden.TXT    kunden");

  UseStore(project_.DestDataBase(), dbtOutlook);
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), " [User1] = 'xxxxxxxx'");
}

// A source table in a real SQLite file, read through the ODBC driver.
class SourceRecordTest : public StatementsTest {
 protected:
  void SetUp() override {
    StatementsTest::SetUp();
    db_ = std::make_shared<ado::Connection>();
    db_->Open("Driver={SQLite3};Database=" + (Folder() / "source.db").string());
    db_->Execute(
        "CREATE TABLE Kunden (Id INTEGER, Name VARCHAR(40), Born DATE, Amount DOUBLE, "
        "Note VARCHAR(40), Flag VARCHAR(5))");
    db_->Execute("INSERT INTO Kunden VALUES (7, ' O''Neil ', '2024-01-31', 1234.5, NULL, 'true')");
    db_->Execute("INSERT INTO Kunden VALUES (NULL, NULL, NULL, NULL, 'x', 'no')");
    rs_ = std::make_shared<ado::Recordset>();
    rs_->Open("SELECT * FROM Kunden", Variant(std::static_pointer_cast<Object>(db_)));
    source().Recordset = rs_;

    UseStore(project_.DestDataBase(), dbtMySQL);
    AddColumn(source(), "Id", 3);
    AddColumn(source(), "Name", 200);
    AddColumn(dest(), "Id", 3, "Id");
    AddColumn(dest(), "Name", 200, "Name");
    AddColumn(dest(), "Born", 133, "Born");
    AddColumn(dest(), "Amount", 5, "Amount");
    AddColumn(dest(), "Note", 200, "Note");
    AddColumn(dest(), "Unmapped", 200);
    AddColumn(dest(), "Flag", 11, "Flag");
  }
  void TearDown() override {
    source().Recordset.reset();
    rs_.reset();
    if (db_) db_->Close();
    StatementsTest::TearDown();
  }

  ado::ConnectionPtr db_;
  std::shared_ptr<ado::Recordset> rs_;
};

TEST_F(SourceRecordTest, InsertAndUpdateFromTheSourceRecord) {
  // A German number text goes in with a decimal point; the apostrophe gets a
  // backslash; a date gets its back quotes inside the column's quote.
  EXPECT_EQ(job().GenerateUpdateInsertSQLFieldValues(*rs_, true, dbtMySQL),
            " INSERT INTO `Kunden`\r\n VALUES \r\n (\r\n\t7,\r\n\t'O\\'Neil',\r\n"
            "\t'`2024-01-31`',\r\n\t1234.50,\r\n\t'',\r\n\t1)\r\n");

  // An update sets the source's column names; the key's apostrophe becomes a
  // back quote.
  source().KeyField = "Name";
  dest().KeyField = "Name";
  dest().KeyFieldBracket = "'";
  EXPECT_EQ(job().GenerateUpdateInsertSQLFieldValues(*rs_, false, dbtMySQL),
            " UPDATE `Kunden`\r\n SET \r\n \r\n\t`Id` = 7,\r\n\t`Name` = 'O\\'Neil',\r\n"
            "\t`Born` = '`2024-01-31`',\r\n\t`Amount` = 1234.50,\r\n\t`Note` = '',\r\n"
            "\t`Flag` = 1 \r\n\r\n WHERE \r\n\tKunden.`Name` = 'O`Neil'");

  // Nulls: a number becomes 0, a date NULL inside its quote, a numeric key 0.
  rs_->MoveNext();
  source().KeyField = "Id";
  dest().KeyField = "Id";
  dest().KeyFieldBracket = "";
  EXPECT_EQ(job().GenerateUpdateInsertSQLFieldValues(*rs_, false, dbtMySQL),
            " UPDATE `Kunden`\r\n SET \r\n \r\n\t`Id` = 0,\r\n\t`Name` = '',\r\n"
            "\t`Born` = 'NULL',\r\n\t`Amount` = 0,\r\n\t`Note` = 'x',\r\n"
            "\t`Flag` = 0 \r\n\r\n WHERE \r\n\tKunden.`Id` = 0");
}

TEST_F(SourceRecordTest, TargetOpenForUpdateByKey) {
  std::string error;
  job().DestinationUpdate = true;
  source().KeyField = "Name";
  dest().KeyField = "KdName";
  dest().KeyFieldBracket = "'";
  // The key value goes in as read, trimmed and not escaped.
  UseStore(project_.DestDataBase(), dbtSQLServer);
  dest().ItemObjectName = "Kunden Liste";
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error),
            "SELECT * FROM [Kunden_Liste] WHERE  [Kunden Liste].[KdName] = 'O'Neil'");
  UseStore(project_.DestDataBase(), dbtOutlook);
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), "[KdName] = 'O'Neil'");

  source().KeyField = "Missing";
  UseStore(project_.DestDataBase(), dbtSQLServer);
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), "");
  EXPECT_NE(error.find("Fehler Nr.: "), std::string::npos);
}

TEST_F(StatementsTest, UserSearchStatementComesFromTheScript) {
  UseStore(project_.DestDataBase(), dbtSQLServer);
  job().DestinationUpdate = true;
  dest().DestinationFilterUserDefined = true;
  std::string error;
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), "");
  EXPECT_NE(error.find("Fehler Nr.: 424"), std::string::npos);

  script::ScriptControl control;
  control.AddCode(
      "Function txSQLSearchResult()\r\n  txSQLSearchResult = \"SELECT * FROM X WHERE A = 1\"\r\n"
      "End Function\r\n");
  dest().ScriptControl = std::make_shared<ScriptHostObject>(control);
  EXPECT_EQ(dest().GenerateSQLInsertRecord(error), "SELECT * FROM X WHERE A = 1");
  EXPECT_EQ(error, "");
}

}  // namespace
}  // namespace ketrova
