// The scanner: turns VBScript source text into tokens. Comments (' and Rem)
// and line continuations ("_" at the end of a line) are dropped here; literals
// (numbers, &H and &O, strings, #date#) arrive with their values. A character
// that cannot start a token raises compile error 1032 with its position.
#pragma once

#include <string_view>
#include <vector>

#include "platform/script/vbscript/token.h"

namespace ketrova::script::vbscript {

// All tokens of the text, ending with one kEnd token. `firstLine` numbers the
// text's first line (for code evaluated inside another text).
std::vector<Token> Scan(std::string_view text, int firstLine = 1);

// The OLE date of a calendar day; false when the day does not exist.
bool MakeOleDate(int year, int month, int day, double& oleDate);

}  // namespace ketrova::script::vbscript
