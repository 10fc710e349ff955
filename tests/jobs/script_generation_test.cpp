// The conversion scripts written from a job's mapping, line by line in both
// languages, and the frames of the two hand-written functions.
#include <gtest/gtest.h>

#include "jobs/job_fixture.h"
#include "platform/script/script_control.h"

namespace ketrova {
namespace {

using testing::UseStore;

class ScriptGenerationTest : public testing::JobTest {
 protected:
  void SetUp() override {
    JobTest::SetUp();
    UseStore(project_.SourceDataBase(), dbtSQLServer);
    UseStore(project_.DestDataBase(), dbtSQLServer);
    job().ObjectName = "Kunden";
    source().ItemObjectName = "Kunden";
    dest().ItemObjectName = "Kunden";
    CDatabaseObject& table = project_.DestDataBase().Objects().Add();
    table.Name = "Kunden";
    AddField(table, "Name", 202, 50);
    AddField(table, "Id", 3, 4);
    AddField(table, "Memo", 203, 1073741823);
  }
  static void AddField(CDatabaseObject& table, const char* name, std::int32_t type,
                       std::int32_t size) {
    CDatabaseObjectField& field = table.Fields().Add();
    field.Name = name;
    field.FieldType = type;
    field.DefinedSize = size;
  }
  // A source column and the target column it feeds, under the same name.
  void Map(const char* name, std::int32_t type) {
    AddColumn(source(), name, type);
    AddColumn(dest(), name, type, name);
  }
  std::string Generate() {
    std::string error;
    std::string script = job().GenerateScript(error);
    EXPECT_EQ(error, "");
    return script;
  }
};

constexpr const char* kVbHead =
    "' **********************************************************\r\n"
    "'Visual Basic Konvertierungsscript\r\n"
    "' **********************************************************\r\n"
    "Function txConvertMain()\r\n";
constexpr const char* kJsHead =
    "// **********************************************************\r\n"
    "//Java-Script Konvertierungsscript\r\n"
    "// **********************************************************\r\n"
    "function txConvertMain()\r\n"
    "{\r\n";

TEST_F(ScriptGenerationTest, PlainCopyInBothLanguages) {
  Map("Name", 202);
  Map("Id", 3);
  const std::string vb = std::string(kVbHead) +
                         "\tDestination.Fields(\"Name\") = Left(Source.Fields(\"Name\"),50)\r\n"
                         "\tDestination.Fields(\"Id\") = Source.Fields(\"Id\")\r\n"
                         "End Function\r\n";
  EXPECT_EQ(Generate(), vb);
  EXPECT_EQ(job().Script, vb);

  job().ScriptLanguage = sclJavaScript;
  const std::string js = std::string(kJsHead) +
                         "\tDestination.Fields(\"Name\").Value = Source.Fields(\"Name\").Value;\r\n"
                         "\tDestination.Fields(\"Id\").Value = Source.Fields(\"Id\").Value;;\r\n"
                         "}\r\n";
  EXPECT_EQ(Generate(), js);

  // Both forms are scripts the engines take.
  script::ScriptControl control;
  EXPECT_NO_THROW(control.AddCode(vb));
  control.SetLanguage("JScript");
  EXPECT_NO_THROW(control.AddCode(js));
}

TEST_F(ScriptGenerationTest, WhatIsCutAndWhatIsLeftOut) {
  Map("Memo", 203);    // long text: no Left
  Map("Nummer", 3);    // unknown to the catalogue: Left with 255, number or not
  Map("Geheim", 202);  // hidden in the source: no line
  source().ColumnByName("Geheim")->Visible = false;
  AddColumn(dest(), "Leer", 202);  // not mapped: no line
  EXPECT_EQ(Generate(),
            std::string(kVbHead) +
                "\tDestination.Fields(\"Memo\") = Source.Fields(\"Memo\")\r\n"
                "\tDestination.Fields(\"Nummer\") = Left(Source.Fields(\"Nummer\"),255)\r\n"
                "End Function\r\n");

  for (CJobItemColumn& column : dest().Columns()) column.SourceColumn.clear();
  EXPECT_EQ(Generate(), std::string(kVbHead) + "End Function\r\n");
}

TEST_F(ScriptGenerationTest, AFileSourceIsReadByTheFieldName) {
  CJobItemColumn& street = AddColumn(source(), "Straße", 202);
  street.TargetColumn = "Strasse";
  AddColumn(dest(), "Strasse", 202, "Strasse");
  const std::string server =
      "\tDestination.Fields(\"Strasse\") = Left(Source.Fields(\"Strasse\"),255)\r\n";
  EXPECT_NE(Generate().find(server), std::string::npos);
  UseStore(project_.SourceDataBase(), dbtText);
  const std::string file =
      "\tDestination.Fields(\"Strasse\") = Left(Source.Fields(\"Straße\"),255)\r\n";
  EXPECT_NE(Generate().find(file), std::string::npos);
}

TEST_F(ScriptGenerationTest, FailuresLeaveTheScriptAlone) {
  job().Script = "hand-written";
  std::string error;
  // No target columns: the validation's message.
  EXPECT_EQ(job().GenerateScript(error), "");
  EXPECT_EQ(error, "Quelle: Spalten fehlen");

  Map("Name", 202);
  AddColumn(dest(), "Ort", 202, "City");
  error.clear();
  EXPECT_EQ(job().GenerateScript(error), "");
  EXPECT_EQ(error, "Das Quellfeld City konnte nicht ermittelt werden !");
  EXPECT_EQ(job().Script, "hand-written");

  job().ScriptUserDefined = true;
  error.clear();
  EXPECT_EQ(job().GenerateScript(error), "");
  EXPECT_EQ(error, "");
  EXPECT_EQ(job().Script, "hand-written");
}

TEST_F(ScriptGenerationTest, FramesOfTheHandWrittenFunctions) {
  source().KeyField = "KdNr";
  dest().KeyField = "Nummer";
  EXPECT_EQ(job().GenerateScriptFilterUserDefined(),
            "Function txSQLSearchResult\r\n   Dim szSQL \r\n   szSQL = \"\"\r\n\r\n\r\n"
            "   txSQLSearchResult = szSQL\r\nEnd Function\r\n");
  EXPECT_EQ(dest().DestinationFilterUserDefinedScript, job().GenerateScriptFilterUserDefined());
  EXPECT_EQ(job().GenerateScriptDestinationUpdate(),
            "Function txSQLDestinationUpdate\r\n   Dim szSQL \r\n"
            " szSQL = \"Nummer\" = Source.Fields(\"KdNr\")\r\n\r\n\r\n"
            "   txSQLDestinationUpdate = szSQL\r\nEnd Function\r\n");

  job().ScriptLanguage = sclJavaScript;
  EXPECT_EQ(job().GenerateScriptFilterUserDefined(),
            "function txSQLSearchResult\r\n{\r\n   var szSQL \r\n   szSQL = \"\";\r\n\r\n\r\n"
            "   return szSQL;\r\n}\r\n");
  EXPECT_EQ(job().GenerateScriptDestinationUpdate(),
            "function txSQLDestinationUpdate\r\n{\r\n   var szSQL \r\n"
            "   szSQL = Destination.Fields(\"Nummer\")         = Source.Fields(\"KdNr\");\r\n"
            "\r\n\r\n   return szSQL;\r\n}\r\n");
  // Only the search frame is kept.
  EXPECT_EQ(dest().DestinationFilterUserDefinedScript.substr(0, 26), "function txSQLSearchResult");
}

}  // namespace
}  // namespace ketrova
