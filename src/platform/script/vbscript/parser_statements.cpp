// Statements: blocks, assignments and calls, and the control statements.
#include "platform/script/vbscript/parser_internal.h"

namespace ketrova::script::vbscript {

bool Parser::AtBlockEnd() const {
  if (At(TokenKind::kEnd)) return true;
  if (Cur().kind != TokenKind::kKeyword) return false;
  const std::string& k = Cur().text;
  return k == "end" || k == "else" || k == "elseif" || k == "case" || k == "loop" || k == "next" ||
         k == "wend";
}

Block Parser::BlockUntilEnd() {
  DepthGuard guard(*this);
  Block block;
  while (true) {
    SkipSeparators();
    if (AtBlockEnd()) break;
    if (!inProc_ && IsProcStart()) {
      // A Sub or Function inside a block of the text's outer level (If False
      // Then ... End If) is defined all the same.
      hoistedProcs_.push_back(Procedure(false));
      EndOfStatement();
      continue;
    }
    StmtPtr s = Statement();
    if (s) block.push_back(std::move(s));
    // "x = 1 End Sub": a block's End may follow its last statement on the
    // same line.
    if (!IsKw("end")) EndOfStatement();
  }
  return block;
}

Block Parser::LoopBody(int& loops) {
  ++loops;
  Block body = BlockUntilEnd();
  --loops;
  return body;
}

StmtPtr Parser::Statement() {
  DepthGuard guard(*this);
  const Token& t = Cur();
  if (t.kind == TokenKind::kKeyword) {
    const std::string& k = t.text;
    if (k == "dim") {
      Next();
      return DimList(t, StmtKind::kDim);
    }
    if (k == "redim") return ReDim();
    if (k == "const") return Const();
    if (k == "erase") return Erase();
    if (k == "set" || k == "let") {
      Next();
      auto s = MakeStmt(t, k == "set" ? StmtKind::kSet : StmtKind::kLet);
      s->target = Postfix(nullptr);
      ExpectSym("=", kErrEqualsExpected);
      s->value = Expression();
      return s;
    }
    if (k == "call") {
      Next();
      auto s = MakeStmt(t, StmtKind::kCall);
      s->target = Postfix(nullptr);
      if (s->target->kind == ExprKind::kParen || s->target->kind == ExprKind::kLiteral)
        Fail(kErrIdentifierExpected);
      return s;
    }
    if (k == "if") return If();
    if (k == "select") return Select();
    if (k == "for") return For();
    if (k == "do") return Do();
    if (k == "while") return While();
    if (k == "exit") return Exit();
    if (k == "with") return With();
    if (k == "on") return OnError();
    if (k == "me") return ExpressionStatement();
    if (k == "loop") Fail(kErrLoopWithoutDo);
    if (k == "next") Fail(kErrUnexpectedNext);
    if (k == "sub" || k == "function" || k == "class") Fail(kErrStatementExpected);
    Fail(kErrStatementExpected);
  }
  if (t.kind == TokenKind::kIdentifier) {
    if (EqualsNoCase(t.text, "stop") &&
        (Ahead(1).kind == TokenKind::kNewLine || Ahead(1).kind == TokenKind::kColon ||
         Ahead(1).kind == TokenKind::kEnd)) {
      Next();
      return nullptr;
    }
    if (IsProcStart()) Fail(kErrStatementExpected);
    return ExpressionStatement();
  }
  if (t.kind == TokenKind::kSymbol && t.text == "." && !t.attached) return ExpressionStatement();
  Fail(kErrStatementExpected);
}

StmtPtr Parser::ExpressionStatement() {
  const Token& t = Cur();
  ExprPtr lhs = Postfix(nullptr);
  if (lhs->kind == ExprKind::kLiteral || lhs->kind == ExprKind::kParen) Fail(kErrStatementExpected);
  if (IsSym("=")) {
    Next();
    auto s = MakeStmt(t, StmtKind::kLet);
    s->target = std::move(lhs);
    s->value = Expression();
    return s;
  }
  auto s = MakeStmt(t, StmtKind::kCall);
  if (AtEndOfStatement()) {
    if (lhs->hasArgs && (lhs->kind == ExprKind::kName || lhs->kind == ExprKind::kMember ||
                         lhs->kind == ExprKind::kWithMember)) {
      if (lhs->args.size() > 1) RaiseCompileError(kErrNoParensForSub, t.line, t.column);
      // sub (x): the parentheses make x a value, passed as a copy.
      if (lhs->args.size() == 1 && lhs->args[0])
        lhs->args[0] = Parenthesized(std::move(lhs->args[0]));
    } else if (lhs->kind == ExprKind::kIndex) {
      RaiseCompileError(kErrNoParensForSub, t.line, t.column);
    }
    s->target = std::move(lhs);
    return s;
  }
  // Arguments without parentheses. A leading parenthesised argument was
  // taken as the name's argument list: undo that.
  std::vector<ExprPtr> args;
  if (lhs->hasArgs && lhs->kind != ExprKind::kIndex) {
    if (lhs->args.size() != 1 || !lhs->args[0]) Fail(kErrEndOfStatementExpected);
    ExprPtr seed = Parenthesized(std::move(lhs->args[0]));
    lhs->args.clear();
    args.push_back(Expression(&seed));
    if (IsSym(",")) {
      Next();
      ArgumentsWithoutParens(args);
    }
  } else if (lhs->kind == ExprKind::kIndex || lhs->kind == ExprKind::kMe) {
    Fail(kErrEndOfStatementExpected);
  } else {
    ArgumentsWithoutParens(args);
  }
  lhs->args = std::move(args);
  lhs->hasArgs = true;
  s->target = std::move(lhs);
  return s;
}

void Parser::ArgumentsWithoutParens(std::vector<ExprPtr>& args) {
  while (true) {
    if (IsSym(",")) {
      args.push_back(nullptr);
      Next();
      continue;
    }
    if (AtEndOfStatement()) {
      if (!args.empty()) args.push_back(nullptr);  // trailing comma
      return;
    }
    args.push_back(Expression());
    if (!IsSym(",")) return;
    Next();
  }
}

StmtPtr Parser::Erase() {
  auto s = MakeStmt(Cur(), StmtKind::kErase);
  Next();
  CommaList([&] { s->exprs.push_back(NameExpr()); });
  return s;
}

StmtPtr Parser::ReDim() {
  auto s = MakeStmt(Cur(), StmtKind::kReDim);
  Next();
  if (IsIdent("preserve")) {
    s->preserve = true;
    Next();
  }
  CommaList([&] {
    ExprPtr e = NameExpr();
    ExpectSym("(", kErrLParenExpected);
    CommaList([&] { e->args.push_back(Expression()); });
    ExpectSym(")", kErrRParenExpected);
    e->hasArgs = true;
    s->exprs.push_back(std::move(e));
  });
  return s;
}

StmtPtr Parser::If() {
  auto s = MakeStmt(Cur(), StmtKind::kIf);
  Next();
  s->conds.push_back(Expression());
  ExpectKw("then", kErrThenExpected);
  if (!At(TokenKind::kNewLine) && !At(TokenKind::kEnd)) {
    // Single-line form: statements separated by ":" up to the line end.
    ++singleLineIf_;
    s->blocks.push_back(SingleLineStatements());
    if (IsKw("else")) {
      Next();
      s->elseBlock = SingleLineStatements();
    }
    --singleLineIf_;
    if (AtEndIf()) {
      Next();
      Next();
    }
    return s;
  }
  s->blocks.push_back(BlockUntilEnd());
  while (IsKw("elseif")) {
    Next();
    s->conds.push_back(Expression());
    ExpectKw("then", kErrThenExpected);
    if (At(TokenKind::kNewLine) || At(TokenKind::kColon)) {
      s->blocks.push_back(BlockUntilEnd());
    } else {
      // ElseIf c Then statement, on one line, inside a block If.
      ++singleLineIf_;
      Block b = SingleLineStatements();
      --singleLineIf_;
      Block rest = BlockUntilEnd();
      for (auto& r : rest) b.push_back(std::move(r));
      s->blocks.push_back(std::move(b));
    }
  }
  if (IsKw("else")) {
    Next();
    s->elseBlock = BlockUntilEnd();
  }
  ExpectKw("end", kErrEndExpected);
  ExpectKw("if", kErrIfExpected);
  return s;
}

Block Parser::SingleLineStatements() {
  Block block;
  while (true) {
    if (At(TokenKind::kColon)) {
      Next();
      continue;
    }
    if (At(TokenKind::kNewLine) || At(TokenKind::kEnd) || IsKw("else")) break;
    if (AtEndIf()) break;
    StmtPtr st = Statement();
    if (st) block.push_back(std::move(st));
    if (!AtEndOfStatement() && !IsKw("end")) Fail(kErrEndOfStatementExpected);
  }
  return block;
}

StmtPtr Parser::Select() {
  auto s = MakeStmt(Cur(), StmtKind::kSelect);
  Next();
  ExpectKw("case", kErrCaseExpected);
  s->value = Expression();
  EndOfLine();
  SkipSeparators();
  while (IsKw("case")) {
    Next();
    std::vector<ExprPtr> values;
    if (IsKw("else")) {
      Next();
    } else {
      CommaList([&] { values.push_back(Expression()); });
    }
    bool isElse = values.empty();
    s->cases.push_back(std::move(values));
    s->blocks.push_back(BlockUntilEnd());
    if (isElse && !IsKw("end")) Fail(kErrEndExpected);
  }
  ExpectKw("end", kErrEndExpected);
  ExpectKw("select", kErrSelectExpected);
  return s;
}

StmtPtr Parser::For() {
  const Token& t = Cur();
  Next();
  bool each = IsKw("each");
  if (each) Next();
  auto s = MakeStmt(t, each ? StmtKind::kForEach : StmtKind::kFor);
  s->target = NameExpr(kErrInvalidForVariable);
  if (each) {
    ExpectKw("in", kErrInExpected);
    s->value = Expression();
  } else {
    ExpectSym("=", kErrEqualsExpected);
    s->value = Expression();
    ExpectKw("to", kErrToExpected);
    s->limit = Expression();
    if (IsIdent("step")) {
      Next();
      s->step = Expression();
    }
  }
  EndOfLine();
  s->body = LoopBody(loopFor_);
  ExpectKw("next", kErrNextExpected);
  if (At(TokenKind::kIdentifier)) Next();
  return s;
}

StmtPtr Parser::Do() {
  auto s = MakeStmt(Cur(), StmtKind::kDo);
  Next();
  if (IsKw("while") || IsKw("until")) {
    s->until = IsKw("until");
    Next();
    s->cond = Expression();
  }
  if (!At(TokenKind::kNewLine) && !At(TokenKind::kColon) && !At(TokenKind::kEnd))
    Fail(s->cond ? kErrEndOfStatementExpected : kErrWhileUntilEosExpected);
  s->body = LoopBody(loopDo_);
  ExpectKw("loop", kErrLoopExpected);
  if (IsKw("while") || IsKw("until")) {
    if (s->cond) Fail(kErrEndOfStatementExpected);
    s->until = IsKw("until");
    Next();
    s->cond = Expression();
    s->condAtEnd = true;
  }
  return s;
}

StmtPtr Parser::While() {
  auto s = MakeStmt(Cur(), StmtKind::kDo);
  Next();
  s->cond = Expression();
  EndOfLine();
  s->body = LoopBody(whileDepth_);
  ExpectKw("wend", kErrWendExpected);
  s->slot = -1;  // a While loop: Exit Do does not leave it
  return s;
}

StmtPtr Parser::Exit() {
  auto s = MakeStmt(Cur(), StmtKind::kExit);
  Next();
  if (IsKw("do")) {
    if (loopDo_ == 0) Fail(kErrInvalidExit);
    s->exitKind = ExitKind::kDo;
  } else if (IsKw("for")) {
    if (loopFor_ == 0) Fail(kErrInvalidExit);
    s->exitKind = ExitKind::kFor;
  } else if (IsKw("function")) {
    if (!inProc_ || procKind_ != ProcKind::kFunction) Fail(kErrInvalidExit);
    s->exitKind = ExitKind::kFunction;
  } else if (IsKw("sub")) {
    if (!inProc_ || procKind_ != ProcKind::kSub) Fail(kErrInvalidExit);
    s->exitKind = ExitKind::kSub;
  } else if (IsIdent("property")) {
    if (!inProc_ || procKind_ == ProcKind::kSub || procKind_ == ProcKind::kFunction)
      Fail(kErrInvalidExit);
    s->exitKind = ExitKind::kProperty;
  } else {
    Fail(kErrInvalidExit);
  }
  Next();
  return s;
}

StmtPtr Parser::With() {
  auto s = MakeStmt(Cur(), StmtKind::kWith);
  Next();
  s->value = Expression();
  EndOfLine();
  s->body = BlockUntilEnd();
  ExpectKw("end", kErrEndExpected);
  ExpectKw("with", kErrWithExpected);
  return s;
}

StmtPtr Parser::OnError() {
  const Token& t = Cur();
  Next();
  if (!IsIdent("error")) Fail(kErrSyntax);
  Next();
  if (IsIdent("resume")) {
    Next();
    ExpectKw("next", kErrSyntax);
    return MakeStmt(t, StmtKind::kOnErrorResumeNext);
  }
  if (IsIdent("goto")) {
    Next();
    if (!At(TokenKind::kNumber) || Cur().value.Type() != vbInteger || Cur().value.AsInteger() != 0)
      Fail(kErrSyntax);
    Next();
    return MakeStmt(t, StmtKind::kOnErrorGoto0);
  }
  Fail(kErrSyntax);
}

}  // namespace ketrova::script::vbscript
