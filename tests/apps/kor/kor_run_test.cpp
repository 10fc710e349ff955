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

#include "kor_fixture.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"

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

}  // namespace
}  // namespace kor::testing
