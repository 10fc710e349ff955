#include "support/date_text.h"

#include <cctype>
#include <chrono>
#include <vector>

#include "support/ole_date.h"

namespace ketrova {

namespace {

std::string Two(int v) {
  std::string s = std::to_string(v);
  return s.size() < 2 ? "0" + s : s;
}

std::string Four(int v) {
  std::string s = std::to_string(v);
  while (s.size() < 4) s = "0" + s;
  return s;
}

bool AllDigits(std::string_view s) {
  if (s.empty() || s.size() > 9) return false;
  for (char c : s)
    if (c < '0' || c > '9') return false;
  return true;
}

int ToInt(std::string_view s) {
  int v = 0;
  for (char c : s) v = v * 10 + (c - '0');
  return v;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::toupper(static_cast<unsigned char>(a[i])) !=
        std::toupper(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

int CurrentYear() {
  auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
  return static_cast<int>(std::chrono::year_month_day(today).year());
}

int FullYear(std::string_view field) {
  int y = ToInt(field);
  if (field.size() <= 2) y += y < 30 ? 2000 : 1900;
  return y;
}

std::optional<double> MakeDate(int year, int month, int day) {
  if (!IsValidDate(year, month, day)) return std::nullopt;
  return static_cast<double>(DaysFromCivil(year, month, day));
}

std::optional<double> ParseDatePart(std::string_view token, const RegionalSettings& settings) {
  std::vector<std::string_view> fields;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= token.size(); ++i) {
    if (i == token.size() || token[i] == '.' || token[i] == '/' || token[i] == '-') {
      fields.push_back(token.substr(start, i - start));
      start = i + 1;
    }
  }
  if (fields.size() > 2 && fields.back().empty()) fields.pop_back();   // "31.12.2002."
  if (fields.size() == 3 && fields.back().empty()) fields.pop_back();  // "31.12."
  for (auto f : fields)
    if (!AllDigits(f)) return std::nullopt;
  std::string order = settings.DateOrder();
  if (fields.size() == 3) {
    if (fields[0].size() >= 3) order = "ymd";
    int v[3] = {};
    int year = 0, month = 0, day = 0;
    for (int i = 0; i < 3; ++i) {
      v[i] = ToInt(fields[i]);
      if (order[i] == 'y')
        year = FullYear(fields[i]);
      else if (order[i] == 'm')
        month = v[i];
      else
        day = v[i];
    }
    if (auto d = MakeDate(year, month, day)) return d;
    if (order != "ymd") return MakeDate(year, day, month);
    return std::nullopt;
  }
  if (fields.size() == 2) {
    int a = ToInt(fields[0]), b = ToInt(fields[1]);
    bool dayFirst = order.find('d') < order.find('m');
    int day = dayFirst ? a : b, month = dayFirst ? b : a;
    int year = CurrentYear();
    if (auto d = MakeDate(year, month, day)) return d;
    return MakeDate(year, day, month);
  }
  return std::nullopt;
}

std::optional<double> ParseTimePart(std::string_view token, int meridiem) {
  std::vector<std::string_view> fields;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= token.size(); ++i) {
    if (i == token.size() || token[i] == ':') {
      fields.push_back(token.substr(start, i - start));
      start = i + 1;
    }
  }
  if (fields.size() < 2 || fields.size() > 3) return std::nullopt;
  for (auto f : fields)
    if (!AllDigits(f)) return std::nullopt;
  int h = ToInt(fields[0]), m = ToInt(fields[1]), s = fields.size() == 3 ? ToInt(fields[2]) : 0;
  if (m > 59 || s > 59) return std::nullopt;
  if (meridiem != 0) {
    if (h < 1 || h > 12) return std::nullopt;
    h = h % 12 + (meridiem > 0 ? 12 : 0);
  } else if (h > 23) {
    return std::nullopt;
  }
  return TimeSerial(h, m, s);
}

}  // namespace

std::string ShortDateText(double oleDate, const RegionalSettings& settings) {
  DateParts p = SplitDate(oleDate);
  const std::string& pattern = settings.shortDatePattern;
  std::string out;
  for (std::size_t i = 0; i < pattern.size();) {
    char c = static_cast<char>(pattern[i] | 0x20);
    if (c == 'y' && pattern.compare(i, 4, "yyyy") == 0) {
      out += Four(p.year);
      i += 4;
    } else if (c == 'd' && i + 1 < pattern.size() && (pattern[i + 1] | 0x20) == 'd') {
      out += Two(p.day);
      i += 2;
    } else if (c == 'm' && i + 1 < pattern.size() && (pattern[i + 1] | 0x20) == 'm') {
      out += Two(p.month);
      i += 2;
    } else {
      out += pattern[i++];
    }
  }
  return out;
}

std::string TimeText(double oleDate, const RegionalSettings& settings) {
  DateParts p = SplitDate(oleDate);
  const std::string& sep = settings.timeSeparator;
  return Two(p.hour) + sep + Two(p.minute) + sep + Two(p.second);
}

std::string DateToText(double oleDate, const RegionalSettings& settings) {
  DateParts p = SplitDate(oleDate);
  bool hasTime = p.hour != 0 || p.minute != 0 || p.second != 0;
  bool hasDate = !(p.year == 1899 && p.month == 12 && p.day == 30);
  if (!hasDate) return TimeText(oleDate, settings);
  std::string text = ShortDateText(oleDate, settings);
  // Appended in two steps: GCC 12 warns falsely (-Wrestrict) on
  // "literal" + std::string&& when optimising.
  if (hasTime) {
    text += ' ';
    text += TimeText(oleDate, settings);
  }
  return text;
}

std::string DateToText(double oleDate) {
  return DateToText(oleDate, Regional());
}

std::optional<double> ParseDateText(std::string_view text, const RegionalSettings& settings) {
  std::vector<std::string_view> tokens;
  std::size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    std::size_t start = i;
    while (i < text.size() && text[i] != ' ' && text[i] != '\t') ++i;
    if (i > start) tokens.push_back(text.substr(start, i - start));
  }
  std::string_view dateToken, timeToken;
  int meridiem = 0;
  for (auto t : tokens) {
    if (EqualsNoCase(t, "AM") || EqualsNoCase(t, "PM")) {
      if (meridiem != 0) return std::nullopt;
      meridiem = EqualsNoCase(t, "PM") ? 1 : -1;
    } else if (t.find(':') != std::string_view::npos) {
      if (!timeToken.empty()) return std::nullopt;
      timeToken = t;
    } else {
      if (!dateToken.empty()) return std::nullopt;
      dateToken = t;
    }
  }
  if (dateToken.empty() && timeToken.empty()) return std::nullopt;
  if (meridiem != 0 && timeToken.empty()) return std::nullopt;
  double date = 0, time = 0;
  if (!dateToken.empty()) {
    auto d = ParseDatePart(dateToken, settings);
    if (!d) return std::nullopt;
    date = *d;
  }
  if (!timeToken.empty()) {
    auto t = ParseTimePart(timeToken, meridiem);
    if (!t) return std::nullopt;
    time = *t;
  }
  return CombineDateTime(date, time);
}

std::optional<double> ParseDateText(std::string_view text) {
  return ParseDateText(text, Regional());
}

}  // namespace ketrova
