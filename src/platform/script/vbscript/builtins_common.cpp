#include "platform/script/vbscript/builtins_common.h"

#include <locale.h>
#include <wctype.h>

namespace ketrova::script::vbscript {

std::int32_t LongArg(Args args, std::size_t i, std::int32_t fallback) {
  return Missing(args, i) ? fallback : args[i].ToLong();
}

bool TextCompareArg(Args args, std::size_t i) {
  if (Missing(args, i)) return false;
  std::int32_t mode = args[i].ToLong();
  if (mode != 0 && mode != 1) RaiseInvalidArgument();
  return mode == 1;
}

bool TristateArg(Args args, std::size_t i, bool byDefault) {
  if (Missing(args, i)) return byDefault;
  std::int32_t value = args[i].ToLong();
  if (value == -2) return byDefault;
  if (value != -1 && value != 0) RaiseInvalidArgument();
  return value == -1;
}

std::size_t Utf8Offset(std::string_view utf8, std::size_t chars) {
  std::size_t i = 0;
  for (; i < utf8.size(); ++i) {
    if ((static_cast<unsigned char>(utf8[i]) & 0xC0) != 0x80) {
      if (chars == 0) return i;
      --chars;
    }
  }
  return i;
}

bool IsAscii(std::string_view text) {
  for (unsigned char b : text)
    if (b >= 0x80) return false;
  return true;
}

std::u16string ToU16(std::string_view utf8) {
  std::u16string out;
  for (char32_t c : ToCodePoints(utf8)) {
    if (c >= 0x10000) {
      c -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(c));
    }
  }
  return out;
}

std::string FromU16(std::u16string_view text) {
  std::u32string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    out.push_back(c);
  }
  return FromCodePoints(out);
}

namespace {
// Case mapping goes by Unicode's simple mappings, which glibc's C.UTF-8
// locale holds whatever the process locale is.
locale_t CaseLocale() {
  static locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
  return locale;
}
}  // namespace

char32_t LowerChar(char32_t c) {
  if (c < 0x80) return (c >= 'A' && c <= 'Z') ? c + 32 : c;
  if (locale_t l = CaseLocale())
    return static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), l));
  if ((c >= 0xC0 && c <= 0xDE && c != 0xD7)) return c + 32;
  return c;
}

char32_t UpperChar(char32_t c) {
  if (c < 0x80) return (c >= 'a' && c <= 'z') ? c - 32 : c;
  if (locale_t l = CaseLocale())
    return static_cast<char32_t>(towupper_l(static_cast<wint_t>(c), l));
  if ((c >= 0xE0 && c <= 0xFE && c != 0xF7)) return c - 32;
  return c;
}

std::u32string Lower(std::u32string text) {
  for (char32_t& c : text) c = LowerChar(c);
  return text;
}

std::u32string Upper(std::u32string text) {
  for (char32_t& c : text) c = UpperChar(c);
  return text;
}

namespace {
// Windows-1252 at 0x80..0x9F; the bytes it leaves undefined map to themselves.
constexpr char32_t kAnsiHigh[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
}  // namespace

char32_t FromAnsi(std::uint8_t byte) {
  return byte >= 0x80 && byte <= 0x9F ? kAnsiHigh[byte - 0x80] : byte;
}

std::uint8_t ToAnsi(char32_t c) {
  if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<std::uint8_t>(c);
  for (int i = 0; i < 32; ++i)
    if (kAnsiHigh[i] == c) return static_cast<std::uint8_t>(0x80 + i);
  return '?';
}

}  // namespace ketrova::script::vbscript
