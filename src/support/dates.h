// Date texts for SQL and for the screen. InitRegionalFormats finds out, once,
// how the regional settings write a date and a number (by formatting the date
// 2002-12-31 and the number 100000); DateToLocalText writes a date in that
// order, DateToGermanText always as day.month.year. Callers need not call
// InitRegionalFormats first: the two date texts do it.
#pragma once

#include <string>
#include <string_view>

#include "support/variant.h"

namespace ketrova {

struct RegionalFormats {
  std::string dateFormat;         // "dd.mm.yyyy", "mm/dd/yyyy"; always ends in "yyyy"
  std::string dateSeparator;      // "."
  std::string germanDateFormat;   // always "dd.mm.yyyy"
  std::string thousandSeparator;  // "."
  std::string decimalSeparator;   // ","
  bool filled = false;
};

// Fills the formats from the regional settings, or from the given date
// pattern; does nothing when they are filled already.
void InitRegionalFormats(std::string_view format = {});
// The formats, filled on first use.
const RegionalFormats& GetRegionalFormats();
// Forgets the formats, so that the next use reads the regional settings anew
// (after SetRegional in tests).
void ResetRegionalFormats();

// 1 when the regional decimal separator is ".", else 0.
int IsDecimalPoint();

// The date of a value (a date or a date text) with two-digit day and month and
// four-digit year, in the regional order and with the regional separator; ""
// for a blank value. A German date text ("31.12.2002") is read as such also
// under settings whose decimal separator is ".".
std::string DateToLocalText(const Variant& value);
// The date of a value as day.month.year ("31.12.2002"); "" for a blank value,
// and when the regional order is none of the six orders of day, month, year.
std::string DateToGermanText(const Variant& value);

}  // namespace ketrova
