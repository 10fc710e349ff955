#include "dialogs/frm_projekt.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <climits>
#include <string>

#include "core/converter.h"
#include "core/enums.h"
#include "dialogs/file_name_dialog.h"
#include "platform/ui/ui_helpers.h"
#include "platform/ui/user_interface.h"
#include "support/files.h"
#include "support/system.h"
#include "support/text.h"
#include "support/utf8.h"

namespace ketrova::dialogs {
namespace {

constexpr int kAdoInteger = 3;

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

std::string S(const QString& text) {
  return text.toStdString();
}

// The entries of a QComboBox for the look-ups of the system helpers.
class ComboEntries : public ComboList {
 public:
  explicit ComboEntries(const QComboBox& combo) : combo_(combo) {}
  int ListCount() const override { return combo_.count(); }
  std::string List(int index) const override { return S(combo_.itemText(index)); }
  std::int64_t ItemData(int index) const override { return combo_.itemData(index).toLongLong(); }

 private:
  const QComboBox& combo_;
};

// Empties the form's fields, unselects its lists and unchecks its boxes.
void ClearFormControls(QWidget& form) {
  for (QLineEdit* edit : form.findChildren<QLineEdit*>()) edit->clear();
  for (QPlainTextEdit* edit : form.findChildren<QPlainTextEdit*>()) edit->clear();
  for (QComboBox* combo : form.findChildren<QComboBox*>()) combo->setCurrentIndex(-1);
  for (QCheckBox* box : form.findChildren<QCheckBox*>()) box->setChecked(false);
}

// The number a count field holds: its leading digits, as far as they fit;
// `oldValue` when the field is empty.
std::int32_t CountOf(const QString& text, std::int32_t oldValue) {
  const std::string value = Trim(S(text));
  if (value.empty()) return oldValue;
  long long number = 0;
  for (char c : value) {
    if (c < '0' || c > '9') break;
    number = number * 10 + (c - '0');
    if (number > INT_MAX) return INT_MAX;
  }
  return static_cast<std::int32_t>(number);
}

// The old key code of a key typed into a field: the character's code point,
// or 37 and 39 for Left and Right; 0 for a key that types nothing.
int KeyCodeOf(const QKeyEvent& key) {
  const QString text = key.text();
  if (!text.isEmpty()) return static_cast<int>(text.at(0).unicode());
  if (key.key() == Qt::Key_Left) return 37;
  if (key.key() == Qt::Key_Right) return 39;
  return 0;
}

QLabel* Label(const QString& name, const QString& caption, QWidget* parent) {
  auto* label = new QLabel(caption, parent);
  label->setObjectName(name);
  return label;
}

QLineEdit* Edit(const QString& name, QWidget* parent) {
  auto* edit = new QLineEdit(parent);
  edit->setObjectName(name);
  return edit;
}

QPushButton* Button(const QString& name, const QString& caption, QWidget* parent) {
  auto* button = new QPushButton(caption, parent);
  button->setObjectName(name);
  button->setAutoDefault(false);
  return button;
}

}  // namespace

FrmProjekt::FrmProjekt(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmProjekt"));
  setWindowTitle(QStringLiteral("Projektoptionen"));

  editProjektname_ = Edit(QStringLiteral("EditProjektname"), this);
  editFileName_ = Edit(QStringLiteral("EditFileName"), this);
  editFileName_->setReadOnly(true);
  editLogFileName_ = Edit(QStringLiteral("EditLogFileName"), this);
  editErrorFileName_ = Edit(QStringLiteral("EditErrorFileName"), this);
  editRecordCount_ = Edit(QStringLiteral("EditRecordCount"), this);
  editRecordCountDeomodata_ = Edit(QStringLiteral("EditRecordCountDeomodata"), this);
  cboScriptLanguage_ = new QComboBox(this);
  cboScriptLanguage_->setObjectName(QStringLiteral("cboScriptLanguage"));
  cmdOpenFile_ = Button(QStringLiteral("cmdOpenFile"), QStringLiteral("..."), this);
  auto* cmdLogFile = Button(QStringLiteral("cmdLogFile"), QStringLiteral("..."), this);
  auto* cmdErrorFile = Button(QStringLiteral("cmdErrorFile"), QStringLiteral("..."), this);
  labelInfo_ = Label(QStringLiteral("LabelInfo"), QString(), this);
  labelInfo_->setWordWrap(true);
  labelInfo_->setMinimumHeight(fontMetrics().height() * 2);
  auto* ok = Button(QStringLiteral("ButtonOK"), QStringLiteral("OK"), this);
  auto* cancel = Button(QStringLiteral("ButtonCancel"), QStringLiteral("Abbrechen"), this);

  auto* grid = new QGridLayout;
  grid->setColumnStretch(1, 1);
  int row = 0;
  auto addRow = [&](const QString& labelName, const QString& caption, QWidget* field,
                    QWidget* beside) {
    QLabel* label = Label(labelName, caption, this);
    label->setBuddy(field);
    grid->addWidget(label, row, 0);
    auto* line = new QHBoxLayout;
    line->addWidget(field, 1);
    if (beside)
      line->addWidget(beside);
    else
      line->addStretch();
    grid->addLayout(line, row, 1);
    ++row;
  };
  // The "..." buttons as narrow as their text, the counts as wide as a number.
  const int narrow = fontMetrics().horizontalAdvance(QStringLiteral("......")) +
                     2 * fontMetrics().averageCharWidth();
  for (QPushButton* button : {cmdOpenFile_, cmdLogFile, cmdErrorFile})
    button->setFixedWidth(narrow);
  for (QLineEdit* count : {editRecordCount_, editRecordCountDeomodata_}) {
    count->setMaxLength(10);
    count->setMaximumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0000000000000")));
  }
  auto* labelAll =
      Label(QStringLiteral("LabelRecordCountAll"), QStringLiteral("( 0 = alle Datensätze)"), this);
  addRow(QStringLiteral("LabelProjektname"), QStringLiteral("Projektbeschreibung"),
         editProjektname_, nullptr);
  addRow(QStringLiteral("LabelFileName"), QStringLiteral("Projektdatei"), editFileName_,
         cmdOpenFile_);
  addRow(QStringLiteral("LabelLogFileName"), QStringLiteral("Protokolldatei"), editLogFileName_,
         cmdLogFile);
  addRow(QStringLiteral("LabelErrorFileName"), QStringLiteral("Fehlerdatei"), editErrorFileName_,
         cmdErrorFile);
  addRow(QStringLiteral("LabelRecordCount"), QStringLiteral("Anzahl Datensätze"), editRecordCount_,
         labelAll);
  addRow(QStringLiteral("LabelRecordCountDeomodata"),
         QStringLiteral("Anzahl Datensätze Beispieldaten"), editRecordCountDeomodata_, nullptr);
  addRow(QStringLiteral("LabelScriptLanguage"), QStringLiteral("Scriptsprache"), cboScriptLanguage_,
         nullptr);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok);
  buttons->addWidget(cancel);

