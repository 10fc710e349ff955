// What the plug-in does on the host's events: opening a project through the
// toolbar, failures, the version box, events of other plug-ins, and the two
// pseudo documents without a project.
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include "core/converter.h"
#include "core/logs.h"
#include "kor_fixture.h"
#include "main_window.h"
#include "message_pane.h"
#include "navigator_widget.h"
#include "qt_texts.h"
#include "tool_bar.h"

namespace kor::testing {
namespace {

const char* kDemoInfo = "Projekt : Demo: Kunden und Aufträge (2 / 2 Aufgaben )";
const char* kHints = "Es sind Hinweise vorhanden, beachten Sie bitte das Ereignisprotokoll. ";

// Notes which documents were open whenever a message box with `text` showed.
class BoxWatch {
 public:
  BoxWatch(KorApplication& host, QString text) : host_(host), text_(std::move(text)) {
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (box && box->text() == text_ && documents_.empty())
        documents_ = host_.Window().DocumentNames();
    });
    timer_.start(5);
  }
  const std::vector<std::string>& Documents() const { return documents_; }

 private:
  KorApplication& host_;
  QString text_;
  QTimer timer_;
  std::vector<std::string> documents_;
};

TEST_F(KorTest, OpenThroughTheToolbar) {
  KorApplication& host = StartHost();
  answerer_.ChooseFile((Demo() + "/demo.cpf").toStdString());
  Press("ProjectOpen");
  EXPECT_EQ(answerer_.Pending(), 0);
  for (const char* key : {"ProjectEdit", "ProjectSave", "ProjectRun"}) EXPECT_TRUE(Enabled(key));
  EXPECT_EQ(Info(), kDemoInfo);
  EXPECT_EQ(host.Window().DocumentNames(), (std::vector<std::string>{"KetrovatorCTL.frmJobs"}));
  // Reload showed the navigator afresh.
  EXPECT_EQ(host.Records().size(), 16u);
  EXPECT_EQ(host.Object("Converter")->Logs().Count(), 0) << MessageTexts();
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].title, "Projektdatei öffnen");
  EXPECT_EQ(answerer_.Seen()[0].directory, AppFolder() + "Projects");
}

TEST_F(KorTest, ProjectOnTheCommandLineOpensAsThroughTheToolbar) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  EXPECT_EQ(Info(), kDemoInfo);
  EXPECT_TRUE(Enabled("ProjectRun"));
  EXPECT_EQ(host.Window().DocumentNames(), (std::vector<std::string>{"KetrovatorCTL.frmJobs"}));
  EXPECT_TRUE(answerer_.Seen().empty());
}

TEST_F(KorTest, QtsOwnTextsAreGerman) {
  if (!InstallGermanQtTexts()) GTEST_SKIP() << "no German translation of Qt installed";
  StartHost();
  QString cancel;
  answerer_.Act([&](QWidget& window) {
    if (auto* buttons = window.findChild<QDialogButtonBox*>())
      cancel = buttons->button(QDialogButtonBox::Cancel)->text();
    qobject_cast<QDialog*>(&window)->reject();
  });
  Press("ProjectOpen");
  EXPECT_EQ(cancel, "Abbrechen");
}

