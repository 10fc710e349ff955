#include "builtin_call.h"
#include "support/object.h"

namespace ketrova::script::vbscript::testing {
namespace {

using Conversions = GermanSettings;

// A field-like object whose default member is its value.
class Field : public Object {
 public:
  explicit Field(Variant value) : value_(std::move(value)) {}
  std::string TypeName() const override { return "Field"; }
  Variant Invoke(int dispId, InvokeKind, std::span<Variant>) override {
    if (dispId != kDispIdValue) throw VbError(438);
    return value_;
  }

 private:
  Variant value_;
};

// An object without a default member.
class Plain : public Object {
 public:
  std::string TypeName() const override { return "Plain"; }
};

TEST_F(Conversions, EachConversionAnswersItsSubtype) {
  EXPECT_EQ(Call("CInt", "2,5").Type(), vbInteger);
  EXPECT_EQ(Call("CLng", 1).Type(), vbLong);
  EXPECT_EQ(Call("CSng", 1).Type(), vbSingle);
  EXPECT_EQ(Call("CDbl", "1,5").Type(), vbDouble);
  EXPECT_EQ(Call("CCur", 1).Type(), vbCurrency);
  EXPECT_EQ(Call("CByte", 1).Type(), vbByte);
  EXPECT_EQ(Call("CBool", 1).Type(), vbBoolean);
  EXPECT_EQ(Call("CDate", "31.12.2002").Type(), vbDate);
  EXPECT_EQ(Call("CStr", 1).Type(), vbString);
  EXPECT_EQ(Text("CInt", "2,5"), "2");
  EXPECT_EQ(Text("CLng", 3.5), "4");
  EXPECT_EQ(Text("CStr", 1.5), "1,5");
  EXPECT_EQ(ErrorOf("CStr", Null()), 94);
  EXPECT_EQ(ErrorOf("CByte", 256), 6);
}

TEST_F(Conversions, HexAndOctUseTheWidthOfTheSubtype) {
  EXPECT_EQ(Text("Hex", 255), "FF");
  EXPECT_EQ(Text("Hex", Variant::Integer(-1)), "FFFF");
  EXPECT_EQ(Text("Hex", Variant::Long(-1)), "FFFFFFFF");
  EXPECT_EQ(Text("Hex", Variant::Long(-32769)), "FFFF7FFF");
  EXPECT_EQ(Text("Hex", true), "FFFF");
  EXPECT_EQ(Text("Hex", 2.5), "2");  // banker's rounding first
  EXPECT_EQ(Text("Hex", "16"), "10");
  EXPECT_EQ(Text("Hex", Variant()), "0");
  EXPECT_EQ(Text("Hex", Null()), "Null");
  EXPECT_EQ(Text("Oct", 8), "10");
  EXPECT_EQ(Text("Oct", Variant::Integer(-1)), "177777");
  EXPECT_EQ(ErrorOf("Hex", "x"), 13);
}

TEST_F(Conversions, TypeTests) {
  EXPECT_EQ(Text("IsNumeric", "1.234,5"), "Wahr");
  EXPECT_EQ(Text("IsNumeric", Null()), "Falsch");
  EXPECT_EQ(Text("IsDate", "31.12.2002"), "Wahr");
  EXPECT_EQ(Text("IsEmpty", Variant()), "Wahr");
  EXPECT_EQ(Text("IsEmpty", ""), "Falsch");
  EXPECT_EQ(Text("IsNull", Null()), "Wahr");
  EXPECT_EQ(Text("IsArray", Call("Array")), "Wahr");
  EXPECT_EQ(Text("IsObject", Variant::Nothing()), "Wahr");
  EXPECT_EQ(Text("IsObject", ObjectPtr(std::make_shared<Plain>())), "Wahr");
  EXPECT_EQ(Text("IsObject", "x"), "Falsch");
}

TEST_F(Conversions, VarTypeAndTypeName) {
  EXPECT_EQ(Text("VarType", Variant()), "0");
  EXPECT_EQ(Text("VarType", Null()), "1");
  EXPECT_EQ(Text("VarType", "x"), "8");
  EXPECT_EQ(Text("VarType", Call("Array")), "8204");
  EXPECT_EQ(Text("VarType", Variant::Nothing()), "9");
  EXPECT_EQ(Text("VarType", ObjectPtr(std::make_shared<Plain>())), "9");
  // An object with a default member answers the type of its value.
  EXPECT_EQ(Text("VarType", ObjectPtr(std::make_shared<Field>(Variant("Meier")))), "8");
  EXPECT_EQ(Text("VarType", ObjectPtr(std::make_shared<Field>(Null()))), "1");
  EXPECT_EQ(Call("VarType", 1).Type(), vbInteger);

  EXPECT_EQ(Text("TypeName", ObjectPtr(std::make_shared<Field>(Variant("Meier")))), "Field");
  EXPECT_EQ(Text("TypeName", Variant::Nothing()), "Nothing");
  EXPECT_EQ(Text("TypeName", 1.5), "Double");
  EXPECT_EQ(Text("TypeName", Call("Split", "a")), "String()");
}

// Scripts pass fields as objects (Left(rs("Name"), 3)); a built-in sees the
// field's value.
TEST_F(Conversions, ObjectArgumentsStandForTheirDefaultValue) {
  Variant meier = ObjectPtr(std::make_shared<Field>(Variant("Meier")));
  Variant empty = ObjectPtr(std::make_shared<Field>(Null()));
  Variant plain = ObjectPtr(std::make_shared<Plain>());
  EXPECT_EQ(Text("Left", meier, 3), "Mei");
  EXPECT_EQ(Text("Left", empty, 3), "Null");
  EXPECT_EQ(Text("Len", ObjectPtr(std::make_shared<Field>(Variant::Long(12345)))), "5");
  EXPECT_EQ(Text("IsNull", empty), "Wahr");
  EXPECT_EQ(Text("IsNull", Variant::Nothing()), "Falsch");
  EXPECT_EQ(Text("IsNumeric", plain), "Falsch");
  EXPECT_EQ(Text("Hex", ObjectPtr(std::make_shared<Field>(Variant::Integer(-1)))), "FFFF");
  EXPECT_EQ(ErrorOf("Len", Variant::Nothing()), 91);
  EXPECT_EQ(ErrorOf("Len", plain), 438);
  EXPECT_EQ(Call("Array", meier).AsArray()->data[0].IsObject(), true);
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
