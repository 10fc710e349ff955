#include "dialogs/data_source_pages.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariant>

#include "core/converter.h"
#include "core/enums.h"
#include "dialogs/combo_list_control.h"
#include "platform/contacts/contact_store.h"
#include "stores/database.h"
#include "support/system.h"
#include "support/text.h"

namespace ketrova::dialogs {
namespace {

using K = FieldKind;
using D = FieldDefault;
using DB = CDatabase;

// The help texts, joined from their pieces as they were written.
#define CONTINUE_SERVER                                                             \
  " zuerst eine Datenbank und einen Servernamen auswählen. Sie müssen eventuell " \
  " einen gültigen Benutzernamen und ein Kennwort eingeben."
#define CONTINUE_ACCESS                                                      \
  " zuerst eine Datenbank auswählen. Sie müssen eventuell einen gültigen" \
  " Benutzernamen und ein Kennwort eingeben."

const std::vector<StorePage> kPages = {
    {dbtSQLServer,
     "MS SQL Server",
     "LabelLoginSQLServer",
     "Um eine Verbindung mit einer SQL-Server-Datenquelle herzustellen, müssen Sie" CONTINUE_SERVER,
     {
         {"EditSQLServerServerName", "lblEditSQLServerServerName",
          "Servername:", &DB::DataSourceName, &DB::DataSourceName, D::kComputerName, K::kText},
         {"EditSQLServerDataBase", "lblEditSQLServerDataBase", "Datenbank:", &DB::DatabaseName,
          &DB::DatabaseName, D::kNone, K::kText},
         {"EditSQLServerUserName", "lblEditSQLServerUserName", "Benutzername:", &DB::UserName,
          &DB::UserName, D::kNone, K::kText},
         {"EditSQLServerPassword", "lblEditSQLServerPassword", "Kennwort:", &DB::Password,
          &DB::Password, D::kNone, K::kPassword},
     },
     nullptr},
    {dbtAccess,
     "MS Access",
     "LabelLoginAccess",
     "Um eine Verbindung mit Microsoft Access herzustellen, müssen Sie" CONTINUE_ACCESS,
     {
         {"EditAccessFileName", "lblEditAccessFileName", "Datenbankdatei:", &DB::DatabaseFileName,
          &DB::DatabaseFileName, D::kNone, K::kChosenPath},
         {"EditAccessUserName", "lblEditAccessUserName", "Benutzername:", &DB::UserName,
          &DB::UserName, D::kNone, K::kText},
         {"EditAccessPassword", "lblEditAccessPassword", "Kennwort:", &DB::Password, &DB::Password,
          D::kNone, K::kPassword},
     },
     "cmdOpenFileAccess"},
    {dbtInterbase,
     "Interbase",
     "LabelLoginInterbase",
     "Um eine Verbindung mit einer Interbase-Server-Datenquelle herzustellen, müssen "
     "Sie" CONTINUE_SERVER,
     {
         {"EditInterbaseServerName", "lblEditInterbaseServerName",
          "Servername:", &DB::DataSourceName, &DB::DataSourceName, D::kComputerName, K::kText},
         {"EditInterbaseDataBase", "lblEditInterbaseDataBase", "Datenbank:", nullptr, nullptr,
          D::kNone, K::kText},
         {"EditInterbaseUserName", "lblEditInterbaseUserName", "Benutzername:", &DB::UserName,
          &DB::UserName, D::kNone, K::kText},
         {"EditInterbasePassword", "lblEditInterbasePassword", "Kennwort:", &DB::Password,
          &DB::Password, D::kNone, K::kPassword},
     },
     nullptr},
    {dbtOracle,
     "Oracle",
     "LabelLoginOracle",
     "Eine Oracle-Datenbank erreichen Sie über eine ODBC-Datenquelle. Richten Sie die "
     "Datenquelle ein und wählen Sie sie auf der Seite \"ODBC\" aus.",
     {},
     nullptr},
    {dbtParadox,
     "Paradox / DBase",
     "LabelLoginParadox",
     "Um eine Verbindung mit einer Paradoxdatenquelle herzustellen , müssen Sie"
     " den betreffenden Ordner auswählen, indem sich die *.DB-Dateien befinden."
     " Sie müssen eventuell einen gültigen Benutzernamen und ein Kennwort eingeben.",
     {
         {"EditParadoxFileName", "lblEditParadoxFileName", "Ordner:", &DB::DatabaseFileName,
          &DB::DatabaseFileName, D::kProjectDirectory, K::kPath},
         {"EditParadoxUsername", "lblEditParadoxUsername", "Benutzername:", &DB::UserName,
          &DB::UserName, D::kNone, K::kText},
         {"EditParadoxPassword", "lblEditParadoxPassword", "Kennwort:", &DB::Password,
          &DB::Password, D::kNone, K::kPassword},
     },
     "cmdOpenFileParadox"},
    {dbtMySQL,
     "MySQL",
     "LabelLoginMySQL",
     "Um eine Verbindung mit einer MySQL-Datenquelle herzustellen, müssen Sie" CONTINUE_SERVER,
     {
         {"EditMySQLServername", "lblEditMySQLServername", "Servername:", &DB::DataSourceName,
          &DB::ServerName, D::kLocalhost, K::kText},
         {"EditMySQLDataBase", "lblEditMySQLDataBase", "Datenbank:", &DB::DatabaseName,
          &DB::DatabaseName, D::kNone, K::kText},
         {"EditMySQLPortAdress", "lblEditMySQLPortAdress", "Port:", &DB::PortAdress,
          &DB::PortAdress, D::kMySQLPort, K::kText},
         {"EditMySQLUsername", "lblEditMySQLUsername", "Benutzername:", &DB::UserName,
          &DB::UserName, D::kNone, K::kText},
         {"EditMySQLPassword", "lblEditMySQLPassword", "Kennwort:", &DB::Password, &DB::Password,
          D::kNone, K::kPassword},
     },
     nullptr},
    {dbtExcel,
     "Excel",
     "LabelLoginExcel",
     "Um eine Verbindung mit einer MS-Excel Datenquelle herzustellen, müssen Sie"
     " zuerst eine Excel-Datei auswählen. Sie müssen eventuell ein gültiges"
     " Kennwort eingeben, sofern die Datei mit einem Passwort versehen ist.",
     {
         {"EditExcelFileName", "lblEditExcelFileName", "Excel-Datei:", &DB::DatabaseFileName,
          &DB::DatabaseFileName, D::kNone, K::kChosenPath},
         {"EditExcelPassword", "lblEditExcelPassword", "Kennwort:", &DB::Password, &DB::Password,
          D::kNone, K::kPassword},
     },
     "cmdOpenFileExcel"},
    // The contacts are vCard files in a folder of this computer, so the page
    // asks for that folder instead of a server and a login. The folder is a
    // setting of Ketrova, not of the project: no store parameter holds it, and
    // the dialog's caller keeps it (frmDataSource::OnContactRoot).
    {dbtOutlook,
     "MS Outlook",
     "LabelLoginOutlook",
     "Um eine Verbindung mit den Kontakten herzustellen, müssen Sie keine Benutzernamen"
     " oder Kennwörter eingeben. Wählen Sie den Kontaktordner: jeder Unterordner ist ein"
     " Adressbuch, jeder Kontakt darin eine vCard-Datei. Der Ordner gilt für alle Projekte.",
     {
         {"EditOutlookContactRoot", "lblEditOutlookContactRoot", "Kontaktordner:", nullptr, nullptr,
          D::kContactRoot, K::kPath},
     },
     "cmdOpenFolderOutlook"},
    // The captions of the ODBC fields are the label array lblLabels, by
    // index: 0 data source, 1 database, 2 user, 3 password, 4 driver, 5 server.
    {dbtODBC,
     "ODBC",
     "LabelLoginODBC",
     "Um eine Verbindung mit einer ODBC-Datenquelle herzustellen, müssen Sie" CONTINUE_ACCESS,
     {
         {"cboDSNList", "lblLabels0", "Datenquelle (DSN):", &DB::DataSourceName,
          &DB::DataSourceName, D::kNone, K::kCombo},
         {"cboDrivers", "lblLabels4", "Treiber:", &DB::DriverName, &DB::DriverName, D::kNone,
          K::kCombo},
         {"txtServer", "lblLabels5", "Server:", &DB::ServerName, &DB::ServerName, D::kNone,
          K::kText},
         {"txtDatabase", "lblLabels1", "Datenbank:", &DB::DatabaseName, &DB::DatabaseName, D::kNone,
          K::kText},
         {"txtUID", "lblLabels2", "Benutzername:", &DB::UserName, &DB::UserName, D::kNone,
          K::kText},
         {"txtPWD", "lblLabels3", "Kennwort:", &DB::Password, &DB::Password, D::kNone,
          K::kPassword},
     },
     nullptr},
    {dbtText,
     "Textdateien",
     "LabelLoginTextFile",
     "Um eine Verbindung mit einer Textdatenquelle herzustellen , müssen Sie"
     " den betreffenden Ordner auswählen, indem sich die Textdatei befindet."
     " Dies hat den Vorteil, dass Sie mehrere Dateien in das Projekt einbinden können.",
     {
         {"EditTextFileFileName", "lblEditTextFileFileName", "Ordner:", &DB::DatabaseFileName,
          &DB::DatabaseFileName, D::kProjectDirectory, K::kChosenPath},
     },
     "cmdOpenFileText"},
};

#undef CONTINUE_SERVER
#undef CONTINUE_ACCESS

std::string DefaultText(FieldDefault byDefault, const CConverter& project) {
  switch (byDefault) {
    case D::kComputerName:
      return GetComputerName();
    case D::kProjectDirectory:
      return project.ProjectDirectory();
    case D::kLocalhost:
      return "localhost";
    case D::kMySQLPort:
      return "3306";
    case D::kContactRoot:
      return contacts::ContactRoot();
    case D::kNone:
      break;
  }
  return {};
}

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

}  // namespace

const std::vector<StorePage>& StorePages() {
  return kPages;
}

const StorePage* StorePageOf(int type) {
  for (const StorePage& page : kPages)
    if (page.type == type) return &page;
  return nullptr;
}

QWidget* BuildStorePage(const StorePage& page) {
  auto* widget = new QWidget;
  widget->setObjectName(QStringLiteral("picContent%1").arg(page.type));
  auto* layout = new QVBoxLayout(widget);
  layout->setContentsMargins(0, 0, 0, 0);

  auto* title = new QLabel(QString::fromUtf8(page.caption));
  title->setObjectName(QStringLiteral("LabelPageTitle%1").arg(page.type));
  QFont font = title->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.15);
  title->setFont(font);
  // The store type's picture; the dialog draws it in.
  auto* picture = new QLabel;
  picture->setObjectName(QStringLiteral("LabelPicture%1").arg(page.type));
  auto* titleRow = new QHBoxLayout;
  titleRow->addWidget(picture);
  titleRow->addWidget(title, 1);
  layout->addLayout(titleRow);

