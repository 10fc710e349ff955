// A contact root of its own for each test, removed afterwards, with helpers
// that write cards by hand and through the independent tools (python3-vobject
// and khard, run as /usr/bin/python3 and /usr/bin/khard).
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace ketrova::testing {

class ContactFolderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "ketrova-contacts-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
  }
  void TearDown() override {
    std::error_code ec;
    std::filesystem::remove_all(root_, ec);
  }

  // Writes a file below the root, making its folders.
  std::filesystem::path Write(const std::string& relative, const std::string& bytes) const {
    const std::filesystem::path path = root_ / relative;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    return path;
  }

  static std::string Read(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }

  // Runs a shell command; its standard output. The exit status must be 0.
  static std::string Run(const std::string& command) {
    std::string output;
    FILE* pipe = ::popen(command.c_str(), "r");
    EXPECT_NE(pipe, nullptr) << command;
    if (!pipe) return output;
    std::array<char, 4096> buffer{};
    std::size_t n = 0;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
      output.append(buffer.data(), n);
    EXPECT_EQ(::pclose(pipe), 0) << command << "\n" << output;
    return output;
  }

  // Runs a Python script with Debian's vobject at hand; `arguments` are
  // shell words.
  std::string Python(const std::string& script, const std::string& arguments = {}) const {
    const std::filesystem::path file = root_ / ".script.py";
    {
      std::ofstream out(file);
      out << script;
    }
    return Run("/usr/bin/python3 " + file.string() + " " + arguments + " 2>&1");
  }

  // A khard configuration with one address book per folder; its path.
  std::filesystem::path KhardConfig(const std::vector<std::filesystem::path>& books) const {
    const std::filesystem::path file = root_ / ".khard.conf";
    std::ofstream out(file);
    out << "[addressbooks]\n";
    int n = 0;
    for (const auto& book : books) out << "[[book" << ++n << "]]\npath = " << book.string() << "\n";
    out << "[general]\ndebug = no\ndefault_action = list\neditor = /bin/false\n"
           "merge_editor = /bin/false\n"
           "[contact table]\ndisplay = first_name\ngroup_by_addressbook = no\nreverse = no\n"
           "show_nicknames = no\nshow_uids = yes\nsort = last_name\nlocalize_dates = no\n"
           "preferred_phone_number_type = pref, cell, home\n"
           "preferred_email_address_type = pref, work, home\n"
           "[vcard]\nprivate_objects = ,\npreferred_version = 3.0\n"
           "search_in_source_files = no\nskip_unparsable = no\n";
    return file;
  }

  // A contact made by khard from its YAML template text in `book`.
  void KhardNew(const std::filesystem::path& book, const std::string& yaml) const {
    std::filesystem::create_directories(book);
    const std::filesystem::path input = root_ / ".contact.yaml";
    {
      std::ofstream out(input);
      out << yaml;
    }
    Run("/usr/bin/khard -c " + KhardConfig({book}).string() + " new -a book1 -i " + input.string() +
        " >/dev/null 2>&1");
  }

  std::filesystem::path root_;
};

}  // namespace ketrova::testing
