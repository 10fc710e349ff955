#include "dialogs/frm_job.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QStyle>
#include <QVBoxLayout>
#include <climits>
#include <vector>

#include "core/converter.h"
#include "core/enums.h"
#include "dialogs/explorer_bar.h"
#include "dialogs/job_form_widgets.h"
#include "dialogs/job_general_page.h"
#include "dialogs/job_mapping_page.h"
#include "dialogs/job_script_page.h"
#include "dialogs/job_source_page.h"
#include "dialogs/job_target_page.h"
#include "dialogs/store_pictures.h"
#include "jobs/job.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::dialogs {

using namespace jobform;

namespace {

struct PageText {
  const char* entry;
  const char* header;
  const char* text;
};

// The explorer entries, headers and texts of the five pages.
const PageText kPages[] = {
    {"Allgemein", "Allgemeine Einstellungen",
     "Sie können hier allgemeine Einstellungen hinterlegen,  "
     "die für die gesamte Aufgabe gelten."},
    {"Quelle", "Datenherkunft",
     "Sie können das Schema und die Daten, wie in der Quelle vorhanden, "
     "kopieren, oder auf die Seite Filter wechseln, um die Daten zu filtern."},
    {"Ziel", "Ziel wählen",
     "Wohin sollen die Daten gehen ? Sie können die Daten in eine der "
     "untenstehenden aufgeführten Quellen exportieren."},
    {"Feldzuweisungen", "Spaltenzuordnung",
     "Klicken Sie die Quellspalten in die gewünschte Zielspalte. "},
    {"Konvertieren", "Daten Konvertieren",
     "Die Konvertierung wird mithilfe von Active-X Scripts durchgeführt."
     "Wählen Sie eine Scriptsprache aus und ändern sie den automatisch erzeugten Quellcode."},
};

const QStyle::StandardPixmap kPagePictures[] = {
    QStyle::SP_FileDialogDetailedView, QStyle::SP_DriveHDIcon, QStyle::SP_DialogSaveButton,
    QStyle::SP_FileDialogListView, QStyle::SP_FileDialogContentsView};

constexpr const char* kErrorTip =
    "Ein Fehler ist aufgetreten. Klicken Sie hier um Informationen zu sehen.";

// The number a count field holds: its leading digits, as far as they fit.
std::int32_t CountOf(const QString& text) {
  long long number = 0;
  for (char c : Trim(S(text))) {
    if (c < '0' || c > '9') break;
    number = number * 10 + (c - '0');
    if (number > INT_MAX) return INT_MAX;
  }
  return static_cast<std::int32_t>(number);
}

}  // namespace

frmJob::frmJob(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmJob"));
  setWindowTitle(QStringLiteral("Aufgabe bearbeiten"));
  setSizeGripEnabled(true);
  BuildForm();
}

frmJob::~frmJob() = default;

