#include "dialogs/job_target_page.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <vector>

#include "core/enums.h"
#include "dialogs/frm_job.h"
#include "dialogs/job_form_widgets.h"
#include "dialogs/job_mapping_page.h"
#include "dialogs/job_script_page.h"
#include "jobs/job.h"
#include "stores/database.h"
#include "support/text.h"

namespace ketrova::dialogs {

using namespace jobform;

JobTargetPage::JobTargetPage(frmJob& form) : form_(form) {
  setObjectName(QStringLiteral("panelTarget"));
  cboJobItemTypeDest = Combo("cboJobItemTypeDest", this);
  AddEntry(*cboJobItemTypeDest, QStringLiteral("Datenbanktabelle"), jitTableView);
  AddEntry(*cboJobItemTypeDest, QStringLiteral("Textdatei"), jitText);
  AddEntry(*cboJobItemTypeDest, QStringLiteral("MS-Excel"), jitExcel);
  AddEntry(*cboJobItemTypeDest, QStringLiteral("MS-Outlook"), jitOutlook);
  AddEntry(*cboJobItemTypeDest, QStringLiteral("XML"), jitXML);
  cboExportDBTables = Combo("cboExportDBTables", this);
  cboExportDBTables->setEditable(true);
  cboExportDBTables->setInsertPolicy(QComboBox::NoInsert);
  CheckExportCreateTable = Check("CheckExportCreateTable",
                                 QStringLiteral("Tabelle erzeugen falls nicht vorhanden"), this);
  CheckExportDeletBeforeInsert =
      Check("CheckExportDeletBeforeInsert", QStringLiteral("Leeren vor dem Einfügen"), this);
  CheckCancelOnError =
      Check("CheckCancelOnError",
            QStringLiteral("Fehler bei dieser Aufgabe bricht das ganze Projekt ab"), this);
  CheckTargetDBUpdates =
      Check("CheckTargetDBUpdates",
            QStringLiteral("Daten auf dem Zielsysten ändern / überschreiben"), this);

  panelTargetDBUpdates = new QWidget(this);
  panelTargetDBUpdates->setObjectName(QStringLiteral("panelTargetDBUpdates"));
  CheckTargetFilterUserDefined =
      Check("CheckTargetFilterUserDefined", QStringLiteral("Benutzerdefiniertes Suchmuster"),
            panelTargetDBUpdates);
  cmdShowEditorBig = Button("cmdShowEditorBig", QStringLiteral("Editor ..."), panelTargetDBUpdates);
  TabTargetFilter = new QStackedWidget(panelTargetDBUpdates);
  TabTargetFilter->setObjectName(QStringLiteral("TabTargetFilter"));
  auto* keys = new QWidget;
  keys->setObjectName(QStringLiteral("TabTargetFilterKeys"));
  cboDBUpdateSourceTableField = Combo("cboDBUpdateSourceTableField", keys);
  cboDBUpdateTargetTableField = Combo("cboDBUpdateTargetTableField", keys);
  auto* keyGrid = new QGridLayout(keys);
  keyGrid->addWidget(
      Label("LabelDBUpdateSourceTableField", QStringLiteral("Spalte in Quelltabelle"), keys), 0, 0);
  keyGrid->addWidget(cboDBUpdateSourceTableField, 0, 1);
  keyGrid->addWidget(
      Label("LabelDBUpdateTargetTableField", QStringLiteral("Spalte in Zieltabelle"), keys), 1, 0);
  keyGrid->addWidget(cboDBUpdateTargetTableField, 1, 1);
  keyGrid->setColumnStretch(1, 1);
  keyGrid->setRowStretch(2, 1);
  EditDestinationUserdefinedFilter = new QPlainTextEdit;
  EditDestinationUserdefinedFilter->setObjectName(
      QStringLiteral("EditDestinationUserdefinedFilter"));
  EditDestinationUserdefinedFilter->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  EditDestinationUserdefinedFilter->setLineWrapMode(QPlainTextEdit::NoWrap);
  TabTargetFilter->addWidget(keys);
  TabTargetFilter->addWidget(EditDestinationUserdefinedFilter);
  auto* updates = new QVBoxLayout(panelTargetDBUpdates);
  updates->setContentsMargins(fontMetrics().averageCharWidth() * 3, 0, 0, 0);
  auto* filterLine = new QHBoxLayout;
  filterLine->addWidget(CheckTargetFilterUserDefined, 1);
  filterLine->addWidget(cmdShowEditorBig);
  updates->addLayout(filterLine);
  updates->addWidget(TabTargetFilter, 1);

  auto* grid = new QGridLayout;
  grid->addWidget(Label("LabelJobItemTypeDest", QStringLiteral("Exporttyp"), this), 0, 0);
  grid->addWidget(cboJobItemTypeDest, 0, 1, Qt::AlignLeft);
  grid->addWidget(Label("LabelExportDBTables", QStringLiteral("Zieltabelle"), this), 1, 0);
  grid->addWidget(cboExportDBTables, 1, 1);
  grid->setColumnStretch(1, 1);
  auto* panelDBExport = new QWidget(this);
  panelDBExport->setObjectName(QStringLiteral("panelDBExport"));
  panelDBExport->setLayout(grid);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(panelDBExport);
  layout->addWidget(CheckExportCreateTable);
  layout->addWidget(CheckExportDeletBeforeInsert);
  layout->addWidget(CheckCancelOnError);
  layout->addWidget(CheckTargetDBUpdates);
  layout->addWidget(panelTargetDBUpdates, 1);
  layout->addStretch(0);
  panelTargetDBUpdates->setVisible(false);
  cmdShowEditorBig->setEnabled(false);

  connect(cboJobItemTypeDest, &QComboBox::currentIndexChanged, this, [this] {
    if (form_.Loading() || !form_.Job()) return;
    form_.Job()->JobDest().JobType =
        static_cast<std::int32_t>(SelectedItemData(*cboJobItemTypeDest, jitUndefined));
    form_.ReloadSourceDB(false);
    form_.SetControls();
  });
  connect(cboExportDBTables, &QComboBox::activated, this, [this](int index) {
    if (form_.Loading() || !form_.Job()) return;
    ExportTableChanged(S(cboExportDBTables->itemText(index)));
  });
  connect(cboExportDBTables->lineEdit(), &QLineEdit::editingFinished, this, [this] {
    if (form_.Loading() || !form_.Job()) return;
    ExportTableChanged(S(cboExportDBTables->currentText()));
  });
  connect(CheckExportCreateTable, &QCheckBox::toggled, this, [this](bool checked) {
    if (form_.Loading() || !form_.Job()) return;
    form_.Job()->JobDest().CreateTable = checked;
  });
  connect(CheckExportDeletBeforeInsert, &QCheckBox::toggled, this, [this](bool checked) {
    if (form_.Loading() || !form_.Job()) return;
    form_.Job()->JobDest().DeleteBeforeInsert = checked;
  });
  connect(CheckTargetDBUpdates, &QCheckBox::toggled, this, [this] {
    if (!form_.Loading()) TargetDBUpdatesChanged();
  });
  connect(CheckTargetFilterUserDefined, &QCheckBox::toggled, this, [this] {
    if (!form_.Loading()) TargetFilterUserDefinedChanged();
  });
  connect(cmdShowEditorBig, &QPushButton::clicked, this, [this] {
    form_.ScriptPage().ShowEditorBig(S(EditDestinationUserdefinedFilter->toPlainText()),
                                     [this](const std::string& text) {
                                       EditDestinationUserdefinedFilter->setPlainText(Q(text));
                                     });
  });
}

void JobTargetPage::LoadLists() {
  CJob& job = *form_.Job();
  ComboListControl tables(*cboExportDBTables);
  if (CDatabase* store = job.JobDest().Database())
    store->DatabaseObjectsToList(tables, jitUndefined);
  else
    tables.Clear();
  FillKeyCombos();
}

void JobTargetPage::FillKeyCombos() {
  CJob& job = *form_.Job();
  for (auto [combo, side] : {std::pair(cboDBUpdateSourceTableField, &job.JobSource()),
                             std::pair(cboDBUpdateTargetTableField, &job.JobDest())}) {
    std::vector<std::string> names;
    side->ColumnsToList(names, true);
    combo->clear();
    for (const std::string& name : names) combo->addItem(Q(name));
    SelectText(*combo, side->KeyField);
  }
}

void JobTargetPage::Load() {
  CJob& job = *form_.Job();
  SelectItemData(*cboJobItemTypeDest, job.JobDest().JobType);
  SelectExportTable(job.JobDest().ItemObjectName);
  CheckExportCreateTable->setChecked(job.JobDest().CreateTable);
  CheckExportDeletBeforeInsert->setChecked(job.JobDest().DeleteBeforeInsert);
  CheckCancelOnError->setChecked(job.CancelOnError);
  CheckTargetDBUpdates->setChecked(job.DestinationUpdate);
  TargetDBUpdatesChanged();
  CheckTargetFilterUserDefined->setChecked(job.JobDest().DestinationFilterUserDefined);
  EditDestinationUserdefinedFilter->setPlainText(
      Q(job.JobDest().DestinationFilterUserDefinedScript));
  TargetFilterUserDefinedChanged();
}

void JobTargetPage::SelectExportTable(const std::string& name) {
  if (SelectText(*cboExportDBTables, name) < 0) cboExportDBTables->setEditText(Q(name));
}

void JobTargetPage::ExportTableChanged(const std::string& name) {
  CJob& job = *form_.Job();
  CJobItem& dest = job.JobDest();
  if (name != dest.ItemObjectName || dest.Columns().Count() == 0) {
    CDatabase* store = dest.Database();
    dest.ItemObjectName = store && !store->IsFileBased() ? MakeIdentifier(name) : name;
    if (store && store->DatabaseType == dbtOutlook) {
      store->CopyOutlookObjectsToTargetJobs(job);
    } else {
      std::string error;
      if (store && store->ObjectByName(dest.ItemObjectName, error, false)) {
        dest.ReloadColumns(true);
      } else {
        dest.CreateTable = true;
        CheckExportCreateTable->setChecked(true);
        job.CopyColumns(true);
      }
    }
    FillKeyCombos();
    form_.MappingPage().ClearAllTargetColumn();
    form_.MappingPage().InitTargetColumns();
    form_.ScriptPage().GenerateScript();
  }
  form_.ReloadSourceDB(false);
  form_.SetControls();
}

void JobTargetPage::TargetDBUpdatesChanged() {
  panelTargetDBUpdates->setVisible(CheckTargetDBUpdates->isChecked());
}

void JobTargetPage::TargetFilterUserDefinedChanged() {
  const bool userDefined = CheckTargetFilterUserDefined->isChecked();
  TabTargetFilter->setCurrentIndex(userDefined ? 1 : 0);
  cmdShowEditorBig->setEnabled(userDefined);
  if (userDefined && EditDestinationUserdefinedFilter->toPlainText().isEmpty() && form_.Job())
    EditDestinationUserdefinedFilter->setPlainText(
        Q(form_.Job()->GenerateScriptFilterUserDefined()));
}

}  // namespace ketrova::dialogs
