// What the file providers read of a statement themselves instead of running
// it on the engine: its first words (the table and columns of a CREATE TABLE
// are create_table.h's).
#pragma once

#include <initializer_list>
#include <string_view>

namespace ketrova::file_engine {

// True when the statement begins with these words (case ignored), each
// followed by a blank or the end.
bool StartsWithWords(std::string_view sql, std::initializer_list<std::string_view> words);

}  // namespace ketrova::file_engine
