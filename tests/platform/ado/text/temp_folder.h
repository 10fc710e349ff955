// A folder of its own for each test, removed afterwards, with helpers to write
// and read files byte for byte.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace ketrova::testing {

class TempFolderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "ketrova-text-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override {
    std::error_code ec;
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ec);
    std::filesystem::remove_all(folder_, ec);
  }

  std::filesystem::path Path(const std::string& name) const { return folder_ / name; }

  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream out(Path(name), std::ios::binary | std::ios::trunc);
    out << bytes;
  }

  std::string Read(const std::string& name) const {
    std::ifstream in(Path(name), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }

  std::filesystem::path folder_;
};

}  // namespace ketrova::testing
