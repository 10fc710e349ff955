// ketrova run as a user calls it: a project converting a CSV folder into a new
// SQLite database through the ODBC driver, run in its own folder with stdin
// and stderr no terminal.
#include <gtest/gtest.h>
#include <unistd.h>

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
    "Aufruf: ketrova run PROJEKT.CPF [--job N[,M...]] [--from N] [--yes] [--quiet] "
    "[--no-grouping]\n";

// Reads every place name and turns it to upper case.
constexpr const char* kScript =
    "Function txConvertMain()\r\n"
    "\tDestination.Fields(\"Nr\") = Source.Fields(\"Nr\")\r\n"
    "\tDestination.Fields(\"Ort\") = UCase(Source.Fields(\"Ort\"))\r\n"
    "\tDestination.Fields(\"Seit\") = Source.Fields(\"Seit\")\r\n"
    "\tDestination.Fields(\"Betrag\") = Source.Fields(\"Betrag\")\r\n"
    "End Function\r\n";

// kScript with `lines` put in before the first `where`.
std::string ScriptWith(const std::string& lines, const std::string& where = "\tDestination") {
  std::string script = kScript;
  script.insert(script.find(where), lines);
  return script;
}

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
  void WriteProject(const std::string& script, const std::string& driver = "SQLite3",
                    const std::string& jobAttributes = "", const std::string& destAttributes = "") {
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
              "<JOBS COUNT=\"1\"><JOB CAPTION=\"Orte\" OBJECTNAME=\"Orte\" " +
              jobAttributes + " SCRIPTUSERDEFINED=\"TRUE\"><SCRIPT><![CDATA[" +
              EscapeSpecialChars(ConvertUmlautsEscape(script, true), true) +
              "]]></SCRIPT>"
              "<ITEMSOURCE NAME=\"orte\" ITEMOBJECTNAME=\"orte.csv\" JOBTYPE=\"4\" FILENAME=\"\">"
              "<SQL><![CDATA[]]></SQL>" +
              columns +
              "</ITEMSOURCE><ITEMDEST NAME=\"Orte\" ITEMOBJECTNAME=\"Orte\" CREATETABLE=\"TRUE\" " +
              destAttributes + " JOBTYPE=\"1\"><SQL><![CDATA[]]></SQL>" + columns +
              "</ITEMDEST></JOB></JOBS></PROJECT>\r\n");
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

TEST_F(RunCommandTest, ProjectThatDoesNotLoadExitsWithOneAndSaysWhy) {
  Write("kaputt.cpf", "<?xml version=\"1.0\"?>\n<PROJECT>\n  <JOBS></JOB>\n</PROJECT>\n");
  Write("bild.cpf", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\x01\x02", 18));
  Write("andere.xml", "<?xml version=\"1.0\"?><ANDERES><X>1</X></ANDERES>");
  const std::pair<const char*, const char*> cases[] = {
      // Missing: the load's own text, and what is wrong beside it.
      {"fehlt.cpf",
       "Das Dokument konnte nicht gelesen werden. \r\nFehlertext : \r\nDateiname  : "
       "fehlt.cpf\nProjektdatei nicht gefunden: fehlt.cpf\n"},
      // Text that is no XML: the reason and the place, then the load's text.
      {"kaputt.cpf",
       "Dies ist keine gültige Projektdatei: kaputt.cpf\nGrund: schließendes Element passt "
       "nicht zum öffnenden (Zeile 3, Spalte 11)\nDas Dokument konnte nicht gelesen werden. "
       "\r\nFehlertext :   <JOBS></JOB>\r\nDateiname  : kaputt.cpf\n"},
      // A binary file: its bytes never reach the terminal.
      {"bild.cpf",
       "Dies ist keine gültige Projektdatei: bild.cpf\nGrund: die Datei enthält "
       "Binärdaten\n"},
      // Well-formed XML of another kind loads empty, which is said twice.
      {"andere.xml",
       "Dies ist keine gültige Projektdatei: andere.xml\nGrund: das Wurzelelement heißt "
       "<ANDERES>, nicht <Project>; sie wird leer geladen\nDas Projekt enthält keine Aufgabe.\n"}};
  for (const auto& [file, err] : cases) {
    Outcome o = Run(file);
    EXPECT_EQ(o.status, 1) << file;
    EXPECT_EQ(o.err, err);
    EXPECT_EQ(o.out, "");
  }
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
  WriteProject(ScriptWith("\tIf Source.Fields(\"Nr\") = 2 Then Err.Raise 5\r\n"));
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.out, Read("run.LOG"));
  EXPECT_NE(o.out.find("Job.CancelOnError = Falsch; Konvertierung wird fortgesetzt.\r\n"),
            std::string::npos);
  // The failed record is not written, the others are.
  EXPECT_EQ(TargetRows(), (std::vector<std::string>{"1|MÜNCHEN|real", "3|DÜSSELDORF|integer"}));
}

