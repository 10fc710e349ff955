#include "support/text.h"

#include <gtest/gtest.h>

#include "support/ole_date.h"
#include "support/regional_guard.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

using TextTest = GermanSettingsTest;

TEST_F(TextTest, IsEqualTrimsAndIgnoresCase) {
  EXPECT_TRUE(IsEqual(" Abc ", "aBC"));
  EXPECT_TRUE(IsEqual("Größe", "GRÖSSE") == false);  // "ß" has no capital
  EXPECT_TRUE(IsEqual("größe", "GRÖßE"));
  EXPECT_FALSE(IsEqual("a b", "ab"));
}

TEST_F(TextTest, FindStringTakesTheNeedleFirst) {
  EXPECT_EQ(FindString("*.cpf", "*"), 1);  // the haystack is a prefix of the needle
  EXPECT_EQ(FindString(".", ""), 0);
  EXPECT_EQ(FindString("", "abc"), 1);
  EXPECT_EQ(FindString("C", "abc"), 3);
  EXPECT_EQ(FindString("ü", "Grün"), 3);  // code points, not bytes
  EXPECT_EQ(FindString("x", "abc"), 0);
}

TEST_F(TextTest, NvlTrimsAndDefaults) {
  EXPECT_EQ(Nvl(Variant::Null(), "x"), "x");
  EXPECT_EQ(Nvl(Variant("  "), " d "), "d");
  EXPECT_EQ(Nvl(Variant(" a "), "x"), "a");
  EXPECT_EQ(Nvl(Variant(1.5)), "1,5");
  EXPECT_EQ(Nvl(Variant(ArrayPtr{}), "x"), "");  // unreadable: empty, no failure
  EXPECT_THROW(NullIfEmpty(Variant(ArrayPtr{}), "x"), VbError);
}

TEST_F(TextTest, MakeIdentifierKeepsTheRangeFromAToz) {
  // The blank and the "%" both become "_", and only one of them is removed.
  EXPECT_EQ(MakeIdentifier("Straße %"), "Strasse_");
  EXPECT_EQ(MakeIdentifier("a[b]c^d`e\\f"), "a[b]c^d`e\\f");
  EXPECT_EQ(MakeIdentifier("Kunden-Nr."), "Kunden_Nr");
  EXPECT_EQ(MakeIdentifier("Größe 20%20"), "Groesse_20");
  EXPECT_EQ(MakeIdentifier("é{}"), "__");
}

TEST_F(TextTest, UmlautConversions) {
  EXPECT_EQ(ConvertUmlautsAscii("Äpfel Öl Übel ß%20x"), "AEpfel_OEl_UEbel_ssx");
  std::string escaped = ConvertUmlautsEscape("Bär Öse Fuß", true);
  EXPECT_EQ(escaped, "B@ae@r @Oe@se Fuß");
  EXPECT_EQ(ConvertUmlautsEscape(escaped, false), "Bär Öse Fuß");
}

TEST_F(TextTest, EscapeSpecialCharsIsNoExactInverse) {
  EXPECT_EQ(EscapeSpecialChars("a=b", true), "a[EQ]b");
  EXPECT_EQ(EscapeSpecialChars("\"x\" 'y' \r\n|\r|\n%20 5%", true),
            "[GF]x[GF] [HK]y[HK] [CRLF]|[CR]|[LF][LT] 5[PR]");
  // The backslash goes first, so a backslash-n never becomes a line break.
  EXPECT_EQ(EscapeSpecialChars("a\\nb", true), "a[BS]nb");
  EXPECT_EQ(EscapeSpecialChars("a[BS]nb", false), "a\\nb");
  EXPECT_EQ(EscapeSpecialChars(EscapeSpecialChars("%20", true), false), " ");
  EXPECT_EQ(EscapeSpecialChars("[GF][HK]\\'[CRLF][CR][LF][PR][EQ]", false), "\"''\r\n\r\n%=");
}

TEST_F(TextTest, SmallTextHelpers) {
  EXPECT_EQ(AsciiUpper("Größe_1 é"), "GRößE_1 é");  // unlike UpperCase, umlauts stay
  EXPECT_EQ(RemoveSuffix("Table.TXT", ".txt"), "Table");
  EXPECT_EQ(RemoveSuffix("ab", "abc"), "ab");
  EXPECT_EQ(Replicate("ab", 3), "ababab");
  EXPECT_EQ(RemoveString(" a-b-c ", "-"), "abc");
  EXPECT_EQ(PadLeft("7", 3, "0"), "007");
  EXPECT_EQ(PadLeft("Müller", 3, "0"), "Mül");
  EXPECT_EQ(PadRight("ab", 4, "xy"), "abxyxy");  // the pad text for each missing one
  EXPECT_EQ(QuoteString("a"), "\"a\"");
  EXPECT_EQ(AddSuffixOnce("C:\\x\\", "\\"), "C:\\x\\");
  EXPECT_EQ(AddPrefixOnce("x", "["), "[x");
  EXPECT_EQ(GetToken("a; b ;c", ";", 2), "b");
  EXPECT_EQ(GetToken("a;b", ";", 3), "");
  EXPECT_EQ(GetSubString("Key AS Value", " as ", true), "Key");
  EXPECT_EQ(GetSubString("Key AS Value", " as ", false), "Value");
  EXPECT_EQ(GetSubString("Key", "=", false), "Key");
  EXPECT_EQ(CleanWhitespaceEnd(" a\tb\r\n"), "ab");
  EXPECT_EQ(BoolToString(true), "TRUE");
  EXPECT_TRUE(IsChecked(Variant(1)));
  EXPECT_FALSE(IsChecked(Variant(2)));
}

TEST_F(TextTest, ToDoubleMakesSqlNumberText) {
  EXPECT_EQ(ToDouble(Variant("1.234,50")), "1234.50");
  EXPECT_EQ(ToDouble(Variant("")), "0");
  EXPECT_EQ(ToDouble(Variant(",5")), "0.5");
  EXPECT_EQ(ToDouble(Variant(-2.25)), "-2.25");
  EXPECT_EQ(ToDouble(Variant("abc")), "0");
  EXPECT_EQ(ToDouble(Variant::Null()), "0");
  RegionalGuard us(UsRegional());
  EXPECT_EQ(ToDouble(Variant(1234.5)), "12345");  // the point goes as a thousands separator
}

TEST_F(TextTest, FormatValueByAdoType) {
  Variant day = Variant::FromDate(DateSerial(2002, 12, 31) + TimeSerial(13, 5, 0));
  EXPECT_EQ(FormatValue(day, 135), "31.12.2002");
  EXPECT_EQ(FormatValue(Variant(1234.5), 5), "1.234,50");
  EXPECT_EQ(FormatValue(Variant("1234,5"), 131, "0.0"), "1234,5");
  EXPECT_EQ(FormatValue(Variant(" abc "), 202), "abc");
  EXPECT_EQ(FormatValue(Variant::Null(), 5), "");
  EXPECT_EQ(FormatValue(Variant("kein Datum"), 7), "");  // failure: what was built
}

TEST(Utf8Test, CountsAndCutsCodePoints) {
  EXPECT_EQ(CodePointCount("Grüße"), 5u);
  EXPECT_EQ(SubText("Grüße", 2, 2), "üß");
  EXPECT_EQ(UpperCase("äöüß"), "ÄÖÜß");
  EXPECT_EQ(LowerCase("ÄÖÜ"), "äöü");
  EXPECT_EQ(CodePointCount("a\xff"), 2u);  // a stray byte counts as one
}

}  // namespace
}  // namespace ketrova
