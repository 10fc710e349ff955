// The tokens of VBScript source text. Keywords are recognised by the scanner
// and carry their lower-case spelling; every token knows the 1-based line and
// column where it starts, so that compile and run-time errors can name them.
#pragma once

#include <string>

#include "support/variant.h"

namespace ketrova::script::vbscript {

enum class TokenKind {
  kIdentifier,  // text: as written
  kKeyword,     // text: lower case
  kNumber,      // value: Integer, Long or Double
  kString,      // value: the text without quotes
  kDate,        // value: a Date
  kSymbol,      // text: + - * / \ ^ & = <> < > <= >= ( ) , .
  kColon,       // ":" between statements
  kNewLine,
  kEnd,
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string text;
  Variant value;
  int line = 1;
  int column = 1;
  // A "." directly after an identifier, ")" or "]" (member access) rather than
  // one standing after a blank (the member of a With target).
  bool attached = false;
};

}  // namespace ketrova::script::vbscript
