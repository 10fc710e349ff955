// The parser's inside, shared by its files: the token cursor and the small
// rules (parser.cpp), declarations of procedures, classes and variables
// (parser_declarations.cpp), statements (parser_statements.cpp) and
// expressions (parser_expressions.cpp). Only those files include it.
//
// A Parser reads one token list once. Every rule starts at its first token
// and stops at the first token after it; a syntax error raises at the token
// where it is seen.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/script/vbscript/ast.h"
#include "platform/script/vbscript/errors.h"
#include "platform/script/vbscript/token.h"

namespace ketrova::script::vbscript {

bool EqualsNoCase(std::string_view a, std::string_view b);

class Parser {
 public:
  explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  ParsedText Text();
  ExprPtr SingleExpression();

 private:
  // ---- tokens (parser.cpp)
  const Token& Cur() const { return tokens_[pos_]; }
  const Token& Ahead(size_t n) const { return tokens_[std::min(pos_ + n, tokens_.size() - 1)]; }
  void Next() {
    if (pos_ + 1 < tokens_.size()) ++pos_;
  }
  bool At(TokenKind kind) const { return Cur().kind == kind; }
  bool IsKw(std::string_view kw) const { return IsKw(Cur(), kw); }
  static bool IsKw(const Token& t, std::string_view kw) {
    return t.kind == TokenKind::kKeyword && t.text == kw;
  }
  bool IsIdent(std::string_view word) const { return IsIdent(Cur(), word); }
  static bool IsIdent(const Token& t, std::string_view word) {
    return t.kind == TokenKind::kIdentifier && EqualsNoCase(t.text, word);
  }
  bool IsSym(std::string_view sym) const {
    return Cur().kind == TokenKind::kSymbol && Cur().text == sym;
  }
  [[noreturn]] void Fail(std::int32_t number) const {
    RaiseCompileError(number, Cur().line, Cur().column);
  }
  void ExpectKw(std::string_view kw, std::int32_t error) {
    if (!IsKw(kw)) Fail(error);
    Next();
  }
  void ExpectSym(std::string_view sym, std::int32_t error) {
    if (!IsSym(sym)) Fail(error);
    Next();
  }
  std::string Identifier();
  // A member name after "." may be any word, keywords included (rs.Open, x.End).
  std::string MemberName();
  bool AtEndOfStatement() const;
  void EndOfStatement();
  void SkipSeparators();
  void SkipNewLines();
  // After a block header: only a line end or ":" may follow.
  void EndOfLine();
  // "End If" of a single-line If.
  bool AtEndIf() const { return IsKw("end") && IsKw(Ahead(1), "if"); }
  // Reads items separated by commas, at least one.
  template <typename F>
  void CommaList(F&& item) {
    while (true) {
      item();
      if (!IsSym(",")) return;
      Next();
    }
  }
  struct DepthGuard {
    explicit DepthGuard(Parser& p);
    ~DepthGuard() { --parser.depth_; }
    Parser& parser;
  };

  // ---- nodes (parser.cpp)
  static StmtPtr MakeStmt(const Token& at, StmtKind kind);
  static ExprPtr MakeExpr(ExprKind kind, int line, int column);
  // A plain name at the current token; `error` when it is none.
  ExprPtr NameExpr(std::int32_t error = kErrIdentifierExpected);
  // (inner): a value in parentheses, passed as a copy.
  static ExprPtr Parenthesized(ExprPtr inner);

  // ---- declarations (parser_declarations.cpp)
  bool IsProcStart() const;
  bool PeekIsConst() const { return IsKw(Ahead(1), "const"); }
  std::unique_ptr<ProcDecl> Procedure(bool inClass);
  void Parameters(ProcDecl& decl);
  std::unique_ptr<ClassDecl> Class();
  VarDecl Variable();
  StmtPtr DimList(const Token& start, StmtKind kind);
  StmtPtr Const();

  // ---- statements (parser_statements.cpp)
  bool AtBlockEnd() const;
  Block BlockUntilEnd();
  // A loop's body; `loops` counts the loops of its kind it stands in.
  Block LoopBody(int& loops);
  StmtPtr Statement();
  StmtPtr ExpressionStatement();
  void ArgumentsWithoutParens(std::vector<ExprPtr>& args);
  StmtPtr Erase();
  StmtPtr ReDim();
  StmtPtr If();
  Block SingleLineStatements();
  StmtPtr Select();
  StmtPtr For();
  StmtPtr Do();
  StmtPtr While();
  StmtPtr Exit();
  StmtPtr With();
  StmtPtr OnError();

  // ---- expressions (parser_expressions.cpp). `seed` is an operand already
  // parsed (the parenthesised first argument of a call statement).
  ExprPtr Expression(ExprPtr* seed = nullptr);
  // The binary operators of `level` and every tighter one.
  ExprPtr BinaryLevel(size_t level, ExprPtr* seed);
  ExprPtr Negation(ExprPtr* seed);
  ExprPtr Power(ExprPtr* seed);
  ExprPtr Postfix(ExprPtr* seed);
  void ArgumentList(Expr& e);
  ExprPtr Primary();
  static ExprPtr Binary(ExprPtr left, Op op, ExprPtr right, const Token& at);
  static ExprPtr Unary(Op op, ExprPtr operand, const Token& at);

  std::vector<Token> tokens_;
  size_t pos_ = 0;
  int depth_ = 0;
  int singleLineIf_ = 0;
  int loopDo_ = 0;
  int loopFor_ = 0;
  int whileDepth_ = 0;
  bool inProc_ = false;
  ProcKind procKind_ = ProcKind::kSub;
  // Procedures found inside blocks of the outer level, added to the text's.
  std::vector<std::unique_ptr<ProcDecl>> hoistedProcs_;
};

}  // namespace ketrova::script::vbscript
