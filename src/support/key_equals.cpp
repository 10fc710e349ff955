#include <cctype>

#include "support/collection.h"

namespace ketrova {

// Keys fold ASCII letters only; umlauts compare as written.
bool KeyEquals(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i])))
      return false;
  }
  return true;
}

}  // namespace ketrova
