#include "support/variant.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "support/ole_date.h"
#include "support/regional.h"
#include "support/regional_guard.h"
#include "support/vb_error.h"
#include "support/vb_error_number.h"

namespace ketrova {
namespace {

using VariantTest = GermanSettingsTest;

TEST_F(VariantTest, CStrOfNumbersUsesShortestTextAndRegionalSeparator) {
  EXPECT_EQ(Variant(1.5).ToString(), "1,5");
  EXPECT_EQ(Variant(0.1 + 0.2).ToString(), "0,3");
  EXPECT_EQ(Variant(1.0 / 3).ToString(), "0,333333333333333");
  EXPECT_EQ(Variant(1e20).ToString(), "1E+20");
  EXPECT_EQ(Variant(-1.5e-5).ToString(), "-1,5E-05");
  EXPECT_EQ(Variant(123456789012345.0).ToString(), "123456789012345");
  EXPECT_EQ(Variant::Single(0.1f).ToString(), "0,1");
  EXPECT_EQ(Variant(-7).ToString(), "-7");
  EXPECT_EQ(Variant::FromCurrency(1.23456).ToString(), "1,2346");
  EXPECT_EQ(Variant::FromCurrency(-0.5).ToString(), "-0,5");
  RegionalGuard us(UsRegional());
  EXPECT_EQ(Variant(1.5).ToString(), "1.5");
}

TEST_F(VariantTest, CStrOfBooleanFollowsTheLanguage) {
  EXPECT_EQ(Variant(true).ToString(), "Wahr");
  EXPECT_EQ("Job.CancelOnError = " + Variant(false).ToString(), "Job.CancelOnError = Falsch");
  RegionalGuard us(UsRegional());
  EXPECT_EQ(Variant(true).ToString(), "True");
  EXPECT_EQ(Variant(false).ToString(), "False");
}

TEST_F(VariantTest, CStrOfDatesShowsDateTimeOrBoth) {
  double day = DateSerial(2002, 12, 31);
  double time = TimeSerial(13, 5, 9);
  EXPECT_EQ(Variant::FromDate(day).ToString(), "31.12.2002");
  EXPECT_EQ(Variant::FromDate(day + time).ToString(), "31.12.2002 13:05:09");
  EXPECT_EQ(Variant::FromDate(time).ToString(), "13:05:09");
  EXPECT_EQ(Variant::FromDate(0).ToString(), "00:00:00");
  RegionalGuard us(UsRegional());
  EXPECT_EQ(Variant::FromDate(day + time).ToString(), "12/31/2002 13:05:09");
}

TEST_F(VariantTest, EmptyNullAndTextConversions) {
  EXPECT_EQ(Variant().ToString(), "");
  EXPECT_EQ(VbErrorNumber([] { Variant::Null().ToString(); }), 94);
  EXPECT_EQ(Variant::Null().ToText(), "");
  EXPECT_EQ(Variant().ToLong(), 0);
  EXPECT_EQ(VbErrorNumber([] { Variant("").ToDouble(); }), 13);
  EXPECT_EQ(VbErrorNumber([] { Variant("abc").ToLong(); }), 13);
  EXPECT_EQ(VbErrorNumber([] { Variant(42).ToObject(); }), 424);
}

TEST_F(VariantTest, CLngAndCIntRoundHalfToEven) {
  EXPECT_EQ(Variant(2.5).ToLong(), 2);
  EXPECT_EQ(Variant(3.5).ToLong(), 4);
  EXPECT_EQ(Variant(-2.5).ToLong(), -2);
  EXPECT_EQ(Variant(2.500001).ToLong(), 3);
  EXPECT_EQ(Variant("2,5").ToInteger(), 2);
  EXPECT_EQ(Variant(true).ToLong(), -1);
  EXPECT_EQ(Variant::FromCurrency(4.5).ToLong(), 4);
  EXPECT_EQ(Variant::FromCurrency(-5.5).ToLong(), -6);
  EXPECT_EQ(Variant("&HFF").ToLong(), 255);
  EXPECT_EQ(VbErrorNumber([] { Variant(32767.5).ToInteger(); }), 6);
  EXPECT_EQ(VbErrorNumber([] { Variant(3e9).ToLong(); }), 6);
  EXPECT_EQ(VbErrorNumber([] { Variant(-1).ToByte(); }), 6);
}

TEST_F(VariantTest, NumberTextFollowsRegionalSeparators) {
  EXPECT_DOUBLE_EQ(Variant("1.234,5").ToDouble(), 1234.5);
  EXPECT_DOUBLE_EQ(Variant(" -1,5E3 ").ToDouble(), -1500);
  // Under German settings the point is a thousands separator, as in VB.
  EXPECT_DOUBLE_EQ(Variant("1.5").ToDouble(), 15);
  EXPECT_TRUE(IsNumeric(Variant("1.234,50")));
  EXPECT_FALSE(IsNumeric(Variant("12a")));
  EXPECT_FALSE(IsNumeric(Variant("")));
  EXPECT_TRUE(IsNumeric(Variant()));
  EXPECT_FALSE(IsNumeric(Variant::FromDate(1)));
  RegionalGuard us(UsRegional());
  EXPECT_DOUBLE_EQ(Variant("1,234.5").ToDouble(), 1234.5);
}

TEST_F(VariantTest, CBoolReadsBothLanguagesAndNumbers) {
  EXPECT_TRUE(Variant("wahr").ToBool());
  EXPECT_TRUE(Variant(" TRUE").ToBool());
  EXPECT_FALSE(Variant("Falsch").ToBool());
  EXPECT_FALSE(Variant("false").ToBool());
  EXPECT_TRUE(Variant("#True#").ToBool());  // as Write # stores it
  EXPECT_FALSE(Variant("#FALSE#").ToBool());
  EXPECT_TRUE(Variant("-1").ToBool());
  EXPECT_FALSE(Variant("0").ToBool());
  EXPECT_TRUE(Variant(0.1).ToBool());
  EXPECT_EQ(VbErrorNumber([] { Variant("ja").ToBool(); }), 13);
}

TEST_F(VariantTest, CDateReadsRegionalText) {
  double day = DateSerial(2002, 12, 31);
  EXPECT_EQ(Variant("31.12.2002").ToDate().value, day);
  EXPECT_EQ(Variant("31.12.02").ToDate().value, day);
  EXPECT_EQ(Variant("2002-12-31").ToDate().value, day);
  EXPECT_DOUBLE_EQ(Variant("31.12.2002 13:05").ToDate().value, day + TimeSerial(13, 5, 0));
  EXPECT_DOUBLE_EQ(Variant("1:05:00 PM").ToDate().value, TimeSerial(13, 5, 0));
  EXPECT_FALSE(IsDate(Variant("32.13.2002")));
  EXPECT_FALSE(IsDate(Variant("1,5")));
  EXPECT_FALSE(IsDate(Variant("25:00")));
  EXPECT_EQ(VbErrorNumber([] { Variant("morgen").ToDate(); }), 13);
  RegionalGuard us(UsRegional());
  EXPECT_EQ(Variant("12/31/2002").ToDate().value, day);
  // Day and month that do not fit the order are swapped, as VB does.
  EXPECT_EQ(Variant("31/12/2002").ToDate().value, day);
}

TEST_F(VariantTest, DecimalAndCurrencyKeepTheirDigits) {
  EXPECT_EQ(Variant("12345678901234567,89").ToDecimal().mantissa,
            static_cast<Decimal::Int128>(1234567890123456789LL));
  EXPECT_EQ(Variant("12345678901234567,89").ToString(), "12345678901234567,89");
  EXPECT_EQ(Variant(Variant("0,12345").ToDecimal()).ToCurrency().scaled, 1234);
  EXPECT_EQ(Variant(Variant("0,12355").ToDecimal()).ToCurrency().scaled, 1236);
  EXPECT_EQ(Variant(Decimal{-150, 2}).ToString(), "-1,5");
  EXPECT_EQ(Variant(0.1).ToDecimal().mantissa, 1);
}

TEST_F(VariantTest, CompareFollowsVbRules) {
  EXPECT_EQ(Compare(Variant(10), Variant("9")), CompareResult::kGreater);
  EXPECT_EQ(Compare(Variant("10"), Variant("9")), CompareResult::kLess);
  EXPECT_EQ(Compare(Variant(1), Variant("abc")), CompareResult::kLess);
  EXPECT_EQ(Compare(Variant(), Variant("")), CompareResult::kEqual);
  EXPECT_EQ(Compare(Variant(), Variant(0)), CompareResult::kEqual);
  EXPECT_EQ(Compare(Variant(true), Variant(-1)), CompareResult::kEqual);
  EXPECT_EQ(Compare(Variant::Null(), Variant(1)), CompareResult::kNull);
  EXPECT_EQ(Compare(Variant("Straße"), Variant("STRASSE"), true), CompareResult::kGreater);
  EXPECT_EQ(Compare(Variant("Ärger"), Variant("äRGER"), true), CompareResult::kEqual);
  EXPECT_EQ(Compare(Variant("a"), Variant("A")), CompareResult::kGreater);
  EXPECT_TRUE(SameValue(Variant::Null(), Variant::Null()));
  EXPECT_FALSE(SameValue(Variant(1), Variant(1.0)));
  EXPECT_TRUE(SameValue(Variant("x"), Variant("x")));
}

TEST_F(VariantTest, ArraysCopyOnWrite) {
  auto array = std::make_shared<SafeArray>();
  array->bounds = {{0, 2}};
  array->data = {Variant(1), Variant(2)};
  Variant a(array);
  Variant b = a;
  b.MutableArray().data[0] = Variant(9);
  EXPECT_EQ(a.AsArray()->data[0].AsLong(), 1);
  EXPECT_EQ(b.AsArray()->data[0].AsLong(), 9);
  EXPECT_EQ(a.Type(), 8204);
  EXPECT_EQ(a.TypeName(), "Variant()");
  EXPECT_FALSE(SameValue(a, b));
}

TEST_F(VariantTest, TypeNamesAndConvertTo) {
  EXPECT_EQ(Variant().TypeName(), "Empty");
  EXPECT_EQ(Variant::Nothing().TypeName(), "Nothing");
  EXPECT_EQ(Variant::Integer(1).TypeName(), "Integer");
  EXPECT_EQ(Variant("5").ConvertTo(vbInteger).Type(), vbInteger);
  EXPECT_EQ(Variant(2.5).ConvertTo(vbString).AsString(), "2,5");
  EXPECT_EQ(Variant("31.12.2002").ConvertTo(vbDate).Type(), vbDate);
}

TEST(OleDateTest, SerialsRollOverAndNegativeDatesReadTheAbsoluteFraction) {
  EXPECT_EQ(DateSerial(1899, 12, 30), 0);
  EXPECT_EQ(DateSerial(2002, 13, 1), DateSerial(2003, 1, 1));
  EXPECT_EQ(DateSerial(2003, 3, 0), DateSerial(2003, 2, 28));
  EXPECT_EQ(DateSerial(2002, 0, 1), DateSerial(2001, 12, 1));
  EXPECT_EQ(DateSerial(2, 1, 1), DateSerial(2002, 1, 1));
  EXPECT_EQ(DateSerial(99, 1, 1), DateSerial(1999, 1, 1));
  EXPECT_EQ(DateSerial(1900, 1, 1), 2);

  DateParts p = SplitDate(-1.25);
  EXPECT_EQ(p.year, 1899);
  EXPECT_EQ(p.month, 12);
  EXPECT_EQ(p.day, 29);
  EXPECT_EQ(p.hour, 6);
  EXPECT_EQ(CombineDateTime(DateSerial(1800, 2, 3), TimeSerial(18, 0, 0)),
            DateSerial(1800, 2, 3) - 0.75);
  p = SplitDate(DateSerial(1800, 2, 3) - 0.75);
  EXPECT_EQ(p.year * 10000 + p.month * 100 + p.day, 18000203);
  EXPECT_EQ(p.hour, 18);

  p = SplitDate(DateSerial(2002, 12, 31) + TimeSerial(23, 59, 59) + 0.9 / 86400);
  EXPECT_EQ(p.year, 2003);  // rounds up to midnight
  EXPECT_EQ(p.hour, 0);
  EXPECT_EQ(SplitDate(DateSerial(2002, 12, 31)).weekday, 3);  // Tuesday
  EXPECT_EQ(SplitDate(0).weekday, 7);                         // Saturday
  EXPECT_EQ(VbErrorNumber([] { DateSerial(10000, 1, 1); }), 5);
}

TEST(RegionalTest, SettingsFromLocaleInfo) {
  RegionalSettings us = RegionalFromLocaleInfo("%m/%d/%Y", ".", ",", "en");
  EXPECT_EQ(us.shortDatePattern, "mm/dd/yyyy");
  EXPECT_EQ(us.dateSeparator, "/");
  EXPECT_EQ(us.DateOrder(), "mdy");
  EXPECT_EQ(us.trueText, "True");
  RegionalSettings de = RegionalFromLocaleInfo("%d.%m.%Y", ",", ".", "de");
  EXPECT_EQ(de.shortDatePattern, "dd.mm.yyyy");
  EXPECT_EQ(de.falseText, "Falsch");
  EXPECT_EQ(RegionalFromLocaleInfo("%Y-%m-%d", ",", "", "sv").DateOrder(), "ymd");
  EXPECT_EQ(RegionalFromLocale("C").shortDatePattern, "dd.mm.yyyy");
  EXPECT_EQ(RegionalFromLocale("POSIX").decimalSeparator, ",");
  EXPECT_EQ(RegionalFromLocale("xx_NOWHERE.UTF-8").trueText, "Wahr");
}

// Compiles de_DE and en_US into a temporary LOCPATH, so that the reading of a
// real locale is tested on machines that have none installed.
TEST(RegionalTest, SettingsComeFromTheEnvironmentsLocale) {
  namespace fs = std::filesystem;
  if (std::system("command -v localedef >/dev/null 2>&1") != 0) GTEST_SKIP() << "no localedef";
  fs::path dir = fs::temp_directory_path() / ("ketrova_locales_" + std::to_string(getpid()));
  fs::create_directories(dir);
  for (const char* name : {"de_DE", "en_US"}) {
    std::string command = std::string("localedef -c -i ") + name + " -f UTF-8 " +
                          (dir / (std::string(name) + ".UTF-8")).string() + " >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0 && !fs::exists(dir / (std::string(name) + ".UTF-8")))
      GTEST_SKIP() << "localedef cannot build " << name;
  }
  RegionalSettings saved = Regional();
  auto env = [](const char* name) {
    const char* v = std::getenv(name);
    return v ? std::optional<std::string>(v) : std::nullopt;
  };
  auto oldLocPath = env("LOCPATH"), oldAll = env("LC_ALL");
  setenv("LOCPATH", dir.c_str(), 1);

  RegionalSettings de = RegionalFromLocale("de_DE.UTF-8");
  EXPECT_EQ(de.shortDatePattern, "dd.mm.yyyy");
  EXPECT_EQ(de.decimalSeparator, ",");
  EXPECT_EQ(de.thousandSeparator, ".");
  EXPECT_EQ(de.trueText, "Wahr");

  setenv("LC_ALL", "en_US.UTF-8", 1);
  ResetRegional();
  EXPECT_EQ(Regional().shortDatePattern, "mm/dd/yyyy");
  EXPECT_EQ(Regional().decimalSeparator, ".");
  EXPECT_EQ(Regional().thousandSeparator, ",");
  EXPECT_EQ(Variant(true).ToString(), "True");
  EXPECT_EQ(Variant::FromDate(DateSerial(2002, 12, 31)).ToString(), "12/31/2002");

  if (oldLocPath)
    setenv("LOCPATH", oldLocPath->c_str(), 1);
  else
    unsetenv("LOCPATH");
  if (oldAll)
    setenv("LC_ALL", oldAll->c_str(), 1);
  else
    unsetenv("LC_ALL");
  SetRegional(saved);
  fs::remove_all(dir);
}

}  // namespace
}  // namespace ketrova
