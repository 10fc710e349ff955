// The errors the record-access objects raise themselves, with their numbers
// and German texts, in one table. Providers' failures carry the driver's own
// text instead (see the kErr numbers in enums.h).
#pragma once

#include <cstdint>
#include <string_view>

namespace ketrova::ado {

enum class AdoError {
  kArguments,            // 3001: wrong, out of range or conflicting arguments
  kNoCurrentRecord,      // 3021: BOF or EOF
  kNotInContext,         // 3219
  kNotSupported,         // 3251: the provider cannot do it
  kNotUpdatable,         // 3251: the record set cannot be changed
  kItemNotFound,         // 3265: not in the collection
  kAlreadyInCollection,  // 3367: a field appended twice
  kObjectClosed,         // 3704
  kObjectOpen,           // 3705
  kDuplicateColumn,      // ADOX: a column appended twice
  kDuplicateIndex,       // ADOX: an index appended twice
  kMultipleStep,         // a value a field refused (the field's reason follows)
  kRowNotFound,          // the row to update is gone or changed
};

struct AdoErrorEntry {
  std::int32_t number;
  std::string_view text;
};

// The number and text of `error`.
const AdoErrorEntry& AdoErrorOf(AdoError error);

// Raises `error` as a VbError from `source` ("ADODB.Recordset", "ADOX.Tables" ...).
[[noreturn]] void ThrowAdoError(AdoError error, const char* source);

}  // namespace ketrova::ado
