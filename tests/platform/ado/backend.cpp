#include "backend.h"

#include <cstdlib>
#include <random>
#include <sstream>

#include "support/vb_error.h"

namespace ketrova::ado::testing {

std::vector<Backend> TestBackends() {
  std::vector<Backend> all;
  std::stringstream list(KETROVA_ADO_BACKENDS);
  std::string name;
  while (std::getline(list, name, ',')) {
    if (name == "sqlite") all.push_back({"sqlite", ""});
    if (name == "postgresql") all.push_back({"postgresql", "KETROVA_TEST_PG"});
    if (name == "mysql") all.push_back({"mysql", "KETROVA_TEST_MARIA"});
  }
  return all;
}

std::string BackendName(const ::testing::TestParamInfo<Backend>& info) {
  return info.param.dialect;
}

void BackendTest::SetUp() {
  const Backend& b = GetParam();
  if (!b.envFlag.empty() && !std::getenv(b.envFlag.c_str()))
    GTEST_SKIP() << b.envFlag << " is not set: no " << b.dialect << " server";
  std::random_device rd;
  std::string unique = std::to_string(rd()) + std::to_string(rd());
  if (b.dialect == "sqlite") {
    folder = std::filesystem::temp_directory_path() / ("ketrova-ado-" + unique);
    std::filesystem::create_directories(folder);
  } else {
    // Test cases run in parallel processes: each gets a database of its own.
    database = "ketrova_t" + unique;
    auto server = std::make_shared<Connection>();
    server->Open(ServerString());
    server->Execute("CREATE DATABASE " + database);
  }
  db = std::make_shared<Connection>();
  db->Open(ConnectionString());
}

void BackendTest::TearDown() {
  if (db) db->Close();
  db.reset();
  if (!folder.empty()) std::filesystem::remove_all(folder);
  if (!database.empty()) {
    try {
      auto server = std::make_shared<Connection>();
      server->Open(ServerString());
      server->Execute("DROP DATABASE " + database);
    } catch (const VbError&) {
    }
  }
}

std::string BackendTest::ServerString() const {
  if (GetParam().dialect == "postgresql")
    return "Provider=MSDASQL.1;Data Source=ketrova_pg;Persist Security Info=False";
  return "Provider=MSDASQL.1;Data Source=ketrova_maria;Persist Security Info=False";
}

std::string BackendTest::ConnectionString() const {
  if (GetParam().dialect == "sqlite")
    return "Driver={SQLite3};Database=" + (folder / "test.db").string();
  return ServerString() + ";Database=" + database;
}

void BackendTest::ExecQuietly(const std::string& sql) {
  try {
    db->Execute(sql);
  } catch (const VbError&) {
  }
}

void BackendTest::DropTable(const std::string& name) {
  ExecQuietly("DROP VIEW IF EXISTS [" + name + "]");
  ExecQuietly("DROP TABLE IF EXISTS [" + name + "]");
}

Variant BackendTest::Scalar(const std::string& sql) {
  auto rs = db->Execute(sql);
  return rs->GetFields().Item(0).Value();
}

}  // namespace ketrova::ado::testing
