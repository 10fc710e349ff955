#include "support/regional.h"

#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <optional>

namespace ketrova {

std::string RegionalSettings::DateOrder() const {
  std::string order;
  for (char c : shortDatePattern) {
    char f = static_cast<char>(c | 0x20);
    if ((f == 'd' || f == 'm' || f == 'y') && order.find(f) == std::string::npos) order += f;
  }
  return order.size() == 3 ? order : "dmy";
}

RegionalSettings GermanRegional() {
  return RegionalSettings{};
}

RegionalSettings UsRegional() {
  RegionalSettings r;
  r.shortDatePattern = "mm/dd/yyyy";
  r.dateSeparator = "/";
  r.decimalSeparator = ".";
  r.thousandSeparator = ",";
  r.german = false;
  r.trueText = "True";
  r.falseText = "False";
  return r;
}

RegionalSettings RegionalFromLocaleInfo(std::string_view dateFormat, std::string_view radix,
                                        std::string_view thousands, std::string_view language) {
  RegionalSettings r;
  // The pattern in VB's letters; the separator is what stands between fields.
  std::string pattern;
  std::string separator;
  for (std::size_t i = 0; i < dateFormat.size(); ++i) {
    char c = dateFormat[i];
    if (c == '%' && i + 1 < dateFormat.size()) {
      char f = dateFormat[++i];
      if (f == 'd' || f == 'e')
        pattern += "dd";
      else if (f == 'm')
        pattern += "mm";
      else if (f == 'Y' || f == 'y')
        pattern += "yyyy";
      else if (f == 'F') {
        pattern += "yyyy-mm-dd";
        if (separator.empty()) separator = "-";
      }
    } else if (c != ' ') {
      if (separator.empty()) separator = std::string(1, c);
      pattern += c;
    }
  }
  if (pattern.size() == 10 && !separator.empty()) {
    r.shortDatePattern = pattern;
    r.dateSeparator = separator;
  }
  if (!radix.empty()) r.decimalSeparator = std::string(radix);
  r.thousandSeparator = std::string(thousands);
  if (r.thousandSeparator.empty()) r.thousandSeparator = r.decimalSeparator == "," ? "." : ",";
  r.german = language.empty() || language == "de";
  if (!r.german) {
    r.trueText = "True";
    r.falseText = "False";
  }
  return r;
}

namespace {

bool IsPlainC(const std::string& name) {
  return name.empty() || name == "C" || name == "POSIX" || name.rfind("C.", 0) == 0;
}

std::string EnvLocale(const char* category) {
  for (const char* var : {"LC_ALL", category, "LANG"}) {
    const char* v = std::getenv(var);
    if (v && *v) return v;
  }
  return {};
}

std::string LanguageOf(const std::string& name) {
  std::size_t end = name.find_first_of("_.@");
  return name.substr(0, end);
}

RegionalSettings FromLocales(const std::string& timeName, const std::string& numericName) {
  if (IsPlainC(timeName)) return GermanRegional();
  locale_t timeLoc = newlocale(LC_TIME_MASK, timeName.c_str(), locale_t(0));
  if (!timeLoc) return GermanRegional();
  std::string dateFormat = nl_langinfo_l(D_FMT, timeLoc);
  freelocale(timeLoc);
  std::string radix = ",", thousands = ".";
  if (!IsPlainC(numericName)) {
    if (locale_t numLoc = newlocale(LC_NUMERIC_MASK, numericName.c_str(), locale_t(0))) {
      radix = nl_langinfo_l(RADIXCHAR, numLoc);
      thousands = nl_langinfo_l(THOUSEP, numLoc);
      freelocale(numLoc);
    }
  }
  return RegionalFromLocaleInfo(dateFormat, radix, thousands, LanguageOf(timeName));
}

std::optional<RegionalSettings>& Slot() {
  static std::optional<RegionalSettings> settings;
  return settings;
}

}  // namespace

RegionalSettings RegionalFromLocale(const std::string& localeName) {
  return FromLocales(localeName, localeName);
}

const RegionalSettings& Regional() {
  auto& slot = Slot();
  if (!slot) slot = FromLocales(EnvLocale("LC_TIME"), EnvLocale("LC_NUMERIC"));
  return *slot;
}

void SetRegional(const RegionalSettings& settings) {
  Slot() = settings;
}

void ResetRegional() {
  Slot().reset();
}

}  // namespace ketrova
