// The job editor on a small real project: a SQLite source with the table
// Kunden and a SQLite destination, jobs made by the schema analysis as the
// store dialogs make them. Boxes are answered through ModalAnswerer; what the
// dialog wrote is read back from the project file saved afterwards.
#include "dialogs/frm_job.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "core/dialogs.h"
#include "dialogs/frm_data_source.h"
#include "dialogs/job_general_page.h"
#include "dialogs/job_mapping_page.h"
#include "dialogs/job_script_page.h"
#include "dialogs/job_source_page.h"
#include "dialogs/job_target_page.h"
#include "dialogs/qt_converter_dialogs.h"
#include "dialogs/qt_user_interface.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "modal_answerer.h"
#include "platform/ado/connection.h"
#include "platform/ado/fields.h"
#include "platform/ado/recordset.h"
#include "platform/ui/user_interface.h"
#include "sqlite_files.h"
#include "stores/database.h"
#include "support/files.h"

namespace ketrova::dialogs {
namespace {

using testing::ExecuteSqlite;
using testing::ModalAnswerer;

constexpr int kRows = 30;

// A user's click on a grid cell: press and release at its centre.
void ClickCell(QTableWidget* grid, int row, int column) {
  ASSERT_NE(grid->item(row, column), nullptr);
  const QPointF at = grid->visualItemRect(grid->item(row, column)).center();
  const QPointF global = grid->viewport()->mapToGlobal(at);
  for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
    QMouseEvent event(type, at, global, Qt::LeftButton,
                      type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                      Qt::NoModifier);
    QApplication::sendEvent(grid->viewport(), &event);
  }
}

void PressReturn(QWidget* widget) {
  QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
  QApplication::sendEvent(widget, &press);
}

std::vector<std::string> Items(const QComboBox* combo) {
  std::vector<std::string> items;
  for (int i = 0; i < combo->count(); ++i) items.push_back(combo->itemText(i).toStdString());
  return items;
}

std::vector<std::string> ColumnNames(const CJobItem& side) {
  std::vector<std::string> names;
  for (const CJobItemColumn& column : side.Columns()) names.push_back(column.Name);
  return names;
}

class FrmJobTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(temp_.isValid());
    ui::SetCurrent(std::make_shared<QtUserInterface>());
    SetConverterDialogs(std::make_shared<QtConverterDialogs>());
    std::vector<std::string> sql = {
        "CREATE TABLE Kunden (Nr INTEGER PRIMARY KEY, Name TEXT, Ort TEXT)"};
    for (int i = 1; i <= kRows; ++i)
      sql.push_back("INSERT INTO Kunden VALUES (" + std::to_string(i) + ", 'Name " +
                    std::to_string(i) + "', '" + (i % 3 == 0 ? "Bern" : "Basel") + "')");
    ExecuteSqlite(Path("quelle.db"), sql);
    ExecuteSqlite(Path("ziel.db"),
                  {"CREATE TABLE Kunden (Nr INTEGER PRIMARY KEY, Name TEXT, Ort TEXT)",
                   "CREATE TABLE Ziel (Nr INTEGER, Titel TEXT)"});
    project_.FileName = Path("projekt.cpf");
    project_.WorkingDirectory = temp_.path().toStdString();
    for (auto [store, file] : {std::pair(&project_.SourceDataBase(), "quelle.db"),
                               std::pair(&project_.DestDataBase(), "ziel.db")}) {
      store->DatabaseType = dbtODBC;
      store->DriverName = "SQLite3";
      store->DatabaseName = Path(file);
    }
    ASSERT_EQ(project_.ApplyDatabaseSource(false), "");
    ASSERT_EQ(project_.ApplyDatabaseDest(false), "");
    ASSERT_EQ(project_.Jobs().Count(), 1);
    form_.SetConverter(&project_);
  }

  void TearDown() override {
    SetConverterDialogs(nullptr);
    ui::SetCurrent(nullptr);
    while (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
  }

  std::string Path(const std::string& name) const {
    return (temp_.path() + "/" + QString::fromStdString(name)).toStdString();
  }

  CJob& Job() { return project_.Jobs().Item(1); }

  // The job as the project file saved now holds it, read by a fresh project.
  CJob& Saved() {
    EXPECT_EQ(project_.SaveProject(project_.FileName), "");
    saved_ = std::make_unique<CConverter>();
    EXPECT_EQ(saved_->LoadProject(project_.FileName), "");
    return saved_->Jobs().Item(1);
  }

  // Presses OK in the modal editor after `fill`; the boxes OK brings are
  // answered with OK.
  void FillAndPress(std::function<void(frmJob&)> fill, const char* button = "ButtonOK") {
    answerer_.Act([fill, button](QWidget& window) {
      auto& form = dynamic_cast<frmJob&>(window);
      fill(form);
      form.findChild<QPushButton*>(QLatin1String(button))->click();
    });
  }

  static void Choose(QComboBox* combo, const QString& text) {
    const int index = combo->findText(text);
    ASSERT_GE(index, 0) << text.toStdString();
    combo->setCurrentIndex(index);
    emit combo->activated(index);
  }

  QTemporaryDir temp_;
  CConverter project_;
  std::unique_ptr<CConverter> saved_;
  ModalAnswerer answerer_;
  frmJob form_;
};