void frmJob::BuildForm() {
  const QFontMetrics metrics = fontMetrics();
  const int line = metrics.height();

  // The explorer bar.
  std::vector<ExplorerEntry> entries;
  for (int i = 0; i < 5; ++i) {
    // The style has no large picture of a store; the source page shows ours.
    QIcon picture = i == 1 ? StoreTypeIcon(dbtODBC) : style()->standardIcon(kPagePictures[i]);
    entries.push_back({picture, QString::fromUtf8(kPages[i].entry), i});
  }
  ExplorerBar bar = MakeExplorerBar(*this, QStringLiteral("Einstellungen"),
                                    QStringLiteral("barEinstellungen"), entries);
  vbaExplorer_ = bar.list;
  QVBoxLayout* left = bar.layout;
  const QFont bold = bar.title->font();

  // The header picHeader.
  auto* picHeader = new QWidget;
  picHeader->setObjectName(QStringLiteral("picHeader"));
  labelHeaderSmall_ = Label("LabelHeaderSmall", {}, picHeader);
  QFont big = bold;
  big.setPointSizeF(bold.pointSizeF() * 1.3);
  labelHeaderSmall_->setFont(big);
  labelHeaderText_ = Label("LabelHeaderText", {}, picHeader);
  labelHeaderText_->setWordWrap(true);
  labelHeaderText_->setTextFormat(Qt::PlainText);
  lblContextDetail_ = Label("lblContextDetail", {}, picHeader);
  lblContextDetail_->setTextFormat(Qt::PlainText);
  labelFieldMergeInfo_ = Label("LabelFieldMergeInfo", {}, picHeader);
  labelFieldMergeInfo_->setTextFormat(Qt::PlainText);
  labelFieldMergeInfo_->setFont(bold);
  auto* headerTop = new QHBoxLayout;
  headerTop->addWidget(labelHeaderSmall_, 1);
  headerTop->addWidget(lblContextDetail_);
  auto* header = new QVBoxLayout(picHeader);
  header->setContentsMargins(0, 0, 0, 0);
  header->addLayout(headerTop);
  header->addWidget(labelHeaderText_);
  header->addWidget(labelFieldMergeInfo_);
  auto* rule = new QFrame;
  rule->setFrameShape(QFrame::HLine);
  rule->setFrameShadow(QFrame::Sunken);

  // The pages, and the preview in their place while it shows.
  general_ = new JobGeneralPage(*this);
  source_ = new JobSourcePage(*this);
  target_ = new JobTargetPage(*this);
  mapping_ = new JobMappingPage;
  mapping_->setObjectName(QStringLiteral("panelMapping"));
  script_ = new JobScriptPage;
  script_->setObjectName(QStringLiteral("panelScript"));
  panelPages_ = new QStackedWidget;
  panelPages_->setObjectName(QStringLiteral("panelPages"));
  for (QWidget* page :
       std::initializer_list<QWidget*>{general_, source_, target_, mapping_, script_})
    panelPages_->addWidget(page);
  content_ = new QStackedWidget;
  content_->addWidget(panelPages_);
  content_->addWidget(source_->panelDemoData);
  auto* right = new QVBoxLayout;
  right->addWidget(picHeader);
  right->addWidget(rule);
  right->addWidget(content_, 1);

  auto* body = new QHBoxLayout;
  body->addLayout(left);
  body->addSpacing(line / 2);
  body->addLayout(right, 1);

  // The status line and the buttons.
  imageError_ = Label("ImageError", {}, this);
  imageError_->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(line));
  imageError_->setToolTip(QString::fromUtf8(kErrorTip));
  imageError_->setCursor(Qt::PointingHandCursor);
  imageError_->installEventFilter(this);
  imageError_->setVisible(false);
  labelInfo_ = Label("LabelInfo", {}, this);
  labelInfo_->setTextFormat(Qt::PlainText);
  progressBar_ = new QProgressBar(this);
  progressBar_->setObjectName(QStringLiteral("ProgressBar"));
  progressBar_->setMaximumWidth(metrics.averageCharWidth() * 20);
  progressBar_->setVisible(false);
  checkDemoData_ = Check("CheckDemoData", QStringLiteral("Demodaten anzeigen"), this);
  buttonOK_ = Button("ButtonOK", QStringLiteral("OK"), this);
  buttonCancel_ = Button("ButtonCancel", QStringLiteral("Abbrechen"), this);
  for (QPushButton* button : {buttonOK_, buttonCancel_})
    button->setMinimumWidth(metrics.averageCharWidth() * 12);
  auto* bottomRule = new QFrame;
  bottomRule->setFrameShape(QFrame::HLine);
  bottomRule->setFrameShadow(QFrame::Sunken);
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(imageError_);
  bottom->addWidget(labelInfo_, 1);
  bottom->addWidget(progressBar_);
  bottom->addWidget(checkDemoData_);
  bottom->addWidget(buttonOK_);
  bottom->addWidget(buttonCancel_);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(body, 1);
  layout->addWidget(bottomRule);
  layout->addLayout(bottom);
  resize(metrics.averageCharWidth() * 110, line * 36);

  script_->BindMapping(mapping_);
  script_->SetEditorBigHost(this);

  connect(vbaExplorer_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
    if (job_) ShowPage(item->data(Qt::UserRole).toInt());
  });
  connect(checkDemoData_, &QCheckBox::toggled, this, &frmJob::DemoDataToggled);
  connect(buttonOK_, &QPushButton::clicked, this, &frmJob::ButtonOK);
  connect(buttonCancel_, &QPushButton::clicked, this, &frmJob::ButtonCancel);
}

std::string frmJob::Title() const {
  return converter_ ? converter_->ProductName() : std::string("Ketrova");
}

bool frmJob::Execute(CJob& objJob) {
  Load(objJob);
  cancelled_ = true;
  exec();
  if (!cancelled_) SaveJob();
  return !cancelled_;
}

void frmJob::Load(CJob& objJob) {
  job_ = &objJob;
  mapping_->SetJob(job_);
  script_->SetJob(job_);
  LoadJob();
  ShowPage(kGeneral);
}

