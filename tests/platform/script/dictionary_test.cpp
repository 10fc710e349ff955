#include "platform/script/objects/dictionary.h"

#include <gtest/gtest.h>

namespace ketrova::script {
namespace {

std::int32_t ErrorNumber(const std::function<void()>& call) {
  try {
    call();
  } catch (const VbError& e) {
    return e.Number;
  }
  return 0;
}

TEST(Dictionary, NumbersAreOneKeyWhateverTheirSubtypeButNotTheirText) {
  Dictionary d;
  d.Add(Variant::Integer(1), "integer");
  EXPECT_TRUE(d.Exists(Variant::Long(1)));
  EXPECT_TRUE(d.Exists(Variant(1.0)));
  EXPECT_FALSE(d.Exists(Variant("1")));
  EXPECT_EQ(ErrorNumber([&] { d.Add(Variant(1.0), "double"); }), 457);
  d.Add(Variant("1"), "text");
  EXPECT_EQ(d.Count(), 2);
  EXPECT_EQ(d.Item(Variant::Long(1)).ToString(), "integer");
}

TEST(Dictionary, TextCompareIgnoresCaseAndMayOnlyBeSetWhileEmpty) {
  Dictionary binary;
  binary.Add(Variant("Key"), 1);
  EXPECT_FALSE(binary.Exists(Variant("KEY")));
  EXPECT_EQ(ErrorNumber([&] { binary.SetCompareMode(1); }), 5);

  Dictionary text;
  text.SetCompareMode(1);
  text.Add(Variant("Key"), 1);
  EXPECT_TRUE(text.Exists(Variant("kEY")));
  EXPECT_EQ(ErrorNumber([&] { text.Add(Variant("KEY"), 2); }), 457);
}

TEST(Dictionary, ReadingAMissingItemAddsItAndOrderSurvivesRemoval) {
  Dictionary d;
  d.Add(Variant("a"), 1);
  d.Add(Variant("b"), 2);
  d.Add(Variant("c"), 3);
  EXPECT_TRUE(d.Item(Variant("z")).IsEmpty());
  EXPECT_EQ(d.Count(), 4);
  d.Remove(Variant("b"));
  d.RenameKey(Variant("c"), Variant("C2"));
  EXPECT_EQ(ErrorNumber([&] { d.Remove(Variant("b")); }), 32811);
  EXPECT_EQ(ErrorNumber([&] { d.RenameKey(Variant("a"), Variant("z")); }), 457);
  Variant keys = d.Keys();
  ASSERT_TRUE(keys.IsArray());
  std::string joined;
  for (const auto& k : keys.AsArray()->data) joined += k.ToString() + ",";
  EXPECT_EQ(joined, "a,C2,z,");
  EXPECT_EQ(keys.AsArray()->bounds[0].lower, 0);
  EXPECT_EQ(d.Items().AsArray()->data[1].ToLong(), 3);
  // The position index follows the removal.
  EXPECT_EQ(d.Item(Variant("z")).Type(), vbEmpty);
  EXPECT_EQ(d.Count(), 3);
}

TEST(Dictionary, LateBoundUseAsScriptsSeeIt) {
  auto d = std::make_shared<Dictionary>();
  Variant add[2] = {Variant("k"), Variant(5)};
  d->Call("Add", add);
  // d("k") = 6 goes through the default member.
  Variant put[2] = {Variant("k"), Variant(6)};
  d->Invoke(kDispIdValue, InvokeKind::kPropertyPut, put);
  EXPECT_EQ(d->Get("Count").ToLong(), 1);
  Variant key[1] = {Variant("k")};
  EXPECT_EQ(d->Invoke(kDispIdValue, InvokeKind::kPropertyGet, key).ToLong(), 6);
  auto each = d->NewEnum();
  Variant item;
  ASSERT_TRUE(each->Next(item));
  EXPECT_EQ(item.ToString(), "k");
  EXPECT_FALSE(each->Next(item));
  EXPECT_EQ(ErrorNumber([&] { d->Call("Add"); }), 450);
}

}  // namespace
}  // namespace ketrova::script