TEST_F(FrmJobTest, LoadFillsTheFrameAndThePages) {
  form_.Load(Job());
  EXPECT_EQ(form_.findChild<QLabel*>("LabelHeaderSmall")->text(), "Allgemeine Einstellungen");
  EXPECT_EQ(form_.findChild<QLabel*>("LabelFieldMergeInfo")->text(), "Kunden -> Kunden");
  EXPECT_EQ(form_.findChild<QLabel*>("lblContextDetail")->text().toStdString(),
            project_.SourceDataBase().DatabaseTypeString() + " [Kunden]");
  JobSourcePage& source = form_.SourcePage();
  EXPECT_EQ(source.cboImportDBObjects->currentText(), "Kunden");
  ASSERT_EQ(source.GridSourceFields->rowCount(), 3);
  EXPECT_EQ(source.GridSourceFields->item(1, 1)->text(), "Name");
  EXPECT_EQ(source.GridSourceFields->item(1, 2)->data(JobSourcePage::kPictureRole), "OKChecked");
  EXPECT_EQ(source.cboJobItemTypeSource->count(), 3);
  EXPECT_EQ(source.cboJobItemTypeSource->itemText(1), "Abfrage über mehrere Tabellem (Lesen)");
  EXPECT_EQ(source.cboFilterAndOr[0]->currentText(), "AND");
  EXPECT_EQ(source.cboFilterAndOr[1]->currentIndex(), -1);
  EXPECT_EQ(source.cboFilterOperator[0]->itemText(0), "enthält");
  EXPECT_EQ(source.cboFilterColumns[2]->count(), 3);
  EXPECT_EQ(form_.MappingPage().TargetRowCount(), 3);
  EXPECT_TRUE(form_.MappingPage().AnyAssigned());

  form_.ShowPage(frmJob::kTarget);
  EXPECT_EQ(form_.findChild<QLabel*>("LabelHeaderSmall")->text(), "Ziel wählen");
  EXPECT_EQ(form_.TargetPage().cboExportDBTables->currentText(), "Kunden");
  EXPECT_EQ(form_.TargetPage().cboDBUpdateTargetTableField->itemText(0), "");
}

TEST_F(FrmJobTest, CheckInputShowsTheLastFailedCheck) {
  const std::string kCaption = "Sie müssen eine Aufgabentitel eingeben !";
  const std::string kKeys =
      "Wenn Sie Datenbankupdates auf dem Zielsystem durchführen, müssen Sie \r\n"
      "die Verbindungsfelder beider Tabellen selektieren !";
  const std::string kSearch =
      "Wenn Sie Datenbankupdates auf dem Zielsystem durchführen, und >>> Benutzerdefiniertes "
      "Suchmuster <<< \r\nmarkieren, müsen Sie auch das Suchmuster definieren !";
  const std::string kMapping =
      "Sie haben noch keine Quellspalten zu den Zielspalten zugewiesen !\r\n"
      "Wechseln Sie bitte zur Seite >>> Feldzuweiungen <<< und weisen Sie Zielspalten zu! ";
  struct Row {
    const char* what;
    bool active, caption, updates, keys, userSearch, searchText, mapped;
    int kind;
    std::string message;  // "" passes
  };
  const Row rows[] = {
      {"everything given", true, true, false, false, false, false, true, jitTableView, ""},
      {"no caption", true, false, false, false, false, false, true, jitTableView, kCaption},
      {"inactive job, nothing given", false, false, true, false, true, false, false, jitTableView,
       ""},
      {"updates without keys", true, true, true, false, false, false, true, jitTableView, kKeys},
      {"updates with keys", true, true, true, true, false, false, true, jitTableView, ""},
      {"user search without text", true, true, true, false, true, false, true, jitTableView,
       kSearch},
      {"user search with text", true, true, true, false, true, true, true, jitTableView, ""},
      {"no mapping", true, true, false, false, false, false, false, jitTableView, kMapping},
      {"no caption, no mapping: the last wins", true, false, false, false, false, false, false,
       jitTableView, kMapping},
      {"keys and mapping missing", true, true, true, false, false, false, false, jitTableView,
       kMapping},
      {"insert/update needs only a caption", true, true, true, false, true, false, false,
       jitSQLInsertUpdate, ""},
      {"insert/update without caption", true, false, true, false, false, false, false,
       jitSQLInsertUpdate, kCaption},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    frmJob form;
    form.SetConverter(&project_);
    Job().JobSource().JobType = jitTableView;
    form.Load(Job());
    form.GeneralPage().CheckActive->setChecked(row.active);
    form.GeneralPage().EditJobCaption->setText(row.caption ? "Kunden" : "");
    JobTargetPage& target = form.TargetPage();
    target.CheckTargetDBUpdates->setChecked(row.updates);
    target.cboDBUpdateSourceTableField->setCurrentIndex(row.keys ? 1 : -1);
    target.cboDBUpdateTargetTableField->setCurrentIndex(row.keys ? 1 : -1);
    target.CheckTargetFilterUserDefined->setChecked(row.userSearch);
    target.EditDestinationUserdefinedFilter->setPlainText(row.searchText ? "x" : "");
    if (!row.mapped) form.MappingPage().ClearAllTargetColumn();
    Job().JobSource().JobType = row.kind;
    const std::size_t seen = answerer_.Seen().size();
    if (!row.message.empty()) answerer_.PressButton("vbOK");
    EXPECT_EQ(form.CheckInput(), row.message.empty());
    ASSERT_EQ(answerer_.Seen().size(), seen + (row.message.empty() ? 0 : 1));
    if (!row.message.empty()) {
      EXPECT_EQ(answerer_.Seen().back().text, row.message);
      EXPECT_EQ(answerer_.Seen().back().title, "Ketrova");
    }
  }
  Job().JobSource().JobType = jitTableView;
}

