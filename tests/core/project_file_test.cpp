// The project file through LoadProject and SaveProject, on hand-written files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/converter.h"
#include "engine/script_modules.h"
#include "jobs/jobs.h"
#include "platform/ui/scripted_ui.h"
#include "stores/database.h"

namespace ketrova {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void WriteFile(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

class ProjectFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ui::SetCurrent(ui_);
    dir_ = fs::temp_directory_path() /
           ("ketrova_project_file_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override {
    ui::SetCurrent(nullptr);
    fs::remove_all(dir_);
  }
  // A fixture of tests/data/projects, copied into the test's folder.
  std::string Fixture(const std::string& name) {
    fs::copy_file(fs::path(KETROVA_TEST_DATA) / "projects" / name, dir_ / name);
    return (dir_ / name).string();
  }

  std::shared_ptr<ui::ScriptedUserInterface> ui_ = std::make_shared<ui::ScriptedUserInterface>();
  fs::path dir_;
};

TEST_F(ProjectFileTest, ResaveWritesExactlyTheExpectedFile) {
  CConverter project;
  ASSERT_EQ(project.LoadProject(Fixture("full.cpf")), "");
  std::string out = (dir_ / "out.cpf").string();
  ASSERT_EQ(project.SaveProject(out), "");
  std::string expected = ReadFile(fs::path(KETROVA_TEST_DATA) / "projects" / "full.expected.cpf");
  std::string dirText = dir_.string();
  expected.replace(expected.find("@DIR@"), 5, dirText);
  EXPECT_EQ(ReadFile(out), expected);
  EXPECT_EQ(project.FileName, out);
  EXPECT_EQ(project.EditMode, edEdit);

  // The saved file is in the writer's own layout and comes back unchanged.
  CConverter again;
  ASSERT_EQ(again.LoadProject(out), "");
  std::string out2 = (dir_ / "out2.cpf").string();
  ASSERT_EQ(again.SaveProject(out2), "");
  EXPECT_EQ(ReadFile(out2), ReadFile(out));
}

TEST_F(ProjectFileTest, LoadedValuesFollowTheFileRules) {
  CConverter project;
  std::string file = Fixture("full.cpf");
  ASSERT_EQ(project.LoadProject(file), "");
  EXPECT_EQ(project.ProjectName, "Kundenübernahme & Straßen");
  EXPECT_EQ(project.ProjectDirectory(), dir_.string());
  EXPECT_EQ(project.MaxDemoData(), 20);
  EXPECT_EQ(project.ScriptLanguage, sclJavaScript);
  // Escapes undone; "[LT]" comes back as a blank, and the skeleton checks ran
  // before the language was read, so the end script got a VBScript skeleton.
  EXPECT_EQ(project.ScriptOnStart.rfind("' Start für Müller\r\nFunction txOnStart()\r\n", 0), 0u);
  EXPECT_NE(project.ScriptOnStart.find("MsgBox \"100% fertig\"\r\n\ts = 'a b'"), std::string::npos);
  EXPECT_EQ(project.ScriptOnEnd.substr(0, 1), "'");
  EXPECT_NE(project.ScriptOnEnd.find("Function txOnEnd()"), std::string::npos);

  const CDatabase& source = project.SourceDataBase();
  ASSERT_EQ(source.Objects().Count(), 2);
  EXPECT_EQ(source.Objects().Item(1).Name, "Müller.csv");
  EXPECT_EQ(source.Objects().Item(1).SQL, "SELECT * FROM \"Müller\"\nWHERE a = 'x'");
  EXPECT_EQ(source.Objects().Item(1).Fields().Count(), 0);  // field lists are not read back
  EXPECT_EQ(source.Objects().Item(2).ObjectType, dboView);
  EXPECT_FALSE(source.Objects().Item(2).Visible);
  EXPECT_EQ(project.DestDataBase().Password, "geh\"eim");

  ASSERT_EQ(project.Jobs().Count(), 2);
  CJob& job = project.Jobs().Item(1);
  EXPECT_EQ(job.MaxRecords, 100);
  EXPECT_TRUE(job.Validate);  // recomputed, not the stored FALSE
  EXPECT_EQ(job.JobType, jtEMail);
  EXPECT_EQ(job.TriggerType, ttOnStartJob);
  EXPECT_EQ(job.JobSource().SQL, "SELECT \\Nr\\ FROM x WHERE y = 'Öl'");
  EXPECT_EQ(job.JobSource().Filters().Item(2).Value, "Köln <> &");
  EXPECT_EQ(job.JobSource().Filters().Item(2).GetFilter(), " LIKE %Köln <> &%");
  EXPECT_EQ(job.JobSource().Columns().Item(1).Quote, "");
  EXPECT_EQ(job.JobSource().FileName, "");
  EXPECT_EQ(job.JobDest().FileName, Variant(true).ToString());  // FILENAME missing
  EXPECT_EQ(job.JobDest().DestinationFilterUserDefinedScript.substr(0, 28),
            "Function txSQLSearchResult()");
  CJob& own = project.Jobs().Item(2);
  EXPECT_FALSE(own.Enabled);
  EXPECT_EQ(project.Jobs().JobsDisabled(), 1);
  ASSERT_TRUE(own.JobSource().DifferentDataBase());
  EXPECT_EQ(own.JobSource().Database()->DatabaseFileName, "/daten/lager.mdb");
  EXPECT_EQ(own.JobSource().Database()->Converter, &project);
  EXPECT_EQ(own.JobDest().Database(), &project.DestDataBase());
  EXPECT_EQ(own.ValidateError, "Ziel: Objektname fehlt");

  ASSERT_EQ(project.ScriptModules().Count(), 2);
  EXPECT_EQ(project.ScriptModules().Item(1).ScriptText,
            "Function Größe(a)\r\n\tGröße = Len(a)\r\nEnd Function");
  EXPECT_EQ(project.ScriptModules().Item(2).Name, "Module2");
}

TEST_F(ProjectFileTest, MissingSectionsTakeTheirDefaults) {
  CConverter project;
  ASSERT_EQ(project.LoadProject(Fixture("minimal.cpf")), "");
  ASSERT_EQ(project.ScriptModules().Count(), 1);
  EXPECT_EQ(project.ScriptModules().Item(1).Name, "Module1");
  EXPECT_EQ(project.ScriptOnStart, "function txOnStart(){ return true; }");
  EXPECT_EQ(project.SourceDataBase().DatabaseType, dbtUndefined);
  EXPECT_EQ(project.DestDataBase().DatabaseDirection, dbdSource);
  EXPECT_EQ(project.Jobs().Item(1).JobSource().FileName, Variant(true).ToString());
  EXPECT_EQ(project.Jobs().Item(1).JobSource().Columns().Item(1).ColumnWidth, "20");
  EXPECT_EQ(project.Jobs().Item(1).JobSource().Columns().Item(1).FieldType, 13);
}

TEST_F(ProjectFileTest, AWellFormedFileThatIsNoProjectLoadsWithDefaults) {
  WriteFile(dir_ / "other.xml", "<?xml version=\"1.0\"?><ANDERES><X>1</X></ANDERES>");
  CConverter project;
  EXPECT_EQ(project.LoadProject((dir_ / "other.xml").string()), "");
  EXPECT_EQ(project.EditMode, edEdit);
  EXPECT_EQ(project.Jobs().Count(), 0);
  EXPECT_EQ(project.ScriptModules().Count(), 1);
  EXPECT_EQ(project.SourceDataBase().DatabaseType, dbtUndefined);
}

TEST_F(ProjectFileTest, AFileThatIsNotWellFormedIsNotRead) {
  WriteFile(dir_ / "bad.cpf", "<?xml version=\"1.0\"?>\n<PROJECT><JOBS>\n<JOB></JOBS>\n");
  CConverter project;
  std::string file = (dir_ / "bad.cpf").string();
  EXPECT_EQ(project.LoadProject(file),
            "Das Dokument konnte nicht gelesen werden. \r\nFehlertext : <JOB></JOBS>\r\n"
            "Dateiname  : bad.cpf");
  EXPECT_EQ(project.EditMode, edNew);
  EXPECT_EQ(project.LoadProject((dir_ / "none.cpf").string()),
            "Das Dokument konnte nicht gelesen werden. \r\nFehlertext : \r\nDateiname  : none.cpf");
  EXPECT_FALSE(ui_->WorkFormVisible());
}

TEST_F(ProjectFileTest, AValueThatDoesNotConvertFailsTheLoadWithItsAction) {
  WriteFile(dir_ / "x.cpf", "<PROJECT><JOBS><JOB ENABLED=\"vielleicht\"/></JOBS></PROJECT>");
  CConverter project;
  std::string error = project.LoadProject((dir_ / "x.cpf").string());
  EXPECT_NE(error.find("Fehler Nr.: 13"), std::string::npos) << error;
  EXPECT_NE(error.find("Typen unverträglich"), std::string::npos) << error;
  EXPECT_FALSE(ui_->WorkFormVisible());
  EXPECT_EQ(ui_->MousePointer(), ui::vbDefault);
}

TEST_F(ProjectFileTest, SaveReportsAFileThatCannotBeWritten) {
  CConverter project;
  std::string error = project.SaveProject((dir_ / "kein" / "ordner.cpf").string());
  EXPECT_NE(error.find("Fehler Nr.: 75"), std::string::npos) << error;
  EXPECT_EQ(project.EditMode, edNew);
  EXPECT_FALSE(ui_->WorkFormVisible());
  EXPECT_EQ(ui_->MousePointer(), ui::vbDefault);
}

}  // namespace
}  // namespace ketrova
