// The CREATE TABLE statement a job makes for its destination, per column kind
// and destination type, from a catalogue filled by hand (no store is opened,
// so the brackets are empty).
#include <gtest/gtest.h>

#include "core/converter.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "platform/ado/text/temp_folder.h"
#include "stores/database.h"

namespace ketrova {
namespace {

struct Kind {
  const char* name;
  std::int32_t type;
};

// One column per kind of the type table, each 20 wide with scale 2.
const Kind kKinds[] = {
    {"smallint", 2},    {"integer", 3},    {"tinyint", 16},    {"double", 5},
    {"numeric", 131},   {"currency", 6},   {"decimal", 14},    {"date", 7},
    {"timestamp", 135}, {"varchar", 200},  {"wchar", 130},     {"boolean", 11},
    {"memo", 201},      {"widememo", 203}, {"varbinary", 204}, {"longbinary", 205}};

class TableStructureTest : public ::testing::Test {
 protected:
  void SetUp() override {
    source().DatabaseType = dbtAccess;
    object_ = &source().Objects().Add();
    object_->Name = "Kunden$";
    CJob& job = project_.Jobs().Add();
    job_ = &job;
    job.JobDest().ItemObjectName = "Kunden$";
  }

  CDatabase& source() { return project_.SourceDataBase(); }
  CDatabase& dest() { return project_.DestDataBase(); }

  // A column of the source catalogue and of both job sides.
  void AddColumn(const std::string& name, std::int32_t type, std::int32_t size = 20,
                 std::uint8_t scale = 2, bool visible = true) {
    CDatabaseObjectField& field = object_->Fields().Add();
    field.Name = name;
    field.FieldType = type;
    field.DefinedSize = size;
    field.NumericScale = scale;
    CJobItemColumn& sourceColumn = job_->JobSource().Columns().Add();
    sourceColumn.Name = name;
    sourceColumn.Visible = visible;
    CJobItemColumn& destColumn = job_->JobDest().Columns().Add();
    destColumn.Name = name;
    destColumn.TargetColumn = name;
    destColumn.FieldType = type;
  }

  std::string Generate() {
    std::string error;
    std::string sql = job_->JobDest().GenerateTableStructure(error, "Kunden$");
    EXPECT_EQ(error, "");
    return sql;
  }

  // The declaration lines of the statement, without the head padding.
  std::vector<std::string> Declarations() {
    std::string sql = Generate();
    std::vector<std::string> lines;
    std::size_t pos = sql.find("\r\n") + 2;
    std::size_t end;
    while ((end = sql.find("\r\n", pos)) != std::string::npos) {
      std::string line = sql.substr(pos, end - pos);
      if (line != ")") lines.push_back(line.size() > 31 ? line.substr(31) : line);
      pos = end + 2;
    }
    return lines;
  }

