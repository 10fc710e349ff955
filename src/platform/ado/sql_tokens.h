// The one reader of SQL text for the provider layer: it cuts a statement into
// blanks, strings, quoted and bracketed names, comments, words and single
// characters, so that whoever looks for a keyword or rewrites a name never
// looks inside a string or a comment.
//
//   'it''s'        a string (a doubled apostrophe stays inside)
//   "Name", `Name` a quoted name (a doubled quote stays inside)
//   [Name]         a bracketed name (ends at the first "]")
//   -- to the line's end, /* ... */   a comment
//   Kunden, 2002, Tabelle1$   a word: letters, digits, "_" and bytes of
//                  UTF-8 sequences, then "$" as well (never at its start)
//   anything else  one character on its own ("." "(" "#" "$" ...)
//
// A string, name or comment that is not closed runs to the end of the text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ketrova::ado {

enum class SqlTokenKind { kSpace, kString, kQuoted, kBracketed, kComment, kWord, kOther };

struct SqlToken {
  SqlTokenKind kind = SqlTokenKind::kOther;
  std::string_view text;  // as written, quotes and brackets included
  bool closed = true;     // a string, name or comment has its closing mark

  // A string's or name's text without its quotes, doubled quotes made single;
  // a bracketed name's inner text; otherwise the text itself.
  std::string Content() const;
  // A word equal to `word` without regard to ASCII case.
  bool IsWord(std::string_view word) const;
  // A character on its own equal to `c`.
  bool Is(char c) const { return kind == SqlTokenKind::kOther && text.size() == 1 && text[0] == c; }
};

// A character a word may start with (a word may also hold "$" later on).
bool IsSqlWordStart(char c);

// The token that starts at `i` (which must be inside `sql`); `i` moves behind it.
SqlToken NextSqlToken(std::string_view sql, std::size_t& i);

// Where the string ends with at `end` (its closing apostrophe) begins, read
// back from its end: a doubled apostrophe is one inside the text. npos when
// no opening one is found.
std::size_t StringStartBefore(std::string_view sql, std::size_t end);

}  // namespace ketrova::ado
