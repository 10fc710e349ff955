#include <functional>
#include <string>
#include <vector>

#include "builtin_call.h"
#include "support/object.h"

namespace ketrova::script::vbscript::testing {
namespace {

// Drives the RegExp object by name, as a script does.
class RegExpTest : public GermanSettings {
 protected:
  ObjectPtr re = CreateRegExp();

  void Set(std::string_view member, Variant value) { re->Put(member, std::move(value)); }

  Variant Run(std::string_view method, std::vector<Variant> args) { return re->Call(method, args); }

  static Variant Get(const ObjectPtr& object, std::string_view member,
                     std::vector<Variant> args = {}) {
    return object->Get(member, args);
  }

  static int ErrorOfRun(const std::function<void()>& f) {
    try {
      f();
    } catch (const VbError& e) {
      return e.Number;
    }
    return 0;
  }
};

TEST_F(RegExpTest, PropertiesStartOffAndReadBack) {
  EXPECT_EQ(re->TypeName(), "IRegExp2");
  EXPECT_EQ(Show(re->Get("pattern")), "");
  EXPECT_EQ(Show(re->Get("Global")), "Falsch");
  Set("Pattern", "a+");
  Set("IgnoreCase", true);
  EXPECT_EQ(Show(re->Get("PATTERN")), "a+");
  EXPECT_EQ(Show(re->Get("IgnoreCase")), "Wahr");
  EXPECT_EQ(re->GetIDOfName("NoSuchMember"), kDispIdUnknown);
}

TEST_F(RegExpTest, ExecuteListsMatchesWithSubMatches) {
  Set("Pattern", "(\\w+)@(\\w+)\\.com");
  Set("Global", true);
  ObjectPtr matches = Run("Execute", {"a@b.com, cd@ef.com"}).AsObject();
  EXPECT_EQ(matches->TypeName(), "IMatchCollection2");
  EXPECT_EQ(Show(Get(matches, "Count")), "2");
  ObjectPtr second = Get(matches, "Item", {1}).AsObject();
  EXPECT_EQ(Show(Get(second, "Value")), "cd@ef.com");
  EXPECT_EQ(Show(Get(second, "FirstIndex")), "9");
  EXPECT_EQ(Show(Get(second, "Length")), "9");
  ObjectPtr groups = Get(second, "SubMatches").AsObject();
  EXPECT_EQ(Show(Get(groups, "Count")), "2");
  EXPECT_EQ(Show(Get(groups, "Item", {0})), "cd");
  std::vector<Variant> index{1};
  EXPECT_EQ(Show(groups->Invoke(kDispIdValue, InvokeKind::kPropertyGet, index)), "ef");
  EXPECT_EQ(ErrorOfRun([&] { Get(matches, "Item", {2}); }), 5);

  std::vector<std::string> seen;
  auto each = matches->NewEnum();
  for (Variant item; each->Next(item);) seen.push_back(Show(Get(item.AsObject(), "Value")));
  EXPECT_EQ(seen, (std::vector<std::string>{"a@b.com", "cd@ef.com"}));
}

TEST_F(RegExpTest, WithoutGlobalOnlyTheFirstMatchCounts) {
  Set("Pattern", "\\d+");
  EXPECT_EQ(Show(Get(Run("Execute", {"1 22 333"}).AsObject(), "Count")), "1");
  EXPECT_EQ(Show(Run("Replace", {"1 22 333", "#"})), "# 22 333");
  Set("Global", true);
  EXPECT_EQ(Show(Run("Replace", {"1 22 333", "#"})), "# # #");
  EXPECT_EQ(Show(Get(Run("Execute", {"keine"}).AsObject(), "Count")), "0");
}

TEST_F(RegExpTest, PositionsCountCharactersNotBytes) {
  Set("Pattern", "ß(e)");
  ObjectPtr match = Get(Run("Execute", {"Grüße"}).AsObject(), "Item", {0}).AsObject();
  EXPECT_EQ(Show(Get(match, "FirstIndex")), "3");
  EXPECT_EQ(Show(Get(match, "Length")), "2");
  Set("Pattern", "^.{5}$");
  EXPECT_EQ(Show(Run("Test", {"Grüße"})), "Wahr");
}

TEST_F(RegExpTest, ReplaceUsesGroupReferences) {
  Set("Pattern", "(\\w+) (\\w+)");
  EXPECT_EQ(Show(Run("Replace", {"Hans Meier", "$2, $1"})), "Meier, Hans");
  EXPECT_EQ(Show(Run("Replace", {"Hans Meier", "[$&]"})), "[Hans Meier]");
  EXPECT_EQ(Show(Run("Replace", {"Hans Meier", "$$"})), "$");
}

TEST_F(RegExpTest, UnmatchedGroupsAreEmpty) {
  Set("Pattern", "(a)|(b)");
  ObjectPtr match = Get(Run("Execute", {"b"}).AsObject(), "Item", {0}).AsObject();
  ObjectPtr groups = Get(match, "SubMatches").AsObject();
  EXPECT_TRUE(Get(groups, "Item", {0}).IsEmpty());
  EXPECT_EQ(Show(Get(groups, "Item", {1})), "b");
  EXPECT_EQ(Show(Get(match, "SubMatches", {1})), "b");
}

TEST_F(RegExpTest, IgnoreCaseAndMultiline) {
  Set("Pattern", "straße");
  EXPECT_EQ(Show(Run("Test", {"STRAßE"})), "Falsch");
  Set("IgnoreCase", true);
  EXPECT_EQ(Show(Run("Test", {"STRAßE"})), "Wahr");
  EXPECT_EQ(Show(Run("Test", {"Ärger STRASSE"})), "Falsch");
  Set("Pattern", "^äb");
  EXPECT_EQ(Show(Run("Test", {"ÄB"})), "Wahr");

  Set("Pattern", "^b$");
  Set("IgnoreCase", false);
  EXPECT_EQ(Show(Run("Test", {"a\nb\nc"})), "Falsch");
  Set("Multiline", true);
  EXPECT_EQ(Show(Run("Test", {"a\nb\nc"})), "Wahr");
}

TEST_F(RegExpTest, BadPatternsRaiseVbScriptsNumbers) {
  Set("Pattern", "(a");
  EXPECT_EQ(ErrorOfRun([&] { Run("Test", {"a"}); }), 5020);
  Set("Pattern", "[a");
  EXPECT_EQ(ErrorOfRun([&] { Run("Test", {"a"}); }), 5019);
  Set("Pattern", "*a");
  EXPECT_NE(ErrorOfRun([&] { Run("Test", {"a"}); }), 0);
  Set("Pattern", "a");
  EXPECT_EQ(ErrorOfRun([&] { Run("Test", {}); }), 450);
  EXPECT_EQ(ErrorOfRun([&] { Run("Nope", {}); }), 438);
}

// A repeated part over a long text (a memo field) recurses once per
// character inside the matcher; it must neither overflow the stack nor lose
// the result, and a text too long for any stack is error 28.
TEST_F(RegExpTest, LongTextsMatchWithoutExhaustingTheStack) {
  Set("Pattern", "^(a|b)*$");
  EXPECT_EQ(Show(Run("Test", {std::string(100000, 'a')})), "Wahr");
  Set("Global", true);
  Set("Pattern", "(a|b)+x");
  EXPECT_EQ(Show(Run("Replace", {std::string(50000, 'b') + "x", "-"})), "-");
  Set("Pattern", "b");
  EXPECT_EQ(Show(Get(Run("Execute", {std::string(3000, 'b')}).AsObject(), "Count")), "3000");
  Set("Pattern", "^(a|b)*$");
  EXPECT_EQ(ErrorOfRun([&] { Run("Test", {std::string(600000, 'a')}); }), 28);
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
