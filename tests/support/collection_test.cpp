#include "support/collection.h"

#include <gtest/gtest.h>

#include "support/numbered_list.h"
#include "support/vb_error.h"
#include "support/vb_error_number.h"

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
  EXPECT_EQ(VbErrorNumber([&] { c.Item(0); }), 9);
  EXPECT_EQ(VbErrorNumber([&] { c.Item(4); }), 9);
  EXPECT_EQ(VbErrorNumber([&] { c.Item("drei"); }), 5);
  EXPECT_EQ(VbErrorNumber([&] { c.Add(std::make_unique<Item>(), "ZWEI"); }), 457);
  EXPECT_EQ(VbErrorNumber([&] { c.Remove("x"); }), 5);
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
  EXPECT_EQ(VbErrorNumber([&] { c.Item(Variant::Null()); }), 13);
  EXPECT_EQ(VbErrorNumber([&] { c.Item(Variant(4)); }), 9);
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

struct Entry {
  std::int32_t Index = -1;
  std::string Key = "x";
  bool cleared = false;
  void Clear() {
    Index = 0;
    Key.clear();
    cleared = true;
  }
};

class Entries : public NumberedList<Entry> {
 public:
  Entry& Add() { return AddNumbered(); }
};

TEST(NumberedList, ItemsAreClearedAndNumberedAfterTheLastWithoutRenumbering) {
  Entries list;
  Entry& first = list.Add();
  EXPECT_TRUE(first.cleared);
  list.Add();
  EXPECT_EQ(list.Item("2").Index, 2);
  list.Remove(1);
  EXPECT_EQ(list.Item(1).Key, "2");
  // The next number is taken by the item that moved up.
  EXPECT_EQ(VbErrorNumber([&] { list.Add(); }), 457);
  EXPECT_EQ(list.Count(), 1);
  list.Clear();
  EXPECT_EQ(list.Count(), 0);
  EXPECT_EQ(list.Add().Key, "1");
}

}  // namespace
}  // namespace ketrova
