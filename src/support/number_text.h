// Numbers as text under the regional settings, the way VB reads and writes
// them: CDbl("1.234,5") is 1234.5 under German settings, CStr(1.5) is "1,5".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/regional.h"

namespace ketrova {

// A number text read under the settings: blanks around it, a sign in front,
// thousands separators in the whole part (ignored wherever they stand), the
// decimal separator, an exponent ("1,5E3"), and "&H" / "&O" integers. The
// result is the same number in C form ("-1234.5", "1.5e3"), or nullopt when the
// text is not a number.
std::optional<std::string> NormalizeNumberText(std::string_view text,
                                               const RegionalSettings& settings);
// The text read as a double; nullopt when it is not a number.
std::optional<double> ParseNumber(std::string_view text, const RegionalSettings& settings);
std::optional<double> ParseNumber(std::string_view text);  // with Regional()

// VB's shortest text of a number with up to `digits` significant digits (15 for
// a Double, 7 for a Single), in exponent form from 1E+15 or below 1E-04 as VB
// writes it ("1E+20", "1,5E-05"), with the regional decimal separator.
std::string NumberToText(double value, int digits = 15);
std::string NumberToText(double value, int digits, const RegionalSettings& settings);

}  // namespace ketrova
