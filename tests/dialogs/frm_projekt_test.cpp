// The project options as a user meets them: validation, the file choosers
// with their questions, the keys the fields take, and the new-project wizard
// that starts with them. Modal windows are answered through ModalAnswerer.
#include "dialogs/frm_projekt.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "core/dialogs.h"
#include "dialogs/qt_converter_dialogs.h"
#include "dialogs/qt_user_interface.h"
#include "modal_answerer.h"

namespace ketrova::dialogs {
namespace {

using testing::ModalAnswerer;

template <typename T>
T* Child(QWidget& window, const char* name) {
  T* child = window.findChild<T*>(QString::fromLatin1(name));
  EXPECT_NE(child, nullptr) << name;
  return child;
}

void SetText(QWidget& window, const char* name, const std::string& text) {
  Child<QLineEdit>(window, name)->setText(QString::fromStdString(text));
}

std::string Text(QWidget& window, const char* name) {
  return Child<QLineEdit>(window, name)->text().toStdString();
}

void Click(QWidget& window, const char* name) {
  Child<QPushButton>(window, name)->click();
}

// Sends one key press and release to `target` through the window's filters.
void Type(QWidget* target, int key, const QString& text = {}) {
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
  QApplication::sendEvent(target, &press);
  QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
  QApplication::sendEvent(target, &release);
}

class FrmProjektTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(temp_.isValid());
    ui::SetCurrent(std::make_shared<QtUserInterface>());
    project_.SetProjectDirectory(Path("Projects"));
    project_.WorkingDirectory = Path("");
    project_.ProjectName = "Alt";
    project_.FileName = Path("Projects/alt.CPF");
    project_.MaxRecords = 7;
    project_.SetMaxDemoData(30);
    form_.SetConverter(&project_);
  }
  void TearDown() override { ui::SetCurrent(nullptr); }

  std::string Path(const std::string& name) const {
    return (temp_.path() + "/" + QString::fromStdString(name)).toStdString();
  }

  // Opens the dialog on the project, lets `fill` change its fields, and
  // presses OK; then Cancel should OK leave the dialog open.
  bool ExecuteWith(const std::function<void(QWidget&)>& fill) {
    answerer_.Act([fill](QWidget& window) {
      fill(window);
      Click(window, "ButtonOK");
      if (window.isVisible()) Click(window, "ButtonCancel");
    });
    return form_.Execute();
  }

  QTemporaryDir temp_;
  CConverter project_;
  ModalAnswerer answerer_;
  FrmProjekt form_;
};

TEST_F(FrmProjektTest, LoadShowsTheProject) {
  form_.Load();
  EXPECT_EQ(form_.windowTitle(), "Projektoptionen");
  EXPECT_EQ(Text(form_, "EditProjektname"), "Alt");
  EXPECT_EQ(Text(form_, "EditFileName"), project_.FileName);
  EXPECT_EQ(Text(form_, "EditRecordCount"), "7");
  EXPECT_EQ(Text(form_, "EditRecordCountDeomodata"), "30");
  auto* languages = Child<QComboBox>(form_, "cboScriptLanguage");
  ASSERT_EQ(languages->count(), 2);
  EXPECT_EQ(languages->itemText(0), "VB-Script");
  EXPECT_EQ(languages->itemData(0).toInt(), 1);
  EXPECT_EQ(languages->itemText(1), "Java-Script");
  EXPECT_EQ(languages->itemData(1).toInt(), 2);
  EXPECT_EQ(languages->currentIndex(), 0);
  // Only a new project may choose its file.
  EXPECT_TRUE(Child<QPushButton>(form_, "cmdOpenFile")->isEnabled());
  project_.EditMode = edEdit;
  form_.Load();
  EXPECT_FALSE(Child<QPushButton>(form_, "cmdOpenFile")->isEnabled());
}

