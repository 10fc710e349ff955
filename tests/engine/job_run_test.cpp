// Jobs run end to end: SQLite and CSV sources into the back-end under test.
// Each case checks the target's rows; on SQLite also the whole log.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <span>

#include "engine_fixture.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "stores/database.h"

namespace ketrova::testing {
namespace {

using ado::testing::BackendName;
using ado::testing::TestBackends;
using RowList = std::vector<std::string>;

// A display control that writes down every property it is given.
class RecordingControl : public Object {
 public:
  std::string TypeName() const override { return "Control"; }
  int GetIDOfName(std::string_view name) override {
    names_.emplace_back(name);
    return static_cast<int>(names_.size());
  }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    const std::string& name = names_[static_cast<std::size_t>(dispId - 1)];
    if (kind == InvokeKind::kPropertyPut) puts.push_back(name + "=" + args.back().ToString());
    return {};
  }
  std::vector<std::string> PutsOf(const std::string& name) const {
    std::vector<std::string> found;
    for (const std::string& put : puts)
      if (put.starts_with(name + "=")) found.push_back(put.substr(name.size() + 1));
    return found;
  }
  std::vector<std::string> puts;

 private:
  std::vector<std::string> names_;
};

class JobRunTest : public EngineTest {
 protected:
  void CreateTarget(const std::string& name = "Ziel") {
    DropTable(name);
    // Bracketed, so that PostgreSQL keeps the names' case as the jobs write them.
    db->Execute("CREATE TABLE [" + name +
                "] ([Nr] INTEGER PRIMARY KEY, [Name] VARCHAR(50), [Betrag] FLOAT)");
  }
  // Invoices whose amounts are text, as a CSV export gives them; the second
  // one holds no number.
  void SourceInvoices() {
    SourceSQLite({"CREATE TABLE Rechnungen (Nr INTEGER PRIMARY KEY, Name TEXT, Betrag TEXT)",
                  "INSERT INTO Rechnungen VALUES (1, 'Müller', '1,5')",
                  "INSERT INTO Rechnungen VALUES (2, 'Meier', 'kein Betrag')",
                  "INSERT INTO Rechnungen VALUES (3, 'Schulz', '3,25')",
                  "INSERT INTO Rechnungen VALUES (4, 'Özdemir', '4')"});
  }
  // A MySQL target is written by statements generated from the mapping, not
  // through the record set the script fills; they are sent even for a record
  // whose script failed.
  bool DirectSql() const { return Dialect() == "mysql"; }
  RowList Target(const std::string& name = "Ziel") {
    return RowList(Rows("SELECT [Nr], [Name], [Betrag] FROM [" + name + "] ORDER BY [Nr]"));
  }
};

TEST_P(JobRunTest, EmptySourceLogsItAndStillCountsTheTarget) {
  SourceNumbers("Kunden", 0);
  CreateTarget();
  AddJob("Kunden", "Kunden", "Ziel", CopyScript());
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_TRUE(Target().empty());
  EXPECT_EQ(Messages(), "Keine Daten in Quelle vorhanden bei Aufgabe : Kunden\n");
  // Any message of the run earns the closing notice.
  ASSERT_EQ(screen->CallsOf("MsgBox").size(), 1u);
  EXPECT_NE(screen->CallsOf("MsgBox")[0].find("überprüfen Sie bitte das Ereignisprotokoll !"),
            std::string::npos);
  ExpectLog("empty_source");
}

TEST_P(JobRunTest, LimitOfThreeConvertsThreeOfTen) {
  SourceNumbers("Kunden", 10);
  CreateTarget();
  AddJob("Kunden", "Kunden", "Ziel", CopyScript()).MaxRecords = 3;
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Target(), (RowList{"1|Name 1|1,5", "2|Name 2|2,5", "3|Name 3|3,5"}));
  EXPECT_EQ(Messages(), "Es werden 3 Daten bei Aufgabe : Kunden konvertiert.\n");
  ExpectLog("limit");

  // The project's limit wins over the job's.
  project->MaxRecords = 1;
  CreateTarget();
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(Target().size(), 1u);
}

TEST_P(JobRunTest, MissingTargetTableIsCreatedFromTheSource) {
  if (DirectSql()) GTEST_SKIP() << "an SQLite source's text columns become CHAR without a length";
  SourceNumbers("Kunden", 3);
  DropTable("Neu");
  ASSERT_EQ(project->SourceDataBase().Reload(), "");
  AddJob("Kunden", "Kunden", "Neu", CopyScript());
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(Target("Neu"), (RowList{"1|Name 1|1,5", "2|Name 2|2,5", "3|Name 3|3,5"}));
  ExpectLog("create_table");
}

