// The job editor end to end in the real host: the jobs document's edit button
// opens frmJob on the demo's first job, a mapping is changed and a filter
// set, OK, the project saved and run from the toolbar; the SQLite file then
// holds exactly the filtered records in the mapped columns. The new button
// through the editor: where a confirmed new job lands, and a new job the list
// refuses after a deletion.
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTableWidget>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "jobs_document.h"
#include "kor_fixture.h"
#include "main_window.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"

namespace kor::testing {
namespace {

// The row of `grid` whose `column` reads `text`; -1 when none.
int RowOf(QTableWidget& grid, int column, const QString& text) {
  for (int row = 0; row < grid.rowCount(); ++row)
    if (grid.item(row, column) && grid.item(row, column)->text() == text) return row;
  return -1;
}

// The control `name` of filter row `row` (the rows share their names and
// carry their number in the property "Index").
template <typename T>
T* OfRow(QWidget& form, const char* name, int row) {
  for (T* control : form.findChildren<T*>(QLatin1String(name)))
    if (control->property("Index").toInt() == row) return control;
  return nullptr;
}

// Row `row` of the filter: `andOr` Ort "ist gleich" `value`.
void FilterRow(QWidget& form, int row, const char* andOr, const char* value) {
  OfRow<QComboBox>(form, "cboFilterAndOr", row)->setCurrentText(QString::fromUtf8(andOr));
  OfRow<QComboBox>(form, "cboFilterColumns", row)->setCurrentText(QStringLiteral("Ort"));
  OfRow<QComboBox>(form, "cboFilterOperator", row)->setCurrentText(QStringLiteral("ist gleich"));
  OfRow<QLineEdit>(form, "EditFilterValue", row)->setText(QString::fromUtf8(value));
}

TEST_F(KorTest, AJobEditedInTheEditorRunsWithItsMappingAndFilter) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  auto project = host.Object("Converter");
  host.OpenDocument("KetrovatorCTL.frmJobs");
  auto* jobs = qobject_cast<JobsDocument*>(host.Window().Document("KetrovatorCTL.frmJobs"));
  ASSERT_NE(jobs, nullptr);
  jobs->List().selectRow(0);

  std::string problem = "editor not reached";
  answerer_.Act([&](QWidget& window) {
    if (window.objectName() != "frmJob") return;
    QWidget* form = &window;
    problem.clear();
    // "Name" is fed by "Vorname"; "Vorname" by nothing.
    auto* sources = form->findChild<QTableWidget*>("GridFieldMergeSource");
    auto* targets = form->findChild<QTableWidget*>("GridFieldMergeTarget");
    const int vorname = RowOf(*sources, 0, "Vorname");
    const int name = RowOf(*targets, 1, "Name");
    const int vornameTarget = RowOf(*targets, 1, "Vorname");
    if (vorname < 0 || name < 0 || vornameTarget < 0) {
      problem = "mapping rows missing";
    } else {
      sources->selectRow(vorname);
      targets->selectRow(name);
      form->findChild<QPushButton*>("cmdCopySourceColumn2TargetColumn")->click();
      targets->selectRow(vornameTarget);
      form->findChild<QPushButton*>("cmdClearTargetColumn")->click();
    }
    form->findChild<QRadioButton*>("OptionFilterOn")->setChecked(true);
    FilterRow(*form, 0, "AND", "München");
    FilterRow(*form, 1, "OR", "Hamburg");
    form->findChild<QPushButton*>("ButtonOK")->click();
    if (form->isVisible()) problem = "OK did not close the editor";
  });
  auto* edit = jobs->findChild<QPushButton*>("zsButtonEdit");
  ASSERT_NE(edit, nullptr);
  edit->click();
  ASSERT_EQ(problem, "");
  ASSERT_FALSE(answerer_.Seen().empty());
  EXPECT_EQ(answerer_.Seen()[0].name, "frmJob");

