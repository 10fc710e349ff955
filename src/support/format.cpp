#include "support/format.h"

#include <charconv>
#include <cmath>
#include <vector>

#include "support/date_text.h"
#include "support/number_text.h"
#include "support/ole_date.h"
#include "support/regional.h"
#include "support/utf8.h"

namespace ketrova {

namespace {

const char* const kMonthsDe[] = {"Januar",    "Februar", "März",     "April",
                                 "Mai",       "Juni",    "Juli",     "August",
                                 "September", "Oktober", "November", "Dezember"};
const char* const kMonthsEn[] = {"January",   "February", "March",    "April",
                                 "May",       "June",     "July",     "August",
                                 "September", "October",  "November", "December"};
const char* const kMonthsShortDe[] = {"Jan", "Feb", "Mär", "Apr", "Mai", "Jun",
                                      "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"};
const char* const kDaysDe[] = {"Sonntag",    "Montag",  "Dienstag", "Mittwoch",
                               "Donnerstag", "Freitag", "Samstag"};
const char* const kDaysEn[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                               "Thursday", "Friday", "Saturday"};
const char* const kDaysShortDe[] = {"So", "Mo", "Di", "Mi", "Do", "Fr", "Sa"};

// One element of a pattern: a literal or a format character.
struct Item {
  bool literal = false;
  std::string text;  // the literal, or the format character
};

// Splits a pattern into sections at ";" and each into items; quotes and
// backslashes make literals.
std::vector<std::vector<Item>> ParsePattern(std::string_view pattern) {
  std::vector<std::vector<Item>> sections(1);
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    char c = pattern[i];
    if (c == '"') {
      std::size_t end = pattern.find('"', i + 1);
      if (end == std::string_view::npos) end = pattern.size();
      sections.back().push_back({true, std::string(pattern.substr(i + 1, end - i - 1))});
      i = end;
    } else if (c == '\\' && i + 1 < pattern.size()) {
      std::size_t len = 1;
      auto b = static_cast<unsigned char>(pattern[i + 1]);
      if (b >= 0xC0) len = b >= 0xF0 ? 4 : b >= 0xE0 ? 3 : 2;
      sections.back().push_back({true, std::string(pattern.substr(i + 1, len))});
      i += len;
    } else if (c == ';') {
      sections.emplace_back();
    } else {
      sections.back().push_back({false, std::string(1, c)});
    }
  }
  return sections;
}

bool HasChar(const std::vector<Item>& items, std::string_view chars) {
  for (const auto& item : items)
    if (!item.literal && chars.find(item.text[0]) != std::string_view::npos) return true;
  return false;
}

std::string Two(int v) {
  return v < 10 ? "0" + std::to_string(v) : std::to_string(v);
}

// ---- numbers ----

// The decimal digits of |value| with `fraction` places, rounded half away from
// zero on its 15-digit text: whole part and fraction part.
void RoundedDigits(double value, int fraction, std::string& whole, std::string& frac) {
  value = std::fabs(value);
  char buffer[64];
  auto r = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific, 14);
  std::string text(buffer, r.ptr);
  std::size_t e = text.find('e');
  int exponent = std::stoi(text.substr(e + 1));
  std::string digits = text.substr(0, 1) + text.substr(2, e - 2);  // 15 digits
  // Position of the decimal point within `digits`.
  int point = exponent + 1;
  if (point < 0) {
    digits.insert(0, static_cast<std::size_t>(-point), '0');
    point = 0;
  }
  while (static_cast<int>(digits.size()) < point + fraction + 1) digits += '0';
  std::size_t keep = static_cast<std::size_t>(point + fraction);
  bool up = digits[keep] >= '5';
  digits.resize(keep);
  if (up) {
    int i = static_cast<int>(digits.size()) - 1;
    for (; i >= 0; --i) {
      if (digits[static_cast<std::size_t>(i)] == '9') {
        digits[static_cast<std::size_t>(i)] = '0';
      } else {
        ++digits[static_cast<std::size_t>(i)];
        break;
      }
    }
    if (i < 0) {
      digits.insert(0, "1");
      ++point;
    }
  }
  whole = digits.substr(0, static_cast<std::size_t>(point));
  frac = digits.substr(static_cast<std::size_t>(point));
  std::size_t nonzero = whole.find_first_not_of('0');
  whole = nonzero == std::string::npos ? "" : whole.substr(nonzero);
}