  CConverter project_;
  CDatabaseObject* object_ = nullptr;
  CJob* job_ = nullptr;
};

TEST_F(TableStructureTest, TheStatementIsLaidOutColumnByColumn) {
  dest().DatabaseType = dbtSQLServer;
  dest().DatabaseName = "ziel";
  AddColumn("Nr", 3);
  AddColumn("Name", 202, 40, 0);
  EXPECT_EQ(Generate(),
            "CREATE TABLE Kunden(\r\n"
            "        Nr                     INTEGER\r\n"
            "        ,Name                   NVARCHAR (40)\r\n"
            ")\r\n");
}

TEST_F(TableStructureTest, DeclarationsByColumnKindAndDestination) {
  for (const Kind& kind : kKinds) AddColumn(kind.name, kind.type);
  struct Destination {
    const char* label;
    std::int32_t type;
    const char* driver;
    std::vector<std::string> expected;
  };
  const Destination destinations[] = {
      {"Access",
       dbtAccess,
       "",
       {"LONG", "LONG", "LONG", "DOUBLE", "DOUBLE", "CURRENCY", "CURRENCY", "DATETIME", "DATETIME",
        "TEXT", "TEXT", "YESNO", "LONGTEXT", "LONGTEXT", "BINARY(20)", "BINARY(20)"}},
      {"SQL Server",
       dbtSQLServer,
       "",
       {"SMALLINT", "INTEGER", "INTEGER", "NUMERIC(20,2)", "NUMERIC(20,2)", "NUMERIC(20,2)",
        "NUMERIC(20,2)", "DATETIME", "DATETIME", " NVARCHAR (20)", " NVARCHAR (20)", "YESNO",
        " NVARCHAR (20)", " NVARCHAR (20)", "BINARY(20)", "BINARY(20)"}},
      {"Interbase",
       dbtODBC,
       "INTRBASE",
       {"SMALLINT", "INTEGER", "INTEGER", "NUMERIC(20,2)", "NUMERIC(20,2)", "NUMERIC(20,2)",
        "NUMERIC(20,2)", "DATE", "DATE", "CHAR(20)", "CHAR(20)", "YESNO", "VARCHAR(20)",
        "VARCHAR(20)", "BLOB(20)", "BLOB(20)"}},
      {"Oracle",
       dbtODBC,
       "Oracle in OraHome",
       {"SMALLINT", "INTEGER", "INTEGER", "NUMBER(20,2)", "NUMBER(20,2)", "NUMBER(20,2)",
        "NUMBER(20,2)", "DATE", "DATE", "VARCHAR2(20)", "VARCHAR2(20)", "YESNO", "VARCHAR2(20)",
        "VARCHAR2(20)", "BINARY(20)", "BINARY(20)"}},
      {"MySQL",
       dbtMySQL,
       "",
       {"SMALLINT", "INTEGER", "INTEGER(1)", "NUMERIC(20,2)", "NUMERIC(20,2)", "NUMERIC(20,2)",
        "NUMERIC(20,2)", "DATE", "DATE", "CHAR(20)", "CHAR(20)", "BOOL", "TEXT", "TEXT",
        "BINARY(20)", "BINARY(20)"}},
      // Watcom stands for the other stores; its long texts go without a size.
      {"Watcom",
       dbtODBC,
       "Adaptive Server Anywhere",
       {"SMALLINT", "INTEGER", "INTEGER", "NUMERIC(20,2)", "NUMERIC(20,2)", "NUMERIC(20,2)",
        "NUMERIC(20,2)", "DATE", "DATE", "CHAR(20)", "CHAR(20)", "YESNO", "TEXT", "TEXT",
        "BINARY(20)", "BINARY(20)"}},
      {"Paradox (file based)", dbtParadox, "", std::vector<std::string>(std::size(kKinds), "TEXT")},
  };
  for (const Destination& d : destinations) {
    SCOPED_TRACE(d.label);
    dest().Clear();
    dest().DatabaseType = d.type;
    dest().DriverName = d.driver;
    dest().DatabaseFileName = "ziel";
    dest().DatabaseName = "ziel";  // without it the type stays undetected
    EXPECT_EQ(Declarations(), d.expected);
  }
}

TEST_F(TableStructureTest, SizeAndScaleLimits) {
  AddColumn("Kurz", 200, 300, 0);
  AddColumn("Lang", 200, 2000, 0);
  AddColumn("Betrag", 131, 18, 12);
  dest().DatabaseType = dbtMySQL;
  dest().DatabaseName = "ziel";
  // Above 255 the type turns long, but the name chosen for a short text stays.
  EXPECT_EQ(Declarations(), (std::vector<std::string>{"CHAR", "CHAR", "NUMERIC(18,8)"}));
  dest().Clear();
  dest().DatabaseType = dbtODBC;
  dest().DriverName = "Oracle";
  dest().DatabaseName = "ziel";
  EXPECT_EQ(Declarations(),
            (std::vector<std::string>{"VARCHAR2(300)", "VARCHAR2(1000)", "NUMBER(18,8)"}));
}

TEST_F(TableStructureTest, AHiddenFirstColumnLeavesTheCommaOnTheNextLine) {
  dest().DatabaseType = dbtAccess;
  AddColumn("Intern", 3, 4, 0, false);
  AddColumn("Nr", 3);
  EXPECT_EQ(Generate(),
            "CREATE TABLE Kunden(\r\n"
            "        ,Nr                    LONG\r\n"
            ")\r\n");
}

TEST_F(TableStructureTest, ASourceObjectThatIsMissingIsReported) {
  dest().DatabaseType = dbtAccess;
  job_->JobDest().Columns().Add().Name = "Nr";
  std::string error;
  std::string result = job_->JobDest().GenerateTableStructure(error, "Lieferanten");
  EXPECT_NE(error, "");
  EXPECT_EQ(result, error);
  EXPECT_NE(error.find("Ausgeführte Aktion: Lese Feld : Nr"), std::string::npos) << error;
}

TEST(SQLTypeNameTest, LongTextsTurnUnknownOnMySQLAndExcelOnly) {
  std::int32_t type = 203;
  EXPECT_EQ(CJobItem::GetSQLTypeName(type, dbtMySQL), "TEXT");
  EXPECT_EQ(type, 13);
  type = 201;
  EXPECT_EQ(CJobItem::GetSQLTypeName(type, dbtExcel), "TEXT");
  EXPECT_EQ(type, 13);
  type = 201;
  EXPECT_EQ(CJobItem::GetSQLTypeName(type, dbtAccess), "LONGTEXT");
  EXPECT_EQ(type, 201);
  type = 13;
  EXPECT_EQ(CJobItem::GetSQLTypeName(type, dbtOracle), "Unbekannt oder unbestimmt");
  for (std::int32_t unknown : {0, 1, 9, 12, 128, 206}) {
    type = unknown;
    EXPECT_EQ(CJobItem::GetSQLTypeName(type, dbtAccess), "") << unknown;
  }
}

class TextDestinationTest : public testing::TempFolderTest {};

TEST_F(TextDestinationTest, AHeaderFileTakesThePlaceOfTheStatement) {
  CConverter project;
  CDatabase& source = project.SourceDataBase();
  source.DatabaseType = dbtAccess;
  CDatabaseObject& object = source.Objects().Add();
  object.Name = "Kunden";
  object.Fields().Add().Name = "Nr";
  CDatabase& dest = project.DestDataBase();
  dest.DatabaseType = dbtText;
  dest.DatabaseFileName = folder_.string();
  CJob& job = project.Jobs().Add();
  job.JobDest().ItemObjectName = "kunden_neu";
  for (const char* name : {"Nr", "Intern", "Name"}) {
    job.JobSource().Columns().Add().Name = name;
    CJobItemColumn& column = job.JobDest().Columns().Add();
    column.Name = name;
    column.TargetColumn = std::string(name) + "_Z";
  }
  job.JobSource().Columns().Item(2).Visible = false;
  Write("kunden_neu", "old content");
  std::string error;
  EXPECT_EQ(job.JobDest().GenerateTableStructure(error, "Kunden"), "");
  EXPECT_EQ(error, "");
  EXPECT_EQ(Read("kunden_neu"), "Nr_Z;Name_Z");
}

}  // namespace
}  // namespace ketrova
