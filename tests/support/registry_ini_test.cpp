#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "support/files.h"
#include "support/ini_file.h"
#include "support/registry.h"

namespace ketrova {
namespace {

namespace fs = std::filesystem;

// Points HOME, XDG_CONFIG_HOME, ODBCINI and ODBCSYSINI at a fresh folder.
class ConfigFolderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("ketrova_reg_" + std::to_string(getpid()));
    fs::remove_all(dir_);
    fs::create_directories(dir_ / "home");
    Set("HOME", (dir_ / "home").string());
    Set("XDG_CONFIG_HOME", (dir_ / "config").string());
    Set("ODBCINI", (dir_ / "etc" / "odbc.ini").string());
    Set("ODBCSYSINI", (dir_ / "etc").string());
  }
  void TearDown() override {
    for (auto& [name, value] : saved_) {
      if (value)
        setenv(name.c_str(), value->c_str(), 1);
      else
        unsetenv(name.c_str());
    }
    fs::remove_all(dir_);
  }
  void Set(const std::string& name, const std::string& value) {
    const char* old = getenv(name.c_str());
    saved_[name] = old ? std::optional<std::string>(old) : std::nullopt;
    setenv(name.c_str(), value.c_str(), 1);
  }
  void Write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
  }
  fs::path dir_;
  std::map<std::string, std::optional<std::string>> saved_;
  CRegistry registry_;
};

TEST_F(ConfigFolderTest, WrittenValueIsReadBack) {
  const char* key = "Software\\Halvorn\\Ketrova";
  EXPECT_EQ(registry_.GetRegSetting("DirWorking", 0, HKEY_CURRENT_USER, key, "fehlt"), "fehlt");
  registry_.WriteRegistry(HKEY_CURRENT_USER, key, "DirWorking", REG_SZ, " /opt/ketrova ");
  EXPECT_EQ(registry_.GetRegSetting("DirWorking", 0, HKEY_CURRENT_USER, key), "/opt/ketrova");
  EXPECT_EQ(registry_.GetRegSetting("dirworking", 0, HKEY_CURRENT_USER, "software/halvorn/ketrova"),
            "/opt/ketrova");
  EXPECT_EQ(ReadTextFile((dir_ / "config" / "ketrova" / "registry.ini").string()),
            "[Software\\Halvorn\\Ketrova]\nDirWorking= /opt/ketrova \n");

  registry_.WriteRegistry(HKEY_CURRENT_USER, key, "Count", REG_DWORD, "42");
  EXPECT_EQ(registry_.GetRegSetting("Count", 0, HKEY_CURRENT_USER, key), "42");
  EXPECT_EQ(registry_.SetRegSetting("Count", "7", REG_DWORD, 0, HKEY_CURRENT_USER, key), 0);
  EXPECT_EQ(registry_.GetRegSetting("Count", 0, HKEY_CURRENT_USER, key), "7");
  // SetRegSetting does not create a key.
  EXPECT_EQ(registry_.SetRegSetting("x", "1", REG_SZ, 0, HKEY_CURRENT_USER, "Software\\Neu"),
            ERROR_FILE_NOT_FOUND);

  RegKeyHandle handle = registry_.OpenRegKey(HKEY_CURRENT_USER, key);
  ASSERT_NE(handle, 0);
  EXPECT_EQ(registry_.GetRegSetting("Count", handle), "7");
  registry_.CloseRegKey(handle);
  EXPECT_EQ(registry_.OpenRegKey(HKEY_CURRENT_USER, "Software\\Fehlt"), 0);

  EXPECT_EQ(registry_.DeleteSubkey(HKEY_CURRENT_USER, "Software\\Halvorn"),
            ERROR_ACCESS_DENIED);  // it has a subkey
  EXPECT_EQ(registry_.DeleteValue(HKEY_CURRENT_USER, key, "Count"), 0);
  EXPECT_EQ(registry_.GetRegSetting("Count", 0, HKEY_CURRENT_USER, key, "-"), "-");
  EXPECT_EQ(registry_.DeleteSubkey(HKEY_CURRENT_USER, key), 0);
  EXPECT_EQ(registry_.OpenRegKey(HKEY_CURRENT_USER, key), 0);

  std::string longValue(300, 'x');  // beyond the old 256-byte buffer
  registry_.WriteRegistry(HKEY_CURRENT_USER, key, "Long", REG_SZ, longValue);
  EXPECT_EQ(registry_.GetRegSetting("Long", 0, HKEY_CURRENT_USER, key, "d"), "d");
}

