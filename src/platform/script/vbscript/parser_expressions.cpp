// Expressions: the binary operators by precedence, Not and the signs, ^,
// calls, indexes and members, and the primaries.
#include <array>
#include <span>

#include "platform/script/vbscript/parser_internal.h"

namespace ketrova::script::vbscript {
namespace {

struct OperatorToken {
  bool keyword;  // else a symbol
  std::string_view text;
  Op op;
};

constexpr OperatorToken kImp[] = {{true, "imp", Op::kImp}};
constexpr OperatorToken kEqv[] = {{true, "eqv", Op::kEqv}};
constexpr OperatorToken kXor[] = {{true, "xor", Op::kXor}};
constexpr OperatorToken kOr[] = {{true, "or", Op::kOr}};
constexpr OperatorToken kAnd[] = {{true, "and", Op::kAnd}};
constexpr OperatorToken kComparison[] = {
    {false, "=", Op::kEq},  {false, "<>", Op::kNe}, {false, "<", Op::kLt}, {false, ">", Op::kGt},
    {false, "<=", Op::kLe}, {false, ">=", Op::kGe}, {true, "is", Op::kIs}};
constexpr OperatorToken kConcat[] = {{false, "&", Op::kConcat}};
constexpr OperatorToken kAddSub[] = {{false, "+", Op::kAdd}, {false, "-", Op::kSub}};
constexpr OperatorToken kMod[] = {{true, "mod", Op::kMod}};
constexpr OperatorToken kIntDiv[] = {{false, "\\", Op::kIntDiv}};
constexpr OperatorToken kMulDiv[] = {{false, "*", Op::kMul}, {false, "/", Op::kDiv}};

// The binary operators, loosest first; all of them bind to the left. Not
// stands between And and the comparisons, ^ below *, the signs below ^.
constexpr std::array<std::span<const OperatorToken>, 11> kLevels = {
    kImp, kEqv, kXor, kOr, kAnd, kComparison, kConcat, kAddSub, kMod, kIntDiv, kMulDiv};
constexpr size_t kComparisonLevel = 5;

}  // namespace

ExprPtr Parser::Expression(ExprPtr* seed) {
  DepthGuard guard(*this);
  return BinaryLevel(0, seed);
}

ExprPtr Parser::BinaryLevel(size_t level, ExprPtr* seed) {
  if (level == kLevels.size()) return Power(seed);
  if (level == kComparisonLevel && !seed && IsKw("not")) {
    DepthGuard guard(*this);
    const Token& t = Cur();
    Next();
    return Unary(Op::kNot, BinaryLevel(level, nullptr), t);
  }
  auto match = [&]() -> const OperatorToken* {
    for (const OperatorToken& o : kLevels[level])
      if (o.keyword ? IsKw(o.text) : IsSym(o.text)) return &o;
    return nullptr;
  };
  ExprPtr left = BinaryLevel(level + 1, seed);
  while (const OperatorToken* o = match()) {
    const Token& t = Cur();
    Next();
    left = Binary(std::move(left), o->op, BinaryLevel(level + 1, nullptr), t);
  }
  return left;
}

// A sign binds tighter than ^: -3 ^ 2 is 9, as in VBScript.
ExprPtr Parser::Negation(ExprPtr* seed) {
  if (!seed && (IsSym("-") || IsSym("+"))) {
    DepthGuard guard(*this);
    const Token& t = Cur();
    bool negate = IsSym("-");
    Next();
    ExprPtr operand = Negation(nullptr);
    return negate ? Unary(Op::kNeg, std::move(operand), t) : std::move(operand);
  }
  return Postfix(seed);
}

ExprPtr Parser::Power(ExprPtr* seed) {
  ExprPtr left = Negation(seed);
  while (IsSym("^")) {
    const Token& t = Cur();
    Next();
    left = Binary(std::move(left), Op::kPow, Negation(nullptr), t);
  }
  return left;
}

void Parser::ArgumentList(Expr& e) {
  Next();  // (
  e.hasArgs = true;
  if (IsSym(")")) {
    Next();
    return;
  }
  while (true) {
    if (IsSym(",")) {
      e.args.push_back(nullptr);
      Next();
      continue;
    }
    if (IsSym(")")) {
      e.args.push_back(nullptr);
      break;
    }
    e.args.push_back(Expression());
    if (IsSym(",")) {
      Next();
      continue;
    }
    break;
  }
  ExpectSym(")", kErrRParenExpected);
}

ExprPtr Parser::Postfix(ExprPtr* seed) {
  ExprPtr e = seed ? std::move(*seed) : Primary();
  while (true) {
    if (IsSym("(") && !seed) {
      if ((e->kind == ExprKind::kName || e->kind == ExprKind::kMember ||
           e->kind == ExprKind::kWithMember) &&
          !e->hasArgs) {
        ArgumentList(*e);
      } else if (e->kind == ExprKind::kName || e->kind == ExprKind::kMember ||
                 e->kind == ExprKind::kWithMember || e->kind == ExprKind::kIndex) {
        ExprPtr index = MakeExpr(ExprKind::kIndex, e->line, e->column);
        index->target = std::move(e);
        ArgumentList(*index);
        e = std::move(index);
      } else if (e->kind == ExprKind::kParen) {
        // (f)(x) and ((f))(x) call f with x, as VBScript does; any other
        // parenthesised value is indexed or called by default.
        const Expr* inner = e.get();
        while (inner->kind == ExprKind::kParen) inner = inner->target.get();
        if ((inner->kind == ExprKind::kName || inner->kind == ExprKind::kMember ||
             inner->kind == ExprKind::kWithMember) &&
            !inner->hasArgs) {
          while (e->kind == ExprKind::kParen) {
            ExprPtr unwrapped = std::move(e->target);
            e = std::move(unwrapped);
          }
          ArgumentList(*e);
          seed = nullptr;
          continue;
        }
        ExprPtr index = MakeExpr(ExprKind::kIndex, e->line, e->column);
        index->target = std::move(e);
        ArgumentList(*index);
        e = std::move(index);
      } else {
        return e;
      }
    } else if (IsSym(".") && Cur().attached) {
      Next();
      ExprPtr m = MakeExpr(ExprKind::kMember, e->line, e->column);
      m->name = MemberName();
      m->target = std::move(e);
      e = std::move(m);
    } else {
      return e;
    }
    seed = nullptr;
  }
}

ExprPtr Parser::Primary() {
  const Token& t = Cur();
  ExprPtr e = MakeExpr(ExprKind::kLiteral, t.line, t.column);
  switch (t.kind) {
    case TokenKind::kIdentifier:
      e->kind = ExprKind::kName;
      e->name = t.text;
      Next();
      return e;
    case TokenKind::kNumber:
    case TokenKind::kString:
    case TokenKind::kDate:
      e->kind = ExprKind::kLiteral;
      e->value = t.value;
      Next();
      return e;
    case TokenKind::kKeyword:
      if (t.text == "true" || t.text == "false") {
        e->value = t.text == "true";
      } else if (t.text == "empty") {
        e->value = Variant();
      } else if (t.text == "null") {
        e->value = Variant::Null();
      } else if (t.text == "nothing") {
        e->value = Variant::Nothing();
      } else if (t.text == "me") {
        e->kind = ExprKind::kMe;
        Next();
        return e;
      } else if (t.text == "new") {
        Next();
        e->kind = ExprKind::kNew;
        e->name = Identifier();
        return e;
      } else {
        Fail(kErrExpressionExpected);
      }
      e->kind = ExprKind::kLiteral;
      Next();
      return e;
    case TokenKind::kSymbol:
      if (t.text == "(") {
        Next();
        e->kind = ExprKind::kParen;
        e->target = Expression();
        ExpectSym(")", kErrRParenExpected);
        return e;
      }
      if (t.text == "." && !t.attached) {
        Next();
        e->kind = ExprKind::kWithMember;
        e->name = MemberName();
        return e;
      }
      Fail(kErrExpressionExpected);
    default:
      Fail(kErrExpressionExpected);
  }
}

ExprPtr Parser::Binary(ExprPtr left, Op op, ExprPtr right, const Token& at) {
  ExprPtr e = left ? MakeExpr(ExprKind::kBinary, left->line, left->column)
                   : MakeExpr(ExprKind::kBinary, at.line, at.column);
  e->op = op;
  e->target = std::move(left);
  e->right = std::move(right);
  return e;
}

ExprPtr Parser::Unary(Op op, ExprPtr operand, const Token& at) {
  ExprPtr e = MakeExpr(ExprKind::kUnary, at.line, at.column);
  e->op = op;
  e->target = std::move(operand);
  return e;
}

}  // namespace ketrova::script::vbscript
