// The job editor's pages "Feldzuweisungen" and "Konvertieren" on their own,
// on the jobs of a copy of the demo project: what the grids show of a job,
// how assigning and clearing reach the job's columns and its script, the
// boxes with their texts, the hand-written script left alone, and the large
// editor writing back to whom it serves.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMouseEvent>
#include <QTableWidget>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "core/converter.h"
#include "core/enums.h"
#include "dialogs/job_mapping_page.h"
#include "dialogs/job_script_page.h"
#include "dialogs/qt_user_interface.h"
#include "dialogs/script_editor.h"
#include "jobs/job.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "modal_answerer.h"
#include "qt_printers.h"

namespace ketrova::dialogs {
namespace {

using testing::ModalAnswerer;

constexpr char kNoTargetFields[] =
    "Fehler in Script:\r\n\tEs wurden keine Zielfelder definiert !\r\n\r\n";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// A generated assignment. The copy has no target database, so every field
// is cut to 255 characters.
std::string Line(const std::string& target, const std::string& source) {
  return "\tDestination.Fields(\"" + target + "\") = Left(Source.Fields(\"" + source + "\"),255)";
}

template <typename T = QWidget>
T* Child(QWidget& parent, const char* name) {
  T* child = parent.findChild<T*>(QString::fromUtf8(name));
  EXPECT_NE(child, nullptr) << name;
  return child;
}

void Click(QWidget& parent, const char* name) {
  if (auto* button = Child<QAbstractButton>(parent, name)) button->click();
}

// A user's double click on a cell: press, release, double click, release.
void DoubleClick(QTableWidget* grid, int row) {
  ASSERT_NE(grid->item(row, 0), nullptr);
  QWidget* viewport = grid->viewport();
  const QPointF at = grid->visualItemRect(grid->item(row, 0)).center();
  const QPointF global = viewport->mapToGlobal(at);
  for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                            QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
    const Qt::MouseButtons buttons =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, global, Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
  }
}

class JobPagesTest : public ::testing::Test {
 public:
  void SetUp() override {
    ASSERT_TRUE(temp_.isValid());
    const QString demo = QStringLiteral(KETROVA_TEST_DATA "/../../examples/demo");
    ASSERT_TRUE(QFile::copy(demo + "/demo.cpf", temp_.filePath("demo.cpf")));
    QDir().mkpath(temp_.filePath("daten"));
    for (const QString& name : QDir(demo + "/daten").entryList(QDir::Files))
      QFile::copy(demo + "/daten/" + name, temp_.filePath("daten/" + name));
    char* cwd = getcwd(nullptr, 0);
    oldDir_ = cwd;
    free(cwd);
    ASSERT_EQ(chdir(temp_.path().toLocal8Bit().constData()), 0);
    ui::SetCurrent(std::make_shared<QtUserInterface>());
    ASSERT_EQ(project_.LoadProject(Path("demo.cpf")), "");
    ASSERT_GE(project_.Jobs().Count(), 2);
  }

  void TearDown() override {
    ui::SetCurrent(nullptr);
    ASSERT_EQ(chdir(oldDir_.c_str()), 0);
  }

  std::string Path(const char* name) const { return temp_.filePath(name).toStdString(); }

  // Both pages on one job, wired as the frame wires them, shown in a window.
  void Open(int jobIndex) {
    job_ = &project_.Jobs().Item(jobIndex);
    window_ = std::make_unique<QWidget>();
    window_->resize(900, 600);
    mapping_ = new JobMappingPage(window_.get());
    script_ = new JobScriptPage(window_.get());
    mapping_->setGeometry(0, 0, 900, 300);
    script_->setGeometry(0, 300, 900, 300);
    mapping_->SetJob(job_);
    script_->SetJob(job_);
    script_->BindMapping(mapping_);
    script_->SetEditorBigHost(window_.get());
    mapping_->FillSourceColumns();
    mapping_->InitTargetColumns();
    script_->Load();
    window_->show();
  }

  QTableWidget* SourceGrid() { return Child<QTableWidget>(*mapping_, "GridFieldMergeSource"); }
  QTableWidget* TargetGrid() { return Child<QTableWidget>(*mapping_, "GridFieldMergeTarget"); }
  ScriptEditor* EditScript() { return Child<ScriptEditor>(*script_, "EditScript"); }
  std::vector<std::string> Assigned() const {
    std::vector<std::string> texts;
    for (int row = 0; row < mapping_->TargetRowCount(); ++row)
      texts.push_back(mapping_->AssignedSource(row));
    return texts;
  }

