#include <thread>

#include "builtin_call.h"

namespace ketrova::script::vbscript::testing {
namespace {

using MathFunctions = GermanSettings;

TEST_F(MathFunctions, AbsFixIntKeepTheSubtype) {
  EXPECT_EQ(Call("Abs", Variant::Integer(-3)).Type(), vbInteger);
  EXPECT_EQ(Text("Abs", Variant::Integer(-3)), "3");
  EXPECT_EQ(Call("Abs", Variant::FromCurrency(-1.5)).Type(), vbCurrency);
  EXPECT_EQ(Text("Abs", "-2,5"), "2,5");
  EXPECT_EQ(Call("Abs", "-2,5").Type(), vbDouble);
  EXPECT_EQ(Text("Abs", Null()), "Null");
  EXPECT_EQ(Text("Abs", Variant()), "0");
  EXPECT_EQ(Text("Int", -2.5), "-3");
  EXPECT_EQ(Text("Fix", -2.5), "-2");
  EXPECT_EQ(Text("Int", 2.7), "2");
  EXPECT_EQ(Call("Int", Variant::Long(7)).Type(), vbLong);
  EXPECT_EQ(Text("Fix", Null()), "Null");
  EXPECT_EQ(ErrorOf("Int", "x"), 13);
}

TEST_F(MathFunctions, RoundIsBankers) {
  EXPECT_EQ(Text("Round", 2.5), "2");
  EXPECT_EQ(Text("Round", 3.5), "4");
  EXPECT_EQ(Text("Round", -2.5), "-2");
  EXPECT_EQ(Text("Round", 0.125, 2), "0,12");
  EXPECT_EQ(Text("Round", 1.23456, 3), "1,235");
  EXPECT_EQ(Call("Round", Variant::Integer(3)).Type(), vbInteger);
  EXPECT_EQ(Text("Round", Null()), "Null");
  EXPECT_EQ(ErrorOf("Round", 1.5, -1), 5);
}

TEST_F(MathFunctions, SgnAndTheRealFunctions) {
  EXPECT_EQ(Text("Sgn", -5), "-1");
  EXPECT_EQ(Text("Sgn", Variant()), "0");
  EXPECT_EQ(Text("Sgn", "3"), "1");
  EXPECT_EQ(ErrorOf("Sgn", Null()), 94);
  EXPECT_EQ(Text("Sqr", 16), "4");
  EXPECT_DOUBLE_EQ(Call("Atn", 1).ToDouble() * 4, 3.14159265358979323846);
  EXPECT_DOUBLE_EQ(Call("Exp", 1).ToDouble(), 2.71828182845904523536);
  EXPECT_EQ(Text("Log", Null()), "Null");
  EXPECT_EQ(ErrorOf("Sqr", -1), 5);
  EXPECT_EQ(ErrorOf("Log", 0), 5);
  EXPECT_EQ(ErrorOf("Exp", 1000), 6);
}

TEST_F(MathFunctions, RgbClampsEachPart) {
  EXPECT_EQ(Text("RGB", 255, 0, 0), "255");
  EXPECT_EQ(Text("RGB", 0, 0, 255), "16711680");
  EXPECT_EQ(Text("RGB", 1, 2, 3), "197121");
  EXPECT_EQ(Text("RGB", 300, 0, 0), "255");
  EXPECT_EQ(ErrorOf("RGB", -1, 0, 0), 5);
}

// VB's generator gives well-known numbers: 0.7055475 as the first draw of a
// fresh program, 0.224007 after Rnd(-1).
TEST_F(MathFunctions, RndFollowsVbsSequence) {
  float first = 0, afterReseed = 0, again = 0, repeated = 0;
  std::thread([&] {
    first = Call("Rnd").AsSingle();
    afterReseed = Call("Rnd", -1).AsSingle();
    Call("Rnd");
    again = Call("Rnd", -1).AsSingle();
    repeated = Call("Rnd", 0).AsSingle();
  }).join();
  EXPECT_FLOAT_EQ(first, 0.7055475f);
  EXPECT_FLOAT_EQ(afterReseed, 0.224007f);
  EXPECT_EQ(again, afterReseed);
  EXPECT_EQ(repeated, afterReseed);
}

TEST_F(MathFunctions, RandomizeWithANumberRepeatsASequence) {
  auto draw = [] {
    Call("Rnd", -1);
    Call("Randomize", 42);
    return std::vector<float>{Call("Rnd").AsSingle(), Call("Rnd").AsSingle()};
  };
  std::vector<float> a = draw(), b = draw();
  EXPECT_EQ(a, b);
  for (float x : a) {
    EXPECT_GE(x, 0.0f);
    EXPECT_LT(x, 1.0f);
  }
  Call("Rnd", -1);
  float plain = Call("Rnd").AsSingle();
  EXPECT_NE(a[0], plain);
  EXPECT_TRUE(Call("Randomize").IsEmpty());
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
