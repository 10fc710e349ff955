#include "builtin_call.h"

namespace ketrova::script::vbscript::testing {
namespace {

using StringFunctions = GermanSettings;

TEST_F(StringFunctions, LengthsCountCharactersAndUtf16Bytes) {
  EXPECT_EQ(Text("Len", "Straße"), "6");
  EXPECT_EQ(Text("Len", Variant()), "0");
  EXPECT_EQ(Text("Len", 1234), "4");
  EXPECT_EQ(Text("Len", Null()), "Null");
  EXPECT_EQ(Text("LenB", "ab"), "4");
  EXPECT_EQ(Text("LenB", "a\xF0\x9F\x98\x80"), "6");  // a surrogate pair counts twice
  EXPECT_EQ(Call("Len", "x").Type(), vbLong);
}

TEST_F(StringFunctions, LeftRightMidCutAtCharacters) {
  EXPECT_EQ(Text("Left", "Straße", 5), "Straß");
  EXPECT_EQ(Text("Left", "abc", 10), "abc");
  EXPECT_EQ(Text("Right", "Straße", 3), "aße");
  EXPECT_EQ(Text("Mid", "Straße", 5), "ße");
  EXPECT_EQ(Text("Mid", "abcdef", 2, 3), "bcd");
  EXPECT_EQ(Text("Mid", "abc", 5), "");
  EXPECT_EQ(Text("Left", Null(), 2), "Null");
  EXPECT_EQ(Text("Mid", Null(), 1, 1), "Null");
  EXPECT_EQ(ErrorOf("Left", "abc", -1), 5);
  EXPECT_EQ(ErrorOf("Mid", "abc", 0), 5);
  EXPECT_EQ(ErrorOf("Mid", "abc", 1, -1), 5);
  EXPECT_EQ(ErrorOf("Left", "abc", Null()), 94);
}

TEST_F(StringFunctions, ByteVariantsWorkOnUtf16Bytes) {
  EXPECT_EQ(Text("LeftB", "äbc", 4), "äb");
  EXPECT_EQ(Text("RightB", "abc", 2), "c");
  EXPECT_EQ(Text("MidB", "abcd", 3, 4), "bc");
  EXPECT_EQ(Text("InStrB", "abc", "c"), "5");
  EXPECT_EQ(Text("AscB", "Ā"), "0");  // U+0100: low byte first
}

TEST_F(StringFunctions, InStrTakesItsStartOnlyWithThreeArguments) {
  EXPECT_EQ(Text("InStr", "abcabc", "c"), "3");
  EXPECT_EQ(Text("InStr", 4, "abcabc", "c"), "6");
  EXPECT_EQ(Text("InStr", "Grüße", "ße"), "4");
  EXPECT_EQ(Text("InStr", 2, "äöäö", "ä"), "3");
  EXPECT_EQ(Text("InStr", 1, "GRÜSSE", "ü", 1), "3");
  EXPECT_EQ(Text("InStr", 1, "GRÜSSE", "ü", 0), "0");
  EXPECT_EQ(Text("InStr", "abc", ""), "1");
  EXPECT_EQ(Text("InStr", 3, "abc", ""), "3");
  EXPECT_EQ(Text("InStr", "", "a"), "0");
  EXPECT_EQ(Text("InStr", 9, "abc", "a"), "0");
  EXPECT_EQ(Text("InStr", Null(), "a"), "Null");
  EXPECT_EQ(Text("InStr", "a", Null()), "Null");
  EXPECT_EQ(ErrorOf("InStr", 0, "a", "a"), 5);
  EXPECT_EQ(ErrorOf("InStr", Null(), "a", "a"), 94);
  EXPECT_EQ(ErrorOf("InStr", 1, "a", "a", 2), 5);
}

TEST_F(StringFunctions, InStrRevFindsTheLastMatchEndingBeforeStart) {
  EXPECT_EQ(Text("InStrRev", "abcabc", "bc"), "5");
  EXPECT_EQ(Text("InStrRev", "abcabc", "bc", 5), "2");
  EXPECT_EQ(Text("InStrRev", "abcABC", "bc", -1, 1), "5");
  EXPECT_EQ(Text("InStrRev", "abc", ""), "3");
  EXPECT_EQ(Text("InStrRev", "abc", "a", 9), "0");
  EXPECT_EQ(ErrorOf("InStrRev", Null(), "a"), 94);  // unlike InStr, no Null result
  EXPECT_EQ(ErrorOf("InStrRev", "abc", "a", 0), 5);
}

TEST_F(StringFunctions, ReplaceStartsTheResultAtStart) {
  EXPECT_EQ(Text("Replace", "abcabc", "b", "X"), "aXcaXc");
  EXPECT_EQ(Text("Replace", "abcabc", "b", "X", 3), "caXc");
  EXPECT_EQ(Text("Replace", "äbcäbc", "b", "X", 3), "cäXc");
  EXPECT_EQ(Text("Replace", "abcabc", "b", "X", 1, 1), "aXcabc");
  EXPECT_EQ(Text("Replace", "ÄbäB", "ä", "-", 1, -1, 1), "-b-B");
  EXPECT_EQ(Text("Replace", "abc", "", "X"), "abc");
  EXPECT_EQ(Text("Replace", "abc", "b", ""), "ac");
  EXPECT_EQ(Text("Replace", "abc", "b", "X", 9), "");
  EXPECT_EQ(Text("Replace", "aaa", "a", "aa"), "aaaaaa");
  EXPECT_EQ(ErrorOf("Replace", Null(), "a", "b"), 94);
  EXPECT_EQ(ErrorOf("Replace", "a", "a", "b", 0), 5);
}

TEST_F(StringFunctions, StrCompOrdersBinaryOrIgnoringCase) {
  EXPECT_EQ(Text("StrComp", "a", "B"), "1");
  EXPECT_EQ(Text("StrComp", "a", "B", 1), "-1");
  EXPECT_EQ(Text("StrComp", "Äpfel", "äPFEL", 1), "0");
  EXPECT_EQ(Text("StrComp", 10, 9), "-1");  // compared as texts
  EXPECT_EQ(Text("StrComp", "a", Null()), "Null");
  EXPECT_EQ(Call("StrComp", "a", "a").Type(), vbInteger);
}

TEST_F(StringFunctions, TrimAndCase) {
  EXPECT_EQ(Text("Trim", "  a b  "), "a b");
  EXPECT_EQ(Text("LTrim", "  a "), "a ");
  EXPECT_EQ(Text("RTrim", " a  "), " a");
  EXPECT_EQ(Text("Trim", "\ta\t"), "\ta\t");  // blanks only
  EXPECT_EQ(Text("Trim", Null()), "Null");
  EXPECT_EQ(Text("UCase", "straße äöü"), "STRAßE ÄÖÜ");
  EXPECT_EQ(Text("LCase", "ÄÖÜ ΣX"), "äöü σx");
  EXPECT_EQ(Text("UCase", Null()), "Null");
}

TEST_F(StringFunctions, SpaceStringAndStrReverse) {
  EXPECT_EQ(Text("Space", 3), "   ");
  EXPECT_EQ(Text("String", 3, "äb"), "äää");
  EXPECT_EQ(Text("String", 2, 65), "AA");
  EXPECT_EQ(Text("String", 2, 321), "AA");  // codes wrap at 256
  EXPECT_EQ(Text("String", 2, Null()), "Null");
  EXPECT_EQ(Text("String", Null(), "a"), "Null");
  EXPECT_EQ(Text("StrReverse", "Straße"), "eßartS");
  EXPECT_EQ(ErrorOf("Space", -1), 5);
  EXPECT_EQ(ErrorOf("String", -1, "a"), 5);
  EXPECT_EQ(ErrorOf("String", 2, ""), 5);
  EXPECT_EQ(ErrorOf("StrReverse", Null()), 94);
}

TEST_F(StringFunctions, CharacterCodesUseWindows1252AndUtf16) {
  EXPECT_EQ(Text("Asc", "A"), "65");
  EXPECT_EQ(Text("Asc", "€uro"), "128");
  EXPECT_EQ(Text("Asc", "ä"), "228");
  EXPECT_EQ(Text("Chr", 128), "€");
  EXPECT_EQ(Text("Chr", 252), "ü");
  EXPECT_EQ(Text("AscW", "€"), "8364");
  EXPECT_EQ(Text("ChrW", 8364), "€");
  EXPECT_EQ(Text("AscW", Call("ChrW", -1)), "-1");
  EXPECT_EQ(ErrorOf("Asc", ""), 5);
  EXPECT_EQ(ErrorOf("Asc", Null()), 94);
  EXPECT_EQ(ErrorOf("Chr", 256), 5);
  EXPECT_EQ(ErrorOf("ChrW", 65536), 5);
  EXPECT_EQ(ErrorOf("Chr", Null()), 94);
}

TEST_F(StringFunctions, EscapeAndUnescape) {
  EXPECT_EQ(Text("Escape", "a b+c/ä€"), "a%20b+c/%E4%u20AC");
  EXPECT_EQ(Text("Unescape", "a%20b%E4%u20AC%zz%"), "a bä€%zz%");
  EXPECT_EQ(Text("Unescape", Call("Escape", "x=1&y=\"ü\"")), "x=1&y=\"ü\"");
  EXPECT_EQ(Text("Escape", Null()), "Null");
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
