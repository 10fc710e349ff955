#include "dialogs/vbscript_line_styles.h"

#include <algorithm>
#include <cctype>

#include "platform/script/engine.h"
#include "platform/script/vbscript/scanner.h"

namespace ketrova::dialogs {
namespace {

using script::vbscript::Token;
using script::vbscript::TokenKind;

bool IsContinuationByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool IsIdentChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\f' || c == '\v' || c == '\0';
}

// The byte after the character that starts at `pos`.
std::size_t NextCharacter(std::string_view text, std::size_t pos) {
  ++pos;
  while (pos < text.size() && IsContinuationByte(text[pos])) ++pos;
  return pos;
}

// Walks forward through a line, turning the scanner's 1-based character
// columns into byte offsets. Columns must be asked for in ascending order.
class ColumnWalker {
 public:
  explicit ColumnWalker(std::string_view text) : text_(text) {}
  std::size_t Offset(int column) {
    while (column_ < column && pos_ < text_.size()) {
      pos_ = NextCharacter(text_, pos_);
      ++column_;
    }
    return pos_;
  }

 private:
  std::string_view text_;
  std::size_t pos_ = 0;
  int column_ = 1;
};

// Where a token that starts at byte `begin` ends. The scanner gives a token's
// start and value, not its length; the length comes from the text.
std::size_t TokenEnd(std::string_view text, std::size_t begin, const Token& token) {
  std::size_t end = begin + 1;
  switch (token.kind) {
    case TokenKind::kIdentifier:
      if (text[begin] == '[') {
        std::size_t close = text.find(']', begin);
        end = close == std::string_view::npos ? text.size() : close + 1;
      } else {
        end = begin + token.text.size();
      }
      break;
    case TokenKind::kKeyword:
    case TokenKind::kSymbol:
      end = begin + token.text.size();
      break;
    case TokenKind::kNumber:
      if (text[begin] == '&') {
        std::size_t p = begin + 1;
        bool hex = p < text.size() && (text[p] == 'h' || text[p] == 'H');
        if (p < text.size() && (hex || text[p] == 'o' || text[p] == 'O')) ++p;
        while (p < text.size() && (hex ? std::isxdigit(static_cast<unsigned char>(text[p]))
                                       : std::isdigit(static_cast<unsigned char>(text[p]))))
          ++p;
        if (p < text.size() && text[p] == '&') ++p;
        end = p;
      } else {
        end = begin + token.text.size();
      }
      break;
    case TokenKind::kString: {
      std::size_t p = begin + 1;
      while (p < text.size()) {
        if (text[p] == '"') {
          if (p + 1 < text.size() && text[p + 1] == '"') {
            p += 2;
            continue;
          }
          ++p;
          break;
        }
        ++p;
      }
      end = p;
      break;
    }
    case TokenKind::kDate: {
      std::size_t close = text.find('#', begin + 1);
      end = close == std::string_view::npos ? text.size() : close + 1;
      break;
    }
    default:
      break;
  }
  return std::clamp(end, begin + 1, text.size());
}

int StyleOf(const Token& token) {
  switch (token.kind) {
    case TokenKind::kKeyword:
      return kVbKeyword;
    case TokenKind::kNumber:
      return kVbNumber;
    case TokenKind::kString:
      return kVbString;
    case TokenKind::kDate:
      return kVbDate;
    default:
      return kVbDefault;
  }
}

// "Rem" as a word of its own at `pos`: the scanner reads it as a comment.
bool IsRemAt(std::string_view text, std::size_t pos) {
  if (pos + 3 > text.size()) return false;
  for (std::size_t i = 0; i < 3; ++i)
    if (std::tolower(static_cast<unsigned char>(text[pos + i])) != "rem"[i]) return false;
  return pos + 3 == text.size() || !IsIdentChar(text[pos + 3]);
}

void Fill(std::vector<int>& styles, std::size_t from, std::size_t to, int style) {
  std::fill(styles.begin() + static_cast<std::ptrdiff_t>(from),
            styles.begin() + static_cast<std::ptrdiff_t>(to), style);
}

// Colours the tokens the scanner read from `segment` (which starts at byte
// `base` of the line), and the comment the scanner dropped behind them.
void StyleTokens(std::string_view segment, std::size_t base, const std::vector<Token>& tokens,
                 std::vector<int>& styles) {
  ColumnWalker walker(segment);
  std::size_t lastEnd = 0;
  for (const Token& token : tokens) {
    if (token.kind == TokenKind::kEnd || token.line != 1) break;
    if (token.kind == TokenKind::kNewLine) continue;
    std::size_t begin = walker.Offset(token.column);
    if (begin >= segment.size()) break;
    std::size_t end = TokenEnd(segment, begin, token);
    Fill(styles, base + begin, base + end, StyleOf(token));
    lastEnd = std::max(lastEnd, end);
  }
  // A comment runs to the line end, so it can only follow the last token.
  std::size_t p = lastEnd;
  while (p < segment.size() && IsBlank(segment[p])) ++p;
  if (p < segment.size() && (segment[p] == '\'' || IsRemAt(segment, p)))
    Fill(styles, base + p, base + segment.size(), kVbComment);
}

// Steps over what the scanner refused at `pos`; answers where to go on.
std::size_t SkipRefused(std::string_view line, std::size_t pos, std::vector<int>& styles) {
  char c = line[pos];
  if (c == '"') {  // an open string: the rest of the line is its text
    Fill(styles, pos, line.size(), kVbString);
    return line.size();
  }
  if (c == '#') {  // a date that is none: up to its closing "#"
    std::size_t close = line.find('#', pos + 1);
    return close == std::string_view::npos ? line.size() : close + 1;
  }
  if (IsIdentChar(c)) {  // a name too long, or a number out of range
    while (pos < line.size() && (IsIdentChar(line[pos]) || line[pos] == '.')) ++pos;
    return pos;
  }
  return NextCharacter(line, pos);
}

}  // namespace

std::vector<int> VbScriptLineStyles(std::string_view line) {
  std::vector<int> styles(line.size(), kVbDefault);
  std::size_t pos = 0;
  while (pos < line.size()) {
    std::string_view rest = line.substr(pos);
    try {
      StyleTokens(rest, pos, script::vbscript::Scan(rest), styles);
      break;
    } catch (const script::ScriptError& refused) {
      std::size_t at = refused.Line == 1 ? pos + ColumnWalker(rest).Offset(refused.Column) : pos;
      if (at > pos) {
        // What stands before the refused spot reads on its own.
        std::string_view before = line.substr(pos, at - pos);
        try {
          StyleTokens(before, pos, script::vbscript::Scan(before), styles);
        } catch (const script::ScriptError&) {
        }
        pos = at;
      } else {
        pos = SkipRefused(line, pos, styles);
      }
    }
  }
  return styles;
}

}  // namespace ketrova::dialogs
