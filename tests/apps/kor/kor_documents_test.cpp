// The documents of the navigator, driven in the real host on a copy of the
// demo project: the job list with its buttons and the information line, the
// event log, the script modules, the start and end scripts and the first
// steps.
#include <QAbstractItemModel>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTextBrowser>

#include "core/converter.h"
#include "core/logs.h"
#include "dialogs/script_editor.h"
#include "engine/script_modules.h"
#include "first_steps_document.h"
#include "jobs/jobs.h"
#include "jobs_document.h"
#include "kor_fixture.h"
#include "logs_document.h"
#include "main_window.h"
#include "modules_document.h"
#include "script_document.h"
#include "stores/database.h"

namespace kor::testing {
namespace {

template <typename T>
T& Open(KorApplication& host, const std::string& name) {
  host.OpenDocument(name);
  auto* document = qobject_cast<T*>(host.Window().Document(name));
  EXPECT_NE(document, nullptr) << name;
  return *document;
}

void Click(QWidget& document, const char* button) {
  auto* b = document.findChild<QPushButton*>(button);
  ASSERT_NE(b, nullptr) << button;
  b->click();
}

TEST_F(KorTest, JobListButtonsAndTheInformationLine) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  auto project = host.Object("Converter");
  auto& jobs = Open<JobsDocument>(host, "KetrovatorCTL.frmJobs");
  QAbstractItemModel& model = *jobs.List().model();
  ASSERT_EQ(model.rowCount(), 2);
  EXPECT_EQ(model.index(0, 2).data().toString(), "Kunden übernehmen");
  EXPECT_EQ(model.index(0, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);

  Click(jobs, "cmdDeSelectAll");
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (0 / 2 Aufgaben )");
  EXPECT_EQ(model.index(1, 0).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
  Click(jobs, "cmdSelectAll");
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (2 / 2 Aufgaben )");

  // A tick alone writes the job; the line follows at the next button.
  ASSERT_TRUE(model.setData(model.index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
  EXPECT_FALSE(project->Jobs().Item(1).Enabled);
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (2 / 2 Aufgaben )");
  jobs.List().selectRow(1);
  answerer_.Cancel();  // the job editor, left with Escape
  Click(jobs, "zsButtonEdit");
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].name, "frmJob");
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (1 / 2 Aufgaben )");
  EXPECT_EQ(project->Jobs().Count(), 2);

  // Delete asks first; No keeps the job.
  jobs.List().selectRow(0);
  answerer_.PressButton("vbNo");
  Click(jobs, "zsButtonDelete");
  EXPECT_EQ(project->Jobs().Count(), 2);
  answerer_.PressButton("vbYes");
  Click(jobs, "zsButtonDelete");
  ASSERT_EQ(answerer_.Seen().size(), 3u);
  EXPECT_EQ(answerer_.Seen()[2].text,
            "Möchten Sie die Aufgabe \"Kunden übernehmen\" wirklich löschen ?");
  EXPECT_EQ(project->Jobs().Count(), 1);
  EXPECT_EQ(model.rowCount(), 1);
  EXPECT_EQ(project->Jobs().Item(1).Caption, "Aufträge in Euro");
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (1 / 1 Aufgaben )");

  // Without a target store, editing says why it cannot.
  project->DestDataBase().DatabaseType = ketrova::dbtUndefined;
  answerer_.PressButton("vbOK");
  jobs.List().selectRow(0);
  Click(jobs, "zsButtonNew");
  ASSERT_EQ(answerer_.Seen().size(), 4u);
  EXPECT_EQ(answerer_.Seen()[3].text,
            "Bevor Sie eine Aufgabe bearbeiten können, müssen Sie eine Zieldatenbank wählen !");
  EXPECT_EQ(project->Jobs().Count(), 1);
}

TEST_F(KorTest, EventLogListsCopiesAndClears) {
  QDir(Demo() + "/daten").removeRecursively();
  KorApplication& host = StartHost();
  answerer_.ChooseFile((Demo() + "/demo.cpf").toStdString());
  answerer_.PressButton("vbOK");  // the hints
  Press("ProjectOpen");
  auto project = host.Object("Converter");
  ASSERT_GE(project->Logs().Count(), 1);
  auto& logs = Open<LogsDocument>(host, "KetrovatorCTL.frmLogs");
  auto* view = logs.findChild<QTableView*>("lstLogs");
  ASSERT_EQ(view->model()->rowCount(), project->Logs().Count());
  EXPECT_EQ(view->model()->index(0, 1).data().toString().toStdString(),
            QString::fromStdString(project->Logs().Item(1).Message)
                .replace("\r\n", "\n")
                .trimmed()
                .toStdString());
  Click(logs, "cmdCopy");
  EXPECT_TRUE(QApplication::clipboard()->text().startsWith(
      QString::fromStdString(project->Logs().Item(1).Message)));
  Click(logs, "cmdClear");
  EXPECT_EQ(project->Logs().Count(), 0);
  EXPECT_EQ(view->model()->rowCount(), 0);
}

TEST_F(KorTest, ModulesAndStartScriptAreSavedAndComeBack) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  auto project = host.Object("Converter");
  auto& modules = Open<ModulesDocument>(host, "KetrovatorCTL.frmModules");
  const int before = project->ScriptModules().Count();
  ASSERT_GE(before, 1);

  // Empty and taken names are refused with a word; nothing is added.
  answerer_.EnterText("  ");
  answerer_.PressButton("vbOK");
  Click(modules, "cmdAddModule");
  answerer_.EnterText(project->ScriptModules().Item(1).Name);
  answerer_.PressButton("vbOK");
  Click(modules, "cmdAddModule");
  ASSERT_EQ(answerer_.Seen().size(), 4u);
  EXPECT_EQ(answerer_.Seen()[1].text, "Bitte geben Sie einen Namen für das Modul ein.");
  EXPECT_EQ(answerer_.Seen()[3].text, "Ein Modul mit dem Namen \"" +
                                          project->ScriptModules().Item(1).Name +
                                          "\" ist bereits vorhanden.");
  EXPECT_EQ(project->ScriptModules().Count(), before);

  answerer_.EnterText("Hilfen");
  Click(modules, "cmdAddModule");
  ASSERT_EQ(project->ScriptModules().Count(), before + 1);
  const std::string module = "Function Brutto(x)\r\n\tBrutto = x * 1.19\r\nEnd Function\r\n";
  modules.Editor().SetText(module);
  EXPECT_EQ(project->ScriptModules().Item(before + 1).ScriptText, module);

  auto& start = Open<ScriptDocument>(host, "KetrovatorCTL.frmOnStartProjekt");
  const std::string onStart =
      "Function txOnStart()\r\n\tSession(\"Beginn\") = Now\r\n\ttxOnStart = True\r\nEnd "
      "Function\r\n";
  start.Editor().SetText(onStart);
  EXPECT_EQ(project->ScriptOnStart, onStart);
  auto& end = Open<ScriptDocument>(host, "KetrovatorCTL.frmOnEndProjekt");
  const std::string onEnd = "Function txOnEnd()\r\n\ttxOnEnd = True\r\nEnd Function\r\n";
  end.Editor().SetText(onEnd);

  Press("ProjectSave");
  answerer_.ChooseFile((Demo() + "/demo.cpf").toStdString());
  Press("ProjectOpen");
  EXPECT_EQ(project->ScriptOnStart, onStart);
  EXPECT_EQ(project->ScriptOnEnd, onEnd);
  ASSERT_EQ(project->ScriptModules().Count(), before + 1);
  EXPECT_EQ(project->ScriptModules().Item(before + 1).Name, "Hilfen");
  EXPECT_EQ(project->ScriptModules().Item(before + 1).ScriptText, module);
  // The open documents show the reloaded project.
  EXPECT_EQ(start.Editor().Text(), onStart);
  EXPECT_EQ(modules.List().model()->rowCount(), before + 1);

  // Rename, then delete the module with the question answered.
  modules.List().setCurrentIndex(modules.List().model()->index(before, 0));
  answerer_.EnterText("Steuern");
  Click(modules, "cmdRenameModule");
  EXPECT_EQ(project->ScriptModules().Item(before + 1).Name, "Steuern");
  answerer_.PressButton("vbYes");
  Click(modules, "cmdDeleteModule");
  EXPECT_EQ(project->ScriptModules().Count(), before);

  // Two more, the first of them deleted: the next number is a key the list
  // holds already, and the list refuses it with its own error.
  answerer_.EnterText("Eins");
  Click(modules, "cmdAddModule");
  answerer_.EnterText("Zwei");
  Click(modules, "cmdAddModule");
  modules.List().setCurrentIndex(modules.List().model()->index(before, 0));
  answerer_.PressButton("vbYes");
  Click(modules, "cmdDeleteModule");
  const std::size_t seen = answerer_.Seen().size();
  answerer_.EnterText("Drei");
  answerer_.PressButton("vbOK");
  Click(modules, "cmdAddModule");
  ASSERT_EQ(answerer_.Seen().size(), seen + 2);
  const std::string refused = answerer_.Seen().back().text;
  EXPECT_NE(refused.find("Fehler Nr.: 457"), std::string::npos) << refused;
  EXPECT_NE(refused.find("Ausgeführte Aktion: Modul hinzufügen"), std::string::npos) << refused;
  ASSERT_EQ(project->ScriptModules().Count(), before + 1);
  EXPECT_EQ(project->ScriptModules().Item(before + 1).Name, "Zwei");
}

TEST_F(KorTest, CheckMarksTheFirstErrorOfAStartScript) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  auto& start = Open<ScriptDocument>(host, "KetrovatorCTL.frmOnStartProjekt");
  start.Editor().SetText("Function txOnStart()\r\n\tDim a\r\n\ta = (1 + \r\nEnd Function\r\n");
  Click(start.Editor(), "cmdCheck");
  const auto& check = start.Editor().LastCheck();
  EXPECT_FALSE(check.ok);
  EXPECT_EQ(check.line, 3);
  EXPECT_EQ(check.column, 11);
  EXPECT_EQ(check.description, "Ausdruck erwartet");
  auto* status = start.Editor().findChild<QLabel*>("lblScriptStatus");
  ASSERT_NE(status, nullptr);
  EXPECT_EQ(status->text().toStdString(), "Zeile 3, Spalte 11: Ausdruck erwartet");
  start.Editor().SetText("Function txOnStart()\r\n\ttxOnStart = True\r\nEnd Function\r\n");
  EXPECT_TRUE(start.Editor().Check());
}

TEST_F(KorTest, FirstStepsShowsThePublishedPage) {
  KorApplication& host = StartHost();
  auto& page = Open<FirstStepsDocument>(host, "KetrovatorCTL.frmFirstSteps");
  EXPECT_EQ(page.Browser().source().toLocalFile(), AppFolder() + "HTMRoot/index.HTM");
  EXPECT_TRUE(page.Browser().toPlainText().contains("Erste Schritte"));
  EXPECT_EQ(host.Window().Documents().tabText(0), "Erste Schritte");
}

}  // namespace
}  // namespace kor::testing
