// The demo project run from the host's toolbar: the run dialog opens on the
// project, its start button converts the CSV files into the SQLite file
// beside the project, and the rows arrive.
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "kor_fixture.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "support/files.h"
#include "support/utf8.h"

namespace kor::testing {
namespace {

TEST_F(KorTest, DemoRunFromTheToolbarFillsTheSQLiteFile) {
  StartHost(Demo() + "/demo.cpf");
  ASSERT_TRUE(Enabled("ProjectRun"));
  struct Window {
    std::string file, info;
    bool importShown = true, startShown = true, linkShown = true;
    std::string close;
  } seen;
  // The run happens inside the click; the boxes it shows meanwhile are
  // answered with their default.
  answerer_.Act([&](QWidget& window) {
    seen.file = window.findChild<QLineEdit*>("EditFileName")->text().toStdString();
    seen.importShown = !window.findChild<QWidget*>("cmdImportFile")->isHidden();
    window.findChild<QPushButton*>("cmdStart")->click();
    seen.info = window.findChild<QPlainTextEdit*>("EditInfo")->toPlainText().toStdString();
    seen.startShown = !window.findChild<QWidget*>("cmdStart")->isHidden();
    seen.linkShown = !window.findChild<QWidget*>("LabelSendLogFile")->isHidden();
    auto* close = window.findChild<QPushButton*>("cmdCancel");
    seen.close = close->text().toStdString();
    close->click();
  });
  Press("ProjectRun");
  ASSERT_FALSE(answerer_.Seen().empty());
  EXPECT_EQ(answerer_.Seen()[0].name, "frmEngine");
  EXPECT_EQ(answerer_.Seen()[0].title, "Datenkonvertierung");
  EXPECT_EQ(seen.file, (Demo() + "/demo.cpf").toStdString());
  EXPECT_FALSE(seen.importShown);
  EXPECT_EQ(seen.info, "Konvertierung beendet !");
  EXPECT_FALSE(seen.startShown);
  EXPECT_FALSE(seen.linkShown);
  EXPECT_EQ(seen.close, "&Schliessen");

  const QString database = Demo() + "/demo.sqlite";
  // K1003 comes twice and is updated by its key.
  EXPECT_EQ(SqliteRows(database, "SELECT COUNT(*) FROM Kunden"), std::vector<std::string>{"7"});
  EXPECT_EQ(SqliteRows(database, "SELECT Name, Ort FROM Kunden WHERE KundenNr = 'K1001'"),
            std::vector<std::string>{"Müller|München"});
  EXPECT_EQ(SqliteRows(database, "SELECT COUNT(*) FROM Auftraege WHERE Waehrung = 'EUR'"),
            std::vector<std::string>{"7"});
  EXPECT_EQ(SqliteRows(database, "SELECT Artikel, Status FROM Auftraege WHERE AuftragNr = 1"),
            std::vector<std::string>{"Schraubenschlüssel|bezahlt"});
  EXPECT_TRUE(QFile::exists(Demo() + "/demo.LOG"));
}

TEST_F(KorTest, ARunThatStopsSaysWhereBelowItsLog) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  ketrova::CJob& job = host.Object("Converter")->Jobs().Item(1);
  job.CancelOnError = true;
  job.Script =
      "Function txConvertMain()\r\n"
      "\tDestination.Fields(\"KundenNr\") = Source.Fields(\"KundenNr\")\r\n"
      "\tIf RecordCount = 3 Then Err.Raise 5\r\n"
      "End Function\r\n";
  std::string info;
  answerer_.Act([&](QWidget& window) {
    window.findChild<QPushButton*>("cmdStart")->click();
    info = window.findChild<QPlainTextEdit*>("EditInfo")->toPlainText().toStdString();
    window.findChild<QPushButton*>("cmdCancel")->click();
  });
  Press("ProjectRun");
  // The log comes first, as the run writes it; the notes follow, as the
  // command line prints them: the script error's place, then where the job
  // stopped with the two records committed before it and how to go on.
  const std::string log = ketrova::ReadTextFile((Demo() + "/demo.LOG").toStdString());
  ASSERT_FALSE(log.empty());
  EXPECT_EQ(info.rfind(ketrova::ReplaceAll(log, "\r\n", "\n"), 0), 0u) << info;
  const std::string caption = "Kunden übernehmen";
  const std::size_t script = info.find("\n\nScriptfehler in Zeile 3, Spalte ");
  ASSERT_NE(script, std::string::npos) << info;
  EXPECT_NE(info.find("(Aufgabe \"" + caption + "\", Datensatz 3): ", script), std::string::npos)
      << info;
  EXPECT_TRUE(info.ends_with("\n\nAufgabe \"" + caption +
                             "\" ist bei Datensatz 3 gescheitert; davor wurden 2 Datensätze "
                             "geschrieben (der letzte war Datensatz 2); weiter mit: ketrova run " +
                             (Demo() + "/demo.cpf").toStdString() + " --job \"" + caption +
                             "\" --from 3"))
      << info;
}

}  // namespace
}  // namespace kor::testing