  ketrova::CJob& job = project->Jobs().Item(1);
  EXPECT_TRUE(job.JobSource().Filtered);
  EXPECT_EQ(job.JobSource().Filters().Count(), 2);
  EXPECT_NE(job.Script.find("Destination.Fields(\"Name\") = Left(Source.Fields(\"Vorname\")"),
            std::string::npos)
      << job.Script;

  Press("ProjectSave");
  answerer_.Act([](QWidget& window) {
    window.findChild<QPushButton*>("cmdStart")->click();
    window.findChild<QPushButton*>("cmdCancel")->click();
  });
  Press("ProjectRun");
  // The run's boxes (the note about the event log, which the schema reads of
  // the editor filled) are left to the answerer's default.
  EXPECT_EQ(answerer_.Seen()[1].name, "frmEngine");

  const QString database = Demo() + "/demo.sqlite";
  EXPECT_EQ(SqliteRows(database, "SELECT KundenNr, Name, Ort FROM Kunden ORDER BY KundenNr"),
            (std::vector<std::string>{"K1001|Jürgen|München", "K1006|Sören|Hamburg"}));
  EXPECT_EQ(SqliteRows(database, "SELECT COUNT(*) FROM Kunden WHERE Vorname IS NULL"),
            std::vector<std::string>{"2"});
}

// Picks an entry of a combo box as the user does.
void Choose(QWidget& form, const char* combo, const QString& text) {
  auto* box = form.findChild<QComboBox*>(QLatin1String(combo));
  ASSERT_NE(box, nullptr) << combo;
  const int index = box->findText(text);
  ASSERT_GE(index, 0) << text.toStdString();
  box->setCurrentIndex(index);
  emit box->activated(index);
}

JobsDocument& OpenJobs(KorApplication& host) {
  host.OpenDocument("KetrovatorCTL.frmJobs");
  auto* jobs = qobject_cast<JobsDocument*>(host.Window().Document("KetrovatorCTL.frmJobs"));
  EXPECT_NE(jobs, nullptr);
  return *jobs;
}

void Click(QWidget& document, const char* button) {
  auto* b = document.findChild<QPushButton*>(QLatin1String(button));
  ASSERT_NE(b, nullptr) << button;
  b->click();
}

std::vector<std::string> Captions(ketrova::CConverter& project) {
  std::vector<std::string> captions;
  for (int i = 1; i <= project.Jobs().Count(); ++i)
    captions.push_back(project.Jobs().Item(i).Caption);
  return captions;
}

TEST_F(KorTest, ANewJobFromTheEditorLandsAfterTheSelectedPlace) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  auto project = host.Object("Converter");
  JobsDocument& jobs = OpenJobs(host);
  QAbstractItemModel& model = *jobs.List().model();
  jobs.List().selectRow(0);

  // Cancelled, the new job never reaches the list.
  answerer_.Cancel();
  Click(jobs, "zsButtonNew");
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].name, "frmJob");
  EXPECT_EQ(Captions(*project),
            (std::vector<std::string>{"Kunden übernehmen", "Aufträge in Euro"}));

  std::string problem = "editor not reached";
  answerer_.Act([&](QWidget& form) {
    problem.clear();
    form.findChild<QLineEdit*>("EditJobCaption")->setText("Kunden in neue Tabelle");
    Choose(form, "cboImportDBObjects", "kunden.csv");
    auto* target = form.findChild<QComboBox*>("cboExportDBTables");
    target->setEditText("KundenNeu");
    emit target->lineEdit()->editingFinished();
    form.findChild<QPushButton*>("cmdCopyAllSourceColumn2AllTargetColumn")->click();
    form.findChild<QPushButton*>("ButtonOK")->click();
    if (form.isVisible()) problem = "OK did not close the editor";
  });
  Click(jobs, "zsButtonNew");
  ASSERT_EQ(problem, "");
  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(Captions(*project),
            (std::vector<std::string>{"Kunden übernehmen", "Kunden in neue Tabelle",
                                      "Aufträge in Euro"}));
  ketrova::CJob& added = project->Jobs().Item(2);
  EXPECT_EQ(added.Index, 2);
  EXPECT_EQ(added.JobSource().ItemObjectName, "kunden.csv");
  EXPECT_EQ(added.JobDest().ItemObjectName, "KundenNeu");
  EXPECT_TRUE(added.JobDest().CreateTable);
  EXPECT_EQ(added.JobDest().ColumnByName("Ort")->SourceColumn, "Ort");
  EXPECT_TRUE(added.Validate) << added.ValidateError;
  ASSERT_EQ(model.rowCount(), 3);
  EXPECT_EQ(model.index(1, 2).data().toString(), "Kunden in neue Tabelle");
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (3 / 3 Aufgaben )");

  // Nothing selected: the new job goes first.
  jobs.List().clearSelection();
  answerer_.Act([&](QWidget& form) {
    form.findChild<QLineEdit*>("EditJobCaption")->setText("Ruht");
    form.findChild<QCheckBox*>("CheckActive")->setChecked(false);
    form.findChild<QPushButton*>("ButtonOK")->click();
  });
  Click(jobs, "zsButtonNew");
  ASSERT_EQ(project->Jobs().Count(), 4);
  EXPECT_EQ(project->Jobs().Item(1).Caption, "Ruht");
  EXPECT_EQ(model.index(0, 2).data().toString(), "Ruht");
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (3 / 4 Aufgaben )");
}

