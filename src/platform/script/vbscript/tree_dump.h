// A readable listing of a module's compiled code: every text added to it, its
// statements, procedures and classes, each expression with the binding the
// compiler gave its names (local slot, global, built-in, host member ...).
// For diagnosing the interpreter (`ketrova script --dump`); the format is for
// people and may change.
#pragma once

#include <string>

#include "platform/script/vbscript/program.h"

namespace ketrova::script::vbscript {

// The listing of every unit of `module`, in the order they were added. Lines
// end with "\n"; nesting is shown by two blanks per level.
std::string DumpModule(const Module& module);

}  // namespace ketrova::script::vbscript
