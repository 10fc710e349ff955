#include "core/project_values.h"

#include <cctype>
#include <cstdlib>

#include "support/text.h"
#include "support/variant.h"

namespace ketrova {

std::string BoolText(bool value) {
  return BoolToString(value);
}

bool TextToBool(const std::string& text) {
  return Variant(text).ToBool();
}

std::int32_t TextToLong(const std::string& text) {
  return Variant(text).ToLong();
}

std::uint8_t TextToByte(const std::string& text) {
  return Variant(text).ToByte();
}

std::int32_t LeadingLong(const std::string& text) {
  // Val skips blanks, tabs and line feeds anywhere and stops at the first
  // character that cannot continue a number.
  std::string number;
  bool digits = false, point = false, exponent = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r') continue;
    if ((c == '+' || c == '-') && (number.empty() || number.back() == 'E')) {
      number += c;
    } else if (std::isdigit(static_cast<unsigned char>(c))) {
      number += c;
      digits = true;
    } else if (c == '.' && !point && !exponent) {
      number += c;
      point = true;
    } else if ((c == 'e' || c == 'E' || c == 'd' || c == 'D') && digits && !exponent) {
      number += 'E';
      exponent = true;
    } else {
      break;
    }
  }
  if (!digits) return 0;
  double value = std::strtod(number.c_str(), nullptr);
  return Variant(value).ToLong();
}

}  // namespace ketrova
