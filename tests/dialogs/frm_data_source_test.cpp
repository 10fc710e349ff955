// The data-store dialog as a user meets it: which page opens, the validation
// texts, the choosers and their questions, what OK writes into the store and
// the connection it tries, and the keys that close the form. Driven through
// ModalAnswerer on the running modal dialog; the pages' load and store rules
// are also checked without it.
#include "dialogs/frm_data_source.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "dialogs/data_source_pages.h"
#include "dialogs/qt_user_interface.h"
#include "modal_answerer.h"
#include "platform/contacts/contact_store.h"
#include "qt_printers.h"
#include "stores/database.h"
#include "support/registry.h"
#include "support/system.h"

namespace ketrova::dialogs {
namespace {

using testing::ModalAnswerer;
using testing::SeenModal;

// The Qt user interface, counting the beeps and noting the dialog's status
// line whenever the hourglass goes up (as it does while a store opens).
class CountingUserInterface : public QtUserInterface {
 public:
  void Beep() override { ++beeps; }
  void SetMousePointer(int pointer) override {
    if (QWidget* window = QApplication::activeModalWidget(); window && pointer == ui::vbHourglass)
      if (auto* status = window->findChild<QLabel*>(QStringLiteral("LabelStatusMessage")))
        statusWhileBusy.push_back(status->text().toStdString());
    QtUserInterface::SetMousePointer(pointer);
  }
  int beeps = 0;
  std::vector<std::string> statusWhileBusy;
};

template <typename T = QWidget>
T* Child(QWidget& window, const char* name) {
  T* child = window.findChild<T*>(QString::fromUtf8(name));
  EXPECT_NE(child, nullptr) << name;
  return child;
}

void SetText(QWidget& window, const char* name, const std::string& text) {
  if (auto* combo = window.findChild<QComboBox*>(QString::fromUtf8(name)))
    combo->setEditText(QString::fromStdString(text));
  else if (auto* edit = Child<QLineEdit>(window, name))
    edit->setText(QString::fromStdString(text));
}

std::string Text(QWidget& window, const char* name) {
  if (auto* combo = window.findChild<QComboBox*>(QString::fromUtf8(name)))
    return combo->currentText().toStdString();
  auto* edit = Child<QLineEdit>(window, name);
  return edit ? edit->text().toStdString() : std::string();
}

void Click(QWidget& window, const char* name) {
  if (auto* button = Child<QPushButton>(window, name)) button->click();
}

// Picks the explorer item of a store type, as a click on it does.
void SelectType(QWidget& window, int type) {
  auto* explorer = Child<QListWidget>(window, "vbaExplorer");
  for (int row = 0; row < explorer->count(); ++row)
    if (explorer->item(row)->data(Qt::UserRole).toInt() == type) explorer->setCurrentRow(row);
}

void Key(QWidget& target, int key, const QString& text = {}) {
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
  QApplication::sendEvent(&target, &press);
}

int PageType(QWidget& window) {
  return qobject_cast<frmDataSource*>(&window)->PageType();
}

class FrmDataSourceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ui::SetCurrent(ui_);
    ASSERT_TRUE(folder_.isValid());
    project_.SetProjectDirectory(Folder());
    project_.EditMode = edEdit;
  }
  void TearDown() override {
    EXPECT_EQ(answerer_.Pending(), 0);
    for (const SeenModal& seen : answerer_.Seen()) EXPECT_EQ(seen.problem, "") << seen.name;
    ui::SetCurrent(nullptr);
  }

  std::string Folder() const { return folder_.path().toStdString(); }
  std::string InFolder(const std::string& name) const { return Folder() + "/" + name; }

  bool Run(int direction = dbdSource) { return RunDataSourceDialog(project_, direction, store_); }
  // The message boxes seen, in order.
  std::vector<SeenModal> Boxes() const {
    std::vector<SeenModal> boxes;
    for (const SeenModal& seen : answerer_.Seen())
      if (seen.name == "MsgBox") boxes.push_back(seen);
    return boxes;
  }

