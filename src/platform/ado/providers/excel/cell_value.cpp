#include "platform/ado/providers/excel/cell_value.h"

#include <cctype>
#include <cmath>

#include "platform/ado/file_engine/engine_access.h"

namespace ketrova::excel {

NumberKind KindOfFormatCode(std::string_view code) {
  bool date = false;
  bool currency = false;
  for (std::size_t i = 0; i < code.size(); ++i) {
    char c = code[i];
    if (c == '"') {
      std::size_t close = code.find('"', i + 1);
      if (close == std::string_view::npos) break;
      // A quoted currency sign still makes a currency format ("#,##0 "€"").
      std::string_view quoted = code.substr(i + 1, close - i - 1);
      if (quoted.find("€") != std::string_view::npos || quoted.find('$') != std::string_view::npos)
        currency = true;
      i = close;
    } else if (c == '\\' || c == '_' || c == '*') {
      ++i;  // an escaped character, a blank as wide as one, a fill character
    } else if (c == '[') {
      std::size_t close = code.find(']', i + 1);
      if (close == std::string_view::npos) break;
      std::string_view inside = code.substr(i + 1, close - i - 1);
      if (inside.starts_with("$") && inside.size() > 1 && inside[1] != '-') currency = true;
      // Elapsed time: [h]:mm, [mm]:ss
      if (!inside.empty() && (std::tolower(static_cast<unsigned char>(inside[0])) == 'h' ||
                              std::tolower(static_cast<unsigned char>(inside[0])) == 'm' ||
                              std::tolower(static_cast<unsigned char>(inside[0])) == 's'))
        date = true;
      i = close;
    } else if (c == '$') {
      currency = true;
    } else if (static_cast<unsigned char>(c) == 0xE2 && code.substr(i, 3) == "€") {
      currency = true;
      i += 2;
    } else {
      char l = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (l == 'y' || l == 'd' || l == 'h' || l == 's' || l == 'm') {
        // "General" holds none of these letters outside its own word.
        if (code.substr(i).starts_with("General") || code.substr(i).starts_with("general")) {
          i += 6;
          continue;
        }
        date = true;
      }
    }
  }
  if (date) return NumberKind::kDate;
  if (currency) return NumberKind::kCurrency;
  return NumberKind::kPlain;
}

NumberKind KindOfBuiltinFormat(int id) {
  if ((id >= 14 && id <= 22) || (id >= 45 && id <= 47) || (id >= 27 && id <= 36) ||
      (id >= 50 && id <= 58))
    return NumberKind::kDate;
  if ((id >= 5 && id <= 8) || id == 42 || id == 44) return NumberKind::kCurrency;
  return NumberKind::kPlain;
}

double OleFromSerial(double serial, bool date1904) {
  if (date1904) return serial + 1462;
  // Days 1 to 59 of the 1900 system lie one day before the OLE date of the
  // same number, since the 1900 system counts a 29 February 1900.
  if (serial < 61) return serial + 1;
  return serial;
}

double SerialFromOle(double ole, bool date1904) {
  if (date1904) return ole - 1462;
  if (ole < 61) return ole - 1;
  return ole;
}

std::string IsoFromOle(double ole) {
  return file_engine::IsoDate(ole);
}

std::optional<double> OleFromIso(std::string_view text) {
  double ole = 0;
  if (!file_engine::OleDateFromIso(text, ole)) return std::nullopt;
  return ole;
}

std::string ColumnLetters(int column) {
  std::string letters;
  while (column > 0) {
    int rest = (column - 1) % 26;
    letters.insert(letters.begin(), static_cast<char>('A' + rest));
    column = (column - 1) / 26;
  }
  return letters;
}

std::optional<CellRef> ParseCellRef(std::string_view ref) {
  CellRef r;
  std::size_t i = 0;
  if (i < ref.size() && ref[i] == '$') ++i;
  std::size_t letters = 0;
  while (i < ref.size() && std::isalpha(static_cast<unsigned char>(ref[i]))) {
    r.column = r.column * 26 + (std::toupper(static_cast<unsigned char>(ref[i])) - 'A' + 1);
    ++i;
    if (++letters > 3) return std::nullopt;
  }
  if (i < ref.size() && ref[i] == '$') ++i;
  std::size_t digits = 0;
  while (i < ref.size() && std::isdigit(static_cast<unsigned char>(ref[i]))) {
    r.row = r.row * 10 + (ref[i] - '0');
    ++i;
    if (++digits > 7) return std::nullopt;
  }
  if (i != ref.size() || letters == 0 || digits == 0 || r.row == 0) return std::nullopt;
  return r;
}

std::size_t CharacterCount(std::string_view utf8) {
  std::size_t n = 0;
  for (unsigned char c : utf8)
    if ((c & 0xC0) != 0x80) ++n;
  return n;
}

}  // namespace ketrova::excel
