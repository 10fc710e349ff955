#include "support/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace ketrova {

namespace {

bool StartsWith(std::string_view s, std::string_view prefix) {
  return !prefix.empty() && s.substr(0, prefix.size()) == prefix;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

std::optional<std::string> RadixInteger(std::string_view digits, int radix) {
  if (digits.empty() || digits.size() > 22) return std::nullopt;
  std::uint64_t value = 0;
  auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value, radix);
  if (ec != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  // Up to four hex digits are an Integer, up to eight a Long: both signed.
  std::int64_t v = static_cast<std::int64_t>(value);
  if (radix == 16 && digits.size() <= 4 && value > 0x7FFF && value <= 0xFFFF)
    v -= 0x10000;
  else if (radix == 16 && digits.size() <= 8 && value > 0x7FFFFFFF && value <= 0xFFFFFFFF)
    v -= 0x100000000LL;
  return std::to_string(v);
}

}  // namespace

std::optional<std::string> NormalizeNumberText(std::string_view text,
                                               const RegionalSettings& settings) {
  std::string_view s = TrimBlanks(text);
  if (s.size() > 2 && s[0] == '&') {
    char kind = static_cast<char>(s[1] | 0x20);
    if (kind == 'h') return RadixInteger(s.substr(2), 16);
    if (kind == 'o') return RadixInteger(s.substr(2), 8);
    return std::nullopt;
  }
  std::string out;
  if (!s.empty() && (s[0] == '-' || s[0] == '+')) {
    if (s[0] == '-') out += '-';
    s = TrimBlanks(s.substr(1));
  }
  bool digits = false;
  bool fraction = false;
  while (!s.empty()) {
    if (IsDigit(s[0])) {
      out += s[0];
      digits = true;
      s.remove_prefix(1);
    } else if (!fraction && StartsWith(s, settings.decimalSeparator)) {
      out += '.';
      fraction = true;
      s.remove_prefix(settings.decimalSeparator.size());
    } else if (!fraction && StartsWith(s, settings.thousandSeparator)) {
      s.remove_prefix(settings.thousandSeparator.size());
    } else {
      break;
    }
  }
  if (!digits) return std::nullopt;
  if (!s.empty() && (s[0] == 'e' || s[0] == 'E' || s[0] == 'd' || s[0] == 'D')) {
    std::string exponent = "e";
    std::size_t i = 1;
    if (i < s.size() && (s[i] == '-' || s[i] == '+')) {
      if (s[i] == '-') exponent += '-';
      ++i;
    }
    std::size_t start = i;
    while (i < s.size() && IsDigit(s[i])) exponent += s[i++];
    if (i == start) return std::nullopt;
    out += exponent;
    s.remove_prefix(i);
  }
  if (!s.empty()) return std::nullopt;
  return out;
}

std::optional<double> ParseNumber(std::string_view text, const RegionalSettings& settings) {
  auto normal = NormalizeNumberText(text, settings);
  if (!normal) return std::nullopt;
  double value = 0;
  const char* begin = normal->data();
  const char* end = begin + normal->size();
  auto [ptr, ec] = std::from_chars(begin, end, value);
  if (ec == std::errc::result_out_of_range) return std::nullopt;
  if (ec != std::errc() || ptr != end) return std::nullopt;
  return value;
}

std::optional<double> ParseNumber(std::string_view text) {
  return ParseNumber(text, Regional());
}

std::string NumberToText(double value, int digits, const RegionalSettings& settings) {
  if (value == 0) return "0";
  // to_chars does not follow the C locale, which a GUI toolkit may have set.
  char buffer[64];
  auto result =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits);
  std::string text(buffer, result.ptr);
  for (char& c : text)
    if (c == 'e') c = 'E';
  std::size_t point = text.find('.');
  if (point != std::string::npos) text.replace(point, 1, settings.decimalSeparator);
  return text;
}

std::string NumberToText(double value, int digits) {
  return NumberToText(value, digits, Regional());
}

}  // namespace ketrova