// After a deletion the next new job's number is a key the list still holds:
// the list refuses it. The user is told, in German, that the new job was
// dropped and how to go on; no job of the list is lost, and once the project
// is saved and opened again a new job is taken.
TEST_F(KorTest, ANewJobWhoseKeyTheListHoldsIsReportedAndLosesNoJob) {
  KorApplication& host = StartHost(Demo() + "/demo.cpf");
  auto project = host.Object("Converter");
  JobsDocument& jobs = OpenJobs(host);
  jobs.List().selectRow(0);
  answerer_.PressButton("vbYes");
  Click(jobs, "zsButtonDelete");
  ASSERT_EQ(Captions(*project), std::vector<std::string>{"Aufträge in Euro"});

  auto confirmInactive = [](QWidget& form) {
    form.findChild<QLineEdit*>("EditJobCaption")->setText("Neu");
    form.findChild<QCheckBox*>("CheckActive")->setChecked(false);
    form.findChild<QPushButton*>("ButtonOK")->click();
  };
  jobs.List().selectRow(0);
  answerer_.Act(confirmInactive);
  answerer_.PressButton("vbOK");
  Click(jobs, "zsButtonNew");
  ASSERT_EQ(answerer_.Seen().size(), 3u);
  EXPECT_EQ(answerer_.Seen()[1].name, "frmJob");
  const std::string message = answerer_.Seen()[2].text;
  EXPECT_EQ(message.rfind("Die neue Aufgabe konnte nicht in die Liste aufgenommen werden und ist "
                          "verworfen worden.",
                          0),
            0u)
      << message;
  EXPECT_NE(message.find("Fehler Nr.: 457"), std::string::npos) << message;
  EXPECT_NE(message.find("Ausgeführte Aktion: Aufgabe einfügen"), std::string::npos) << message;
  EXPECT_EQ(answerer_.Seen()[2].title, "Ketrova");
  EXPECT_EQ(Captions(*project), std::vector<std::string>{"Aufträge in Euro"});
  EXPECT_EQ(jobs.List().model()->rowCount(), 1);
  EXPECT_EQ(Info(), "Projekt : Demo: Kunden und Aufträge (1 / 1 Aufgaben )");

  // Saved and opened again, the list numbers its keys afresh.
  ASSERT_EQ(project->SaveProject(""), "");
  ASSERT_EQ(project->LoadProject((Demo() + "/demo.cpf").toStdString()), "");
  jobs.Refresh();
  jobs.List().selectRow(0);
  answerer_.Act(confirmInactive);
  Click(jobs, "zsButtonNew");
  EXPECT_EQ(Captions(*project), (std::vector<std::string>{"Aufträge in Euro", "Neu"}));
  EXPECT_EQ(answerer_.Seen().size(), 4u);
}

}  // namespace
}  // namespace kor::testing