std::string Group(const std::string& digits, const std::string& separator) {
  std::string out;
  int n = static_cast<int>(digits.size());
  for (int i = 0; i < n; ++i) {
    if (i > 0 && (n - i) % 3 == 0) out += separator;
    out += digits[static_cast<std::size_t>(i)];
  }
  return out;
}

std::string FormatNumberSection(double value, const std::vector<Item>& items,
                                const RegionalSettings& r) {
  // Where the parts of the pattern are.
  int decimalAt = -1, exponentAt = -1;
  int n = static_cast<int>(items.size());
  for (int i = 0; i < n; ++i) {
    const auto& it = items[static_cast<std::size_t>(i)];
    if (it.literal) continue;
    char c = it.text[0];
    if (c == '.' && decimalAt < 0 && exponentAt < 0) decimalAt = i;
    if ((c == 'E' || c == 'e') && exponentAt < 0 && i + 1 < n &&
        !items[static_cast<std::size_t>(i + 1)].literal &&
        (items[static_cast<std::size_t>(i + 1)].text == "+" ||
         items[static_cast<std::size_t>(i + 1)].text == "-"))
      exponentAt = i;
  }
  int mantissaEnd = exponentAt >= 0 ? exponentAt : n;
  int intEnd = decimalAt >= 0 ? decimalAt : mantissaEnd;
  auto isDigit = [&](int i) {
    const auto& it = items[static_cast<std::size_t>(i)];
    return !it.literal && (it.text == "0" || it.text == "#");
  };
  int intPlaces = 0, minInt = 0, fracPlaces = 0, firstDigit = -1, lastIntDigit = -1;
  bool grouping = false, percent = false;
  int scale = 0;
  for (int i = 0; i < intEnd; ++i) {
    if (isDigit(i)) {
      ++intPlaces;
      if (items[static_cast<std::size_t>(i)].text == "0") ++minInt;
      if (firstDigit < 0) firstDigit = i;
      lastIntDigit = i;
    }
  }
  for (int i = 0; i < mantissaEnd; ++i) {
    const auto& it = items[static_cast<std::size_t>(i)];
    if (it.literal) continue;
    if (it.text == "%") percent = true;
    if (it.text == "," && i < intEnd) {
      if (i > firstDigit && firstDigit >= 0 && i < lastIntDigit)
        grouping = true;
      else if (i > lastIntDigit && lastIntDigit >= 0)
        ++scale;  // "#," divides by 1000
    }
  }
  for (int i = intEnd + 1; i < mantissaEnd; ++i)
    if (isDigit(i)) ++fracPlaces;
  if (firstDigit < 0 && decimalAt >= 0) {
    for (int i = decimalAt + 1; i < mantissaEnd; ++i)
      if (isDigit(i)) {
        firstDigit = i;
        break;
      }
  }
  if (percent) value *= 100;
  value /= std::pow(1000.0, scale);

  std::string whole, frac, exponentText;
  if (exponentAt >= 0) {
    int places = std::max(intPlaces, 1);
    int exponent = 0;
    if (value != 0)
      exponent = static_cast<int>(std::floor(std::log10(std::fabs(value)))) - (places - 1);
    double mantissa = std::fabs(value) / std::pow(10.0, exponent);
    RoundedDigits(mantissa, fracPlaces, whole, frac);
    if (static_cast<int>(whole.size()) > places) {
      ++exponent;
      RoundedDigits(std::fabs(value) / std::pow(10.0, exponent), fracPlaces, whole, frac);
    }
    bool plus = items[static_cast<std::size_t>(exponentAt + 1)].text == "+";
    int expDigits = 0;
    for (int i = exponentAt + 2; i < n && isDigit(i); ++i) ++expDigits;
    std::string e = std::to_string(std::abs(exponent));
    while (static_cast<int>(e.size()) < expDigits) e = "0" + e;
    exponentText = items[static_cast<std::size_t>(exponentAt)].text +
                   (exponent < 0 ? "-"
                    : plus       ? "+"
                                 : "") +
                   e;
  } else {
    RoundedDigits(value, fracPlaces, whole, frac);
  }
  while (static_cast<int>(whole.size()) < minInt) whole = "0" + whole;

  std::string out;
  // Whole part: digits fill the placeholders from the right; the first
  // placeholder takes all that are left.
  std::vector<std::string> parts(static_cast<std::size_t>(intEnd));
  std::string pending = whole;
  for (int i = intEnd - 1; i >= 0; --i) {
    const auto& it = items[static_cast<std::size_t>(i)];
    if (isDigit(i)) {
      if (grouping) {
        if (i == firstDigit) parts[static_cast<std::size_t>(i)] = Group(whole, r.thousandSeparator);
      } else if (i == firstDigit) {
        parts[static_cast<std::size_t>(i)] = pending;
        pending.clear();
      } else if (!pending.empty()) {
        parts[static_cast<std::size_t>(i)] = pending.substr(pending.size() - 1);
        pending.pop_back();
      }
    } else if (it.literal) {
      parts[static_cast<std::size_t>(i)] = it.text;
    } else if (it.text != ",") {
      parts[static_cast<std::size_t>(i)] = it.text;
    }
  }
  for (auto& p : parts) out += p;
  if (decimalAt >= 0) {
    out += r.decimalSeparator;
    // Trailing "#" places drop their zeros.
    std::vector<int> places;
    for (int i = decimalAt + 1; i < mantissaEnd; ++i)
      if (isDigit(i)) places.push_back(i);
    std::size_t shown = frac.size();
    for (int k = static_cast<int>(places.size()) - 1; k >= 0; --k) {
      if (items[static_cast<std::size_t>(places[static_cast<std::size_t>(k)])].text == "#" &&
          frac[static_cast<std::size_t>(k)] == '0' && shown == static_cast<std::size_t>(k) + 1)
        shown = static_cast<std::size_t>(k);
      else
        break;
    }
    std::size_t next = 0;
    for (int i = decimalAt + 1; i < mantissaEnd; ++i) {
      const auto& it = items[static_cast<std::size_t>(i)];
      if (isDigit(i)) {
        if (next < shown) out += frac[next];
        ++next;
      } else if (it.literal || it.text != ",") {
        out += it.text;
      }
    }
  }
  out += exponentText;
  if (exponentAt >= 0) {
    int i = exponentAt + 2;
    while (i < n && isDigit(i)) ++i;
    for (; i < n; ++i) out += items[static_cast<std::size_t>(i)].text;
  }
  return out;
}

