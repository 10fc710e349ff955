#include "platform/ado/file_engine/engine_ddl.h"

#include <cctype>

#include "support/text.h"

namespace ketrova::file_engine {

bool StartsWithWords(std::string_view sql, std::initializer_list<std::string_view> words) {
  std::size_t p = 0;
  for (auto word : words) {
    while (p < sql.size() && std::isspace(static_cast<unsigned char>(sql[p]))) ++p;
    if (AsciiUpper(sql.substr(p, word.size())) != word) return false;
    p += word.size();
    if (p < sql.size() && !std::isspace(static_cast<unsigned char>(sql[p]))) return false;
  }
  return true;
}

}  // namespace ketrova::file_engine
