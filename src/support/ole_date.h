// OLE dates: days since 1899-12-30, the time of day as the fraction. Before
// that day the value is negative and the time is its absolute fraction, as VB
// reads it: -1.25 is 1899-12-29 06:00. Years run from 100 to 9999.
#pragma once

#include <cstdint>

namespace ketrova {

struct DateParts {
  int year = 1899;
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int weekday = 7;  // VB's Weekday: 1 Sunday .. 7 Saturday
};

// VB's DateSerial: months and days out of range roll over (month 13 is January
// of the next year, day 0 the last day of the month before); years 0 to 29 are
// 2000 to 2029, 30 to 99 are 1930 to 1999. Raises 5 outside 100..9999.
double DateSerial(int year, int month, int day);
// VB's TimeSerial as a fraction of a day; values out of range roll over.
double TimeSerial(int hour, int minute, int second);
// A date and a time of day joined into one OLE date, negative dates included.
double CombineDateTime(double date, double time);
// True when the day exists (no rolling).
bool IsValidDate(int year, int month, int day);

// The parts of an OLE date, the time rounded to the second.
DateParts SplitDate(double oleDate);
// The day part (the whole days toward zero) and the time part (0 <= t < 1).
double DatePart(double oleDate);
double TimePart(double oleDate);

// Days from 1899-12-30 to a proleptic Gregorian day.
std::int64_t DaysFromCivil(int year, int month, int day);

}  // namespace ketrova