TEST_F(FrmJobTest, OkSavesTheControlsAsTheProjectFileShows) {
  Job().LogFile = Path("alt.LOG");
  FillAndPress([](frmJob& form) {
    form.GeneralPage().EditJobCaption->setText("Kunden in Basel");
    form.GeneralPage().EditRecordCount->setText("12x");
    form.TargetPage().CheckCancelOnError->setChecked(false);
    form.TargetPage().CheckTargetDBUpdates->setChecked(true);
    form.TargetPage().cboDBUpdateSourceTableField->setCurrentText("Nr");
    form.TargetPage().cboDBUpdateTargetTableField->setCurrentText("Nr");
    JobSourcePage& source = form.SourcePage();
    source.OptionFilterOn->setChecked(true);
    source.cboFilterColumns[0]->setCurrentText("Ort");
    source.cboFilterOperator[0]->setCurrentIndex(
        source.cboFilterOperator[0]->findText("ist gleich"));
    source.EditFilterValue[0]->setText("Basel");
    // A complete row without its AND / OR is dropped.
    source.cboFilterColumns[1]->setCurrentText("Nr");
    source.cboFilterOperator[1]->setCurrentIndex(0);
    source.EditFilterValue[1]->setText("1");
  });
  ASSERT_TRUE(form_.Execute(Job()));
  EXPECT_EQ(answerer_.Pending(), 0);

  CJob& saved = Saved();
  EXPECT_EQ(saved.Caption, "Kunden in Basel");
  EXPECT_EQ(saved.MaxRecords, 12);
  EXPECT_EQ(saved.ObjectName, "Kunden");
  EXPECT_EQ(saved.LogFile, "") << "LoadJob leaves EditLogFileName empty, and OK writes it";
  EXPECT_FALSE(saved.CancelOnError);
  EXPECT_TRUE(saved.DestinationUpdate);
  EXPECT_EQ(saved.JobSource().KeyField, "Nr");
  EXPECT_EQ(saved.JobDest().KeyField, "Nr");
  EXPECT_TRUE(saved.JobSource().Filtered);
  ASSERT_EQ(saved.JobSource().Filters().Count(), 1);
  const CJobItemFilter& filter = saved.JobSource().Filters().Item(1);
  EXPECT_EQ(filter.AndOr, "AND");
  EXPECT_EQ(filter.Column, "Ort");
  EXPECT_EQ(filter.FilterType, jftEqual);
  EXPECT_EQ(filter.Value, "Basel");
  EXPECT_EQ(saved.Script, Job().Script);
  EXPECT_NE(saved.Script.find("txConvertMain"), std::string::npos);
}

TEST_F(FrmJobTest, AFilterFlagWithoutACompleteRowIsResetOnOk) {
  FillAndPress([](frmJob& form) {
    JobSourcePage& source = form.SourcePage();
    source.OptionFilterOn->setChecked(true);
    source.cmdClearFilter->click();  // also ticks OptionFilterOff
    source.OptionFilterOn->setChecked(true);
    source.cboFilterColumns[0]->setCurrentText("Ort");
    source.cboFilterOperator[0]->setCurrentIndex(2);
    source.EditFilterValue[0]->setText("Bern");  // row 0 lost its AND
  });
  answerer_.PressButton("vbOK");
  ASSERT_TRUE(form_.Execute(Job()));
  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(answerer_.Seen()[1].text,
            "Sie haben das Kennzeichen zum Filtern gesetzt, jedoch sind keine gültigen "
            "Filteraktiviert worden !.Das Filterkennzeichen wird zurückgesetzt.");
  EXPECT_FALSE(Saved().JobSource().Filtered);
}

