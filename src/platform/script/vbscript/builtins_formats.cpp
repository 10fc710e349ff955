// FormatNumber, FormatCurrency and FormatPercent under the regional settings:
// "1.234,50", "1.234,50 €" and "12,50%" under German ones, "1,234.50",
// "$1,234.50" and "12.50%" under US ones. Each builds a pattern for VB's
// Format from its switches; Format rounds half away from zero on the value's
// 15-digit text, as these functions do.
#include <string>

#include "platform/script/vbscript/builtins_common.h"
#include "support/format.h"
#include "support/regional.h"

namespace ketrova::script::vbscript {

namespace {

// The number part of the pattern from the arguments after the value:
// digits[, leadingDigit[, parens[, group]]], the switches as Tristates (-2
// default, -1 True, 0 False). `parens` tells whether negatives go in
// parentheses.
std::string NumberPattern(Args args, bool parensByDefault, bool& parens) {
  std::int32_t digits = LongArg(args, 1, -1);
  if (digits < -1 || digits > 255) RaiseInvalidArgument();
  if (digits == -1) digits = 2;
  bool leadingDigit = TristateArg(args, 2, true);
  parens = TristateArg(args, 3, parensByDefault);
  bool group = TristateArg(args, 4, true);
  std::string lastWhole = leadingDigit || digits == 0 ? "0" : "#";
  std::string pattern = (group ? "#,##" : "") + lastWhole;
  if (digits > 0) pattern += "." + std::string(static_cast<std::size_t>(digits), '0');
  return pattern;
}

// The value under `positive`, and in parentheses when negative and asked for.
// A Null value raises 13 (a Null switch 94).
Variant FormatWith(const Variant& value, const std::string& positive, bool parens) {
  if (value.IsNull()) throw VbError(13);
  double number = value.ToDouble();
  return Variant(Format(Variant(number), parens ? positive + ";(" + positive + ")" : positive));
}

}  // namespace

Variant BiFormatNumber(Args args) {
  bool parens;
  std::string pattern = NumberPattern(args, false, parens);
  return FormatWith(args[0], pattern, parens);
}

Variant BiFormatPercent(Args args) {
  bool parens;
  std::string pattern = NumberPattern(args, false, parens) + "%";
  return FormatWith(args[0], pattern, parens);
}

// German currency stands behind the number ("-1.234,50 €"); US currency in
// front, negatives in parentheses by default ("($1,234.50)").
Variant BiFormatCurrency(Args args) {
  bool german = Regional().german;
  bool parens;
  std::string pattern = NumberPattern(args, !german, parens);
  pattern = german ? pattern + " \"€\"" : "$" + pattern;
  return FormatWith(args[0], pattern, parens);
}

}  // namespace ketrova::script::vbscript
