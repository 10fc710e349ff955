#include "dialogs/job_script_page.h"

#include <QCheckBox>
#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "core/converter.h"
#include "dialogs/job_mapping_page.h"
#include "dialogs/script_editor.h"
#include "jobs/job.h"
#include "platform/ui/user_interface.h"

namespace ketrova::dialogs {

namespace {

constexpr char kUserDefinedCaption[] = "Benutzerdefiniertes Konvertierungsscript";
constexpr char kSearchCaption[] = "Suchmuster als SQL-Anweisung definieren";
constexpr char kNoTargetFields[] =
    "Fehler in Script:\r\n\tEs wurden keine Zielfelder definiert !\r\n\r\n";
constexpr char kCreateQuestion[] =
    "Wenn Sie diese Meldung mit Ja bestätigen wird das Script Neu geschrieben.\r\n"
    "Eventuelle eigene Zeilen werden überschrieben!\r\n"
    "Möchten Sie jetzt forfahren ??? ";

QPushButton* MakeButton(QWidget* parent, const char* name, const QString& text) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(QString::fromLatin1(name));
  button->setAutoDefault(false);
  return button;
}

// The job's ScriptUserDefined set to `value` for as long as the guard lives.
class UserDefinedScope {
 public:
  UserDefinedScope(CJob& job, bool value) : job_(job), saved_(job.ScriptUserDefined) {
    job_.ScriptUserDefined = value;
  }
  ~UserDefinedScope() { job_.ScriptUserDefined = saved_; }
  UserDefinedScope(const UserDefinedScope&) = delete;
  UserDefinedScope& operator=(const UserDefinedScope&) = delete;

 private:
  CJob& job_;
  bool saved_;
};

}  // namespace

