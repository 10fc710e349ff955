#include "stores/field_types.h"

#include <cmath>
#include <ctime>

namespace ketrova {

namespace {

bool OneOf(std::int32_t type, std::initializer_list<std::int32_t> set) {
  for (std::int32_t t : set)
    if (t == type) return true;
  return false;
}

// The local time now as an OLE date (days since 1899-12-30).
double NowOleDate() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  // Days from 1899-12-30 to the local date, computed on the civil calendar.
  int y = local.tm_year + 1900, m = local.tm_mon + 1, d = local.tm_mday;
  y -= m <= 2;
  int era = (y >= 0 ? y : y - 399) / 400;
  int yoe = y - era * 400;
  int doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  long days = static_cast<long>(era) * 146097 + doe - 719468;  // days since 1970-01-01
  double seconds = local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec;
  return static_cast<double>(days + 25569) + seconds / 86400.0;
}

}  // namespace

bool IsStringFieldType(std::int32_t type) {
  return OneOf(type, {8, 72, 129, 130, 200, 202});
}

bool IsDateFieldType(std::int32_t type) {
  return OneOf(type, {7, 133});
}

bool IsNumericFieldType(std::int32_t type) {
  return OneOf(type, {2, 3, 4, 5, 6, 14, 16, 17, 18, 19, 20, 21, 128, 131, 139, 204, 205});
}

bool IsBooleanFieldType(std::int32_t type) {
  return type == 11;
}

std::string GetFieldDefault(std::int32_t type, Variant& defaultValue) {
  double now = NowOleDate();
  double today = std::floor(now);
  if (OneOf(type, {0, 129, 8, 72, 130, 200, 201, 202, 203})) {
    defaultValue = Variant("");
    return "'";
  }
  if (OneOf(type, {2, 3, 4, 5, 6, 14, 16, 17, 18, 19, 20, 21, 131, 139, 205})) {
    defaultValue = Variant("0");
    return "";
  }
  if (OneOf(type, {7, 135, 133})) {
    defaultValue = Variant::FromDate(today);
    return "'";
  }
  if (type == 11) {
    defaultValue = Variant("True");
    return "";
  }
  if (type == 64) {
    defaultValue = Variant::FromDate(now);
    return "";
  }
  if (type == 134) {
    defaultValue = Variant::FromDate(now);
    return "'";
  }
  defaultValue = Variant("");
  return "";
}

}  // namespace ketrova
