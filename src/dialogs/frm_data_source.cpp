#include "dialogs/frm_data_source.h"

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "core/converter.h"
#include "dialogs/combo_list_control.h"
#include "dialogs/data_source_pages.h"
#include "dialogs/explorer_bar.h"
#include "dialogs/file_name_dialog.h"
#include "dialogs/store_pictures.h"
#include "platform/ui/ui_helpers.h"
#include "platform/ui/user_interface.h"
#include "stores/database.h"
#include "stores/odbc_sources.h"
#include "support/files.h"
#include "support/registry.h"
#include "support/text.h"

namespace ketrova::dialogs {
namespace {

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

constexpr const char* kSourceHeader = "Quelldatenspeicher wählen";
constexpr const char* kSourceText =
    "Woher sollen die Daten entnommen werden ?. Sie können die Daten aus einer der untenstehenden "
    "aufgeführten Quellen importieren. Wählen Sie eine der folgenden Quellen aus.";
constexpr const char* kDestHeader = "Zieldatenspeicher wählen";
constexpr const char* kDestText =
    "Wohin sollen die Daten gehen ?. Sie können die Daten in eine der untenstehenden aufgeführten "
    "Quellen exportieren. Wählen Sie eine der folgenden Quellen aus.";
constexpr const char* kOpening = "Datenspeicher wird geöffnet ...";
constexpr const char* kNoItem = "Der gewählte Datenspeicher konnte nicht ermittelt werden.";

// The file choosers' default extension (with "*.") and filter by store type.
struct FileChoice {
  const char* defaultExtension;
  const char* filter;
};

FileChoice FileChoiceOf(int type) {
  switch (type) {
    case dbtAccess:
      return {"*.MDB", "*.MDB"};
    case dbtParadox:
      return {"*.DBF", "*.DBF;*.DB"};
    case dbtExcel:
      return {"*.XLS", "*.XLS"};
    case dbtText:
      return {"*.TXT", "*.TXT;*.CSV"};
    default:
      return {"*.XML", "*.XML"};
  }
}

bool IsRefusedTypingField(const QObject* object) {
  const QString name = object->objectName();
  return name == QLatin1String("EditAccessFileName") ||
         name == QLatin1String("EditExcelFileName") ||
         name == QLatin1String("EditTextFileFileName");
}

}  // namespace

frmDataSource::frmDataSource(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmDataSource"));
  BuildForm();
}

frmDataSource::~frmDataSource() = default;

void frmDataSource::BuildForm() {
  setWindowTitle(QString::fromUtf8(kSourceHeader));
  setSizeGripEnabled(true);
  const QFontMetrics metrics = fontMetrics();
  const int line = metrics.height();

  // The explorer bar.
  std::vector<ExplorerEntry> entries;
  for (const StorePage& page : StorePages())
    entries.push_back({StoreTypeIcon(page.type), QString::fromUtf8(page.caption), page.type});
  ExplorerBar bar = MakeExplorerBar(*this, QStringLiteral("Datenbanken"),
                                    QStringLiteral("barDatenbanken"), entries);
  vbaExplorer_ = bar.list;
  QVBoxLayout* left = bar.layout;
  const QFont bold = bar.title->font();

  // The header and the pages.
  lblContext_ = new QLabel;
  lblContext_->setObjectName(QStringLiteral("lblContext"));
  QFont big = bold;
  big.setPointSizeF(bold.pointSizeF() * 1.3);
  lblContext_->setFont(big);
  labelHeaderBig_ = new QLabel;
  labelHeaderBig_->setObjectName(QStringLiteral("LabelHeaderBig"));
  labelHeaderBig_->setWordWrap(true);
  labelHeaderBig_->setTextFormat(Qt::PlainText);
  auto* rule = new QFrame;
  rule->setFrameShape(QFrame::HLine);
  rule->setFrameShadow(QFrame::Sunken);
  picContent_ = new QStackedWidget;
  picContent_->setObjectName(QStringLiteral("picContent"));
  picContent_->setMinimumWidth(metrics.averageCharWidth() * 60);
  for (const StorePage& page : StorePages()) {
    QWidget* widget = BuildStorePage(page);
    picContent_->addWidget(widget);
    pages_[page.type] = widget;
    for (auto* edit : widget->findChildren<QLineEdit*>()) {
      if (!IsRefusedTypingField(edit)) continue;
      edit->installEventFilter(this);
      edit->setContextMenuPolicy(Qt::NoContextMenu);
      edit->setAcceptDrops(false);
      edit->setAttribute(Qt::WA_InputMethodEnabled, false);
    }
    for (auto* label : widget->findChildren<QLabel*>())
      if (label->objectName().startsWith(QLatin1String("LabelPicture")))
        label->setPixmap(StoreTypeIcon(page.type).pixmap(2 * line));
  }
  auto* right = new QVBoxLayout;
  right->addWidget(lblContext_);
  right->addWidget(labelHeaderBig_);
  right->addWidget(rule);
  right->addWidget(picContent_, 1);

  auto* body = new QHBoxLayout;
  body->addLayout(left);
  body->addSpacing(line / 2);
  body->addLayout(right, 1);

  // The status line and the buttons.
  labelStatusMessage_ = new QLabel;
  labelStatusMessage_->setObjectName(QStringLiteral("LabelStatusMessage"));
  buttonOK_ = new QPushButton(QStringLiteral("OK"));
  buttonOK_->setObjectName(QStringLiteral("ButtonOK"));
  buttonCancel_ = new QPushButton(QStringLiteral("Abbrechen"));
  buttonCancel_->setObjectName(QStringLiteral("ButtonCancel"));
  // Return presses nothing: no button is a default one.
  for (QPushButton* button : {buttonOK_, buttonCancel_}) {
    button->setAutoDefault(false);
    button->setDefault(false);
    button->setMinimumWidth(metrics.averageCharWidth() * 12);
  }
  auto* bottomRule = new QFrame;
  bottomRule->setFrameShape(QFrame::HLine);
  bottomRule->setFrameShadow(QFrame::Sunken);
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(labelStatusMessage_, 1);
  bottom->addWidget(buttonOK_);
  bottom->addWidget(buttonCancel_);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(body, 1);
  layout->addWidget(bottomRule);
  layout->addLayout(bottom);

  cboDSNList_ = findChild<QComboBox*>(QStringLiteral("cboDSNList"));
  cboDrivers_ = findChild<QComboBox*>(QStringLiteral("cboDrivers"));
  connect(cboDSNList_, &QComboBox::currentTextChanged, this, [this] { UpdateODBCEnabling(); });
  connect(vbaExplorer_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
    if (m_Database) ShowPage(item->data(Qt::UserRole).toInt());
  });
  connect(vbaExplorer_, &QListWidget::currentItemChanged, this,
          [this](QListWidgetItem* item, QListWidgetItem*) {
            if (item && m_Database && item != m_SelectedItem)
              ShowPage(item->data(Qt::UserRole).toInt());
          });
  for (int type : {dbtAccess, dbtExcel}) {
    const StorePage* page = StorePageOf(type);
    connect(findChild<QPushButton*>(QString::fromUtf8(page->chooserName)), &QPushButton::clicked,
            this, [this, type] { ChooseFile(type); });
  }
  for (int type : {dbtParadox, dbtText, dbtOutlook}) {
    const StorePage* page = StorePageOf(type);
    connect(findChild<QPushButton*>(QString::fromUtf8(page->chooserName)), &QPushButton::clicked,
            this, [this, type] { ChooseFolder(type); });
  }
  connect(buttonOK_, &QPushButton::clicked, this, [this] { OnOK(); });
  connect(buttonCancel_, &QPushButton::clicked, this, [this] { OnCancel(); });
}