  QTemporaryDir temp_{QDir::tempPath() + QStringLiteral("/jobpages-XXXXXX")};
  std::string oldDir_;
  CConverter project_;
  CJob* job_ = nullptr;
  std::unique_ptr<QWidget> window_;
  JobMappingPage* mapping_ = nullptr;
  JobScriptPage* script_ = nullptr;
  ModalAnswerer answerer_;
};

TEST_F(JobPagesTest, GridsShowTheJobsMappingOfVisibleColumns) {
  CJob& job = project_.Jobs().Item(1);
  job.JobSource().ColumnByTargetName("Vorname")->Visible = false;        // hidden source
  job.JobDest().ColumnByTargetName("Ort")->SourceColumn = "Gibtsnicht";  // no such source
  job.JobDest().ColumnByTargetName("PLZ")->SourceColumn = "";
  Open(1);

  std::vector<std::string> sources;
  for (int row = 0; row < mapping_->SourceRowCount(); ++row)
    sources.push_back(mapping_->SourceText(row));
  EXPECT_EQ(sources, (std::vector<std::string>{"KundenNr", "Name", "Strasse", "PLZ", "Ort",
                                               "Geburtstag", "Kreditlimit"}));
  EXPECT_EQ(Assigned(), (std::vector<std::string>{"KundenNr", "Name", "", "Strasse", "", "",
                                                  "Geburtstag", "Kreditlimit"}));
  EXPECT_EQ(mapping_->TargetName(2), "Vorname");
  EXPECT_EQ(mapping_->TargetName(7), "Kreditlimit");
  EXPECT_EQ(SourceGrid()->horizontalHeaderItem(0)->text(), "Quellspalten");
  EXPECT_EQ(TargetGrid()->horizontalHeaderItem(0)->text(), "Zuweisungen");
  EXPECT_EQ(TargetGrid()->horizontalHeaderItem(1)->text(), "Ziel");
  EXPECT_EQ(Child<QLabel>(*mapping_, "GridFieldMergeSourceTitle")->text(), "kunden.csvQuelle.");
  EXPECT_EQ(Child<QLabel>(*mapping_, "GridFieldMergeTargetTitle")->text(), "KundenZiel.");
}

TEST_F(JobPagesTest, DoubleClickInSourceAssignsToTheSelectedTargetAndRegenerates) {
  Open(1);
  TargetGrid()->selectRow(2);    // Vorname
  DoubleClick(SourceGrid(), 1);  // Name
  EXPECT_EQ(mapping_->AssignedSource(2), "Name");
  EXPECT_EQ(job_->JobDest().ColumnByTargetName("Vorname")->SourceColumn, "Name");
  EXPECT_TRUE(Contains(EditScript()->Text(), Line("Vorname", "Name")));
  EXPECT_EQ(job_->Script, EditScript()->Text());
  EXPECT_TRUE(answerer_.Seen().empty());

  // One source may feed several targets; a target holds one source.
  TargetGrid()->selectRow(3);
  DoubleClick(SourceGrid(), 1);
  EXPECT_EQ(mapping_->AssignedSource(2), "Name");
  EXPECT_EQ(mapping_->AssignedSource(3), "Name");
}

TEST_F(JobPagesTest, AssignWithoutSourceSelectionTakesTheFirstSourceRow) {
  Open(1);
  SourceGrid()->clearSelection();
  TargetGrid()->selectRow(5);
  Click(*mapping_, "cmdCopySourceColumn2TargetColumn");
  EXPECT_EQ(mapping_->AssignedSource(5), "KundenNr");
  EXPECT_TRUE(Contains(job_->Script, Line("Ort", "KundenNr")));
}

TEST_F(JobPagesTest, AssignWithoutTargetSelectionAsksToMarkOneAndChangesNothing) {
  Open(1);
  const std::string script = job_->Script;
  const std::vector<std::string> before = Assigned();
  TargetGrid()->clearSelection();
  answerer_.PressButton("vbOK");
  DoubleClick(SourceGrid(), 3);
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].text,
            "Um Spalten von der Quelltabelle in die Zieltabelle zu kopieren, \r\n"
            "markieren Sie bitte zuerst eine Spalte in der Liste der Zielfelder");
  EXPECT_EQ(Assigned(), before);
  EXPECT_EQ(job_->Script, script);
}

