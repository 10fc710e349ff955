#include "jobs/jobs.h"

#include <gtest/gtest.h>

#include "core/converter.h"
#include "stores/database.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

std::string Captions(const CJobs& jobs) {
  std::string out;
  for (const CJob& job : jobs) out += job.Caption + std::to_string(job.Index) + job.Key + " ";
  return out;
}

class JobsTest : public ::testing::Test {
 protected:
  void AddJobs(std::initializer_list<const char*> captions) {
    for (const char* caption : captions) jobs().Add().Caption = caption;
  }
  CJobs& jobs() { return project_.Jobs(); }
  CConverter project_;
};

TEST_F(JobsTest, RemoveRenumbersTheJobsButNotTheirKeysInTheList) {
  AddJobs({"A", "B", "C"});
  EXPECT_EQ(Captions(jobs()), "A11 B22 C33 ");
  jobs().Remove(2);
  EXPECT_EQ(Captions(jobs()), "A11 C22 ");
  EXPECT_EQ(jobs().Item(2).Caption, "C");
  EXPECT_EQ(jobs().Item("3").Caption, "C");
  EXPECT_THROW(jobs().Item("2"), VbError);
}

TEST_F(JobsTest, InsertUnderATakenKeyFails) {
  AddJobs({"A", "B"});
  std::unique_ptr<CJob> job = jobs().NewJob();
  job->Key = "1";
  EXPECT_THROW(jobs().Insert(std::move(job), 1), VbError);
  EXPECT_EQ(Captions(jobs()), "A11 B22 ");
}

TEST_F(JobsTest, MoveJobNeverReachesTheLastPlace) {
  AddJobs({"A", "B", "C"});
  jobs().Item(3).Enabled = false;
  jobs().RenumberJobs();
  std::int32_t from = 1, to = 3;
  EXPECT_FALSE(jobs().MoveJob(from, to));
  EXPECT_EQ(to, 2);
  EXPECT_EQ(Captions(jobs()), "B11 A22 C33 ");
  EXPECT_EQ(jobs().JobsDisabled(), 1);

  CJobs& list = jobs();
  list.Clear();
  AddJobs({"A"});
  from = 1;
  to = 1;
  list.MoveJob(from, to);
  EXPECT_EQ(list.Count(), 0);
}

TEST_F(JobsTest, NewJobTakesItsSideTypesFromTheSource) {
  project_.SourceDataBase().DatabaseType = dbtOutlook;
  project_.DestDataBase().DatabaseType = dbtAccess;
  std::unique_ptr<CJob> job = jobs().NewJob();
  EXPECT_EQ(job->JobSource().JobType, jitOutlook);
  EXPECT_EQ(job->JobDest().JobType, jitOutlook);
  EXPECT_EQ(job->Key, "1");
  EXPECT_EQ(jobs().Count(), 0);
  EXPECT_TRUE(job->Enabled);
  EXPECT_EQ(job->TriggerType, ttOnConvert);
}

TEST_F(JobsTest, CheckValidateStopsAtTheFirstFailure) {
  CJob& job = jobs().Add();
  auto check = [&] {
    job.CheckValidate();
    return job.Validate ? std::string("OK") : job.ValidateError;
  };
  job.JobSource().ItemObjectName = "Quelle";
  EXPECT_EQ(check(), "Quelle: Objektname fehlt");
  job.ObjectName = "Job";
  EXPECT_EQ(check(), "Quelle: Spalten fehlen");
  job.JobSource().Columns().Add();
  EXPECT_EQ(check(), "Ziel: Objektname fehlt");
  job.JobDest().ItemObjectName = "Ziel";
  EXPECT_EQ(check(), "Ziel: Keine Spalten definiert");
  job.JobDest().Columns().Add();
  job.DestinationUpdate = true;
  EXPECT_EQ(check(), "DB-Update: Verbindungsfelder fehlen");
  job.JobSource().KeyField = job.JobDest().KeyField = "Nr";
  job.JobDest().DestinationFilterUserDefined = true;
  EXPECT_EQ(check(), "DB-Update: Benutzerdefiniertes Script fehlt");
  job.JobDest().DestinationFilterUserDefinedScript = "x";
  job.JobSource().Filtered = true;
  EXPECT_EQ(check(), "Script: Kein Script definiert");
  job.Script = "s";
  EXPECT_EQ(check(), "Filter: Keine Filter definiert");
  job.JobSource().Filters().Add();
  EXPECT_EQ(check(), "OK");
  EXPECT_EQ(job.ValidateError, "Filter: Keine Filter definiert");  // kept after success
  job.TriggerType = 0;
  EXPECT_EQ(job.TriggerTypeToString(), "Undefined");
}

TEST_F(JobsTest, ColumnsCloneAsIdentifiersAndKeepTheirKeys) {
  CJob& job = jobs().Add();
  CJobItemColumns& columns = job.JobSource().Columns();
  CJobItemColumn& first = columns.Add();
  EXPECT_TRUE(first.Visible);
  EXPECT_EQ(first.ColumnWidth, "100");
  EXPECT_EQ(first.FieldType, 13);
  first.Name = "Straße Nr";
  first.TargetColumn = "Straße Nr";
  first.DisplayName = "Größe";
  columns.Add().Name = "b";
  job.CopyColumns(true);
  CJobItemColumn& copy = job.JobDest().Columns().Item("1");
  EXPECT_EQ(copy.TargetColumn, "Strasse_Nr");
  EXPECT_EQ(copy.DisplayName, "Groesse");
  EXPECT_EQ(copy.Name, "Straße Nr");
  EXPECT_EQ(job.JobDest().ColumnByTargetName(" strasse_nr"), &copy);
  columns.Remove(1);
  EXPECT_THROW(columns.Add(), VbError);  // the new key "2" is taken
}

TEST(JobItemFilterTest, OperatorAndQuotedValue) {
  CJobItemFilter filter;
  filter.FieldType = 202;
  filter.FilterType = jftLike;
  filter.Value = "abc";
  EXPECT_EQ(filter.GetFilter(), " LIKE '%abc%'");
  filter.FilterType = jftEqual;
  filter.Value = "'abc'";
  EXPECT_EQ(filter.GetFilter(), " = 'abc'");
  filter.Value = "O'Neil";
  EXPECT_EQ(filter.GetFilter(), " = 'O'Neil'");
  filter.FieldType = 3;
  filter.FilterType = jftLike;
  filter.Value = "12";
  EXPECT_EQ(filter.GetFilter(), " LIKE %12%");
  filter.FieldType = 7;
  filter.FilterType = jftGreater;
  filter.Value = "#2002-12-31#";
  EXPECT_EQ(filter.GetFilter(), " > #2002-12-31#");
  filter.FilterType = jftNone;
  EXPECT_EQ(filter.GetFilter(), "");
}

}  // namespace
}  // namespace ketrova
