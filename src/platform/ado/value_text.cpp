#include "platform/ado/value_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace ketrova::ado {

std::u16string Utf8ToUtf16(std::string_view s) {
  std::u16string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size();) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    char32_t cp;
    int extra;
    if (c < 0x80) {
      cp = c;
      extra = 0;
    } else if ((c & 0xE0) == 0xC0) {
      cp = c & 0x1F;
      extra = 1;
    } else if ((c & 0xF0) == 0xE0) {
      cp = c & 0x0F;
      extra = 2;
    } else if ((c & 0xF8) == 0xF0) {
      cp = c & 0x07;
      extra = 3;
    } else {
      out.push_back(0xFFFD);
      ++i;
      continue;
    }
    bool bad = false;
    for (int k = 1; k <= extra; ++k) {
      if (i + k >= s.size()) {
        bad = true;
        break;
      }
      unsigned char cc = static_cast<unsigned char>(s[i + k]);
      if ((cc & 0xC0) != 0x80) {
        bad = true;
        break;
      }
      cp = (cp << 6) | (cc & 0x3F);
    }
    if (bad) {
      out.push_back(0xFFFD);
      ++i;
      continue;
    }
    i += static_cast<std::size_t>(extra) + 1;
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(cp));
    }
  }
  return out;
}

std::string Utf16ToUtf8(std::u16string_view s) {
  std::string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size(); ++i) {
    char32_t cp = s[i];
    if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < s.size() && s[i + 1] >= 0xDC00 &&
        s[i + 1] < 0xE000) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (s[i + 1] - 0xDC00);
      ++i;
    }
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

namespace {
// Days since 1970-01-01 of a civil date (H. Hinnant's algorithm).
long DaysFromCivil(long y, long m, long d) {
  y -= m <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const long yoe = y - era * 400;
  const long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}
void CivilFromDays(long z, int& y, int& m, int& d) {
  z += 719468;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const long doe = z - era * 146097;
  const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const long mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(yoe + era * 400 + (m <= 2));
}
constexpr long kOleEpochDays = -25569;  // 1899-12-30 relative to 1970-01-01
}  // namespace

double OleDateFromParts(const DateParts& p) {
  double days = static_cast<double>(DaysFromCivil(p.year, p.month, p.day) - kOleEpochDays);
  double secs = p.hour * 3600.0 + p.minute * 60.0 + p.second + p.fraction / 1e9;
  double frac = secs / 86400.0;
  // OLE dates before 1899-12-30 keep the time as a positive fraction after
  // the negative day number.
  return days < 0 ? days - frac : days + frac;
}

DateParts PartsFromOleDate(double oleDate) {
  double whole = std::trunc(oleDate);
  double frac = std::fabs(oleDate - whole);
  long ms = std::lround(frac * 86400000.0);
  long days = static_cast<long>(whole);
  if (ms >= 86400000) {
    ms -= 86400000;
    days += oleDate < 0 ? -1 : 1;
  }
  DateParts p;
  CivilFromDays(days + kOleEpochDays, p.year, p.month, p.day);
  long s = ms / 1000;
  p.hour = static_cast<int>(s / 3600);
  p.minute = static_cast<int>((s / 60) % 60);
  p.second = static_cast<int>(s % 60);
  p.fraction = static_cast<std::uint32_t>((ms % 1000) * 1000000);
  return p;
}

Variant DecimalFromText(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && text[i] == ' ') ++i;
  bool neg = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) neg = text[i++] == '-';
  Decimal::Int128 mant = 0;
  int scale = 0, digits = 0;
  bool dot = false, any = false;
  for (; i < text.size(); ++i) {
    char c = text[i];
    if (c == '.' && !dot) {
      dot = true;
      continue;
    }
    if (c < '0' || c > '9') break;
    any = true;
    if (digits == 0 && c == '0' && !dot) continue;
    if (digits >= 28) {
      if (!dot) return {};  // too large
      continue;             // further fraction digits are dropped
    }
    mant = mant * 10 + (c - '0');
    ++digits;
    if (dot) ++scale;
  }
  while (i < text.size() && text[i] == ' ') ++i;
  if (!any || i != text.size()) return {};
  Decimal d;
  d.mantissa = neg ? -mant : mant;
  d.scale = scale;
  return Variant(d);
}

