// Host objects in JScript are wrapped once and reused, but a wrapper must not
// keep alive what the script has let go.
#include <gtest/gtest.h>

#include "platform/script/binding.h"
#include "platform/script/script_control.h"

namespace ketrova::script {
namespace {

class Item : public BoundObject<Item> {
 public:
  std::string TypeName() const override { return "Item"; }
  static const MemberTable<Item>& Members() {
    static const auto table = MemberTable<Item>().Property(
        "Value", [](Item& i, Args) { return Variant::Long(i.value); },
        [](Item& i, Args, const Variant& v) { i.value = v.ToLong(); });
    return table;
  }
  std::int32_t value = 0;
};

// Answers the same item for Item and a new one for each Make.
class Factory : public BoundObject<Factory> {
 public:
  std::string TypeName() const override { return "Factory"; }
  static const MemberTable<Factory>& Members() {
    static const auto table =
        MemberTable<Factory>()
            .Property("Item", [](Factory& f, Args) { return Variant(ObjectPtr(f.item)); })
            .Method("Make", 0, 0, [](Factory& f, Args) {
              auto made = std::make_shared<Item>();
              f.made.push_back(made);
              return Variant(ObjectPtr(made));
            });
    return table;
  }
  std::shared_ptr<Item> item = std::make_shared<Item>();
  std::vector<std::weak_ptr<Item>> made;
};

bool Alive(const std::weak_ptr<Item>& item) {
  return !item.expired();
}

TEST(JScriptHostWrappers, AreReusedButDoNotKeepObjectsAlive) {
  ScriptControl control;
  control.SetLanguage("JScript");
  auto factory = std::make_shared<Factory>();
  control.AddObject("Factory", factory);
  control.AddCode(
      "var kept;\n"
      "function same() { Factory.Item.Value = 7; return Factory.Item === Factory.Item; }\n"
      "function make() { for (var i = 0; i < 5000; i++) Factory.Make().Value = i; }\n"
      "function keep() { kept = Factory.Make(); kept.Value = 1; }");
  EXPECT_TRUE(control.Run("same").AsBool());
  EXPECT_EQ(factory->item->value, 7);

  control.Run("make");
  ASSERT_EQ(factory->made.size(), 5000u);
  EXPECT_EQ(std::count_if(factory->made.begin(), factory->made.end(), Alive), 0);

  control.Run("keep");
  ASSERT_TRUE(Alive(factory->made.back()));
  EXPECT_EQ(control.Eval("kept.Value").ToLong(), 1);
  control.ExecuteStatement("kept = null;");
  EXPECT_FALSE(Alive(factory->made.back()));
}

}  // namespace
}  // namespace ketrova::script
