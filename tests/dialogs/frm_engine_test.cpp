// The run dialog on small real projects: SQLite files made in a temporary
// folder, run through the start button as a user does, with the boxes of the
// run answered through ModalAnswerer.
#include "dialogs/frm_engine.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "core/dialogs.h"
#include "dialogs/qt_converter_dialogs.h"
#include "dialogs/qt_user_interface.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "modal_answerer.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "sqlite_files.h"
#include "stores/database.h"
#include "stores/field_types.h"
#include "support/files.h"

namespace ketrova::dialogs {
namespace {

using testing::ExecuteSqlite;
using testing::ModalAnswerer;

const char* kCopyScript =
    "Function txConvertMain()\r\n"
    "\tDestination.Fields(\"Nr\") = Source.Fields(\"Nr\")\r\n"
    "\tDestination.Fields(\"Name\") = Source.Fields(\"Name\")\r\n"
    "End Function\r\n";

class FrmEngineTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(temp_.isValid());
    ASSERT_FALSE(temp_.path().contains('.')) << "log names are cut at the first dot";
    ui::SetCurrent(std::make_shared<QtUserInterface>());
    project_.FileName = Path("projekt.cpf");
    project_.CheckMainScriptOnStart();
    project_.CheckMainScriptOnEnd();
    project_.SourceDataBase().DatabaseType = dbtODBC;
    project_.SourceDataBase().DriverName = "SQLite3";
    project_.SourceDataBase().DatabaseName = Path("quelle.db");
    project_.DestDataBase().DatabaseType = dbtODBC;
    project_.DestDataBase().DriverName = "SQLite3";
    project_.DestDataBase().DatabaseName = Path("ziel.db");
    form_.SetConverter(&project_);
  }

