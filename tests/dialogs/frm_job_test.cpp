// The job editor on a small real project: a SQLite source with the table
// Kunden and a SQLite destination, jobs made by the schema analysis as the
// store dialogs make them. Boxes are answered through ModalAnswerer; what the
// dialog wrote is read back from the project file saved afterwards.
#include "dialogs/frm_job.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "core/dialogs.h"
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
#include "stores/database.h"
#include "support/files.h"

namespace ketrova::dialogs {
namespace {

using testing::ModalAnswerer;

constexpr int kRows = 30;

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
    Execute(Path("quelle.db"), sql);
    Execute(Path("ziel.db"), {"CREATE TABLE Kunden (Nr INTEGER PRIMARY KEY, Name TEXT, Ort TEXT)",
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

  static void Execute(const std::string& file, const std::vector<std::string>& statements) {
    auto connection = std::make_shared<ado::Connection>();
    connection->Open("Driver={SQLite3};Database=" + file);
    for (const std::string& sql : statements) connection->Execute(sql);
    connection->Close();
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

}  // namespace
}  // namespace ketrova::dialogs
