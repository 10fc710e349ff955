// ketrova new and show, run as a user calls them, on real SQLite files read
// through the ODBC driver: tables and views whose names hold umlauts and
// blanks become jobs with their mapping and script.
#include <gtest/gtest.h>

#include <string>

#include "apps/ketrova/run_ketrova.h"
#include "core/converter.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "stores/database.h"

namespace ketrova {
namespace {

using Outcome = testing::KetrovaOutcome;

class NewProjectTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    Sql("quelle.sqlite",
        "CREATE TABLE [Kunden Liste] ([Kunden Nr] INTEGER PRIMARY KEY, [Straße] VARCHAR(40), "
        "Ort TEXT, Geboren DATE)");
    Sql("quelle.sqlite", "CREATE TABLE Bestellungen (Nr INTEGER, Betrag DOUBLE)");
    Sql("quelle.sqlite",
        "CREATE VIEW [Kölner Kunden] AS SELECT * FROM [Kunden Liste] WHERE Ort = 'Köln'");
    Sql("quelle.sqlite", "INSERT INTO [Kunden Liste] VALUES (1, 'Hauptstraße 1', 'Köln', NULL)");
    Sql("ziel.sqlite", "CREATE TABLE Kunden_Liste (Kunden_Nr INTEGER, Strasse VARCHAR(20))");
  }

  void Sql(const std::string& file, const std::string& statement) {
    ado::Connection db;
    db.Open("Driver={SQLite3};Database=" + Path(file).string());
    db.Execute(statement);
    db.Close();
  }

  Outcome Ketrova(const std::string& arguments) { return testing::RunKetrova(folder_, arguments); }

  std::string Stores(const std::string& dest) {
    return " --name Probe --source odbc --source-driver SQLite3 --source-database '" +
           Path("quelle.sqlite").string() + "' --dest 9 --dest-driver SQLite3 --dest-database '" +
           Path(dest).string() + "'";
  }
};

TEST_F(NewProjectTest, OneJobPerTableOrViewWithMappingAndScript) {
  Outcome o = Ketrova("new p.cpf" + Stores("ziel.sqlite"));
  ASSERT_EQ(o.status, 0) << o.err;

  CConverter project;
  ASSERT_EQ(project.LoadProject(Path("p.cpf").string()), "");
  EXPECT_EQ(project.ProjectName, "Probe");
  CJobs& jobs = project.Jobs();
  ASSERT_EQ(jobs.Count(), 3);
  EXPECT_EQ(jobs.Item(1).Caption, "Konvertierung der Tabelle Kunden Liste");
  EXPECT_EQ(jobs.Item(3).Caption, "Konvertierung der View Kölner Kunden");

  CJob& customers = jobs.Item(1);
  EXPECT_EQ(customers.JobSource().ItemObjectName, "Kunden Liste");
  EXPECT_EQ(customers.JobDest().ItemObjectName, "Kunden_Liste");
  EXPECT_FALSE(customers.JobDest().CreateTable);
  EXPECT_TRUE(jobs.Item(3).JobDest().CreateTable);
  EXPECT_EQ(jobs.Item(3).JobDest().ItemObjectName, "Koelner_Kunden");

  // The target names are identifiers; each is fed by the source column it
  // came from. Only the fields the catalogue knows as long text or dates go
  // uncut.
  std::string mapping;
  for (const CJobItemColumn& column : customers.JobDest().Columns())
    mapping += column.TargetColumn + "<" + column.SourceColumn + " ";
  EXPECT_EQ(mapping, "Kunden_Nr<Kunden Nr Strasse<Straße Ort<Ort Geboren<Geboren ");
  EXPECT_EQ(customers.Script,
            "' **********************************************************\r\n"
            "'Visual Basic Konvertierungsscript\r\n"
            "' **********************************************************\r\n"
            "Function txConvertMain()\r\n"
            "\tDestination.Fields(\"Kunden_Nr\") = Left(Source.Fields(\"Kunden Nr\"),255)\r\n"
            "\tDestination.Fields(\"Strasse\") = Left(Source.Fields(\"Straße\"),255)\r\n"
            "\tDestination.Fields(\"Ort\") = Source.Fields(\"Ort\")\r\n"
            "\tDestination.Fields(\"Geboren\") = Source.Fields(\"Geboren\")\r\n"
            "End Function\r\n");
  EXPECT_TRUE(customers.Validate) << customers.ValidateError;

  // The source statement reads the fields under the names the script uses.
  ASSERT_TRUE(customers.JobSource().OpenRecordSet()) << customers.JobSource().LastErrorMessage;
  EXPECT_EQ(customers.JobSource().Recordset->GetFields().Item("Straße").Value().ToString(),
            "Hauptstraße 1");
  project.SourceDataBase().SetActive(false);

  o = Ketrova("show p.cpf --job 3");
  ASSERT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(o.out.find("Aufgabe 1"), std::string::npos);
  EXPECT_NE(o.out.find("== Aufgabe 3: Konvertierung der View Kölner Kunden\n"), std::string::npos);
  EXPECT_NE(o.out.find("-- Abfrage\n SELECT \r\n\t[Kunden Nr] AS [Kunden Nr],"), std::string::npos);
  EXPECT_NE(o.out.find("-- Löschen\nDELETE FROM [Koelner_Kunden]\n"), std::string::npos);
  EXPECT_NE(o.out.find("CREATE TABLE [Koelner_Kunden]("), std::string::npos);
  EXPECT_NE(o.out.find("Function txConvertMain()\r\n"), std::string::npos);
}

