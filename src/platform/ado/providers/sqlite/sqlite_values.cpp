#include "platform/ado/providers/sqlite/sqlite_values.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "platform/ado/value_text.h"

namespace ketrova::ado::sqlite {
namespace {

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
  return s;
}

std::optional<std::int64_t> WholeInteger(std::string_view s) {
  s = TrimBlanks(s);
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  std::int64_t v = 0;
  auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || s.empty()) return std::nullopt;
  return v;
}

std::optional<double> WholeNumber(std::string_view s) {
  s = TrimBlanks(s);
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  double v = 0;
  auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || s.empty()) return std::nullopt;
  return v;
}

// "YYYY-MM-DD[ |T]hh:mm:ss[.fff]", "YYYY/MM/DD ...", "YYYY-MM-DD" or, for a
// time, "hh:mm:ss[.fff]".
std::optional<DateParts> ParseDate(std::string_view text, bool timeOnly) {
  if (!timeOnly) {
    if (auto p = IsoDateParts(text)) return p;  // the form dates are stored in
  }
  std::string s(TrimBlanks(text));
  DateParts p;
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, n = 0;
  double sec = 0;
  if (std::sscanf(s.c_str(), "%d%*[-/]%d%*[-/]%d%n", &y, &mo, &d, &n) == 3) {
    std::string rest = s.substr(static_cast<std::size_t>(n));
    if (mo < 1 || mo > 12 || d < 1 || d > 31) return std::nullopt;
    p.year = y;
    p.month = mo;
    p.day = d;
    if (timeOnly) {
      p.year = 1899;
      p.month = 12;
      p.day = 30;
    }
    std::string_view r = TrimBlanks(rest);
    if (!r.empty() && (r.front() == 'T' || r.front() == 't')) r.remove_prefix(1);
    if (r.empty()) return p;
    s = std::string(r);
  } else if (!timeOnly) {
    // A time alone in a date column.
    if (s.find(':') == std::string::npos) return std::nullopt;
  }
  int m = 0;
  if (std::sscanf(s.c_str(), "%d:%d%n", &h, &mi, &m) != 2) return std::nullopt;
  std::string_view tail(s.c_str() + m);
  if (!tail.empty() && tail.front() == ':') {
    tail.remove_prefix(1);
    std::string secText(tail);
    int k = 0;
    if (std::sscanf(secText.c_str(), "%lf%n", &sec, &k) != 1) return std::nullopt;
    tail.remove_prefix(static_cast<std::size_t>(k));
  }
  if (!TrimBlanks(tail).empty()) return std::nullopt;
  if (h < 0 || h > 23 || mi < 0 || mi > 59 || sec < 0 || sec >= 62) return std::nullopt;
  p.hour = h;
  p.minute = mi;
  p.second = static_cast<int>(sec);
  p.fraction = static_cast<std::uint32_t>(std::llround((sec - p.second) * 1e9));
  return p;
}

std::string ColumnText(sqlite3_stmt* stmt, int i) {
  const auto* t = reinterpret_cast<const char*>(sqlite3_column_text(stmt, i));
  int n = sqlite3_column_bytes(stmt, i);
  return t ? std::string(t, static_cast<std::size_t>(n)) : std::string();
}

Variant Bytes(sqlite3_stmt* stmt, int i) {
  const auto* b = static_cast<const unsigned char*>(sqlite3_column_blob(stmt, i));
  int n = sqlite3_column_bytes(stmt, i);
  auto array = std::make_shared<SafeArray>();
  array->elementType = vbByte;
  array->bounds.push_back({0, n});
  array->data.reserve(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) array->data.push_back(Variant::Byte(b[k]));
  return Variant(array);
}

}  // namespace