TEST_F(FrmJobTest, ControlsThatWriteAtOnceSurviveCancel) {
  Job().TriggerType = ttOnConvert;
  Job().Enabled = true;
  const std::string caption = Job().Caption;
  FillAndPress(
      [](frmJob& form) {
        form.GeneralPage().cboTriggerType->setCurrentText("OnEndJob");
        form.GeneralPage().CheckActive->setChecked(false);
        form.GeneralPage().cboScriptLanguage->setCurrentText("Java-Script");
        form.GeneralPage().EditJobCaption->setText("nicht gespeichert");
        form.TargetPage().CheckExportCreateTable->setChecked(true);
        form.TargetPage().CheckExportDeletBeforeInsert->setChecked(true);
        form.SourcePage().OptionFilterOn->setChecked(true);
      },
      "ButtonCancel");
  EXPECT_FALSE(form_.Execute(Job()));
  CJob& saved = Saved();
  EXPECT_EQ(saved.TriggerType, ttOnEndJob);
  EXPECT_FALSE(saved.Enabled);
  EXPECT_EQ(saved.ScriptLanguage, sclJavaScript);
  EXPECT_NE(saved.Script.find("function txConvertMain"), std::string::npos) << saved.Script;
  EXPECT_TRUE(saved.JobDest().CreateTable);
  EXPECT_TRUE(saved.JobDest().DeleteBeforeInsert);
  EXPECT_TRUE(saved.JobSource().Filtered);
  EXPECT_EQ(saved.Caption, caption);
}

TEST_F(FrmJobTest, ATargetPageNeedsADestination) {
  project_.DestDataBase().DatabaseType = dbtUndefined;
  form_.Load(Job());
  answerer_.PressButton("vbOK");
  form_.ShowPage(frmJob::kTarget);
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text, "Sie müssen zuerst eine Zieldatenbank definieren !.");
  EXPECT_EQ(form_.CurrentPage(), frmJob::kSource);
  EXPECT_EQ(form_.findChild<QLabel*>("LabelHeaderSmall")->text(), "Datenherkunft");
  form_.ShowPage(frmJob::kMapping);
  EXPECT_EQ(form_.CurrentPage(), frmJob::kMapping);
}

TEST_F(FrmJobTest, ThePreviewShowsTheFirstRowsOfTheSourceObject) {
  form_.Load(Job());
  form_.findChild<QCheckBox*>("CheckDemoData")->setChecked(true);
  QTableWidget* grid = form_.SourcePage().GridDemoData;
  ASSERT_EQ(grid->rowCount(), 20) << "MaxDemoData";
  ASSERT_EQ(grid->columnCount(), 3);
  auto connection = std::make_shared<ado::Connection>();
  connection->Open("Driver={SQLite3};Database=" + Path("quelle.db"));
  ado::RecordsetPtr rs = connection->Execute("SELECT Nr, Name, Ort FROM Kunden");
  for (int row = 0; row < 20; ++row, rs->MoveNext()) {
    for (int c = 0; c < 3; ++c) {
      EXPECT_EQ(grid->item(row, c)->text().toStdString(),
                rs->GetFields().Item(c).Value().ToString());
    }
  }
  rs->Close();
  connection->Close();
  EXPECT_EQ(form_.LastError(), "");
  EXPECT_TRUE(form_.findChild<QWidget*>("panelDemoData")->isVisibleTo(&form_));
}

TEST_F(FrmJobTest, APreviewOfASourceThatDoesNotOpenShowsTheProvidersText) {
  form_.Load(Job());
  Job().JobSource().ItemObjectName = "Fehlt";
  form_.findChild<QCheckBox*>("CheckDemoData")->setChecked(true);
  EXPECT_EQ(form_.SourcePage().GridDemoData->rowCount(), 0);
  EXPECT_NE(form_.LastError().find("Fehlt"), std::string::npos) << form_.LastError();
  EXPECT_EQ(form_.LastError(), Job().JobSource().LastErrorMessage);
  QWidget* picture = form_.findChild<QWidget*>("ImageError");
  EXPECT_TRUE(picture->isVisibleTo(&form_));
  EXPECT_EQ(picture->toolTip(),
            "Ein Fehler ist aufgetreten. Klicken Sie hier um Informationen zu sehen.");
  answerer_.PressButton("vbOK");
  form_.ShowLastError();
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text, Job().JobSource().LastErrorMessage);
  EXPECT_EQ(form_.LastError(), "");
  EXPECT_FALSE(picture->isVisibleTo(&form_));
}