std::string FormatNumber(double value, const std::vector<std::vector<Item>>& sections,
                         const RegionalSettings& r) {
  if (!std::isfinite(value)) return NumberToText(value, 15, r);
  const std::vector<Item>* section = &sections[0];
  bool minus = false;
  if (value < 0) {
    if (sections.size() > 1 && !sections[1].empty())
      section = &sections[1];
    else
      minus = true;
  } else if (value == 0 && sections.size() > 2 && !sections[2].empty()) {
    section = &sections[2];
  }
  std::string text = FormatNumberSection(value, *section, r);
  if (minus && text.find_first_of("123456789") != std::string::npos) text = "-" + text;
  return text;
}

// ---- dates ----

int WeekOfYear(double date, const DateParts& p) {
  double jan1 = DateSerial(p.year, 1, 1);
  int jan1Weekday = SplitDate(jan1).weekday;  // 1 = Sunday
  int dayOfYear = static_cast<int>(std::trunc(date) - jan1);
  return (dayOfYear + jan1Weekday - 1) / 7 + 1;
}

std::string LongDate(double date, const RegionalSettings& r) {
  DateParts p = SplitDate(date);
  if (r.german)
    return std::string(kDaysDe[p.weekday - 1]) + ", " + std::to_string(p.day) + ". " +
           kMonthsDe[p.month - 1] + " " + std::to_string(p.year);
  return std::string(kDaysEn[p.weekday - 1]) + ", " + kMonthsEn[p.month - 1] + " " +
         std::to_string(p.day) + ", " + std::to_string(p.year);
}