TEST_F(FrmProjektTest, InvalidInputKeepsTheDialogOpenWithTheLastMessage) {
  struct Case {
    std::string description, file, message;
  };
  const std::vector<Case> cases = {
      {"", "/x/a.CPF", "Sie müssen eine Projektbeschreibung eingeben !"},
      {"Neu", "", "Dies ist keine gültige Projektdatei !"},
      {"Neu", "*.CPF", "Dies ist keine gültige Projektdatei !"},
      {"", "", "Dies ist keine gültige Projektdatei !"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.description + " / " + c.file);
    ModalAnswerer& answerer = answerer_;
    const std::size_t before = answerer.Seen().size();
    bool openAfterOK = false;
    answerer.Act([&](QWidget& window) {
      SetText(window, "EditProjektname", c.description);
      SetText(window, "EditFileName", c.file);
      Click(window, "ButtonOK");
      openAfterOK = window.isVisible();
      Click(window, "ButtonCancel");
    });
    answerer.PressButton("vbOK");
    FrmProjekt form;
    form.SetConverter(&project_);
    EXPECT_FALSE(form.Execute());
    EXPECT_TRUE(openAfterOK);
    ASSERT_EQ(answerer.Seen().size(), before + 2);
    const testing::SeenModal& box = answerer.Seen()[before + 1];
    EXPECT_EQ(box.text, c.message);
    EXPECT_EQ(box.title, "Ketrova");
    EXPECT_EQ(box.icon, 0);
    EXPECT_EQ(project_.ProjectName, "Alt");
  }
}

TEST_F(FrmProjektTest, OkWritesTheFieldsAndAnEmptyCountKeepsItsValue) {
  EXPECT_TRUE(ExecuteWith([](QWidget& window) {
    SetText(window, "EditProjektname", "Neu");
    SetText(window, "EditLogFileName", "/x/neu.LOG");
    SetText(window, "EditErrorFileName", "/x/neu.ERR");
    SetText(window, "EditRecordCount", "");
    SetText(window, "EditRecordCountDeomodata", "35");
    Child<QComboBox>(window, "cboScriptLanguage")->setCurrentIndex(1);
  }));
  EXPECT_EQ(project_.ProjectName, "Neu");
  EXPECT_EQ(project_.FileName, Path("Projects/alt.CPF"));
  EXPECT_EQ(project_.LogfileName, "/x/neu.LOG");
  EXPECT_EQ(project_.ErrorFileName, "/x/neu.ERR");
  EXPECT_EQ(project_.MaxRecords, 7);
  EXPECT_EQ(project_.MaxDemoData(), 35);
  EXPECT_EQ(project_.ScriptLanguage, sclJavaScript);
}

TEST_F(FrmProjektTest, CancelAndEscapeWriteNothing) {
  answerer_.Act([](QWidget& window) {
    SetText(window, "EditProjektname", "Neu");
    Click(window, "ButtonCancel");
  });
  EXPECT_FALSE(form_.Execute());
  answerer_.Act([](QWidget& window) { SetText(window, "EditProjektname", "Neu"); });
  answerer_.Cancel();
  EXPECT_FALSE(form_.Execute());
  EXPECT_EQ(project_.ProjectName, "Alt");
}

TEST_F(FrmProjektTest, ChosenProjectFileGetsItsExtensionAndNamesTheProject) {
  project_.ProjectName.clear();
  project_.FileName.clear();
  form_.Load();
  answerer_.ChooseFile(Path("Projects/kunden"));
  Click(form_, "cmdOpenFile");
  EXPECT_EQ(Text(form_, "EditFileName"), Path("Projects/kunden.CPF"));
  EXPECT_EQ(Text(form_, "EditProjektname"), "kunden");
  EXPECT_EQ(Child<QLineEdit>(form_, "EditProjektname")->cursorPosition(), 6);
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].directory, QString::fromStdString(Path("Projects")));
  EXPECT_EQ(answerer_.Seen()[0].nameFilters, QStringList{"*.CPF"});

  // A cancelled chooser and a described project leave the fields alone.
  answerer_.Cancel();
  Click(form_, "cmdOpenFile");
  answerer_.ChooseFile(Path("Projects/anders.cpf"));
  Click(form_, "cmdOpenFile");
  EXPECT_EQ(Text(form_, "EditFileName"), Path("Projects/anders.cpf"));
  EXPECT_EQ(Text(form_, "EditProjektname"), "kunden");
}

