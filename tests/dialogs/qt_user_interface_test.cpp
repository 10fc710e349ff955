// The Qt user interface as a user meets it: message boxes and their buttons,
// the InputBox, the work form, the wait cursor and the file and folder
// choosers, answered through ModalAnswerer.
#include "dialogs/qt_user_interface.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QWindow>
#include <algorithm>
#include <climits>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "dialogs/file_filter.h"
#include "dialogs/work_form_window.h"
#include "modal_answerer.h"
#include "qt_printers.h"

namespace ketrova::dialogs {
namespace {

using testing::ModalAnswerer;
using Names = std::vector<std::string>;

class QtUserInterfaceTest : public ::testing::Test {
 protected:
  void TearDown() override {
    ui_.WorkFormHide();
    while (QGuiApplication::overrideCursor()) QGuiApplication::restoreOverrideCursor();
  }

  QtUserInterface ui_;
  ModalAnswerer answerer_;
};

int AnswerOf(const std::string& button) {
  static const std::map<std::string, int> answers = {
      {"vbOK", ui::vbOK},       {"vbCancel", ui::vbCancel}, {"vbAbort", ui::vbAbort},
      {"vbRetry", ui::vbRetry}, {"vbIgnore", ui::vbIgnore}, {"vbYes", ui::vbYes},
      {"vbNo", ui::vbNo}};
  return answers.at(button);
}

// ---- Message boxes ----

struct BoxCase {
  int flags;
  Names buttons;  // left to right
  std::string byDefault;
  int escape;  // the answer of Escape; 0: Escape does nothing
};

const BoxCase kBoxCases[] = {
    {ui::vbOKOnly, {"vbOK"}, "vbOK", ui::vbOK},
    {ui::vbOKCancel, {"vbOK", "vbCancel"}, "vbOK", ui::vbCancel},
    {ui::vbOKCancel | ui::vbDefaultButton2, {"vbOK", "vbCancel"}, "vbCancel", ui::vbCancel},
    {ui::vbAbortRetryIgnore, {"vbAbort", "vbRetry", "vbIgnore"}, "vbAbort", 0},
    {ui::vbAbortRetryIgnore | ui::vbDefaultButton3,
     {"vbAbort", "vbRetry", "vbIgnore"},
     "vbIgnore",
     0},
    {ui::vbYesNoCancel | ui::vbDefaultButton2, {"vbYes", "vbNo", "vbCancel"}, "vbNo", ui::vbCancel},
    {ui::vbYesNo, {"vbYes", "vbNo"}, "vbYes", 0},
    {ui::vbYesNo | ui::vbDefaultButton2 | ui::vbQuestion, {"vbYes", "vbNo"}, "vbNo", 0},
    {ui::vbRetryCancel, {"vbRetry", "vbCancel"}, "vbRetry", ui::vbCancel},
};

TEST_F(QtUserInterfaceTest, ButtonSetsShowTheirButtonsInOrderWithDefaultAndEscape) {
  for (const BoxCase& c : kBoxCases) {
    SCOPED_TRACE("flags " + std::to_string(c.flags));
    const std::size_t first = answerer_.Seen().size();
    answerer_.PressEnter();
    EXPECT_EQ(ui_.MsgBox("Frage", c.flags, "Titel"), AnswerOf(c.byDefault));
    answerer_.Cancel();
    const int escaped = ui_.MsgBox("Frage", c.flags, "Titel");
    ASSERT_EQ(answerer_.Seen().size(), first + 2);
    const auto& box = answerer_.Seen()[first];
    EXPECT_EQ(box.name, "MsgBox");
    EXPECT_EQ(box.buttons, c.buttons);
    EXPECT_EQ(box.defaultButton, c.byDefault);
    EXPECT_EQ(box.problem, "");
    if (c.escape) {
      EXPECT_EQ(escaped, c.escape);
      EXPECT_EQ(answerer_.Seen()[first + 1].problem, "");
    } else {
      EXPECT_EQ(answerer_.Seen()[first + 1].problem, "Escape left it open");
    }
  }
}

TEST_F(QtUserInterfaceTest, EachButtonAnswersItsConstant) {
  for (const BoxCase& c : kBoxCases) {
    for (const std::string& button : c.buttons) {
      answerer_.PressButton(button);
      EXPECT_EQ(ui_.MsgBox("Frage", c.flags, ""), AnswerOf(button)) << c.flags << " " << button;
    }
  }
  for (const auto& box : answerer_.Seen()) EXPECT_EQ(box.problem, "");
}

TEST_F(QtUserInterfaceTest, IconTitleAndTextAsGiven) {
  const std::pair<int, int> icons[] = {{ui::vbOKOnly, 0},
                                       {ui::vbCritical, 16},
                                       {ui::vbQuestion, 32},
                                       {ui::vbExclamation | ui::vbDefaultButton2, 48},
                                       {ui::vbInformation, 64}};
  for (const auto& [flags, icon] : icons) {
    answerer_.PressButton("vbOK");
    ui_.MsgBox("Zeile 1\r\nZeile 2", flags, flags ? "Ketrova - Hinweis" : "");
    ASSERT_FALSE(answerer_.Seen().empty());
    const auto& box = answerer_.Seen().back();
    EXPECT_EQ(box.icon, icon) << flags;
    EXPECT_EQ(box.title, flags ? "Ketrova - Hinweis" : "Ketrova");
    EXPECT_EQ(box.text, "Zeile 1\r\nZeile 2");
  }
}

// CR LF breaks the line as LF does (and shows no glyph for the CR); markup is
// shown as text.
TEST_F(QtUserInterfaceTest, TextIsPlainWithLineBreaksAtCrLf) {
  std::vector<QImage> pictures;
  std::vector<QString> texts;
  auto grab = [&](QWidget& box) {
    auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    ASSERT_NE(label, nullptr);
    pictures.push_back(label->grab().toImage());
    texts.push_back(label->text());
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
  };
  for (const char* text : {"Zeile 1\r\nZeile 2", "Zeile 1\nZeile 2", "Zeile 1 Zeile 2"}) {
    answerer_.Act(grab);
    answerer_.PressButton("vbOK");
    ui_.MsgBox(text, ui::vbOKOnly, "");
  }
  ASSERT_EQ(pictures.size(), 3u);
  EXPECT_EQ(pictures[0], pictures[1]);
  EXPECT_GT(pictures[0].height(), pictures[2].height());
}

TEST_F(QtUserInterfaceTest, BoxOpensOverTheActiveWindow) {
  QWidget main;
  main.setObjectName("main");
  main.show();
  QApplication::setActiveWindow(&main);
  ASSERT_EQ(QApplication::activeWindow(), &main);
  QWidget* parent = nullptr;
  answerer_.Act([&](QWidget& box) { parent = box.parentWidget(); });
  answerer_.PressButton("vbOK");
  ui_.MsgBox("Hallo", ui::vbOKOnly, "");
  EXPECT_EQ(parent, &main);
}

TEST_F(QtUserInterfaceTest, AnswererRejectsWhatNobodyExpected) {
  // Nothing queued: the box is closed without a button and answers as its
  // escape button would.
  EXPECT_EQ(ui_.MsgBox("Unerwartet", ui::vbOKCancel, ""), ui::vbCancel);
  answerer_.PressButton("vbMaybe");
  EXPECT_EQ(ui_.MsgBox("Falsch beantwortet", ui::vbYesNo | ui::vbDefaultButton2, ""), ui::vbNo);
  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(answerer_.Seen()[0].text, "Unerwartet");
  EXPECT_EQ(answerer_.Seen()[0].problem, "nothing queued");
  EXPECT_EQ(answerer_.Seen()[1].problem, "no button vbMaybe");
  EXPECT_EQ(answerer_.Pending(), 0);
}

// ---- InputBox ----

TEST_F(QtUserInterfaceTest, InputBoxAnswersTheTextOrNothing) {
  answerer_.EnterText("Neuer Wert");
  EXPECT_EQ(ui_.InputBox("Wert eingeben:", "Eingabe", "alt"), "Neuer Wert");
  answerer_.PressEnter();
  EXPECT_EQ(ui_.InputBox("Wert eingeben:", "", "Vorgabe"), "Vorgabe");
  answerer_.PressButton("vbCancel");
  EXPECT_EQ(ui_.InputBox("Wert eingeben:", "", "Vorgabe"), std::nullopt);
  answerer_.Cancel();
  EXPECT_EQ(ui_.InputBox("Wert eingeben:", "", "Vorgabe"), std::nullopt);

  ASSERT_EQ(answerer_.Seen().size(), 4u);
  const auto& first = answerer_.Seen()[0];
  EXPECT_EQ(first.name, "InputBox");
  EXPECT_EQ(first.title, "Eingabe");
  EXPECT_EQ(first.text, "Wert eingeben:");
  EXPECT_EQ(first.defaultButton, "vbOK");
  Names buttons = first.buttons;
  std::sort(buttons.begin(), buttons.end());
  EXPECT_EQ(buttons, (Names{"vbCancel", "vbOK"}));
  EXPECT_EQ(answerer_.Seen()[1].title, "Ketrova");
  for (const auto& seen : answerer_.Seen()) EXPECT_EQ(seen.problem, "");
}

// ---- The mouse pointer ----

TEST_F(QtUserInterfaceTest, WaitCursorIsSetOnceAndClearedCompletely) {
  ui_.SetMousePointer(ui::vbHourglass);
  ui_.SetMousePointer(ui::vbHourglass);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  QGuiApplication::restoreOverrideCursor();
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "a second 11 stacked a cursor";

  // Over another's cursor the wait cursor takes its place rather than
  // stacking; 0 and any other value remove every override cursor.
  for (int clear : {int{ui::vbDefault}, 1, 99}) {
    QGuiApplication::setOverrideCursor(Qt::CrossCursor);
    QGuiApplication::setOverrideCursor(Qt::IBeamCursor);
    ui_.SetMousePointer(ui::vbHourglass);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    ui_.SetMousePointer(clear);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << clear;
  }
}

TEST_F(QtUserInterfaceTest, BoxShowsTheArrowAndTheWaitCursorComesBack) {
  ui_.SetMousePointer(ui::vbHourglass);
  Qt::CursorShape during = Qt::WaitCursor;
  answerer_.Act([&](QWidget&) { during = QGuiApplication::overrideCursor()->shape(); });
  answerer_.PressButton("vbOK");
  ui_.MsgBox("Hallo", ui::vbOKOnly, "");
  EXPECT_EQ(during, Qt::ArrowCursor);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  ui_.SetMousePointer(ui::vbDefault);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

// ---- The work form ----

QWidget* WorkForm() {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->objectName() == QStringLiteral("frmWork")) return window;
  return nullptr;
}

QString Text(const char* label) {
  return WorkForm()->findChild<QLabel*>(QString::fromLatin1(label))->text();
}

QProgressBar& Bar() {
  return *WorkForm()->findChild<QProgressBar*>("ProgressBar");
}

// Counts the paint events a widget receives.
class PaintCounter : public QObject {
 public:
  explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
  int count = 0;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++count;
    return false;
  }
};

TEST_F(QtUserInterfaceTest, WorkFormShowsAndUpdatesWithoutAnEventLoop) {
  EXPECT_FALSE(ui_.WorkFormVisible());
  ui_.WorkFormShow("Konvertierung", "Tabelle Kunden", "Satz 1");
  ASSERT_NE(WorkForm(), nullptr);
  EXPECT_TRUE(ui_.WorkFormVisible());
  EXPECT_TRUE(WorkForm()->isVisible());
  // Mapped and painted already: no event loop runs during long work.
  ASSERT_NE(WorkForm()->windowHandle(), nullptr);
  EXPECT_TRUE(WorkForm()->windowHandle()->isExposed());
  EXPECT_EQ(WorkForm()->windowTitle(), "Konvertierung");
  EXPECT_EQ(Text("lblText1"), "Tabelle Kunden");
  EXPECT_EQ(Text("lblText2"), "Satz 1");
  EXPECT_FALSE(Bar().isVisible());

  PaintCounter painted(WorkForm()->findChild<QLabel*>("lblText2"));
  ui_.WorkFormSetTexts("Tabelle Aufträge", "Satz 2 von 200");
  EXPECT_EQ(Text("lblText1"), "Tabelle Aufträge");
  EXPECT_EQ(Text("lblText2"), "Satz 2 von 200");
  EXPECT_GE(painted.count, 1);

  ui_.WorkFormSetCaption("Konvertierung - Demo");
  EXPECT_EQ(WorkForm()->windowTitle(), "Konvertierung - Demo");

  const QSize size = WorkForm()->size();
  ui_.WorkFormSetBar(true, 0, 200, 50);
  EXPECT_TRUE(Bar().isVisible());
  EXPECT_EQ(Bar().minimum(), 0);
  EXPECT_EQ(Bar().maximum(), 200);
  EXPECT_EQ(Bar().value(), 50);
  ui_.WorkFormSetBar(true, 0, 1e12, 2.5e11);
  EXPECT_EQ(Bar().value() * 4, Bar().maximum());
  ui_.WorkFormSetBar(false, 0, 0, 0);
  EXPECT_FALSE(Bar().isVisible());
  EXPECT_EQ(WorkForm()->size(), size);
  EXPECT_EQ(WorkForm()->windowTitle(), "Konvertierung - Demo");

  ui_.WorkFormHide();
  EXPECT_FALSE(ui_.WorkFormVisible());
  EXPECT_FALSE(WorkForm()->isVisible());
  // Shown again, the same window with the new texts.
  QWidget* before = WorkForm();
  ui_.WorkFormShow("Zweiter Lauf", "a", "b");
  EXPECT_EQ(WorkForm(), before);
  EXPECT_TRUE(ui_.WorkFormVisible());
  EXPECT_EQ(Text("lblText1"), "a");
}

TEST_F(QtUserInterfaceTest, DialogOverTheWorkFormOpensOverItsOwner) {
  QWidget main;
  main.show();
  QApplication::setActiveWindow(&main);
  ui_.WorkFormShow("Arbeit", "", "");
  QApplication::setActiveWindow(WorkForm());
  ASSERT_EQ(QApplication::activeWindow(), WorkForm());
  QWidget* parent = WorkForm();
  answerer_.Act([&](QWidget& box) { parent = box.parentWidget(); });
  answerer_.PressButton("vbOK");
  ui_.MsgBox("Hallo", ui::vbOKOnly, "");
  EXPECT_EQ(parent, &main);
}

TEST(MapBar, KeepsWholeRangesAndScalesOthers) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  struct Case {
    double min, max, value;
    int barMin, barMax, barValue;
  };
  const Case cases[] = {
      {0, 100, 50, 0, 100, 50},
      {1, 10, 0, 1, 10, 1},              // held within the range
      {0, 10, 2.5, 0, kBarSteps, 2500},  // a fraction
      {0, 1, 0.25, 0, kBarSteps, kBarSteps / 4},
      {0, 1e12, 5e11, 0, kBarSteps, kBarSteps / 2},
      {-3e9, 3e9, 0, 0, kBarSteps, kBarSteps / 2},
      {INT_MIN, INT_MAX, 0, 0, kBarSteps, kBarSteps / 2},  // distance beyond an int
      {0, INT_MAX, INT_MAX, 0, INT_MAX, INT_MAX},
      {0, 100, nan, 0, 100, 0},
      {5, 5, 5, 0, 1, 1},
      {10, 0, 5, 0, 1, 1},
      {0, inf, 5, 0, 1, 0},
  };
  for (const Case& c : cases) {
    const BarPosition bar = MapBar(c.min, c.max, c.value);
    EXPECT_EQ(bar.min, c.barMin) << c.min << ".." << c.max << " " << c.value;
    EXPECT_EQ(bar.max, c.barMax) << c.min << ".." << c.max << " " << c.value;
    EXPECT_EQ(bar.value, c.barValue) << c.min << ".." << c.max << " " << c.value;
  }
}