  void TearDown() override {
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("XDG_DATA_HOME");
    ui::SetCurrent(nullptr);
    while (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
  }

  std::string Path(const std::string& name) const {
    return (temp_.path() + "/" + QString::fromStdString(name)).toStdString();
  }

  // Source table Kunden (Nr, Name) with rows 1..count and an empty target Ziel.
  void Tables(int count) {
    std::vector<std::string> sql = {"CREATE TABLE Kunden (Nr INTEGER PRIMARY KEY, Name TEXT)"};
    for (int i = 1; i <= count; ++i)
      sql.push_back("INSERT INTO Kunden VALUES (" + std::to_string(i) + ", 'Name " +
                    std::to_string(i) + "')");
    ExecuteSqlite(Path("quelle.db"), sql);
    ExecuteSqlite(Path("ziel.db"), {"CREATE TABLE Ziel (Nr INTEGER PRIMARY KEY, Name TEXT)"});
  }

  CJob& AddJob(const std::string& target, const std::string& script) {
    CJob& job = project_.Jobs().Add();
    job.Caption = "Kunden";
    job.ObjectName = "Kunden";
    job.Enabled = true;
    job.ScriptUserDefined = true;
    job.Script = script;
    for (CJobItem* side : {&job.JobSource(), &job.JobDest()}) {
      const bool dest = side == &job.JobDest();
      side->ItemObjectName = dest ? target : "Kunden";
      side->Name = side->ItemObjectName;
      side->JobType = jitTableView;
      side->KeyField = "Nr";
      for (auto [name, type] : {std::pair("Nr", 3), std::pair("Name", 202)}) {
        CJobItemColumn& c = side->Columns().Add();
        c.Quote = GetFieldDefault(type, c.DefaultValue);
        c.Name = c.DisplayName = name;
        c.Visible = true;
        c.FieldType = type;
        if (dest) c.SourceColumn = c.TargetColumn = name;
      }
    }
    return job;
  }

  int TargetRows() const {
    auto connection = std::make_shared<ado::Connection>();
    connection->Open("Driver={SQLite3};Database=" + Path("ziel.db"));
    ado::RecordsetPtr rs = connection->Execute("SELECT COUNT(*) FROM Ziel");
    int n = rs->GetFields().Item(0).Value().ToLong();
    rs->Close();
    connection->Close();
    return n;
  }

  template <typename T>
  T* Child(const char* name) {
    T* child = form_.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(child, nullptr) << name;
    return child;
  }
  std::string Info() { return Child<QPlainTextEdit>("EditInfo")->toPlainText().toStdString(); }
  bool Shown(const char* name) { return !Child<QWidget>(name)->isHidden(); }

  // Shows the window without a loop of its own and presses cmdStart.
  void Start() {
    form_.Prepare(project_.FileName);
    form_.show();
    Child<QPushButton>("cmdStart")->click();
  }

  // The state every finished run leaves: only "&Schliessen" to press.
  void ExpectFinished() {
    EXPECT_FALSE(form_.Running());
    EXPECT_FALSE(Shown("cmdStart"));
    EXPECT_FALSE(Shown("cmdCancelConvert"));
    EXPECT_TRUE(Shown("cmdCancel"));
    EXPECT_EQ(Child<QPushButton>("cmdCancel")->text(), "&Schliessen");
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  }

  std::string LogText() const {
    QString log = QString::fromStdString(ReadTextFile(Path("projekt.LOG")));
    return log.replace("\r\n", "\n").toStdString();
  }

  QTemporaryDir temp_;
  CConverter project_;
  ModalAnswerer answerer_;
  FrmEngine form_;
};

TEST_F(FrmEngineTest, BeforeARunTheWindowOffersStartAndTheFile) {
  form_.Prepare(project_.FileName);
  EXPECT_EQ(form_.windowTitle(), "Datenkonvertierung");
  EXPECT_EQ(Child<QLineEdit>("EditFileName")->text().toStdString(), project_.FileName);
  EXPECT_FALSE(Shown("cmdImportFile"));
  EXPECT_TRUE(Shown("cmdStart"));
  EXPECT_TRUE(Shown("cmdCancel"));
  EXPECT_FALSE(Shown("cmdCancelConvert"));
  EXPECT_FALSE(Shown("LabelSendLogFile"));
  EXPECT_EQ(Child<QLabel>("LabelHeaderBig")->text(),
            "Wählen Sie hier die Projektdatei aus und klicken Sie auf die Schaltfläche "
            "\"Start\".");
}

TEST_F(FrmEngineTest, ImportFileOnlyChangesTheField) {
  FrmEngine form;
  form.SetConverter(&project_);
  form.Prepare("");
  auto* import = form.findChild<QPushButton*>("cmdImportFile");
  ASSERT_FALSE(import->isHidden());
  const std::string other = Path("anderes.cpf");
  QFile(QString::fromStdString(other)).open(QIODevice::WriteOnly);
  answerer_.ChooseFile(other);
  import->click();
  EXPECT_EQ(form.findChild<QLineEdit*>("EditFileName")->text().toStdString(), other);
  EXPECT_EQ(project_.FileName, Path("projekt.cpf"));
}

TEST_F(FrmEngineTest, SuccessfulRunSaysSoAndLeavesOnlyClose) {
  Tables(3);
  AddJob("Ziel", kCopyScript);
  answerer_.PressButton("vbOK");  // the closing note on the event log
  Start();
  EXPECT_EQ(Info(), "Konvertierung beendet !");
  EXPECT_FALSE(Shown("LabelSendLogFile"));
  EXPECT_FALSE(Shown("ProgressBar"));
  ExpectFinished();
  EXPECT_EQ(TargetRows(), 3);
  EXPECT_EQ(answerer_.Pending(), 0);
}

TEST_F(FrmEngineTest, RefusedRecordsAreNotedBelowTheClosingText) {
  Tables(3);
  ExecuteSqlite(Path("ziel.db"), {"DROP TABLE Ziel",
                                  "CREATE TABLE Ziel (Nr INTEGER PRIMARY KEY, Name TEXT "
                                  "CHECK (Name <> 'Name 2'))"});
  AddJob("Ziel", kCopyScript);
  answerer_.PressButton("vbOK");
  Start();
  EXPECT_EQ(Info(), "Konvertierung beendet !\n\n1 Datensatz wurde vom Ziel abgelehnt und in " +
                        Path("projekt-abgelehnt.csv") + " gespeichert.");
  ExpectFinished();
  EXPECT_EQ(TargetRows(), 2);
}

TEST_F(FrmEngineTest, RunWhoseLogCannotBeWrittenShowsWhatTheRunAnswered) {
  Tables(1);
  AddJob("Ziel", kCopyScript);
  // The project's folder is gone: the log beside it cannot be opened.
  project_.FileName = Path("weg/projekt.cpf");
  answerer_.PressButton("vbOK");
  Start();
  EXPECT_FALSE(Info().empty());
  EXPECT_NE(Info(), "Konvertierung beendet !");
  ExpectFinished();
  EXPECT_EQ(TargetRows(), 0);
}

TEST_F(FrmEngineTest, JobFailingOnItsOwnTextShowsTheLogWithoutTheLink) {
  // SQLite keeps names beginning with sqlite_ for itself: the target table
  // cannot be made, the job fails, and no record does.
  Tables(2);
  ASSERT_EQ(project_.SourceDataBase().Reload(), "");
  AddJob("sqlite_ziel", kCopyScript).CancelOnError = true;
  answerer_.PressButton("vbOK");  // the closing note on the event log
  Start();
  // Below the log, the note on where the job stopped, as the command line has it.
  EXPECT_EQ(Info(), LogText() +
                        "\n\nAufgabe \"Kunden\" ist gescheitert, bevor ein Datensatz "
                        "geschrieben wurde.");
  EXPECT_NE(Info().find("Bearbeite Kunden"), std::string::npos) << Info();
  EXPECT_FALSE(Shown("LabelSendLogFile"));
  ExpectFinished();
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text,
            "Es sind Meldungen während der Konvertierung geschrieben worden, \r\nüberprüfen Sie "
            "bitte das Ereignisprotokoll !");
}

