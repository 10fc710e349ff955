#include "builtin_call.h"

namespace ketrova::script::vbscript::testing {
namespace {

using NumberFormats = GermanSettings;

TEST_F(NumberFormats, FormatNumberUnderGermanSettings) {
  EXPECT_EQ(Text("FormatNumber", 1234.5), "1.234,50");
  EXPECT_EQ(Text("FormatNumber", "1234,5"), "1.234,50");
  EXPECT_EQ(Text("FormatNumber", -1234567.891, 1), "-1.234.567,9");
  EXPECT_EQ(Text("FormatNumber", -1234.5, 0), "-1.235");
  EXPECT_EQ(Text("FormatNumber", Variant(), 0), "0");
  EXPECT_EQ(Text("FormatNumber", 0.5, 2, 0), ",50");
  EXPECT_EQ(Text("FormatNumber", 0.5, 2, -2), "0,50");
  EXPECT_EQ(Text("FormatNumber", -1, 2, -2, -1), "(1,00)");
  EXPECT_EQ(Text("FormatNumber", 1234567.891, 2, -1, 0, 0), "1234567,89");
  EXPECT_EQ(Text("FormatNumber", 1234.5, Missing(), Missing(), Missing(), 0), "1234,50");
  EXPECT_EQ(ErrorOf("FormatNumber", "abc"), 13);
  EXPECT_EQ(ErrorOf("FormatNumber", 1, -2), 5);
  EXPECT_EQ(ErrorOf("FormatNumber", 1, 2, 1), 5);
}

TEST_F(NumberFormats, RoundingIsHalfAwayFromZeroWithCarry) {
  EXPECT_EQ(Text("FormatNumber", 0.125, 2), "0,13");
  EXPECT_EQ(Text("FormatNumber", -2.5, 0), "-3");
  EXPECT_EQ(Text("FormatNumber", 999.995, 2), "1.000,00");
  EXPECT_EQ(Text("FormatNumber", -0.001, 2), "0,00");
  EXPECT_EQ(Text("FormatNumber", 0.000123456, 5), "0,00012");
  EXPECT_EQ(Text("FormatNumber", 1e20, 0), "100.000.000.000.000.000.000");
}

TEST_F(NumberFormats, CurrencyAndPercent) {
  EXPECT_EQ(Text("FormatCurrency", 1234.5), "1.234,50 €");
  EXPECT_EQ(Text("FormatCurrency", -3), "-3,00 €");
  EXPECT_EQ(Text("FormatCurrency", -3, 0, -2, -1), "(3 €)");
  EXPECT_EQ(Text("FormatPercent", 0.125), "12,50%");
  EXPECT_EQ(Text("FormatPercent", -1, 0), "-100%");
}

TEST_F(NumberFormats, UsSettings) {
  SetRegional(UsRegional());
  EXPECT_EQ(Text("FormatNumber", 1234.5), "1,234.50");
  EXPECT_EQ(Text("FormatCurrency", 1234.5), "$1,234.50");
  EXPECT_EQ(Text("FormatCurrency", -3), "($3.00)");
  EXPECT_EQ(Text("FormatCurrency", -3, 2, -2, 0), "-$3.00");
  EXPECT_EQ(Text("FormatPercent", 0.5), "50.00%");
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
