#include "platform/ui/file_filter.h"

#include <gtest/gtest.h>

namespace ketrova::ui {
namespace {

TEST(FileFilter, ParsesPairsAndBareLists) {
  auto filters = ParseVbFilter("Projekte (*.CPF)|*.CPF|Texte|*.txt; *.csv|Alle|*.*");
  ASSERT_EQ(filters.size(), 3u);
  EXPECT_EQ(filters[0].description, "Projekte (*.CPF)");
  EXPECT_EQ(filters[0].patterns, (std::vector<std::string>{"*.CPF"}));
  EXPECT_EQ(filters[1].patterns, (std::vector<std::string>{"*.txt", "*.csv"}));
  EXPECT_EQ(filters[2].patterns, (std::vector<std::string>{"*.*"}));

  auto bare = ParseVbFilter("*.CPF");
  ASSERT_EQ(bare.size(), 1u);
  EXPECT_EQ(bare[0].description, "*.CPF");
  EXPECT_EQ(bare[0].patterns, (std::vector<std::string>{"*.CPF"}));
  EXPECT_TRUE(ParseVbFilter("").empty());
  // A description without its pattern list is dropped.
  EXPECT_EQ(ParseVbFilter("Projekte|*.CPF|Rest").size(), 1u);
}

TEST(FileFilter, MatchesWithoutRegardToCase) {
  struct Case {
    const char* name;
    const char* filter;
    bool matches;
  };
  const Case cases[] = {
      {"/home/u/Ketrova/Projects/demo.cpf", "*.CPF", true},
      {"DEMO.CPF", "*.cpf", true},
      {"demo.cpf.bak", "*.CPF", false},
      {"demo.txt", "*.CPF", false},
      {"demo.csv", "Texte|*.txt;*.csv", true},
      {"a.b.c", "Alle|*.*", true},
      {"ohne", "*.*", true},
      {"ohne", "*", true},
      {"k1.txt", "k?.TXT", true},
      {"k10.txt", "k?.TXT", false},
      {"C:\\Daten\\alt.Cpf", "*.CPF", true},
      {"irgendwas", "", true},
  };
  for (const Case& c : cases)
    EXPECT_EQ(MatchesVbFilter(c.name, c.filter), c.matches) << c.name << " / " << c.filter;
}

}  // namespace
}  // namespace ketrova::ui