TEST_F(RunCommandTest, AJobThatStopsSaysHowFarItWroteAndHowToGoOn) {
  WriteProject(ScriptWith("\tIf Source.Fields(\"Nr\") = 3 Then Err.Raise 5\r\n"), "SQLite3",
               "CANCELONERROR=\"TRUE\"");
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("Aufgabe \"Orte\" ist bei Datensatz 3 gescheitert; davor wurden 2 "
                       "Datensätze geschrieben (der letzte war Datensatz 2); weiter mit: ketrova "
                       "run run.cpf --job \"Orte\" --from 3\n"),
            std::string::npos)
      << o.err;
  EXPECT_EQ(o.out.find("weiter mit"), std::string::npos);
}

TEST_F(RunCommandTest, StoreThatDoesNotOpenPrintsTheLog) {
  WriteProject(kScript, "Kein Treiber");
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_FALSE(o.out.empty());
  EXPECT_EQ(o.out, Read("run.LOG"));
  EXPECT_EQ(o.out.find("Verbindung Ziel erfolgreich"), std::string::npos);
}

TEST_F(RunCommandTest, RefusedRecordsFailTheRunAndAreNamedOnStderr) {
  // Ort may not be empty; the script empties it for Köln.
  auto db = std::make_shared<ado::Connection>();
  db->Open("Driver={SQLite3};Database=" + Path("ziel.sqlite").string());
  db->Execute(
      "CREATE TABLE Orte (Nr INTEGER PRIMARY KEY, Ort TEXT NOT NULL, Seit DATE, Betrag FLOAT)");
  db->Close();
  WriteProject(
      ScriptWith("\tIf Source.Fields(\"Nr\") = 2 Then Destination.Fields(\"Ort\") = Null\r\n",
                 "End Function"));
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  // The run itself went through: its closing text stands.
  EXPECT_EQ(o.out, "Konvertierung beendet !\n");
  EXPECT_TRUE(o.err.ends_with(
      "1 Datensatz wurde vom Ziel abgelehnt und in run-abgelehnt.csv gespeichert.\n"))
      << o.err;
  const std::string rejects = Read("run-abgelehnt.csv");
  EXPECT_TRUE(rejects.starts_with("Aufgabe,Datensatz,Meldung,Nr,Ort,Seit,Betrag\r\nOrte,2,"))
      << rejects;
  EXPECT_TRUE(rejects.ends_with(",2,Köln,01.07.1975,\"0,99\"\r\n")) << rejects;
  EXPECT_EQ(Read("run.LOG").find("abgelehnt"), std::string::npos);
  EXPECT_EQ(TargetRows(), (std::vector<std::string>{"1|MÜNCHEN|real", "3|DÜSSELDORF|real"}));
}

