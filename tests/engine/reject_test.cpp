// Records the destination refuses are kept in the reject file beside the log
// (read back with Python's csv module), the log stays as it was, and a job
// that fails says how far it wrote; a run can start at a later record. The
// full disk is an SQLite file on a small tmpfs the test mounts (skipped where
// it may not); the read-only file is a case of the command's tests.
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>

#include "engine_fixture.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/provider.h"
#include "stores/database.h"
#include "support/utf8.h"

namespace ketrova::testing {
namespace {

using ado::testing::BackendName;
using ado::testing::TestBackends;
using Table = std::vector<std::vector<std::string>>;

// The rows of a CSV file as Python's csv module reads it in UTF-8.
Table ReadCsv(const std::filesystem::path& file) {
  const std::string command =
      "/usr/bin/python3 -c \"import csv,sys\n"
      "for row in csv.reader(open(sys.argv[1], encoding='utf-8', newline='')):\n"
      "    print('\\x1f'.join(row).replace('\\r', '<CR>').replace('\\n', '<LF>'))\" '" +
      file.string() + "'";
  Table rows;
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  if (!pipe) return rows;
  std::string text;
  char buffer[4096];
  while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe.get())) text.append(buffer, n);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::vector<std::string> row;
    std::size_t start = 0;
    for (std::size_t end; (end = line.find('\x1f', start)) != std::string::npos; start = end + 1)
      row.push_back(line.substr(start, end - start));
    row.push_back(line.substr(start));
    rows.push_back(row);
  }
  return rows;
}

// A tmpfs of a few hundred KB, mounted for one test.
class SmallDisk {
 public:
  SmallDisk(const std::filesystem::path& where, const std::string& size) : where_(where) {
    std::filesystem::create_directories(where_);
    const std::string options = "size=" + size;
    mounted_ = ::mount("tmpfs", where_.c_str(), "tmpfs", 0, options.c_str()) == 0;
  }
  ~SmallDisk() {
    if (mounted_) ::umount2(where_.c_str(), MNT_DETACH);
  }
  bool Mounted() const { return mounted_; }

 private:
  std::filesystem::path where_;
  bool mounted_ = false;
};

class RejectTest : public EngineTest {
 protected:
  std::filesystem::path RejectPath() const { return work / "projekt-abgelehnt.csv"; }
  // The record numbers the reject file holds, after its header row.
  std::set<std::string> RejectedRecords() const {
    std::set<std::string> numbers;
    for (const auto& row : ReadCsv(RejectPath()))
      if (row.size() > 1 && row[1] != "Datensatz") numbers.insert(row[1]);
    return numbers;
  }
  // An SQLite destination on `disk`, with the table Ziel.
  void DestinationOn(const std::filesystem::path& folder, const std::string& columns) {
    const std::string file = (folder / "ziel.sqlite").string();
    auto connection = std::make_shared<ado::Connection>();
    connection->Open("Driver={SQLite3};Database=" + file);
    connection->Execute("CREATE TABLE Ziel (" + columns + ")");
    connection->Close();
    project->DestDataBase().DatabaseName = file;
  }
};

