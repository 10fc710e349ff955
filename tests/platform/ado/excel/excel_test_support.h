// A folder of its own per test, workbooks written there by independent
// writers (openpyxl, or Python's zipfile for parts openpyxl cannot write),
// and the Excel provider opened on them through record access.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/connection.h"
#include "platform/ado/fields.h"
#include "platform/ado/providers/excel/excel_provider.h"
#include "platform/ado/recordset.h"
#include "platform/ado/text/temp_folder.h"

namespace ketrova::testing {

class ExcelTest : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    excel::RegisterExcelProvider();
  }

  // Runs a Python script in the folder; its standard output is the result.
  std::string Python(const std::string& script) {
    Write("script.py", script);
    std::string command =
        "cd '" + folder_.string() + "' && /usr/bin/python3 script.py > script.out 2> script.err";
    int status = std::system(command.c_str());
    EXPECT_EQ(status, 0) << Read("script.err");
    return Read("script.out");
  }

  static std::string ConnectionString(const std::filesystem::path& file) {
    return "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + file.string() +
           ";Extended Properties=\"Excel 8.0;\";";
  }

  std::shared_ptr<ado::Connection> Open(const std::string& name) {
    auto db = std::make_shared<ado::Connection>();
    db->Open(ConnectionString(Path(name)));
    return db;
  }

  // Each row as "Type:text|..." with NULL for Null.
  static std::vector<std::string> Rows(ado::Recordset& rs) {
    std::vector<std::string> rows;
    for (; !rs.Eof(); rs.MoveNext()) {
      std::string row;
      for (std::int32_t i = 0; i < rs.GetFields().Count(); ++i) {
        Variant v = rs.GetFields().Item(i).Value();
        row +=
            (i ? "|" : "") + (v.IsNull() ? std::string("NULL") : v.TypeName() + ":" + v.ToText());
      }
      rows.push_back(row);
    }
    return rows;
  }

  std::vector<std::string> Select(ado::Connection& db, const std::string& table) {
    auto rs = db.Execute(" SELECT *  FROM [" + table + "]");
    return Rows(*rs);
  }
};

}  // namespace ketrova::testing
