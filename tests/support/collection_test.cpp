#include "support/collection.h"

#include <gtest/gtest.h>

#include "support/vb_error.h"

namespace ketrova {
namespace {

struct Item {
  int value = 0;
};

Collection<Item> ThreeItems() {
  Collection<Item> c;
  c.Add(std::make_unique<Item>(Item{1}), "1");
  c.Add(std::make_unique<Item>(Item{2}), "Zwei");
  c.Add(std::make_unique<Item>(Item{3}));
  return c;
}

int ErrorNumber(auto&& f) {
  try {
    f();
  } catch (const VbError& e) {
    return e.Number;
  }
  return 0;
}

TEST(Collection, ItemsByPositionAndKeyWithoutRegardToCase) {
  auto c = ThreeItems();
  EXPECT_EQ(c.Count(), 3);
  EXPECT_EQ(c.Item(1).value, 1);
  EXPECT_EQ(c.Item("zWEI").value, 2);
  EXPECT_EQ(c.Item("1").value, 1);  // a number text is a key, not a position
  EXPECT_EQ(c.IndexOf(&c.Item(3)), 3);
}

TEST(Collection, VbErrorNumbers) {
  auto c = ThreeItems();
  EXPECT_EQ(ErrorNumber([&] { c.Item(0); }), 9);
  EXPECT_EQ(ErrorNumber([&] { c.Item(4); }), 9);
  EXPECT_EQ(ErrorNumber([&] { c.Item("drei"); }), 5);
  EXPECT_EQ(ErrorNumber([&] { c.Add(std::make_unique<Item>(), "ZWEI"); }), 457);
  EXPECT_EQ(ErrorNumber([&] { c.Remove("x"); }), 5);
}

TEST(Collection, AddBeforeAndAfterAndRemoveKeepOrder) {
  auto c = ThreeItems();
  c.Add(std::make_unique<Item>(Item{0}), "", 1);
  c.Add(std::make_unique<Item>(Item{9}), "", 0, 4);
  std::vector<int> values;
  for (auto& item : c) values.push_back(item.value);
  EXPECT_EQ(values, (std::vector<int>{0, 1, 2, 3, 9}));
  auto removed = c.Remove(2);
  EXPECT_EQ(removed->value, 1);
  EXPECT_EQ(c.Item(2).value, 2);
}

TEST(PendingError, RaiseFillsGermanTextAndSetRecords) {
  Err().Clear();
  try {
    Err().Raise(13, "Quelle");
  } catch (const VbError& e) {
    EXPECT_EQ(e.Description, "Typen unverträglich");
    SetPendingError(std::current_exception());
  }
  EXPECT_EQ(Err().Number, 13);
  EXPECT_EQ(Err().Source, "Quelle");
  Err().Clear();
  EXPECT_EQ(Err().Number, 0);
  EXPECT_EQ(Err().Description, "");
}

TEST(Collection, ScriptIndexIsKeyOrPosition) {
  Collection<Item> c = ThreeItems();
  EXPECT_EQ(c.Item(Variant("zwei")).value, 2);
  EXPECT_EQ(c.Item(Variant("1")).value, 1);  // a number text is a key
  EXPECT_EQ(c.Item(Variant(3.0)).value, 3);
  EXPECT_EQ(c.Item(std::string("Zwei")).value, 2);
  EXPECT_EQ(ErrorNumber([&] { c.Item(Variant::Null()); }), 13);
  EXPECT_EQ(ErrorNumber([&] { c.Item(Variant(4)); }), 9);
}

TEST(PendingError, ResumeNextRecordsAndGoesOn) {
  Err().Clear();
  EXPECT_TRUE(ResumeNext([] {}));
  EXPECT_EQ(Err().Number, 0);
  EXPECT_FALSE(ResumeNext([] { throw VbError(13); }));
  EXPECT_EQ(Err().Number, 13);
  EXPECT_EQ(Err().Description, "Typen unverträglich");
  EXPECT_FALSE(ResumeNext([] { throw std::runtime_error("kaputt"); }));
  EXPECT_EQ(Err().Number, 440);
  EXPECT_EQ(Err().Description, "kaputt");
  Err().Clear();
}

}  // namespace
}  // namespace ketrova
