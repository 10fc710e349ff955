// A project with one job whose stores are given a type without being opened:
// the type and the parameters its connection string needs, and the brackets an
// open would set. Statement and script tests build their sides on it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "core/converter.h"
#include "jobs/job.h"
#include "jobs/jobs.h"
#include "stores/database.h"
#include "stores/field_types.h"

namespace ketrova::testing {

// Sets `database` to a store of `type`; file stores live in `file`.
inline void UseStore(CDatabase& database, std::int32_t type, const std::string& file = "/data") {
  database.Clear();
  database.DatabaseType = type;
  switch (type) {
    case dbtAccess:
      database.DatabaseFileName = file + "/shop.mdb";
      break;
    case dbtSQLServer:
    case dbtMySQL:
      database.ServerName = "db1";
      database.DatabaseName = "shop";
      break;
    case dbtExcel:
      database.DatabaseFileName = file + "/shop.xlsx";
      break;
    case dbtParadox:
      // The native type follows the file's extension.
      database.DatabaseFileName = file + "/shop.db";
      break;
    case dbtText:
      database.DatabaseFileName = file;
      break;
    case dbtODBC:
      database.DataSourceName = "shop";
      break;
    default:
      break;
  }
  database.SetColBrackets();
}

class JobTest : public ::testing::Test {
 protected:
  void SetUp() override {
    project_.SourceDataBase().DatabaseDirection = dbdSource;
    project_.DestDataBase().DatabaseDirection = dbdTarget;
    job_ = &project_.Jobs().Add();
  }
  void TearDown() override {
    std::error_code ec;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ec);
  }

  // A folder of the test's own for its files, removed afterwards.
  const std::filesystem::path& Folder() {
    if (folder_.empty()) {
      std::string pattern =
          (std::filesystem::temp_directory_path() / "ketrova-jobs-XXXXXX").string();
      if (::mkdtemp(pattern.data())) folder_ = pattern;
    }
    return folder_;
  }

  CJob& job() { return *job_; }
  CJobItem& source() { return job_->JobSource(); }
  CJobItem& dest() { return job_->JobDest(); }

  // A column as ReloadColumns makes it: the quote follows the type.
  static CJobItemColumn& AddColumn(CJobItem& side, const std::string& name, std::int32_t type,
                                   const std::string& sourceColumn = {}) {
    CJobItemColumn& column = side.Columns().Add();
    column.Name = name;
    column.DisplayName = name;
    column.TargetColumn = name;
    column.SourceColumn = sourceColumn.empty() && side.Direction == jidSource ? name : sourceColumn;
    column.FieldType = type;
    Variant unused;
    column.Quote = GetFieldDefault(type, unused);
    return column;
  }

  CConverter project_;
  CJob* job_ = nullptr;
  std::filesystem::path folder_;
};

}  // namespace ketrova::testing
