// How values are spelled in a project file: truth values as "TRUE" and
// "FALSE", numbers as plain decimal text, read back by VB's conversions (CBool,
// CLng, CByte), which raise VbError 13 on text they cannot read. The job's
// MAXRECORDS is read by the leading-number conversion (Val), which ignores
// trailing text.
#pragma once

#include <cstdint>
#include <string>

namespace ketrova {

std::string BoolText(bool value);
bool TextToBool(const std::string& text);
std::int32_t TextToLong(const std::string& text);
std::uint8_t TextToByte(const std::string& text);
// VB's Val, rounded into a 32-bit integer as CLng does: "12abc" gives 12,
// "abc" gives 0.
std::int32_t LeadingLong(const std::string& text);

}  // namespace ketrova