TEST_P(JobRunTest, TargetTableThatCannotBeCreatedFailsTheJob) {
  // SQLite keeps names beginning with sqlite_ for itself.
  if (Dialect() != "sqlite") GTEST_SKIP() << "the refused name is SQLite's";
  SourceNumbers("Kunden", 3);
  ASSERT_EQ(project->SourceDataBase().Reload(), "");
  CJob& job = AddJob("Kunden", "Kunden", "sqlite_ziel", CopyScript());
  job.CancelOnError = true;
  std::string text = Run();
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_NE(Messages().find(text), std::string::npos);
  ExpectLog("table_not_created");
}

TEST_P(JobRunTest, FailingRecordIsSkippedWhenTheJobGoesOnAndTheCountsDiffer) {
  SourceInvoices();
  CreateTarget();
  db->Execute("INSERT INTO [Ziel] VALUES (99, 'alt', 0)");
  CJob& job = AddJob("Rechnungen", "Rechnungen", "Ziel", CopyScript());
  job.JobDest().DeleteBeforeInsert = true;
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 1);
  if (DirectSql()) {
    EXPECT_EQ(Target(), (RowList{"1|Müller|1,5", "2|Meier|0", "3|Schulz|3,25", "4|Özdemir|4"}));
    return;
  }
  EXPECT_EQ(Target(), (RowList{"1|Müller|1,5", "3|Schulz|3,25", "4|Özdemir|4"}));
  EXPECT_NE(Messages().find("Anzahl Datensätze gelesen -> 4 / geschrieben -> 3  / Differenz = 1\n"
                            "Warnung: Anzahl gelesener und geschriebener Datensätze stimmen nicht "
                            "überein.\n"),
            std::string::npos)
      << Messages();
  ExpectLog("failing_record_goes_on");
}

TEST_P(JobRunTest, FailingRecordEndsTheJobAndTheRunWithCancelOnError) {
  SourceInvoices();
  CreateTarget();
  CreateTarget("Ziel2");
  CJob& job = AddJob("Rechnungen", "Rechnungen", "Ziel", CopyScript());
  job.CancelOnError = true;
  AddJob("Danach", "Rechnungen", "Ziel2", CopyScript());
  std::string text = Run();
  EXPECT_NE(text.find("Ein Fehler ist aufgetreten!"), std::string::npos) << text;
  EXPECT_EQ(engine->ErrorCount(), 1);
  EXPECT_EQ(Target(),
            (DirectSql() ? RowList{"1|Müller|1,5", "2|Meier|0"} : RowList{"1|Müller|1,5"}));
  EXPECT_TRUE(Target("Ziel2").empty());
  ExpectLog("failing_record_cancels");
}

TEST_P(JobRunTest, SourceThatEndsBeforeItsCountStopsTheLoopAndTheCountsDiffer) {
  SourceNumbers("Kunden", 5);
  CreateTarget();
  // The count is of the whole table; the user's statement reads two rows.
  CJob& job = AddJob("Kunden", "Kunden", "Ziel", CopyScript());
  job.JobSource().JobType = jitUDFView;
  job.JobSource().SQL = "SELECT * FROM Kunden WHERE Nr <= 2";
  job.JobDest().DeleteBeforeInsert = true;
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(Target().size(), 2u);
  EXPECT_NE(Log().find("Es wurden 2 Datensätze konvertiert.\r\n"), std::string::npos);
  EXPECT_NE(Messages().find("Anzahl Datensätze gelesen -> 5 / geschrieben -> 2  / Differenz = 3\n"),
            std::string::npos)
      << Messages();
}

TEST_P(JobRunTest, UpdateByKeyChangesFoundRowsAndAddsTheOthers) {
  SourceNumbers("Kunden", 3);
  CreateTarget();
  db->Execute("INSERT INTO [Ziel] VALUES (1, 'alt 1', 0)");
  db->Execute("INSERT INTO [Ziel] VALUES (2, 'alt 2', 0)");
  AddJob("Kunden", "Kunden", "Ziel",
         "Function txConvertMain()\r\n"
         "\tDestination.Fields(\"Nr\") = Source.Fields(\"Nr\")\r\n"
         "\tDestination.Fields(\"Name\") = Source.Fields(\"Name\")\r\n"
         "End Function\r\n")
      .DestinationUpdate = true;
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(Target(), (DirectSql() ? RowList{"1|Name 1|1,5", "2|Name 2|2,5", "3|Name 3|3,5"}
                                   : RowList{"1|Name 1|0", "2|Name 2|0", "3|Name 3|"}));
  ExpectLog("update_by_key");
}

