// The run driver: the project file, the log file with its frames, the stores,
// the start and end scripts, the modules, and the failures before any job.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/script_modules.h"
#include "engine_fixture.h"
#include "jobs/jobs.h"
#include "stores/database.h"

namespace ketrova::testing {
namespace {

using ado::testing::BackendName;
using ado::testing::TestBackends;

class RunDriverTest : public EngineTest {};

TEST_P(RunDriverTest, ProjectWithoutJobsWritesTheFramesAndCommits) {
  SourceNumbers("Kunden", 0);
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(engine->LogfileName(), (work / "projekt.LOG").string());
  EXPECT_EQ(project->LogfileName, engine->LogfileName());
  EXPECT_TRUE(screen->CallsOf("MsgBox").empty());
  EXPECT_FALSE(project->SourceDataBase().Active());
  EXPECT_FALSE(project->DestDataBase().Active());
  ExpectLog("no_jobs");
}

TEST_P(RunDriverTest, StartScriptAnsweringFalseStopsBeforeTheJobs) {
  SourceNumbers("Kunden", 3);
  AddJob("Kunden", "Kunden", "Kunden", CopyScript());
  project->ScriptOnStart = "Function txOnStart()\r\n  txOnStart = False\r\nEnd Function\r\n";
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 1);
  ExpectLog("start_false");
}

TEST_P(RunDriverTest, StartScriptThatDoesNotCompileEndsTheRunWithItsError) {
  SourceNumbers("Kunden", 3);
  AddJob("Kunden", "Kunden", "Kunden", CopyScript());
  project->ScriptOnStart = "Function txOnStart(\r\n";
  std::string text = Run();
  EXPECT_NE(text.find("Ein Fehler ist aufgetreten!"), std::string::npos) << text;
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(Log().find("Bearbeite "), std::string::npos);
  ExpectLog("start_compile_error");
}

TEST_P(RunDriverTest, ModulesAndTheConverterObjectReachTheStartScript) {
  SourceNumbers("Kunden", 0);
  CScriptModule& module = project->ScriptModules().Add();
  module.Name = "Hilfen";
  module.ScriptText = "Function Doppelt(x)\r\n  Doppelt = 2 * x\r\nEnd Function\r\n";
  project->ScriptOnStart =
      "Function txOnStart()\r\n"
      "  txOnStart = (Doppelt(21) = 42) And IsObject(Converter) And TypeName(Converter) = "
      "\"CRuntime\"\r\n"
      "End Function\r\n";
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_NE(Log().find("Benutzerscripte übergeben : Hilfen\r\n"), std::string::npos);
}

TEST_P(RunDriverTest, ModuleThatDoesNotCompileIsLoggedAndTheRunGoesOn) {
  SourceNumbers("Kunden", 0);
  CScriptModule& broken = project->ScriptModules().Add();
  broken.Name = "Kaputt";
  broken.ScriptText = "Sub Kaputt(\r\n";
  project->ScriptModules().Add().Name = "Danach";
  EXPECT_EQ(Run(), "");
  // The sequence stops at the broken module: later modules and the
  // Converter object are not handed over.
  ExpectLog("module_compile_error");
}

TEST_P(RunDriverTest, EndScriptFailureBecomesTheResult) {
  SourceNumbers("Kunden", 0);
  project->ScriptOnEnd = "Function txOnEnd()\r\n  txOnEnd = 1 / 0\r\nEnd Function\r\n";
  std::string text = Run();
  EXPECT_NE(text.find("Fehler Nr.: 11"), std::string::npos) << text;
  EXPECT_NE(Log().find("Aufruf Benutzerscript Methode : txOnEnd\r\n\r\nEin Fehler"),
            std::string::npos);
}

TEST_P(RunDriverTest, StoreThatDoesNotOpenEndsTheRunWithItsMessage) {
  CDatabase& source = project->SourceDataBase();
  source.DatabaseType = dbtODBC;
  source.DriverName = "KeinSolcherTreiber";
  std::string text = Run();
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(text, source.LastErrorMessage());
  EXPECT_EQ(engine->ErrorCount(), 0);
  ExpectLog("source_does_not_open");
}

TEST_P(RunDriverTest, MissingProjectFileAnswersWithTheLoadersTextAndWritesNoLog) {
  engine = std::make_unique<CEngine>();
  engine->Converter = project.get();
  std::string name = (work / "fehlt.cpf").string();
  std::string text = engine->Execute(name);
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(text.find("Datei nicht gefunden -> "), std::string::npos) << text;
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_TRUE(engine->LogfileName().empty());
  EXPECT_FALSE(std::filesystem::exists(work / "fehlt.LOG"));
}

TEST_P(RunDriverTest, ProjectFileIsLoadedAndRun) {
  SourceNumbers("Kunden", 0);
  const std::string file = (work / "gespeichert.cpf").string();
  ASSERT_EQ(project->SaveProject(file), "");
  engine = std::make_unique<CEngine>();
  CConverter caller;
  engine->Converter = &caller;
  std::string name = file;
  EXPECT_EQ(engine->Execute(name), "");
  EXPECT_NE(engine->Converter, &caller);
  EXPECT_EQ(engine->LogfileName(), (work / "gespeichert.LOG").string());
  EXPECT_TRUE(std::filesystem::exists(work / "gespeichert.LOG"));
}

TEST_P(RunDriverTest, RunWithoutConverterFailsAtOnce) {
  engine = std::make_unique<CEngine>();
  std::string none;
  std::string text = engine->Execute(none);
  EXPECT_NE(text.find("Fehler Nr.: 91"), std::string::npos) << text;
  EXPECT_EQ(engine->ErrorCount(), 1);
}

TEST_P(RunDriverTest, LogNameIsCutAtTheFirstDotOfThePath) {
  SourceNumbers("Kunden", 0);
  std::filesystem::create_directories(work / "ordner.alt");
  project->FileName = (work / "ordner.alt" / "projekt.cpf").string();
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->LogfileName(), (work / "ordner.LOG").string());
  EXPECT_TRUE(std::filesystem::exists(work / "ordner.LOG"));

  // Without any dot there is no log name, and the run fails on opening it.
  project->FileName = (work / "projekt").string();
  std::string text = Run();
  EXPECT_NE(text.find("Fehler Nr.: 75"), std::string::npos) << text;
  EXPECT_EQ(engine->ErrorCount(), 1);
}

INSTANTIATE_TEST_SUITE_P(Backends, RunDriverTest, ::testing::ValuesIn(TestBackends()), BackendName);

}  // namespace
}  // namespace ketrova::testing
