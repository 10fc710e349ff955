// ketrova run as a user calls it: a project converting a CSV folder into a new
// SQLite database through the ODBC driver, run in its own folder with stdin
// and stderr no terminal.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "apps/ketrova/run_ketrova.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "support/text.h"

namespace ketrova {
namespace {

using Outcome = testing::KetrovaOutcome;

constexpr const char* kUsage =
    "Aufruf: ketrova run PROJEKT.CPF [--yes] [--quiet] [--no-grouping]\n";

// Reads every place name and turns it to upper case.
constexpr const char* kScript =
    "Function txConvertMain()\r\n"
    "\tDestination.Fields(\"Nr\") = Source.Fields(\"Nr\")\r\n"
    "\tDestination.Fields(\"Ort\") = UCase(Source.Fields(\"Ort\"))\r\n"
    "\tDestination.Fields(\"Seit\") = Source.Fields(\"Seit\")\r\n"
    "\tDestination.Fields(\"Betrag\") = Source.Fields(\"Betrag\")\r\n"
    "End Function\r\n";

class RunCommandTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    std::filesystem::create_directory(Path("daten"));
    Write("daten/orte.csv",
          "Nr;Ort;Seit;Betrag\r\n"
          "1;München;12.03.1961;1234,50\r\n"
          "2;Köln;01.07.1975;0,99\r\n"
          "3;Düsseldorf;29.02.1980;100\r\n");
  }

  // One job from orte.csv into the table Orte, created by the run.
  void WriteProject(const std::string& script, const std::string& driver = "SQLite3") {
    std::string columns;
    for (auto [name, type] : {std::pair("Nr", "3"), std::pair("Ort", "202"), std::pair("Seit", "7"),
                              std::pair("Betrag", "6")}) {
      columns += std::string("<JOBITEMCOLUMN NAME=\"") + name + "\" DISPLAYNAME=\"" + name +
                 "\" SOURCECOLUMN=\"" + name + "\" TARGETCOLUMN=\"" + name + "\" FIELDTYPE=\"" +
                 type + "\"/>";
    }
    columns = "<JOBITEMCOLUMNS COUNT=\"4\">" + columns + "</JOBITEMCOLUMNS>";
    Write("run.cpf",
          "<?xml version=\"1.0\"?>\r\n<?encoding iso-8859-1?>\r\n<PROJECT>"
          "<DATABASESOURCE DATABASETYPE=\"11\" DATABASEDIRECTION=\"1\" FILENAME=\"daten\"/>"
          "<DATABASEDEST DATABASETYPE=\"9\" DATABASEDIRECTION=\"2\" DRIVERNAME=\"" +
              driver +
              "\" DATABASENAME=\"ziel.sqlite\"/>"
              "<JOBS COUNT=\"1\"><JOB CAPTION=\"Orte\" OBJECTNAME=\"Orte\" "
              "SCRIPTUSERDEFINED=\"TRUE\"><SCRIPT><![CDATA[" +
              EscapeSpecialChars(ConvertUmlautsEscape(script, true), true) +
              "]]></SCRIPT>"
              "<ITEMSOURCE NAME=\"orte\" ITEMOBJECTNAME=\"orte.csv\" JOBTYPE=\"4\" FILENAME=\"\">"
              "<SQL><![CDATA[]]></SQL>" +
              columns +
              "</ITEMSOURCE><ITEMDEST NAME=\"Orte\" ITEMOBJECTNAME=\"Orte\" CREATETABLE=\"TRUE\" "
              "JOBTYPE=\"1\"><SQL><![CDATA[]]></SQL>" +
              columns + "</ITEMDEST></JOB></JOBS></PROJECT>\r\n");
  }

  Outcome Run(const std::string& arguments) {
    return testing::RunKetrova(folder_, "run " + arguments);
  }

  // "Nr|Ort|how SQLite holds Betrag" of every row of the target, in key
  // order. The amounts must arrive as numbers, not as text with a decimal
  // comma.
  std::vector<std::string> TargetRows() {
    auto db = std::make_shared<ado::Connection>();
    db->Open("Driver={SQLite3};Database=" + Path("ziel.sqlite").string());
    std::vector<std::string> rows;
    auto rs = db->Execute("SELECT Nr, Ort, typeof(Betrag) AS Art FROM Orte ORDER BY Nr");
    for (; !rs->Eof(); rs->MoveNext())
      rows.push_back(rs->GetFields().Item("Nr").Value().ToText() + "|" +
                     rs->GetFields().Item("Ort").Value().ToText() + "|" +
                     rs->GetFields().Item("Art").Value().ToText());
    rs->Close();
    db->Close();
    return rows;
  }
};

TEST_F(RunCommandTest, BadUsageExitsWithTwo) {
  for (const char* arguments : {"", "--yes", "run.cpf --schnell", "run.cpf zwei.cpf"}) {
    Outcome o = Run(arguments);
    EXPECT_EQ(o.status, 2) << arguments;
    EXPECT_EQ(o.err, kUsage) << arguments;
    EXPECT_EQ(o.out, "");
  }
}

TEST_F(RunCommandTest, ProjectThatDoesNotLoadExitsWithOne) {
  Outcome o = Run("fehlt.cpf");
  EXPECT_EQ(o.status, 1);
  EXPECT_TRUE(o.err.starts_with("Das Dokument konnte nicht gelesen werden.")) << o.err;
  EXPECT_EQ(o.out, "");
}

TEST_F(RunCommandTest, CleanRunPrintsTheClosingTextAndConverts) {
  WriteProject(kScript);
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 0) << o.out << o.err;
  EXPECT_EQ(o.out, "Konvertierung beendet !\n");
  // Status texts one per line; the per-record status is progress and stays
  // off a stderr that is no terminal.
  EXPECT_NE(o.err.find("\nÖffne Zieldatenbank ->\n"), std::string::npos) << o.err;
  EXPECT_NE(o.err.find("\nOrte ...\n"), std::string::npos) << o.err;
  EXPECT_EQ(o.err.find("wird bearbeitet"), std::string::npos) << o.err;
  EXPECT_EQ(TargetRows(),
            (std::vector<std::string>{"1|MÜNCHEN|real", "2|KÖLN|real", "3|DÜSSELDORF|integer"}));

  std::filesystem::remove(Path("ziel.sqlite"));
  o = Run("--quiet run.cpf");
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.out, "Konvertierung beendet !\n");
  EXPECT_EQ(o.err.find("Öffne"), std::string::npos) << o.err;
}

TEST_F(RunCommandTest, FailedRecordPrintsTheLogAndExitsWithOne) {
  std::string script = kScript;
  script.insert(script.find("\tDestination"),
                "\tIf Source.Fields(\"Nr\") = 2 Then Err.Raise 5\r\n");
  WriteProject(script);
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.out, Read("run.LOG"));
  EXPECT_NE(o.out.find("Job.CancelOnError = Falsch; Konvertierung wird fortgesetzt.\r\n"),
            std::string::npos);
  // The failed record is not written, the others are.
  EXPECT_EQ(TargetRows(), (std::vector<std::string>{"1|MÜNCHEN|real", "3|DÜSSELDORF|integer"}));
}

TEST_F(RunCommandTest, StoreThatDoesNotOpenPrintsTheLog) {
  WriteProject(kScript, "Kein Treiber");
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_FALSE(o.out.empty());
  EXPECT_EQ(o.out, Read("run.LOG"));
  EXPECT_EQ(o.out.find("Verbindung Ziel erfolgreich"), std::string::npos);
}

}  // namespace
}  // namespace ketrova
