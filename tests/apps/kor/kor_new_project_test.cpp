// "Neu" from the toolbar through the plug-in's dialogs, as a user makes a
// project: the options with the project file, the source store (the demo's
// folder of CSV files), the destination store (an SQLite file by driver
// name); the project is saved and its jobs listed.
#include <QApplication>
#include <QComboBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "core/converter.h"
#include "core/enums.h"
#include "engine/script_modules.h"
#include "jobs/jobs.h"
#include "kor_fixture.h"
#include "main_window.h"
#include "stores/database.h"

namespace kor::testing {
namespace {

template <typename T>
T* Child(QWidget& window, const char* name) {
  T* child = window.findChild<T*>(name);
  EXPECT_NE(child, nullptr) << name;
  return child;
}

void ChoosePage(QWidget& window, int type) {
  auto* list = Child<QListWidget>(window, "vbaExplorer");
  for (int i = 0; i < list->count(); ++i) {
    if (list->item(i)->data(Qt::UserRole).toInt() != type) continue;
    list->setCurrentItem(list->item(i));
    emit list->itemClicked(list->item(i));
    return;
  }
  ADD_FAILURE() << "no page " << type;
}

TEST_F(KorTest, NewProjectThroughTheDialogs) {
  KorApplication& host = StartHost();
  const QString file = Demo() + "/neu.CPF";
  // The answers in the order the windows come, a chooser opened from a
  // dialog coming before the dialog's next step.
  // The project options: a description and a new project file.
  answerer_.Act([&](QWidget& window) {
    Child<QLineEdit>(window, "EditProjektname")->setText("Neues Projekt");
    Child<QPushButton>(window, "cmdOpenFile")->click();
    Child<QPushButton>(window, "ButtonOK")->click();
  });
  answerer_.ChooseFile(file.toStdString());
  // The source: the folder of text files.
  answerer_.Act([&](QWidget& window) {
    ChoosePage(window, ketrova::dbtText);
    Child<QPushButton>(window, "cmdOpenFileText")->click();
    Child<QPushButton>(window, "ButtonOK")->click();
  });
  answerer_.ChooseFolder((Demo() + "/daten").toStdString());
  // The destination: an SQLite file through the ODBC driver's name.
  answerer_.Act([&](QWidget& window) {
    ChoosePage(window, ketrova::dbtODBC);
    Child<QComboBox>(window, "cboDrivers")->setEditText("SQLite3");
    Child<QLineEdit>(window, "txtDatabase")->setText(Demo() + "/neu.sqlite");
    Child<QPushButton>(window, "ButtonOK")->click();
  });
  Press("ProjectNew");

  for (const auto& seen : answerer_.Seen())
    EXPECT_TRUE(seen.problem.empty()) << seen.name << ": " << seen.problem << " " << seen.text;
  EXPECT_EQ(answerer_.Pending(), 0);
  auto project = host.Object("Converter");
  EXPECT_EQ(project->ProjectName, "Neues Projekt");
  EXPECT_EQ(project->EditMode, ketrova::edEdit);
  EXPECT_TRUE(QFileInfo::exists(file));
  EXPECT_EQ(project->SourceDataBase().DatabaseType, ketrova::dbtText);
  EXPECT_EQ(project->DestDataBase().DatabaseType, ketrova::dbtODBC);
  // One job per file of the folder.
  ASSERT_EQ(project->Jobs().Count(), 2);
  EXPECT_TRUE(Enabled("ProjectRun"));
  EXPECT_EQ(Info(), "Projekt : Neues Projekt (2 / 2 Aufgaben )");
  EXPECT_EQ(host.Window().DocumentNames(), (std::vector<std::string>{"KetrovatorCTL.frmJobs"}));
}

TEST_F(KorTest, SourceOfAnUnknownKindRemakesTheJobsAndDropsTheModules) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  auto project = host.Object("Converter");
  ASSERT_EQ(project->Jobs().Count(), 2);
  // A store of a kind the dialog has no page for (an XML store of an old
  // project): the dialog says so and counts as confirmed, so the source is
  // read again (through the connection still open) and the jobs are made
  // anew from its tables, while the modules go.
  project->SourceDataBase().DatabaseType = ketrova::dbtXML;
  answerer_.PressButton("vbOK");  // "... konnte nicht ermittelt werden."
  answerer_.PressButton("vbOK");  // the store's error
  host.OpenDocument("Ketrovator.frmProjectSource");
  ASSERT_GE(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text, "Der gewählte Datenspeicher konnte nicht ermittelt werden.");
  ASSERT_EQ(project->Jobs().Count(), 2);
  for (const ketrova::CJob& job : project->Jobs()) {
    EXPECT_NE(job.Caption, "Aufträge in Euro");  // the hand-made job is gone
    EXPECT_FALSE(job.ScriptUserDefined);
  }
  EXPECT_EQ(project->ScriptModules().Count(), 0);
  // The jobs document shows the emptied list.
  EXPECT_EQ(host.Window().DocumentNames(), (std::vector<std::string>{"KetrovatorCTL.frmJobs"}));
}

}  // namespace
}  // namespace kor::testing
