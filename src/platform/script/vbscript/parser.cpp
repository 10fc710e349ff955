// The parser's entry points, the text's outer level and the token cursor.
#include "platform/script/vbscript/parser.h"

#include <cctype>

#include "platform/script/vbscript/parser_internal.h"
#include "platform/script/vbscript/scanner.h"

namespace ketrova::script::vbscript {
namespace {

constexpr int kMaxDepth = 200;

}  // namespace

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

ParsedText ParseText(std::string_view text) {
  return Parser(Scan(text)).Text();
}

ExprPtr ParseExpression(std::string_view text) {
  return Parser(Scan(text)).SingleExpression();
}

ParsedText Parser::Text() {
  ParsedText out;
  while (true) {
    SkipSeparators();
    if (At(TokenKind::kEnd)) break;
    const Token& t = Cur();
    if (IsKw("option")) {
      Next();
      if (!IsIdent("explicit")) Fail(kErrSyntax);
      Next();
      out.optionExplicit = true;
    } else if (IsKw("class")) {
      out.classes.push_back(Class());
    } else if (IsProcStart()) {
      out.procs.push_back(Procedure(false));
    } else if ((IsKw("public") || IsKw("private")) && !PeekIsConst()) {
      Next();
      out.statements.push_back(DimList(t, StmtKind::kDim));
    } else {
      if (IsKw("public") || IsKw("private")) Next();  // Public Const
      StmtPtr s = Statement();
      if (s) out.statements.push_back(std::move(s));
    }
    EndOfStatement();
  }
  for (auto& proc : hoistedProcs_) out.procs.push_back(std::move(proc));
  hoistedProcs_.clear();
  return out;
}

ExprPtr Parser::SingleExpression() {
  SkipNewLines();
  ExprPtr e = Expression();
  SkipNewLines();
  if (!At(TokenKind::kEnd)) Fail(kErrEndOfStatementExpected);
  return e;
}

// ---- tokens

std::string Parser::Identifier() {
  if (!At(TokenKind::kIdentifier)) Fail(kErrIdentifierExpected);
  std::string name = Cur().text;
  Next();
  return name;
}

std::string Parser::MemberName() {
  if (!At(TokenKind::kIdentifier) && !At(TokenKind::kKeyword)) Fail(kErrIdentifierExpected);
  std::string name = Cur().text;
  Next();
  return name;
}

bool Parser::AtEndOfStatement() const {
  return At(TokenKind::kNewLine) || At(TokenKind::kColon) || At(TokenKind::kEnd) ||
         (singleLineIf_ > 0 && IsKw("else"));
}

void Parser::EndOfStatement() {
  if (!AtEndOfStatement()) Fail(kErrEndOfStatementExpected);
}

void Parser::SkipSeparators() {
  while (At(TokenKind::kNewLine) || At(TokenKind::kColon)) Next();
}

void Parser::SkipNewLines() {
  while (At(TokenKind::kNewLine)) Next();
}

void Parser::EndOfLine() {
  if (!At(TokenKind::kNewLine) && !At(TokenKind::kColon) && !At(TokenKind::kEnd))
    Fail(kErrEndOfStatementExpected);
}

Parser::DepthGuard::DepthGuard(Parser& p) : parser(p) {
  if (++parser.depth_ > kMaxDepth) parser.Fail(kErrSyntax);
}

// ---- nodes

StmtPtr Parser::MakeStmt(const Token& at, StmtKind kind) {
  auto s = std::make_unique<Stmt>();
  s->kind = kind;
  s->line = at.line;
  s->column = at.column;
  return s;
}

ExprPtr Parser::MakeExpr(ExprKind kind, int line, int column) {
  auto e = std::make_unique<Expr>();
  e->kind = kind;
  e->line = line;
  e->column = column;
  return e;
}

ExprPtr Parser::NameExpr(std::int32_t error) {
  if (!At(TokenKind::kIdentifier)) Fail(error);
  ExprPtr e = MakeExpr(ExprKind::kName, Cur().line, Cur().column);
  e->name = Cur().text;
  Next();
  return e;
}

ExprPtr Parser::Parenthesized(ExprPtr inner) {
  ExprPtr paren = MakeExpr(ExprKind::kParen, inner->line, inner->column);
  paren->target = std::move(inner);
  return paren;
}

}  // namespace ketrova::script::vbscript
