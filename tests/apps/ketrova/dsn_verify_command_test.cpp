// ketrova dsn and ketrova verify run as a user calls them: the data sources of
// an ODBC configuration the test writes, and a project whose SQLite
// destination lacks a table of its SQLite source.
#include <gtest/gtest.h>

#include <string>

#include "apps/ketrova/run_ketrova.h"
#include "core/converter.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"
#include "stores/database.h"

namespace ketrova {
namespace {

using testing::KetrovaOutcome;
using testing::RunKetrova;

class DsnVerifyCommandTest : public testing::TempFolderTest {
 protected:
  void Sql(const std::string& file, const std::string& statement) {
    ado::Connection db;
    db.Open("Driver={SQLite3};Database=" + Path(file).string());
    db.Execute(statement);
    db.Close();
  }

  // A project made by ketrova new: quelle.sqlite holds Kunden and
  // [Neue Orte], ziel.sqlite only Kunden.
  void NewProject() {
    Sql("quelle.sqlite", "CREATE TABLE Kunden (Nr INTEGER, Name VARCHAR(40))");
    Sql("quelle.sqlite", "CREATE TABLE [Neue Orte] (Nr INTEGER, Ort VARCHAR(30))");
    Sql("ziel.sqlite", "CREATE TABLE Kunden (Nr INTEGER, Name VARCHAR(40))");
    KetrovaOutcome o = RunKetrova(
        folder_,
        "new p.cpf --name Probe --source odbc --source-driver SQLite3 --source-database '" +
            Path("quelle.sqlite").string() + "' --dest 9 --dest-driver SQLite3 --dest-database '" +
            Path("ziel.sqlite").string() + "'");
    ASSERT_EQ(o.status, 0) << o.err;
  }
};

TEST_F(DsnVerifyCommandTest, DsnListsTheSourcesAndTheirDriversOnce) {
  std::filesystem::create_directory(Path("etc"));
  Write("etc/odbcinst.ini", "[SQLite3]\nDriver=libsqlite3odbc.so\n");
  Write("odbc.ini",
        "[lager_a]\nDriver=SQLite3\nDatabase=/tmp/a.sqlite\n\n"
        "[lager_b]\nDriver=SQLite3\nDatabase=/tmp/b.sqlite\n\n"
        "[lager_pg]\nDriver=PostgreSQL Unicode\n");
  KetrovaOutcome o =
      RunKetrova(folder_, "dsn",
                 {{"ODBCSYSINI", Path("etc").string()}, {"ODBCINI", Path("odbc.ini").string()}});
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(o.out,
            "Datenquellen:\n  lager_a\n  lager_b\n  lager_pg\n"
            "Treiber:\n  SQLite3\n  PostgreSQL Unicode\n");
  EXPECT_EQ(o.err, "");
}

TEST_F(DsnVerifyCommandTest, VerifyCreatesTheMissingTableAndSavesTheProject) {
  ASSERT_NO_FATAL_FAILURE(NewProject());
  KetrovaOutcome o = RunKetrova(folder_, "verify p.cpf");
  EXPECT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(o.out, "");
  EXPECT_EQ(o.err, "");

  auto db = std::make_shared<ado::Connection>();
  db->Open("Driver={SQLite3};Database=" + Path("ziel.sqlite").string());
  auto rs = db->Execute("SELECT COUNT(*) AS n FROM Neue_Orte");
  EXPECT_EQ(rs->GetFields().Item("n").Value().ToText(), "0");
  rs->Close();
  db->Close();

  // The saved destination catalogue knows the new table.
  CConverter project;
  ASSERT_EQ(project.LoadProject(Path("p.cpf").string()), "");
  std::string error;
  CDatabaseObject* created = project.DestDataBase().ObjectByName("Neue_Orte", error, false);
  EXPECT_NE(created, nullptr);
}

TEST_F(DsnVerifyCommandTest, ATableThatCannotBeCreatedEndsWithOne) {
  ASSERT_NO_FATAL_FAILURE(NewProject());
  // The index holds the name without being a table the catalogue knows.
  Sql("ziel.sqlite", "CREATE INDEX Neue_Orte ON Kunden (Nr)");
  KetrovaOutcome o = RunKetrova(folder_, "verify p.cpf");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.out, "");
  EXPECT_EQ(o.err,
            "Fehler bei Tabelle [Neue Orte] erzeugen : \r\n\r\nEin Fehler ist aufgetreten!\r\n\r\n"
            "Fehler Nr.: -2147217900\r\nBeschreibung: [SQLite]there is already an index named "
            "Neue_Orte (1)\r\n\r\nQuelle: Ketrova.ODBC\r\n\r\n\n");
}

TEST_F(DsnVerifyCommandTest, UsageAndProjectsThatDoNotLoad) {
  for (const char* arguments : {"dsn x", "verify", "verify a.cpf b.cpf"}) {
    KetrovaOutcome o = RunKetrova(folder_, arguments);
    EXPECT_EQ(o.status, 2) << arguments;
    EXPECT_EQ(o.out, "") << arguments;
  }
  EXPECT_EQ(RunKetrova(folder_, "dsn x").err, "Aufruf: ketrova dsn\n");
  EXPECT_EQ(RunKetrova(folder_, "verify").err, "Aufruf: ketrova verify PROJEKT.CPF\n");

  Write("kaputt.cpf", "kein XML");
  // The text of the line the parser stopped at is quoted; a missing file has
  // none. Beside the load's own text: what is wrong with the file.
  KetrovaOutcome o = RunKetrova(folder_, "verify fehlt.cpf");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.err,
            "Das Dokument konnte nicht gelesen werden. \r\nFehlertext : \r\nDateiname  : "
            "fehlt.cpf\nProjektdatei nicht gefunden: fehlt.cpf\n");
  o = RunKetrova(folder_, "verify kaputt.cpf");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.err,
            "Dies ist keine gültige Projektdatei: kaputt.cpf\nGrund: kein Wurzelelement (Zeile 1, "
            "Spalte 9)\nDas Dokument konnte nicht gelesen werden. \r\nFehlertext : kein "
            "XML\r\nDateiname  : kaputt.cpf\n");
  EXPECT_EQ(Read("kaputt.cpf"), "kein XML");
  // Well-formed XML of another kind would load empty; verify would save a
  // project over it, so it is refused.
  Write("andere.xml", "<ANDERES/>");
  o = RunKetrova(folder_, "verify andere.xml");
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(Read("andere.xml"), "<ANDERES/>");
}

}  // namespace
}  // namespace ketrova