TEST_P(RejectTest, RefusedRecordsAreKeptBesideTheLogWithTheirSourceValues) {
  DropTable("Ziel");
  db->Execute(
      "CREATE TABLE [Ziel] ([Nr] INTEGER PRIMARY KEY, [Name] VARCHAR(5) NOT NULL, [Betrag] FLOAT)");
  SourceSQLite({"CREATE TABLE Quelle (Nr INTEGER PRIMARY KEY, Name TEXT, Betrag REAL)",
                "INSERT INTO Quelle VALUES (1, 'kurz', 1.5)",
                "INSERT INTO Quelle VALUES (2, NULL, 2.5)",
                "INSERT INTO Quelle VALUES (3, 'viel, zu \"lang\"', 3.5)",
                "INSERT INTO Quelle VALUES (4, 'Öl', 4.5)"});
  AddJob("Kopie", "Quelle", "Ziel", CopyScript());
  Run();

  // SQLite does not hold a text to its declared length; the servers do. The
  // MySQL store sends Null as the text 'NULL' in a quoted column.
  std::set<std::string> refused = {"2", "3"};
  if (Dialect() == "sqlite") refused = {"2"};
  if (Dialect() == "mysql") refused = {"3"};
  EXPECT_EQ(RejectedRecords(), refused);
  EXPECT_EQ(engine->Rejects().Count(), static_cast<std::int32_t>(refused.size()));
  const Table rows = ReadCsv(RejectPath());
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(rows[0],
            (std::vector<std::string>{"Aufgabe", "Datensatz", "Meldung", "Nr", "Name", "Betrag"}));
  for (const auto& row : rows) {
    ASSERT_EQ(row.size(), 6u);
    if (row[1] == "3") {
      EXPECT_EQ(row[0], "Kopie");
      EXPECT_FALSE(row[2].empty());
      EXPECT_EQ(row[4], "viel, zu \"lang\"");
      EXPECT_EQ(row[5], "3,5");
    }
  }
  EXPECT_EQ(engine->Rejects().Note(),
            std::to_string(refused.size()) +
                (refused.size() == 1 ? " Datensatz wurde" : " Datensätze wurden") +
                " vom Ziel abgelehnt und in " + RejectPath().string() + " gespeichert.");
  // The log and the event log stay as the run writes them.
  EXPECT_EQ(Log().find("abgelehnt"), std::string::npos);
  EXPECT_EQ(Messages().find("abgelehnt"), std::string::npos);
  EXPECT_EQ(Rows("SELECT COUNT(*) FROM [Ziel]"),
            (std::vector<std::string>{std::to_string(4 - refused.size())}));

  // The next run starts without the old file and makes none when nothing is refused.
  db->Execute("DELETE FROM [Ziel]");
  CJob& job = project->Jobs().Item(1);
  job.Script = ReplaceAll(job.Script, "Source.Fields(\"Name\")", "\"gut\"");
  // The MySQL store writes the source's values, whatever the script assigns.
  job.MaxRecords = 2;
  Run();
  EXPECT_EQ(engine->Rejects().Count(), 0) << ReadCsv(RejectPath()).back()[2];
  EXPECT_EQ(engine->Rejects().Note(), "");
  EXPECT_FALSE(std::filesystem::exists(RejectPath()));
}

TEST_P(RejectTest, AJobThatFailsSaysHowFarItWroteAndARunCanStartLater) {
  DropTable("Ziel");
  db->Execute("CREATE TABLE [Ziel] ([Nr] INTEGER PRIMARY KEY, [Name] VARCHAR(50), [Betrag] FLOAT)");
  SourceNumbers("Zahlen", 6);
  CJob& job = AddJob("Zahlen", "Zahlen", "Ziel", CopyScript());
  Run(4);
  EXPECT_EQ(Rows("SELECT [Nr] FROM [Ziel] ORDER BY [Nr]"),
            (std::vector<std::string>{"4", "5", "6"}));
  // The passed-over records count as the source's: the log sees all six.
  EXPECT_NE(Log().find("Datensätze -> 6 / 6\r\n"), std::string::npos);
  EXPECT_NE(Log().find("Es wurden 6 Datensätze konvertiert.\r\n"), std::string::npos);
  EXPECT_TRUE(engine->Stops().empty());
  if (Dialect() == "sqlite") return;

  // The server's connection ends at the third record, as when the server dies.
  db->Execute("DELETE FROM [Ziel]");
  const std::string kill = Dialect() == "postgresql"
                               ? "SELECT pg_terminate_backend(pg_backend_pid())"
                               : "KILL CONNECTION_ID()";
  job.Script =
      "Function txConvertMain()\r\n"
      "\tIf Source.Fields(\"Nr\") = 3 Then DestinationConnection.Execute \"" +
      kill + "\"\r\n" + CopyScript().substr(CopyScript().find('\t'));
  Run();
  // The target's statement stays prepared across records, so on PostgreSQL
  // the loss shows only at the next write, which then ends the job.
  ASSERT_EQ(engine->Stops().size(), 1u) << Log();
  EXPECT_EQ(engine->Stops()[0].caption, "Zahlen");
  EXPECT_EQ(engine->Stops()[0].written, 2);
  EXPECT_EQ(engine->Stops()[0].lastWritten, 2);
  EXPECT_EQ(Log().find("geschrieben"), std::string::npos);
}