  auto* help = new QLabel(QString::fromUtf8(page.help));
  help->setObjectName(QString::fromUtf8(page.helpName));
  help->setWordWrap(true);
  help->setTextFormat(Qt::PlainText);
  layout->addWidget(help);
  layout->addSpacing(help->fontMetrics().height() / 2);

  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
  form->setRowWrapPolicy(QFormLayout::DontWrapRows);
  for (const StoreField& field : page.fields) {
    auto* label = new QLabel(QString::fromUtf8(field.caption));
    label->setObjectName(QString::fromUtf8(field.labelName));
    QWidget* input = nullptr;
    if (field.kind == K::kCombo) {
      auto* combo = new QComboBox;
      combo->setEditable(true);
      combo->setInsertPolicy(QComboBox::NoInsert);
      combo->setMinimumContentsLength(24);
      combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
      input = combo;
    } else {
      auto* edit = new QLineEdit;
      if (field.kind == K::kPassword) edit->setEchoMode(QLineEdit::Password);
      input = edit;
    }
    input->setObjectName(QString::fromUtf8(field.name));
    label->setBuddy(input);
    if ((field.kind == K::kPath || field.kind == K::kChosenPath) && page.chooserName) {
      auto* row = new QHBoxLayout;
      row->addWidget(input, 1);
      auto* chooser = new QPushButton(QStringLiteral("..."));
      chooser->setObjectName(QString::fromUtf8(page.chooserName));
      chooser->setAutoDefault(false);
      chooser->setToolTip(page.type == dbtParadox || page.type == dbtText || page.type == dbtOutlook
                              ? QStringLiteral("Ordner auswählen")
                              : QStringLiteral("Datei auswählen"));
      chooser->setMaximumWidth(chooser->fontMetrics().horizontalAdvance(QStringLiteral("....")) +
                               chooser->fontMetrics().height() * 2);
      row->addWidget(chooser);
      form->addRow(label, row);
    } else {
      form->addRow(label, input);
    }
  }
  layout->addLayout(form);
  layout->addStretch(1);
  return widget;
}