std::string FormatDate(double date, const std::vector<Item>& items, const RegionalSettings& r) {
  DateParts p = SplitDate(date);
  // A/P markers make the hours 12-hour.
  std::string plain;
  for (const auto& item : items) plain += item.literal ? std::string(1, '\0') : item.text;
  std::string upper = UpperCase(plain);
  bool twelve = upper.find("AM/PM") != std::string::npos || upper.find("A/P") != std::string::npos;
  std::string out;
  bool afterHour = false;
  std::size_t i = 0;
  auto runOf = [&](char c) {
    std::size_t k = i;
    while (k < items.size() && !items[k].literal && (items[k].text[0] | 0x20) == c) ++k;
    return k - i;
  };
  auto matchWord = [&](std::string_view word) {
    if (i + word.size() > items.size()) return false;
    for (std::size_t k = 0; k < word.size(); ++k)
      if (items[i + k].literal || items[i + k].text[0] != word[k]) return false;
    return true;
  };
  while (i < items.size()) {
    const Item& it = items[i];
    if (it.literal) {
      out += it.text;
      ++i;
      continue;
    }
    char raw = it.text[0];
    char c = static_cast<char>(raw | 0x20);
    if (matchWord("AM/PM") || matchWord("am/pm")) {
      bool upper = raw == 'A';
      out += p.hour < 12 ? (upper ? "AM" : "am") : (upper ? "PM" : "pm");
      i += 5;
    } else if (matchWord("A/P") || matchWord("a/p")) {
      bool upper = raw == 'A';
      out += p.hour < 12 ? (upper ? "A" : "a") : (upper ? "P" : "p");
      i += 3;
    } else if (c == 'd') {
      std::size_t n = runOf('d');
      if (n == 1)
        out += std::to_string(p.day);
      else if (n == 2)
        out += Two(p.day);
      else if (n == 3)
        out += r.german ? kDaysShortDe[p.weekday - 1]
                        : std::string(kDaysEn[p.weekday - 1]).substr(0, 3);
      else if (n == 4)
        out += r.german ? kDaysDe[p.weekday - 1] : kDaysEn[p.weekday - 1];
      else if (n == 5)
        out += ShortDateText(date, r);
      else
        out += LongDate(date, r);
      i += n;
    } else if (c == 'm') {
      std::size_t n = runOf('m');
      // Minutes right after an hour, or right before seconds.
      bool minute = n <= 2 && afterHour;
      if (n <= 2 && !minute) {
        for (std::size_t k = i + n; k < items.size(); ++k) {
          if (items[k].literal) continue;
          char f = static_cast<char>(items[k].text[0] | 0x20);
          if (f == 's') minute = true;
          if (f == 'd' || f == 'y' || f == 'm' || f == 'h' || f == 's') break;
        }
      }
      if (minute)
        out += n == 1 ? std::to_string(p.minute) : Two(p.minute);
      else if (n == 1)
        out += std::to_string(p.month);
      else if (n == 2)
        out += Two(p.month);
      else if (n == 3)
        out += r.german ? kMonthsShortDe[p.month - 1]
                        : std::string(kMonthsEn[p.month - 1]).substr(0, 3);
      else
        out += r.german ? kMonthsDe[p.month - 1] : kMonthsEn[p.month - 1];
      afterHour = false;
      i += n;
      continue;
    } else if (c == 'y') {
      std::size_t n = runOf('y');
      if (n == 1)
        out += std::to_string(static_cast<int>(std::trunc(date) - DateSerial(p.year, 1, 1)) + 1);
      else if (n <= 3)
        out += Two(p.year % 100);
      else {
        std::string y = std::to_string(p.year);
        while (y.size() < 4) y = "0" + y;
        out += y;
      }
      i += n;
    } else if (c == 'h') {
      std::size_t n = runOf('h');
      int h = twelve ? (p.hour % 12 == 0 ? 12 : p.hour % 12) : p.hour;
      out += n == 1 ? std::to_string(h) : Two(h);
      i += n;
      afterHour = true;
      continue;
    } else if (c == 'n') {
      std::size_t n = runOf('n');
      out += n == 1 ? std::to_string(p.minute) : Two(p.minute);
      i += n;
    } else if (c == 's') {
      std::size_t n = runOf('s');
      out += n == 1 ? std::to_string(p.second) : Two(p.second);
      i += n;
    } else if (c == 'w') {
      std::size_t n = runOf('w');
      out += std::to_string(n == 1 ? p.weekday : WeekOfYear(date, p));
      i += n;
    } else if (c == 'q') {
      out += std::to_string((p.month - 1) / 3 + 1);
      ++i;
    } else if (c == 't' && runOf('t') == 5) {
      out += TimeText(date, r);
      i += 5;
    } else if (c == 'c') {
      out += DateToText(date, r);
      ++i;
    } else if (raw == '/') {
      out += r.dateSeparator;
      ++i;
    } else if (raw == ':') {
      out += r.timeSeparator;
      ++i;
    } else {
      out += it.text;
      ++i;
    }
    if (c != ' ' && raw != ':') afterHour = false;
  }
  return out;
}

