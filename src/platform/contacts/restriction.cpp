#include "platform/contacts/restriction.h"

#include <cassert>

#include "support/number_text.h"
#include "support/text.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova::contacts {

struct Restriction::Node {
  enum Kind { kAnd, kOr, kCondition } kind = kCondition;
  std::shared_ptr<const Node> left, right;
  std::string property;
  std::string op;  // "=", "<>", "<", "<=", ">", ">=", "LIKE", "NOT LIKE"
  std::string value;
};

namespace {

constexpr std::int32_t kErrParse = -2147352567;

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  std::shared_ptr<const Restriction::Node> Parse() {
    auto node = Or();
    SkipBlanks();
    if (pos_ < text_.size()) Fail();
    return node;
  }

 private:
  using NodePtr = std::shared_ptr<const Restriction::Node>;

  [[noreturn]] void Fail() const {
    std::string at(text_.substr(pos_ < text_.size() ? pos_ : text_.size()));
    throw VbError(kErrParse,
                  "Die Bedingung kann nicht analysiert werden. Fehler bei \"" + at + "\".",
                  "Restrict");
  }

  void SkipBlanks() {
    while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t' ||
                                   text_[pos_] == '\r' || text_[pos_] == '\n'))
      ++pos_;
  }

  // The keyword at the position, taken when it stands there as a word.
  bool Keyword(std::string_view word) {
    SkipBlanks();
    if (text_.size() - pos_ < word.size()) return false;
    if (AsciiUpper(text_.substr(pos_, word.size())) != word) return false;
    const std::size_t end = pos_ + word.size();
    if (end < text_.size() && !std::isspace(static_cast<unsigned char>(text_[end])) &&
        text_[end] != '(' && text_[end] != '\'')
      return false;
    pos_ = end;
    return true;
  }

  NodePtr Combine(Restriction::Node::Kind kind, NodePtr left, NodePtr right) {
    auto node = std::make_shared<Restriction::Node>();
    node->kind = kind;
    node->left = std::move(left);
    node->right = std::move(right);
    return node;
  }

  NodePtr Or() {
    NodePtr node = And();
    while (Keyword("OR")) node = Combine(Restriction::Node::kOr, node, And());
    return node;
  }

  NodePtr And() {
    NodePtr node = Primary();
    while (Keyword("AND")) node = Combine(Restriction::Node::kAnd, node, Primary());
    return node;
  }

  NodePtr Primary() {
    SkipBlanks();
    if (pos_ < text_.size() && text_[pos_] == '(') {
      ++pos_;
      NodePtr inner = Or();
      SkipBlanks();
      if (pos_ >= text_.size() || text_[pos_] != ')') Fail();
      ++pos_;
      return inner;
    }
    auto node = std::make_shared<Restriction::Node>();
    node->property = Property();
    node->op = Operator();
    node->value = Value();
    return node;
  }

  std::string Property() {
    SkipBlanks();
    if (pos_ < text_.size() && text_[pos_] == '[') {
      const std::size_t close = text_.find(']', pos_);
      if (close == std::string_view::npos || close == pos_ + 1) Fail();
      std::string name(text_.substr(pos_ + 1, close - pos_ - 1));
      pos_ = close + 1;
      return name;
    }
    const std::size_t start = pos_;
    while (pos_ < text_.size() &&
           (std::isalnum(static_cast<unsigned char>(text_[pos_])) || text_[pos_] == '_' ||
            static_cast<unsigned char>(text_[pos_]) >= 0x80))
      ++pos_;
    if (pos_ == start) Fail();
    return std::string(text_.substr(start, pos_ - start));
  }

  std::string Operator() {
    SkipBlanks();
    for (std::string_view op : {"<>", "<=", ">=", "=", "<", ">"})
      if (text_.substr(pos_).starts_with(op)) {
        pos_ += op.size();
        return std::string(op);
      }
    if (Keyword("LIKE")) return "LIKE";
    const std::size_t before = pos_;
    if (Keyword("NOT") && Keyword("LIKE")) return "NOT LIKE";
    pos_ = before;
    Fail();
  }

  std::string Value() {
    SkipBlanks();
    if (pos_ >= text_.size()) Fail();
    if (text_[pos_] == '\'') {
      std::string value;
      for (++pos_; pos_ < text_.size(); ++pos_) {
        if (text_[pos_] != '\'') {
          value += text_[pos_];
        } else if (pos_ + 1 < text_.size() && text_[pos_ + 1] == '\'') {
          value += '\'';
          ++pos_;
        } else {
          ++pos_;
          return value;
        }
      }
      Fail();  // no closing quote
    }
    const std::size_t start = pos_;
    while (pos_ < text_.size() && !std::isspace(static_cast<unsigned char>(text_[pos_])) &&
           text_[pos_] != ')')
      ++pos_;
    return std::string(text_.substr(start, pos_ - start));
  }

  std::string_view text_;
  std::size_t pos_ = 0;
};

