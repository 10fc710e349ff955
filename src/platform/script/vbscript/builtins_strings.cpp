// The string functions. A Null text gives Null where VBScript lets it through
// (Len, Left, Mid, InStr, Trim, LCase ...) and raises 94 where VBScript does
// (Asc, Chr, StrReverse, Space, Replace); a Null count or position raises 94.
#include <algorithm>
#include <cstdio>

#include "platform/script/vbscript/builtins_common.h"

namespace ketrova::script::vbscript {

namespace {

Variant Text(std::u32string_view text) {
  return Variant(FromCodePoints(text));
}

std::int32_t NonNegative(const Variant& v) {
  std::int32_t n = v.ToLong();
  if (n < 0) RaiseInvalidArgument();
  return n;
}

std::int32_t Positive(const Variant& v) {
  std::int32_t n = v.ToLong();
  if (n < 1) RaiseInvalidArgument();
  return n;
}

// The 1-based position of `needle` in `hay` from `start` (1-based), 0 when it
// is not there. An empty needle is found at `start` as long as that lies
// within or right behind the text.
template <typename Str>
std::int32_t Find(const Str& hay, const Str& needle, std::int32_t start) {
  if (hay.empty()) return 0;
  if (static_cast<std::size_t>(start) > hay.size() + (needle.empty() ? 1 : 0)) return 0;
  if (needle.empty()) return start;
  auto pos = hay.find(needle, static_cast<std::size_t>(start - 1));
  return pos == Str::npos ? 0 : static_cast<std::int32_t>(pos + 1);
}

// The UTF-16 form as bytes, little-endian, for the byte functions.
std::string Bytes(std::string_view utf8) {
  std::string out;
  for (char16_t u : ToU16(utf8)) {
    out.push_back(static_cast<char>(u & 0xFF));
    out.push_back(static_cast<char>(u >> 8));
  }
  return out;
}

// Byte functions cut at whole UTF-16 units: a half character has no UTF-8 form.
Variant FromBytesRange(std::string_view utf8, std::int64_t firstByte, std::int64_t byteCount) {
  std::u16string units = ToU16(utf8);
  std::int64_t total = static_cast<std::int64_t>(units.size()) * 2;
  firstByte = std::clamp<std::int64_t>(firstByte, 0, total);
  byteCount = std::clamp<std::int64_t>(byteCount, 0, total - firstByte);
  std::size_t first = static_cast<std::size_t>(firstByte / 2);
  std::size_t count = static_cast<std::size_t>((firstByte % 2 + byteCount) / 2);
  return Variant(FromU16(std::u16string_view(units).substr(first, count)));
}

std::u32string Fold(std::u32string text, bool textCompare) {
  return textCompare ? Lower(std::move(text)) : text;
}

// `source` with up to `count` (-1: every) occurrences of `needle` replaced,
// found in `hay`, which is `source` or its folded form of equal length.
template <typename Str>
Str ReplaceAll(const Str& source, const Str& hay, const Str& needle, const Str& with,
               std::int32_t count) {
  Str out;
  std::size_t pos = 0;
  for (std::int32_t done = 0; count == -1 || done < count; ++done) {
    std::size_t hit = hay.find(needle, pos);
    if (hit == Str::npos) break;
    out.append(source, pos, hit - pos);
    out.append(with);
    pos = hit + needle.size();
  }
  out.append(source, pos);
  return out;
}

Variant TrimText(Args args, std::string (*trim)(std::string_view)) {
  if (args[0].IsNull()) return Variant::Null();
  return Variant(trim(args[0].ToString()));
}

}  // namespace

Variant BiLen(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  return Variant::Long(static_cast<std::int32_t>(CodePointCount(args[0].ToString())));
}

Variant BiLenB(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  return Variant::Long(static_cast<std::int32_t>(ToU16(args[0].ToString()).size() * 2));
}

// Left, Right and Mid cut the UTF-8 text where the characters begin, without
// widening it: they run once per record in many conversion scripts.
Variant BiLeft(Args args) {
  std::int32_t n = NonNegative(args[1]);
  if (args[0].IsNull()) return Variant::Null();
  std::string s = args[0].ToString();
  s.resize(Utf8Offset(s, static_cast<std::size_t>(n)));
  return Variant(std::move(s));
}

Variant BiRight(Args args) {
  std::int32_t n = NonNegative(args[1]);
  if (args[0].IsNull()) return Variant::Null();
  std::string s = args[0].ToString();
  std::size_t count = CodePointCount(s);
  if (static_cast<std::size_t>(n) >= count) return Variant(std::move(s));
  return Variant(s.substr(Utf8Offset(s, count - static_cast<std::size_t>(n))));
}

Variant BiMid(Args args) {
  // A Null length raises 94 before the start is looked at.
  if (!Missing(args, 2) && args[2].IsNull()) throw VbError(94);
  std::int32_t start = Positive(args[1]);
  std::int32_t length = Missing(args, 2) ? -1 : NonNegative(args[2]);
  if (args[0].IsNull()) return Variant::Null();
  std::string s = args[0].ToString();
  std::string_view rest =
      std::string_view(s).substr(Utf8Offset(s, static_cast<std::size_t>(start - 1)));
  if (length >= 0) rest = rest.substr(0, Utf8Offset(rest, static_cast<std::size_t>(length)));
  return Variant(rest);
}

Variant BiLeftB(Args args) {
  std::int32_t n = NonNegative(args[1]);
  if (args[0].IsNull()) return Variant::Null();
  return FromBytesRange(args[0].ToString(), 0, n);
}

Variant BiRightB(Args args) {
  std::int32_t n = NonNegative(args[1]);
  if (args[0].IsNull()) return Variant::Null();
  std::string s = args[0].ToString();
  std::int64_t total = static_cast<std::int64_t>(ToU16(s).size()) * 2;
  std::int64_t count = std::min<std::int64_t>(n, total);
  return FromBytesRange(s, total - count, count);
}

Variant BiMidB(Args args) {
  std::int32_t start = Positive(args[1]);
  std::int32_t length = Missing(args, 2) ? -1 : NonNegative(args[2]);
  if (args[0].IsNull()) return Variant::Null();
  return FromBytesRange(args[0].ToString(), start - 1, length < 0 ? INT64_MAX / 2 : length);
}

// InStr([start, ]string1, string2[, compare]): the start is there when three or
// more arguments are.
Variant BiInStr(Args args) {
  bool withStart = args.size() >= 3;
  std::int32_t start = withStart && !Missing(args, 0) ? Positive(args[0]) : 1;
  const Variant& s1 = args[withStart ? 1 : 0];
  const Variant& s2 = args[withStart ? 2 : 1];
  bool text = TextCompareArg(args, 3);
  if (s1.IsNull() || s2.IsNull()) return Variant::Null();
  if (text)
    return Variant::Long(Find(Fold(ToCodePoints(s1.ToString()), true),
                              Fold(ToCodePoints(s2.ToString()), true), start));
  // Binary compare finds the bytes; UTF-8 never matches inside a character.
  std::string hay = s1.ToString(), needle = s2.ToString();
  std::size_t length = CodePointCount(hay);
  if (hay.empty() || static_cast<std::size_t>(start) > length + (needle.empty() ? 1 : 0))
    return Variant::Long(0);
  if (needle.empty()) return Variant::Long(start);
  std::size_t pos = hay.find(needle, Utf8Offset(hay, static_cast<std::size_t>(start - 1)));
  if (pos == std::string::npos) return Variant::Long(0);
  return Variant::Long(
      static_cast<std::int32_t>(CodePointCount(std::string_view(hay).substr(0, pos)) + 1));
}

Variant BiInStrB(Args args) {
  bool withStart = args.size() >= 3;
  std::int32_t start = withStart && !Missing(args, 0) ? Positive(args[0]) : 1;
  const Variant& s1 = args[withStart ? 1 : 0];
  const Variant& s2 = args[withStart ? 2 : 1];
  bool text = TextCompareArg(args, 3);
  if (s1.IsNull() || s2.IsNull()) return Variant::Null();
  auto bytes = [text](const Variant& v) {
    return Bytes(FromCodePoints(Fold(ToCodePoints(v.ToString()), text)));
  };
  return Variant::Long(Find(bytes(s1), bytes(s2), start));
}

// InStrRev(string1, string2[, start[, compare]]): the last match that ends at
// or before `start`.
Variant BiInStrRev(Args args) {
  std::int32_t start = LongArg(args, 2, -1);
  if (start == 0 || start < -1) RaiseInvalidArgument();
  bool text = TextCompareArg(args, 3);
  // Unlike InStr, a Null text is no Null result but 94.
  if (args[0].IsNull() || args[1].IsNull()) throw VbError(94);
  std::u32string hay = Fold(ToCodePoints(args[0].ToString()), text);
  std::u32string needle = Fold(ToCodePoints(args[1].ToString()), text);
  std::size_t length = hay.size();
  if (start == -1) start = static_cast<std::int32_t>(length);
  if (hay.empty() || static_cast<std::size_t>(start) > length) return Variant::Long(0);
  if (needle.empty()) return Variant::Long(start);
  if (needle.size() > static_cast<std::size_t>(start)) return Variant::Long(0);
  auto pos = hay.rfind(needle, static_cast<std::size_t>(start) - needle.size());
  return Variant::Long(pos == std::u32string::npos ? 0 : static_cast<std::int32_t>(pos + 1));
}

// Replace(expression, find, replacewith[, start[, count[, compare]]]): the
// result begins at `start`; what stands before it is dropped.
Variant BiReplace(Args args) {
  std::string expr = args[0].ToString();
  std::string find = args[1].ToString();
  std::string with = args[2].ToString();
  std::int32_t start = Missing(args, 3) ? 1 : Positive(args[3]);
  std::int32_t count = LongArg(args, 4, -1);
  if (count < -1) RaiseInvalidArgument();
  bool text = TextCompareArg(args, 5);
  std::string source = expr.substr(Utf8Offset(expr, static_cast<std::size_t>(start - 1)));
  if (find.empty() || count == 0) return Variant(std::move(source));
  if (!text) return Variant(ReplaceAll(source, source, find, with, count));
  std::u32string wide = ToCodePoints(source);
  return Text(ReplaceAll(wide, Lower(wide), Lower(ToCodePoints(find)), ToCodePoints(with), count));
}

// StrComp(string1, string2[, compare]): -1, 0 or 1 as an Integer.
Variant BiStrComp(Args args) {
  bool text = TextCompareArg(args, 2);
  if (args[0].IsNull() || args[1].IsNull()) return Variant::Null();
  std::u32string a = Fold(ToCodePoints(args[0].ToString()), text);
  std::u32string b = Fold(ToCodePoints(args[1].ToString()), text);
  int c = a.compare(b);
  return Variant::Integer(static_cast<std::int16_t>(c < 0 ? -1 : c > 0 ? 1 : 0));
}

Variant BiLTrim(Args args) {
  return TrimText(args, LTrim);
}
Variant BiRTrim(Args args) {
  return TrimText(args, RTrim);
}
Variant BiTrim(Args args) {
  return TrimText(args, Trim);
}

Variant BiLCase(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  std::string s = args[0].ToString();
  if (!IsAscii(s)) return Text(Lower(ToCodePoints(s)));
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return Variant(std::move(s));
}

Variant BiUCase(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  std::string s = args[0].ToString();
  if (!IsAscii(s)) return Text(Upper(ToCodePoints(s)));
  for (char& c : s)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return Variant(std::move(s));
}

Variant BiSpace(Args args) {
  return Variant(std::string(static_cast<std::size_t>(NonNegative(args[0])), ' '));
}

// String(number, character): the character is the first of a text or a code,
// taken modulo 256.
// A Null count, like a Null character, gives Null (the language reference).
Variant BiString(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  std::int32_t n = NonNegative(args[0]);
  if (args[1].IsNull()) return Variant::Null();
  char32_t c;
  if (args[1].IsString()) {
    std::u32string s = ToCodePoints(args[1].AsString());
    if (s.empty()) RaiseInvalidArgument();
    c = s[0];
  } else {
    std::int32_t code = args[1].ToLong();
    if (code < 0) RaiseInvalidArgument();
    c = FromAnsi(static_cast<std::uint8_t>(code % 256));
  }
  return Text(std::u32string(static_cast<std::size_t>(n), c));
}

Variant BiStrReverse(Args args) {
  std::u32string s = ToCodePoints(args[0].ToString());
  std::reverse(s.begin(), s.end());
  return Text(s);
}

Variant BiAsc(Args args) {
  std::u32string s = ToCodePoints(args[0].ToString());
  if (s.empty()) RaiseInvalidArgument();
  return Variant::Integer(ToAnsi(s[0]));
}

Variant BiAscW(Args args) {
  std::u16string s = ToU16(args[0].ToString());
  if (s.empty()) RaiseInvalidArgument();
  return Variant::Integer(static_cast<std::int16_t>(s[0]));
}

Variant BiAscB(Args args) {
  std::u16string s = ToU16(args[0].ToString());
  if (s.empty()) RaiseInvalidArgument();
  return Variant::Integer(static_cast<std::int16_t>(s[0] & 0xFF));
}

Variant BiChr(Args args) {
  std::int32_t code = args[0].ToLong();
  if (code < 0 || code > 255) RaiseInvalidArgument();
  return Text(std::u32string(1, FromAnsi(static_cast<std::uint8_t>(code))));
}

Variant BiChrW(Args args) {
  std::int32_t code = args[0].ToLong();
  if (code < -32768 || code > 65535) RaiseInvalidArgument();
  if (code < 0) code += 65536;
  return Variant(FromU16(std::u16string(1, static_cast<char16_t>(code))));
}

// ChrB gives a single byte in VBScript; here the character of that code, since
// half a UTF-16 unit has no text of its own.
Variant BiChrB(Args args) {
  std::int32_t code = args[0].ToLong();
  if (code < 0 || code > 255) RaiseInvalidArgument();
  return Text(std::u32string(1, static_cast<char32_t>(code)));
}

// Escape leaves letters, digits and @*_+-./ alone and writes the rest as %XX or
// %uXXXX of its UTF-16 units.
Variant BiEscape(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  static constexpr std::string_view kPlain = "@*_+-./";
  std::string out;
  char buffer[8];
  for (char16_t u : ToU16(args[0].ToString())) {
    if ((u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || (u >= '0' && u <= '9') ||
        (u < 0x80 && kPlain.find(static_cast<char>(u)) != std::string_view::npos)) {
      out.push_back(static_cast<char>(u));
    } else if (u < 0x100) {
      std::snprintf(buffer, sizeof buffer, "%%%02X", static_cast<unsigned>(u));
      out += buffer;
    } else {
      std::snprintf(buffer, sizeof buffer, "%%u%04X", static_cast<unsigned>(u));
      out += buffer;
    }
  }
  return Variant(out);
}

Variant BiUnescape(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  std::u16string in = ToU16(args[0].ToString());
  auto hex = [&in](std::size_t at, std::size_t digits, char16_t& value) {
    if (at + digits > in.size()) return false;
    value = 0;
    for (std::size_t k = at; k < at + digits; ++k) {
      char16_t c = in[k];
      int d = (c >= '0' && c <= '9')   ? c - '0'
              : (c >= 'a' && c <= 'f') ? c - 'a' + 10
              : (c >= 'A' && c <= 'F') ? c - 'A' + 10
                                       : -1;
      if (d < 0) return false;
      value = static_cast<char16_t>(value * 16 + d);
    }
    return true;
  };
  std::u16string out;
  for (std::size_t i = 0; i < in.size(); ++i) {
    char16_t value;
    if (in[i] == '%' && i + 1 < in.size() && in[i + 1] == 'u' && hex(i + 2, 4, value)) {
      out.push_back(value);
      i += 5;
    } else if (in[i] == '%' && hex(i + 1, 2, value)) {
      out.push_back(value);
      i += 2;
    } else {
      out.push_back(in[i]);
    }
  }
  return Variant(FromU16(out));
}

}  // namespace ketrova::script::vbscript
