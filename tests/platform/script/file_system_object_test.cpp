#include "platform/script/objects/file_system_object.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace ketrova::script {
namespace {

namespace fs = std::filesystem;

Variant CallOn(const ObjectPtr& object, const char* member, std::vector<Variant> args = {}) {
  return object->Call(member, args);
}

class FileSystemObjectTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = fs::temp_directory_path() / ("ketrova_fso_" + std::to_string(getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }

  std::string PathOf(const std::string& name) const { return (dir / name).generic_string(); }
  std::string Bytes(const std::string& name) const {
    std::ifstream in(dir / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  Variant Call(const char* member, std::vector<Variant> args) { return fso->Call(member, args); }
  ObjectPtr CallObject(const char* member, std::vector<Variant> args) {
    return Call(member, std::move(args)).AsObject();
  }
  std::int32_t ErrorNumber(const std::function<void()>& call) {
    try {
      call();
    } catch (const VbError& e) {
      return e.Number;
    }
    return 0;
  }

  fs::path dir;
  ObjectPtr fso = std::make_shared<FileSystemObject>();
};

TEST_F(FileSystemObjectTest, WritesAndReadsTextFilesLineByLine) {
  // Backslashes are path separators too.
  std::string path = dir.generic_string() + "\\out.txt";
  ObjectPtr out = CallObject("CreateTextFile", {Variant(path)});
  CallOn(out, "WriteLine", {Variant("Zeile 1 äöü")});
  CallOn(out, "Write", {Variant("ohne Ende")});
  CallOn(out, "Close");
  EXPECT_EQ(Bytes("out.txt"), "Zeile 1 äöü\r\nohne Ende");

  ObjectPtr append = CallObject("OpenTextFile", {Variant(path), Variant(ForAppending)});
  CallOn(append, "WriteBlankLines", {Variant(1)});
  CallOn(append, "Close");

  ObjectPtr in = CallObject("OpenTextFile", {Variant(PathOf("out.txt"))});
  EXPECT_EQ(CallOn(in, "ReadLine").ToString(), "Zeile 1 äöü");
  EXPECT_EQ(in->Get("Line").ToLong(), 2);
  EXPECT_EQ(CallOn(in, "Read", {Variant(4)}).ToString(), "ohne");
  EXPECT_EQ(in->Get("Column").ToLong(), 5);
  EXPECT_EQ(CallOn(in, "ReadLine").ToString(), " Ende");
  EXPECT_TRUE(in->Get("AtEndOfStream").ToBool());
  EXPECT_EQ(ErrorNumber([&] { CallOn(in, "ReadLine"); }), 62);
  EXPECT_EQ(ErrorNumber([&] { CallOn(in, "Write", {Variant("x")}); }), 54);
}

TEST_F(FileSystemObjectTest, ReadsAnyLineEndAndWindows1252) {
  std::ofstream(dir / "mixed.txt", std::ios::binary) << "a\nb\r\nc\rd";
  std::ofstream(dir / "ansi.txt", std::ios::binary) << "M\xFC"
                                                       "ller \x80";
  std::ofstream(dir / "bom.txt", std::ios::binary) << "\xEF\xBB\xBFx";
  ObjectPtr in = CallObject("OpenTextFile", {Variant(PathOf("mixed.txt"))});
  std::string lines;
  while (!in->Get("AtEndOfStream").ToBool()) lines += CallOn(in, "ReadLine").ToString() + "|";
  EXPECT_EQ(lines, "a|b|c|d|");
  EXPECT_EQ(CallOn(CallObject("OpenTextFile", {Variant(PathOf("ansi.txt"))}), "ReadAll").ToString(),
            "Müller €");
  EXPECT_EQ(CallOn(CallObject("OpenTextFile", {Variant(PathOf("bom.txt"))}), "ReadAll").ToString(),
            "x");
}

TEST_F(FileSystemObjectTest, FileAndFolderTestsAndTheirErrors) {
  std::ofstream(dir / "a.csv") << "12345";
  EXPECT_TRUE(Call("FileExists", {Variant(PathOf("a.csv"))}).ToBool());
  EXPECT_FALSE(Call("FileExists", {Variant(dir.generic_string())}).ToBool());
  EXPECT_TRUE(Call("FolderExists", {Variant(dir.generic_string())}).ToBool());
  EXPECT_EQ(Call("GetBaseName", {Variant("c:\\data\\kunden.alt.csv")}).ToString(), "kunden.alt");
  EXPECT_EQ(Call("GetExtensionName", {Variant("x/kunden.csv")}).ToString(), "csv");
  EXPECT_EQ(Call("GetParentFolderName", {Variant("/a/b/c.txt")}).ToString(), "/a/b");
  EXPECT_EQ(Call("BuildPath", {Variant("/a/b"), Variant("c.txt")}).ToString(), "/a/b/c.txt");

  ObjectPtr file = CallObject("GetFile", {Variant(PathOf("a.csv"))});
  EXPECT_EQ(file->Get("Name").ToString(), "a.csv");
  EXPECT_EQ(file->Get("Size").ToLong(), 5);
  EXPECT_EQ(file->Get("DateLastModified").Type(), vbDate);

  Call("CreateFolder", {Variant(PathOf("sub"))});
  EXPECT_EQ(ErrorNumber([&] { Call("CreateFolder", {Variant(PathOf("sub"))}); }), 58);
  Call("CopyFile", {Variant(PathOf("a.csv")), Variant(PathOf("sub/"))});
  EXPECT_EQ(ErrorNumber([&] {
              Call("CopyFile", {Variant(PathOf("a.csv")), Variant(PathOf("sub/a.csv")), false});
            }),
            58);
  ObjectPtr folder = CallObject("GetFolder", {Variant(dir.generic_string())});
  ObjectPtr files = folder->Get("Files").AsObject();
  EXPECT_EQ(files->Get("Count").ToLong(), 1);
  EXPECT_EQ(folder->Get("SubFolders").AsObject()->Get("Count").ToLong(), 1);
  auto each = CallObject("GetFolder", {Variant(PathOf("sub"))})->Get("Files").AsObject()->NewEnum();
  Variant item;
  ASSERT_TRUE(each->Next(item));
  EXPECT_EQ(item.AsObject()->Get("Name").ToString(), "a.csv");

  EXPECT_EQ(ErrorNumber([&] { Call("OpenTextFile", {Variant(PathOf("missing.txt"))}); }), 53);
  EXPECT_EQ(ErrorNumber([&] { Call("GetFolder", {Variant(PathOf("nope"))}); }), 76);
  EXPECT_EQ(ErrorNumber([&] { Call("DeleteFile", {Variant(PathOf("missing.txt"))}); }), 53);
  Call("DeleteFolder", {Variant(PathOf("sub"))});
  EXPECT_FALSE(fs::exists(dir / "sub"));
}

}  // namespace
}  // namespace ketrova::script