TEST_F(KorTest, CancelledOpenLeavesEverythingAsItWas) {
  KorApplication& host = StartHost();
  answerer_.Cancel();
  Press("ProjectOpen");
  EXPECT_FALSE(Enabled("ProjectRun"));
  EXPECT_TRUE(host.Window().DocumentNames().empty());
  EXPECT_EQ(host.Records().size(), 8u);  // no Reload
  EXPECT_EQ(Info(), "");
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(KorTest, FailedLoadKeepsTheButtonsAndShowsTheCriticalBox) {
  QFile broken(Demo() + "/kaputt.CPF");
  ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
  broken.write("<?xml version=\"1.0\"?><Project><PROJECTNAME>x</Project>");
  broken.close();
  KorApplication& host = StartHost();
  answerer_.ChooseFile((Demo() + "/kaputt.CPF").toStdString());
  answerer_.PressButton("vbOK");
  Press("ProjectOpen");
  ASSERT_EQ(answerer_.Seen().size(), 2u) << MessageTexts();
  const auto& box = answerer_.Seen()[1];
  EXPECT_EQ(box.icon, 16);
  EXPECT_EQ(box.title, "Ketrova");
  // The look before the load gives the parser's reason and place, then the
  // load's own text follows, as on the command line.
  const std::string path = (Demo() + "/kaputt.CPF").toStdString();
  EXPECT_EQ(box.text.rfind("Dies ist keine gültige Projektdatei: " + path +
                               "\nGrund: schließendes Element passt nicht zum öffnenden (Zeile 1, "
                               "Spalte ",
                           0),
            0u)
      << box.text;
  EXPECT_NE(box.text.find("\n\nDas Dokument konnte nicht gelesen werden. \r\nFehlertext : "),
            std::string::npos)
      << box.text;
  // The bare file name: the folder is the one the user just chose.
  EXPECT_TRUE(box.text.ends_with("\r\nDateiname  : kaputt.CPF")) << box.text;
  // Reload ran before the load; the buttons keep their state.
  EXPECT_EQ(host.Records().size(), 16u);
  EXPECT_FALSE(Enabled("ProjectRun"));
  EXPECT_TRUE(host.Window().DocumentNames().empty());

  // After a good load, a failing one does not disable the buttons again.
  answerer_.ChooseFile((Demo() + "/demo.cpf").toStdString());
  Press("ProjectOpen");
  EXPECT_TRUE(Enabled("ProjectRun"));
  answerer_.ChooseFile((Demo() + "/kaputt.CPF").toStdString());
  answerer_.PressButton("vbOK");
  Press("ProjectOpen");
  EXPECT_TRUE(Enabled("ProjectRun"));
  EXPECT_EQ(answerer_.Pending(), 0);

  // A binary file is not loaded at all: its bytes never reach the box.
  QFile picture(Demo() + "/bild.CPF");
  ASSERT_TRUE(picture.open(QIODevice::WriteOnly));
  picture.write(QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR<Project>", 24));
  picture.close();
  const std::size_t seen = answerer_.Seen().size();
  answerer_.ChooseFile((Demo() + "/bild.CPF").toStdString());
  answerer_.PressButton("vbOK");
  Press("ProjectOpen");
  ASSERT_EQ(answerer_.Seen().size(), seen + 2) << MessageTexts();
  EXPECT_EQ(answerer_.Seen().back().icon, 16);
  EXPECT_EQ(answerer_.Seen().back().text,
            "Dies ist keine gültige Projektdatei: " + (Demo() + "/bild.CPF").toStdString() +
                "\nGrund: die Datei enthält Binärdaten");
  EXPECT_TRUE(Enabled("ProjectRun"));

  // Well-formed XML of another kind loads empty, with its note first.
  QFile other(Demo() + "/andere.CPF");
  ASSERT_TRUE(other.open(QIODevice::WriteOnly));
  other.write("<?xml version=\"1.0\"?><ANDERES/>");
  other.close();
  answerer_.ChooseFile((Demo() + "/andere.CPF").toStdString());
  answerer_.PressButton("vbOK");
  answerer_.PressButton("vbOK");  // the event log's hints that follow the load
  Press("ProjectOpen");
  ASSERT_GE(answerer_.Seen().size(), seen + 4) << MessageTexts();
  const auto& note = answerer_.Seen()[seen + 3];
  EXPECT_EQ(note.icon, 48);
  EXPECT_EQ(note.text,
            "Dies ist keine gültige Projektdatei: " + (Demo() + "/andere.CPF").toStdString() +
                "\nGrund: das Wurzelelement heißt <ANDERES>, nicht <Project>; sie wird "
                "leer geladen");
}

TEST_F(KorTest, LoadWithLogEntriesShowsTheHintsAfterTheJobsDocument) {
  // Without its data folder, the demo's source cannot open: the load goes on
  // and notes that in the event log.
  QDir(Demo() + "/daten").removeRecursively();
  KorApplication& host = StartHost();
  BoxWatch watch(host, kHints);
  answerer_.ChooseFile((Demo() + "/demo.cpf").toStdString());
  answerer_.PressButton("vbOK");
  Press("ProjectOpen");
  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(answerer_.Seen()[1].text, kHints);
  EXPECT_EQ(answerer_.Seen()[1].icon, 64);
  EXPECT_EQ(answerer_.Seen()[1].title, "Ketrova");
  EXPECT_EQ(watch.Documents(), (std::vector<std::string>{"KetrovatorCTL.frmJobs"}));
  EXPECT_GE(host.Object("Converter")->Logs().Count(), 1);
  EXPECT_TRUE(Enabled("ProjectRun"));
}

TEST_F(KorTest, VersionFromTheHelpMenuShowsOnePointZero) {
  KorApplication& host = StartHost();
  answerer_.PressButton("vbOK");
  host.Window().findChild<QAction*>("mnuVersionKetrovator")->trigger();
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text, "Die Version dieses PlugIn (Ketrovator) ist: 1.0");
  EXPECT_EQ(answerer_.Seen()[0].icon, 0);
  // The plug-in's own version is the component's.
  (void)host;
}

TEST_F(KorTest, EventsOfAnotherPlugInChangeNothing) {
  KorApplication& host = StartHost();
  std::size_t messages = host.Window().Messages().Messages().size();
  for (const char* key : {"PROJECTOPEN", "PROJECTNEW", "VERSION"}) {
    host.RaiseClick(2, 1, std::string("Fremd.") + key, "Fremd");
    host.RaiseClick(1, 1, std::string("Fremd.") + key, "Fremd");
  }
  bool cancel = host.RaiseWindow(3, 2, nullptr, "Fremd");
  EXPECT_FALSE(cancel);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(host.Window().Messages().Messages().size(), messages);
  EXPECT_TRUE(answerer_.Seen().empty());
  EXPECT_EQ(host.Records().size(), 8u);

  // "OnLoad" is addressed to every plug-in, in any case and with blanks.
  answerer_.PressButton("vbOK");
  host.RaiseClick(1, 1, "Fremd.VERSION", "  onload ");
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text, "Die Version dieses PlugIn (Ketrovator) ist: 1.0");
  host.RaiseClick(1, 1, "KETROVATOR", " ketrovator");  // no ".": the whole text is the key
  EXPECT_EQ(host.Records().size(), 16u);
}

