#include "platform/script/vbscript/scanner.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>

#include "platform/script/vbscript/errors.h"

namespace ketrova::script::vbscript {
namespace {

constexpr std::array<std::string_view, 53> kKeywords = {
    "and",     "byref",    "byval",  "call",   "case",    "class", "const", "dim",      "do",
    "each",    "else",     "elseif", "empty",  "end",     "eqv",   "erase", "exit",     "false",
    "for",     "function", "if",     "imp",    "in",      "is",    "let",   "loop",     "me",
    "mod",     "new",      "next",   "not",    "nothing", "null",  "on",    "option",   "or",
    "private", "public",   "redim",  "select", "set",     "sub",   "then",  "to",       "true",
    "until",   "wend",     "while",  "with",   "xor",     "goto",  "stop",  "randomize"};

bool IsKeyword(std::string_view lower) {
  // "goto", "stop" and "randomize" are handled by the parser as plain names.
  if (lower == "goto" || lower == "stop" || lower == "randomize") return false;
  return std::find(kKeywords.begin(), kKeywords.end(), lower) != kKeywords.end();
}

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

bool IsIdentStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}
bool IsIdentChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

class Scanner {
 public:
  Scanner(std::string_view text, int firstLine) : text_(text), line_(firstLine) {}

  std::vector<Token> Run() {
    while (true) {
      SkipBlanks();
      if (pos_ >= text_.size()) break;
      char c = text_[pos_];
      int line = line_, column = Column();
      if (c == '\'') {
        SkipToLineEnd();
        continue;
      }
      if (c == '\r' || c == '\n') {
        if (c == '\r' && Peek(1) == '\n') ++pos_;
        ++pos_;
        Push(TokenKind::kNewLine, "\n", line, column);
        NewLine();
        continue;
      }
      if (c == ':') {
        ++pos_;
        Push(TokenKind::kColon, ":", line, column);
        continue;
      }
      if (c == '_' && ContinuationFollows()) continue;
      if (IsIdentStart(c)) {
        ScanIdentifier(line, column);
        continue;
      }
      if (c == '[') {
        size_t end = text_.find(']', pos_);
        size_t nl = text_.find_first_of("\r\n", pos_);
        if (end == std::string_view::npos || (nl != std::string_view::npos && nl < end))
          RaiseCompileError(kErrRBracketExpected, line, column);
        Token t;
        t.kind = TokenKind::kIdentifier;
        t.text = std::string(text_.substr(pos_ + 1, end - pos_ - 1));
        t.line = line;
        t.column = column;
        pos_ = end + 1;
        tokens_.push_back(std::move(t));
        continue;
      }
      if (std::isdigit(static_cast<unsigned char>(c)) ||
          (c == '.' && std::isdigit(static_cast<unsigned char>(Peek(1))) && !AfterOperand())) {
        ScanNumber(line, column);
        continue;
      }
      if (c == '"') {
        ScanString(line, column);
        continue;
      }
      if (c == '#') {
        ScanDate(line, column);
        continue;
      }
      if (c == '&' && StartsRadixLiteral()) {
        ScanRadix(line, column);
        continue;
      }
      ScanSymbol(line, column);
    }
    Push(TokenKind::kEnd, "", line_, Column());
    return std::move(tokens_);
  }