bool frmDataSource::Prepare(CDatabase& database) {
  m_Database = &database;
  ComboListControl dsnList(*cboDSNList_);
  ComboListControl driverList(*cboDrivers_);
  FillODBCDataSources(dsnList, &driverList);

  const bool source = DSType == 0 || DSType == dbdSource;
  lblContext_->setText(QString::fromUtf8(source ? kSourceHeader : kDestHeader));
  labelHeaderBig_->setText(QString::fromUtf8(source ? kSourceText : kDestText));
  setWindowTitle(lblContext_->text());

  int type = dbtODBC;
  if (Converter->EditMode != edNew && database.DatabaseType >= 2) type = database.DatabaseType;
  m_SelectedItem = ItemOfType(type);
  if (!m_SelectedItem) return false;
  ShowPage(type);
  return true;
}

bool frmDataSource::Execute(CDatabase& database) {
  if (Prepare(database))
    exec();
  else
    ui::Current().MsgBox(kNoItem, ui::vbOKOnly, Converter->ProductName());
  ui::Current().DoEvents();
  return m_Cancelled == 0;
}

QListWidgetItem* frmDataSource::ItemOfType(int databaseType) const {
  for (int row = 0; row < vbaExplorer_->count(); ++row) {
    QListWidgetItem* item = vbaExplorer_->item(row);
    if (item->data(Qt::UserRole).toInt() == databaseType) return item;
  }
  return nullptr;
}

