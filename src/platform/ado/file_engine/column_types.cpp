#include "platform/ado/file_engine/column_types.h"

#include <algorithm>
#include <charconv>

namespace ketrova::file_engine {

namespace {

char Lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (Lower(a[i]) != Lower(b[i])) return false;
  }
  return true;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Reads exactly `n` digits at text[pos].
bool Digits(std::string_view text, std::size_t pos, std::size_t n, int& value) {
  if (pos + n > text.size()) return false;
  value = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (!IsDigit(text[pos + i])) return false;
    value = value * 10 + (text[pos + i] - '0');
  }
  return true;
}

bool ValidDate(int y, int m, int d) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (y < 100 || m < 1 || m > 12 || d < 1) return false;
  int days = kDays[m - 1];
  if (m == 2 && ((y % 4 == 0 && y % 100 != 0) || y % 400 == 0)) days = 29;
  return d <= days;
}

}  // namespace

const char* SqlTypeName(ColumnType type) {
  switch (type) {
    case ColumnType::kInteger:
      return "INTEGER";
    case ColumnType::kDouble:
      return "DOUBLE";
    case ColumnType::kCurrency:
      return "CURRENCY";
    case ColumnType::kDateTime:
      return "DATETIME";
    case ColumnType::kBoolean:
      return "BIT";
    case ColumnType::kMemo:
      return "MEMO";
    case ColumnType::kText:
      break;
  }
  return "TEXT";
}

std::optional<ColumnType> ParseTypeName(std::string_view name) {
  struct Entry {
    const char* word;
    ColumnType type;
  };
  static constexpr Entry kWords[] = {
      {"text", ColumnType::kText},         {"char", ColumnType::kText},
      {"varchar", ColumnType::kText},      {"integer", ColumnType::kInteger},
      {"long", ColumnType::kInteger},      {"short", ColumnType::kInteger},
      {"byte", ColumnType::kInteger},      {"int", ColumnType::kInteger},
      {"smallint", ColumnType::kInteger},  {"double", ColumnType::kDouble},
      {"float", ColumnType::kDouble},      {"single", ColumnType::kDouble},
      {"numeric", ColumnType::kDouble},    {"real", ColumnType::kDouble},
      {"currency", ColumnType::kCurrency}, {"date", ColumnType::kDateTime},
      {"datetime", ColumnType::kDateTime}, {"bit", ColumnType::kBoolean},
      {"yesno", ColumnType::kBoolean},     {"memo", ColumnType::kMemo},
      {"longchar", ColumnType::kMemo},
  };
  for (const auto& e : kWords) {
    if (EqualsNoCase(name, e.word)) return e.type;
  }
  return std::nullopt;
}

