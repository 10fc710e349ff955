#include "engine_fixture.h"

#include <cstdlib>
#include <fstream>
#include <random>
#include <regex>
#include <sstream>

#include "core/logs.h"
#include "jobs/job_item.h"
#include "jobs/jobs.h"
#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"
#include "stores/database.h"
#include "stores/field_types.h"
#include "support/utf8.h"

namespace ketrova::testing {

namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// The port of the MariaDB test server, from the data source the server
// script wrote.
std::string MariaPort() {
  const char* ini = std::getenv("ODBCINI");
  std::istringstream lines(ini ? ReadFile(ini) : std::string());
  bool inMaria = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("[")) inMaria = line == "[ketrova_maria]";
    if (inMaria && line.starts_with("Port=")) return line.substr(5);
  }
  return "3306";
}

void AddColumn(CJobItem& side, const std::string& name, std::int32_t type, bool target) {
  CJobItemColumn& c = side.Columns().Add();
  c.Quote = GetFieldDefault(type, c.DefaultValue);
  c.Name = name;
  c.DisplayName = name;
  c.Visible = true;
  c.FieldType = type;
  if (target) {
    c.SourceColumn = name;
    c.TargetColumn = name;
  }
}

}  // namespace

std::string CopyScript() {
  return "Function txConvertMain()\r\n"
         "\tDestination.Fields(\"Nr\") = Source.Fields(\"Nr\")\r\n"
         "\tDestination.Fields(\"Name\") = Source.Fields(\"Name\")\r\n"
         "\tDestination.Fields(\"Betrag\") = Source.Fields(\"Betrag\")\r\n"
         "End Function\r\n";
}

void EngineTest::SetUp() {
  BackendTest::SetUp();
  if (IsSkipped()) return;
  std::random_device rd;
  work = std::filesystem::temp_directory_path() / ("ketrova-engine-" + std::to_string(rd()));
  std::filesystem::create_directories(work);
  screen = std::make_shared<ui::ScriptedUserInterface>();
  ui::SetCurrent(screen);

  project = std::make_unique<CConverter>();
  project->FileName = (work / "projekt.cpf").string();
  project->CheckMainScriptOnStart();
  project->CheckMainScriptOnEnd();
  CDatabase& dest = project->DestDataBase();
  dest.DatabaseType = dbtODBC;
  if (Dialect() == "sqlite") {
    dest.DriverName = "SQLite3";
    dest.DatabaseName = (folder / "test.db").string();
  } else if (Dialect() == "postgresql") {
    dest.DataSourceName = "ketrova_pg";
    dest.DatabaseName = database;
  } else {
    // A MySQL store, so that records go by generated statements.
    dest.DatabaseType = dbtMySQL;
    dest.ServerName = "127.0.0.1";
    dest.PortAdress = MariaPort();
    dest.UserName = "ketrova";
    dest.Password = "ketrova";
    dest.DatabaseName = database;
  }
}

void EngineTest::TearDown() {
  engine.reset();
  project.reset();
  ui::SetCurrent(nullptr);
  if (!work.empty()) std::filesystem::remove_all(work);
  BackendTest::TearDown();
}

void EngineTest::SourceSQLite(const std::vector<std::string>& statements) {
  const std::string file = (work / "quelle.db").string();
  auto connection = std::make_shared<ado::Connection>();
  connection->Open("Driver={SQLite3};Database=" + file);
  for (const std::string& sql : statements) connection->Execute(sql);
  connection->Close();
  CDatabase& source = project->SourceDataBase();
  source.DatabaseType = dbtODBC;
  source.DriverName = "SQLite3";
  source.DatabaseName = file;
}

void EngineTest::SourceCsv(const std::string& fileName, const std::string& content) {
  std::filesystem::create_directories(work / "csv");
  std::ofstream(work / "csv" / fileName, std::ios::binary) << content;
  CDatabase& source = project->SourceDataBase();
  source.DatabaseType = dbtText;
  source.DatabaseFileName = (work / "csv").string() + "/";
}

void EngineTest::SourceNumbers(const std::string& name, int count) {
  std::vector<std::string> sql = {"CREATE TABLE " + name +
                                  " (Nr INTEGER PRIMARY KEY, Name TEXT, Betrag REAL)"};
  for (int i = 1; i <= count; ++i) {
    sql.push_back("INSERT INTO " + name + " VALUES (" + std::to_string(i) + ", 'Name " +
                  std::to_string(i) + "', " + std::to_string(i) + ".5)");
  }
  SourceSQLite(sql);
}

CJob& EngineTest::AddJob(const std::string& caption, const std::string& sourceTable,
                         const std::string& destTable, const std::string& script) {
  CJob& job = project->Jobs().Add();
  job.Caption = caption;
  job.ObjectName = sourceTable;
  job.Enabled = true;
  job.ScriptUserDefined = true;
  job.Script = script;
  CJobItem& source = job.JobSource();
  source.ItemObjectName = sourceTable;
  source.Name = sourceTable;
  source.JobType = project->SourceDataBase().DatabaseType == dbtText ? jitText : jitTableView;
  source.KeyField = "Nr";
  CJobItem& dest = job.JobDest();
  dest.ItemObjectName = destTable;
  dest.Name = destTable;
  dest.JobType = jitTableView;
  dest.KeyField = "Nr";
  AddColumn(source, "Nr", 3, false);
  AddColumn(source, "Name", 202, false);
  AddColumn(source, "Betrag", 5, false);
  AddColumn(dest, "Nr", 3, true);
  AddColumn(dest, "Name", 202, true);
  AddColumn(dest, "Betrag", 5, true);
  return job;
}

std::string EngineTest::Run(std::int32_t firstRecord) {
  engine = std::make_unique<CEngine>();
  engine->Converter = project.get();
  engine->FirstRecord = firstRecord;
  std::string none;
  result = engine->Execute(none);
  return result;
}

std::string EngineTest::Log() const {
  std::string text = ReadFile(engine->LogfileName());
  text = std::regex_replace(text, std::regex("(Start ->|End ->)[0-9:]+"), "$1<TIME>");
  text = ReplaceAll(text, work.string(), "<WORK>");
  if (!folder.empty()) text = ReplaceAll(text, folder.string(), "<DEST>");
  return text;
}

void EngineTest::ExpectLog(const std::string& name) const {
  if (Dialect() != "sqlite") return;
  const std::filesystem::path expected =
      std::filesystem::path(KETROVA_TEST_DATA) / "engine" / (name + ".log");
  if (std::getenv("KETROVA_UPDATE_EXPECTED")) {
    std::ofstream(expected, std::ios::binary) << Log();
    return;
  }
  EXPECT_EQ(Log(), ReadFile(expected)) << "log differs from " << expected;
}

std::vector<std::string> EngineTest::Rows(const std::string& sql) {
  std::vector<std::string> rows;
  ado::RecordsetPtr rs = db->Execute(sql);
  for (; !rs->Eof(); rs->MoveNext()) {
    std::string row;
    for (std::int32_t i = 0; i < rs->GetFields().Count(); ++i) {
      if (i > 0) row += "|";
      row += rs->GetFields().Item(i).Value().ToText();
    }
    rows.push_back(row);
  }
  return rows;
}

std::string EngineTest::Messages() const {
  std::string all;
  for (const CLog& log : project->Logs()) all += log.Message + "\n";
  return all;
}

}  // namespace ketrova::testing