TEST_F(RunCommandTest, AReadOnlyDatabaseRefusesEveryRecord) {
  WriteProject(kScript);
  ASSERT_EQ(Run("run.cpf --yes").status, 0);
  std::filesystem::permissions(Path("ziel.sqlite"), std::filesystem::perms::owner_read |
                                                        std::filesystem::perms::group_read |
                                                        std::filesystem::perms::others_read);
  // root writes any file: the run goes as the user nobody, who owns the folder.
  std::string as;
  if (::geteuid() == 0) {
    if (std::system(("chown -R nobody '" + folder_.string() + "'").c_str()) != 0)
      GTEST_SKIP() << "kein Benutzer nobody, dem der Ordner gegeben werden kann";
    as = "runuser -u nobody -- ";
  }
  const std::string command = "cd '" + folder_.string() + "' && " + as +
                              "'" KETROVA_BINARY "' run run.cpf --yes </dev/null >out 2>err";
  const int raw = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(raw));
  EXPECT_EQ(WEXITSTATUS(raw), 1);
  const std::string err = Read("err");
  EXPECT_TRUE(err.ends_with(
      "3 Datensätze wurden vom Ziel abgelehnt und in run-abgelehnt.csv gespeichert.\n"))
      << err;
  // The job ran to its end: it is not one that stopped.
  EXPECT_EQ(err.find("gescheitert"), std::string::npos) << err;
  EXPECT_NE(Read("run-abgelehnt.csv").find("readonly database"), std::string::npos);
}

TEST_F(RunCommandTest, JobsCanBeChosenAndARunCanStartAtARecord) {
  WriteProject(kScript);
  Outcome o = Run("run.cpf --job Tabelle");
  EXPECT_EQ(o.status, 2);
  EXPECT_EQ(o.err, "ketrova run: Keine Aufgabe \"Tabelle\" im Projekt (1 Aufgabe(n))\n");
  o = Run("run.cpf --job orte --from 2");
  EXPECT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(TargetRows(), (std::vector<std::string>{"2|KÖLN|real", "3|DÜSSELDORF|integer"}));
  o = Run("run.cpf --from x");
  EXPECT_EQ(o.status, 2);

  // A job that empties its target would wipe what the first run wrote.
  WriteProject(kScript, "SQLite3", "", "DELETEBEFOREINSERT=\"TRUE\"");
  o = Run("run.cpf --job 1 --from 2");
  EXPECT_EQ(o.status, 2);
  EXPECT_EQ(o.err,
            "ketrova run: Aufgabe \"Orte\" leert ihr Ziel vor dem Einfügen; --from würde die schon "
            "geschriebenen Datensätze löschen\n");
  EXPECT_EQ(TargetRows().size(), 2u);
}

TEST_F(RunCommandTest, AScriptThatDoesNotCompileIsPlacedOnStderr) {
  WriteProject(
      "Function txConvertMain()\r\n\tDestination.Fields(\"Nr\") = (1 +\r\nEnd Function\r\n");
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("Scriptfehler in Zeile 2, Spalte "), std::string::npos) << o.err;
}

TEST_F(RunCommandTest, ALogThatCannotBeWrittenIsNamed) {
  WriteProject(kScript);
  std::filesystem::create_directory(Path("run.LOG"));
  Outcome o = Run("run.cpf --yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("Die Protokolldatei run.LOG konnte nicht geschrieben werden: ist ein "
                       "Ordner\n"),
            std::string::npos)
      << o.err;
}

TEST_F(RunCommandTest, CtrlCStopsTheRunWithOneHundredThirty) {
  // Each record takes a while, so that the interrupt comes during the run:
  // once the target is being opened, however slowly the machine starts it.
  WriteProject(ScriptWith("\tDim i\r\n\tFor i = 1 To 4000000\r\n\tNext\r\n", "End Function"));
  const std::string command =
      "cd '" + folder_.string() +
      "' && ('" KETROVA_BINARY
      "' run run.cpf --yes </dev/null >out 2>err & pid=$!; "
      "for i in $(seq 400); do grep -q 'Zieldatenbank' err && break; sleep 0.05; done; "
      "sleep 0.2; kill -INT $pid; wait $pid)";
  const int raw = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(raw));
  EXPECT_EQ(WEXITSTATUS(raw), 130);
  const std::string err = Read("err");
  EXPECT_TRUE(err.ends_with("ketrova: abgebrochen\n")) << err;
  EXPECT_NE(err.find("Möchten Sie wirklich die Verarbeitung abbrechen ?"), std::string::npos);
}

}  // namespace
}  // namespace ketrova