JobScriptPage::JobScriptPage(QWidget* parent)
    : QWidget(parent),
      checkUserDefined_(new QCheckBox(QString::fromUtf8(kUserDefinedCaption), this)),
      cmdCreateScript_(MakeButton(this, "cmdCreateScript", QStringLiteral("Script neu erzeugen"))),
      cmdShowEditorUserScript_(
          MakeButton(this, "cmdShowEditorUserScript", QStringLiteral("Großer Editor ..."))),
      editScript_(new ScriptEditor(this)),
      panelEditorBig_(new QFrame(this)),
      labelEditorBig_(new QLabel(panelEditorBig_)),
      editorBig_(new ScriptEditor(panelEditorBig_)) {
  setObjectName(QStringLiteral("panelConvert"));
  checkUserDefined_->setObjectName(QStringLiteral("CheckScriptUserDefined"));
  editScript_->setObjectName(QStringLiteral("EditScript"));
  cmdCreateScript_->setToolTip(QStringLiteral("Das Script aus den Feldzuweisungen neu schreiben"));
  cmdShowEditorUserScript_->setToolTip(QStringLiteral("Das Script im großen Editor bearbeiten"));

  auto* tools = new QHBoxLayout;
  tools->addWidget(checkUserDefined_);
  tools->addStretch();
  tools->addWidget(cmdCreateScript_);
  tools->addWidget(cmdShowEditorUserScript_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addLayout(tools);
  layout->addWidget(editScript_, 1);

  // The large editor: hidden until opened, then laid over the host.
  auto* frame = static_cast<QFrame*>(panelEditorBig_);
  frame->setObjectName(QStringLiteral("panelEditorBig"));
  frame->setFrameShape(QFrame::StyledPanel);
  frame->setAutoFillBackground(true);
  labelEditorBig_->setObjectName(QStringLiteral("LabelUserdefinedScriptEditor"));
  editorBig_->setObjectName(QStringLiteral("EditorBig"));
  auto* cmdClose = MakeButton(frame, "cmdCloseEditor", QStringLiteral("Übernehmen"));
  auto* cmdCancel = MakeButton(frame, "cmdCancelEditor", QStringLiteral("Abbrechen"));
  auto* panelButtons = new QHBoxLayout;
  panelButtons->addStretch();
  panelButtons->addWidget(cmdClose);
  panelButtons->addWidget(cmdCancel);
  auto* panelLayout = new QVBoxLayout(frame);
  panelLayout->addWidget(labelEditorBig_);
  panelLayout->addWidget(editorBig_, 1);
  panelLayout->addLayout(panelButtons);
  frame->hide();

  connect(checkUserDefined_, &QCheckBox::toggled, this, [this](bool) { UserDefinedToggled(); });
  connect(cmdCreateScript_, &QPushButton::clicked, this, &JobScriptPage::CreateScript);
  connect(cmdShowEditorUserScript_, &QPushButton::clicked, this,
          &JobScriptPage::ShowEditorUserScript);
  connect(cmdClose, &QPushButton::clicked, this, &JobScriptPage::CloseEditor);
  connect(cmdCancel, &QPushButton::clicked, this, &JobScriptPage::CancelEditor);
  SetEnabling();
}

// A panel moved into the host goes with the host.
JobScriptPage::~JobScriptPage() = default;

void JobScriptPage::BindMapping(JobMappingPage* mapping) {
  if (mapping_ != nullptr) disconnect(mapping_, nullptr, this, nullptr);
  mapping_ = mapping;
  if (mapping != nullptr)
    connect(mapping, &JobMappingPage::mappingChanged, this, [this] { GenerateScript(); });
}

void JobScriptPage::SetEditorBigHost(QWidget* host) {
  if (host_ != nullptr) host_->removeEventFilter(this);
  host_ = host;
  QWidget* over = host != nullptr ? host : this;
  const bool open = EditorBigOpen();
  panelEditorBig_->setParent(over);
  if (host != nullptr) host->installEventFilter(this);
  if (open) {
    panelEditorBig_->setGeometry(over->rect());
    panelEditorBig_->show();
    panelEditorBig_->raise();
  } else {
    panelEditorBig_->hide();
  }
}

void JobScriptPage::Load() {
  if (job_ == nullptr) return;
  loading_ = true;
  {
    const QSignalBlocker blocker(checkUserDefined_);
    checkUserDefined_->setChecked(job_->ScriptUserDefined);
  }
  editScript_->SetLanguage(job_->ScriptLanguage);
  editorBig_->SetLanguage(job_->ScriptLanguage);
  editScript_->SetText(job_->Script);
  SetEnabling();
  loading_ = false;
}

std::string JobScriptPage::Save() {
  if (job_ == nullptr) return {};
  job_->ScriptUserDefined = checkUserDefined_->isChecked();
  std::string szError = GenerateScript();
  job_->Script = editScript_->Text();
  return szError;
}

bool JobScriptPage::CheckTargetFields() const {
  if (checkUserDefined_->isChecked()) return true;
  return mapping_ != nullptr && mapping_->AnyAssigned();
}

std::string JobScriptPage::GenerateScript() {
  if (job_ == nullptr || checkUserDefined_->isChecked()) return {};
  if (!CheckTargetFields()) {
    editScript_->SetText(kNoTargetFields);
    return {};
  }
  if (!mapping_->WriteMapping()) return {};
  std::string szError;
  std::string script;
  {
    // The box is unticked: the job generates, whatever it was loaded with.
    const UserDefinedScope scope(*job_, false);
    script = job_->GenerateScript(szError);
  }
  editScript_->SetText(script);
  return szError;
}

void JobScriptPage::ScriptLanguageChanged() {
  if (job_ == nullptr) return;
  editScript_->SetLanguage(job_->ScriptLanguage);
  editorBig_->SetLanguage(job_->ScriptLanguage);
  GenerateScript();
}

bool JobScriptPage::ScriptUserDefined() const {
  return checkUserDefined_->isChecked();
}

std::string JobScriptPage::ScriptText() const {
  return editScript_->Text();
}

void JobScriptPage::ShowEditorBig(const std::string& text,
                                  std::function<void(const std::string&)> writeBack) {
  OpenEditorBig(EditorBigFor::kSearch, text);
  writeBack_ = std::move(writeBack);
}

bool JobScriptPage::EditorBigOpen() const {
  return serves_ != EditorBigFor::kNone;
}

void JobScriptPage::CreateScript() {
  const int answer = ui::Current().MsgBox(kCreateQuestion, ui::vbYesNo, "Warnung");
  if (answer != ui::vbYes) return;
  const std::string szError = GenerateScript();
  if (!szError.empty()) {
    ui::Current().MsgBox(szError, ui::vbOKOnly,
                         job_ != nullptr && job_->Converter != nullptr
                             ? job_->Converter->ProductName()
                             : std::string());
  }
}

void JobScriptPage::ShowEditorUserScript() {
  OpenEditorBig(EditorBigFor::kScript, editScript_->Text());
}

void JobScriptPage::CloseEditor() {
  if (!EditorBigOpen()) return;
  const std::string text = editorBig_->Text();
  const EditorBigFor serves = serves_;
  auto writeBack = std::move(writeBack_);
  HideEditorBig();
  if (serves == EditorBigFor::kScript) {
    editScript_->SetText(text);
  } else if (writeBack) {
    writeBack(text);
  }
}

void JobScriptPage::CancelEditor() {
  HideEditorBig();
}

bool JobScriptPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == host_ && event->type() == QEvent::Resize && EditorBigOpen())
    panelEditorBig_->setGeometry(host_->rect());
  return QWidget::eventFilter(watched, event);
}

void JobScriptPage::UserDefinedToggled() {
  SetEnabling();
  if (loading_ || job_ == nullptr) return;
  if (!checkUserDefined_->isChecked() && editScript_->Text().empty()) {
    std::string szError;
    const UserDefinedScope scope(*job_, false);
    editScript_->SetText(job_->GenerateScript(szError));
  }
}

void JobScriptPage::SetEnabling() {
  const bool userDefined = checkUserDefined_->isChecked();
  cmdCreateScript_->setEnabled(!userDefined);
  cmdShowEditorUserScript_->setEnabled(userDefined);
}

void JobScriptPage::OpenEditorBig(EditorBigFor serves, const std::string& text) {
  serves_ = serves;
  writeBack_ = nullptr;
  labelEditorBig_->setText(
      QString::fromUtf8(serves == EditorBigFor::kSearch ? kSearchCaption : kUserDefinedCaption));
  if (job_ != nullptr) editorBig_->SetLanguage(job_->ScriptLanguage);
  editorBig_->SetText(text);
  QWidget* over = host_ != nullptr ? host_.data() : this;
  panelEditorBig_->setGeometry(over->rect());
  panelEditorBig_->show();
  panelEditorBig_->raise();
  editorBig_->setFocus();
}

void JobScriptPage::HideEditorBig() {
  serves_ = EditorBigFor::kNone;
  writeBack_ = nullptr;
  panelEditorBig_->hide();
}

}  // namespace ketrova::dialogs