 private:
  char Peek(size_t ahead) const { return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\0'; }
  // Columns count characters, not bytes.
  // Counted on from the last position asked for, so a long line stays cheap.
  int Column() {
    if (columnPos_ < lineStart_ || columnPos_ > pos_) {
      columnPos_ = lineStart_;
      column_ = 1;
    }
    for (; columnPos_ < pos_ && columnPos_ < text_.size(); ++columnPos_)
      if ((static_cast<unsigned char>(text_[columnPos_]) & 0xC0) != 0x80) ++column_;
    return column_;
  }
  void NewLine() {
    ++line_;
    lineStart_ = pos_;
    columnPos_ = pos_;
    column_ = 1;
  }
  void SkipBlanks() {
    while (pos_ < text_.size() &&
           (text_[pos_] == ' ' || text_[pos_] == '\t' || text_[pos_] == '\f' ||
            text_[pos_] == '\v' || text_[pos_] == '\0'))
      ++pos_;
  }
  void SkipToLineEnd() {
    while (pos_ < text_.size() && text_[pos_] != '\r' && text_[pos_] != '\n') ++pos_;
  }
  // "_" followed by blanks and a line end joins two lines.
  bool ContinuationFollows() {
    size_t p = pos_ + 1;
    while (p < text_.size() && (text_[p] == ' ' || text_[p] == '\t')) ++p;
    if (p < text_.size() && text_[p] != '\r' && text_[p] != '\n') return false;
    if (p < text_.size() && text_[p] == '\r') ++p;
    if (p < text_.size() && text_[p] == '\n') ++p;
    pos_ = p;
    NewLine();
    return true;
  }
  bool AfterOperand() const {
    if (tokens_.empty()) return false;
    const Token& t = tokens_.back();
    if (t.kind == TokenKind::kIdentifier || t.kind == TokenKind::kNumber ||
        t.kind == TokenKind::kString)
      return pos_ > 0 && text_[pos_ - 1] != ' ' && text_[pos_ - 1] != '\t';
    return t.kind == TokenKind::kSymbol && (t.text == ")") && text_[pos_ - 1] == ')';
  }
  void Push(TokenKind kind, std::string text, int line, int column) {
    Token t;
    t.kind = kind;
    t.text = std::move(text);
    t.line = line;
    t.column = column;
    tokens_.push_back(std::move(t));
  }

  void ScanIdentifier(int line, int column) {
    size_t start = pos_;
    while (pos_ < text_.size() && IsIdentChar(text_[pos_])) ++pos_;
    std::string_view word = text_.substr(start, pos_ - start);
    if (word.size() > 255) RaiseCompileError(kErrIdentifierTooLong, line, column);
    std::string lower = Lower(word);
    if (lower == "rem") {
      SkipToLineEnd();
      return;
    }
    if (IsKeyword(lower)) {
      Push(TokenKind::kKeyword, lower, line, column);
    } else {
      Push(TokenKind::kIdentifier, std::string(word), line, column);
    }
  }

  void ScanNumber(int line, int column) {
    size_t start = pos_;
    bool isFloat = false;
    while (std::isdigit(static_cast<unsigned char>(Peek(0)))) ++pos_;
    if (Peek(0) == '.' && std::isdigit(static_cast<unsigned char>(Peek(1)))) {
      isFloat = true;
      ++pos_;
      while (std::isdigit(static_cast<unsigned char>(Peek(0)))) ++pos_;
    } else if (Peek(0) == '.' && !IsIdentStart(Peek(1))) {
      isFloat = true;
      ++pos_;
    }
    if ((Peek(0) == 'e' || Peek(0) == 'E') &&
        (std::isdigit(static_cast<unsigned char>(Peek(1))) ||
         ((Peek(1) == '+' || Peek(1) == '-') &&
          std::isdigit(static_cast<unsigned char>(Peek(2)))))) {
      isFloat = true;
      pos_ += 2;
      while (std::isdigit(static_cast<unsigned char>(Peek(0)))) ++pos_;
    }
    if (IsIdentStart(Peek(0))) RaiseCompileError(kErrEndOfStatementExpected, line_, Column());
    std::string digits(text_.substr(start, pos_ - start));
    Token t;
    t.kind = TokenKind::kNumber;
    t.text = digits;
    t.line = line;
    t.column = column;
    double d = std::strtod(digits.c_str(), nullptr);
    if (std::isinf(d)) RaiseCompileError(kErrInvalidNumber, line, column);
    if (!isFloat && d <= 32767)
      t.value = Variant::Integer(static_cast<std::int16_t>(d));
    else if (!isFloat && d <= 2147483647.0)
      t.value = Variant::Long(static_cast<std::int32_t>(d));
    else
      t.value = d;
    tokens_.push_back(std::move(t));
  }

  // "&" starts a literal only when a digit of its radix follows: in
  // "x" &hi the "&" concatenates the variable hi.
  bool StartsRadixLiteral() const {
    char p = Peek(1);
    if (p == 'h' || p == 'H') return std::isxdigit(static_cast<unsigned char>(Peek(2))) != 0;
    if (p == 'o' || p == 'O') return Peek(2) >= '0' && Peek(2) <= '7';
    return std::isdigit(static_cast<unsigned char>(p)) != 0;
  }

  // &Hxxxx, &Oooo and &ooo. Without a trailing "&", values that fit in 16
  // bits are Integers (so &HFFFF is -1), in 32 bits Longs. With it, the
  // value is read as 32 bits and gets the smallest type that holds it
  // (&H10& is an Integer, &HFFFF& the Long 65535, &HFFFFFFFE& the Integer -2).
  void ScanRadix(int line, int column) {
    ++pos_;
    int radix = 8;
    if (Peek(0) == 'h' || Peek(0) == 'H') {
      radix = 16;
      ++pos_;
    } else if (Peek(0) == 'o' || Peek(0) == 'O') {
      ++pos_;
    }
    std::uint64_t value = 0;
    size_t digits = 0;
    while (pos_ < text_.size()) {
      char c = text_[pos_];
      int digit;
      if (c >= '0' && c <= '9')
        digit = c - '0';
      else if (radix == 16 && std::isxdigit(static_cast<unsigned char>(c)))
        digit = std::tolower(static_cast<unsigned char>(c)) - 'a' + 10;
      else
        break;
      if (digit >= radix) RaiseCompileError(kErrSyntax, line, column);
      value = value * radix + digit;
      if (value > 0xFFFFFFFFull) RaiseCompileError(kErrInvalidNumber, line, column);
      ++pos_;
      ++digits;
    }
    if (digits == 0) RaiseCompileError(kErrSyntax, line, column);
    bool asLong = Peek(0) == '&';
    if (asLong) ++pos_;
    Token t;
    t.kind = TokenKind::kNumber;
    t.line = line;
    t.column = column;
    auto asInt32 = static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
    if (value <= 0xFFFF && !asLong)
      t.value = Variant::Integer(static_cast<std::int16_t>(static_cast<std::uint16_t>(value)));
    else if (asLong && asInt32 >= -32768 && asInt32 <= 32767)
      t.value = Variant::Integer(static_cast<std::int16_t>(asInt32));
    else
      t.value = Variant::Long(asInt32);
    tokens_.push_back(std::move(t));
  }

  void ScanString(int line, int column) {
    ++pos_;
    std::string value;
    while (true) {
      if (pos_ >= text_.size() || text_[pos_] == '\r' || text_[pos_] == '\n')
        RaiseCompileError(kErrUnterminatedString, line, column);
      if (text_[pos_] == '"') {
        if (Peek(1) == '"') {
          value += '"';
          pos_ += 2;
          continue;
        }
        ++pos_;
        break;
      }
      value += text_[pos_++];
    }
    Token t;
    t.kind = TokenKind::kString;
    t.value = std::move(value);
    t.line = line;
    t.column = column;
    tokens_.push_back(std::move(t));
  }

  // #m/d/yyyy#, #yyyy-mm-dd#, #d.m.yyyy#, with an optional time hh:mm[:ss]
  // [AM|PM]; a time alone is a time on day 0.
  void ScanDate(int line, int column) {
    size_t end = text_.find_first_of("#\r\n", pos_ + 1);
    if (end == std::string_view::npos || text_[end] != '#')
      RaiseCompileError(kErrSyntax, line, column);
    std::string body(text_.substr(pos_ + 1, end - pos_ - 1));
    pos_ = end + 1;
    double value = 0;
    if (!ParseDateLiteral(body, value)) RaiseCompileError(kErrSyntax, line, column);
    Token t;
    t.kind = TokenKind::kDate;
    t.value = Variant::FromDate(value);
    t.line = line;
    t.column = column;
    tokens_.push_back(std::move(t));
  }

  static bool ParseDateLiteral(const std::string& body, double& value) {
    std::vector<std::string> parts;
    std::string cur;
    for (char c : body) {
      if (c == ' ' || c == '\t') {
        if (!cur.empty()) parts.push_back(cur), cur.clear();
      } else {
        cur += c;
      }
    }
    if (!cur.empty()) parts.push_back(cur);
    if (parts.empty()) return false;
    double day = 0, time = 0;
    bool haveDate = false, haveTime = false;
    for (size_t i = 0; i < parts.size(); ++i) {
      std::string p = Lower(parts[i]);
      if (p == "am" || p == "pm") {
        if (!haveTime) return false;
        continue;
      }
      if (p.find(':') != std::string::npos) {
        int h = 0, m = 0, s = 0;
        char extra[8] = {0};
        int n = std::sscanf(p.c_str(), "%d:%d:%d%7s", &h, &m, &s, extra);
        if (n < 2) return false;
        bool pm = p.ends_with("pm") || (i + 1 < parts.size() && Lower(parts[i + 1]) == "pm");
        bool am = p.ends_with("am") || (i + 1 < parts.size() && Lower(parts[i + 1]) == "am");
        if ((am || pm) && (h < 1 || h > 12)) return false;
        if (pm && h < 12) h += 12;
        if (am && h == 12) h = 0;
        if (h > 23 || m > 59 || s > 59 || h < 0 || m < 0 || s < 0) return false;
        time = (h * 3600 + m * 60 + s) / 86400.0;
        haveTime = true;
        continue;
      }
      int a = 0, b = 0, c = 0;
      char sep1 = 0, sep2 = 0;
      if (std::sscanf(p.c_str(), "%d%c%d%c%d", &a, &sep1, &b, &sep2, &c) != 5 || sep1 != sep2)
        return false;
      int y, mo, d;
      if (sep1 == '-' && a > 31) {
        y = a, mo = b, d = c;
      } else if (sep1 == '/' || sep1 == '-') {
        mo = a, d = b, y = c;
      } else if (sep1 == '.') {
        d = a, mo = b, y = c;
      } else {
        return false;
      }
      if (y < 100) y += y < 30 ? 2000 : 1900;
      if (!MakeOleDate(y, mo, d, day)) return false;
      haveDate = true;
    }
    if (!haveDate && !haveTime) return false;
    value = day >= 0 ? day + time : day - time;
    return true;
  }

  void ScanSymbol(int line, int column) {
    char c = text_[pos_];
    std::string sym(1, c);
    if (c == '<' && (Peek(1) == '>' || Peek(1) == '=')) sym += Peek(1);
    if (c == '>' && Peek(1) == '=') sym += Peek(1);
    if (c == '=' && (Peek(1) == '<' || Peek(1) == '>')) sym = Peek(1) == '<' ? "<=" : ">=";
    if (c == '>' && Peek(1) == '<') sym = "<>";
    static constexpr std::string_view kSingles = "+-*/\\^&=<>(),.";
    if (sym.size() == 1 && kSingles.find(c) == std::string_view::npos)
      RaiseCompileError(kErrInvalidCharacter, line, column);
    bool attached = false;
    if (c == '.' && pos_ > 0 && !tokens_.empty()) {
      char before = text_[pos_ - 1];
      attached = IsIdentChar(before) || before == ')' || before == ']';
    }
    pos_ += sym.size();
    Push(TokenKind::kSymbol, sym, line, column);
    tokens_.back().attached = attached;
  }

  std::string_view text_;
  size_t pos_ = 0;
  size_t lineStart_ = 0;
  size_t columnPos_ = 0;
  int column_ = 1;
  int line_;
  std::vector<Token> tokens_;
};

}  // namespace

bool MakeOleDate(int year, int month, int day, double& oleDate) {
  if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1) return false;
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  int maxDay = kDays[month - 1] + (month == 2 && leap ? 1 : 0);
  if (day > maxDay) return false;
  // Days from the civil calendar (Howard Hinnant's algorithm), shifted to
  // 1899-12-30.
  int y = year - (month <= 2 ? 1 : 0);
  int era = (y >= 0 ? y : y - 399) / 400;
  int yoe = y - era * 400;
  int doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  long days = static_cast<long>(era) * 146097 + doe - 719468;  // since 1970-01-01
  oleDate = static_cast<double>(days + 25569);
  return true;
}

std::vector<Token> Scan(std::string_view text, int firstLine) {
  return Scanner(text, firstLine).Run();
}

}  // namespace ketrova::script::vbscript