void frmDataSource::ShowPage(int databaseType) {
  QListWidgetItem* item = ItemOfType(databaseType);
  const StorePage* page = StorePageOf(databaseType);
  if (!item || !page || !m_Database) return;
  m_SelectedItem = item;
  m_PageType = databaseType;
  picContent_->setCurrentWidget(pages_.at(databaseType));
  {
    const QSignalBlocker blocker(vbaExplorer_);
    vbaExplorer_->setCurrentItem(item);
  }
  LoadStorePage(*page, *pages_.at(databaseType), *m_Database, *Converter);
  if (databaseType == dbtODBC) UpdateODBCEnabling();
}

void frmDataSource::UpdateODBCEnabling() {
  const std::string text = cboDSNList_->currentText().toStdString();
  const bool noSource = text.empty() || text == kNoDataSource;
  QWidget* odbc = pages_.at(dbtODBC);
  for (const char* name : {"txtServer", "cboDrivers", "lblLabels4", "lblLabels5"})
    if (auto* widget = odbc->findChild<QWidget*>(QString::fromUtf8(name)))
      widget->setEnabled(noSource);
}

void frmDataSource::ChooseFile(int databaseType) {
  const FileChoice choice = FileChoiceOf(databaseType);
  // A new Access or Excel file may be named here, so the name need not exist.
  auto chosen = ShowFileNameDialog(this, choice.filter, Converter->ProjectDirectory(), "");
  if (!chosen || chosen->empty()) return;
  std::string name = *chosen;
  const std::string extension = std::string(choice.defaultExtension).substr(2);
  if (FileExtension(name) != extension) name += "." + extension;
  if (!IsPlainName(name)) {
    ui::Current().MsgBox("Dies ist keine gültige Datei !", ui::vbOKOnly, Converter->ProductName());
    name.clear();
  }
  if (!name.empty() && !FileExists(name)) {
    // The answer holds for this file: another file chosen later is asked anew.
    const bool create =
        ui::Current().MsgBox("Die Datei existiert nicht, möchten Sie eine neue anlegen!",
                             ui::vbYesNo | ui::vbCritical, Converter->ProductName()) == ui::vbYes;
    (databaseType == dbtAccess ? m_CreateAccessFile : m_CreateExcelFile) = create;
  }
  const StorePage* page = StorePageOf(databaseType);
  if (auto* edit = pages_.at(databaseType)
                       ->findChild<QLineEdit*>(QString::fromUtf8(page->fields.front().name))) {
    edit->setText(Q(name));
    edit->setCursorPosition(static_cast<int>(edit->text().size()));
  }
}

void frmDataSource::ChooseFolder(int databaseType) {
  const char* name = databaseType == dbtParadox   ? "EditParadoxFileName"
                     : databaseType == dbtOutlook ? "EditOutlookContactRoot"
                                                  : "EditTextFileFileName";
  auto* edit = pages_.at(databaseType)->findChild<QLineEdit*>(QString::fromUtf8(name));
  std::string start = edit->text().toStdString();
  if (start.empty()) start = Converter->ProjectDirectory();
  edit->setText(Q(ui::BrowseForFolder("Ordner auswählen", start)));
  edit->setCursorPosition(static_cast<int>(edit->text().size()));
}

