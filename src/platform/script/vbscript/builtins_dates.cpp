// Date functions. Calendar arithmetic runs on a linear count of seconds (days
// since 1899-12-30 times 86400 plus the time of day), which keeps dates before
// 1899-12-30, whose OLE value holds the time as an absolute fraction, right.
// Names of months and weekdays follow the language of the regional settings.
#include <sys/time.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <ctime>

#include "platform/script/vbscript/builtins_common.h"
#include "support/format.h"
#include "support/ole_date.h"
#include "support/regional.h"

namespace ketrova::script::vbscript {

namespace {

constexpr std::int64_t kDay = 86400;

std::int64_t FloorDiv(std::int64_t a, std::int64_t b) {
  std::int64_t q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

std::int64_t ToSeconds(double ole) {
  auto day = static_cast<std::int64_t>(ketrova::DatePart(ole));
  return day * kDay + std::llround(TimePart(ole) * kDay);
}

// Raises 5 outside the years 100 to 9999.
double FromSeconds(std::int64_t seconds) {
  static const std::int64_t low = DaysFromCivil(100, 1, 1) * kDay;
  static const std::int64_t high = (DaysFromCivil(9999, 12, 31) + 1) * kDay - 1;
  if (seconds < low || seconds > high) RaiseInvalidArgument();
  std::int64_t day = FloorDiv(seconds, kDay);
  double time = static_cast<double>(seconds - day * kDay) / kDay;
  return CombineDateTime(static_cast<double>(day), time);
}

// VB's weekday (1 Sunday .. 7 Saturday) of a day number; 1899-12-30 was a Saturday.
int WeekdayOfDay(std::int64_t day) {
  return static_cast<int>(((day % 7) + 13) % 7) + 1;
}

int DaysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[month - 1];
}

// The first day of the week: 1 Sunday .. 7 Monday; 0 is the system's (Monday
// under German settings, Sunday otherwise).
int FirstDayOfWeek(Args args, std::size_t i) {
  std::int32_t first = LongArg(args, i, 1);
  if (first < 0 || first > 7) RaiseInvalidArgument();
  if (first == 0) first = Regional().german ? 2 : 1;
  return first;
}

// The rule for week 1: 1 the week of January 1, 2 the first with four days,
// 3 the first full week; 0 is the system's (four days under German settings).
int FirstWeekOfYear(Args args, std::size_t i) {
  std::int32_t rule = LongArg(args, i, 1);
  if (rule < 0 || rule > 3) RaiseInvalidArgument();
  if (rule == 0) rule = Regional().german ? 2 : 1;
  return rule;
}

int WeekdayFrom(std::int64_t day, int firstDay) {
  return (WeekdayOfDay(day) - firstDay + 7) % 7 + 1;
}

std::int64_t WeekOneStart(int year, int firstDay, int rule) {
  std::int64_t jan1 = DaysFromCivil(year, 1, 1);
  int offset = WeekdayFrom(jan1, firstDay) - 1;  // days since the week began
  std::int64_t start = jan1 - offset;
  if ((rule == 2 && 7 - offset < 4) || (rule == 3 && offset != 0)) start += 7;
  return start;
}

// The week of the year as VB counts it: a day before week 1 belongs to the last
// week of the year before; a day at the end of December never to week 1 of
// the next year.
int WeekOfYear(std::int64_t day, int year, int firstDay, int rule) {
  std::int64_t start = WeekOneStart(year, firstDay, rule);
  if (day < start) start = WeekOneStart(year - 1, firstDay, rule);
  return static_cast<int>((day - start) / 7) + 1;
}

std::string Interval(const Variant& v) {
  std::string s = v.ToString();
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

Variant DateResult(double ole) {
  return Variant::FromDate(ole);
}

template <typename Part>
Variant DateField(Args args, Part part) {
  if (args[0].IsNull()) return Variant::Null();
  DateParts parts = SplitDate(args[0].ToDate().value);
  return Variant::Integer(static_cast<std::int16_t>(part(parts)));
}

// Names of months and weekdays as Format writes them ("mmmm", "ddd" ...).
std::string MonthText(int month, bool abbreviate) {
  return Format(Variant::FromDate(ketrova::DateSerial(2000, month, 1)),
                abbreviate ? "mmm" : "mmmm");
}

// 2000-01-02 was a Sunday.
std::string DayText(int weekday, bool abbreviate) {
  return Format(Variant::FromDate(ketrova::DateSerial(2000, 1, 1 + weekday)),
                abbreviate ? "ddd" : "dddd");
}

// The local time now, to the microsecond.
struct Clock {
  std::tm local;
  int microseconds;
};

Clock Now() {
  timeval tv;
  gettimeofday(&tv, nullptr);
  Clock clock;
  localtime_r(&tv.tv_sec, &clock.local);
  clock.microseconds = static_cast<int>(tv.tv_usec);
  return clock;
}

double TodayValue(const Clock& c) {
  return ketrova::DateSerial(c.local.tm_year + 1900, c.local.tm_mon + 1, c.local.tm_mday);
}

double TimeValueOf(const Clock& c) {
  return ketrova::TimeSerial(c.local.tm_hour, c.local.tm_min, c.local.tm_sec);
}

}  // namespace

Variant BiNow(Args) {
  Clock c = Now();
  return DateResult(CombineDateTime(TodayValue(c), TimeValueOf(c)));
}

Variant BiDate(Args) {
  return DateResult(TodayValue(Now()));
}
Variant BiTime(Args) {
  return DateResult(TimeValueOf(Now()));
}

// Timer: seconds since midnight, with hundredths, as a Single.
Variant BiTimer(Args) {
  Clock c = Now();
  double seconds = c.local.tm_hour * 3600 + c.local.tm_min * 60 + c.local.tm_sec +
                   (c.microseconds / 10000) / 100.0;
  return Variant::Single(static_cast<float>(seconds));
}

Variant BiDateSerial(Args args) {
  return DateResult(ketrova::DateSerial(args[0].ToLong(), args[1].ToLong(), args[2].ToLong()));
}

Variant BiTimeSerial(Args args) {
  double time = ketrova::TimeSerial(args[0].ToLong(), args[1].ToLong(), args[2].ToLong());
  return DateResult(time);
}

Variant BiDateValue(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  return DateResult(ketrova::DatePart(args[0].ToDate().value));
}

Variant BiTimeValue(Args args) {
  if (args[0].IsNull()) return Variant::Null();
  return DateResult(TimePart(args[0].ToDate().value));
}

Variant BiYear(Args args) {
  return DateField(args, [](const DateParts& p) { return p.year; });
}
Variant BiMonth(Args args) {
  return DateField(args, [](const DateParts& p) { return p.month; });
}
Variant BiDay(Args args) {
  return DateField(args, [](const DateParts& p) { return p.day; });
}
Variant BiHour(Args args) {
  return DateField(args, [](const DateParts& p) { return p.hour; });
}
Variant BiMinute(Args args) {
  return DateField(args, [](const DateParts& p) { return p.minute; });
}
Variant BiSecond(Args args) {
  return DateField(args, [](const DateParts& p) { return p.second; });
}

// Weekday(date[, firstdayofweek]): 1 for the first day of the week.
Variant BiWeekday(Args args) {
  int first = FirstDayOfWeek(args, 1);
  if (args[0].IsNull()) return Variant::Null();
  std::int64_t day = FloorDiv(ToSeconds(args[0].ToDate().value), kDay);
  return Variant::Integer(static_cast<std::int16_t>(WeekdayFrom(day, first)));
}

Variant BiMonthName(Args args) {
  if (!Missing(args, 1) && args[1].IsNull()) throw VbError(94);  // before the month
  std::int32_t month = args[0].ToLong();
  if (month < 1 || month > 12) RaiseInvalidArgument();
  bool abbreviate = Missing(args, 1) ? false : args[1].ToBool();
  return Variant(MonthText(month, abbreviate));
}

// WeekdayName(weekday[, abbreviate[, firstdayofweek]]): weekday counts from the
// given first day (Sunday by default).
Variant BiWeekdayName(Args args) {
  std::int32_t weekday = args[0].ToLong();
  bool abbreviate = Missing(args, 1) ? false : args[1].ToBool();
  int first = FirstDayOfWeek(args, 2);
  if (weekday < 1 || weekday > 7) RaiseInvalidArgument();
  return Variant(DayText((weekday - 1 + first - 1) % 7 + 1, abbreviate));
}

// DateAdd(interval, number, date): months keep the day where the month has it
// and take its last day otherwise; "y", "d" and "w" all add days.
Variant BiDateAdd(Args args) {
  std::string interval = Interval(args[0]);
  std::int64_t n = args[1].ToLong();
  if (args[2].IsNull()) return Variant::Null();
  std::int64_t seconds = ToSeconds(args[2].ToDate().value);
  std::int64_t months = 0, step = 0;
  if (interval == "yyyy")
    months = 12;
  else if (interval == "q")
    months = 3;
  else if (interval == "m")
    months = 1;
  else if (interval == "y" || interval == "d" || interval == "w")
    step = kDay;
  else if (interval == "ww")
    step = 7 * kDay;
  else if (interval == "h")
    step = 3600;
  else if (interval == "n")
    step = 60;
  else if (interval == "s")
    step = 1;
  else
    RaiseInvalidArgument();
  if (step != 0) return DateResult(FromSeconds(seconds + n * step));
  std::int64_t day = FloorDiv(seconds, kDay);
  std::int64_t timeOfDay = seconds - day * kDay;
  DateParts parts = SplitDate(static_cast<double>(day));
  std::int64_t monthIndex = parts.year * 12LL + (parts.month - 1) + n * months;
  std::int64_t year = FloorDiv(monthIndex, 12);
  if (year < 100 || year > 9999) RaiseInvalidArgument();
  int month = static_cast<int>(monthIndex - year * 12) + 1;
  int dayOfMonth = std::min(parts.day, DaysInMonth(static_cast<int>(year), month));
  std::int64_t newDay = DaysFromCivil(static_cast<int>(year), month, dayOfMonth);
  return DateResult(FromSeconds(newDay * kDay + timeOfDay));
}

// DateDiff(interval, date1, date2[, firstdayofweek[, firstweekofyear]]): the
// number of interval boundaries between the two, negative when date2 is
// earlier; "w" counts whole weeks, "ww" the first days of weeks crossed.
Variant BiDateDiff(Args args) {
  std::string interval = Interval(args[0]);
  int first = FirstDayOfWeek(args, 3);
  FirstWeekOfYear(args, 4);
  if (args[1].IsNull() || args[2].IsNull()) return Variant::Null();
  std::int64_t s1 = ToSeconds(args[1].ToDate().value);
  std::int64_t s2 = ToSeconds(args[2].ToDate().value);
  std::int64_t d1 = FloorDiv(s1, kDay), d2 = FloorDiv(s2, kDay);
  DateParts p1 = SplitDate(static_cast<double>(d1));
  DateParts p2 = SplitDate(static_cast<double>(d2));
  std::int64_t result;
  if (interval == "yyyy") {
    result = p2.year - p1.year;
  } else if (interval == "q") {
    result = (p2.year * 4 + (p2.month - 1) / 3) - (p1.year * 4 + (p1.month - 1) / 3);
  } else if (interval == "m") {
    result = (p2.year * 12 + p2.month) - (p1.year * 12 + p1.month);
  } else if (interval == "y" || interval == "d") {
    result = d2 - d1;
  } else if (interval == "w") {
    result = (d2 - d1) / 7;
  } else if (interval == "ww") {
    std::int64_t w1 = d1 - (WeekdayFrom(d1, first) - 1);
    std::int64_t w2 = d2 - (WeekdayFrom(d2, first) - 1);
    result = (w2 - w1) / 7;
  } else if (interval == "h") {
    result = FloorDiv(s2, 3600) - FloorDiv(s1, 3600);
  } else if (interval == "n") {
    result = FloorDiv(s2, 60) - FloorDiv(s1, 60);
  } else if (interval == "s") {
    result = s2 - s1;
  } else {
    RaiseInvalidArgument();
  }
  if (result < INT32_MIN || result > INT32_MAX) throw VbError(6);
  return Variant::Long(static_cast<std::int32_t>(result));
}

// DatePart(interval, date[, firstdayofweek[, firstweekofyear]]).
Variant BiDatePart(Args args) {
  std::string interval = Interval(args[0]);
  int first = FirstDayOfWeek(args, 2);
  int rule = FirstWeekOfYear(args, 3);
  if (args[1].IsNull()) return Variant::Null();
  std::int64_t seconds = ToSeconds(args[1].ToDate().value);
  std::int64_t day = FloorDiv(seconds, kDay);
  DateParts p = SplitDate(static_cast<double>(day));
  std::int64_t timeOfDay = seconds - day * kDay;
  int result;
  if (interval == "yyyy")
    result = p.year;
  else if (interval == "q")
    result = (p.month - 1) / 3 + 1;
  else if (interval == "m")
    result = p.month;
  else if (interval == "y")
    result = static_cast<int>(day - DaysFromCivil(p.year, 1, 1)) + 1;
  else if (interval == "d")
    result = p.day;
  else if (interval == "w")
    result = WeekdayFrom(day, first);
  else if (interval == "ww")
    result = WeekOfYear(day, p.year, first, rule);
  else if (interval == "h")
    result = static_cast<int>(timeOfDay / 3600);
  else if (interval == "n")
    result = static_cast<int>(timeOfDay / 60 % 60);
  else if (interval == "s")
    result = static_cast<int>(timeOfDay % 60);
  else
    RaiseInvalidArgument();
  return Variant::Integer(static_cast<std::int16_t>(result));
}

// FormatDateTime(date[, format]): 0 general (as CStr), 1 long date, 2 short
// date, 3 long time, 4 short time (hh:mm).
Variant BiFormatDateTime(Args args) {
  static constexpr const char* kNamedFormats[] = {"General Date", "Long Date", "Short Date",
                                                  "Long Time", "Short Time"};
  std::int32_t format = LongArg(args, 1, 0);
  if (format < 0 || format > 4) RaiseInvalidArgument();
  if (args[0].IsNull()) throw VbError(13);  // a Null date: 13, not 94
  Variant date = Variant(args[0].ToDate());
  return Variant(Format(date, kNamedFormats[format]));
}

}  // namespace ketrova::script::vbscript
