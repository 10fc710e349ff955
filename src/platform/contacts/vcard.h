// vCard files as the contact store keeps them: one card per file, read in
// versions 3.0 and 4.0 (RFC 2426, RFC 6350), written in 3.0 the way khard and
// vdirsyncer expect it: CR LF line ends, lines folded at 75 octets without
// splitting a character, text values escaped, UTF-8.
//
// A card is the ordered list of its properties as they stand in the file. A
// value is kept raw (escapes in place), so that a property nobody reads is
// written back exactly; the helpers below split and unescape the values that
// are read, and escape the values that are set.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ketrova::contacts {

// A card that cannot be read; the text says what is wrong and where (German).
class VCardError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct VCardParameter {
  std::string name;                 // upper case
  std::vector<std::string> values;  // unquoted, as written
};

struct VCardProperty {
  std::string group;  // "item1" of "item1.TEL"; empty without a group
  std::string name;   // upper case
  std::vector<VCardParameter> parameters;
  std::string value;  // raw: escapes as in the file, lines unfolded

  // The values of every parameter of that name, lower case (TYPE=WORK,VOICE
  // and TYPE=work;TYPE=voice both give {"work", "voice"}).
  std::vector<std::string> ParameterValues(std::string_view parameter) const;
  bool HasType(std::string_view type) const;
  std::string ParameterValue(std::string_view parameter) const;  // the first, as written
  void SetParameter(std::string_view parameter, std::vector<std::string> values);
};

struct VCard {
  std::string version;  // as read, "3.0" for a new card
  std::vector<VCardProperty> properties;

  // The first property of that name (upper case), or null.
  const VCardProperty* Find(std::string_view name) const;
  VCardProperty* Find(std::string_view name);
  // Removes every property of that name.
  void RemoveAll(std::string_view name);
};

// Reads one card. Raises VCardError for a line without a colon, a folded line
// with nothing to continue, an encoding other than b, base64 or 8bit, text that
// is no UTF-8, a card without BEGIN or END, and anything but blank lines
// behind END.
VCard ParseVCard(std::string_view text);

// The card in version 3.0, whatever version it was read in.
std::string WriteVCard30(const VCard& card);

// Text values: "\n", "\N", "\,", "\;", "\\" and "\:" undone; an unknown escape
// keeps its character.
std::string UnescapeText(std::string_view raw);
// Escapes backslash, comma, semicolon and line ends (CR LF, CR or LF as "\n").
std::string EscapeText(std::string_view text);
// A structured value (N, ADR, ORG) split at its unescaped separators, each
// part unescaped; at least `minimum` parts.
std::vector<std::string> SplitStructured(std::string_view raw, std::size_t minimum = 0);
// The parts escaped and joined with ";", trailing empty parts kept.
std::string JoinStructured(const std::vector<std::string>& parts);

}  // namespace ketrova::contacts
