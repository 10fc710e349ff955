#include "builtin_call.h"

namespace ketrova::script::vbscript::testing {
namespace {

using ArrayFunctions = GermanSettings;

TEST_F(ArrayFunctions, ArrayAndItsBounds) {
  Variant a = Call("Array", 1, "zwei", Null());
  EXPECT_EQ(Show(a), "[1|zwei|Null]");
  EXPECT_EQ(a.Type(), vbArray + vbVariant);
  EXPECT_EQ(Text("LBound", a), "0");
  EXPECT_EQ(Text("UBound", a), "2");
  EXPECT_EQ(Text("UBound", Call("Array")), "-1");
  EXPECT_EQ(ErrorOf("UBound", a, 2), 9);
  EXPECT_EQ(ErrorOf("UBound", "abc"), 13);
  EXPECT_EQ(ErrorOf("LBound", Null()), 13);
}

TEST_F(ArrayFunctions, BoundsOfEveryDimension) {
  auto array = std::make_shared<SafeArray>();
  array->bounds = {{1, 2}, {5, 3}};
  array->data.resize(6);
  Variant a(array);
  EXPECT_EQ(Text("LBound", a, 2), "5");
  EXPECT_EQ(Text("UBound", a, 2), "7");
  EXPECT_EQ(Text("UBound", a, 1), "2");
  EXPECT_EQ(ErrorOf("UBound", a, 0), 9);
  EXPECT_EQ(ErrorOf("Join", a), 13);
}

TEST_F(ArrayFunctions, SplitAnswersAStringArray) {
  EXPECT_EQ(Text("Split", "a,b,,c", ","), "[a|b||c]");
  EXPECT_EQ(Text("Split", "a b"), "[a|b]");
  EXPECT_EQ(Text("Split", "aXbxc", "x", -1, 1), "[a|b|c]");
  EXPECT_EQ(Text("Split", "aXbxc", "x"), "[aXb|c]");
  EXPECT_EQ(Text("Split", "a,b,c", ",", 2), "[a|b,c]");
  EXPECT_EQ(Text("Split", "a::b", "::"), "[a|b]");
  EXPECT_EQ(Text("Split", "a,b", ""), "[a,b]");
  EXPECT_EQ(Text("UBound", Call("Split", "")), "-1");
  EXPECT_EQ(Text("UBound", Call("Split", "a b", " ", 0)), "-1");
  EXPECT_EQ(Call("Split", "a").Type(), vbArray + vbString);
  EXPECT_EQ(ErrorOf("Split", Null()), 94);
  EXPECT_EQ(ErrorOf("Split", "a", ",", -2), 5);
}

TEST_F(ArrayFunctions, JoinTakesEmptyButNoNullElements) {
  EXPECT_EQ(Text("Join", Call("Array", "a", 1, Variant(), 1.5), "-"), "a-1--1,5");
  EXPECT_EQ(ErrorOf("Join", Call("Array", "a", Null())), 13);
  EXPECT_EQ(Text("Join", Call("Split", "x y z")), "x y z");
  EXPECT_EQ(Text("Join", Call("Array")), "");
  EXPECT_EQ(ErrorOf("Join", "abc"), 13);
}

TEST_F(ArrayFunctions, FilterKeepsOrDropsMatches) {
  Variant fruit = Call("Array", "Apfel", "Birne", "apfelmus");
  EXPECT_EQ(Text("Filter", fruit, "apfel"), "[apfelmus]");
  EXPECT_EQ(Text("Filter", fruit, "apfel", true, 1), "[Apfel|apfelmus]");
  EXPECT_EQ(Text("Filter", fruit, "apfel", false, 1), "[Birne]");
  EXPECT_EQ(Text("UBound", Call("Filter", fruit, "kiwi")), "-1");
  EXPECT_EQ(ErrorOf("Filter", fruit, Null()), 94);
  EXPECT_EQ(ErrorOf("Filter", "Apfel", "a"), 13);
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
