// Small conversions that record access needs between store values and
// Variants: UTF-8 and UTF-16, OLE dates and calendar parts, decimal text and
// Decimal. Kept here so that the platform does not wait on other layers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ado/enums.h"
#include "support/variant.h"

namespace ketrova::ado {

std::u16string Utf8ToUtf16(std::string_view s);
std::string Utf16ToUtf8(std::u16string_view s);

struct DateParts {
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
  std::uint32_t fraction = 0;  // nanoseconds
};

double OleDateFromParts(const DateParts& p);
DateParts PartsFromOleDate(double oleDate);
// The ISO form stores and our own files keep dates in: "YYYY-MM-DD",
// "YYYY-MM-DD hh:mm:ss" or that with a fraction of seconds ("….fff"), read
// field by field; nullopt for any other text or a field out of range.
std::optional<DateParts> IsoDateParts(std::string_view text);

// A whole number read from a store, as the Variant a column of `type` gives:
// Integer for SMALLINT and TINYINT, Byte for an unsigned TINYINT, else Long,
// and Double where a Long does not hold it.
Variant IntegerValue(std::int64_t v, DataTypeEnum type);

// "-123.4500" to a Decimal; Empty when the text is no decimal number or does
// not fit 28 digits.
Variant DecimalFromText(std::string_view text);
// A Decimal as plain text with "." ("-123.45"), for binding.
std::string DecimalToText(const Decimal& d);
// A Currency as plain text with "." and four places.
std::string CurrencyToText(Currency c);

}  // namespace ketrova::ado
