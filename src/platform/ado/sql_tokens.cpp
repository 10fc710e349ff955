#include "platform/ado/sql_tokens.h"

#include <cassert>

#include "support/collection.h"

namespace ketrova::ado {

namespace {

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

// Moves `i` behind the quote `q` that closes what opened before it; a doubled
// quote stays inside. False when the text ends first.
bool SkipQuoted(std::string_view sql, std::size_t& i, char q) {
  while (i < sql.size()) {
    if (sql[i++] != q) continue;
    if (i < sql.size() && sql[i] == q) {
      ++i;
      continue;
    }
    return true;
  }
  return false;
}

}  // namespace

bool IsSqlWordStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

std::size_t StringStartBefore(std::string_view sql, std::size_t end) {
  std::size_t i = end;
  for (;;) {
    if (i == 0) return std::string_view::npos;
    --i;
    if (sql[i] != '\'') continue;
    if (i > 0 && sql[i - 1] == '\'') {
      --i;
      continue;
    }
    return i;
  }
}

SqlToken NextSqlToken(std::string_view sql, std::size_t& i) {
  assert(i < sql.size());
  std::size_t start = i;
  SqlToken t;
  char c = sql[i++];
  if (IsSpace(c)) {
    t.kind = SqlTokenKind::kSpace;
    while (i < sql.size() && IsSpace(sql[i])) ++i;
  } else if (c == '\'' || c == '"' || c == '`') {
    t.kind = c == '\'' ? SqlTokenKind::kString : SqlTokenKind::kQuoted;
    t.closed = SkipQuoted(sql, i, c);
  } else if (c == '[') {
    t.kind = SqlTokenKind::kBracketed;
    std::size_t close = sql.find(']', i);
    t.closed = close != std::string_view::npos;
    i = t.closed ? close + 1 : sql.size();
  } else if (c == '-' && i < sql.size() && sql[i] == '-') {
    t.kind = SqlTokenKind::kComment;
    std::size_t end = sql.find('\n', i);
    i = end == std::string_view::npos ? sql.size() : end;
  } else if (c == '/' && i < sql.size() && sql[i] == '*') {
    t.kind = SqlTokenKind::kComment;
    std::size_t end = sql.find("*/", i + 1);
    t.closed = end != std::string_view::npos;
    i = t.closed ? end + 2 : sql.size();
  } else if (IsSqlWordStart(c)) {
    t.kind = SqlTokenKind::kWord;
    while (i < sql.size() && (IsSqlWordStart(sql[i]) || sql[i] == '$')) ++i;
  }
  t.text = sql.substr(start, i - start);
  return t;
}

std::string SqlToken::Content() const {
  switch (kind) {
    case SqlTokenKind::kString:
    case SqlTokenKind::kQuoted: {
      char q = text[0];
      std::string out;
      std::size_t end = closed ? text.size() - 1 : text.size();
      for (std::size_t k = 1; k < end; ++k) {
        out.push_back(text[k]);
        if (text[k] == q) ++k;  // the second of a doubled quote
      }
      return out;
    }
    case SqlTokenKind::kBracketed:
      return std::string(text.substr(1, closed ? text.size() - 2 : text.size() - 1));
    default:
      return std::string(text);
  }
}

bool SqlToken::IsWord(std::string_view word) const {
  return kind == SqlTokenKind::kWord && KeyEquals(text, word);
}

}  // namespace ketrova::ado
