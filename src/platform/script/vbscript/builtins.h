// The built-in functions of VBScript, as a table the compiler binds calls to
// once. Each takes its arguments by value in source order; an argument left
// out between commas (MsgBox "x", , "title") arrives as Variant::Missing().
// The arity is checked when the call runs against MinArgs/MaxArgs (450, as
// VBScript raises it: trappable). Failures raise VbError with
// VBScript's number; the runtime adds line and column.
//
// Functions that need the interpreter itself (Eval, Execute, ExecuteGlobal,
// GetRef, CreateObject, GetObject, IsObject on With targets) are the
// runtime's, not in this table.
#pragma once

#include <span>
#include <string_view>

#include "support/variant.h"

namespace ketrova::script::vbscript {

using BuiltinFunction = Variant (*)(std::span<const Variant> args);

struct Builtin {
  std::string_view Name;
  int MinArgs;
  int MaxArgs;  // -1: any number
  BuiltinFunction Function;
};

// The built-in of that name, compared without regard to case; nullptr when
// there is none.
const Builtin* FindBuiltin(std::string_view name);

// The form of a built-in a call binds to, by where the call stands. Most run
// the same either way. The conversions CByte, CCur, CDate, CDbl, CInt, CLng
// and CSng called as a statement (Call CInt(1)) convert and then raise 458,
// as VBScript does; Randomize, a statement, raises 13 where its value is used
// (x = Randomize(1)).
const Builtin* BuiltinAs(const Builtin* builtin, bool statement);

// What a ".member" outside any With stands on: it raises 505 when it runs, as
// VBScript compiles such a line and fails only there.
const Builtin* UnqualifiedReference();

// A new RegExp object (VBScript's "New RegExp").
ObjectPtr CreateRegExp();

}  // namespace ketrova::script::vbscript