void frmJob::LoadJob() {
  if (!job_) return;
  // Change events are suppressed while the form is filled: by the flag, and
  // by blocking the signals of the controls of the frame's own pages.
  std::vector<QObject*> blocked;
  for (QWidget* page : std::initializer_list<QWidget*>{general_, source_, target_}) {
    for (QWidget* control : page->findChildren<QWidget*>()) {
      if (qobject_cast<QComboBox*>(control) || qobject_cast<QAbstractButton*>(control) ||
          qobject_cast<QLineEdit*>(control) || qobject_cast<QPlainTextEdit*>(control)) {
        if (!control->signalsBlocked()) {
          control->blockSignals(true);
          blocked.push_back(control);
        }
      }
    }
  }
  loading_ = true;
  try {
    general_->Load();
    target_->LoadLists();
    source_->Load();
    target_->Load();
    mapping_->InitTargetColumns();
    script_->Load();
  } catch (const VbError& error) {
    SetLastError(error.Description);
  }
  loading_ = false;
  for (QObject* control : blocked) control->blockSignals(false);
}

void frmJob::SaveJob() {
  if (!job_) return;
  CJob& job = *job_;
  CJobItem& source = job.JobSource();
  CJobItem& dest = job.JobDest();
  job.Caption = S(general_->EditJobCaption->text());
  job.JobType = static_cast<std::int32_t>(SelectedItemData(*general_->cboJobType, job.JobType));
  job.TriggerType =
      static_cast<std::int32_t>(SelectedItemData(*general_->cboTriggerType, job.TriggerType));
  job.ScriptLanguage =
      static_cast<std::int32_t>(SelectedItemData(*general_->cboScriptLanguage, job.ScriptLanguage));
  source.JobType =
      static_cast<std::int32_t>(SelectedItemData(*source_->cboJobItemTypeSource, source.JobType));

  job.ObjectName = S(source_->cboImportDBObjects->currentText());
  job.LogFile = S(general_->EditLogFileName->text());
  job.MaxRecords = CountOf(general_->EditRecordCount->text());
  job.Enabled = general_->CheckActive->isChecked();

  source.SQL = S(source_->EditSQL->toPlainText());

  if (source.Filtered && !source_->SaveFilter()) {
    ui::Current().MsgBox(
        "Sie haben das Kennzeichen zum Filtern gesetzt, jedoch sind keine gültigen Filter"
        "aktiviert worden !."
        "Das Filterkennzeichen wird zurückgesetzt.",
        ui::vbOKOnly | ui::vbInformation, Title());
    source.Filtered = false;
  }

  dest.ItemObjectName = S(target_->cboExportDBTables->currentText());
  dest.DeleteBeforeInsert = target_->CheckExportDeletBeforeInsert->isChecked();
  dest.CreateTable = target_->CheckExportCreateTable->isChecked();

  if (script_->EditorBigOpen()) script_->CloseEditor();

  job.DestinationUpdate = target_->CheckTargetDBUpdates->isChecked();

  dest.DestinationFilterUserDefined = target_->CheckTargetFilterUserDefined->isChecked();
  dest.DestinationFilterUserDefinedScript =
      S(target_->EditDestinationUserdefinedFilter->toPlainText());
  job.CancelOnError = target_->CheckCancelOnError->isChecked();

  source.KeyField = S(target_->cboDBUpdateSourceTableField->currentText());
  dest.KeyField = S(target_->cboDBUpdateTargetTableField->currentText());

  script_->Save();
}

bool frmJob::CheckInput() {
  if (!job_ || !general_->CheckActive->isChecked()) return true;
  if (script_->EditorBigOpen()) script_->CloseEditor();
  std::string message;
  if (Trim(S(general_->EditJobCaption->text())).empty())
    message = "Sie müssen eine Aufgabentitel eingeben !";
  if (job_->JobSource().JobType != jitSQLInsertUpdate) {
    const bool updates = target_->CheckTargetDBUpdates->isChecked();
    const bool userSearch = target_->CheckTargetFilterUserDefined->isChecked();
    if (updates && !userSearch &&
        (target_->cboDBUpdateSourceTableField->currentIndex() < 0 ||
         target_->cboDBUpdateTargetTableField->currentIndex() < 0))
      message =
          "Wenn Sie Datenbankupdates auf dem Zielsystem durchführen, müssen Sie \r\n"
          "die Verbindungsfelder beider Tabellen selektieren !";
    if (updates && userSearch && target_->EditDestinationUserdefinedFilter->toPlainText().isEmpty())
      message = "Wenn Sie Datenbankupdates auf dem Zielsystem durchführen, und >>> " +
                S(target_->CheckTargetFilterUserDefined->text()) + " <<< \r\n" +
                "markieren, müsen Sie auch das Suchmuster definieren !";
    if (!script_->CheckTargetFields())
      message =
          "Sie haben noch keine Quellspalten zu den Zielspalten zugewiesen !\r\n"
          "Wechseln Sie bitte zur Seite >>> Feldzuweiungen <<< und weisen Sie Zielspalten zu! ";
  }
  if (message.empty()) return true;
  ui::Current().MsgBox(message, ui::vbOKOnly | ui::vbExclamation, Title());
  return false;
}

