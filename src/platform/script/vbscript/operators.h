// VBScript's operators on Variants: arithmetic with its type promotion
// (Integer overflows into Long, Long into Double), string concatenation,
// comparisons with Null and Empty, the logical operators (bitwise on numbers,
// three-valued with Null) and Is. Failures raise VbError (13, 6, 11, 424).
// Operands must already be values: the caller resolves an object's default
// member first.
#pragma once

#include "platform/script/vbscript/ast.h"
#include "support/variant.h"

namespace ketrova::script::vbscript {

Variant BinaryOp(Op op, const Variant& a, const Variant& b);
Variant UnaryOp(Op op, const Variant& a);

// The truth of a condition (If, Do While ...): Null and Empty are False.
bool IsTrue(const Variant& v);

}  // namespace ketrova::script::vbscript
