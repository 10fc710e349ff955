#include "support/format.h"

#include <gtest/gtest.h>

#include "support/ole_date.h"
#include "support/regional_guard.h"

namespace ketrova {
namespace {

class FormatTest : public GermanSettingsTest {
 protected:
  Variant moment_ = Variant::FromDate(DateSerial(2002, 12, 31) + TimeSerial(13, 5, 9));
};

TEST_F(FormatTest, NumberPatterns) {
  EXPECT_EQ(Format(Variant(100000.0), "#,##0.00"), "100.000,00");
  EXPECT_EQ(Format(Variant(-1234.567), "#,##0.00"), "-1.234,57");
  EXPECT_EQ(Format(Variant(0.5), "#,##0.00"), "0,50");
  EXPECT_EQ(Format(Variant(1.005), "0.00"), "1,01");  // half away from zero on the decimal text
  EXPECT_EQ(Format(Variant(2.5), "0"), "3");
  EXPECT_EQ(Format(Variant(-0.001), "0.00"), "0,00");
  EXPECT_EQ(Format(Variant(7), "000"), "007");
  EXPECT_EQ(Format(Variant(1.5), "#.##"), "1,5");
  EXPECT_EQ(Format(Variant(0.256), "0.0%"), "25,6%");
  EXPECT_EQ(Format(Variant(12345), "0.00E+00"), "1,23E+04");
  EXPECT_EQ(Format(Variant(1234567), "#,##0,"), "1.235");  // a trailing "," scales by 1000
  EXPECT_EQ(Format(Variant(5551234), "000-0000"), "555-1234");
  EXPECT_EQ(Format(Variant(-5), "0;(0);\"null\""), "(5)");
  EXPECT_EQ(Format(Variant(0), "0;(0);\"null\""), "null");
  EXPECT_EQ(Format(Variant("1.234,5"), "0.0"), "1234,5");  // a number text under German settings
  EXPECT_EQ(Format(Variant("abc"), "0.00"), "abc");
  EXPECT_EQ(Format(Variant::Null(), "0.00"), "");
  RegionalGuard us(UsRegional());
  EXPECT_EQ(Format(Variant(100000.0), "#,##0.00"), "100,000.00");
}

TEST_F(FormatTest, DatePatterns) {
  EXPECT_EQ(Format(moment_, "dd.mm.yyyy"), "31.12.2002");
  EXPECT_EQ(Format(moment_, "dd.mm.yyyy hh:mm:ss"), "31.12.2002 13:05:09");
  EXPECT_EQ(Format(moment_, "yyyy-mm-dd"), "2002-12-31");
  EXPECT_EQ(Format(moment_, "d/m/yy h:n"), "31.12.02 13:5");
  EXPECT_EQ(Format(moment_, "dddd, d. mmmm yyyy"), "Dienstag, 31. Dezember 2002");
  EXPECT_EQ(Format(moment_, "hh:mm AM/PM"), "01:05 PM");
  EXPECT_EQ(Format(moment_, "q w y"), "4 3 365");
  EXPECT_EQ(Format(moment_, "\\Y\\ear yyyy"), "Year 2002");
  EXPECT_EQ(Format(Variant("31.12.2002"), "yyyymmdd"), "20021231");
  EXPECT_EQ(Format(moment_, "Short Date"), "31.12.2002");
  EXPECT_EQ(Format(moment_, "Long Time"), "13:05:09");
  RegionalGuard us(UsRegional());
  EXPECT_EQ(Format(moment_, "mm/dd/yyyy"), "12/31/2002");
  EXPECT_EQ(Format(moment_, "mmmm"), "December");
}

TEST_F(FormatTest, TextAndNamedPatterns) {
  EXPECT_EQ(Format(Variant("abc"), ">"), "ABC");
  EXPECT_EQ(Format(Variant("ÄBC"), "<"), "äbc");
  EXPECT_EQ(Format(Variant("ab"), "@@@@"), "  ab");
  EXPECT_EQ(Format(Variant(1234.5), "Standard"), "1.234,50");
  EXPECT_EQ(Format(Variant(0), "Yes/No"), "Nein");
  EXPECT_EQ(Format(Variant(1.5)), "1,5");
}

}  // namespace
}  // namespace ketrova
