// Byte-level text decoding for the file providers.
//
// Files are read as UTF-8 and fall back to Windows-1252 where bytes are not
// valid UTF-8. The five byte values that Windows-1252 leaves undefined (0x81,
// 0x8D, 0x8F, 0x90, 0x9D) cannot be decoded either way; the caller reports them.
#pragma once

#include <string>
#include <string_view>

namespace ketrova::file_engine {

// True when every byte is below 0x80.
bool IsAscii(std::string_view bytes);

// True when the bytes are well-formed UTF-8 (no overlong forms, no surrogates,
// nothing above U+10FFFF).
bool IsValidUtf8(std::string_view bytes);

// Appends the UTF-8 form of Windows-1252 bytes to out. Returns false, leaving
// out partly extended, when a byte is undefined in Windows-1252; bad_index then
// holds its position.
bool AppendWindows1252AsUtf8(std::string_view bytes, std::string& out, std::size_t& bad_index);

}  // namespace ketrova::file_engine
