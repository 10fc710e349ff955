#include "platform/script/jscript/js_loop_checks.h"

#include <algorithm>
#include <vector>

namespace ketrova::script::jscript {

namespace {

bool IsIdentifierChar(char c) {
  unsigned char u = static_cast<unsigned char>(c);
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$' || c == '\\' || u >= 0x80;
}

bool IsLineEnd(char c) {
  return c == '\n' || c == '\r';
}

// Keywords after which a slash starts a regular expression, not a division.
bool KeywordBeforeExpression(std::string_view word) {
  static constexpr std::string_view kWords[] = {"return", "typeof", "instanceof", "in",
                                                "new",    "delete", "void",       "throw",
                                                "case",   "do",     "else"};
  return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

// An open bracket: what it belongs to, for the head of a for loop where its
// own semicolons are, and for a function body whether its loops count turns.
struct Bracket {
  enum Kind { kPlain, kStatement, kWhile, kFor, kParameters, kBody };
  char open;
  Kind kind;
  std::size_t at;  // position of the bracket
  std::size_t firstSemicolon = 0;
  std::size_t secondSemicolon = 0;
  int semicolons = 0;
  bool empty = true;    // nothing but blanks and comments so far (kWhile)
  bool counts = false;  // a loop in this body uses the counter (kBody)
  bool object = false;  // an object literal's or function expression's brace: ends an operand
};

struct Insertion {
  std::size_t at;
  std::string text;
};

class Rewriter {
 public:
  Rewriter(std::string_view code, std::string_view check, std::string_view counter)
      : code_(code),
        turn_("(--" + std::string(counter) + ">0||(" + std::string(counter) + "=" +
              std::string(check) + "()))"),
        declaration_(";var " + std::string(counter) + ";") {}

  std::string Run() {
    while (pos_ < code_.size()) Step();
    if (insertions_.empty()) return std::string(code_);
    std::stable_sort(insertions_.begin(), insertions_.end(),
                     [](const Insertion& a, const Insertion& b) { return a.at < b.at; });
    std::string out;
    out.reserve(code_.size() + insertions_.size() * (turn_.size() + 3));
    std::size_t from = 0;
    for (const Insertion& insertion : insertions_) {
      out.append(code_.substr(from, insertion.at - from));
      out += insertion.text;
      from = insertion.at;
    }
    out.append(code_.substr(from));
    return out;
  }

 private:
  // A significant token other than a bracket was seen. `objectMayFollow`:
  // a brace after it opens an object literal rather than a block.
  void Token(bool regexMayFollow, bool objectMayFollow = false) {
    regexMayFollow_ = regexMayFollow;
    objectMayFollow_ = objectMayFollow;
    lineBreak_ = false;
    if (!brackets_.empty()) brackets_.back().empty = false;
  }

  void Step() {
    char c = code_[pos_];
    char next = pos_ + 1 < code_.size() ? code_[pos_ + 1] : '\0';
    if (c == ' ' || c == '\t' || IsLineEnd(c) || c == '\f' || c == '\v') {
      lineBreak_ = lineBreak_ || IsLineEnd(c);
      ++pos_;
    } else if (c == '/' && next == '/') {
      while (pos_ < code_.size() && !IsLineEnd(code_[pos_])) ++pos_;
    } else if (c == '/' && next == '*') {
      std::size_t end = code_.find("*/", pos_ + 2);
      end = end == std::string_view::npos ? code_.size() : end + 2;
      std::string_view comment = code_.substr(pos_, end - pos_);
      lineBreak_ = lineBreak_ || comment.find_first_of("\r\n") != std::string_view::npos;
      pos_ = end;
    } else if (c == '"' || c == '\'') {
      SkipString(c);
      Expect(Pending::kNone);
      Token(false);
    } else if (c == '/' && regexMayFollow_) {
      SkipRegex();
      Expect(Pending::kNone);
      Token(false);
    } else if (IsIdentifierChar(c) || (c == '.' && next >= '0' && next <= '9')) {
      Word();
    } else if (c == '(' || c == '[' || c == '{') {
      Open(c);
    } else if (c == ')' || c == ']' || c == '}') {
      Close(c);
    } else {
      Punctuator(c, next);
    }
  }

  void SkipString(char quote) {
    ++pos_;
    while (pos_ < code_.size()) {
      char c = code_[pos_];
      if (c == '\\') {
        pos_ += code_.compare(pos_ + 1, 2, "\r\n") == 0 ? 3 : 2;
      } else if (c == quote) {
        ++pos_;
        return;
      } else if (IsLineEnd(c)) {
        return;  // unterminated: the compiler says so
      } else {
        ++pos_;
      }
    }
  }

  // A regular expression literal; one that does not end on its line was a
  // division after all.
  void SkipRegex() {
    std::size_t p = pos_ + 1;
    bool inClass = false;
    while (p < code_.size() && !IsLineEnd(code_[p])) {
      char c = code_[p];
      if (c == '\\') {
        p += 2;
        continue;
      }
      if (c == '[') inClass = true;
      if (c == ']') inClass = false;
      if (c == '/' && !inClass) {
        pos_ = p + 1;
        while (pos_ < code_.size() && IsIdentifierChar(code_[pos_])) ++pos_;
        return;
      }
      ++p;
    }
    ++pos_;
  }

  void Word() {
    std::size_t start = pos_;
    bool number = (code_[pos_] >= '0' && code_[pos_] <= '9') || code_[pos_] == '.';
    while (pos_ < code_.size() && (IsIdentifierChar(code_[pos_]) || (number && code_[pos_] == '.')))
      ++pos_;
    std::string_view word = code_.substr(start, pos_ - start);
    bool name = !number && !afterDot_;
    Pending next = Pending::kNone;
    if (name && word == "while") next = Pending::kWhile;
    if (name && word == "for") next = Pending::kFor;
    if (name && (word == "if" || word == "with")) next = Pending::kStatement;
    if (name && word == "function") {
      next = Pending::kFunction;
      functionExpression_ = objectMayFollow_;
    }
    if (name && pending_ == Pending::kFunction) next = Pending::kFunction;  // its name
    Expect(next);
    bool expression = name && KeywordBeforeExpression(word);
    Token(expression, expression && word != "do" && word != "else");
  }

  // What a bracket that follows a keyword belongs to.
  enum class Pending { kNone, kStatement, kWhile, kFor, kFunction, kBody };

  void Expect(Pending next) {
    pending_ = next;
    afterDot_ = false;
  }

  void Open(char c) {
    Bracket::Kind kind = Bracket::kPlain;
    if (c == '(') {
      if (pending_ == Pending::kWhile) kind = Bracket::kWhile;
      if (pending_ == Pending::kFor) kind = Bracket::kFor;
      if (pending_ == Pending::kStatement) kind = Bracket::kStatement;
      if (pending_ == Pending::kFunction) kind = Bracket::kParameters;
    }
    if (c == '{' && pending_ == Pending::kBody) kind = Bracket::kBody;
    if (!brackets_.empty()) brackets_.back().empty = false;
    Expect(Pending::kNone);
    brackets_.push_back(Bracket{c, kind, pos_});
    brackets_.back().object =
        c == '{' && (kind == Bracket::kBody ? functionExpression_ : objectMayFollow_);
    regexMayFollow_ = true;
    objectMayFollow_ = c != '{';
    ++pos_;
  }

  void Close(char c) {
    Expect(Pending::kNone);
    char open = c == ')' ? '(' : c == ']' ? '[' : '{';
    if (brackets_.empty() || brackets_.back().open != open) {
      // Unbalanced: leave the rest to the compiler's error.
      Token(c == '}');
      ++pos_;
      return;
    }
    Bracket bracket = brackets_.back();
    brackets_.pop_back();
    if (bracket.kind == Bracket::kWhile && !bracket.empty) {
      Check(bracket.at + 1, pos_);
    } else if (bracket.kind == Bracket::kFor && bracket.semicolons == 2) {
      CheckCondition(bracket.firstSemicolon + 1, bracket.secondSemicolon);
    } else if (bracket.kind == Bracket::kBody && bracket.counts) {
      // Declarations are hoisted: at the end the counter's var cannot come
      // before a "use strict" that must open the body.
      insertions_.push_back({pos_, declaration_});
    }
    Token(c == '}' ? !bracket.object
                   : bracket.kind == Bracket::kStatement || bracket.kind == Bracket::kWhile ||
                         bracket.kind == Bracket::kFor);
    ++pos_;
    if (bracket.kind == Bracket::kParameters) pending_ = Pending::kBody;
  }

  // Puts the check before the condition from `start` to `end`. A loop in a
  // function counts its turns in a local variable of the function; at top
  // level the global one serves.
  void Check(std::size_t start, std::size_t end) {
    insertions_.push_back({start, turn_ + "&&("});
    insertions_.push_back({end, ")"});
    MarkBody();
  }

  void MarkBody() {
    auto body = std::find_if(brackets_.rbegin(), brackets_.rend(),
                             [](const Bracket& b) { return b.kind == Bracket::kBody; });
    if (body != brackets_.rend()) body->counts = true;
  }

  // The condition of a for loop lies between its two semicolons; the check
  // goes where the condition starts, on its line.
  void CheckCondition(std::size_t from, std::size_t to) {
    std::size_t start = from + Rewriter(code_.substr(from, to - from), "", "").SkipBlank();
    if (start == to) {
      insertions_.push_back({from, turn_});
      MarkBody();
    } else {
      Check(start, to);
    }
  }

  // The position of the first character that is no blank and in no comment.
  std::size_t SkipBlank() {
    while (pos_ < code_.size()) {
      char c = code_[pos_];
      char next = pos_ + 1 < code_.size() ? code_[pos_ + 1] : '\0';
      if (c == ' ' || c == '\t' || IsLineEnd(c) || c == '\f' || c == '\v' ||
          (c == '/' && (next == '/' || next == '*')))
        Step();
      else
        break;
    }
    return pos_;
  }

  void Punctuator(char c, char next) {
    Expect(Pending::kNone);
    if (c == ';' && !brackets_.empty() && brackets_.back().kind == Bracket::kFor) {
      Bracket& head = brackets_.back();
      if (++head.semicolons == 1) head.firstSemicolon = pos_;
      if (head.semicolons == 2) head.secondSemicolon = pos_;
    }
    if ((c == '+' || c == '-') && next == c) {
      // ++ and -- end an operand as far as a following slash is concerned;
      // as a prefix (where an operand was due, or at the start of a line,
      // where a postfix one cannot stand) an operand follows them.
      Token(false, regexMayFollow_ || objectMayFollow_ || lineBreak_);
      pos_ += 2;
      return;
    }
    // After a semicolon or a colon a brace is a block (a statement, a case,
    // a label), except inside parentheses (a for head, a conditional) and
    // for a property's value.
    bool inObject = !brackets_.empty() && brackets_.back().object;
    bool inParens = !brackets_.empty() && brackets_.back().open != '{';
    Token(true, (c != ';' && c != ':') || inParens || (c == ':' && inObject));
    afterDot_ = c == '.';
    ++pos_;
  }

  std::string_view code_;
  std::string turn_;  // counts a turn, and calls the check every so many turns
  std::string declaration_;
  std::size_t pos_ = 0;
  bool regexMayFollow_ = true;
  bool objectMayFollow_ = false;
  bool functionExpression_ = false;  // the function being declared is an operand
  bool lineBreak_ = false;           // a line ended since the last token
  bool afterDot_ = false;
  Pending pending_ = Pending::kNone;
  std::vector<Bracket> brackets_;
  std::vector<Insertion> insertions_;
};

}  // namespace

std::string InsertLoopChecks(std::string_view code, std::string_view check,
                             std::string_view counter) {
  return Rewriter(code, check, counter).Run();
}

}  // namespace ketrova::script::jscript