  auto* main = new QVBoxLayout(this);
  main->addLayout(grid);
  main->addWidget(labelInfo_);
  main->addStretch(1);
  main->addLayout(buttons);
  setMinimumWidth(fontMetrics().averageCharWidth() * 75);

  connect(ok, &QPushButton::clicked, this, &FrmProjekt::ButtonOK);
  connect(cancel, &QPushButton::clicked, this, &FrmProjekt::ButtonCancel);
  connect(cmdOpenFile_, &QPushButton::clicked, this, &FrmProjekt::OpenFile);
  connect(cmdLogFile, &QPushButton::clicked, this, &FrmProjekt::LogFile);
  connect(cmdErrorFile, &QPushButton::clicked, this, &FrmProjekt::ErrorFile);

  // The form sees every key first.
  for (QWidget* child : findChildren<QWidget*>()) child->installEventFilter(this);

  // Form load.
  ClearFormControls(*this);
  cboScriptLanguage_->addItem(QStringLiteral("VB-Script"), sclVBScript);
  cboScriptLanguage_->addItem(QStringLiteral("Java-Script"), sclJavaScript);
  cboScriptLanguage_->setCurrentIndex(0);
}

FrmProjekt::~FrmProjekt() = default;

void FrmProjekt::Load() {
  if (!converter_) return;
  CConverter& c = *converter_;
  editProjektname_->setText(Q(c.ProjectName));
  editFileName_->setText(Q(c.FileName));
  editLogFileName_->setText(Q(c.LogfileName));
  editErrorFileName_->setText(Q(c.ErrorFileName));
  editRecordCount_->setText(QString::number(c.MaxRecords));
  editRecordCountDeomodata_->setText(QString::number(c.MaxDemoData()));
  cboScriptLanguage_->setCurrentIndex(
      ComboFindItemData(c.ScriptLanguage, ComboEntries(*cboScriptLanguage_)));
  cmdOpenFile_->setEnabled(c.EditMode == edNew);
}

bool FrmProjekt::Execute() {
  m_Cancelled = -1;
  Load();
  exec();
  if (m_Cancelled == 0) Store();
  return m_Cancelled == 0;
}

