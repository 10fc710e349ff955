// The back-ends the record-access tests run on, and a fixture that opens a
// connection to one of them. SQLite is a file in a fresh temporary folder;
// PostgreSQL and MariaDB are the DSNs ketrova_pg and ketrova_maria that
// scripts/test-servers.sh writes (their tests skip when it has not run).
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "platform/ado/connection.h"
#include "platform/ado/recordset.h"

namespace ketrova::ado::testing {

struct Backend {
  std::string dialect;  // "sqlite", "postgresql", "mysql"
  std::string envFlag;  // set when the server runs; empty for SQLite
};

inline void PrintTo(const Backend& b, std::ostream* os) {
  *os << b.dialect;
}

std::vector<Backend> TestBackends();
std::string BackendName(const ::testing::TestParamInfo<Backend>& info);

class BackendTest : public ::testing::TestWithParam<Backend> {
 protected:
  void SetUp() override;
  void TearDown() override;

  // A connection string for the back-end (the test's own database).
  std::string ConnectionString() const;
  // The server's data source with its default database.
  std::string ServerString() const;
  // Runs statements, ignoring failures (for DROP ... IF EXISTS of leftovers).
  void ExecQuietly(const std::string& sql);
  void DropTable(const std::string& name);
  // The first column of the first row of a query.
  Variant Scalar(const std::string& sql);

  const std::string& Dialect() const { return GetParam().dialect; }

  ConnectionPtr db;
  std::filesystem::path folder;  // SQLite
  std::string database;          // servers
};

}  // namespace ketrova::ado::testing
