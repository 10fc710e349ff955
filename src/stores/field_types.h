// Classes of ADO field types and their SQL quoting. The sets are deliberate:
// the long text codes 201 and 203 are in no class, the binary codes 128, 204
// and 205 count as numeric, 134 and 135 are no dates here.
#pragma once

#include <cstdint>
#include <string>

#include "support/variant.h"

namespace ketrova {

bool IsStringFieldType(std::int32_t type);
bool IsDateFieldType(std::int32_t type);
bool IsNumericFieldType(std::int32_t type);
bool IsBooleanFieldType(std::int32_t type);

// The quote for values of the type ("'" or empty) and, in `defaultValue`, the
// value used for a field that is Null or blank.
std::string GetFieldDefault(std::int32_t type, Variant& defaultValue);

}  // namespace ketrova
