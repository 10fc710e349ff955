// A folder of CSV files converts into a folder of new dBase tables as a user
// does it (`ketrova new --source text --dest paradox`, then `ketrova run`),
// and python3-dbf reads the tables the run wrote.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "platform/ado/command_output.h"
#include "platform/ado/text/temp_folder.h"
#include "run_ketrova.h"

namespace ketrova {
namespace {

class DbaseConversionTest : public testing::TempFolderTest {
 protected:
  std::string Python(const std::string& script) {
    Write("lesen.py", script);
    std::string command = "cd '" + folder_.string() + "' && /usr/bin/python3 lesen.py 2>&1";
    int status = -1;
    std::string out = testing::CommandOutput(command, &status);
    EXPECT_EQ(status, 0) << out;
    return out;
  }
};

TEST_F(DbaseConversionTest, CsvFolderBecomesDbaseTables) {
  std::filesystem::create_directory(Path("csv"));
  std::filesystem::create_directory(Path("dbase"));
  Write("csv/orte.csv",
        "Nr;Ort;Seit\r\n"
        "1;München;12.03.1961\r\n"
        "2;Köln;01.07.1975\r\n");
  auto made = testing::RunKetrova(folder_,
                                  "new p.cpf --name Orte --source text --source-file csv "
                                  "--dest paradox --dest-file dbase");
  ASSERT_EQ(made.status, 0) << made.out << made.err;
  auto run = testing::RunKetrova(folder_, "run p.cpf --yes");
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  // Every column of a new table on a file store is text; the "." of the
  // table's name becomes "_" in the file's.
  EXPECT_EQ(Python(R"(
import dbf, os
name = [f for f in os.listdir('dbase') if f.lower().endswith('.dbf')][0]
t = dbf.Table(os.path.join('dbase', name))
t.open()
print(name, t.field_names)
for r in t:
    print('|'.join(str(v).strip() for v in r))
t.close()
)"),
            "orte_csv.dbf ['nr', 'ort', 'seit']\n1|München|12.03.1961\n2|Köln|01.07.1975\n");
}

}  // namespace
}  // namespace ketrova
