// Byte-level helpers the dBase and Paradox tables share: code page
// conversion, a whole file read, and the memo file beside a table.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace ketrova::xbase_provider {

// Converts between encodings known to iconv; false when a character has no
// counterpart in `to` or the input is not valid in `from`.
bool Convert(const std::string& from, const std::string& to, std::string_view in, std::string& out);

// An unsigned little-endian number of 1 to 4 bytes at `at`, and its writing;
// the caller ensures the bytes exist.
std::uint32_t LittleEndian(const std::string& s, std::size_t at, int bytes);
void PutLittleEndian(std::string& s, std::size_t at, std::uint32_t value, int bytes);

// The file's bytes; empty when it cannot be read.
std::string ReadWholeFile(const std::filesystem::path& file);

// The file beside a table with the table's stem and the given extension
// (upper case, with the dot), found without regard to case; empty when none.
std::filesystem::path MemoFileOf(const std::filesystem::path& table, const char* extension);

}  // namespace ketrova::xbase_provider
