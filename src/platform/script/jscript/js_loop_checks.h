// The rewrite that lets a JScript run be stopped: Duktape as Debian builds it
// has no hook into its executor, so before a text is compiled every loop is
// made to call a native check with each turn.
//
// `while (c)` and `do ... while (c)` become `while (check()&&(c))`; the
// condition of `for (a; c; b)` becomes `check()&&(c)`, an empty one `check()`;
// `for (x in y)` ends by itself and is left alone. The scanner knows enough of
// JavaScript's tokens (strings, comments, regular expression literals against
// division, nested brackets) not to touch anything else. Nothing is inserted
// that holds a line break, so every line of the text keeps its number, and the
// text before the first insertion on a line keeps its columns; callers that
// report columns take them from the original text.
#pragma once

#include <string>
#include <string_view>

namespace ketrova::script::jscript {

// `code` with a call of the global function `check` in every loop condition.
std::string InsertLoopChecks(std::string_view code, std::string_view check);

}  // namespace ketrova::script::jscript
