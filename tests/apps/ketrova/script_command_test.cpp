// ketrova script: a module tried out on its own, and the listing of its
// compiled code.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "run_ketrova.h"

namespace ketrova::testing {
namespace {

namespace fs = std::filesystem;

class ScriptCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder =
        fs::temp_directory_path() /
        ("ketrova-script-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
         "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(folder);
    fs::create_directories(folder);
  }
  void TearDown() override { fs::remove_all(folder); }

  void Write(const std::string& name, const std::string& text) {
    std::ofstream(folder / name, std::ios::binary) << text;
  }

  fs::path folder;
};

TEST_F(ScriptCommandTest, RunsAProcedureAndListsWhereEachNameWasBound) {
  Write("modul.vbs",
        "Dim total\r\n"
        "Function Add(a, b)\r\n"
        "  Add = a + b + total\r\n"
        "End Function\r\n"
        "total = Len(\"xy\")\r\n");
  KetrovaOutcome run = RunKetrova(folder, "script modul.vbs --run Add 3 4");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "9\n");

  KetrovaOutcome dump = RunKetrova(folder, "script modul.vbs --dump");
  EXPECT_EQ(dump.status, 0) << dump.err;
  EXPECT_NE(dump.out.find("Text 1"), std::string::npos) << dump.out;
  EXPECT_NE(dump.out.find("Function Add, 2 parameters, slots: 0=a 1=b 2=add"), std::string::npos)
      << dump.out;
  EXPECT_NE(dump.out.find("target: total -> global"), std::string::npos) << dump.out;
  EXPECT_NE(dump.out.find("value: Len -> builtin Len with 1 arguments"), std::string::npos)
      << dump.out;
  EXPECT_NE(dump.out.find("of: a -> local 0"), std::string::npos) << dump.out;
}

TEST_F(ScriptCommandTest, ARunTimeErrorStillListsWhatCompiled) {
  Write("fehler.vbs", "Dim x\r\nx = 1 / 0\r\n");
  KetrovaOutcome dump = RunKetrova(folder, "script fehler.vbs --dump");
  EXPECT_EQ(dump.status, 1);
  EXPECT_NE(dump.err.find("Fehler Nr.: 11"), std::string::npos) << dump.err;
  EXPECT_NE(dump.out.find("2:1 Let"), std::string::npos) << dump.out;
}

// A module's own connections reach the file stores although no store of the
// process was opened before: a text folder and an Access file.
TEST_F(ScriptCommandTest, AModulesOwnConnectionsOpenFileStores) {
  Write("zahlen.csv", "Nr,Name\r\n1,eins\r\n2,zwei\r\n");
  Write("schema.ini", "[zahlen.csv]\r\nColNameHeader=True\r\nFormat=CSVDelimited\r\n");
  Write("lesen.vbs",
        "Function Texte(ordner)\r\n"
        "  Set c = CreateObject(\"ADODB.Connection\")\r\n"
        "  c.Open \"Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=\" & ordner\r\n"
        "  Set r = c.Execute(\"SELECT [Name] FROM [zahlen.csv] ORDER BY [Nr]\")\r\n"
        "  Do Until r.EOF\r\n"
        "    Texte = Texte & r.Fields(\"Name\") & \" \"\r\n"
        "    r.MoveNext\r\n"
        "  Loop\r\n"
        "End Function\r\n"
        "Function Kunden(datei)\r\n"
        "  Set r = CreateObject(\"ADODB.Recordset\")\r\n"
        "  r.Open \"SELECT * FROM [Customers]\", \"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=\" "
        "& datei\r\n"
        "  Do Until r.EOF\r\n"
        "    Kunden = Kunden + 1\r\n"
        "    r.MoveNext\r\n"
        "  Loop\r\n"
        "End Function\r\n");
  KetrovaOutcome text = RunKetrova(folder, "script lesen.vbs --run Texte " + folder.string());
  EXPECT_EQ(text.status, 0) << text.err;
  EXPECT_EQ(text.out, "eins zwei \n");

  const fs::path nwind = fs::path(KETROVA_ACCESS_TESTDATA) / "nwind.mdb";
  if (!fs::exists(nwind)) GTEST_SKIP() << nwind << " fehlt";
  KetrovaOutcome access = RunKetrova(folder, "script lesen.vbs --run Kunden " + nwind.string());
  EXPECT_EQ(access.status, 0) << access.err;
  EXPECT_EQ(access.out, "91\n");  // mdb-count nwind.mdb Customers
}

}  // namespace
}  // namespace ketrova::testing
