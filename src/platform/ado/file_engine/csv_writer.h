// Writing delimited text: RFC 4180 quoting, and the file operations that keep
// a file whole. Appending writes a record with one write call; rewriting goes
// through a temporary file in the same folder that replaces the original by
// rename, so a failure never leaves a file half written.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace ketrova::file_engine {

// Appends one field. It is quoted when it holds the delimiter, a quote, a line
// break or leading or trailing blanks, or when force_quotes is set; inner
// quotes are doubled.
void AppendCsvField(std::string& out, std::string_view text, char delimiter, bool force_quotes);

// Appends text (whole records, each with its line break) to the file. When the
// file does not end in a line break, `line_break` is written first. The file is
// locked for the write; a file locked by another writer, read-only or missing
// raises VbError naming the file.
void AppendToFile(const std::filesystem::path& file, std::string_view text,
                  std::string_view line_break);

// Rewrites the file: `produce` writes the new content through the given sink;
// the new file replaces the old one only when everything was written. Raises
// VbError naming the file on failure, leaving the original untouched.
void RewriteFile(const std::filesystem::path& file,
                 const std::function<void(const std::function<void(std::string_view)>&)>& produce);

}  // namespace ketrova::file_engine
