#include "builtin_call.h"

namespace ketrova::script::vbscript::testing {
namespace {

using DateFunctions = GermanSettings;

Variant D(int y, int m, int d, int hh = 0, int mm = 0, int ss = 0) {
  double date = Call("DateSerial", y, m, d).AsDate().value;
  double time = Call("TimeSerial", hh, mm, ss).AsDate().value;
  return Variant::FromDate(date < 0 ? date - time : date + time);
}

TEST_F(DateFunctions, SerialsAndParts) {
  Variant d = D(2002, 12, 31, 13, 5, 9);
  EXPECT_EQ(Show(d), "31.12.2002 13:05:09");
  EXPECT_EQ(Text("Year", d), "2002");
  EXPECT_EQ(Text("Month", d), "12");
  EXPECT_EQ(Text("Day", d), "31");
  EXPECT_EQ(Text("Hour", d), "13");
  EXPECT_EQ(Text("Minute", d), "5");
  EXPECT_EQ(Text("Second", d), "9");
  EXPECT_EQ(Call("Day", d).Type(), vbInteger);
  EXPECT_EQ(Text("Day", "24.12.2002"), "24");
  EXPECT_EQ(Text("Year", Null()), "Null");
  EXPECT_EQ(Text("DateSerial", 2002, 13, 1), "01.01.2003");
  EXPECT_EQ(Text("TimeSerial", 13, 65, 0), "14:05:00");
  EXPECT_EQ(Text("DateValue", "31.12.2002 13:05"), "31.12.2002");
  EXPECT_EQ(Text("TimeValue", "31.12.2002 13:05"), "13:05:00");
  EXPECT_EQ(ErrorOf("Month", "kein Datum"), 13);
}

TEST_F(DateFunctions, WeekdaysCountFromTheFirstDay) {
  Variant tuesday = D(2002, 12, 31);
  EXPECT_EQ(Text("Weekday", tuesday), "3");
  EXPECT_EQ(Text("Weekday", tuesday, 2), "2");
  EXPECT_EQ(Text("Weekday", tuesday, 0), "2");  // the system's week begins on Monday
  EXPECT_EQ(Text("Weekday", D(1899, 12, 29, 6)), "6");
  EXPECT_EQ(ErrorOf("Weekday", tuesday, 8), 5);
  EXPECT_EQ(Text("WeekdayName", 1), "Sonntag");
  EXPECT_EQ(Text("WeekdayName", 1, true, 2), "Mo");
  EXPECT_EQ(Text("WeekdayName", 7, false, 2), "Sonntag");
  EXPECT_EQ(Text("MonthName", 3), "März");
  EXPECT_EQ(Text("MonthName", 10, true), "Okt");
  EXPECT_EQ(ErrorOf("MonthName", 13), 5);
  EXPECT_EQ(ErrorOf("WeekdayName", 0), 5);
}

TEST_F(DateFunctions, DateAddRollsMonthsToTheirLastDay) {
  EXPECT_EQ(Text("DateAdd", "m", 1, D(2003, 1, 31)), "28.02.2003");
  EXPECT_EQ(Text("DateAdd", "yyyy", 1, D(2000, 2, 29)), "28.02.2001");
  EXPECT_EQ(Text("DateAdd", "q", -1, D(2003, 5, 31, 8)), "28.02.2003 08:00:00");
  EXPECT_EQ(Text("DateAdd", "M", 13, D(2002, 12, 15)), "15.01.2004");
  EXPECT_EQ(Text("DateAdd", "d", -1, D(2000, 1, 1, 12)), "31.12.1999 12:00:00");
  EXPECT_EQ(Text("DateAdd", "w", 1, D(2000, 1, 1)), "02.01.2000");
  EXPECT_EQ(Text("DateAdd", "ww", 2, D(2000, 1, 1)), "15.01.2000");
  EXPECT_EQ(Text("DateAdd", "h", 25, D(2000, 1, 1, 23)), "03.01.2000");
  EXPECT_EQ(Text("DateAdd", "n", -1, D(2000, 1, 1)), "31.12.1999 23:59:00");
  EXPECT_EQ(Text("DateAdd", "s", 30, "31.12.2002 13:05"), "31.12.2002 13:05:30");
  EXPECT_EQ(Text("DateAdd", "d", 1, Null()), "Null");
  EXPECT_EQ(ErrorOf("DateAdd", "x", 1, D(2000, 1, 1)), 5);
  EXPECT_EQ(ErrorOf("DateAdd", "yyyy", 9000, D(2000, 1, 1)), 5);
  EXPECT_EQ(ErrorOf("DateAdd", "d", Null(), D(2000, 1, 1)), 94);
}

// Before 1899-12-30 an OLE date holds its time as an absolute fraction:
// -1.25 is 1899-12-29 06:00. Adding hours must walk forward in time there.
TEST_F(DateFunctions, DateArithmeticAcrossTheOleEpoch) {
  Variant early = D(1899, 12, 29, 6);
  EXPECT_DOUBLE_EQ(early.AsDate().value, -1.25);
  EXPECT_DOUBLE_EQ(Call("DateAdd", "h", 6, early).AsDate().value, -1.5);
  EXPECT_DOUBLE_EQ(Call("DateAdd", "h", 30, early).AsDate().value, 0.5);
  EXPECT_DOUBLE_EQ(Call("DateAdd", "h", -12, Variant::FromDate(0.25)).AsDate().value, -1.75);
  EXPECT_EQ(Text("DateDiff", "h", early, Variant::FromDate(0.5)), "30");
  EXPECT_EQ(Text("DateValue", early), "29.12.1899");
}

TEST_F(DateFunctions, DateDiffCountsBoundaries) {
  EXPECT_EQ(Text("DateDiff", "d", "31.12.2002 23:00", "01.01.2003 01:00"), "1");
  EXPECT_EQ(Text("DateDiff", "yyyy", D(2002, 12, 31), D(2003, 1, 1)), "1");
  EXPECT_EQ(Text("DateDiff", "q", D(2002, 3, 31), D(2002, 4, 1)), "1");
  EXPECT_EQ(Text("DateDiff", "m", D(2003, 3, 1), D(2002, 12, 31)), "-3");
  EXPECT_EQ(Text("DateDiff", "w", D(2003, 1, 1), D(2003, 1, 14)), "1");
  // 2003-01-04 was a Saturday: a Sunday lies between it and 2003-01-06.
  EXPECT_EQ(Text("DateDiff", "ww", D(2003, 1, 4), D(2003, 1, 6)), "1");
  EXPECT_EQ(Text("DateDiff", "ww", D(2003, 1, 4), D(2003, 1, 6), 7), "0");
  EXPECT_EQ(Text("DateDiff", "h", D(2003, 1, 1, 10, 59), D(2003, 1, 1, 11, 1)), "1");
  EXPECT_EQ(Text("DateDiff", "n", D(2003, 1, 1, 10, 59, 59), D(2003, 1, 1, 11)), "1");
  EXPECT_EQ(Text("DateDiff", "s", D(2003, 1, 1), D(2002, 12, 31, 23, 59)), "-60");
  EXPECT_EQ(Call("DateDiff", "d", D(2003, 1, 1), D(2003, 1, 2)).Type(), vbLong);
  EXPECT_EQ(Text("DateDiff", "d", Null(), D(2003, 1, 1)), "Null");
  EXPECT_EQ(ErrorOf("DateDiff", "x", D(2003, 1, 1), D(2003, 1, 2)), 5);
}

TEST_F(DateFunctions, DatePartAndWeeksOfTheYear) {
  Variant d = D(2004, 12, 31, 13, 5, 9);
  EXPECT_EQ(Text("DatePart", "yyyy", d), "2004");
  EXPECT_EQ(Text("DatePart", "q", d), "4");
  EXPECT_EQ(Text("DatePart", "y", d), "366");
  EXPECT_EQ(Text("DatePart", "w", d), "6");
  EXPECT_EQ(Text("DatePart", "h", d), "13");
  EXPECT_EQ(Text("DatePart", "n", d), "5");
  EXPECT_EQ(Text("DatePart", "s", d), "9");
  EXPECT_EQ(Text("DatePart", "ww", D(2003, 1, 1)), "1");
  EXPECT_EQ(Text("DatePart", "ww", D(2003, 1, 5)), "2");
  // The week rules: January 1 2010 was a Friday.
  EXPECT_EQ(Text("DatePart", "ww", D(2010, 1, 1), 2, 2), "53");
  EXPECT_EQ(Text("DatePart", "ww", D(2010, 1, 4), 2, 2), "1");
  EXPECT_EQ(Text("DatePart", "ww", D(2010, 1, 4), 0, 0), "1");
  EXPECT_EQ(Text("DatePart", "ww", D(2010, 1, 3), 1, 3), "1");
  EXPECT_EQ(Text("DatePart", "ww", D(2010, 1, 2), 1, 3), "52");
  EXPECT_EQ(Text("DatePart", "m", Null()), "Null");
  EXPECT_EQ(ErrorOf("DatePart", "ww", d, 1, 4), 5);
}

TEST_F(DateFunctions, FormatDateTimeUnderGermanAndUsSettings) {
  Variant d = D(2002, 12, 31, 13, 5, 0);
  EXPECT_EQ(Text("FormatDateTime", d), "31.12.2002 13:05:00");
  EXPECT_EQ(Text("FormatDateTime", d, 1), "Dienstag, 31. Dezember 2002");
  EXPECT_EQ(Text("FormatDateTime", d, 2), "31.12.2002");
  EXPECT_EQ(Text("FormatDateTime", d, 3), "13:05:00");
  EXPECT_EQ(Text("FormatDateTime", d, 4), "13:05");
  EXPECT_EQ(Text("FormatDateTime", D(2002, 12, 31), 0), "31.12.2002");
  EXPECT_EQ(ErrorOf("FormatDateTime", d, 5), 5);
  SetRegional(UsRegional());
  EXPECT_EQ(Text("FormatDateTime", d, 1), "Tuesday, December 31, 2002");
  EXPECT_EQ(Text("FormatDateTime", d, 2), "12/31/2002");
  EXPECT_EQ(Text("MonthName", 3), "March");
  EXPECT_EQ(Text("WeekdayName", 2, true), "Mon");
}

TEST_F(DateFunctions, ClockFunctionsSplitNow) {
  double date = Call("Date").AsDate().value;
  double time = Call("Time").AsDate().value;
  EXPECT_EQ(date, static_cast<long long>(date));
  EXPECT_GE(time, 0.0);
  EXPECT_LT(time, 1.0);
  EXPECT_GE(Call("Now").AsDate().value, date);
  float timer = Call("Timer").AsSingle();
  EXPECT_GE(timer, 0.0f);
  EXPECT_LT(timer, 86400.0f);
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