void frmJob::ShowPage(int page) {
  if (page < kGeneral || page > kScript || !job_) return;
  if (page == kTarget) {
    CDatabase* target = job_->JobDest().Database();
    if (!target || target->DatabaseType == dbtUndefined) {
      ui::Current().MsgBox("Sie müssen zuerst eine Zieldatenbank definieren !.",
                           ui::vbOKOnly | ui::vbExclamation, Title());
      page = page - 1;
    }
  }
  page_ = page;
  panelPages_->setCurrentIndex(page);
  {
    const QSignalBlocker blocker(vbaExplorer_);
    vbaExplorer_->setCurrentRow(page);
  }
  labelHeaderSmall_->setText(QString::fromUtf8(kPages[page].header));
  labelHeaderText_->setText(QString::fromUtf8(kPages[page].text));
  if (script_->EditorBigOpen()) script_->CloseEditor();
  SetControls();
  ReloadSourceDB(false);
  UpdateHeaderInfo();
}

void frmJob::UpdateHeaderInfo() {
  if (!job_) return;
  const CJobItem& side = page_ <= kSource ? job_->JobSource() : job_->JobDest();
  const CDatabase* store = side.Database();
  lblContextDetail_->setText(
      Q((store ? store->DatabaseTypeString() : std::string()) + " [" + side.ItemObjectName + "]"));
  labelFieldMergeInfo_->setText(
      Q(job_->JobSource().ItemObjectName + " -> " + job_->JobDest().ItemObjectName));
}

void frmJob::SetControls() {
  if (!job_) return;
  source_->SetControls();
  target_->findChild<QWidget*>(QStringLiteral("panelDBExport"))->setEnabled(true);
}

void frmJob::ReloadSourceDB(bool bReload) {
  if (reloading_ || !job_) return;
  reloading_ = true;
  CJobItem& source = job_->JobSource();
  std::string step;
  try {
    step = "Objekte der Quelle einlesen";
    source_->FillObjectList();
    step = "Spaltenlisten leeren";
    source_->ClearColumnGrid();
    mapping_->ClearGrids();
    if (bReload && source.JobType != jitSQLInsertUpdate) {
      step = "Felder aktualisieren";
      SetInfo("Felder werden aktualisiert ...");
      if (!source.ReloadColumns(true)) {
        SetLastError(source.LastErrorMessage);
        source.ClearError();
      }
      source_->InitFilter();
      SetInfo({});
    }
    step = "Spalten einlesen";
    source_->FillColumnGrid();
    mapping_->FillSourceColumns();
    if (!job_->JobDest().ItemObjectName.empty()) {
      step = "Zielspalten einlesen";
      target_->SelectExportTable(job_->JobDest().ItemObjectName);
      mapping_->InitTargetColumns();
    }
  } catch (const VbError& error) {
    SetLastError(error.Description + "\r\nAusgeführte Aktion : " + step);
  } catch (const std::exception& error) {
    SetLastError(std::string(error.what()) + "\r\nAusgeführte Aktion : " + step);
  }
  UpdateHeaderInfo();
  reloading_ = false;
}

void frmJob::SetInfo(const std::string& text) {
  labelInfo_->setText(Q(text));
}

void frmJob::SetLastError(const std::string& text) {
  lastError_ = text;
  imageError_->setVisible(!text.empty());
}

void frmJob::ShowLastError() {
  if (!lastError_.empty()) ui::Current().MsgBox(lastError_, ui::vbOKOnly | ui::vbCritical, Title());
  SetLastError({});
}

void frmJob::DemoDataToggled(bool checked) {
  content_->setCurrentIndex(checked ? 1 : 0);
  if (checked) source_->GetDemoData();
}

void frmJob::ButtonOK() {
  if (!CheckInput()) return;
  cancelled_ = false;
  accept();
}

void frmJob::ButtonCancel() {
  cancelled_ = true;
  reject();
}

bool frmJob::eventFilter(QObject* watched, QEvent* event) {
  if (watched == imageError_ && event->type() == QEvent::MouseButtonRelease) {
    ShowLastError();
    return true;
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace ketrova::dialogs
