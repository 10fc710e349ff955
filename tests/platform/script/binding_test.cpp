#include "platform/script/binding.h"

#include <gtest/gtest.h>

namespace ketrova::script {
namespace {

// A record-like pair of classes: a collection whose default member takes a
// key and gives an item whose default member is its value.
class Cell : public BoundObject<Cell> {
 public:
  std::string TypeName() const override { return "Cell"; }
  static const MemberTable<Cell>& Members() {
    static const auto table = MemberTable<Cell>()
                                  .Property(
                                      "Value", [](Cell& c, Args) { return c.value; },
                                      [](Cell& c, Args, const Variant& v) { c.value = v; })
                                  .Default("Value");
    return table;
  }
  Variant value;
};

class Row : public BoundObject<Row> {
 public:
  std::string TypeName() const override { return "Row"; }
  static const MemberTable<Row>& Members() {
    static const auto table = MemberTable<Row>()
                                  .Property("Item", 1, 1,
                                            [](Row& r, Args a) -> Variant {
                                              return ObjectPtr(r.cells.at(a[0].ToLong()));
                                            })
                                  .Property("Count", [](Row& r, Args) { return Variant::Long(2); })
                                  .Method("Clear", 0, 0,
                                          [](Row& r, Args) {
                                            ++r.clears;
                                            return Variant();
                                          })
                                  .Method("Sum", 1, -1,
                                          [](Row&, Args a) {
                                            double sum = 0;
                                            for (const auto& v : a) sum += v.ToDouble();
                                            return Variant(sum);
                                          })
                                  .Default("Item");
    return table;
  }
  std::vector<std::shared_ptr<Cell>> cells{std::make_shared<Cell>(), std::make_shared<Cell>()};
  int clears = 0;
};

class Table : public BoundObject<Table> {
 public:
  std::string TypeName() const override { return "Table"; }
  static const MemberTable<Table>& Members() {
    static const auto table = MemberTable<Table>().Property(
        "Row", [](Table& t, Args) -> Variant { return ObjectPtr(t.row); });
    return table;
  }
  std::shared_ptr<Row> row = std::make_shared<Row>();
};

TEST(Binding, ExtraArgumentsGoToTheDefaultMemberOfTheResult) {
  Table table;
  int rowId = table.GetIDOfName("ROW");
  ASSERT_NE(rowId, kDispIdUnknown);
  // table.Row(1) = 42 : Row has no setter, Row.Item(1) neither, Cell.Value does.
  Variant put[2] = {Variant(1), Variant(42)};
  table.Invoke(rowId, InvokeKind::kPropertyPut, put);
  EXPECT_EQ(table.row->cells[1]->value.ToLong(), 42);
  // x = table.Row(1) reads through to the Cell object.
  Variant get[1] = {Variant(1)};
  Variant cell = table.Invoke(rowId, InvokeKind::kPropertyGet, get);
  ASSERT_TRUE(cell.IsObject());
  EXPECT_EQ(cell.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {}).ToLong(), 42);
}

TEST(Binding, ArgumentCountsAndUnknownMembers) {
  Row row;
  EXPECT_EQ(row.GetIDOfName("Nope"), kDispIdUnknown);
  try {
    row.Invoke(row.GetIDOfName("Item"), InvokeKind::kPropertyGet, {});
    FAIL();
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, 450);
  }
  try {
    row.Invoke(99, InvokeKind::kMethod, {});
    FAIL();
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, 438);
  }
  // A read-only property refuses assignment.
  Variant value[1] = {Variant(3)};
  try {
    row.Invoke(row.GetIDOfName("Count"), InvokeKind::kPropertyPut, value);
    FAIL();
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, 438);
  }
  Variant many[3] = {Variant(1), Variant(2.5), Variant("3")};
  EXPECT_DOUBLE_EQ(row.Invoke(row.GetIDOfName("sum"), InvokeKind::kMethod, many).ToDouble(), 6.5);
}

TEST(Binding, MethodsAndPropertiesAreInterchangeableAsInIDispatch) {
  Row row;
  // A method read as a property runs it (VBScript's "x = obj.Method").
  row.Invoke(row.GetIDOfName("Clear"), InvokeKind::kPropertyGet, {});
  EXPECT_EQ(row.clears, 1);
  // A property called as a method is read.
  EXPECT_EQ(row.Invoke(row.GetIDOfName("Count"), InvokeKind::kMethod, {}).ToLong(), 2);
  // What JScript must call rather than read.
  EXPECT_TRUE(row.NeedsCall(row.GetIDOfName("Clear")));
  EXPECT_TRUE(row.NeedsCall(row.GetIDOfName("Item")));
  EXPECT_FALSE(row.NeedsCall(row.GetIDOfName("Count")));
  EXPECT_EQ(row.MemberNames(), (std::vector<std::string>{"Item", "Count", "Clear", "Sum"}));
}

}  // namespace
}  // namespace ketrova::script