int BindValue(sqlite3_stmt* stmt, int n, const Variant& v, bool inPlace) {
  switch (v.Type()) {
    case vbEmpty:
    case vbNull:
      return sqlite3_bind_null(stmt, n);
    case vbBoolean:
      return sqlite3_bind_int(stmt, n, v.AsBool() ? 1 : 0);
    case vbInteger:
      return sqlite3_bind_int64(stmt, n, v.AsInteger());
    case vbLong:
      return sqlite3_bind_int64(stmt, n, v.AsLong());
    case vbByte:
      return sqlite3_bind_int64(stmt, n, v.AsByte());
    case vbSingle:
      return sqlite3_bind_double(stmt, n, v.AsSingle());
    case vbDouble:
      return sqlite3_bind_double(stmt, n, v.AsDouble());
    case vbCurrency:
    case vbDecimal: {
      std::string text =
          v.Type() == vbCurrency ? CurrencyToText(v.AsCurrency()) : DecimalToText(v.AsDecimal());
      return sqlite3_bind_text(stmt, n, text.data(), static_cast<int>(text.size()),
                               SQLITE_TRANSIENT);
    }
    case vbDate: {
      DateParts p = PartsFromOleDate(v.AsDate().value);
      if (p.year < 0 || p.year > 9999) {
        char text[48];
        int len = std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.000", p.year,
                                p.month, p.day, p.hour, p.minute, p.second);
        return sqlite3_bind_text(stmt, n, text, len, SQLITE_TRANSIENT);
      }
      // "YYYY-MM-DD HH:MM:SS.000", once per date of every record.
      char text[] = "0000-00-00 00:00:00.000";
      auto two = [&](int at, int value) {
        text[at] = static_cast<char>('0' + value / 10 % 10);
        text[at + 1] = static_cast<char>('0' + value % 10);
      };
      two(0, p.year / 100);
      two(2, p.year % 100);
      two(5, p.month);
      two(8, p.day);
      two(11, p.hour);
      two(14, p.minute);
      two(17, p.second);
      return sqlite3_bind_text(stmt, n, text, static_cast<int>(sizeof text - 1), SQLITE_TRANSIENT);
    }
    default:
      if (v.IsArray()) {
        std::string bytes;
        for (const auto& e : v.AsArray()->data) bytes.push_back(static_cast<char>(e.ToByte()));
        return sqlite3_bind_blob(stmt, n, bytes.data(), static_cast<int>(bytes.size()),
                                 SQLITE_TRANSIENT);
      }
      if (v.IsString() && inPlace) {
        const std::string& text = v.AsString();
        return sqlite3_bind_text(stmt, n, text.data(), static_cast<int>(text.size()),
                                 SQLITE_STATIC);
      }
      std::string text = v.ToText();
      return sqlite3_bind_text(stmt, n, text.data(), static_cast<int>(text.size()),
                               SQLITE_TRANSIENT);
  }
}

Variant ReadValue(sqlite3_stmt* stmt, int i, const ColumnInfo& c) {
  const int storage = sqlite3_column_type(stmt, i);
  if (storage == SQLITE_NULL) return Variant::Null();
  switch (c.type) {
    case adSmallInt:
    case adInteger:
    case adTinyInt:
    case adUnsignedTinyInt:
    case adUnsignedSmallInt:
    case adUnsignedInt:
    case adBigInt:
    case adUnsignedBigInt: {
      if (storage == SQLITE_INTEGER) return IntegerValue(sqlite3_column_int64(stmt, i), c.type);
      if (storage == SQLITE_FLOAT) {
        double d = sqlite3_column_double(stmt, i);
        if (std::trunc(d) == d && std::fabs(d) < 9.2e18)
          return IntegerValue(static_cast<std::int64_t>(d), c.type);
        return Variant(d);
      }
      std::string text = ColumnText(stmt, i);
      if (auto v = WholeInteger(text)) return IntegerValue(*v, c.type);
      if (auto d = WholeNumber(text)) return Variant(*d);
      return Variant(std::move(text));
    }
    case adSingle:
    case adDouble:
    case adCurrency: {
      std::optional<double> d;
      std::string text;
      if (storage == SQLITE_INTEGER || storage == SQLITE_FLOAT) {
        d = sqlite3_column_double(stmt, i);
      } else {
        text = ColumnText(stmt, i);
        d = WholeNumber(text);
      }
      if (!d) return Variant(std::move(text));
      if (c.type == adSingle) return Variant::Single(static_cast<float>(*d));
      if (c.type == adCurrency) return Variant::FromCurrency(*d);
      return Variant(*d);
    }
    case adBoolean: {
      std::string text = ColumnText(stmt, i);
      char f =
          text.empty() ? 0 : static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
      return Variant(!(f == '0' || f == 'f' || f == 'n' || f == 0));
    }
    case adNumeric:
    case adDecimal:
    case adVarNumeric: {
      std::string text = ColumnText(stmt, i);
      Variant d = DecimalFromText(TrimBlanks(text));
      if (!d.IsEmpty()) return d;
      if (auto v = WholeNumber(text)) return Variant(*v);
      return Variant(std::move(text));
    }
    case adDBDate:
    case adDBTime:
    case adDate:
    case adDBTimeStamp: {
      if (storage != SQLITE_TEXT) {
        if (storage == SQLITE_INTEGER) return IntegerValue(sqlite3_column_int64(stmt, i), adBigInt);
        if (storage == SQLITE_FLOAT) return Variant(sqlite3_column_double(stmt, i));
        return Bytes(stmt, i);
      }
      std::string text = ColumnText(stmt, i);
      auto p = ParseDate(text, c.type == adDBTime);
      if (!p) return Variant(std::move(text));
      if (c.type == adDBDate) {
        p->hour = p->minute = p->second = 0;
        p->fraction = 0;
      }
      return Variant::FromDate(OleDateFromParts(*p));
    }
    case adBinary:
    case adVarBinary:
    case adLongVarBinary:
      return Bytes(stmt, i);
    default:
      if (storage == SQLITE_BLOB) return Bytes(stmt, i);
      return Variant(ColumnText(stmt, i));
  }
}

}  // namespace ketrova::ado::sqlite
