#include "support/text.h"

#include "support/dates.h"
#include "support/format.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {

bool IsEqual(std::string_view a, std::string_view b) {
  return UpperCase(TrimView(a)) == UpperCase(TrimView(b));
}

Variant NvlNull(const Variant& value, const Variant& defaultValue) {
  return value.IsNull() ? defaultValue : value;
}

std::string NullIfEmpty(const Variant& value, const Variant& defaultValue) {
  Variant v = NvlNull(value, defaultValue);
  std::string text = Trim(v.ToText());
  if (text.empty()) text = Trim(defaultValue.ToText());
  return text;
}

std::string Nvl(const Variant& value, const Variant& defaultValue) {
  try {
    return NullIfEmpty(value, defaultValue);
  } catch (...) {
    // Nvl catches every error and answers empty text.
    return {};
  }
}

int FindString(std::string_view needle, std::string_view haystack) {
  if (haystack.empty()) return 0;
  std::u32string n = ToCodePoints(UpperCase(needle));
  std::u32string h = ToCodePoints(UpperCase(haystack));
  if (n.substr(0, h.size()) == h) return 1;
  std::size_t pos = h.find(n);
  return pos == std::u32string::npos ? 0 : static_cast<int>(pos) + 1;
}

std::string ConvertUmlautsAscii(std::string_view text) {
  std::string s(text);
  static const char* const pairs[][2] = {{"ä", "ae"}, {"Ä", "AE"}, {"ö", "oe"},
                                         {"Ö", "OE"}, {"ü", "ue"}, {"Ü", "UE"},
                                         {"ß", "ss"}, {" ", "_"},  {"%20", ""}};
  for (const auto& p : pairs) s = ReplaceAll(s, p[0], p[1]);
  return s;
}

std::string ConvertUmlautsEscape(std::string_view text, bool encode) {
  static const char* const pairs[][2] = {{"ä", "@ae@"}, {"Ä", "@Ae@"}, {"ö", "@oe@"},
                                         {"Ö", "@Oe@"}, {"ü", "@ue@"}, {"Ü", "@Ue@"}};
  std::string s(text);
  for (const auto& p : pairs) s = encode ? ReplaceAll(s, p[0], p[1]) : ReplaceAll(s, p[1], p[0]);
  return s;
}

std::string EscapeSpecialChars(std::string_view text, bool encode) {
  // The order matters, and the pair is not an exact inverse; both as they are.
  static const char* const encoding[][2] = {
      {"\"", "[GF]"}, {"'", "[HK]"},  {"\\", "[BS]"},  {"\\n", "[CRLF]"}, {"\r\n", "[CRLF]"},
      {"\r", "[CR]"}, {"\n", "[LF]"}, {"%20", "[LT]"}, {"%", "[PR]"},     {"=", "[EQ]"}};
  static const char* const decoding[][2] = {{"[GF]", "\""}, {"[HK]", "'"},      {"\\'", "'"},
                                            {"[BS]", "\\"}, {"[CRLF]", "\r\n"}, {"[CRLF]", "\r\n"},
                                            {"[CR]", "\r"}, {"[LF]", "\n"},     {"[LT]", " "},
                                            {"[PR]", "%"},  {"[EQ]", "="}};
  std::string s(text);
  if (encode)
    for (const auto& p : encoding) s = ReplaceAll(s, p[0], p[1]);
  else
    for (const auto& p : decoding) s = ReplaceAll(s, p[0], p[1]);
  return s;
}

std::string AsciiUpper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return upper;
}

std::string AsciiLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

std::string RemoveSuffix(std::string_view text, std::string_view suffix) {
  std::size_t n = CodePointCount(text), k = CodePointCount(suffix);
  if (k > n) return std::string(text);
  std::string head = SubText(text, 0, n - k);
  if (IsEqual(std::string_view(text).substr(head.size()), suffix)) return head;
  return std::string(text);
}

std::string MakeIdentifier(std::string_view text) {
  std::string out;
  for (char32_t c : ToCodePoints(ConvertUmlautsAscii(text))) {
    bool keep = c == '_' || (c >= '0' && c <= '9') || (c >= 65 && c <= 122);
    out += keep ? static_cast<char>(c) : '_';
  }
  return RemoveSuffix(out, "_");
}