// ---- File and folder choice ----

class FileChoiceTest : public QtUserInterfaceTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(temp_.isValid());
    for (const char* name : {"demo.cpf", "other.txt", "LIESMICH"}) {
      QFile file(Path(name));
      ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    ASSERT_TRUE(QDir(temp_.path()).mkdir("Ziel"));
  }
  QString Path(const QString& name) const { return temp_.path() + "/" + name; }
  std::string StdPath(const QString& name) const { return Path(name).toStdString(); }

  QTemporaryDir temp_;
};

TEST_F(FileChoiceTest, ProjectFilterListsTheProjectWhateverItsCase) {
  answerer_.ChooseFile(StdPath("demo.cpf"));
  auto chosen =
      ui_.ChooseFile("Projektdatei öffnen", "Projektdateien|*.CPF", temp_.path().toStdString());
  EXPECT_EQ(chosen, StdPath("demo.cpf"));
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  const auto& dialog = answerer_.Seen()[0];
  EXPECT_EQ(dialog.problem, "");
  EXPECT_EQ(dialog.name, "FileOpen");
  EXPECT_EQ(dialog.title, "Projektdatei öffnen");
  EXPECT_EQ(dialog.directory, temp_.path());
  EXPECT_EQ(dialog.nameFilters, QStringList{"Projektdateien (*.CPF)"});
  EXPECT_EQ(dialog.files, QStringList{"demo.cpf"});
}

