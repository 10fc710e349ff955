// The SQL tokenizer, by kind of token.
#include "platform/ado/sql_tokens.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ketrova::ado {
namespace {

// Each token as kind letter and text: "w:FROM", "s:'a'", ...
std::vector<std::string> Tokens(std::string_view sql) {
  std::vector<std::string> out;
  for (std::size_t i = 0; i < sql.size();) {
    SqlToken t = NextSqlToken(sql, i);
    static const char kKinds[] = "_sqbcwo";
    out.push_back(std::string(1, kKinds[static_cast<int>(t.kind)]) + (t.closed ? ":" : "!") +
                  std::string(t.text));
  }
  return out;
}

using V = std::vector<std::string>;

TEST(SqlTokens, StringsKeepDoubledApostrophesAndRunToTheEndWhenOpen) {
  EXPECT_EQ(Tokens("'it''s'x"), (V{"s:'it''s'", "w:x"}));
  std::size_t i = 0;
  EXPECT_EQ(NextSqlToken("'it''s'", i).Content(), "it's");
  EXPECT_EQ(Tokens("a 'b -- [c]"), (V{"w:a", "_: ", "s!'b -- [c]"}));
  i = 0;
  EXPECT_EQ(NextSqlToken("'offen", i).Content(), "offen");
}

TEST(SqlTokens, QuotedAndBracketedNames) {
  EXPECT_EQ(Tokens("\"a\"\"b\".`c``d`"), (V{"q:\"a\"\"b\"", "o:.", "q:`c``d`"}));
  std::size_t i = 0;
  EXPECT_EQ(NextSqlToken("\"a\"\"b\"", i).Content(), "a\"b");
  // A bracket ends at the first "]": no escape inside, quotes are plain.
  EXPECT_EQ(Tokens("[Kunden 'alt'][x"), (V{"b:[Kunden 'alt']", "b![x"}));
  i = 0;
  EXPECT_EQ(NextSqlToken("[Tabelle1$]", i).Content(), "Tabelle1$");
}

TEST(SqlTokens, CommentsToTheLineEndOrTheirClose) {
  EXPECT_EQ(Tokens("a -- [b] 'c\nd"), (V{"w:a", "_: ", "c:-- [b] 'c", "_:\n", "w:d"}));
  EXPECT_EQ(Tokens("a/* 'x' */b/* offen"), (V{"w:a", "c:/* 'x' */", "w:b", "c!/* offen"}));
  EXPECT_EQ(Tokens("a-b/c"), (V{"w:a", "o:-", "w:b", "o:/", "w:c"}));
}

TEST(SqlTokens, WordsHoldUmlautsDigitsAndALaterDollar) {
  EXPECT_EQ(Tokens("Größe_2 Tabelle1$ $x"),
            (V{"w:Größe_2", "_: ", "w:Tabelle1$", "_: ", "o:$", "w:x"}));
  EXPECT_EQ(Tokens("T.Nr,#1.2.2003#"),
            (V{"w:T", "o:.", "w:Nr", "o:,", "o:#", "w:1", "o:.", "w:2", "o:.", "w:2003", "o:#"}));
  std::size_t i = 0;
  EXPECT_TRUE(NextSqlToken("select", i).IsWord("SELECT"));
  i = 0;
  EXPECT_FALSE(NextSqlToken("[select]", i).IsWord("SELECT"));
}

TEST(SqlTokens, BlanksOfEveryKindAreOneToken) {
  EXPECT_EQ(Tokens(" \t\r\n a"), (V{"_: \t\r\n ", "w:a"}));
}

}  // namespace
}  // namespace ketrova::ado