TEST_F(FrmJobTest, ATargetTableThatDoesNotExistIsToBeCreatedWithTheSourcesColumns) {
  Job().JobDest().CreateTable = false;
  form_.Load(Job());
  form_.ShowPage(frmJob::kTarget);
  form_.TargetPage().cboExportDBTables->setEditText("NeuTabelle");
  form_.TargetPage().ExportTableChanged("NeuTabelle");
  EXPECT_TRUE(form_.TargetPage().CheckExportCreateTable->isChecked());
  EXPECT_TRUE(Job().JobDest().CreateTable);
  EXPECT_EQ(Job().JobDest().ItemObjectName, "NeuTabelle");
  std::vector<std::string> names;
  for (const CJobItemColumn& column : Job().JobDest().Columns()) names.push_back(column.Name);
  EXPECT_EQ(names, (std::vector<std::string>{"Nr", "Name", "Ort"}));

  // An existing table brings its own columns.
  form_.TargetPage().ExportTableChanged("Ziel");
  names.clear();
  for (const CJobItemColumn& column : Job().JobDest().Columns()) names.push_back(column.Name);
  EXPECT_EQ(names, (std::vector<std::string>{"Nr", "Titel"}));
  EXPECT_EQ(form_.MappingPage().TargetRowCount(), 2);
  EXPECT_EQ(form_.TargetPage().cboDBUpdateTargetTableField->count(), 3);
}

TEST_F(FrmJobTest, LogFileNamesThatAreNotPlainOrMissingAreRefused) {
  form_.Load(Job());
  QLineEdit* field = form_.GeneralPage().EditLogFileName;
  WriteTextFile(Path("da.LOG"), "x");
  struct Row {
    std::string name;
    std::string message;
  } rows[] = {{"*.LOG", "Dies ist keine gültige Logdatei !"},
              {Path("fehlt.LOG"), "Die Logdatei existiert nicht !"},
              {Path("da.LOG"), ""}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    field->setText(QString::fromStdString(row.name));
    const std::size_t seen = answerer_.Seen().size();
    if (!row.message.empty()) answerer_.PressButton("vbOK");
    form_.GeneralPage().CheckLogFileName();
    ASSERT_EQ(answerer_.Seen().size(), seen + (row.message.empty() ? 0 : 1));
    if (!row.message.empty()) {
      EXPECT_EQ(answerer_.Seen().back().text, row.message);
    }
    EXPECT_EQ(field->text().toStdString(), row.message.empty() ? row.name : "");
  }

  // The chooser asks before it takes a file that exists.
  answerer_.ChooseFile(Path("da.LOG"));
  answerer_.PressButton("vbNo");
  field->clear();
  form_.GeneralPage().OpenFile();
  EXPECT_EQ(answerer_.Seen().back().text,
            "Die Datei existiert bereits, möchten Sie sie überschreiben ?");
  EXPECT_EQ(field->text(), "");
  EXPECT_EQ(answerer_.Pending(), 0);
}

TEST_F(FrmJobTest, SwitchingASourceColumnOffClearsItsMapping) {
  form_.Load(Job());
  JobMappingPage& mapping = form_.MappingPage();
  ASSERT_EQ(mapping.AssignedSource(1), "Name");
  form_.SourcePage().ToggleColumn(1);
  EXPECT_FALSE(Job().JobSource().ColumnByName("Name")->Visible);
  EXPECT_EQ(form_.SourcePage().GridSourceFields->item(1, 2)->data(JobSourcePage::kPictureRole),
            "OKUnChecked");
  EXPECT_EQ(mapping.AssignedSource(1), "");
  EXPECT_EQ(Job().Script.find("\"Name\")"), std::string::npos) << Job().Script;
  form_.SourcePage().ToggleColumn(1);
  EXPECT_TRUE(Job().JobSource().ColumnByName("Name")->Visible);
}

TEST_F(FrmJobTest, AnotherJobTypeNoLongerOpensTheEditor) {
  answerer_.Act([](QWidget& window) {
    auto& form = dynamic_cast<frmJob&>(window);
    form.GeneralPage().cboJobType->setCurrentText("FileCopy");
    form.findChild<QPushButton*>("ButtonCancel")->click();
  });
  EXPECT_EQ(project_.JobEdit(1), "CANCEL");
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].name, "frmJob");
  EXPECT_EQ(Job().JobType, jtFileCopy);

  EXPECT_EQ(project_.JobEdit(1), "CANCEL");
  EXPECT_EQ(answerer_.Seen().size(), 1u) << "no editor for a FileCopy job";
}

TEST_F(FrmJobTest, EveryPageRendersWithoutRunningTheDialog) {
  form_.Load(Job());
  for (int page = frmJob::kGeneral; page <= frmJob::kScript; ++page) {
    form_.ShowPage(page);
    EXPECT_EQ(form_.CurrentPage(), page);
    EXPECT_FALSE(form_.grab().isNull());
  }
  EXPECT_EQ(answerer_.Seen().size(), 0u);
}