void FrmProjekt::Store() {
  if (!converter_) return;
  CConverter& c = *converter_;
  c.ProjectName = S(editProjektname_->text());
  c.FileName = S(editFileName_->text());
  c.ErrorFileName = S(editErrorFileName_->text());
  c.LogfileName = S(editLogFileName_->text());
  c.MaxRecords = CountOf(editRecordCount_->text(), c.MaxRecords);
  c.SetMaxDemoData(CountOf(editRecordCountDeomodata_->text(), c.MaxDemoData()));
  if (cboScriptLanguage_->currentIndex() >= 0)
    c.ScriptLanguage = cboScriptLanguage_->currentData().toInt();
}

void FrmProjekt::ButtonOK() {
  std::string message;
  if (editProjektname_->text().isEmpty())
    message = "Sie müssen eine Projektbeschreibung eingeben !";
  if (!IsPlainName(S(editFileName_->text()))) message = "Dies ist keine gültige Projektdatei !";
  if (!message.empty()) {
    ui::Current().MsgBox(message, ui::vbOKOnly, converter_ ? converter_->ProductName() : "");
    return;
  }
  m_Cancelled = 0;
  hide();
  ui::Current().DoEvents();
  accept();
}

void FrmProjekt::ButtonCancel() {
  m_Cancelled = 1;
  reject();
}

void FrmProjekt::OpenFile() {
  ChooseFile(FileKind::kProject);
}

void FrmProjekt::LogFile() {
  ChooseFile(FileKind::kLog);
}

void FrmProjekt::ErrorFile() {
  ChooseFile(FileKind::kError);
}

void FrmProjekt::ChooseFile(FileKind kind) {
  std::string folder;
  std::string pattern;
  QLineEdit* field = nullptr;
  std::string invalid = "Dies ist keine gültige Datei !";
  switch (kind) {
    case FileKind::kProject:
      folder = converter_ ? converter_->ProjectDirectory() : std::string();
      pattern = "*.CPF";
      field = editFileName_;
      invalid = "Dies ist keine gültige Projektdatei !";
      break;
    case FileKind::kLog:
      folder = converter_ ? converter_->WorkingDirectory : std::string();
      pattern = "*.LOG";
      field = editLogFileName_;
      break;
    case FileKind::kError:
      folder = converter_ ? converter_->WorkingDirectory : std::string();
      pattern = "*.ERR";
      field = editErrorFileName_;
      break;
  }
  const std::string title = converter_ ? converter_->ProductName() : std::string();

  // A cancelled dialog gives back its pattern, as the common dialog did.
  std::string name = ShowFileNameDialog(this, pattern, folder, pattern).value_or(pattern);
  if (IsEqual(name, pattern)) return;
  if (kind == FileKind::kProject && FileExtension(name) != pattern.substr(pattern.size() - 3))
    name += ".CPF";
  ui::UserInterface& ui = ui::Current();
  if (IsPlainName(name) && FileExists(name)) {
    int answer = ui.MsgBox("Die Datei existiert bereits, möchten Sie sie überschreiben ?",
                           ui::vbYesNo | ui::vbCritical, title);
    if (answer != ui::vbYes) return;
  }
  if (!IsPlainName(name)) {
    ui.MsgBox(invalid, ui::vbOKOnly, title);
    name.clear();
  }
  field->setText(Q(name));

  if (kind == FileKind::kProject && editProjektname_->text().isEmpty()) {
    std::string description = FileName(name);
    if (std::size_t dot = description.find('.'); dot != std::string::npos) description.erase(dot);
    editProjektname_->setText(Q(description));
    editProjektname_->setCursorPosition(static_cast<int>(editProjektname_->text().size()));
  }
}

bool FrmProjekt::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  if (watched == editFileName_ && (type == QEvent::FocusIn || type == QEvent::FocusOut)) {
    labelInfo_->setText(type == QEvent::FocusIn
                            ? QStringLiteral("Wählen Sie bitte ein Datei durch klicken der "
                                             "Schaltfläche '...' ")
                            : QString());
    return false;
  }
  if (type != QEvent::KeyPress) return false;
  auto* key = static_cast<QKeyEvent*>(event);

  // Return moves on, as Tab does.
  if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
    focusNextChild();
    return true;
  }
  if (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) return false;

  if (watched == editFileName_) {
    ui::Current().Beep();
    return true;
  }
  if (watched == editRecordCount_ || watched == editRecordCountDeomodata_) {
    int code = KeyCodeOf(*key);
    if (code == 0) return false;
    // ui::CheckKeyForType beeps for a refused key.
    return !ui::CheckKeyForType(code, kAdoInteger);
  }
  return false;
}

}  // namespace ketrova::dialogs