TEST_F(ConfigFolderTest, OdbcKeysReadUnixOdbcFiles) {
  Write(dir_ / "home" / ".odbc.ini",
        "[Lager]\nDriver = SQLite3\nDatabase = /data/lager.db\nDefaultDir=\"/data\"\n");
  Write(dir_ / "etc" / "odbc.ini",
        "[ODBC Data Sources]\nFirma = PostgreSQL Unicode\n\n"
        "[Firma]\nDriver=PostgreSQL Unicode\nServername=db1\n");
  const char* odbc = "Software\\ODBC\\ODBC.INI\\";
  EXPECT_EQ(registry_.GetRegSetting("Database", 0, HKEY_CURRENT_USER, std::string(odbc) + "Lager"),
            "/data/lager.db");
  EXPECT_EQ(
      registry_.GetRegSetting("DefaultDir", 0, HKEY_CURRENT_USER, std::string(odbc) + "Lager"),
      "/data");
  EXPECT_EQ(
      registry_.GetRegSetting("FIL", 0, HKEY_CURRENT_USER, std::string(odbc) + "Lager", "leer"),
      "leer");
  EXPECT_EQ(
      registry_.GetRegSetting("Servername", 0, HKEY_CURRENT_USER, std::string(odbc) + "Firma"), "");
  EXPECT_EQ(
      registry_.GetRegSetting("Servername", 0, HKEY_LOCAL_MACHINE, std::string(odbc) + "Firma"),
      "db1");
  std::string sources = std::string(odbc) + "ODBC Data Sources";
  EXPECT_EQ(registry_.GetRegSetting("Lager", 0, HKEY_CURRENT_USER, sources), "SQLite3");
  EXPECT_EQ(registry_.GetRegSetting("Firma", 0, HKEY_LOCAL_MACHINE, sources), "PostgreSQL Unicode");
  EXPECT_EQ(registry_.GetRegSetting("Nix", 0, HKEY_LOCAL_MACHINE, sources), "");
}

TEST_F(ConfigFolderTest, MissingFilesGiveDefaults) {
  EXPECT_EQ(registry_.GetRegSetting("Driver", 0, HKEY_CURRENT_USER,
                                    "Software\\ODBC\\ODBC.INI\\Lager", "def"),
            "def");
  CIniFile ini;
  ini.SetPrivPath((dir_ / "nix.ini").string());
  ini.SectionName = "A";
  EXPECT_EQ(ini.GetString("x", "d"), "d");
  EXPECT_EQ(ini.GetInt("x", 5), 5);
  EXPECT_TRUE(ini.GetSections().empty());
}

TEST_F(ConfigFolderTest, IniDocumentKeepsOtherLines) {
  std::string path = (dir_ / "odbc.ini").string();
  Write(path, "[A]\r\n; Notiz\r\nx = \"1\"\r\n\r\n[B]\r\ny=2\r\n");
  IniDocument doc = IniDocument::Load(path);
  EXPECT_EQ(doc.Get("a", "X"), "1");
  EXPECT_EQ(doc.Get("B", "x"), std::nullopt);
  doc.Set("A", "z", "3");
  doc.Set("B", "Y", "4");
  doc.Set("C", "w", "5");
  EXPECT_EQ(doc.Text(), "[A]\n; Notiz\nx = \"1\"\nz=3\n\n[B]\ny=4\n\n[C]\nw=5\n");
  EXPECT_TRUE(doc.RemoveSection("b"));
  EXPECT_EQ(doc.Sections(), (std::vector<std::string>{"A", "C"}));
}

TEST_F(ConfigFolderTest, IniFileReadsAndWritesEntries) {
  std::string path = (dir_ / "app.ini").string();
  Write(path, "; Kommentar\n[Allgemein]\nName = Test\nAn=yes\nZahl=12abc\n\n[Zwei]\nx=1\n");
  CIniFile ini;
  ini.SetPrivPath(path);
  EXPECT_EQ(ini.FileExt(), "ini");
  EXPECT_EQ(ini.FilePath(), (dir_.string() + "/"));
  ini.SectionName = "allgemein";
  EXPECT_EQ(ini.GetString("NAME"), "Test");
  EXPECT_TRUE(ini.GetTF("An"));
  EXPECT_EQ(ini.GetInt("Zahl"), 12);
  EXPECT_TRUE(ini.PutTF("Aus", false));
  EXPECT_FALSE(ini.GetTF("Aus", true));
  EXPECT_TRUE(ini.PutInt("Zahl", 7));
  EXPECT_EQ(ini.GetSectEntriesEx(),
            (std::vector<std::string>{"Name=Test", "An=yes", "Zahl=7", "Aus=False"}));
  EXPECT_EQ(ini.GetSectionsEx(), (std::vector<std::string>{"[Allgemein]", "[Zwei]"}));
  EXPECT_TRUE(ini.DeleteStrEntry("An"));
  ini.SectionName = "Zwei";
  EXPECT_TRUE(ini.DeleteSection());
  EXPECT_FALSE(ini.SectExist("Zwei"));
  EXPECT_EQ(ReadTextFile(path), "; Kommentar\n[Allgemein]\nName = Test\nZahl=7\nAus=False\n\n");
  EXPECT_TRUE(ini.Exists((dir_ / "app").string()));  // any extension
  EXPECT_FALSE(ini.Exists((dir_ / "ap").string()));
  EXPECT_EQ(CIniFile::ExtractName("C:\\a\\b.txt", 1), "b");
  EXPECT_EQ(CIniFile::ExtractName("C:b.txt", 0), "b.txt");
}

}  // namespace
}  // namespace ketrova
