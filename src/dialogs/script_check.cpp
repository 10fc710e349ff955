#include "dialogs/script_check.h"

#include <algorithm>
#include <vector>

#include "core/enums.h"
#include "platform/script/script_control.h"
#include "platform/script/vbscript/errors.h"
#include "platform/script/vbscript/scanner.h"
#include "support/vb_error.h"

namespace ketrova::dialogs {
namespace {

using script::vbscript::Token;
using script::vbscript::TokenKind;

constexpr int kCheckTimeout = 2000;  // milliseconds

// The VBScript statement that ends the run before the text's own statements.
// Err.Raise takes a number and a source; the source marks the stop as ours.
constexpr std::string_view kStopStatement = "Err.Raise 31999, \"Ketrova.Pruefen\":";

bool IsContinuationByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The byte offset of a 1-based line and character column, counting line ends
// as the VBScript scanner does (CR LF, CR or LF).
std::size_t OffsetOf(std::string_view text, int line, int column) {
  std::size_t pos = 0;
  for (int l = 1; l < line && pos < text.size(); ++l) {
    std::size_t end = text.find_first_of("\r\n", pos);
    if (end == std::string_view::npos) return text.size();
    pos = end + (text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n' ? 2 : 1);
  }
  for (int c = 1; c < column && pos < text.size(); ++c) {
    ++pos;
    while (pos < text.size() && IsContinuationByte(text[pos])) ++pos;
  }
  return pos;
}

// Where the stop goes: before the first statement that is not an Option. No
// place when the scanner refuses the text (then it does not compile, and
// nothing runs) or when it holds no such statement.
const Token* StopPlace(const std::vector<Token>& tokens) {
  bool statementStart = true;
  for (const Token& token : tokens) {
    if (token.kind == TokenKind::kEnd) break;
    if (token.kind == TokenKind::kNewLine || token.kind == TokenKind::kColon) {
      statementStart = true;
      continue;
    }
    if (statementStart && !(token.kind == TokenKind::kKeyword && token.text == "option"))
      return &token;
    statementStart = false;
  }
  return nullptr;
}

ScriptCheckResult Compiled() {
  ScriptCheckResult result;
  result.ok = true;
  return result;
}

ScriptCheckResult Failure(const script::ScriptControlError& error) {
  ScriptCheckResult result;
  result.number = error.Number;
  result.description = error.Description;
  result.line = error.Line;
  result.column = error.Column;
  return result;
}

ScriptCheckResult CheckVbScript(script::ScriptControl& control, std::string_view text) {
  std::string code(text);
  int stopLine = 0;
  int stopColumn = 0;
  try {
    std::vector<Token> tokens = script::vbscript::Scan(text);
    if (const Token* place = StopPlace(tokens)) {
      stopLine = place->line;
      stopColumn = place->column;
      code.insert(OffsetOf(text, stopLine, stopColumn), kStopStatement);
    }
  } catch (const VbError&) {
  }
  try {
    control.AddCode(code);
    return Compiled();
  } catch (const VbError&) {
  }
  ScriptCheckResult result = Failure(control.Error());
  // With the stop first in line to run, anything but a compile error means
  // the text compiled.
  if (stopLine > 0 && result.number != 0 &&
      control.Error().Source != script::vbscript::kCompileErrorSource)
    return Compiled();
  const int stopLength = static_cast<int>(kStopStatement.size());
  if (result.line == stopLine && result.column >= stopColumn)
    result.column = std::max(stopColumn, result.column - stopLength);
  return result;
}

bool IsJsLineEnd(std::string_view text, std::size_t pos, std::size_t& length) {
  if (text[pos] == '\r') {
    length = pos + 1 < text.size() && text[pos + 1] == '\n' ? 2 : 1;
    return true;
  }
  if (text[pos] == '\n') {
    length = 1;
    return true;
  }
  // U+2028 and U+2029 end a line in JScript too.
  if (text.substr(pos, 3) == "\xE2\x80\xA8" || text.substr(pos, 3) == "\xE2\x80\xA9") {
    length = 3;
    return true;
  }
  return false;
}

// The number of lines of a JScript text and the 1-based column of the first
// non-blank character of its last line (1 for a blank line).
void LastJsLine(std::string_view text, int& lines, int& firstColumn) {
  lines = 1;
  std::size_t lastStart = 0;
  for (std::size_t pos = 0, length = 0; pos < text.size();) {
    if (IsJsLineEnd(text, pos, length)) {
      pos += length;
      lastStart = pos;
      ++lines;
    } else {
      ++pos;
    }
  }
  firstColumn = 1;
  for (std::size_t pos = lastStart; pos < text.size(); ++pos) {
    if (text[pos] != ' ' && text[pos] != '\t') break;
    ++firstColumn;
  }
  if (lastStart + static_cast<std::size_t>(firstColumn - 1) >= text.size()) firstColumn = 1;
}

ScriptCheckResult CheckJScript(script::ScriptControl& control, std::string_view text) {
  // The prefix stands on a line of its own, so that columns stay as they are.
  std::string code = "(function () {\n";
  code += text;
  code += "\n})";
  try {
    control.AddCode(code);
    return Compiled();
  } catch (const VbError&) {
  }
  ScriptCheckResult result = Failure(control.Error());
  if (result.line <= 0) return result;
  int lines = 0;
  int lastFirstColumn = 1;
  LastJsLine(text, lines, lastFirstColumn);
  result.line -= 1;
  if (result.line < 1) {
    result.line = 1;
    result.column = 1;
  } else if (result.line > lines) {  // the end of the text was met too soon
    result.line = lines;
    result.column = lastFirstColumn;
  }
  return result;
}

}  // namespace

ScriptCheckResult CheckScript(int scriptLanguage, std::string_view text) {
  script::ScriptControl control;
  const bool vbscript = scriptLanguage == sclVBScript;
  control.SetLanguage(vbscript ? "VBScript" : "JScript");
  control.SetTimeout(kCheckTimeout);
  return vbscript ? CheckVbScript(control, text) : CheckJScript(control, text);
}

}  // namespace ketrova::dialogs