std::optional<std::int64_t> ParseInteger(std::string_view text, bool strict) {
  if (text.empty()) return std::nullopt;
  std::size_t start = (text[0] == '+' || text[0] == '-') ? 1 : 0;
  if (start == text.size()) return std::nullopt;
  for (std::size_t i = start; i < text.size(); ++i) {
    if (!IsDigit(text[i])) return std::nullopt;
  }
  // A leading zero marks a code (postal code, article number), not a number.
  if (strict && text.size() - start > 1 && text[start] == '0') return std::nullopt;
  std::int64_t value = 0;
  const char* first = text.data() + (text[0] == '+' ? 1 : 0);
  auto [ptr, ec] = std::from_chars(first, text.data() + text.size(), value);
  if (ec != std::errc() || ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> ParseNumber(std::string_view text, bool strict) {
  if (text.empty() || text.size() > 64) return std::nullopt;
  char buf[72];
  std::size_t n = 0;
  bool mark = false, digits = false, exponent = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (IsDigit(c)) {
      digits = true;
    } else if ((c == '.' || c == ',') && !mark && !exponent) {
      mark = true;
      c = '.';
    } else if ((c == '+' || c == '-') && (i == 0 || Lower(text[i - 1]) == 'e')) {
    } else if (Lower(c) == 'e' && digits && !exponent && i + 1 < text.size()) {
      exponent = true;
    } else {
      return std::nullopt;
    }
    buf[n++] = c;
  }
  if (!digits) return std::nullopt;
  // A leading zero before further digits marks a code, as for integers.
  std::size_t s = (buf[0] == '+' || buf[0] == '-') ? 1 : 0;
  if (strict && n > s + 1 && buf[s] == '0' && IsDigit(buf[s + 1])) return std::nullopt;
  double value = 0;
  const char* first = buf + (buf[0] == '+' ? 1 : 0);
  auto [ptr, ec] = std::from_chars(first, buf + n, value);
  if (ec != std::errc() || ptr != buf + n) return std::nullopt;
  return value;
}

std::optional<std::string> ParseDateText(std::string_view text) {
  int y = 0, m = 0, d = 0;
  std::size_t pos;
  if (text.size() >= 10 && text[4] == '-' && text[7] == '-' && Digits(text, 0, 4, y) &&
      Digits(text, 5, 2, m) && Digits(text, 8, 2, d)) {
    pos = 10;
  } else if (text.size() >= 10 && text[2] == '.' && text[5] == '.' && Digits(text, 0, 2, d) &&
             Digits(text, 3, 2, m) && Digits(text, 6, 4, y)) {
    pos = 10;
  } else {
    return std::nullopt;
  }
  if (!ValidDate(y, m, d)) return std::nullopt;
  // Written by hand: this runs for every date value read.
  auto put = [](std::string& out, std::size_t at, int value, int width) {
    for (int i = width - 1; i >= 0; --i, value /= 10) {
      out[at + static_cast<std::size_t>(i)] = static_cast<char>('0' + value % 10);
    }
  };
  if (pos == text.size()) {
    std::string out = "0000-00-00";
    put(out, 0, y, 4);
    put(out, 5, m, 2);
    put(out, 8, d, 2);
    return out;
  }
  if (text[pos] != ' ' && text[pos] != 'T') return std::nullopt;
  int hh = 0, mm = 0, ss = 0;
  ++pos;
  if (!Digits(text, pos, 2, hh) || pos + 2 >= text.size() || text[pos + 2] != ':' ||
      !Digits(text, pos + 3, 2, mm)) {
    return std::nullopt;
  }
  pos += 5;
  if (pos < text.size()) {
    if (text[pos] != ':' || !Digits(text, pos + 1, 2, ss)) return std::nullopt;
    pos += 3;
  }
  if (pos != text.size() || hh > 23 || mm > 59 || ss > 59) return std::nullopt;
  std::string out = "0000-00-00 00:00:00";
  put(out, 0, y, 4);
  put(out, 5, m, 2);
  put(out, 8, d, 2);
  put(out, 11, hh, 2);
  put(out, 14, mm, 2);
  put(out, 17, ss, 2);
  return out;
}

std::optional<bool> ParseBoolean(std::string_view text) {
  if (EqualsNoCase(text, "true") || EqualsNoCase(text, "wahr") || text == "1" || text == "-1") {
    return true;
  }
  if (EqualsNoCase(text, "false") || EqualsNoCase(text, "falsch") || text == "0") return false;
  return std::nullopt;
}

TypeInference::TypeInference(std::size_t columns) : states_(columns) {}

void TypeInference::Add(std::size_t column, std::string_view text, bool quoted) {
  if (column >= states_.size() || (text.empty() && !quoted)) return;
  State& s = states_[column];
  s.seen = true;
  if (!s.long_text && text.size() > 255) {
    // Characters, not bytes: UTF-8 continuation bytes do not count.
    const auto characters = std::count_if(text.begin(), text.end(), [](char c) {
      return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    });
    s.long_text = characters > 255;
  }
  if (quoted) {
    s.integer = s.number = s.date = s.boolean = false;
    return;
  }
  if (s.boolean && !EqualsNoCase(text, "true") && !EqualsNoCase(text, "false")) s.boolean = false;
  if (text.find(',') != std::string_view::npos) s.comma = true;
  if (text.size() >= 10 && text[2] == '.' && text[5] == '.') s.dotted_date = true;
  if (s.integer && !ParseInteger(text)) s.integer = false;
  if (s.number && !ParseNumber(text)) s.number = false;
  if (s.date && !ParseDateText(text)) s.date = false;
}

std::vector<ColumnType> TypeInference::Result() const {
  std::vector<ColumnType> types;
  types.reserve(states_.size());
  for (const State& s : states_) {
    if (!s.seen) {
      types.push_back(ColumnType::kText);
    } else if (s.boolean) {
      types.push_back(ColumnType::kBoolean);
    } else if (s.integer) {
      types.push_back(ColumnType::kInteger);
    } else if (s.number) {
      types.push_back(ColumnType::kDouble);
    } else if (s.date) {
      types.push_back(ColumnType::kDateTime);
    } else if (s.long_text) {
      types.push_back(ColumnType::kMemo);
    } else {
      types.push_back(ColumnType::kText);
    }
  }
  return types;
}

std::string FormatNumber(double value, bool decimal_comma) {
  char buf[64];
  auto [ptr, ec] = std::to_chars(buf, buf + sizeof buf, value);
  std::string text(buf, ec == std::errc() ? ptr : buf);
  if (decimal_comma) {
    auto dot = text.find('.');
    if (dot != std::string::npos) text[dot] = ',';
  }
  return text;
}

std::string GermanDateText(std::string_view iso) {
  if ((iso.size() != 10 && iso.size() != 19) || iso[4] != '-' || iso[7] != '-') {
    return std::string(iso);
  }
  std::string out = std::string(iso.substr(8, 2)) + "." + std::string(iso.substr(5, 2)) + "." +
                    std::string(iso.substr(0, 4));
  if (iso.size() == 19) out += std::string(iso.substr(10));
  return out;
}

}  // namespace ketrova::file_engine