// Picks a store type in the store dialog's explorer bar, as a click does.
void SelectStoreType(QWidget& window, int type) {
  auto* explorer = window.findChild<QListWidget*>("vbaExplorer");
  for (int row = 0; row < explorer->count(); ++row)
    if (explorer->item(row)->data(Qt::UserRole).toInt() == type) explorer->setCurrentRow(row);
}

// cmdChangeSourceDB: the store dialog opens on a new source store the first
// time and on the side's own store later; a confirmed store becomes the
// side's own, the kind follows its type, the object list is the new store's
// and the columns are read anew, though through the project's source, as
// record access always opens a side: a Kunden of the other file shows the
// project's columns, and a text file the project's store cannot read leaves
// the columns empty with the store's message. The project's source stays.
TEST_F(FrmJobTest, AnotherSourceStoreBecomesTheSidesOwnAndItsColumnsAreReadAnew) {
  const std::string other = Path("andere.db");
  ExecuteSqlite(other, {"CREATE TABLE Kunden (Nr INTEGER, Name TEXT, Ort TEXT, Land TEXT)"});
  const QString demo = QStringLiteral(KETROVA_TEST_DATA "/../../examples/demo/daten");
  const std::string folder = Path("texte");
  ASSERT_TRUE(QDir().mkpath(QString::fromStdString(folder)));
  for (const QString& name : QDir(demo).entryList(QDir::Files))
    ASSERT_TRUE(QFile::copy(demo + "/" + name, QString::fromStdString(folder) + "/" + name));
  CJobItem& side = Job().JobSource();
  side.ColumnByName("Name")->Visible = false;
  side.ColumnByName("Ort")->DisplayName = "Wohnort";
  side.Filtered = true;
  CJobItemFilter& filter = side.Filters().Add();
  filter.AndOr = "AND";
  filter.Column = "Ort";
  filter.FilterType = jftEqual;
  filter.Value = "Bern";
  form_.Load(Job());
  form_.ShowPage(frmJob::kSource);
  JobSourcePage& source = form_.SourcePage();
  form_.SetLastError("alt");

  answerer_.Act([&](QWidget& window) {
    auto& dialog = dynamic_cast<frmDataSource&>(window);
    EXPECT_EQ(window.findChild<QLabel*>("lblContext")->text(), "Quelldatenspeicher wählen");
    EXPECT_EQ(dialog.PageType(), dbtODBC);
    EXPECT_EQ(window.findChild<QLineEdit*>("txtDatabase")->text(), "")
        << "a new store, not the project's";
    window.findChild<QComboBox*>("cboDrivers")->setEditText("SQLite3");
    window.findChild<QLineEdit*>("txtDatabase")->setText(QString::fromStdString(other));
    window.findChild<QPushButton*>("ButtonOK")->click();
  });
  source.cmdChangeSourceDB->click();
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].problem, "");

  ASSERT_TRUE(side.DifferentDataBase());
  CDatabase* own = side.Database();
  ASSERT_NE(own, &project_.SourceDataBase());
  EXPECT_EQ(own->DatabaseType, dbtODBC);
  EXPECT_EQ(own->DatabaseName, other);
  EXPECT_EQ(own->DatabaseDirection, dbdSource);
  EXPECT_EQ(project_.SourceDataBase().DatabaseName, Path("quelle.db"));
  EXPECT_EQ(side.JobType, jitTableView);
  EXPECT_EQ(source.cboJobItemTypeSource->count(), 3);
  EXPECT_EQ(source.cboJobItemTypeSource->currentText(), "Datenbanktabelle");
  EXPECT_EQ(side.ItemObjectName, "Kunden");
  EXPECT_EQ(ColumnNames(side), (std::vector<std::string>{"Nr", "Name", "Ort"}));
  EXPECT_TRUE(side.ColumnByName("Name")->Visible);
  EXPECT_EQ(side.ColumnByName("Ort")->DisplayName, "Ort");
  EXPECT_EQ(side.Filters().Count(), 0);
  EXPECT_EQ(source.GridSourceFields->rowCount(), 3);
  EXPECT_EQ(source.GridSourceFields->item(1, 2)->data(JobSourcePage::kPictureRole), "OKChecked");
  EXPECT_EQ(source.cboFilterOperator[0]->currentIndex(), -1);
  EXPECT_EQ(form_.LastError(), "");
  EXPECT_EQ(form_.findChild<QLabel*>("LabelInfo")->text(), "");
  EXPECT_FALSE(form_.ProgressBar().isVisibleTo(&form_));

  // The second time the dialog shows the side's own store; Cancel keeps it.
  answerer_.Act([&](QWidget& window) {
    EXPECT_EQ(window.findChild<QLineEdit*>("txtDatabase")->text().toStdString(), other);
    window.findChild<QPushButton*>("ButtonCancel")->click();
  });
  source.cmdChangeSourceDB->click();
  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(side.Database(), own);
  EXPECT_EQ(side.ItemObjectName, "Kunden");

  answerer_.Act([&](QWidget& window) {
    SelectStoreType(window, dbtText);
    window.findChild<QLineEdit*>("EditTextFileFileName")->setText(QString::fromStdString(folder));
    window.findChild<QPushButton*>("ButtonOK")->click();
  });
  source.cmdChangeSourceDB->click();
  ASSERT_EQ(answerer_.Seen().size(), 3u);
  EXPECT_EQ(answerer_.Seen()[2].problem, "");
  own = side.Database();
  EXPECT_EQ(own->DatabaseType, dbtText);
  EXPECT_EQ(own->DatabaseFileName, folder);
  EXPECT_EQ(side.JobType, jitText);
  EXPECT_EQ(Items(source.cboJobItemTypeSource), std::vector<std::string>{"Textdatei"});
  EXPECT_EQ(Items(source.cboImportDBObjects),
            (std::vector<std::string>{"auftraege.csv", "kunden.csv"}));
  EXPECT_EQ(side.ItemObjectName, "auftraege.csv");
  EXPECT_EQ(side.Columns().Count(), 0);
  EXPECT_EQ(source.GridSourceFields->rowCount(), 0);
  EXPECT_NE(form_.LastError().find("auftraege.csv"), std::string::npos) << form_.LastError();
  EXPECT_TRUE(form_.findChild<QWidget*>("ImageError")->isVisibleTo(&form_));
  EXPECT_EQ(form_.findChild<QLabel*>("lblContextDetail")->text().toStdString(),
            own->DatabaseTypeString() + " [auftraege.csv]");

  // The own store is the project file's too.
  const CJobItem& saved = Saved().JobSource();
  EXPECT_TRUE(saved.DifferentDataBase());
  ASSERT_NE(saved.Database(), nullptr);
  EXPECT_EQ(saved.Database()->DatabaseType, dbtText);
  EXPECT_EQ(saved.Database()->DatabaseFileName, folder);
  EXPECT_EQ(saved.ItemObjectName, "auftraege.csv");
}