TEST_F(JobPagesTest, ARemovedMappingLeavesTheScriptAtOnce) {
  struct Case {
    const char* name;
    std::function<void(JobPagesTest&)> remove;  // removes the mapping of "Name"
  };
  const std::vector<Case> cases = {
      {"double click in the target grid",
       [](JobPagesTest& t) {
         t.TargetGrid()->selectRow(1);
         DoubleClick(t.TargetGrid(), 1);
       }},
      {"cmdClearTargetColumn on the selected row",
       [](JobPagesTest& t) {
         t.TargetGrid()->selectRow(1);
         Click(*t.mapping_, "cmdClearTargetColumn");
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_EQ(project_.LoadProject(Path("demo.cpf")), "");  // the demo's job afresh
    Open(1);
    ASSERT_TRUE(Contains(job_->Script, "Destination.Fields(\"Name\")"));
    c.remove(*this);
    EXPECT_EQ(mapping_->AssignedSource(1), "");
    EXPECT_EQ(mapping_->AssignedSource(0), "KundenNr");
    EXPECT_FALSE(Contains(job_->Script, "\"Name\""));
    EXPECT_TRUE(Contains(job_->Script, Line("KundenNr", "KundenNr")));
    EXPECT_EQ(EditScript()->Text(), job_->Script);
    EXPECT_EQ(job_->JobDest().ColumnByTargetName("Name")->SourceColumn, "");
  }
}

TEST_F(JobPagesTest, ClearWithoutSelectionClearsTheFirstRow) {
  Open(1);
  TargetGrid()->clearSelection();
  Click(*mapping_, "cmdClearTargetColumn");
  EXPECT_EQ(Assigned(), (std::vector<std::string>{"", "Name", "Vorname", "Strasse", "PLZ", "Ort",
                                                  "Geburtstag", "Kreditlimit"}));
}

TEST_F(JobPagesTest, CopyAllAssignsByPositionAndIgnoresSurplusSources) {
  CJob& job = project_.Jobs().Item(1);
  // Source in another order with more columns than the target.
  CJobItemColumn& extra = job.JobSource().Columns().Add();
  extra.Name = extra.TargetColumn = extra.SourceColumn = "Telefon";
  job.JobSource().ColumnByTargetName("KundenNr")->Visible = false;
  Open(1);
  ASSERT_EQ(mapping_->SourceRowCount(), 8);
  job_->JobDest().Columns().Remove(8);  // the target has 7
  mapping_->InitTargetColumns();
  ASSERT_EQ(mapping_->TargetRowCount(), 7);

  Click(*mapping_, "cmdCopyAllSourceColumn2AllTargetColumn");
  EXPECT_EQ(Assigned(), (std::vector<std::string>{"Name", "Vorname", "Strasse", "PLZ", "Ort",
                                                  "Geburtstag", "Kreditlimit"}));
  EXPECT_EQ(job_->JobDest().ColumnByTargetName("KundenNr")->SourceColumn, "Name");
  EXPECT_FALSE(Contains(job_->Script, "Telefon"));
  EXPECT_TRUE(Contains(job_->Script, Line("KundenNr", "Name")));
}

TEST_F(JobPagesTest, WithoutAssignmentsTheScriptShowsTheErrorAndTheCheckFails) {
  Open(1);
  const std::string generated = job_->Script;
  Click(*mapping_, "cmdClearAllTargetColumn");
  EXPECT_EQ(Assigned(), std::vector<std::string>(8, ""));
  EXPECT_EQ(EditScript()->Text(), kNoTargetFields);
  EXPECT_FALSE(script_->CheckTargetFields());
  // The job keeps its script until the page is saved into it.
  EXPECT_EQ(job_->Script, generated);
  EXPECT_EQ(script_->Save(), "");
  EXPECT_EQ(job_->Script, kNoTargetFields);
  EXPECT_FALSE(job_->ScriptUserDefined);
}

TEST_F(JobPagesTest, AGridRowWithoutItsTargetColumnEmptiesTheTargetList) {
  Open(1);
  const std::string script = EditScript()->Text();
  job_->JobDest().ColumnByTargetName("Ort")->TargetColumn = "Stadt";  // gone from the list
  answerer_.PressButton("vbOK");
  TargetGrid()->selectRow(0);
  Click(*mapping_, "cmdClearTargetColumn");
  ASSERT_EQ(answerer_.Seen().size(), 1u);
  EXPECT_EQ(answerer_.Seen()[0].title, "Script generieren");
  EXPECT_EQ(answerer_.Seen()[0].text, "Die Zielspalte [Ort] konnte nicht ermittelt werden.");
  EXPECT_EQ(answerer_.Seen()[0].icon, ui::vbCritical);
  EXPECT_EQ(job_->JobDest().Columns().Count(), 0);
  EXPECT_EQ(EditScript()->Text(), script);
}

TEST_F(JobPagesTest, AHandWrittenScriptStaysWhateverTheMappingDoes) {
  Open(2);  // the demo's second job has a hand-written script
  auto* check = Child<QCheckBox>(*script_, "CheckScriptUserDefined");
  EXPECT_TRUE(check->isChecked());
  EXPECT_EQ(check->text(), "Benutzerdefiniertes Konvertierungsscript");
  EXPECT_FALSE(Child<QWidget>(*script_, "cmdCreateScript")->isEnabled());
  EXPECT_TRUE(Child<QWidget>(*script_, "cmdShowEditorUserScript")->isEnabled());
  const std::string script = job_->Script;
  EXPECT_EQ(EditScript()->Text(), script);
  EXPECT_NE(EditScript()->findChild<QWidget*>(QStringLiteral("cmdCheck")), nullptr);  // "Prüfen"

  Click(*mapping_, "cmdClearAllTargetColumn");
  TargetGrid()->selectRow(0);
  DoubleClick(SourceGrid(), 3);
  job_->ScriptLanguage = sclJavaScript;
  script_->ScriptLanguageChanged();
  EXPECT_EQ(EditScript()->Text(), script);
  EXPECT_EQ(job_->Script, script);
  EXPECT_TRUE(script_->CheckTargetFields());  // no mapping needed
  EXPECT_TRUE(answerer_.Seen().empty());
  EXPECT_EQ(script_->Save(), "");
  EXPECT_TRUE(job_->ScriptUserDefined);
  EXPECT_EQ(job_->Script, script);
}

TEST_F(JobPagesTest, UntickingWithAnEmptyEditorGeneratesTheScript) {
  Open(2);
  auto* check = Child<QCheckBox>(*script_, "CheckScriptUserDefined");
  EditScript()->SetText("");
  check->click();
  EXPECT_TRUE(Child<QWidget>(*script_, "cmdCreateScript")->isEnabled());
  EXPECT_FALSE(Child<QWidget>(*script_, "cmdShowEditorUserScript")->isEnabled());
  EXPECT_TRUE(Contains(EditScript()->Text(), "Function txConvertMain()"));
  EXPECT_TRUE(Contains(EditScript()->Text(), Line("Artikel", "Artikel")));

  // The job still says "hand-written" until saved; the box decides.
  Click(*mapping_, "cmdClearAllTargetColumn");
  EXPECT_EQ(EditScript()->Text(), kNoTargetFields);
  TargetGrid()->selectRow(0);
  DoubleClick(SourceGrid(), 0);
  EXPECT_TRUE(Contains(EditScript()->Text(), Line("AuftragNr", "AuftragNr")));
  EXPECT_TRUE(job_->ScriptUserDefined);

  // With a text in the editor unticking keeps it.
  check->click();
  EditScript()->SetText("' eigener Text");
  check->click();
  EXPECT_EQ(EditScript()->Text(), "' eigener Text");
}

TEST_F(JobPagesTest, CreateScriptAsksFirstAndRewritesOnlyOnYes) {
  Open(1);
  EditScript()->SetText("' von Hand");
  answerer_.PressButton("vbNo");
  Click(*script_, "cmdCreateScript");
  EXPECT_EQ(EditScript()->Text(), "' von Hand");
  answerer_.PressButton("vbYes");
  Click(*script_, "cmdCreateScript");
  EXPECT_TRUE(Contains(EditScript()->Text(), Line("Name", "Name")));
  EXPECT_FALSE(Contains(EditScript()->Text(), "von Hand"));

  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(answerer_.Seen()[0].title, "Warnung");
  EXPECT_EQ(answerer_.Seen()[0].text,
            "Wenn Sie diese Meldung mit Ja bestätigen wird das Script Neu geschrieben.\r\n"
            "Eventuelle eigene Zeilen werden überschrieben!\r\n"
            "Möchten Sie jetzt forfahren ??? ");
  EXPECT_EQ(answerer_.Seen()[0].buttons, (std::vector<std::string>{"vbYes", "vbNo"}));
}

TEST_F(JobPagesTest, CreateScriptShowsTheGeneratorsError) {
  Open(1);
  job_->JobSource().ColumnByTargetName("Name")->TargetColumn = "Nachname";
  answerer_.PressButton("vbYes");
  answerer_.PressButton("vbOK");
  Click(*script_, "cmdCreateScript");
  ASSERT_EQ(answerer_.Seen().size(), 2u);
  EXPECT_EQ(answerer_.Seen()[1].text, "Das Quellfeld Name konnte nicht ermittelt werden !");
}

TEST_F(JobPagesTest, ScriptLanguageChangeRegeneratesInTheNewLanguage) {
  Open(1);
  job_->ScriptLanguage = sclJavaScript;
  script_->ScriptLanguageChanged();
  EXPECT_TRUE(Contains(EditScript()->Text(), "function txConvertMain()"));
  EXPECT_EQ(EditScript()->Language(), sclJavaScript);
  EXPECT_EQ(job_->Script, EditScript()->Text());
}

TEST_F(JobPagesTest, LargeEditorWritesBackOnlyWhenClosed) {
  Open(2);
  auto* panel = Child<QWidget>(*window_, "panelEditorBig");
  auto* big = Child<ScriptEditor>(*window_, "EditorBig");
  auto* label = Child<QLabel>(*window_, "LabelUserdefinedScriptEditor");
  const std::string script = EditScript()->Text();

  Click(*script_, "cmdShowEditorUserScript");
  ASSERT_TRUE(script_->EditorBigOpen());
  EXPECT_TRUE(panel->isVisible());
  EXPECT_EQ(panel->geometry(), window_->rect());
  EXPECT_EQ(big->Text(), script);
  big->SetText("' verworfen");
  Click(*window_, "cmdCancelEditor");
  EXPECT_FALSE(script_->EditorBigOpen());
  EXPECT_FALSE(panel->isVisible());
  EXPECT_EQ(EditScript()->Text(), script);

  Click(*script_, "cmdShowEditorUserScript");
  big->SetText("' neu");
  Click(*window_, "cmdCloseEditor");
  EXPECT_EQ(EditScript()->Text(), "' neu");
  EXPECT_FALSE(panel->isVisible());

  // For the search script of the page "Ziel".
  std::string search = "alt";
  script_->ShowEditorBig("Function txSQLSearchResult()", [&](const std::string& t) { search = t; });
  EXPECT_EQ(script_->EditorBigServes(), JobScriptPage::EditorBigFor::kSearch);
  EXPECT_EQ(label->text(), "Suchmuster als SQL-Anweisung definieren");
  EXPECT_EQ(big->Text(), "Function txSQLSearchResult()");
  window_->resize(1000, 700);
  QApplication::processEvents();
  EXPECT_EQ(panel->geometry(), window_->rect());
  big->SetText("Function txSQLSearchResult() ' x");
  script_->CloseEditor();
  EXPECT_EQ(search, "Function txSQLSearchResult() ' x");
  EXPECT_EQ(EditScript()->Text(), "' neu");
}

TEST_F(JobPagesTest, SavedMappingAndScriptReachTheProjectFile) {
  Open(1);
  TargetGrid()->selectRow(2);
  DoubleClick(SourceGrid(), 1);  // Vorname <- Name
  TargetGrid()->selectRow(6);
  Click(*mapping_, "cmdClearTargetColumn");  // Geburtstag unmapped
  EXPECT_EQ(script_->Save(), "");
  ASSERT_EQ(project_.SaveProject(Path("demo.cpf")), "");

  CConverter reloaded;
  ASSERT_EQ(reloaded.LoadProject(Path("demo.cpf")), "");
  CJob& job = reloaded.Jobs().Item(1);
  EXPECT_FALSE(job.ScriptUserDefined);
  EXPECT_EQ(job.Script, EditScript()->Text());
  EXPECT_TRUE(Contains(job.Script, Line("Vorname", "Name")));
  EXPECT_FALSE(Contains(job.Script, "Geburtstag"));
  const CJobItemColumn* vorname = job.JobDest().ColumnByTargetName("Vorname");
  ASSERT_NE(vorname, nullptr);
  EXPECT_EQ(vorname->SourceColumn, "Name");
  EXPECT_EQ(vorname->DisplayName, "Vorname");
  EXPECT_EQ(job.JobDest().ColumnByTargetName("Geburtstag")->SourceColumn, "");
}

}  // namespace
}  // namespace ketrova::dialogs