TEST_F(FrmEngineTest, FailedRecordShowsTheLogAndTheLinkMailsIt) {
  const QString config = temp_.path() + "/config";
  const QString data = temp_.path() + "/data";
  QDir().mkpath(config + "/ketrova");
  QFile ini(config + "/ketrova/registry.ini");
  ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
  ini.write("[Ketrova]\nSupportMail=support@example.org\n");
  ini.close();
  setenv("XDG_CONFIG_HOME", config.toUtf8().constData(), 1);
  setenv("XDG_DATA_HOME", data.toUtf8().constData(), 1);

  Tables(3);
  AddJob("Ziel",
         "Function txConvertMain()\r\n"
         "\tDestination.Fields(\"Nr\") = Source.Fields(\"Nr\")\r\n"
         "\tIf Source.Fields(\"Nr\") = 2 Then Destination.Fields(\"Name\") = 1 / 0\r\n"
         "End Function\r\n");
  answerer_.PressButton("vbOK");  // the closing note on the event log
  Start();
  // The script error's place follows the log: line, column, job and record.
  EXPECT_EQ(Info(), LogText() +
                        "\n\nScriptfehler in Zeile 3, Spalte 34 (Aufgabe \"Kunden\", "
                        "Datensatz 2): Division durch Null");
  EXPECT_TRUE(Shown("LabelSendLogFile"));
  ExpectFinished();
  EXPECT_EQ(TargetRows(), 2);

  answerer_.PressButton("vbOK");
  auto* link = Child<QLabel>("LabelSendLogFile");
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(2, 2), QPointF(2, 2), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QMouseEvent release(QEvent::MouseButtonRelease, QPointF(2, 2), QPointF(2, 2), Qt::LeftButton,
                      Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(link, &press);
  QApplication::sendEvent(link, &release);
  ASSERT_FALSE(answerer_.Seen().empty());
  EXPECT_EQ(answerer_.Seen().back().text,
            "Die E-Mail mit der Protokolldatei wurde in Ihren Postausgang gelegt.\r\nAktivieren "
            "Sie bitte das Senden.");

  const QDir outbox(data + "/ketrova/outbox/new");
  const QStringList mails = outbox.entryList(QDir::Files);
  ASSERT_EQ(mails.size(), 1);
  QFile mail(outbox.filePath(mails.front()));
  ASSERT_TRUE(mail.open(QIODevice::ReadOnly));
  const std::string message = mail.readAll().toStdString();
  EXPECT_NE(message.find("To: support@example.org\r\n"), std::string::npos) << message;
  EXPECT_NE(message.find("Subject: Logfileanalyse\r\n"), std::string::npos) << message;
  EXPECT_NE(message.find(ReadTextFile(Path("projekt.LOG"))), std::string::npos);
}

TEST_F(FrmEngineTest, CancelDuringTheRecordsAsksAndTheWindowCannotBeClosedMeanwhile) {
  Tables(300);
  AddJob("Ziel", kCopyScript);
  struct During {
    bool startShown = true, closeShown = true, cancelShown = false, openAfterEscape = false,
         openAfterClose = false;
  } during;
  // Runs at the run's first yield.
  QTimer::singleShot(0, &form_, [&] {
    during.startShown = Shown("cmdStart");
    during.closeShown = Shown("cmdCancel");
    during.cancelShown = Shown("cmdCancelConvert");
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(&form_, &escape);
    during.openAfterEscape = form_.isVisible();
    form_.close();
    during.openAfterClose = form_.isVisible();
    Child<QPushButton>("cmdCancelConvert")->click();
  });
  answerer_.PressButton("vbYes");
  Start();
  EXPECT_FALSE(during.startShown);
  EXPECT_FALSE(during.closeShown);
  EXPECT_TRUE(during.cancelShown);
  EXPECT_TRUE(during.openAfterEscape);
  EXPECT_TRUE(during.openAfterClose);
  ASSERT_FALSE(answerer_.Seen().empty());
  EXPECT_EQ(answerer_.Seen()[0].text, "Möchten Sie wirklich die Verarbeitung abbrechen ?");
  EXPECT_EQ(answerer_.Seen()[0].buttons, (std::vector<std::string>{"vbYes", "vbNo"}));
  EXPECT_LT(TargetRows(), 300);
  ExpectFinished();
  // After the run Escape closes the window again.
  QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  QApplication::sendEvent(&form_, &escape);
  EXPECT_FALSE(form_.isVisible());
}

TEST_F(FrmEngineTest, ExecuteOfTheProjectOpensTheWindowWithItsFile) {
  SetConverterDialogs(std::make_shared<QtConverterDialogs>());
  std::string file;
  bool importShown = true;
  answerer_.Act([&](QWidget& window) {
    file = window.findChild<QLineEdit*>("EditFileName")->text().toStdString();
    importShown = !window.findChild<QWidget*>("cmdImportFile")->isHidden();
    window.findChild<QPushButton*>("cmdCancel")->click();
  });
  EXPECT_EQ(project_.Execute(), "");
  SetConverterDialogs(nullptr);
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].name, "frmEngine");
  EXPECT_EQ(answerer_.Seen()[0].title, "Datenkonvertierung");
  EXPECT_EQ(file, project_.FileName);
  EXPECT_FALSE(importShown);
}

}  // namespace
}  // namespace ketrova::dialogs