std::string DecimalToText(const Decimal& d) {
  Decimal::Int128 m = d.mantissa;
  bool neg = m < 0;
  if (neg) m = -m;
  // Written from its end: the digits, the point before the last `scale` of
  // them, at least one digit before it. A value of 64 bits (every currency)
  // is divided as one, which is far cheaper than a division of 128 bits.
  char text[2 * 40 + 4];
  char* const end = text + sizeof text;
  char* p = end;
  int written = 0;
  const int scale = std::clamp(d.scale, 0, 38);  // VB's decimals have at most 28 places
  auto put = [&](int digit) {
    if (scale > 0 && written == scale) *--p = '.';
    *--p = static_cast<char>('0' + digit);
    ++written;
  };
  if (m <= static_cast<Decimal::Int128>(std::numeric_limits<std::uint64_t>::max())) {
    auto small = static_cast<std::uint64_t>(m);
    do {
      put(static_cast<int>(small % 10));
      small /= 10;
    } while (small != 0);
  } else {
    do {
      put(static_cast<int>(m % 10));
      m /= 10;
    } while (m != 0);
  }
  while (scale > 0 && written <= scale) put(0);
  if (neg) *--p = '-';
  return std::string(p, end);
}

std::string CurrencyToText(Currency c) {
  Decimal d;
  d.mantissa = c.scaled;
  d.scale = 4;
  return DecimalToText(d);
}

std::optional<DateParts> IsoDateParts(std::string_view s) {
  auto digits = [&](std::size_t at, std::size_t count, int& out) {
    out = 0;
    for (std::size_t i = at; i < at + count; ++i) {
      if (!std::isdigit(static_cast<unsigned char>(s[i]))) return false;
      out = out * 10 + (s[i] - '0');
    }
    return true;
  };
  DateParts p;
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, sec = 0;
  if (s.size() != 10 && s.size() != 19 && !(s.size() > 20 && s[19] == '.')) return std::nullopt;
  if (!digits(0, 4, y) || s[4] != '-' || !digits(5, 2, mo) || s[7] != '-' || !digits(8, 2, d))
    return std::nullopt;
  if (mo < 1 || mo > 12 || d < 1 || d > 31) return std::nullopt;
  p.year = y;
  p.month = mo;
  p.day = d;
  if (s.size() == 10) return p;
  if (s[10] != ' ' || !digits(11, 2, h) || s[13] != ':' || !digits(14, 2, mi) || s[16] != ':' ||
      !digits(17, 2, sec))
    return std::nullopt;
  double seconds = sec;
  if (s.size() > 19) {
    for (std::size_t i = 20; i < s.size(); ++i)
      if (!std::isdigit(static_cast<unsigned char>(s[i]))) return std::nullopt;
    auto [end, ec] = std::from_chars(s.data() + 17, s.data() + s.size(), seconds);
    if (ec != std::errc() || end != s.data() + s.size()) return std::nullopt;
  }
  if (h > 23 || mi > 59 || seconds >= 62) return std::nullopt;
  p.hour = h;
  p.minute = mi;
  p.second = static_cast<int>(seconds);
  p.fraction = static_cast<std::uint32_t>(std::llround((seconds - p.second) * 1e9));
  return p;
}

Variant IntegerValue(std::int64_t v, DataTypeEnum type) {
  if (type == adSmallInt && v >= -32768 && v <= 32767)
    return Variant::Integer(static_cast<std::int16_t>(v));
  if (type == adUnsignedTinyInt && v >= 0 && v <= 255)
    return Variant::Byte(static_cast<std::uint8_t>(v));
  if (type == adTinyInt && v >= -128 && v <= 127)
    return Variant::Integer(static_cast<std::int16_t>(v));
  if (v >= std::numeric_limits<std::int32_t>::min() &&
      v <= std::numeric_limits<std::int32_t>::max())
    return Variant::Long(static_cast<std::int32_t>(v));
  return Variant(static_cast<double>(v));
}

}  // namespace ketrova::ado
