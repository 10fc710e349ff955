// The restriction language of contact folders: the conditions a converter
// writes in place of a WHERE clause.
//
//   condition  := property operator value
//   property   := "[" name "]" | name
//   operator   := "=" | "<>" | "<" | "<=" | ">" | ">=" | "LIKE" | "NOT LIKE"
//   value      := "'" text "'" (a quote inside doubled) | a word without blanks
//   expression := condition { ("AND" | "OR") condition }, with parentheses
//
// Blanks, tabs, CR and LF separate the parts wherever they stand; keywords
// ignore case. AND binds closer than OR. Text compares without regard to case;
// two values that are both numbers compare as numbers, a date field compares
// as dates. LIKE takes "%" for any run of characters and "_" for one.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/variant.h"

namespace ketrova::contacts {

class Restriction {
 public:
  // Raises VbError -2147352567 with "Die Bedingung kann nicht analysiert
  // werden. Fehler bei "...".", naming where the text stopped making sense.
  static Restriction Parse(std::string_view text);

  // The property names the text uses, as written.
  std::vector<std::string> Properties() const;
  // Whether a record matches; `value` answers a property's value by name.
  bool Matches(const std::function<Variant(const std::string&)>& value) const;

  struct Node;

 private:
  std::shared_ptr<const Node> root_;
};

}  // namespace ketrova::contacts