std::string frmDataSource::Validate() {
  const QWidget& page = *pages_.at(m_PageType);
  const auto text = [&page](const char* name) { return FieldText(page, name); };
  const std::string product = Converter->ProductName();
  std::string message;
  switch (m_PageType) {
    case dbtAccess:
      if (!FileExists(text("EditAccessFileName")) && !m_CreateAccessFile &&
          ui::Current().MsgBox(
              "Die Access-Datenbankdatei existiert nicht, möchten Sie eine Neue anlegen",
              ui::vbYesNo | ui::vbInformation, product) != ui::vbYes)
        message =
            "Die Access-Datenbankdatei existiert nicht, geben Sie bitte eine gültigen Dateinamen "
            "an !";
      break;
    case dbtSQLServer:
      if (text("EditSQLServerServerName").empty())
        message = "Sie müssen den Computernamen eingeben, auf dem der SQL-Server läuft !";
      if (text("EditSQLServerDataBase").empty())
        message = "Sie müssen die Datenbank des SQL-Server´s eingeben !";
      break;
    case dbtInterbase:
    case dbtMySQL: {
      const bool interbase = m_PageType == dbtInterbase;
      if (text(interbase ? "EditInterbaseServerName" : "EditMySQLServername").empty())
        message = "Sie müssen den Computernamen eingeben, auf dem der Server läuft !";
      if (text(interbase ? "EditInterbaseDataBase" : "EditMySQLDataBase").empty())
        message = "Sie müssen die Datenbank des Server´s eingeben !";
      break;
    }
    case dbtParadox:
      if (const std::string folder = text("EditParadoxFileName"); !FolderExists(folder))
        message = "Der Datenbank-Ordner exitsiert nicht ! \r\n>>> " + folder +
                  " <<< \r\nWählen Sie bitte einen gültigen Ordner aus. ";
      break;
    case dbtExcel:
      if (!FileExists(text("EditExcelFileName")) && !m_CreateExcelFile &&
          ui::Current().MsgBox("Die Excel-Datei existiert nicht, möchten Sie eine Neue anlegen",
                               ui::vbYesNo | ui::vbInformation, product) != ui::vbYes)
        message = "Die Excel-Datei existiert nicht, geben Sie bitte eine gültigen Dateinamen an !";
      break;
    case dbtText:
      if (const std::string folder = text("EditTextFileFileName"); !FolderExists(folder))
        message = "Der Ordner exitsiert nicht ! \r\n>>> " + folder +
                  " <<< \r\nWählen Sie bitte einen gültigen Ordner aus. ";
      break;
    default:
      break;
  }
  return message;
}

void frmDataSource::StoreFields() {
  CDatabase& database = *m_Database;
  database.DatabaseType = m_SelectedItem->data(Qt::UserRole).toInt();
  for (std::string* field : {&database.DataSourceName, &database.DatabaseName, &database.UserName,
                             &database.Password, &database.DriverName, &database.ServerName,
                             &database.PortAdress, &database.DatabaseFileName})
    field->clear();
  StoreStorePage(*StorePageOf(m_PageType), *pages_.at(m_PageType), database);
}

void frmDataSource::OnOK() {
  if (const std::string message = Validate(); !message.empty()) {
    ui::Current().MsgBox(message, ui::vbCritical, "");
    return;
  }
  StoreFields();
  if (m_PageType == dbtOutlook && OnContactRoot)
    OnContactRoot(FieldText(*pages_.at(m_PageType), "EditOutlookContactRoot"));
  labelStatusMessage_->setText(QString::fromUtf8(kOpening));
  labelStatusMessage_->repaint();
  m_Database->SetActive(false);
  m_Database->SetActive(true);
  labelStatusMessage_->clear();
  // A failure's number outlives a later success, so an attempt counts as
  // failed only when the store did not come open.
  if (m_Database->ErrorNumber() != 0 && !m_Database->Active()) {
    ui::Current().MsgBox(m_Database->LastErrorMessage(), ui::vbOKOnly, Converter->ProductName());
    return;
  }
  m_Cancelled = 0;
  done(QDialog::Accepted);
  ui::Current().DoEvents();
}

void frmDataSource::OnCancel() {
  m_Cancelled = 1;
  done(QDialog::Rejected);
}

void frmDataSource::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
    case Qt::Key_F6:
      done(QDialog::Rejected);  // m_Cancelled stays as it is
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      event->accept();
      return;
    default:
      QDialog::keyPressEvent(event);
  }
}

bool frmDataSource::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && IsRefusedTypingField(watched)) {
    switch (static_cast<QKeyEvent*>(event)->key()) {
      case Qt::Key_Tab:
      case Qt::Key_Backtab:
      case Qt::Key_Escape:
      case Qt::Key_F6:
        return false;  // focus moves; the form's keys reach the form
      case Qt::Key_Shift:
      case Qt::Key_Control:
      case Qt::Key_Alt:
      case Qt::Key_Meta:
      case Qt::Key_AltGr:
        return true;
      default:
        ui::Current().Beep();
        return true;
    }
  }
  return QDialog::eventFilter(watched, event);
}

bool RunDataSourceDialog(CConverter& project, int direction, CDatabase& database) {
  frmDataSource form(QApplication::activeWindow());
  form.DSType = direction;
  form.Converter = &project;
  form.OnContactRoot = [](const std::string& folder) {
    CRegistry().WriteRegistry(HKEY_CURRENT_USER, "Ketrova", "ContactRoot", REG_SZ, folder);
  };
  return form.Execute(database);
}

}  // namespace ketrova::dialogs
