#include "dialogs/job_general_page.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/converter.h"
#include "core/enums.h"
#include "dialogs/file_name_dialog.h"
#include "dialogs/frm_job.h"
#include "dialogs/job_form_widgets.h"
#include "dialogs/job_script_page.h"
#include "jobs/job.h"
#include "platform/ui/user_interface.h"
#include "support/files.h"
#include "support/text.h"
#include "support/utf8.h"

namespace ketrova::dialogs {

using namespace jobform;

JobGeneralPage::JobGeneralPage(frmJob& form) : form_(form) {
  setObjectName(QStringLiteral("panelGeneral"));
  EditJobCaption = Edit("EditJobCaption", this);
  cboJobType = Combo("cboJobType", this);
  AddEntry(*cboJobType, QStringLiteral("DBOperation"), jtDBOperation);
  AddEntry(*cboJobType, QStringLiteral("FileCopy"), jtFileCopy);
  AddEntry(*cboJobType, QStringLiteral("Registry"), jtRegistry);
  AddEntry(*cboJobType, QStringLiteral("EMail"), jtEMail);
  cboTriggerType = Combo("cboTriggerType", this);
  const char* triggers[] = {"OnStartProject", "OnEndProject", "OnStartConvert", "OnConvert",
                            "OnEndConvert",   "OnStartJob",   "OnEndJob"};
  for (int i = 0; i < 7; ++i)
    AddEntry(*cboTriggerType, QLatin1String(triggers[i]), ttOnStartProject + i);
  EditRecordCount = Edit("EditRecordCount", this);
  EditRecordCount->setMaximumWidth(fontMetrics().averageCharWidth() * 14);
  EditLogFileName = Edit("EditLogFileName", this);
  EditLogFileName->installEventFilter(this);
  cmdOpenFile = Button("cmdOpenFile", QStringLiteral("..."), this);
  cmdOpenFile->setFixedWidth(fontMetrics().horizontalAdvance(QStringLiteral("...")) +
                             fontMetrics().averageCharWidth() * 3);
  CheckActive = Check("CheckActive", QStringLiteral("Aktiv"), this);
  cboScriptLanguage = Combo("cboScriptLanguage", this);
  AddEntry(*cboScriptLanguage, QStringLiteral("VB-Script"), sclVBScript);
  AddEntry(*cboScriptLanguage, QStringLiteral("Java-Script"), sclJavaScript);

  auto* grid = new QGridLayout;
  int row = 0;
  auto addRow = [&](const char* name, const QString& caption, QWidget* field,
                    QWidget* extra = nullptr) {
    grid->addWidget(Label(name, caption, this), row, 0);
    if (extra) {
      auto* line = new QHBoxLayout;
      line->addWidget(field, 1);
      line->addWidget(extra);
      grid->addLayout(line, row, 1);
    } else {
      const bool wide = field == EditJobCaption;
      grid->addWidget(field, row, 1, wide ? Qt::Alignment() : Qt::AlignLeft);
    }
    ++row;
  };
  addRow("LabelJobCaption", QStringLiteral("Beschreibung"), EditJobCaption);
  addRow("LabelJobType", QStringLiteral("Aufgabentyp"), cboJobType);
  addRow("LabelTriggerType", QStringLiteral("Ausführen bei"), cboTriggerType);
  addRow("LabelRecordCount", QStringLiteral("Anzahl Datensätze"), EditRecordCount);
  addRow("LabelLogFileName", QStringLiteral("Logdatei"), EditLogFileName, cmdOpenFile);
  addRow("LabelScriptLanguage", QStringLiteral("Scriptsprache"), cboScriptLanguage);
  grid->addWidget(CheckActive, row++, 1);
  grid->setColumnStretch(1, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(grid);
  layout->addStretch(1);

  connect(cboJobType, &QComboBox::currentIndexChanged, this, [this] {
    if (form_.Loading() || !form_.Job()) return;
    form_.Job()->JobType = static_cast<std::int32_t>(SelectedItemData(*cboJobType));
  });
  connect(cboTriggerType, &QComboBox::currentIndexChanged, this, [this] {
    if (form_.Loading() || !form_.Job()) return;
    form_.Job()->TriggerType = static_cast<std::int32_t>(SelectedItemData(*cboTriggerType));
  });
  connect(cboScriptLanguage, &QComboBox::currentIndexChanged, this, [this] {
    if (form_.Loading() || !form_.Job()) return;
    form_.Job()->ScriptLanguage =
        static_cast<std::int32_t>(SelectedItemData(*cboScriptLanguage, sclVBScript));
    form_.ScriptPage().ScriptLanguageChanged();
  });
  connect(CheckActive, &QCheckBox::toggled, this, [this](bool checked) {
    if (form_.Loading() || !form_.Job()) return;
    form_.Job()->Enabled = checked;
  });
  connect(cmdOpenFile, &QPushButton::clicked, this, &JobGeneralPage::OpenFile);
}

void JobGeneralPage::Load() {
  CJob& job = *form_.Job();
  SelectItemData(*cboJobType, job.JobType);
  SelectItemData(*cboTriggerType, job.TriggerType);
  EditJobCaption->setText(Q(job.Caption));
  EditRecordCount->setText(QString::number(job.MaxRecords));
  CheckActive->setChecked(job.Enabled);
  SelectItemData(*cboScriptLanguage, job.ScriptLanguage);
}

void JobGeneralPage::OpenFile() {
  const std::string pattern = "*.LOG";
  const std::string folder = form_.Converter() ? form_.Converter()->WorkingDirectory : "";
  // A cancelled dialog gives back its pattern, as the common dialog did.
  std::string name = ShowFileNameDialog(this, pattern, folder, pattern).value_or(pattern);
  if (IsEqual(name, pattern)) return;
  ui::UserInterface& ui = ui::Current();
  if (IsPlainName(name) && FileExists(name)) {
    const int answer = ui.MsgBox("Die Datei existiert bereits, möchten Sie sie überschreiben ?",
                                 ui::vbYesNo | ui::vbQuestion, form_.Title());
    if (answer != ui::vbYes) return;
  }
  if (!IsPlainName(name)) {
    ui.MsgBox("Dies ist keine gültige Datei !", ui::vbOKOnly | ui::vbExclamation, form_.Title());
    name.clear();
  }
  EditLogFileName->setText(Q(name));
}

void JobGeneralPage::CheckLogFileName() {
  const std::string name = S(EditLogFileName->text());
  if (Trim(name).empty()) return;
  std::string message;
  if (!IsPlainName(name))
    message = "Dies ist keine gültige Logdatei !";
  else if (!FileExists(name))
    message = "Die Logdatei existiert nicht !";
  if (message.empty()) return;
  EditLogFileName->clear();
  ui::Current().MsgBox(message, ui::vbOKOnly | ui::vbExclamation, form_.Title());
}

bool JobGeneralPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == EditLogFileName && event->type() == QEvent::FocusOut) CheckLogFileName();
  return QWidget::eventFilter(watched, event);
}

}  // namespace ketrova::dialogs