std::string Replicate(std::string_view text, int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += text;
  return out;
}

std::string RemoveString(std::string_view text, std::string_view what) {
  return Trim(ReplaceAll(text, what, ""));
}

std::string PadLeft(std::string_view text, int length, std::string_view pad) {
  auto n = static_cast<int>(CodePointCount(text));
  if (n >= length) return SubText(text, 0, static_cast<std::size_t>(std::max(length, 0)));
  return Replicate(pad, length - n) + std::string(text);
}

std::string PadRight(std::string_view text, int length, std::string_view pad) {
  auto n = static_cast<int>(CodePointCount(text));
  if (n >= length) return SubText(text, 0, static_cast<std::size_t>(std::max(length, 0)));
  return std::string(text) + Replicate(pad, length - n);
}

std::string QuoteString(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

std::string AddSuffixOnce(std::string_view text, std::string_view suffix) {
  if (text.ends_with(suffix)) return std::string(text);
  return std::string(text) + std::string(suffix);
}

std::string AddPrefixOnce(std::string_view text, std::string_view prefix) {
  if (text.starts_with(prefix)) return std::string(text);
  return std::string(prefix) + std::string(text);
}

std::string GetToken(std::string_view text, std::string_view delimiter, int index) {
  if (index < 1 || delimiter.empty()) return index == 1 ? Trim(text) : std::string();
  std::size_t start = 0;
  for (int i = 1;; ++i) {
    std::size_t end = text.find(delimiter, start);
    if (i == index)
      return Trim(text.substr(start, end == std::string_view::npos ? end : end - start));
    if (end == std::string_view::npos) return {};
    start = end + delimiter.size();
  }
}

std::string GetSubString(std::string_view text, std::string_view delimiter, bool leftPart) {
  if (delimiter.empty()) return std::string(text);
  // Upper-case folding keeps the byte lengths of ASCII and Latin-1 letters
  // except "ÿ"; search on the folded text and cut the original.
  std::string upperText = UpperCase(text);
  std::string upperDelimiter = UpperCase(delimiter);
  std::size_t pos =
      upperText.size() == text.size() ? upperText.find(upperDelimiter) : text.find(delimiter);
  if (pos == std::string::npos) return std::string(text);
  return leftPart ? std::string(text.substr(0, pos))
                  : std::string(text.substr(pos + delimiter.size()));
}

std::string CleanWhitespaceEnd(std::string_view text) {
  std::string s;
  for (char c : text)
    if (c != '\t' && c != '\r' && c != '\n') s += c;
  return Trim(s);
}

std::string BoolToString(bool value) {
  return value ? "TRUE" : "FALSE";
}

bool Bool(std::int16_t value) {
  return value != 0;
}

bool IsChecked(const Variant& value) {
  try {
    return !value.IsNull() && !value.IsEmpty() && IsNumeric(value) && value.ToDouble() == 1;
  } catch (const VbError&) {  // a number beyond a Double is not 1
    return false;
  }
}

std::string ToDouble(const Variant& value) {
  std::string s = NullIfEmpty(value, Variant(0));
  s = ReplaceAll(s, ".", "");
  s = ReplaceAll(s, ",", ".");
  if (!s.empty() && s[0] == '.') s = "0" + s;
  if (!IsNumeric(Variant(s))) s = "0";
  return s;
}

std::string FormatValue(const Variant& value, int adoType, std::string_view format, bool asLocal) {
  std::string result;
  try {
    std::string v = NullIfEmpty(value);
    if (v.empty()) return result;
    switch (adoType) {
      case 133:  // adDBDate
      case 7:    // adDate
      case 135:  // adDBTimeStamp
      case 134:  // adDBTime
        result = asLocal ? DateToLocalText(Variant(v)) : DateToGermanText(Variant(v));
        break;
      case 14:   // adDecimal
      case 5:    // adDouble
      case 6:    // adCurrency
      case 131:  // adNumeric
        result = Format(Variant(v), format.empty() ? std::string_view("#,##0.00") : format);
        break;
      default:
        result = format.empty() ? v : Format(Variant(v), format);
        break;
    }
  } catch (...) {
    // Formatting catches every error and answers what it has built.
  }
  return result;
}

}  // namespace ketrova