TEST_F(FileChoiceTest, FiltersListWhatTheHostAccepts) {
  struct Case {
    const char* filter;
    QStringList files;  // sorted
  };
  const Case cases[] = {
      {"Projektdateien|*.CPF", {"demo.cpf"}},
      {"*.Cpf", {"demo.cpf"}},
      {"Texte und Projekte|*.TXT;*.cpf", {"demo.cpf", "other.txt"}},
      {"Alle Dateien|*.*", {"LIESMICH", "demo.cpf", "other.txt"}},
      {"", {"LIESMICH", "demo.cpf", "other.txt"}},
  };
  for (const Case& c : cases) {
    answerer_.Cancel();
    EXPECT_EQ(ui_.ChooseFile("", c.filter, temp_.path().toStdString()), std::nullopt);
    ASSERT_FALSE(answerer_.Seen().empty());
    QStringList listed = answerer_.Seen().back().files;
    listed.sort();
    EXPECT_EQ(listed, c.files) << c.filter;
    QStringList accepted;
    for (const QString& name : QDir(temp_.path()).entryList(QDir::Files, QDir::Name))
      if (MatchesVbFilter(name.toStdString(), c.filter)) accepted << name;
    EXPECT_EQ(accepted, c.files) << c.filter;
  }
  // The first filter applies; the combo shows the descriptions as written.
  QStringList shown;
  answerer_.Act([&](QWidget& dialog) {
    auto* combo = dialog.findChild<QComboBox*>("fileTypeCombo");
    ASSERT_NE(combo, nullptr);
    for (int i = 0; i < combo->count(); ++i) shown << combo->itemText(i);
  });
  answerer_.Cancel();
  ui_.ChooseFile("", "Projekte (*.cpf)|*.cpf|Alle Dateien|*.*", temp_.path().toStdString());
  EXPECT_EQ(shown, (QStringList{"Projekte (*.cpf)", "Alle Dateien"}));
  EXPECT_EQ(answerer_.Seen().back().files, QStringList{"demo.cpf"});
}

