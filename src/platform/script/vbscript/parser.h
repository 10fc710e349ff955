// The parser: builds the syntax tree of a VBScript text from its tokens.
// Any syntax error raises ScriptError with VBScript's compile-error number and
// the token's line and column; the whole text is refused then. Nesting is
// bounded, so that no text, however deep, exhausts the stack here.
#pragma once

#include <string_view>

#include "platform/script/vbscript/ast.h"

namespace ketrova::script::vbscript {

// A whole text: statements, procedures and classes.
ParsedText ParseText(std::string_view text);

// A single expression (for Eval); the text must hold nothing else.
ExprPtr ParseExpression(std::string_view text);

}  // namespace ketrova::script::vbscript
