// A folder of CSV files converts into a folder of new Paradox tables as a
// user does it (`ketrova new --source text --dest paradox`, then `ketrova
// run`), and pxlib (through the tests' px_tool) reads the tables the run wrote.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "platform/ado/command_output.h"
#include "platform/ado/text/temp_folder.h"
#include "run_ketrova.h"

namespace ketrova {
namespace {

using ParadoxConversionTest = testing::TempFolderTest;

TEST_F(ParadoxConversionTest, CsvFolderBecomesParadoxTables) {
  std::filesystem::create_directory(Path("csv"));
  std::filesystem::create_directory(Path("paradox"));
  Write("csv/orte.csv",
        "Nr;Ort;Seit\r\n"
        "1;München;12.03.1961\r\n"
        "2;Köln;01.07.1975\r\n");
  auto made = testing::RunKetrova(folder_,
                                  "new p.cpf --name Orte --source text --source-file csv "
                                  "--dest paradox --dest-file paradox");
  ASSERT_EQ(made.status, 0) << made.out << made.err;
  auto run = testing::RunKetrova(folder_, "run p.cpf --yes");
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  // Every column of a new table on a file store is text; the "." of the
  // table's name becomes "_" in the file's.
  int status = -1;
  std::string out = testing::CommandOutput(
      std::string(KETROVA_PX_TOOL) + " dump '" + Path("paradox/orte_csv.db").string() + "' 2>&1",
      &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(out, "records 2, fields 3, blocks 1\n1|München|12.03.1961\n2|Köln|01.07.1975\n");
}

}  // namespace
}  // namespace ketrova