void CollectProperties(const Restriction::Node& node, std::vector<std::string>& out) {
  if (node.kind == Restriction::Node::kCondition) {
    out.push_back(node.property);
    return;
  }
  CollectProperties(*node.left, out);
  CollectProperties(*node.right, out);
}

// SQL's LIKE on code points, without regard to case.
bool Like(const std::u32string& text, std::size_t t, const std::u32string& pattern, std::size_t p) {
  while (p < pattern.size()) {
    if (pattern[p] == U'%') {
      while (p < pattern.size() && pattern[p] == U'%') ++p;
      if (p == pattern.size()) return true;
      for (std::size_t k = t; k <= text.size(); ++k)
        if (Like(text, k, pattern, p)) return true;
      return false;
    }
    if (t >= text.size()) return false;
    if (pattern[p] != U'_' && LowerCodePoint(pattern[p]) != LowerCodePoint(text[t])) return false;
    ++p;
    ++t;
  }
  return t == text.size();
}

// -1, 0 or 1: dates as dates, two numbers as numbers, else text without case.
int Compare(const Variant& actual, const std::string& wanted) {
  if (actual.Type() == vbDate) {
    Variant w(wanted);
    if (IsDate(w)) {
      const double a = actual.ToDouble(), b = w.ConvertTo(vbDate).ToDouble();
      return a < b ? -1 : a > b ? 1 : 0;
    }
  }
  const std::string text = actual.IsNull() || actual.IsEmpty() ? std::string() : actual.ToText();
  Variant a(text), b(wanted);
  if (!text.empty() && !wanted.empty() && IsNumeric(a) && IsNumeric(b)) {
    const double x = a.ToDouble(), y = b.ToDouble();
    return x < y ? -1 : x > y ? 1 : 0;
  }
  const std::string l = LowerCase(text), r = LowerCase(wanted);
  return l < r ? -1 : l > r ? 1 : 0;
}

bool Evaluate(const Restriction::Node& node,
              const std::function<Variant(const std::string&)>& value) {
  switch (node.kind) {
    case Restriction::Node::kAnd:
      return Evaluate(*node.left, value) && Evaluate(*node.right, value);
    case Restriction::Node::kOr:
      return Evaluate(*node.left, value) || Evaluate(*node.right, value);
    case Restriction::Node::kCondition:
      break;
  }
  const Variant actual = value(node.property);
  if (node.op == "LIKE" || node.op == "NOT LIKE") {
    const std::string text = actual.IsNull() || actual.IsEmpty() ? std::string() : actual.ToText();
    const bool like = Like(ToCodePoints(text), 0, ToCodePoints(node.value), 0);
    return node.op == "LIKE" ? like : !like;
  }
  const int c = Compare(actual, node.value);
  if (node.op == "=") return c == 0;
  if (node.op == "<>") return c != 0;
  if (node.op == "<") return c < 0;
  if (node.op == "<=") return c <= 0;
  if (node.op == ">") return c > 0;
  assert(node.op == ">=");
  return c >= 0;
}

}  // namespace

Restriction Restriction::Parse(std::string_view text) {
  Restriction r;
  r.root_ = Parser(text).Parse();
  return r;
}

std::vector<std::string> Restriction::Properties() const {
  std::vector<std::string> out;
  CollectProperties(*root_, out);
  return out;
}

bool Restriction::Matches(const std::function<Variant(const std::string&)>& value) const {
  return Evaluate(*root_, value);
}

}  // namespace ketrova::contacts
