#include "platform/ado/value_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace ketrova::ado {
namespace {

TEST(ValueText, OleDatesRoundTripAcrossTheEpoch) {
  EXPECT_DOUBLE_EQ(OleDateFromParts({1899, 12, 30}), 0.0);
  EXPECT_DOUBLE_EQ(OleDateFromParts({1900, 1, 1, 12, 0, 0}), 2.5);
  EXPECT_DOUBLE_EQ(OleDateFromParts({1899, 12, 29, 6, 0, 0}), -1.25);
  for (DateParts p : {DateParts{2024, 2, 29, 13, 45, 10}, DateParts{1899, 12, 29, 6, 0, 0},
                      DateParts{1800, 3, 1, 23, 59, 59}}) {
    DateParts q = PartsFromOleDate(OleDateFromParts(p));
    EXPECT_EQ(std::tie(q.year, q.month, q.day, q.hour, q.minute, q.second),
              std::tie(p.year, p.month, p.day, p.hour, p.minute, p.second));
  }
}

TEST(ValueText, DecimalText) {
  EXPECT_EQ(DecimalToText(DecimalFromText("-0012.340").AsDecimal()), "-12.340");
  EXPECT_EQ(DecimalToText(DecimalFromText(".5").AsDecimal()), "0.5");
  EXPECT_TRUE(DecimalFromText("12a").IsEmpty());
  EXPECT_TRUE(DecimalFromText("").IsEmpty());
  EXPECT_EQ(CurrencyToText(Currency{-12345}), "-1.2345");
  EXPECT_EQ(CurrencyToText(Currency{5}), "0.0005");
  EXPECT_EQ(CurrencyToText(Currency{0}), "0.0000");
  // Beyond 64 bits the mantissa is divided as 128 bits.
  Decimal big;
  big.mantissa = static_cast<Decimal::Int128>(std::numeric_limits<std::uint64_t>::max()) * 1000 + 7;
  big.scale = 28;
  EXPECT_EQ(DecimalToText(big), "0.0000018446744073709551615007");
  big.mantissa = -big.mantissa;
  big.scale = 0;
  EXPECT_EQ(DecimalToText(big), "-18446744073709551615007");
}

TEST(ValueText, Utf16RoundTrip) {
  std::string s = "Grüße \xF0\x9F\x98\x80 ß";
  EXPECT_EQ(Utf16ToUtf8(Utf8ToUtf16(s)), s);
  EXPECT_EQ(Utf8ToUtf16("ä").size(), 1u);
}

}  // namespace
}  // namespace ketrova::ado