TEST_F(FileChoiceTest, StartPathOpensItsFolderAndPreselectsAFile) {
  struct Case {
    std::string start;
    QString directory;
    std::optional<std::string> enter;  // what Return alone chooses
  };
  const QString root = temp_.path();
  const Case cases[] = {
      {StdPath("demo.cpf"), root, StdPath("demo.cpf")},
      {QString(Path("other.txt")).replace('/', '\\').toStdString(), root, StdPath("other.txt")},
      {StdPath("fehlt.cpf"), root, std::nullopt},
      {StdPath("Ziel"), Path("Ziel"), std::nullopt},
  };
  for (const Case& c : cases) {
    answerer_.PressEnter();
    auto chosen = ui_.ChooseFile("", "", c.start);
    const auto& seen = answerer_.Seen().back();
    EXPECT_EQ(seen.directory, c.directory) << c.start;
    EXPECT_EQ(seen.title, "Öffnen");
    if (c.enter) {
      EXPECT_EQ(chosen, c.enter) << c.start;
      EXPECT_EQ(seen.problem, "") << c.start;
    } else {
      // Nothing to open: the dialog stays and is rejected.
      EXPECT_EQ(chosen, std::nullopt) << c.start;
      EXPECT_EQ(seen.problem, "Return left it open") << c.start;
    }
  }
}

