// Conversions at their edges: number and date texts that must or must not read,
// objects that stand for their default value, and dates before 1899-12-30.
#include <gtest/gtest.h>

#include "support/date_text.h"
#include "support/format.h"
#include "support/number_text.h"
#include "support/object.h"
#include "support/ole_date.h"
#include "support/regional_guard.h"
#include "support/vb_error.h"
#include "support/vb_error_number.h"

namespace ketrova {
namespace {

class Field : public Object {
 public:
  explicit Field(Variant value) : value_(std::move(value)) {}
  std::string TypeName() const override { return "Field"; }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    if (dispId == kDispIdValue) return value_;
    return Object::Invoke(dispId, kind, args);
  }

 private:
  Variant value_;
};

class Plain : public Object {
 public:
  std::string TypeName() const override { return "Plain"; }
};

using EdgeTest = GermanSettingsTest;

TEST_F(EdgeTest, NumberTextsThatReadAndThatDoNot) {
  EXPECT_EQ(ParseNumber("&HFFFF"), -1);  // four hex digits are an Integer
  EXPECT_EQ(ParseNumber("&H10000"), 65536);
  EXPECT_EQ(ParseNumber("&o17"), 15);
  EXPECT_EQ(ParseNumber("- 5"), -5);
  EXPECT_EQ(ParseNumber("1,5e-1"), 0.15);
  EXPECT_EQ(ParseNumber("1.000.000"), 1000000);
  EXPECT_FALSE(ParseNumber("1,5,5"));
  EXPECT_FALSE(ParseNumber("--5"));
  EXPECT_FALSE(ParseNumber("1e"));
  EXPECT_FALSE(ParseNumber("1e400"));
  EXPECT_FALSE(ParseNumber("&HZZ"));
  EXPECT_FALSE(ParseNumber(","));
}

TEST_F(EdgeTest, DateTextsThatReadAndThatDoNot) {
  EXPECT_EQ(ParseDateText("0:00:00"), 0);
  EXPECT_EQ(ParseDateText("12:00 AM"), 0);
  EXPECT_FALSE(ParseDateText("12:60"));
  EXPECT_FALSE(ParseDateText("13:00 PM"));
  EXPECT_FALSE(ParseDateText("29.02.2003"));
  EXPECT_TRUE(ParseDateText("29.02.2004"));
  EXPECT_FALSE(ParseDateText("1.2.3.4"));
  EXPECT_FALSE(ParseDateText("31.12.2002 31.12.2002"));
  EXPECT_EQ(ParseDateText("31.12.29"), DateSerial(2029, 12, 31));
  EXPECT_EQ(ParseDateText("31.12.30"), DateSerial(1930, 12, 31));
}

TEST_F(EdgeTest, DatesBeforeTheEpochRoundTrip) {
  Variant early("01.01.1800 06:00");
  double ole = early.ToDate().value;
  EXPECT_LT(ole, 0);
  EXPECT_EQ(Variant::FromDate(ole).ToString(), "01.01.1800 06:00:00");
  EXPECT_EQ(Format(Variant::FromDate(ole), "yyyy-mm-dd hh:nn"), "1800-01-01 06:00");
  EXPECT_EQ(VbErrorNumber([] { Variant(1e8).ToDate(); }), 6);
}

TEST_F(EdgeTest, ObjectsStandForTheirDefaultValue) {
  Variant field(ObjectPtr(std::make_shared<Field>(Variant(2.5))));
  EXPECT_EQ(field.ToString(), "2,5");
  EXPECT_EQ(field.ToLong(), 2);
  EXPECT_EQ(Compare(field, Variant(2.5)), CompareResult::kEqual);
  EXPECT_EQ(field.TypeName(), "Field");
  Variant plain(ObjectPtr(std::make_shared<Plain>()));
  EXPECT_EQ(VbErrorNumber([&] { plain.ToString(); }), 13);
  EXPECT_EQ(VbErrorNumber([] { Variant::Nothing().ToString(); }), 91);
  EXPECT_TRUE(SameValue(plain, plain));
}

TEST_F(EdgeTest, MoreNumberPatterns) {
  EXPECT_EQ(Format(Variant(0), "#"), "");
  EXPECT_EQ(Format(Variant(0.5), "00.00"), "00,50");
  EXPECT_EQ(Format(Variant(1234567), "#,##0"), "1.234.567");
  EXPECT_EQ(Format(Variant(999.999), "#,##0.00"), "1.000,00");
  EXPECT_EQ(Format(Variant(-3), "\"Saldo: \"0"), "-Saldo: 3");
  EXPECT_EQ(Format(Variant(0.000123), "0.0E-00"), "1,2E-04");
  EXPECT_EQ(Format(Variant(true), "0"), "-1");
}

}  // namespace
}  // namespace ketrova
