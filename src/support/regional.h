// Regional settings: how dates and numbers are written and read. They come
// from the locale of the environment (LC_ALL, else LC_TIME / LC_NUMERIC, else
// LANG); under C, POSIX or a locale that is not installed the German settings
// hold, since every text of the product is German.
//
// The short date pattern always has two-digit day and month and a four-digit
// year ("dd.mm.yyyy", "mm/dd/yyyy"); times are written "hh:mm:ss" (24 hours)
// under every locale. The language decides the texts of a Boolean: "Wahr" and
// "Falsch" for German (and C / POSIX), "True" and "False" for any other
// language, as VB wrote them on a system of that language.
//
// The settings are read once, on first use; tests replace them with
// SetRegional(). Not guarded for threads: set them before threads start.
#pragma once

#include <string>
#include <string_view>

namespace ketrova {

struct RegionalSettings {
  std::string shortDatePattern = "dd.mm.yyyy";  // "dd", "mm", "yyyy" and the separator
  std::string dateSeparator = ".";
  std::string timeSeparator = ":";
  std::string decimalSeparator = ",";
  std::string thousandSeparator = ".";
  bool german = true;  // language of the Boolean texts and of month names
  std::string trueText = "Wahr";
  std::string falseText = "Falsch";

  // The order of the date fields: 'd', 'm', 'y' in the pattern's order.
  std::string DateOrder() const;
};

// The settings in force.
const RegionalSettings& Regional();
// Replaces the settings in force (tests; a front end with an option).
void SetRegional(const RegionalSettings& settings);
// Goes back to the settings of the environment's locale, read anew.
void ResetRegional();

// The German settings, and those of a US system.
RegionalSettings GermanRegional();
RegionalSettings UsRegional();

// The settings of a named locale ("de_DE.UTF-8", "en_US.UTF-8"); the German
// ones when the name is empty, C, POSIX or not installed.
RegionalSettings RegionalFromLocale(const std::string& localeName);
// The settings from what a locale says: its strftime date format ("%d.%m.%Y"),
// decimal point, thousands separator and language ("de", "en" ...).
RegionalSettings RegionalFromLocaleInfo(std::string_view dateFormat, std::string_view radix,
                                        std::string_view thousands, std::string_view language);

}  // namespace ketrova
