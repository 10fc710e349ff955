// The rewrite that lets a JScript run be stopped: Duktape as Debian builds it
// has no hook into its executor, so before a text is compiled every loop is
// made to count its turns and to call a native check every so many turns.
//
// With the check K and the counter n, `while (c)` and `do ... while (c)`
// become `while ((--n>0||(n=K()))&&(c))`, the condition of `for (a; c; b)`
// becomes `(--n>0||(n=K()))&&(c)`, an empty one `(--n>0||(n=K()))`;
// `for (x in y)` ends by itself and is left alone. K answers how many turns
// may pass until it is called again. A function whose loops count gets its
// own `var n;` at the end of its body (a local is far cheaper than a global;
// undefined counts as used up); loops outside functions count in the global
// n, which the caller provides.
//
// The scanner knows enough of JavaScript's tokens (strings, comments, regular
// expression literals against division, nested brackets) not to touch
// anything else. Nothing is inserted that holds a line break, so every line of
// the text keeps its number, and the text before the first insertion on a
// line keeps its columns; callers that report columns take them from the
// original text.
#pragma once

#include <string>
#include <string_view>

namespace ketrova::script::jscript {

// `code` with a check in every loop condition: `check` names the global
// function, `counter` the variable that counts turns.
std::string InsertLoopChecks(std::string_view code, std::string_view check,
                             std::string_view counter);

}  // namespace ketrova::script::jscript