  std::shared_ptr<CountingUserInterface> ui_ = std::make_shared<CountingUserInterface>();
  ModalAnswerer answerer_;
  QTemporaryDir folder_{QDir::tempPath() + QStringLiteral("/frmds-XXXXXX")};
  CConverter project_;
  CDatabase store_;
};

// ---- Which page opens, and the headers ----

TEST_F(FrmDataSourceTest, OpensOnTheStoresPageOrOnODBC) {
  struct Case {
    int editMode;
    int storedType;
    int direction;
    int page;
    const char* header;
  };
  const Case cases[] = {
      {edNew, dbtAccess, dbdSource, dbtODBC, "Quelldatenspeicher wählen"},
      {edEdit, 0, dbdTarget, dbtODBC, "Zieldatenspeicher wählen"},
      {edEdit, dbtUndefined, dbdSource, dbtODBC, "Quelldatenspeicher wählen"},
      {edEdit, dbtAccess, dbdTarget, dbtAccess, "Zieldatenspeicher wählen"},
      {edEdit, dbtText, dbdSource, dbtText, "Quelldatenspeicher wählen"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.editMode) + "/" + std::to_string(c.storedType));
    project_.EditMode = c.editMode;
    store_.DatabaseType = c.storedType;
    answerer_.Act([&](QWidget& window) {
      EXPECT_EQ(PageType(window), c.page);
      EXPECT_EQ(Child<QLabel>(window, "lblContext")->text().toStdString(), c.header);
      EXPECT_TRUE(Child<QLabel>(window, "LabelHeaderBig")
                      ->text()
                      .startsWith(c.direction == dbdSource ? "Woher sollen" : "Wohin sollen"));
      auto* item = Child<QListWidget>(window, "vbaExplorer")->currentItem();
      ASSERT_NE(item, nullptr);
      EXPECT_EQ(item->data(Qt::UserRole).toInt(), c.page);
      Click(window, "ButtonCancel");
    });
    EXPECT_FALSE(Run(c.direction));
  }
}

TEST_F(FrmDataSourceTest, XmlAndWatcomFindNoItemAndAnswerTrue) {
  for (int type : {dbtXML, dbtWatcom}) {
    store_.DatabaseType = type;
    answerer_.PressButton("vbOK");
    EXPECT_TRUE(Run());
    ASSERT_FALSE(answerer_.Seen().empty());
    EXPECT_EQ(answerer_.Seen().back().name, "MsgBox");  // the form never showed
    EXPECT_EQ(answerer_.Seen().back().text,
              "Der gewählte Datenspeicher konnte nicht ermittelt werden.");
    EXPECT_EQ(answerer_.Seen().back().title, "Ketrova");
    EXPECT_EQ(store_.DatabaseType, type);
  }
}

// ---- Validation ----

