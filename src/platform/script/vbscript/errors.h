// Compile errors of VBScript: their numbers and German texts, and the one way
// the scanner, parser and compiler raise them (with line and column).
#pragma once

#include <cstdint>
#include <string>

#include "platform/script/engine.h"

namespace ketrova::script::vbscript {

inline constexpr const char* kCompileErrorSource = "Kompilierungsfehler in VBScript";
inline constexpr const char* kRuntimeErrorSource = "Laufzeitfehler in VBScript";

enum CompileError : std::int32_t {
  kErrSyntax = 1002,
  kErrColonExpected = 1003,
  kErrLParenExpected = 1005,
  kErrRParenExpected = 1006,
  kErrRBracketExpected = 1007,
  kErrIdentifierExpected = 1010,
  kErrEqualsExpected = 1011,
  kErrIfExpected = 1012,
  kErrToExpected = 1013,
  kErrEndExpected = 1014,
  kErrFunctionExpected = 1015,
  kErrSubExpected = 1016,
  kErrThenExpected = 1017,
  kErrWendExpected = 1018,
  kErrLoopExpected = 1019,
  kErrNextExpected = 1020,
  kErrCaseExpected = 1021,
  kErrSelectExpected = 1022,
  kErrExpressionExpected = 1023,
  kErrStatementExpected = 1024,
  kErrEndOfStatementExpected = 1025,
  kErrIntegerConstantExpected = 1026,
  kErrWhileUntilExpected = 1027,
  kErrWhileUntilEosExpected = 1028,
  kErrWithExpected = 1029,
  kErrIdentifierTooLong = 1030,
  kErrInvalidNumber = 1031,
  kErrInvalidCharacter = 1032,
  kErrUnterminatedString = 1033,
  kErrInvalidMe = 1037,
  kErrLoopWithoutDo = 1038,
  kErrInvalidExit = 1039,
  kErrInvalidForVariable = 1040,
  kErrNameRedefined = 1041,
  kErrMustBeFirstStatement = 1042,
  kErrNoParensForSub = 1044,
  kErrLiteralConstantExpected = 1045,
  kErrInExpected = 1046,
  kErrClassExpected = 1047,
  kErrMustBeInClass = 1048,
  kErrPropertyKindExpected = 1049,
  kErrPropertyExpected = 1050,
  kErrPropertyArgCount = 1051,
  kErrMultipleDefaults = 1052,
  kErrInitializeArgs = 1053,
  kErrPropertyLetArgs = 1054,
  kErrUnexpectedNext = 1055,
  kErrDefaultOnlyMembers = 1056,
  kErrDefaultNeedsPublic = 1057,
  kErrDefaultOnlyGet = 1058,
};

// The German text of a compile error number.
std::string CompileErrorText(std::int32_t number);

// The description Err.Raise gives a number raised without one: VBScript's
// own text where it has one, else "Unbekannter Laufzeitfehler".
std::string RaisedErrorText(std::int32_t number);

// Throws ScriptError with the compile-error source.
[[noreturn]] void RaiseCompileError(std::int32_t number, int line, int column);

}  // namespace ketrova::script::vbscript
