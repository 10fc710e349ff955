#include "platform/ado/file_engine/sql_rewrite.h"

#include <cstdio>
#include <optional>

#include "platform/ado/sql_tokens.h"
#include "support/text.h"

namespace ketrova::file_engine {

namespace {

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
using ado::IsSqlWordStart;
using ado::NextSqlToken;
using ado::SqlToken;
using ado::SqlTokenKind;

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> list) {
  std::string up = AsciiUpper(word);
  for (auto w : list) {
    if (up == w) return true;
  }
  return false;
}

// Words that end an alias behind a table.
bool EndsAlias(std::string_view word) {
  return IsOneOf(word, {"WHERE", "ORDER", "GROUP", "HAVING", "UNION", "LIMIT", "ON", "JOIN",
                        "INNER", "LEFT", "RIGHT", "CROSS", "SET", "VALUES", "AND", "OR"});
}

// Reads "dd.mm.yyyy", "mm/dd/yyyy" or "yyyy-mm-dd" with an optional time.
std::optional<std::string> JetDate(std::string_view text) {
  int a = 0, b = 0, c = 0, hh = 0, mm = 0, ss = 0;
  char s1 = 0, s2 = 0;
  std::string buf(text);
  int consumed = 0;
  if (std::sscanf(buf.c_str(), " %d%c%d%c%d%n", &a, &s1, &b, &s2, &c, &consumed) < 5 || s1 != s2) {
    return std::nullopt;
  }
  int y, m, d;
  if (s1 == '-') {
    y = a, m = b, d = c;
  } else if (s1 == '/') {
    m = a, d = b, y = c;
  } else if (s1 == '.') {
    d = a, m = b, y = c;
  } else {
    return std::nullopt;
  }
  if (y < 100) y += y < 30 ? 2000 : 1900;
  if (m < 1 || m > 12 || d < 1 || d > 31) return std::nullopt;
  std::string_view rest = std::string_view(buf).substr(static_cast<std::size_t>(consumed));
  bool time = false;
  while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
  if (!rest.empty()) {
    std::string t(rest);
    int n = std::sscanf(t.c_str(), "%d:%d:%d", &hh, &mm, &ss);
    if (n < 2 || hh > 23 || mm > 59 || ss > 59) return std::nullopt;
    time = true;
  }
  char out[64];
  if (time) {
    std::snprintf(out, sizeof out, "%04d-%02d-%02d %02d:%02d:%02d", y, m, d, hh, mm, ss);
  } else {
    std::snprintf(out, sizeof out, "%04d-%02d-%02d", y, m, d);
  }
  return std::string(out);
}

class Rewriter {
 public:
  explicit Rewriter(std::string_view sql) : sql_(sql) {}

  std::string Run() {
    out_.reserve(sql_.size() + 16);
    while (i_ < sql_.size()) {
      std::size_t next = i_;
      SqlToken t = NextSqlToken(sql_, next);
      switch (t.kind) {
        case SqlTokenKind::kSpace:
        case SqlTokenKind::kComment:
          out_.append(t.text);
          i_ = next;
          break;
        case SqlTokenKind::kString:
          StringLiteral(t, next);
          break;
        case SqlTokenKind::kQuoted:
          if (t.text[0] == '`') {
            Backquote(t, next);
            break;
          }
          out_.append(t.text);
          i_ = next;
          Significant("\"");
          break;
        case SqlTokenKind::kBracketed:
          Bracket(t, next);
          break;
        case SqlTokenKind::kWord:
          out_.append(t.text);
          i_ = next;
          Significant(AsciiUpper(t.text));
          break;
        case SqlTokenKind::kOther:
          if (t.Is('#')) {
            DateLiteral();
            break;
          }
          out_.append(t.text);
          i_ = next;
          Significant(std::string(t.text));
          break;
      }
    }
    return std::move(out_);
  }

 private:
  void Significant(std::string token) { last_ = std::move(token); }

  // The next significant token after position p, upper-cased: a word or an
  // operator of up to two characters.
  std::string PeekToken(std::size_t p) const {
    SqlToken t;
    do {
      if (p >= sql_.size()) return {};
      t = NextSqlToken(sql_, p);
    } while (t.kind == SqlTokenKind::kSpace);
    if (t.kind == SqlTokenKind::kWord) return AsciiUpper(t.text);
    p -= t.text.size();
    std::string op(1, sql_[p]);
    if (p + 1 < sql_.size() && (sql_[p + 1] == '=' || sql_[p + 1] == '>') &&
        (sql_[p] == '<' || sql_[p] == '>' || sql_[p] == '!')) {
      op.push_back(sql_[p + 1]);
    }
    return op;
  }