// A view with a statement of the user: leaving the statement tab reads the
// statement's columns; the preview selects from the object name, which is
// the entry standing for the statement, and fails with the store's message.
TEST_F(FrmJobTest, AStatementsColumnsAppearWhenItsTabIsLeftAndItsPreviewFails) {
  form_.Load(Job());
  form_.ShowPage(frmJob::kSource);
  JobSourcePage& source = form_.SourcePage();
  QTabWidget* tabs = source.zsTab;
  EXPECT_FALSE(tabs->isTabVisible(JobSourcePage::kTabStatement));
  source.cboJobItemTypeSource->setCurrentIndex(
      source.cboJobItemTypeSource->findData(static_cast<int>(jitUDFView)));
  CJobItem& side = Job().JobSource();
  ASSERT_EQ(side.JobType, jitUDFView);
  EXPECT_TRUE(tabs->isTabVisible(JobSourcePage::kTabStatement));
  EXPECT_EQ(Items(source.cboImportDBObjects),
            std::vector<std::string>{"Abfrage über mehrere Tabellen"});
  EXPECT_EQ(side.ItemObjectName, "Abfrage über mehrere Tabellen");

  const std::string sql = "SELECT Nr, Name AS Titel FROM Kunden WHERE Ort = 'Bern'";
  tabs->setCurrentIndex(JobSourcePage::kTabStatement);
  source.EditSQL->setPlainText(QString::fromStdString(sql));
  EXPECT_EQ(ColumnNames(side), (std::vector<std::string>{"Nr", "Name", "Ort"}));
  tabs->setCurrentIndex(JobSourcePage::kTabFilter);
  EXPECT_EQ(side.SQL, sql);
  EXPECT_EQ(ColumnNames(side), (std::vector<std::string>{"Nr", "Titel"}));
  EXPECT_EQ(source.GridSourceFields->rowCount(), 2);
  EXPECT_EQ(source.GridSourceFields->item(1, 1)->text(), "Titel");
  EXPECT_EQ(Items(source.cboFilterColumns[0]), (std::vector<std::string>{"Nr", "Titel"}));
  EXPECT_EQ(form_.MappingPage().SourceRowCount(), 2);
  EXPECT_EQ(form_.LastError(), "");

  // Between the other tabs the statement is not read.
  source.EditSQL->setPlainText("SELECT Nr FROM Kunden");
  tabs->setCurrentIndex(JobSourcePage::kTabColumns);
  EXPECT_EQ(side.SQL, sql);
  EXPECT_EQ(ColumnNames(side), (std::vector<std::string>{"Nr", "Titel"}));

  form_.findChild<QCheckBox*>("CheckDemoData")->setChecked(true);
  EXPECT_EQ(source.GridDemoData->rowCount(), 0);
  EXPECT_NE(side.LastErrorMessage, "");
  EXPECT_EQ(form_.LastError(), side.LastErrorMessage);
  EXPECT_NE(form_.LastError().find("Abfrage über mehrere Tabellen"), std::string::npos)
      << form_.LastError();
}

