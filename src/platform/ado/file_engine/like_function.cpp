#include "platform/ado/file_engine/like_function.h"

#include <sqlite3.h>

#include <string_view>
#include <vector>

namespace ketrova::file_engine {

namespace {

// Code points of UTF-8 text; a byte that starts no valid sequence stands for itself.
std::vector<char32_t> CodePoints(std::string_view s) {
  std::vector<char32_t> out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size();) {
    auto c = static_cast<unsigned char>(s[i]);
    int extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
    if (i + static_cast<std::size_t>(extra) >= s.size()) extra = 0;  // cut short
    char32_t cp = extra == 0 ? c : (c & (0x3F >> extra));
    for (int k = 1; k <= extra; ++k) cp = (cp << 6) | (static_cast<unsigned char>(s[i + k]) & 0x3F);
    out.push_back(cp);
    i += static_cast<std::size_t>(extra) + 1;
  }
  return out;
}

// Lower case for ASCII, Latin-1 and Latin Extended-A, which covers the
// languages whose texts these files hold.
char32_t Fold(char32_t c) {
  if (c >= 'A' && c <= 'Z') return c + 32;
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
  if (c >= 0x100 && c <= 0x17F) {
    bool odd_lower = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    if (odd_lower) return (c % 2 == 1) ? c + 1 : c;
    if (c == 0x178) return 0xFF;
    return (c % 2 == 0) ? c + 1 : c;
  }
  return c;
}

bool Match(const std::vector<char32_t>& p, const std::vector<char32_t>& t, char32_t escape,
           bool has_escape) {
  std::size_t pi = 0, ti = 0;
  std::size_t star_p = std::string_view::npos, star_t = 0;
  while (ti < t.size()) {
    if (pi < p.size()) {
      char32_t pc = p[pi];
      if (has_escape && pc == escape && pi + 1 < p.size()) {
        if (Fold(p[pi + 1]) == Fold(t[ti])) {
          pi += 2;
          ++ti;
          continue;
        }
      } else if (pc == '%') {
        star_p = ++pi;
        star_t = ti;
        continue;
      } else if (pc == '_' || Fold(pc) == Fold(t[ti])) {
        ++pi;
        ++ti;
        continue;
      }
    }
    if (star_p == std::string_view::npos) return false;
    pi = star_p;
    ti = ++star_t;
  }
  while (pi < p.size() && p[pi] == '%') ++pi;
  return pi == p.size();
}

void Like(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  // like(pattern, text [, escape]) as SQLite calls it for "text LIKE pattern".
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL || sqlite3_value_type(argv[1]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  auto text_of = [](sqlite3_value* v) {
    const auto* p = reinterpret_cast<const char*>(sqlite3_value_text(v));
    return std::string_view(p ? p : "", static_cast<std::size_t>(sqlite3_value_bytes(v)));
  };
  char32_t escape = 0;
  bool has_escape = false;
  if (argc == 3 && sqlite3_value_type(argv[2]) != SQLITE_NULL) {
    auto e = CodePoints(text_of(argv[2]));
    if (e.size() != 1) {
      sqlite3_result_error(ctx, "ESCAPE expression must be a single character", -1);
      return;
    }
    escape = e[0];
    has_escape = true;
  }
  sqlite3_result_int(
      ctx, Match(CodePoints(text_of(argv[0])), CodePoints(text_of(argv[1])), escape, has_escape)
               ? 1
               : 0);
}

}  // namespace

void RegisterLikeFunction(sqlite3* db) {
  const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
  sqlite3_create_function(db, "like", 2, flags, nullptr, Like, nullptr, nullptr);
  sqlite3_create_function(db, "like", 3, flags, nullptr, Like, nullptr, nullptr);
}

}  // namespace ketrova::file_engine