// ---- text ----

std::string FormatText(const std::string& value, const std::vector<Item>& items) {
  bool upper = false, lower = false, leftToRight = false;
  std::size_t placeholders = 0;
  for (const auto& it : items) {
    if (it.literal) continue;
    if (it.text == ">") upper = true;
    if (it.text == "<") lower = true;
    if (it.text == "!") leftToRight = true;
    if (it.text == "@" || it.text == "&") ++placeholders;
  }
  std::u32string chars = ToCodePoints(upper ? UpperCase(value) : lower ? LowerCase(value) : value);
  if (placeholders == 0) return FromCodePoints(chars);
  std::vector<std::string> slots(placeholders);
  std::size_t extra = chars.size() > placeholders ? chars.size() - placeholders : 0;
  // Characters go to the placeholders from the right unless "!" says otherwise.
  std::size_t offset = leftToRight ? 0 : (chars.size() >= placeholders ? extra : 0);
  std::size_t missing = chars.size() < placeholders ? placeholders - chars.size() : 0;
  std::size_t k = 0;
  std::string out;
  for (const auto& it : items) {
    if (!it.literal && (it.text == "@" || it.text == "&")) {
      std::string slot;
      bool empty = leftToRight ? k >= chars.size() : k < missing;
      if (!empty) {
        std::size_t index = leftToRight ? k : k - missing + offset;
        if (k == 0 && !leftToRight)
          slot = FromCodePoints(chars.substr(0, offset + 1));
        else
          slot = FromCodePoints(chars.substr(index, 1));
      } else if (it.text == "@") {
        slot = " ";
      }
      out += slot;
      ++k;
    } else if (it.literal || (it.text != ">" && it.text != "<" && it.text != "!")) {
      out += it.text;
    }
  }
  if (leftToRight && chars.size() > placeholders) out += FromCodePoints(chars.substr(placeholders));
  return out;
}

