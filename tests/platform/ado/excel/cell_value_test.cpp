// The small conversions every workbook value passes through: number formats
// to kinds, serial numbers of both date systems, cell references and the
// escapes of OOXML text.
#include "platform/ado/providers/excel/cell_value.h"

#include <gtest/gtest.h>

#include "platform/ado/providers/excel/xlsx_package.h"

namespace ketrova::excel {
namespace {

TEST(CellValueTest, FormatCodesTellDatesAndCurrencyApart) {
  for (const char* date :
       {"dd.mm.yyyy", "DD.MM.YYYY hh:mm", "[h]:mm:ss", "m/d/yy", "[$-407]d. mmmm yyyy"})
    EXPECT_EQ(KindOfFormatCode(date), NumberKind::kDate) << date;
  for (const char* money :
       {"#,##0.00 \"€\"", "#,##0.00 €", "[$€-407] #,##0.00", "$#,##0_);($#,##0)"})
    EXPECT_EQ(KindOfFormatCode(money), NumberKind::kCurrency) << money;
  // Letters in quotes, escaped or in colours are no date parts; General none.
  for (const char* plain :
       {"General", "0.00", "0.0\" días\"", "\\d0", "[Red]0.00", "0.00E+00", "@"})
    EXPECT_EQ(KindOfFormatCode(plain), NumberKind::kPlain) << plain;
  EXPECT_EQ(KindOfBuiltinFormat(14), NumberKind::kDate);
  EXPECT_EQ(KindOfBuiltinFormat(22), NumberKind::kDate);
  EXPECT_EQ(KindOfBuiltinFormat(7), NumberKind::kCurrency);
  EXPECT_EQ(KindOfBuiltinFormat(2), NumberKind::kPlain);
}

TEST(CellValueTest, SerialNumbersOfBothDateSystems) {
  // The 1900 system counts a 29 February 1900: days before it are one off.
  EXPECT_EQ(IsoFromOle(OleFromSerial(1, false)), "1900-01-01");
  EXPECT_EQ(IsoFromOle(OleFromSerial(59, false)), "1900-02-28");
  EXPECT_EQ(IsoFromOle(OleFromSerial(61, false)), "1900-03-01");
  EXPECT_EQ(IsoFromOle(OleFromSerial(43890.5, false)), "2020-02-29 12:00:00");
  EXPECT_EQ(IsoFromOle(OleFromSerial(0, true)), "1904-01-01");
  for (double serial : {1.0, 59.0, 61.0, 43890.25}) {
    EXPECT_DOUBLE_EQ(SerialFromOle(OleFromSerial(serial, false), false), serial);
    EXPECT_DOUBLE_EQ(SerialFromOle(OleFromSerial(serial, true), true), serial);
  }
  EXPECT_EQ(OleFromIso("2002-12-31"), OleFromSerial(37621, false));
  EXPECT_FALSE(OleFromIso("31.12.2002"));
  EXPECT_FALSE(OleFromIso("2002-13-01"));
}

TEST(CellValueTest, CellReferencesAndColumnLetters) {
  EXPECT_EQ(ColumnLetters(1), "A");
  EXPECT_EQ(ColumnLetters(26), "Z");
  EXPECT_EQ(ColumnLetters(27), "AA");
  EXPECT_EQ(ColumnLetters(16384), "XFD");
  auto r = ParseCellRef("$AB$12");
  ASSERT_TRUE(r);
  EXPECT_EQ(r->column, 28);
  EXPECT_EQ(r->row, 12);
  for (const char* bad : {"", "A", "12", "A0", "ABCD1", "A1B"})
    EXPECT_FALSE(ParseCellRef(bad)) << bad;
}

TEST(CellValueTest, OoxmlEscapesRoundTrip) {
  EXPECT_EQ(DecodeOoxmlEscapes("a_x000D__x000A_b_x00E4_"), "a\r\nbä");
  EXPECT_EQ(DecodeOoxmlEscapes("_x12_ und _xZZZZ_"), "_x12_ und _xZZZZ_");
  for (std::string text :
       {std::string("tab\tund\x01steuer"), std::string("_x0041_"), std::string("ä_x")}) {
    EXPECT_EQ(DecodeOoxmlEscapes(EncodeOoxmlEscapes(text)), text);
  }
  EXPECT_EQ(EncodeOoxmlEscapes("\x01"), "_x0001_");
  EXPECT_EQ(CharacterCount("Müller"), 6u);
}

}  // namespace
}  // namespace ketrova::excel
