#include "support/ole_date.h"

#include <cmath>

#include "support/vb_error.h"

namespace ketrova {

namespace {

// Howard Hinnant's algorithms, counted from 1970-01-01.
std::int64_t UnixDays(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void CivilFromUnixDays(std::int64_t z, int& year, int& month, int& day) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(static_cast<std::int64_t>(yoe) + era * 400 + (month <= 2));
}

const std::int64_t kOleEpoch = UnixDays(1899, 12, 30);

int DaysInMonth(int year, int month) {
  static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : days[month - 1];
}

}  // namespace

std::int64_t DaysFromCivil(int year, int month, int day) {
  return UnixDays(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) - kOleEpoch;
}

bool IsValidDate(int year, int month, int day) {
  return year >= 100 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
         day <= DaysInMonth(year, month);
}

double DateSerial(int year, int month, int day) {
  if (year >= 0 && year < 30)
    year += 2000;
  else if (year >= 30 && year < 100)
    year += 1900;
  // Months roll into years, then the day is counted from the first.
  int m0 = month - 1;
  int y = year + (m0 >= 0 ? m0 / 12 : (m0 - 11) / 12);
  m0 -= (y - year) * 12;
  if (y < 100 || y > 9999) throw VbError(5);
  std::int64_t days = DaysFromCivil(y, m0 + 1, 1) + (day - 1);
  if (days < DaysFromCivil(100, 1, 1) || days > DaysFromCivil(9999, 12, 31)) throw VbError(5);
  return static_cast<double>(days);
}

double TimeSerial(int hour, int minute, int second) {
  return (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
}

double CombineDateTime(double date, double time) {
  date = std::trunc(date);
  return date < 0 ? date - time : date + time;
}

double DatePart(double oleDate) {
  return std::trunc(oleDate);
}

double TimePart(double oleDate) {
  return std::fabs(oleDate - std::trunc(oleDate));
}

DateParts SplitDate(double oleDate) {
  auto days = static_cast<std::int64_t>(std::trunc(oleDate));
  auto seconds = static_cast<std::int64_t>(std::llround(TimePart(oleDate) * 86400.0));
  if (seconds >= 86400) {
    seconds -= 86400;
    days += 1;
  }
  DateParts p;
  CivilFromUnixDays(days + kOleEpoch, p.year, p.month, p.day);
  p.hour = static_cast<int>(seconds / 3600);
  p.minute = static_cast<int>(seconds / 60 % 60);
  p.second = static_cast<int>(seconds % 60);
  p.weekday = static_cast<int>(((days + 6) % 7 + 7) % 7) + 1;
  return p;
}

}  // namespace ketrova