// "Bezeichnung": a click shows EditGridSourceColumns over the cell; Return
// writes the title into the cell and the column's DisplayName at once. A
// column the job no longer has gives the box and keeps the editor hidden.
TEST_F(FrmJobTest, ATitleTypedOverItsCellReachesTheColumnOrTellsItIsMissing) {
  form_.Load(Job());
  form_.ShowPage(frmJob::kSource);
  form_.show();
  JobSourcePage& source = form_.SourcePage();
  source.zsTab->setCurrentIndex(JobSourcePage::kTabColumns);
  QTableWidget* grid = source.GridSourceFields;
  QLineEdit* editor = source.EditGridSourceColumns;
  ASSERT_EQ(grid->item(1, 1)->text(), "Name");

  ClickCell(grid, 1, 3);
  ASSERT_TRUE(editor->isVisible());
  EXPECT_EQ(editor->geometry(), grid->visualItemRect(grid->item(1, 3)));
  EXPECT_EQ(editor->text(), grid->item(1, 3)->text());
  editor->setText("Kundenname");
  PressReturn(editor);
  EXPECT_FALSE(editor->isVisible());
  EXPECT_EQ(grid->item(1, 3)->text(), "Kundenname");
  EXPECT_EQ(Job().JobSource().ColumnByName("Name")->DisplayName, "Kundenname");
  EXPECT_EQ(Job().JobSource().ColumnByName("Ort")->DisplayName, "Ort");

  // A click on another column of the row opens no editor.
  ClickCell(grid, 2, 1);
  EXPECT_FALSE(editor->isVisible());

  ClickCell(grid, 2, 3);
  ASSERT_TRUE(editor->isVisible());
  Job().JobSource().ColumnByName("Ort")->Name = "Stadt";  // the column is gone
  editor->setText("Wohnort");
  answerer_.PressButton("vbOK");
  PressReturn(editor);
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text, "Die Quellspalte Ort konnte nicht ermittelt werden.");
  EXPECT_EQ(answerer_.Seen()[0].title, "Ketrova");
  EXPECT_EQ(answerer_.Seen()[0].icon, 48);
  EXPECT_FALSE(editor->isVisible());
  EXPECT_EQ(Job().JobSource().ColumnByName("Stadt")->DisplayName, "Ort");
  form_.hide();

  EXPECT_EQ(Saved().JobSource().ColumnByName("Name")->DisplayName, "Kundenname");
}

// The operators of the three filter rows: an Outlook source has no
// "enthält" entries, other sources start with them; item data is the filter
// type, and a stored filter finds its operator by it.
TEST_F(FrmJobTest, AnOutlookSourceOffersNoContainsOperators) {
  const std::vector<std::string> compare = {"ist gleich",      "ist nicht gleich",
                                            "ist kleiner als", "ist kleiner oder gleich",
                                            "ist größer",      "ist größer oder gleich"};
  CJobItemFilter& filter = Job().JobSource().Filters().Add();
  filter.AndOr = "AND";
  filter.Column = "Ort";
  filter.FilterType = jftNotEqual;
  filter.Value = "Bern";
  struct Case {
    int storeType;
    int kind;
    const char* entry;
    bool contains;
  };
  for (const Case& c : {Case{dbtOutlook, jitOutlook, "MS-Outlook", false},
                        Case{dbtODBC, jitTableView, "Datenbanktabelle", true}}) {
    SCOPED_TRACE(c.entry);
    project_.SourceDataBase().DatabaseType = c.storeType;
    Job().JobSource().JobType = c.kind;
    frmJob form;
    form.SetConverter(&project_);
    form.Load(Job());
    form.ShowPage(frmJob::kSource);
    JobSourcePage& source = form.SourcePage();
    EXPECT_EQ(source.cboJobItemTypeSource->currentText().toStdString(), c.entry);
    std::vector<std::string> expected = compare;
    if (c.contains) expected.insert(expected.begin(), {"enthält", "enthält nicht"});
    for (int row = 0; row < 3; ++row) {
      QComboBox* operators = source.cboFilterOperator[row];
      EXPECT_EQ(Items(operators), expected) << row;
      const int first = c.contains ? jftLike : jftEqual;
      for (int i = 0; i < operators->count(); ++i)
        EXPECT_EQ(operators->itemData(i).toInt(), first + i) << row;
    }
    EXPECT_EQ(source.cboFilterOperator[0]->currentText(), "ist nicht gleich");
    EXPECT_EQ(source.cboFilterOperator[1]->currentIndex(), -1);
  }
}

}  // namespace
}  // namespace ketrova::dialogs
