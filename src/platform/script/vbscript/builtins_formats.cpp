// FormatNumber, FormatCurrency and FormatPercent under the regional settings:
// "1.234,50", "1.234,50 €" and "12,50%" under German ones, "1,234.50",
// "$1,234.50" and "12.50%" under US ones. The value is taken to 15
// significant digits, as CStr has it, and rounded half away from zero.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/script/vbscript/builtins_common.h"
#include "support/regional.h"

namespace ketrova::script::vbscript {

namespace {

struct Options {
  int digits = 2;
  bool leadingDigit = true;
  bool parens = false;
  bool group = true;
};

Options ReadOptions(Args args, bool parensByDefault) {
  Options o;
  std::int32_t digits = LongArg(args, 1, -1);
  if (digits < -1 || digits > 255) RaiseInvalidArgument();
  o.digits = digits == -1 ? 2 : digits;
  o.leadingDigit = TristateArg(args, 2, true);
  o.parens = TristateArg(args, 3, parensByDefault);
  o.group = TristateArg(args, 4, true);
  return o;
}

// |value| as whole and fraction digits, rounded at `digits` places.
void Digits(double value, int digits, std::string& whole, std::string& fraction) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.14e", std::fabs(value));
  std::string mantissa;
  for (const char* p = buffer; *p && *p != 'e'; ++p)
    if (*p != '.') mantissa.push_back(*p);
  int exponent = std::atoi(std::strchr(buffer, 'e') + 1);
  // Place the digits around the decimal point: `point` digits before it.
  int point = exponent + 1;
  if (point <= 0) {
    mantissa.insert(0, static_cast<std::size_t>(-point + 1), '0');
    point = 1;
  }
  if (static_cast<int>(mantissa.size()) < point + digits)
    mantissa.append(static_cast<std::size_t>(point + digits) - mantissa.size(), '0');
  std::size_t keep = static_cast<std::size_t>(point + digits);
  bool roundUp = keep < mantissa.size() && mantissa[keep] >= '5';
  mantissa.resize(keep);
  if (roundUp) {
    int i = static_cast<int>(keep) - 1;
    for (; i >= 0 && mantissa[static_cast<std::size_t>(i)] == '9'; --i)
      mantissa[static_cast<std::size_t>(i)] = '0';
    if (i >= 0) {
      ++mantissa[static_cast<std::size_t>(i)];
    } else {
      mantissa.insert(mantissa.begin(), '1');
      ++point;
    }
  }
  whole = mantissa.substr(0, static_cast<std::size_t>(point));
  fraction = mantissa.substr(static_cast<std::size_t>(point));
  std::size_t nonZero = whole.find_first_not_of('0');
  whole = nonZero == std::string::npos ? "0" : whole.substr(nonZero);
}

// The number without sign decoration, and whether it shows as negative.
std::string FormatMagnitude(double value, const Options& o, bool& negative) {
  const RegionalSettings& settings = Regional();
  std::string whole, fraction;
  Digits(value, o.digits, whole, fraction);
  negative = value < 0 && (whole != "0" || fraction.find_first_not_of('0') != std::string::npos);
  if (o.group) {
    for (int i = static_cast<int>(whole.size()) - 3; i > 0; i -= 3)
      whole.insert(static_cast<std::size_t>(i), settings.thousandSeparator);
  }
  std::string out = (whole == "0" && !o.leadingDigit && o.digits > 0) ? "" : whole;
  if (o.digits > 0) out += settings.decimalSeparator + fraction;
  return out;
}

std::string Signed(std::string text, bool negative, bool parens) {
  if (!negative) return text;
  return parens ? "(" + text + ")" : "-" + text;
}

}  // namespace

// FormatNumber(expression[, digits[, leadingDigit[, parens[, group]]]]); the
// three switches are Tristates (-2 default, -1 True, 0 False).
Variant BiFormatNumber(Args args) {
  double value = args[0].ToDouble();
  Options o = ReadOptions(args, false);
  bool negative;
  std::string text = FormatMagnitude(value, o, negative);
  return Variant(Signed(text, negative, o.parens));
}

Variant BiFormatPercent(Args args) {
  double value = args[0].ToDouble() * 100.0;
  Options o = ReadOptions(args, false);
  bool negative;
  std::string text = FormatMagnitude(value, o, negative) + "%";
  return Variant(Signed(text, negative, o.parens));
}

// German currency stands behind the number ("-1.234,50 €"); US currency in
// front, negatives in parentheses ("($1,234.50)").
Variant BiFormatCurrency(Args args) {
  double value = args[0].ToDouble();
  bool german = Regional().german;
  Options o = ReadOptions(args, !german);
  bool negative;
  std::string text = FormatMagnitude(value, o, negative);
  text = german ? text + " €" : "$" + text;
  return Variant(Signed(text, negative, o.parens));
}

}  // namespace ketrova::script::vbscript