TEST_P(JobRunTest, UserDefinedSearchScriptFindsTheRowToUpdate) {
  SourceNumbers("Kunden", 2);
  CreateTarget();
  db->Execute("INSERT INTO [Ziel] VALUES (7, 'Name 2', 0)");
  CJob& job =
      AddJob("Kunden", "Kunden", "Ziel",
             "Function txConvertMain()\r\n"
             "\tIf Destination.EditMode = 2 Then Destination.Fields(\"Nr\") = 10 + RecordCount\r\n"
             "\tDestination.Fields(\"Name\") = Source.Fields(\"Name\")\r\n"
             "\tDestination.Fields(\"Betrag\") = Source.Fields(\"Betrag\")\r\n"
             "End Function\r\n");
  job.DestinationUpdate = true;
  job.JobDest().DestinationFilterUserDefined = true;
  job.JobDest().DestinationFilterUserDefinedScript =
      "Function txSQLSearchResult()\r\n"
      "\ttxSQLSearchResult = \"SELECT * FROM [Ziel] WHERE [Name] = '\" & Source.Fields(\"Name\") & "
      "\"'\"\r\n"
      "End Function\r\n";
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  // The generated statement finds its row by the key, not by the search.
  EXPECT_EQ(Target(), (DirectSql() ? RowList{"1|Name 1|1,5", "7|Name 2|0"}
                                   : RowList{"7|Name 2|2,5", "11|Name 1|1,5"}));
}

TEST_P(JobRunTest, EachRecordSeesItsNumberAndAFreshKey) {
  if (DirectSql()) GTEST_SKIP() << "the generated statements write the mapping, not the script";
  SourceNumbers("Kunden", 3);
  CreateTarget();
  AddJob("Kunden", "Kunden", "Ziel",
         "Function txConvertMain()\r\n"
         "\tDestination.Fields(\"Nr\") = RecordCount\r\n"
         "\tDestination.Fields(\"Name\") = IdentKey\r\n"
         "End Function\r\n");
  EXPECT_EQ(Run(), "");
  RowList rows = Target();
  ASSERT_EQ(rows.size(), 3u);
  std::set<std::string> keys;
  for (int i = 0; i < 3; ++i) {
    const std::string& row = rows[static_cast<std::size_t>(i)];
    EXPECT_EQ(row.substr(0, 2), std::to_string(i + 1) + "|");
    const std::string key = row.substr(2, row.size() - 3);
    EXPECT_EQ(key.size(), 36u) << key;
    EXPECT_EQ(key.find_first_of("{}\r\n"), std::string::npos) << key;
    keys.insert(key);
  }
  EXPECT_EQ(keys.size(), 3u);
}

// Script globals come before the members of the added objects, and of two
// added objects with the same member the one added last answers: a bare
// RecordCount is the record number, a bare Fields the destination's.
TEST_P(JobRunTest, BareNamesResolveToGlobalsThenToTheDestination) {
  if (DirectSql()) GTEST_SKIP() << "the generated statements write the mapping, not the script";
  SourceNumbers("Kunden", 2);
  CreateTarget();
  AddJob("Kunden", "Kunden", "Ziel",
         "Function txConvertMain()\r\n"
         "\tFields(\"Nr\") = RecordCount\r\n"
         "\tFields(\"Name\") = Source.Fields(\"Name\") & \"/\" & Fields(\"Nr\")\r\n"
         "End Function\r\n");
  EXPECT_EQ(Run(), "");
  RowList rows = Target();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].substr(0, 11), "1|Name 1/1|");
  EXPECT_EQ(rows[1].substr(0, 11), "2|Name 2/2|");
}

TEST_P(JobRunTest, DisplayControlsFollowTheJobsAndRecords) {
  SourceNumbers("Kunden", 3);
  CreateTarget();
  AddJob("Kunden", "Kunden", "Ziel", CopyScript());
  auto records = std::make_shared<RecordingControl>();
  auto jobs = std::make_shared<RecordingControl>();
  auto status = std::make_shared<RecordingControl>();
  engine = std::make_unique<CEngine>();
  engine->Converter = project.get();
  engine->ProgressBar = records;
  engine->ProgressBarTotal = jobs;
  engine->EditInfo = status;
  std::string none;
  EXPECT_EQ(engine->Execute(none), "");
  EXPECT_EQ(jobs->puts, (RowList{"Visible=Wahr", "Max=1", "Value=1", "Visible=Falsch"}));
  // The record bar's maximum leaves room for one more.
  EXPECT_EQ(records->puts, (RowList{"Visible=Wahr", "Min=1", "Max=4", "Value=1", "Value=2",
                                    "Value=3", "Visible=Falsch"}));
  const RowList texts = status->PutsOf("Text");
  ASSERT_FALSE(texts.empty());
  EXPECT_EQ(texts.front(), "Öffne Quelldatenbank ->                           ");
  EXPECT_NE(std::find(texts.begin(), texts.end(), "Kunden\r\nDatensatz 1 / 3 wird bearbeitet ..."),
            texts.end());
  EXPECT_EQ(texts.back(), "");
}