// An SQLite file on a small file system of the test's own.
class RejectOnDiskTest : public RejectTest {
 protected:
  void SetUp() override {
    RejectTest::SetUp();
    if (IsSkipped()) return;
    if (Dialect() != "sqlite") GTEST_SKIP() << "a file system matter, tested on SQLite";
    disk = std::make_unique<SmallDisk>(work / "platte", "256k");
    if (!disk->Mounted()) GTEST_SKIP() << "kann hier kein tmpfs einhängen (kein root?)";
  }
  void TearDown() override {
    disk.reset();
    RejectTest::TearDown();
  }
  std::unique_ptr<SmallDisk> disk;
};

TEST_P(RejectOnDiskTest, AFullDiskKeepsEveryRecordItRefusedAndEveryGroupItLost) {
  const int count = 600;
  std::vector<std::string> sql = {
      "CREATE TABLE Quelle (Nr INTEGER PRIMARY KEY, Name TEXT, Betrag REAL)"};
  for (int i = 1; i <= count; ++i)
    sql.push_back("INSERT INTO Quelle VALUES (" + std::to_string(i) + ", printf('%.1000c', 'x'), " +
                  std::to_string(i) + ")");
  SourceSQLite(sql);
  AddJob("Voll", "Quelle", "Ziel", CopyScript());
  // Grouped, a write that went through may still be lost with its group when
  // the disk fills at the group's commit or takes the group with it.
  for (const bool grouped : {true, false}) {
    SCOPED_TRACE(grouped ? "grouped" : "one by one");
    engine.reset();  // lets go of the last run's file, whose space the next one needs
    for (const auto& file : std::filesystem::directory_iterator(work / "platte"))
      std::filesystem::remove(file.path());
    DestinationOn(work / "platte", "Nr INTEGER PRIMARY KEY, Name TEXT, Betrag FLOAT");
    ado::SetGroupedCommits(grouped);
    Run();
    ado::SetGroupedCommits(true);
    // Every source record is in the target or in the reject file, never both.
    std::set<std::string> arrived;
    {
      auto connection = std::make_shared<ado::Connection>();
      connection->Open("Driver={SQLite3};Database=" + project->DestDataBase().DatabaseName);
      for (auto rs = connection->Execute("SELECT Nr FROM Ziel"); !rs->Eof(); rs->MoveNext())
        arrived.insert(rs->GetFields().Item(0).Value().ToText());
      connection->Close();
    }
    const std::set<std::string> refused = RejectedRecords();
    EXPECT_FALSE(refused.empty()) << Log();
    EXPECT_EQ(arrived.size() + refused.size(), static_cast<std::size_t>(count));
    for (const std::string& record : refused) EXPECT_EQ(arrived.count(record), 0u) << record;
    EXPECT_EQ(engine->Rejects().Count(), static_cast<std::int32_t>(refused.size()));
    EXPECT_EQ(ReadCsv(RejectPath()).size(), refused.size() + 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Backends, RejectOnDiskTest, ::testing::ValuesIn(TestBackends()),
                         BackendName);

INSTANTIATE_TEST_SUITE_P(Backends, RejectTest, ::testing::ValuesIn(TestBackends()), BackendName);

}  // namespace
}  // namespace ketrova::testing