TEST_F(KorTest, SourceAndTargetWithoutAProjectOpenNothing) {
  KorApplication& host = StartHost();
  const std::string question =
      "Für diese Operation müssen Sie zuerst ein Projekt Neu anlegen, \r\noder ein bestehendes "
      "öffnen. \r\n\r\nMöchten Sie jetzt ein neues Projekt anlegen ?";
  answerer_.PressButton("vbNo");
  // A click on the navigator entry, as the user makes it.
  QListWidgetItem* source =
      host.Window().Navigator().FindEntry("Ketrovator.frmProjectSource")->Item();
  emit source->listWidget()->itemClicked(source);
  // Yes runs the new-project wizard, whose options dialog is cancelled here;
  // the answer stays no project either way.
  answerer_.PressButton("vbYes");
  answerer_.Cancel();
  host.OpenDocument("Ketrovator.frmProjectDestination");
  ASSERT_EQ(answerer_.Seen().size(), 3u);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(answerer_.Seen()[i].text, question);
    EXPECT_EQ(answerer_.Seen()[i].icon, 48);
  }
  EXPECT_EQ(answerer_.Seen()[2].name, "frmProjekt");
  EXPECT_EQ(answerer_.Seen()[2].problem, "");
  EXPECT_TRUE(host.Window().DocumentNames().empty());
  EXPECT_FALSE(Enabled("ProjectRun"));
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);

  // Ordinary documents open as pages with their title until their component
  // exists; the first-steps entry shows its page.
  host.OpenDocument("KetrovatorCTL.frmLogs");
  host.OpenDocument("KetrovatorCTL.frmFirstSteps");
  EXPECT_EQ(host.Window().DocumentNames(),
            (std::vector<std::string>{"KetrovatorCTL.frmLogs", "KetrovatorCTL.frmFirstSteps"}));
  EXPECT_EQ(host.Window().Documents().tabText(0), "Ereignisprotokoll");
}

TEST_F(KorTest, AFailureInsideAnEventReachesTheMessagePane) {
  KorApplication& host = StartHost();
  // Asked for its toolbars a second time, the plug-in adds buttons whose keys
  // the host has already: the host refuses, and the event reports it.
  host.RaiseWindow(3, 1, nullptr, "Ketrovator");
  const Message& last = host.Window().Messages().Messages().back();
  EXPECT_TRUE(last.error);
  EXPECT_EQ(last.plugInName, "Ketrovator");
  EXPECT_EQ(
      last.text,
      "\r\nEin Fehler ist aufgetreten!\r\n\r\nFehler Nr.: 35602\r\nBeschreibung: Schlüssel ist "
      "in dieser Auflistung nicht eindeutig\r\n\r\nQuelle: \r\n\r\n");
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(host.Window().MainToolbar().ButtonCount(), 5);
  // The next event works as before.
  answerer_.ChooseFile((Demo() + "/demo.cpf").toStdString());
  Press("ProjectOpen");
  EXPECT_EQ(Info(), kDemoInfo);
}

}  // namespace
}  // namespace kor::testing