// ---- named formats ----

std::string Named(const Variant& value, std::string_view name, const RegionalSettings& r,
                  bool& handled) {
  handled = true;
  std::string n = UpperCase(name);
  auto asDate = [&]() -> std::optional<double> {
    if (value.Type() == vbDate) return value.AsDate().value;
    if (value.IsString()) {
      if (auto d = ParseDateText(value.AsString(), r)) return d;
    }
    if (IsNumeric(value)) return value.ToDouble();
    return std::nullopt;
  };
  auto truth = [&](const char* yes, const char* no) -> std::string {
    if (!IsNumeric(value)) return value.ToText();
    return value.ToDouble() != 0 ? yes : no;
  };
  if (n == "GENERAL NUMBER") {
    if (!IsNumeric(value)) return value.ToText();
    return NumberToText(value.ToDouble(), 15, r);
  }
  if (n == "FIXED") return Format(value, "0.00");
  if (n == "STANDARD") return Format(value, "#,##0.00");
  if (n == "PERCENT") return Format(value, "0.00%");
  if (n == "SCIENTIFIC") return Format(value, "0.00E+00");
  if (n == "CURRENCY") return Format(value, r.german ? "#,##0.00 \"€\"" : "\"$\"#,##0.00");
  if (n == "YES/NO") return r.german ? truth("Ja", "Nein") : truth("Yes", "No");
  if (n == "TRUE/FALSE") return truth(r.trueText.c_str(), r.falseText.c_str());
  if (n == "ON/OFF") return r.german ? truth("Ein", "Aus") : truth("On", "Off");
  if (n == "GENERAL DATE" || n == "SHORT DATE" || n == "LONG DATE" || n == "MEDIUM DATE" ||
      n == "SHORT TIME" || n == "MEDIUM TIME" || n == "LONG TIME") {
    auto d = asDate();
    if (!d) return value.ToText();
    if (n == "GENERAL DATE") return DateToText(*d, r);
    if (n == "SHORT DATE") return ShortDateText(*d, r);
    if (n == "LONG DATE") return LongDate(*d, r);
    if (n == "MEDIUM DATE") return Format(Variant::FromDate(*d), "dd-mmm-yy");
    if (n == "SHORT TIME") return Format(Variant::FromDate(*d), "hh:nn");
    if (n == "MEDIUM TIME") return Format(Variant::FromDate(*d), "hh:nn AM/PM");
    return TimeText(*d, r);
  }
  handled = false;
  return {};
}

}  // namespace

std::string Format(const Variant& value, std::string_view pattern) {
  if (value.IsNull() || value.IsEmpty()) return {};
  if (pattern.empty()) return value.ToString();
  const RegionalSettings& r = Regional();
  bool named = false;
  std::string result = Named(value, pattern, r, named);
  if (named) return result;

  auto sections = ParsePattern(pattern);
  const auto& first = sections[0];
  bool digits = HasChar(first, "0#");
  bool dateChars = HasChar(first, "dDmMyYhHnNsSwWqQtTcC");
  bool textChars = HasChar(first, "@&<>!");
  if (!digits && dateChars) {
    std::optional<double> date;
    if (value.Type() == vbDate)
      date = value.AsDate().value;
    else if (value.IsString())
      date = ParseDateText(value.AsString(), r);
    if (!date && IsNumeric(value)) date = value.ToDouble();
    if (!date) return value.ToString();
    return FormatDate(*date, first, r);
  }
  if (textChars && !digits) return FormatText(value.ToString(), first);
  if (value.Type() == vbDate) return FormatNumber(value.AsDate().value, sections, r);
  if (!IsNumeric(value)) return value.ToString();
  return FormatNumber(value.ToDouble(), sections, r);
}

}  // namespace ketrova
