// The test fixture of the xBase provider's tests: a temporary folder as the
// store, opened as Paradox or dBase, and an independent tool run in it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/ado/command_output.h"
#include "platform/ado/connection.h"
#include "platform/ado/fields.h"
#include "platform/ado/providers/xbase/xbase_provider.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"

namespace ketrova::xbase_provider {

using ado::Connection;

class XbaseFolderTest : public testing::TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    RegisterXbaseProvider();
  }

  // Runs a command in the test's folder; answers what it printed (stderr
  // too) and fails the test when it fails.
  std::string Run(const std::string& command) {
    int status = -1;
    std::string out =
        testing::CommandOutput("cd '" + folder_.string() + "' && " + command + " 2>&1", &status);
    EXPECT_EQ(status, 0) << out;
    return out;
  }

  // The folder as a store; `kind` is the connection's extended property.
  std::shared_ptr<Connection> Open(const std::string& kind = "dBase IV") {
    auto db = std::make_shared<Connection>();
    db->Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + folder_.string() +
             ";Extended Properties=" + kind + ";");
    return db;
  }

  // The rows of a statement, fields by "|", as VB's text of each value.
  static std::vector<std::string> Rows(Connection& db, const std::string& sql) {
    std::vector<std::string> rows;
    auto rs = db.Execute(sql);
    for (; !rs->Eof(); rs->MoveNext()) {
      std::string row;
      for (std::int32_t i = 0; i < rs->GetFields().Count(); ++i) {
        Variant v = rs->GetFields().Item(i).Value();
        if (i > 0) row += "|";
        row += v.IsNull() ? "Null" : v.ToText();
      }
      rows.push_back(row);
    }
    return rows;
  }
};

}  // namespace ketrova::xbase_provider
