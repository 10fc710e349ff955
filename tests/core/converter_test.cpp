#include "core/converter.h"

#include <gtest/gtest.h>

#include "core/dialogs.h"
#include "engine/script_modules.h"
#include "jobs/jobs.h"
#include "platform/ui/scripted_ui.h"
#include "stores/database.h"

namespace ketrova {
namespace {

const std::string kStars(67, '*');

class ConverterTest : public ::testing::Test {
 protected:
  void SetUp() override { ui::SetCurrent(ui_); }
  void TearDown() override {
    ui::SetCurrent(nullptr);
    SetConverterDialogs(nullptr);
  }
  std::shared_ptr<ui::ScriptedUserInterface> ui_ = std::make_shared<ui::ScriptedUserInterface>();
};

TEST_F(ConverterTest, AnEmptyProjectHoldsBothSkeletons) {
  CConverter project;
  project.ScriptOnStart = "alt";
  project.Clear();
  EXPECT_EQ(project.ScriptOnStart, "'" + kStars + "\r\n'\r\n'\r\n'\r\n'\r\n'" + kStars +
                                       "\r\n\r\nFunction txOnStart()\r\n\ttxOnStart = True\r\n"
                                       "End Function\r\n\r\n\r\n");
  EXPECT_EQ(project.ScriptOnEnd, "'" + kStars + "\r\n'\r\n'\r\n'\r\n'\r\n'" + kStars +
                                     "\r\n\r\nFunction txOnEnd()\r\n\ttxOnEnd = True\r\n"
                                     "End Function\r\n\r\n\r\n");
}

TEST_F(ConverterTest, JScriptSkeletonsDifferInOneEmptyLine) {
  CConverter project;
  project.ScriptLanguage = sclJavaScript;
  project.ScriptOnStart = "var a;";
  project.ScriptOnEnd = "";
  project.CheckMainScriptOnStart();
  project.CheckMainScriptOnEnd();
  EXPECT_EQ(project.ScriptOnStart, "//" + kStars + "\r\n//\r\n//\r\n//\r\n//\r\n//" + kStars +
                                       "\r\n\r\nfunction txOnStart()\r\n{\r\n\treturn true\r\n}"
                                       "\r\n\r\n\r\nvar a;");
  EXPECT_EQ(project.ScriptOnEnd, "//" + kStars + "\r\n//\r\n//\r\n//\r\n//\r\n//" + kStars +
                                     "\r\nfunction txOnEnd()\r\n{\r\n\treturn true\r\n}\r\n\r\n"
                                     "\r\n");
  // A mention anywhere, in any case, counts as the function.
  project.ScriptOnStart = "' calls TXONSTART later";
  project.CheckMainScriptOnStart();
  EXPECT_EQ(project.ScriptOnStart, "' calls TXONSTART later");
}

TEST_F(ConverterTest, SettingsAndTheirDefaults) {
  CConverter project;
  EXPECT_EQ(project.Version(), "Version 2.5");
  EXPECT_EQ(project.MaxDemoData(), 20);
  project.SetMaxDemoData(0);
  EXPECT_EQ(project.MaxDemoData(), 20);
  EXPECT_EQ(project.ScriptLanguageAsString(), "VBScript");
  project.ScriptLanguage = 7;
  EXPECT_EQ(project.ScriptLanguageAsString(), "JScript");
  EXPECT_EQ(project.SourceDataBase().DatabaseDirection, dbdSource);
  EXPECT_EQ(project.DestDataBase().DatabaseDirection, dbdTarget);
  EXPECT_EQ(project.SourceDataBase().Converter, &project);
  std::string debug;
  project.DebugEvent = [&](const std::string& m) { debug += m; };
  project.FireDebugEvent("eins");
  project.FireErrorEvent("ohne Hörer");
  EXPECT_EQ(debug, "eins");
}

TEST_F(ConverterTest, AssignTakesTheChildrenAndPointsThemHome) {
  CConverter project;
  {
    CConverter other;
    other.ProjectName = "Neu";
    other.ScriptLanguage = sclJavaScript;
    other.DestDataBase().DatabaseType = dbtMySQL;
    CJob& job = other.Jobs().Add();
    job.Caption = "Eins";
    job.JobSource().Columns().Add();
    project.Assign(other);
    EXPECT_EQ(other.Jobs().Count(), 0);
  }
  EXPECT_EQ(project.ProjectName, "Neu");
  EXPECT_EQ(project.ScriptLanguage, sclVBScript);
  EXPECT_EQ(project.DestDataBase().DatabaseType, dbtMySQL);
  ASSERT_EQ(project.Jobs().Count(), 1);
  CJob& job = project.Jobs().Item(1);
  EXPECT_EQ(job.Converter, &project);
  EXPECT_EQ(job.JobSource().Columns().Item(1).Converter, &project);
  EXPECT_EQ(job.JobSource().Database(), &project.SourceDataBase());
  EXPECT_EQ(project.ScriptModules().Converter, &project);
}

TEST_F(ConverterTest, JobEditNeedsADestinationAndAnEditor) {
  CConverter project;
  EXPECT_EQ(project.JobEdit(1),
            "Bevor Sie eine Aufgabe bearbeiten können, müssen Sie eine Zieldatenbank wählen !");
  project.DestDataBase().DatabaseType = dbtAccess;
  // No editor: a cancelled dialog. On an empty list the job is added first.
  EXPECT_EQ(project.JobEdit(0), "CANCEL");
  EXPECT_EQ(project.Jobs().Count(), 1);
  EXPECT_EQ(project.JobEdit(5), "Die Aufgabe (5) konnte nicht ermittelt werden !");
  EXPECT_EQ(project.JobEdit(0, 1), "CANCEL");
  EXPECT_EQ(project.Jobs().Count(), 1);
}

class ConfirmingDialogs : public ConverterDialogs {
 public:
  bool EditProject(CConverter&) override { return true; }
  void Run(CConverter&, const std::string& fileName) override { runs += fileName; }
  bool EditJob(CConverter&, CJob& job) override {
    job.Caption = "Bearbeitet";
    return true;
  }
  bool SelectDatabase(CConverter&, int, CDatabase&) override { return false; }
  std::string runs;
};

TEST_F(ConverterTest, AConfirmedEditorInsertsTheNewJob) {
  auto dialogs = std::make_shared<ConfirmingDialogs>();
  SetConverterDialogs(dialogs);
  CConverter project;
  project.DestDataBase().DatabaseType = dbtAccess;
  project.Jobs().Add().Caption = "Erster";
  project.Jobs().Add().Caption = "Zweiter";
  EXPECT_EQ(project.JobEdit(0, 1), "OK");
  ASSERT_EQ(project.Jobs().Count(), 3);
  EXPECT_EQ(project.Jobs().Item(2).Caption, "Bearbeitet");
  EXPECT_EQ(project.Jobs().Item(3).Index, 3);
  EXPECT_EQ(project.Jobs().Item(2).ValidateError, "Quelle: Objektname fehlt");
  project.FileName = "/p.cpf";
  EXPECT_EQ(project.Execute(), "");
  EXPECT_EQ(dialogs->runs, "/p.cpf");
}

TEST_F(ConverterTest, HasProjectOffersANewOne) {
  CConverter project;
  ui_->QueueMsgBox(ui::vbNo);
  EXPECT_FALSE(project.HasProject());
  EXPECT_EQ(ui_->CallsOf("MsgBox").at(0),
            "MsgBox \"Ketrova\" \"Für diese Operation müssen Sie zuerst ein Projekt Neu anlegen, "
            "\\r\\noder ein bestehendes öffnen. \\r\\n\\r\\nMöchten Sie jetzt ein neues Projekt "
            "anlegen ?\" 52 -> 7");
  project.EditMode = edEdit;
  EXPECT_TRUE(project.HasProject());
}

}  // namespace
}  // namespace ketrova