TEST_F(FrmProjektTest, ExistingFileIsTakenOnlyWhenOverwritingIsConfirmed) {
  form_.Load();
  const std::string log = Path("alt.LOG");
  QFile(QString::fromStdString(log)).open(QIODevice::WriteOnly);
  SetText(form_, "EditLogFileName", "vorher");
  answerer_.ChooseFile(log);
  answerer_.PressButton("vbNo");
  Click(form_, "cmdLogFile");
  EXPECT_EQ(Text(form_, "EditLogFileName"), "vorher");
  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(answerer_.Seen()[0].directory, temp_.path());
  EXPECT_EQ(answerer_.Seen()[1].text,
            "Die Datei existiert bereits, möchten Sie sie überschreiben ?");
  EXPECT_EQ(answerer_.Seen()[1].icon, 16);
  EXPECT_EQ(answerer_.Seen()[1].buttons, (std::vector<std::string>{"vbYes", "vbNo"}));

  answerer_.ChooseFile(log);
  answerer_.PressButton("vbYes");
  Click(form_, "cmdLogFile");
  EXPECT_EQ(Text(form_, "EditLogFileName"), log);
  EXPECT_EQ(answerer_.Pending(), 0);
}

TEST_F(FrmProjektTest, KeysTheFieldsTake) {
  form_.Load();
  form_.show();
  QApplication::setActiveWindow(&form_);
  auto* count = Child<QLineEdit>(form_, "EditRecordCount");
  count->clear();
  count->setFocus();
  struct Key {
    int key;
    QString text;
  };
  // Digits pass, a letter and "," do not, Backspace does.
  for (const Key& k : std::vector<Key>{{Qt::Key_1, "1"},
                                       {Qt::Key_A, "a"},
                                       {Qt::Key_Comma, ","},
                                       {Qt::Key_2, "2"},
                                       {Qt::Key_3, "3"},
                                       {Qt::Key_Backspace, "\b"},
                                       {Qt::Key_Left, ""},
                                       {Qt::Key_0, "0"}})
    Type(count, k.key, k.text);
  EXPECT_EQ(count->text(), "102");

  // No typing reaches the project file; while it has the focus the label
  // tells how to choose one.
  auto* file = Child<QLineEdit>(form_, "EditFileName");
  auto* info = Child<QLabel>(form_, "LabelInfo");
  file->setFocus();
  EXPECT_EQ(info->text(), "Wählen Sie bitte ein Datei durch klicken der Schaltfläche '...' ");
  Type(file, Qt::Key_X, "x");
  Type(file, Qt::Key_Backspace, "\b");
  EXPECT_EQ(file->text().toStdString(), project_.FileName);

  // Return moves on to the next field and presses no button.
  Type(file, Qt::Key_Return, "\r");
  EXPECT_NE(QApplication::focusWidget(), file);
  EXPECT_EQ(info->text(), "");
  EXPECT_TRUE(form_.isVisible());
  form_.hide();
}

TEST_F(FrmProjektTest, NewProjectWithJavaScriptEndsWithVBScript) {
  SetConverterDialogs(std::make_shared<QtConverterDialogs>());
  CConverter project;
  project.SetProjectDirectory(Path("Projects"));
  answerer_.Act([this](QWidget& window) {
    SetText(window, "EditProjektname", "Neu");
    SetText(window, "EditFileName", Path("Projects/neu.CPF"));
    Child<QComboBox>(window, "cboScriptLanguage")->setCurrentIndex(1);
    Click(window, "ButtonOK");
  });
  project.EditNew();
  SetConverterDialogs(nullptr);
  ASSERT_FALSE(answerer_.Seen().empty());
  EXPECT_EQ(answerer_.Seen()[0].title, "Projektoptionen");
  // The options reached the project, all but the language, which Assign
  // does not copy.
  EXPECT_EQ(project.ProjectName, "Neu");
  EXPECT_EQ(project.FileName, Path("Projects/neu.CPF"));
  EXPECT_EQ(project.ScriptLanguage, sclVBScript);
}

}  // namespace
}  // namespace ketrova::dialogs