void LoadStorePage(const StorePage& page, QWidget& widget, const CDatabase& database,
                   const CConverter& project) {
  for (const StoreField& field : page.fields) {
    if (!field.load && field.byDefault == D::kNone) continue;
    std::string value = field.load ? database.*field.load : std::string();
    if (value.empty()) value = DefaultText(field.byDefault, project);
    if (field.kind == K::kCombo) {
      auto* combo = widget.findChild<QComboBox*>(QString::fromUtf8(field.name));
      if (!combo) continue;
      ComboListControl list(*combo);
      int index = value.empty() && combo->count() > 0 && IsEqual(list.List(0), kNoDataSource)
                      ? 0
                      : ComboFindText(value, list);
      combo->setCurrentIndex(index);
      // An entry that the list lacks (a driver typed earlier) stays as text.
      if (index < 0) combo->setEditText(Q(value));
    } else if (auto* edit = widget.findChild<QLineEdit*>(QString::fromUtf8(field.name))) {
      edit->setText(Q(value));
      edit->setCursorPosition(static_cast<int>(edit->text().size()));
    }
  }
}

void StoreStorePage(const StorePage& page, const QWidget& widget, CDatabase& database) {
  for (const StoreField& field : page.fields) {
    if (!field.store) continue;
    std::string value = FieldText(widget, field.name);
    if (field.kind == K::kCombo && IsEqual(value, kNoDataSource)) value.clear();
    database.*field.store = value;
  }
}

std::string FieldText(const QWidget& widget, const char* name) {
  const QString objectName = QString::fromUtf8(name);
  if (auto* combo = widget.findChild<QComboBox*>(objectName))
    return combo->currentText().toStdString();
  if (auto* edit = widget.findChild<QLineEdit*>(objectName)) return edit->text().toStdString();
  return {};
}

}  // namespace ketrova::dialogs
