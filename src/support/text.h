// Text helpers that every layer calls: how names are compared (IsEqual), how
// values default (Nvl), how names become script identifiers, and how text is
// made safe for the project file and for SQL. Their quirks are behaviour that
// other parts depend on, so they are kept exactly: FindString takes the needle
// first and finds a haystack that is a prefix of the needle at position 1;
// EscapeSpecialChars does not invert exactly ("%20" comes back as a blank).
//
// Texts are UTF-8; functions that count or cut characters count code points.
// Upper-case folding is VB's (Latin-1 letters included). Nothing here keeps
// state.
#pragma once

#include <string>
#include <string_view>

#include "support/variant.h"

namespace ketrova {

// True when both texts, trimmed of blanks and folded to upper case, are equal:
// the standard comparison of names.
bool IsEqual(std::string_view a, std::string_view b);

// The value, or the default when it is Null.
Variant NvlNull(const Variant& value, const Variant& defaultValue);
// The value as trimmed text; the default (trimmed) when it is Null or blank.
// A value that cannot be read as text gives "".
std::string Nvl(const Variant& value, const Variant& defaultValue = Variant(""));
// Nvl without the trap: a value that cannot be read raises its error.
std::string NullIfEmpty(const Variant& value, const Variant& defaultValue = Variant(""));

// 1-based position of the needle in the haystack, without regard to case; 1
// also when the haystack is a prefix of the needle; 0 for an empty haystack or
// when not found. An empty needle is found at 1.
int FindString(std::string_view needle, std::string_view haystack);

// A table or field name as a script identifier: umlauts spelled out, "_",
// digits and the characters from "A" to "z" kept (the six signs between "Z" and
// "a" included), every other character "_", then one trailing "_" removed.
std::string MakeIdentifier(std::string_view text);
// "ä" to "ae", "Ä" to "AE" ... "ß" to "ss", blank to "_", "%20" deleted.
std::string ConvertUmlautsAscii(std::string_view text);
// The umlauts to "@ae@", "@Ae@" ... and back; "ß" stays.
std::string ConvertUmlautsEscape(std::string_view text, bool encode);
// Quotes, backslashes, line breaks, "%" and "=" to "[GF]", "[BS]", "[CRLF]" ...
// and back. Not an exact inverse: "%20" encodes to "[LT]", which decodes to a
// blank.
std::string EscapeSpecialChars(std::string_view text, bool encode);

// The text with only the ASCII letters upper- or lower-cased; for names and
// keywords of files, paths, SQL and connection strings, where VB's folding of
// umlauts is not wanted.
std::string AsciiUpper(std::string_view text);
std::string AsciiLower(std::string_view text);
// The text without its last characters when they are IsEqual to the suffix.
std::string RemoveSuffix(std::string_view text, std::string_view suffix);
// The text `count` times (0 to 255).
std::string Replicate(std::string_view text, int count);
// Every occurrence of `what` deleted, then trimmed.
std::string RemoveString(std::string_view text, std::string_view what);
// The first `length` characters when the text is that long, otherwise the pad
// replicated for each missing character, in front (PadLeft) or behind.
std::string PadLeft(std::string_view text, int length, std::string_view pad = " ");
std::string PadRight(std::string_view text, int length, std::string_view pad = " ");
// The text between two double quotes.
std::string QuoteString(std::string_view text);
std::string AddSuffixOnce(std::string_view text, std::string_view suffix);
std::string AddPrefixOnce(std::string_view text, std::string_view prefix);
// The trimmed token of the 1-based index after a split at the delimiter; empty
// when there is none.
std::string GetToken(std::string_view text, std::string_view delimiter, int index);
// The text before (leftPart) or after the first delimiter, found without regard
// to case; the whole text when the delimiter is not there.
std::string GetSubString(std::string_view text, std::string_view delimiter, bool leftPart);
// Tabs, carriage returns and line feeds removed, then trimmed.
std::string CleanWhitespaceEnd(std::string_view text);
// "TRUE" or "FALSE".
std::string BoolToString(bool value);
// A 16-bit truth value: not 0.
bool Bool(std::int16_t value);
// A check box value: 1 is checked.
bool IsChecked(const Variant& value);

// A number as text for SQL: a German number text "1.234,50" becomes
// "1234.50"; blank gives "0", ",5" gives "0.5", anything not numeric "0".
// A number value is first written as CStr writes it, so under settings with a
// decimal point its point is deleted too (1234.5 gives "12345"), as it was.
std::string ToDouble(const Variant& value);
// A value as text for SQL by its ADO type: dates as DateToLocalText (or
// DateToGermanText when not asLocal), the numeric types with `format` or
// "#,##0.00", others with `format` when given. Blank gives "". Never raises:
// on an error, what was built so far.
std::string FormatValue(const Variant& value, int adoType, std::string_view format = {},
                        bool asLocal = true);

}  // namespace ketrova
