#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "support/dates.h"
#include "support/files.h"
#include "support/ole_date.h"
#include "support/regional_guard.h"

namespace ketrova {
namespace {

namespace fs = std::filesystem;

class DatesTest : public ::testing::Test {
 protected:
  void Use(const RegionalSettings& settings) {
    SetRegional(settings);
    ResetRegionalFormats();
  }
  void TearDown() override { ResetRegionalFormats(); }
  RegionalGuard guard_{GermanRegional()};
  Variant day_ = Variant::FromDate(DateSerial(2002, 12, 31) + TimeSerial(8, 0, 0));
};

TEST_F(DatesTest, GermanSettings) {
  Use(GermanRegional());
  const RegionalFormats& f = GetRegionalFormats();
  EXPECT_EQ(f.dateFormat, "dd.mm.yyyy");
  EXPECT_EQ(f.dateSeparator, ".");
  EXPECT_EQ(f.thousandSeparator, ".");
  EXPECT_EQ(f.decimalSeparator, ",");
  EXPECT_EQ(IsDecimalPoint(), 0);
  EXPECT_EQ(DateToLocalText(day_), "31.12.2002");
  EXPECT_EQ(DateToGermanText(day_), "31.12.2002");
  EXPECT_EQ(DateToLocalText(Variant("1.2.2003")), "01.02.2003");
  EXPECT_EQ(DateToLocalText(Variant("")), "");
}

TEST_F(DatesTest, UsSettings) {
  Use(UsRegional());
  const RegionalFormats& f = GetRegionalFormats();
  EXPECT_EQ(f.dateFormat, "mm/dd/yyyy");
  EXPECT_EQ(f.thousandSeparator, ",");
  EXPECT_EQ(f.decimalSeparator, ".");
  EXPECT_EQ(IsDecimalPoint(), 1);
  EXPECT_EQ(DateToLocalText(day_), "12/31/2002");
  EXPECT_EQ(DateToGermanText(day_), "31.12.2002");
  // A German date text is read as day.month.year under these settings too.
  EXPECT_EQ(DateToLocalText(Variant("05.04.2002")), "04/05/2002");
}

TEST_F(DatesTest, GivenFormatAndOnlyOnce) {
  Use(GermanRegional());
  InitRegionalFormats("mm-dd-yyyy");
  EXPECT_EQ(GetRegionalFormats().dateFormat, "mm-dd-yyyy");
  EXPECT_EQ(DateToLocalText(day_), "12-31-2002");
  EXPECT_EQ(DateToGermanText(day_), "31.12.2002");
  InitRegionalFormats("dd/mm/yyyy");  // already filled: no change
  EXPECT_EQ(GetRegionalFormats().dateFormat, "mm-dd-yyyy");
  ResetRegionalFormats();
  InitRegionalFormats("yyyy-mm-dd");  // a year first is not handled
  EXPECT_EQ(DateToGermanText(day_), "");
}

class FilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("ketrova_files_" + std::to_string(getpid()));
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }
  std::string Path(const std::string& name) const { return (dir_ / name).string(); }
  fs::path dir_;
};

TEST_F(FilesTest, NamesAndExtensions) {
  EXPECT_EQ(FileName("abc"), "abc");
  EXPECT_EQ(FileName("C:\\x\\y.cpf"), "y.cpf");
  EXPECT_EQ(FileName("/home/u/y.cpf"), "y.cpf");
  EXPECT_EQ(FilePath("abc"), "");
  EXPECT_EQ(FilePath("C:\\x\\y.cpf"), "C:\\x");
  EXPECT_EQ(FileExtension("a.b.c"), "B.C");
  EXPECT_EQ(FileExtension("abc"), "");
  EXPECT_EQ(ChangeFileExtension("abc", "x"), "");
  EXPECT_EQ(ChangeFileExtension("proj.v1.cpf", ".LOG"), "proj.LOG");
  EXPECT_EQ(AddBackslash(""), "");
  EXPECT_EQ(AddBackslash("C:\\"), "C:\\");
  EXPECT_EQ(AddBackslash("/tmp"), "/tmp/");
  EXPECT_TRUE(IsPlainName("a*.txt"));
  EXPECT_FALSE(IsPlainName("*.txt"));
  EXPECT_FALSE(IsPlainName(""));
}

TEST_F(FilesTest, WriteReadDelete) {
  std::string file = Path("a.txt");
  EXPECT_FALSE(FileExists(file));
  EXPECT_EQ(ReadTextFile(file), "");
  EXPECT_EQ(WriteTextFile(file, "Zeile 1\r\nÄrger\r\n"), "");
  EXPECT_EQ(WriteTextFile(file, "neu"), "");  // written anew
  EXPECT_EQ(ReadTextFile(file), "neu");
  EXPECT_TRUE(FileExists(file));
  EXPECT_FALSE(FolderExists(file));
  EXPECT_EQ(FileDelete(file), "");
  EXPECT_FALSE(FileExists(file));
  EXPECT_EQ(FileDelete("C:\\nix.txt"), "File not found :C:\\\\nix.txt");
  EXPECT_TRUE(DeleteFileWait(file));
  EXPECT_NE(WriteTextFile(Path("no/such/dir.txt"), "x"), "");
}

TEST_F(FilesTest, Folders) {
  std::string sub = Path("x\\y");  // backslashes are separators too
  EXPECT_FALSE(FolderExists(sub));
  EXPECT_EQ(GetFolder(sub), sub + "/");
  EXPECT_TRUE(FolderExists(Path("x/y")));
  EXPECT_TRUE(FolderCreate(sub));
  EXPECT_FALSE(FolderCreate(""));
}

}  // namespace
}  // namespace ketrova
