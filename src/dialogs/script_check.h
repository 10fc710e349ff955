// Checking a script text for errors before a run meets them: the text is
// compiled by a fresh script::ScriptControl of its language, just as a run
// adds it, and the first error is answered with the line and column the
// control reports.
//
// The check runs none of the text's own statements:
// - VBScript compiles a whole text before it runs the text's top-level
//   statements, so a statement that stops the run is put in front of the first
//   statement (after any Option); a text that compiles stops there.
// - JScript is compiled as the body of a function that is never called. A
//   `return` outside any function therefore passes the check.
// A Timeout of two seconds stands behind both, so that no text can hang the
// caller.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ketrova::dialogs {

struct ScriptCheckResult {
  bool ok = false;          // the text compiled
  int line = 0;             // 1-based, as the script control reports it; 0 when not known
  int column = 0;           // 1-based, in characters; 0 when not known
  std::string description;  // the German text of the error
  std::int32_t number = 0;  // the error number (VBScript's or JScript's)
};

// Compiles `text` as VBScript when `scriptLanguage` is sclVBScript, else as
// JScript.
ScriptCheckResult CheckScript(int scriptLanguage, std::string_view text);

}  // namespace ketrova::dialogs
