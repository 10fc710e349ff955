// VBScript's named constants (vbCrLf, vbTextCompare, vbYesNo, vbString ...),
// which the compiler folds into the code.
#pragma once

#include <string_view>

#include "support/variant.h"

namespace ketrova::script::vbscript {

// The constant's value; false when there is no constant of that name (the name
// is compared without regard to case).
bool FindConstant(std::string_view name, Variant& value);

}  // namespace ketrova::script::vbscript
