#include "support/system.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <vector>

#include "support/files.h"

namespace ketrova {
namespace {

namespace fs = std::filesystem;

class Entries : public ComboList {
 public:
  std::vector<std::pair<std::string, std::int64_t>> items;
  int ListCount() const override { return static_cast<int>(items.size()); }
  std::string List(int i) const override { return items[static_cast<std::size_t>(i)].first; }
  std::int64_t ItemData(int i) const override { return items[static_cast<std::size_t>(i)].second; }
};

TEST(SystemTest, GuidTempAndHost) {
  std::string a = CreateGUID(), b = CreateGUID();
  EXPECT_TRUE(std::regex_match(
      a, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[0-9A-F]{4}-[0-9A-F]{12}")))
      << a;
  EXPECT_NE(a, b);
  EXPECT_EQ(GetTempDirectory().back(), '/');
  EXPECT_FALSE(GetComputerName().empty());
}

TEST(SystemTest, ComboLookups) {
  Entries combo;
  combo.items = {{"Access", 1}, {" SQL Server ", 2}, {"sql server", 3}};
  EXPECT_EQ(ComboFindText("sql SERVER", combo), 1);
  EXPECT_EQ(ComboFindText("Oracle", combo), -1);
  EXPECT_EQ(ComboFindItemData(3, combo), 2);
  EXPECT_EQ(ComboFindItemData(9, combo), -1);
}

TEST(SystemTest, IsObjectValidAnswersTheReverse) {
  EXPECT_TRUE(IsObjectValid(Variant::Nothing()));
  EXPECT_FALSE(IsObjectValid(Variant(1)));
}

TEST(SystemTest, CheckKeyForType) {
  int key = ',';
  EXPECT_FALSE(CheckKeyForType(key, 3));
  EXPECT_EQ(key, 0);
  key = ',';
  EXPECT_TRUE(CheckKeyForType(key, 5));
  key = '#';
  EXPECT_TRUE(CheckKeyForType(key, 135));
  key = 'a';
  EXPECT_FALSE(CheckKeyForType(key, 7));
  key = 'a';
  EXPECT_TRUE(CheckKeyForType(key, 200));  // a string type
  key = 8;                                 // backspace
  EXPECT_TRUE(CheckKeyForType(key, 3));
  key = 'a';
  EXPECT_TRUE(CheckKeyForType(key, 11));  // a type without a filter
}

TEST(SystemTest, SendMailWritesAMessageIntoTheOutbox) {
  fs::path box = fs::temp_directory_path() / ("ketrova_outbox_" + std::to_string(getpid()));
  SetOutboxFolder(box.string());
  EXPECT_EQ(SendMail("admin@example.org", "Protokoll Übernahme", "Zeile 1\nZeile 2"), "");
  std::vector<fs::path> files;
  for (const auto& e : fs::directory_iterator(box / "new")) files.push_back(e.path());
  ASSERT_EQ(files.size(), 1u);
  EXPECT_TRUE(fs::is_empty(box / "tmp"));
  std::string text = ReadTextFile(files[0].string());
  EXPECT_NE(text.find("\r\nTo: admin@example.org\r\n"), std::string::npos);
  EXPECT_NE(text.find("\r\nSubject: =?UTF-8?B?UHJvdG9rb2xsIMOcYmVybmFobWU=?=\r\n"),
            std::string::npos);
  EXPECT_NE(text.find("Content-Type: text/plain; charset=UTF-8\r\n"), std::string::npos);
  EXPECT_TRUE(text.ends_with("\r\n\r\nZeile 1\r\nZeile 2\r\n")) << text;
  EXPECT_TRUE(text.starts_with("Date: "));

  fs::path blocked = box / "datei";
  WriteTextFile(blocked.string(), "x");
  SetOutboxFolder(blocked.string());  // a file stands where the folder should be
  EXPECT_EQ(SendMail("a@b", "s", "b"), "Kein Outlook installiert.");
  SetOutboxFolder({});
  fs::remove_all(box);
}

}  // namespace
}  // namespace ketrova
