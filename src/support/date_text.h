// Dates as text under the regional settings, the way VB's CStr and CDate
// write and read them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/regional.h"

namespace ketrova {

// CStr of a date: the short date ("31.12.2002"), with " hh:mm:ss" behind it
// when there is a time of day; only the time when the date part is 0.
std::string DateToText(double oleDate);
std::string DateToText(double oleDate, const RegionalSettings& settings);
// The short date alone, and the time alone ("13:05:00").
std::string ShortDateText(double oleDate, const RegionalSettings& settings);
std::string TimeText(double oleDate, const RegionalSettings& settings);

// CDate of a text: a date with its fields in the regional order and any of
// ".", "/" or "-" between them ("31.12.2002", "31.12.02", "31.12." for the
// current year), an ISO date ("2002-12-31"), a time ("13:05", "1:05:00 PM"),
// or a date and a time. When day and month do not fit the regional order, the
// other order is tried, as VB does. nullopt when it is not a date.
std::optional<double> ParseDateText(std::string_view text);
std::optional<double> ParseDateText(std::string_view text, const RegionalSettings& settings);

}  // namespace ketrova