TEST_P(JobRunTest, JobCancelFromTheScriptStopsOnlyThatJob) {
  SourceNumbers("Kunden", 4);
  CreateTarget();
  CreateTarget("Ziel2");
  AddJob("Kunden", "Kunden", "Ziel",
         "Function txConvertMain()\r\n"
         "\tDestination.Fields(\"Nr\") = Source.Fields(\"Nr\")\r\n"
         "\tIf RecordCount = 2 Then Job.Cancel = True\r\n"
         "End Function\r\n");
  AddJob("Danach", "Kunden", "Ziel2", CopyScript());
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(Target(), (DirectSql() ? RowList{"1|Name 1|1,5"} : RowList{"1||"}));
  EXPECT_EQ(Target("Ziel2").size(), 4u);
  ExpectLog("job_cancel");
}

TEST_P(JobRunTest, UserCancelAnsweredYesStopsTheRunAndKeepsWhatIsWritten) {
  SourceNumbers("Kunden", 5);
  CreateTarget();
  CreateTarget("Ziel2");
  AddJob("Kunden", "Kunden", "Ziel", CopyScript());
  AddJob("Danach", "Kunden", "Ziel2", CopyScript());
  screen->onDoEvents = [this](int n) {
    if (n == 3) engine->Cancel = -1;
  };
  screen->QueueMsgBox(ui::vbYes);
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(Target().size(), 2u);
  EXPECT_TRUE(Target("Ziel2").empty());
  EXPECT_EQ(screen->CallsOf("MsgBox")[0],
            "MsgBox \"Ketrova\" \"Möchten Sie wirklich die Verarbeitung abbrechen ?\" 36 -> 6");
}

TEST_P(JobRunTest, ScriptThatDoesNotCompileFailsItsJobAndTheNextRuns) {
  SourceNumbers("Kunden", 2);
  CreateTarget();
  CreateTarget("Ziel2");
  AddJob("Kunden", "Kunden", "Ziel", "Function txConvertMain(\r\n");
  AddJob("Danach", "Kunden", "Ziel2", CopyScript());
  // The next job's clean end clears the text: only the last job's survives.
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_TRUE(Target().empty());
  EXPECT_EQ(Target("Ziel2").size(), 2u);
  ExpectLog("script_does_not_compile");
}

TEST_P(JobRunTest, JScriptProjectFailsEveryJobAtTheHelperProcedures) {
  SourceNumbers("Kunden", 2);
  CreateTarget();
  project->ScriptLanguage = sclJavaScript;
  project->ScriptOnStart = "function txOnStart()\r\n{\r\n  return true;\r\n}\r\n";
  project->ScriptOnEnd = "function txOnEnd()\r\n{\r\n}\r\n";
  CJob& job = AddJob("Kunden", "Kunden", "Ziel",
                     "function txConvertMain()\r\n{\r\n"
                     "\tDestination.Fields(\"Nr\").Value = Source.Fields(\"Nr\").Value;\r\n}\r\n");
  job.ScriptLanguage = sclJavaScript;
  std::string text = Run();
  EXPECT_NE(text.find("Ein Fehler ist aufgetreten!"), std::string::npos) << text;
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_TRUE(Target().empty());
  ExpectLog("jscript");
}

TEST_P(JobRunTest, CsvSourceIsConvertedWithItsUmlauts) {
  SourceCsv("kunden.csv", "Nr;Name;Betrag\r\n1;Müller;1,5\r\n2;Özdemir;2\r\n3;Weiß;3,75\r\n");
  CreateTarget();
  AddJob("Kunden", "kunden.csv", "Ziel", CopyScript());
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(engine->ErrorCount(), 0);
  EXPECT_EQ(Target(), (RowList{"1|Müller|1,5", "2|Özdemir|2", "3|Weiß|3,75"}));
  ExpectLog("csv_source");
}

INSTANTIATE_TEST_SUITE_P(Backends, JobRunTest, ::testing::ValuesIn(TestBackends()), BackendName);

}  // namespace
}  // namespace ketrova::testing