TEST_F(FileChoiceTest, ChoosesAFolderFromItsStart) {
  answerer_.ChooseFolder(StdPath("Ziel"));
  EXPECT_EQ(ui_.ChooseFolder("Zielordner wählen", temp_.path().toStdString()), StdPath("Ziel"));
  answerer_.Cancel();
  EXPECT_EQ(ui_.ChooseFolder("", StdPath("fehlt/tiefer")), std::nullopt);

  ASSERT_EQ(answerer_.Seen().size(), 2u);
  const auto& first = answerer_.Seen()[0];
  EXPECT_EQ(first.problem, "");
  EXPECT_EQ(first.name, "BrowseForFolder");
  EXPECT_EQ(first.title, "Zielordner wählen");
  EXPECT_EQ(first.directory, temp_.path());
  EXPECT_TRUE(first.files.isEmpty()) << first.files.join(", ").toStdString();
  // A start that does not exist opens the nearest folder above it.
  EXPECT_EQ(answerer_.Seen()[1].directory, temp_.path());
  EXPECT_EQ(answerer_.Seen()[1].title, "Ordner auswählen");
}

// ---- Name filters ----

TEST(NameFiltersFromVb, PairsAndBareLists) {
  struct Case {
    const char* vb;
    QStringList qt;
  };
  const Case cases[] = {
      {"Projektdateien|*.CPF", {"Projektdateien (*.CPF)"}},
      {"Texte|*.txt;*.csv|Alle Dateien|*.*", {"Texte (*.txt *.csv)", "Alle Dateien (*)"}},
      {"Projekte (*.cpf)|*.cpf", {"Projekte (*.cpf) (*.cpf)"}},
      {"*.CPF", {"*.CPF"}},
      {"*.txt; *.csv", {"*.txt *.csv"}},
      {"|*.XML", {"*.XML"}},
      {"Nur Text|", {}},
      {"", {}},
  };
  for (const Case& c : cases) EXPECT_EQ(NameFiltersFromVb(c.vb), c.qt) << c.vb;
}

}  // namespace
}  // namespace ketrova::dialogs