TEST_F(FrmDataSourceTest, ValidationTextsLaterTestsOverrideEarlierOnes) {
  const std::string missing = InFolder("fehlt");
  struct Case {
    int type;
    std::vector<std::pair<const char*, std::string>> fields;
    std::vector<const char*> answers;  // the question's answer, then the error box's
    std::string text;
  };
  const Case cases[] = {
      {dbtSQLServer,
       {{"EditSQLServerServerName", ""}, {"EditSQLServerDataBase", "db"}},
       {"vbOK"},
       "Sie müssen den Computernamen eingeben, auf dem der SQL-Server läuft !"},
      {dbtSQLServer,
       {{"EditSQLServerServerName", ""}, {"EditSQLServerDataBase", ""}},
       {"vbOK"},
       "Sie müssen die Datenbank des SQL-Server´s eingeben !"},
      {dbtInterbase,
       {{"EditInterbaseServerName", ""}, {"EditInterbaseDataBase", "db"}},
       {"vbOK"},
       "Sie müssen den Computernamen eingeben, auf dem der Server läuft !"},
      {dbtInterbase,
       {{"EditInterbaseServerName", "host"}, {"EditInterbaseDataBase", ""}},
       {"vbOK"},
       "Sie müssen die Datenbank des Server´s eingeben !"},
      {dbtMySQL,
       {{"EditMySQLServername", ""}, {"EditMySQLDataBase", ""}},
       {"vbOK"},
       "Sie müssen die Datenbank des Server´s eingeben !"},
      {dbtParadox,
       {{"EditParadoxFileName", missing}},
       {"vbOK"},
       "Der Datenbank-Ordner exitsiert nicht ! \r\n>>> " + missing +
           " <<< \r\nWählen Sie bitte einen gültigen Ordner aus. "},
      {dbtText,
       {{"EditTextFileFileName", missing}},
       {"vbOK"},
       "Der Ordner exitsiert nicht ! \r\n>>> " + missing +
           " <<< \r\nWählen Sie bitte einen gültigen Ordner aus. "},
      {dbtAccess,
       {{"EditAccessFileName", ""}},
       {"vbNo", "vbOK"},
       "Die Access-Datenbankdatei existiert nicht, geben Sie bitte eine gültigen Dateinamen an !"},
      {dbtExcel,
       {{"EditExcelFileName", missing + ".XLS"}},
       {"vbNo", "vbOK"},
       "Die Excel-Datei existiert nicht, geben Sie bitte eine gültigen Dateinamen an !"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const std::size_t before = Boxes().size();
    store_.DatabaseType = dbtODBC;
    store_.DriverName = "unverändert";
    answerer_.Act([&](QWidget& window) {
      SelectType(window, c.type);
      for (const auto& [name, text] : c.fields) SetText(window, name, text);
      Click(window, "ButtonOK");
      EXPECT_TRUE(window.isVisible());
      for (const auto& [name, text] : c.fields) EXPECT_EQ(Text(window, name), text);
      Click(window, "ButtonCancel");
    });
    for (const char* answer : c.answers) answerer_.PressButton(answer);
    EXPECT_FALSE(Run());
    const std::vector<SeenModal> boxes = Boxes();
    ASSERT_EQ(boxes.size(), before + c.answers.size());
    if (c.answers.size() == 2) {
      EXPECT_EQ(boxes[before].icon, 64);
      EXPECT_EQ(boxes[before].buttons, (std::vector<std::string>{"vbYes", "vbNo"}));
      EXPECT_EQ(boxes[before].text, c.type == dbtAccess
                                        ? "Die Access-Datenbankdatei existiert nicht, möchten "
                                          "Sie eine Neue anlegen"
                                        : "Die Excel-Datei existiert nicht, möchten Sie eine "
                                          "Neue anlegen");
    }
    EXPECT_EQ(boxes.back().text, c.text);
    EXPECT_EQ(boxes.back().icon, 16);
    EXPECT_EQ(boxes.back().title, "Ketrova");
    // A refused page writes nothing.
    EXPECT_EQ(store_.DatabaseType, dbtODBC);
    EXPECT_EQ(store_.DriverName, "unverändert");
  }
}

// ---- The choosers ----

TEST_F(FrmDataSourceTest, FileChoosersAppendTheExtensionAndAskForNewFiles) {
  QFile existing(QString::fromStdString(InFolder("alt.mdb")));
  ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
  existing.close();
  struct Case {
    int type;
    const char* button;
    const char* field;
    std::string chosen;
    std::string shown;
    const char* answer;  // to "create a new file?"; null: not asked
  };
  const Case cases[] = {
      {dbtAccess, "cmdOpenFileAccess", "EditAccessFileName", "neu", InFolder("neu.MDB"), "vbNo"},
      {dbtExcel, "cmdOpenFileExcel", "EditExcelFileName", "tabelle", InFolder("tabelle.XLS"),
       "vbYes"},
      {dbtAccess, "cmdOpenFileAccess", "EditAccessFileName", "alt.mdb", InFolder("alt.mdb"),
       nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.chosen);
    const std::size_t before = answerer_.Seen().size();
    answerer_.Act([&](QWidget& window) {
      SelectType(window, c.type);
      Click(window, c.button);
      auto* edit = Child<QLineEdit>(window, c.field);
      EXPECT_EQ(edit->text().toStdString(), c.shown);
      EXPECT_EQ(edit->cursorPosition(), edit->text().size());
      Click(window, "ButtonCancel");
    });
    answerer_.ChooseFile(InFolder(c.chosen));
    if (c.answer) answerer_.PressButton(c.answer);
    EXPECT_FALSE(Run());
    const auto& seen = answerer_.Seen();
    ASSERT_GE(seen.size(), before + 2);
    EXPECT_EQ(seen[before + 1].name, "FileOpen");
    EXPECT_EQ(seen[before + 1].directory.toStdString(), Folder());
    EXPECT_EQ(seen[before + 1].nameFilters,
              QStringList(c.type == dbtAccess ? QStringLiteral("*.MDB") : QStringLiteral("*.XLS")));
    if (c.answer) {
      ASSERT_EQ(seen.size(), before + 3);
      EXPECT_EQ(seen.back().text, "Die Datei existiert nicht, möchten Sie eine neue anlegen!");
      EXPECT_EQ(seen.back().icon, 16);
    } else {
      EXPECT_EQ(seen.size(), before + 2);
    }
  }
}

// Yes to the chooser's question stands for that file: OK does not ask again
// and goes on to open it.
TEST_F(FrmDataSourceTest, ChoosersYesSparesTheAccessQuestionOnOK) {
  answerer_.Act([&](QWidget& window) {
    SelectType(window, dbtAccess);
    Click(window, "cmdOpenFileAccess");
    Click(window, "ButtonOK");
    Click(window, "ButtonCancel");
  });
  answerer_.ChooseFile(InFolder("neu"));
  answerer_.PressButton("vbYes");
  answerer_.PressButton("vbOK");  // the file cannot be opened
  EXPECT_FALSE(Run());
  const std::vector<SeenModal> boxes = Boxes();
  ASSERT_EQ(boxes.size(), 2u);
  EXPECT_EQ(boxes[0].text, "Die Datei existiert nicht, möchten Sie eine neue anlegen!");
  EXPECT_EQ(boxes[1].text, store_.LastErrorMessage());
  EXPECT_EQ(store_.DatabaseType, dbtAccess);
  EXPECT_EQ(store_.DatabaseFileName, InFolder("neu.MDB"));
}

// ---- Closing the form ----

TEST_F(FrmDataSourceTest, EscapeAndF6KeepTheStoreAndAnswerTrueCancelAnswersFalse) {
  struct Case {
    const char* how;
    bool answer;
  };
  for (const Case& c : {Case{"Escape", true}, Case{"F6", true}, Case{"ButtonCancel", false}}) {
    SCOPED_TRACE(c.how);
    store_.DatabaseType = dbtSQLServer;
    store_.DataSourceName = "srv";
    store_.DatabaseName = "db";
    answerer_.Act([&](QWidget& window) {
      SetText(window, "EditSQLServerDataBase", "andere");
      auto* edit = Child<QLineEdit>(window, "EditSQLServerDataBase");
      Key(*edit, Qt::Key_Return);  // does nothing
      EXPECT_TRUE(window.isVisible());
      const std::string how = c.how;
      if (how == "ButtonCancel")
        Click(window, "ButtonCancel");
      else
        Key(*edit, how == "F6" ? Qt::Key_F6 : Qt::Key_Escape);
      EXPECT_FALSE(window.isVisible());
    });
    EXPECT_EQ(Run(), c.answer);
    EXPECT_EQ(store_.DatabaseType, dbtSQLServer);
    EXPECT_EQ(store_.DataSourceName, "srv");
    EXPECT_EQ(store_.DatabaseName, "db");
  }
}

// A store that does not open shows its text and keeps the dialog and its
// fields; what OK wrote stays, whether the form is then left with Escape
// (True) or Cancel (False).
TEST_F(FrmDataSourceTest, AFailedOpenKeepsTheDialogAndTheWrittenStore) {
  for (const char* leave : {"Escape", "ButtonCancel"}) {
    SCOPED_TRACE(leave);
    store_.DatabaseType = dbtText;
    store_.DatabaseFileName = Folder();
    answerer_.Act([&](QWidget& window) {
      SelectType(window, dbtODBC);
      EXPECT_EQ(Text(window, "cboDSNList"), kNoDataSource);
      SetText(window, "cboDrivers", "KeinSolcherTreiber");
      SetText(window, "txtDatabase", InFolder("x.db"));
      Click(window, "ButtonOK");
      EXPECT_TRUE(window.isVisible());
      EXPECT_EQ(PageType(window), dbtODBC);
      EXPECT_EQ(Text(window, "cboDrivers"), "KeinSolcherTreiber");
      EXPECT_EQ(Text(window, "txtDatabase"), InFolder("x.db"));
      EXPECT_EQ(Child<QLabel>(window, "LabelStatusMessage")->text(), "");
      if (std::string(leave) == "Escape")
        Key(window, Qt::Key_Escape);
      else
        Click(window, leave);
    });
    answerer_.PressButton("vbOK");
    EXPECT_EQ(Run(), std::string(leave) == "Escape");
    EXPECT_NE(store_.ErrorNumber(), 0);
    ASSERT_FALSE(Boxes().empty());
    EXPECT_EQ(Boxes().back().text, store_.LastErrorMessage());
    EXPECT_NE(store_.LastErrorMessage(), "");
    EXPECT_EQ(store_.DatabaseType, dbtODBC);
    EXPECT_EQ(store_.DriverName, "KeinSolcherTreiber");
    EXPECT_EQ(store_.DatabaseName, InFolder("x.db"));
    EXPECT_EQ(store_.DataSourceName, "");  // "(Keine)" is no data source
    EXPECT_EQ(store_.DatabaseFileName, "");
    ASSERT_FALSE(ui_->statusWhileBusy.empty());
    EXPECT_EQ(ui_->statusWhileBusy.back(), "Datenspeicher wird geöffnet ...");
  }
}

// An SQLite file named by the driver and the database; a failed attempt
// first does not spoil the second.
TEST_F(FrmDataSourceTest, AGoodConnectionConfirmsAndTheStoreIsOpen) {
  project_.EditMode = edNew;
  answerer_.Act([&](QWidget& window) {
    SetText(window, "cboDrivers", "KeinSolcherTreiber");
    SetText(window, "txtDatabase", InFolder("ziel.db"));
    Click(window, "ButtonOK");
    ASSERT_TRUE(window.isVisible());
    SetText(window, "cboDrivers", "SQLite3");
    Click(window, "ButtonOK");
  });
  answerer_.PressButton("vbOK");
  EXPECT_TRUE(Run(dbdTarget));
  EXPECT_EQ(Boxes().size(), 1u);
  EXPECT_TRUE(store_.Active());
  EXPECT_EQ(store_.DatabaseType, dbtODBC);
  EXPECT_EQ(store_.DriverName, "SQLite3");
  EXPECT_EQ(store_.DatabaseName, InFolder("ziel.db"));
  store_.SetActive(false);
}

// ---- Fields ----

TEST_F(FrmDataSourceTest, TypingIsRefusedWithABeepInExactlyTheChosenFileFields) {
  frmDataSource form;
  form.Converter = &project_;
  store_.DatabaseType = dbtAccess;
  ASSERT_TRUE(form.Prepare(store_));
  struct Case {
    const char* field;
    bool refused;
  };
  for (const Case& c : {Case{"EditAccessFileName", true}, Case{"EditExcelFileName", true},
                        Case{"EditTextFileFileName", true}, Case{"EditParadoxFileName", false},
                        Case{"EditAccessUserName", false}}) {
    SCOPED_TRACE(c.field);
    auto* edit = Child<QLineEdit>(form, c.field);
    edit->setText("/alt");
    const int beeps = ui_->beeps;
    Key(*edit, Qt::Key_A, "a");
    Key(*edit, Qt::Key_Backspace);
    EXPECT_EQ(edit->text(), "/alt");
    Key(*edit, Qt::Key_X, "x");
    EXPECT_EQ(edit->text(), c.refused ? "/alt" : "/altx");
    EXPECT_EQ(ui_->beeps - beeps, c.refused ? 3 : 0);
  }
}

TEST_F(FrmDataSourceTest, APageSwitchDiscardsWhatWasTypedOnThePageLeft) {
  frmDataSource form;
  form.Converter = &project_;
  store_.DatabaseType = dbtSQLServer;
  store_.DatabaseName = "db";
  ASSERT_TRUE(form.Prepare(store_));
  SetText(form, "EditSQLServerDataBase", "getippt");
  SelectType(form, dbtMySQL);
  EXPECT_EQ(form.PageType(), dbtMySQL);
  SelectType(form, dbtSQLServer);
  EXPECT_EQ(Text(form, "EditSQLServerDataBase"), "db");
  EXPECT_EQ(store_.DatabaseName, "db");
}

TEST_F(FrmDataSourceTest, AChosenDataSourceDisablesServerAndDriver) {
  frmDataSource form;
  form.Converter = &project_;
  ASSERT_TRUE(form.Prepare(store_));
  const char* dependent[] = {"txtServer", "cboDrivers", "lblLabels4", "lblLabels5"};
  for (const auto& [dsn, enabled] :
       {std::pair<const char*, bool>{"(Keine)", true}, {"Kunden", false}, {"", true}}) {
    SetText(form, "cboDSNList", dsn);
    for (const char* name : dependent)
      EXPECT_EQ(Child(form, name)->isEnabled(), enabled) << dsn << " " << name;
  }
}

// The three asymmetries and the defaults of empty parameters, by the pages
// alone.
TEST_F(FrmDataSourceTest, PagesLoadAndStoreTheirParameters) {
  struct Case {
    int type;
    std::vector<std::pair<const char*, std::string>> shown;  // from the store below
    std::vector<std::pair<const char*, std::string>> typed;
    std::string CDatabase::*field;
    std::string stored;
  };
  CDatabase loaded;
  loaded.DataSourceName = "quelle";
  loaded.ServerName = "server";
  loaded.DatabaseName = "datenbank";
  const Case cases[] = {
      {dbtSQLServer,
       {{"EditSQLServerServerName", "quelle"}},
       {{"EditSQLServerServerName", "h"}},
       &CDatabase::DataSourceName,
       "h"},
      {dbtInterbase,
       {{"EditInterbaseServerName", "quelle"}, {"EditInterbaseDataBase", ""}},
       {{"EditInterbaseDataBase", "ib"}},
       &CDatabase::DatabaseName,
       "datenbank"},
      {dbtMySQL,
       {{"EditMySQLServername", "quelle"}, {"EditMySQLPortAdress", "3306"}},
       {{"EditMySQLServername", "my"}},
       &CDatabase::ServerName,
       "my"},
      {dbtMySQL, {}, {{"EditMySQLServername", "my"}}, &CDatabase::DataSourceName, "quelle"},
      // The contact folder is no store parameter: the page shows the one
      // the store reads and stores nothing.
      {dbtOutlook,
       {{"EditOutlookContactRoot", contacts::ContactRoot()}},
       {{"EditOutlookContactRoot", "/anderswo"}},
       &CDatabase::DataSourceName,
       "quelle"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.type);
    const StorePage& page = *StorePageOf(c.type);
    std::unique_ptr<QWidget> widget(BuildStorePage(page));
    LoadStorePage(page, *widget, loaded, project_);
    for (const auto& [name, text] : c.shown) EXPECT_EQ(Text(*widget, name), text) << name;
    CDatabase written;
    written.DataSourceName = "quelle";
    written.DatabaseName = "datenbank";
    for (const auto& [name, text] : c.typed) SetText(*widget, name, text);
    StoreStorePage(page, *widget, written);
    EXPECT_EQ(written.*c.field, c.stored);
  }

  CDatabase empty;
  const std::pair<int, std::pair<const char*, std::string>> defaults[] = {
      {dbtSQLServer, {"EditSQLServerServerName", GetComputerName()}},
      {dbtMySQL, {"EditMySQLServername", "localhost"}},
      {dbtMySQL, {"EditMySQLPortAdress", "3306"}},
      {dbtParadox, {"EditParadoxFileName", Folder()}},
      {dbtText, {"EditTextFileFileName", Folder()}},
  };
  for (const auto& [type, field] : defaults) {
    std::unique_ptr<QWidget> widget(BuildStorePage(*StorePageOf(type)));
    LoadStorePage(*StorePageOf(type), *widget, empty, project_);
    EXPECT_EQ(Text(*widget, field.first), field.second) << field.first;
  }
}

// OK clears every parameter and writes those of the page: the Interbase
// database is checked but not stored, and the host goes to DataSourceName.
TEST_F(FrmDataSourceTest, OKWritesOnlyThePagesParameters) {
  store_.DatabaseType = dbtMySQL;
  store_.ServerName = "alt";
  store_.PortAdress = "3306";
  store_.DatabaseFileName = "/alt";
  answerer_.Act([&](QWidget& window) {
    SelectType(window, dbtInterbase);
    SetText(window, "EditInterbaseServerName", "ibhost");
    SetText(window, "EditInterbaseDataBase", "ibdb");
    SetText(window, "EditInterbaseUserName", "u");
    Click(window, "ButtonOK");  // only the common tail: the open fails
    Key(window, Qt::Key_Escape);
  });
  answerer_.PressButton("vbOK");
  EXPECT_TRUE(Run());
  EXPECT_EQ(store_.DatabaseType, dbtInterbase);
  EXPECT_EQ(store_.DataSourceName, "ibhost");
  EXPECT_EQ(store_.UserName, "u");
  EXPECT_EQ(store_.DatabaseName, "");
  EXPECT_EQ(store_.ServerName, "");
  EXPECT_EQ(store_.PortAdress, "");
  EXPECT_EQ(store_.DatabaseFileName, "");
}

// The Outlook page asks for the contact folder; OK keeps it in Ketrova's
// settings before the store is tried, so the store opens on it.
TEST_F(FrmDataSourceTest, TheOutlookPageKeepsTheContactFolderInTheSettings) {
  CRegistry registry;
  const std::string before = registry.GetRegSetting("ContactRoot", 0, HKEY_CURRENT_USER, "Ketrova");
  const std::string root = contacts::ContactRoot();
  const std::string folder = InFolder("kontakte");
  ASSERT_TRUE(QDir().mkpath(QString::fromStdString(folder + "/Adressbuch/Kontakte")));
  std::string shown;
  answerer_.Act([&](QWidget& window) {
    SelectType(window, dbtOutlook);
    shown = Text(window, "EditOutlookContactRoot");
    EXPECT_EQ(window.findChild<QLineEdit*>(QStringLiteral("EditOutlookServerName")), nullptr);
    SetText(window, "EditOutlookContactRoot", folder);
    Click(window, "ButtonOK");
  });
  EXPECT_TRUE(Run());
  EXPECT_EQ(shown, root);
  EXPECT_EQ(registry.GetRegSetting("ContactRoot", 0, HKEY_CURRENT_USER, "Ketrova"), folder);
  EXPECT_EQ(contacts::ContactRoot(), folder);
  EXPECT_EQ(store_.DatabaseType, dbtOutlook);
  EXPECT_TRUE(store_.Active());
  EXPECT_EQ(store_.DataSourceName, "");
  EXPECT_EQ(store_.UserName, "");
  store_.SetActive(false);
  registry.WriteRegistry(HKEY_CURRENT_USER, "Ketrova", "ContactRoot", REG_SZ, before);
}

}  // namespace
}  // namespace ketrova::dialogs
