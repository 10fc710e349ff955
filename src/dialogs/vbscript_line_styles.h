// The colouring of one line of VBScript, as Ketrova's own scanner reads it:
// keywords, strings, comments (' and Rem), numbers (also &H and &O) and dates
// (#...#) get a style each; identifiers, operators and blanks stay plain.
//
// VBScript has nothing that spans lines (strings, dates and comments end with
// their line), so a line can be coloured on its own and the result holds for
// the line in any text. A line the scanner refuses is coloured as far as it
// reads; the faulty spot stays plain (an open string runs to the line end as
// a string) and the scan goes on behind it.
#pragma once

#include <string_view>
#include <vector>

namespace ketrova::dialogs {

// The style numbers of the VBScript lexer. They are the lexer's style numbers
// in the editor too, so they must stay stable.
enum VbScriptStyle : int {
  kVbDefault = 0,  // identifiers, operators, blanks, what the scanner refuses
  kVbComment = 1,
  kVbNumber = 2,
  kVbString = 3,
  kVbKeyword = 4,
  kVbDate = 5,
};
inline constexpr int kVbStyleCount = 6;

// One style per byte of `line`, which holds no line end. The bytes of a UTF-8
// character always share one style.
std::vector<int> VbScriptLineStyles(std::string_view line);

}  // namespace ketrova::dialogs
