// VB's Format(value, pattern) under the regional settings: number patterns
// ("#,##0.00", "0.00%", "0.00E+00", sections "pos;neg;zero"), date patterns
// ("dd.mm.yyyy", "dd.mm.yyyy hh:mm:ss", "yyyy-mm-dd", "dddd", "mmmm", "AM/PM"),
// text patterns ("@", ">", "<") and the named formats ("Standard", "Fixed",
// "Percent", "Short Date", "Long Date", "Short Time", "Long Time", "General
// Date", "General Number", "Yes/No", "True/False", "On/Off").
//
// In a number pattern "." is the decimal and "," the thousands placeholder,
// written as the regional separators; in a date pattern "/" and ":" are the
// regional date and time separators. Numbers round half away from zero on
// their 15-digit decimal text, as VB's Format does. A value that does not fit
// the pattern (a text that is no number under a number pattern) comes back as
// its text. Null and Empty give "". Month and weekday names are German under
// German settings, English otherwise.
#pragma once

#include <string>
#include <string_view>

#include "support/variant.h"

namespace ketrova {

std::string Format(const Variant& value, std::string_view pattern = {});

}  // namespace ketrova