  void StringLiteral(const SqlToken& t, std::size_t next) {
    std::size_t start = i_;
    bool after_dot = !out_.empty() && out_.back() == '.';
    std::string text = t.Content();
    i_ = next;
    bool before_dot = i_ < sql_.size() && sql_[i_] == '.';
    bool table_place = IsOneOf(last_, {"FROM", "JOIN", "INTO", "UPDATE", "TABLE"});
    bool condition_start = IsOneOf(last_, {"WHERE", "(", "AND", "OR", "NOT"}) &&
                           IsOneOf(PeekToken(i_), {"=", "<>", "!=", "<", "<=", ">", ">=", "LIKE",
                                                   "NOT", "IS", "IN", "BETWEEN"});
    if (after_dot || before_dot || table_place || condition_start) {
      out_.append(QuoteSqlIdentifier(text));
      Significant("\"");
    } else {
      out_.append(sql_.substr(start, i_ - start));
      Significant("'");
    }
  }

  void Bracket(const SqlToken& t, std::size_t next) {
    i_ = next;
    if (!t.closed) {
      out_.append(t.text);
      return;
    }
    out_.append(QuoteSqlIdentifier(t.Content()));
    Significant("\"");
  }

  void DateLiteral() {
    auto close = sql_.find('#', i_ + 1);
    std::optional<std::string> date;
    if (close != std::string_view::npos && close - i_ <= 32) {
      date = JetDate(sql_.substr(i_ + 1, close - i_ - 1));
    }
    if (!date) {
      out_.push_back('#');
      ++i_;
      return;
    }
    out_ += "'" + *date + "'";
    i_ = close + 1;
    Significant("'");
  }

  // `folder`\name.TXT alias, or a plain back-quoted identifier.
  void Backquote(const SqlToken& t, std::size_t next) {
    std::size_t start = i_;
    std::string folder = t.Content();
    i_ = next;
    if (i_ >= sql_.size() || (sql_[i_] != '\\' && sql_[i_] != '/')) {
      out_.append(sql_.substr(start, i_ - start));
      Significant("\"");
      return;
    }
    ++i_;
    // The name runs to ".TXT" at a word's end, or else to the first blank.
    std::size_t name_start = i_;
    std::size_t name_end = std::string_view::npos;
    for (std::size_t p = i_; p + 4 <= sql_.size(); ++p) {
      if (sql_[p] == '\r' || sql_[p] == '\n') break;
      if (AsciiUpper(sql_.substr(p, 4)) == ".TXT" &&
          (p + 4 == sql_.size() || IsSpace(sql_[p + 4]) || sql_[p + 4] == ',' ||
           sql_[p + 4] == ')' || sql_[p + 4] == ';')) {
        name_end = p + 4;
        break;
      }
    }
    if (name_end == std::string_view::npos) {
      name_end = name_start;
      while (name_end < sql_.size() && !IsSpace(sql_[name_end]) && sql_[name_end] != ',' &&
             sql_[name_end] != ')' && sql_[name_end] != ';') {
        ++name_end;
      }
    }
    std::string table = folder + "\\" + std::string(sql_.substr(name_start, name_end - name_start));
    out_.append(QuoteSqlIdentifier(table));
    i_ = name_end;
    Significant("\"");
    Alias();
  }

  // An alias behind a path table: words up to a keyword, a line break or
  // punctuation, quoted as one name.
  void Alias() {
    std::size_t p = i_;
    while (p < sql_.size() && (sql_[p] == ' ' || sql_[p] == '\t')) ++p;
    std::size_t alias_start = p, alias_end = p;
    while (p < sql_.size()) {
      if (!IsSqlWordStart(sql_[p]) && sql_[p] != '.' && sql_[p] != '-') break;
      std::size_t w = p;
      while (p < sql_.size() && (IsSqlWordStart(sql_[p]) || sql_[p] == '.' || sql_[p] == '-')) ++p;
      if (EndsAlias(sql_.substr(w, p - w)) ||
          (w == alias_start && IsOneOf(sql_.substr(w, p - w), {"AS"}))) {
        p = w;
        break;
      }
      alias_end = p;
      while (p < sql_.size() && (sql_[p] == ' ' || sql_[p] == '\t')) ++p;
    }
    if (alias_end == alias_start) return;
    out_.append(sql_.substr(i_, alias_start - i_));
    out_.append(QuoteSqlIdentifier(sql_.substr(alias_start, alias_end - alias_start)));
    i_ = alias_end;
  }

  std::string_view sql_;
  std::size_t i_ = 0;
  std::string out_;
  std::string last_;
};

}  // namespace

std::string QuoteSqlIdentifier(std::string_view name) {
  std::string out = "\"";
  for (char c : name) {
    if (c == '"') out.push_back('"');
    out.push_back(c);
  }
  out.push_back('"');
  return out;
}

std::string RewriteFileSql(std::string_view sql) {
  return Rewriter(sql).Run();
}

}  // namespace ketrova::file_engine