TEST_F(NewProjectTest, AStoreThatDoesNotOpenEndsWithOne) {
  Outcome o = Ketrova(
      "new p.cpf --name Probe --source odbc --source-driver KeinTreiber --source-database x"
      " --dest text --dest-file .");
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("Ausgeführte Aktion: Open Database"), std::string::npos) << o.err;
  EXPECT_NE(o.err.find("ODBC;Driver={KeinTreiber};Server=;Database=x"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(Path("p.cpf")));
}

TEST_F(NewProjectTest, AnSQLiteFileInAMissingFolderSaysWhichFolder) {
  Outcome o = Ketrova("new p.cpf" + Stores("fehlt/ziel.sqlite"));
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("(der Ordner " + Path("fehlt").string() + " existiert nicht)"),
            std::string::npos)
      << o.err;
  // The connection string stays below it.
  EXPECT_NE(o.err.find("Database=" + Path("fehlt/ziel.sqlite").string()), std::string::npos);
}

TEST_F(NewProjectTest, ATextFolderTakesItsDelimiterAndNamesWhatItCannotRead) {
  std::filesystem::create_directory(Path("daten"));
  Write("daten/gut.csv", "Nr,Name\r\n1,Müller\r\n");
  Write("daten/leer.csv", "");
  const std::string stores =
      " --name Text --source text --source-file daten --dest 9 --dest-driver SQLite3 "
      "--dest-database ziel.sqlite";
  // Without the two options schema.ini stays untouched.
  Outcome o = Ketrova("new p.cpf" + stores);
  EXPECT_EQ(o.status, 1);
  EXPECT_FALSE(std::filesystem::exists(Path("daten/schema.ini")));

  o = Ketrova("new p.cpf" + stores + " --source-delimiter , --source-header yes");
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("leer.csv"), std::string::npos) << o.err;
  EXPECT_NE(o.err.find("die Datei ist leer"), std::string::npos) << o.err;
  EXPECT_NE(o.err.find("1 Tabelle(n) der Quelle konnten nicht analysiert werden"),
            std::string::npos)
      << o.err;
  const std::string schema = Read("daten/schema.ini");
  EXPECT_NE(schema.find("[gut.csv]\r\nColNameHeader=True\r\n"), std::string::npos) << schema;
  CConverter project;
  ASSERT_EQ(project.LoadProject(Path("p.cpf").string()), "");
  ASSERT_EQ(project.Jobs().Count(), 1);
  std::string columns;
  for (const CJobItemColumn& column : project.Jobs().Item(1).JobSource().Columns())
    columns += column.Name + " ";
  EXPECT_EQ(columns, "Nr Name ");
}

TEST_F(NewProjectTest, OptionsTheStoreDoesNotUseAndEmptySourcesAreRefused) {
  Outcome o =
      Ketrova("new p.cpf --name Probe --source text --source-file . --dest mysql --dest-dsn lager");
  EXPECT_EQ(o.status, 2);
  EXPECT_TRUE(o.err.starts_with("ketrova new: Der Datenbanktyp MySQL verwendet --dest-dsn nicht\n"))
      << o.err;
  o = Ketrova(
      "new p.cpf --name Probe --source 9 --source-driver SQLite3 --source-delimiter ';'"
      " --dest text --dest-file .");
  EXPECT_EQ(o.status, 2);

  Sql("leer.sqlite", "PRAGMA user_version = 1");
  o = Ketrova(
      "new p.cpf --name Probe --source odbc --source-driver SQLite3 --source-database "
      "leer.sqlite" +
      Stores("ziel.sqlite").substr(Stores("ziel.sqlite").find(" --dest ")));
  EXPECT_EQ(o.status, 1) << o.err;
  EXPECT_NE(o.err.find("Das Projekt enthält keine Aufgabe"), std::string::npos) << o.err;
}

TEST_F(NewProjectTest, BadUsageEndsWithTwo) {
  for (const char* arguments :
       {"new", "new p.cpf --name Probe --source odbc",
        "new p.cpf --name Probe --source nix --dest 9", "new p.cpf --source 9 --dest 9",
        "new p.cpf --name Probe --source 9 --source-farbe rot", "show", "show p.cpf --job null"})
    EXPECT_EQ(Ketrova(arguments).status, 2) << arguments;
  EXPECT_EQ(Ketrova("show fehlt.cpf").status, 1);
}

}  // namespace
}  // namespace ketrova
