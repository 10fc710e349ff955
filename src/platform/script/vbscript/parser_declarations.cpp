// Declarations: procedures with their parameters, classes with their fields
// and members, Dim lists and Const.
#include "platform/script/vbscript/parser_internal.h"

namespace ketrova::script::vbscript {

bool Parser::IsProcStart() const {
  size_t i = pos_;
  if (IsKw(tokens_[i], "public") || IsKw(tokens_[i], "private")) ++i;
  if (IsIdent(tokens_[i], "default")) ++i;
  if (IsKw(tokens_[i], "sub") || IsKw(tokens_[i], "function")) return true;
  // "Property" starts a procedure only before Get, Let or Set; elsewhere it
  // is an ordinary name (Property = 1).
  if (!IsIdent(tokens_[i], "property") || i + 1 >= tokens_.size()) return false;
  const Token& kind = tokens_[i + 1];
  return IsIdent(kind, "get") || IsKw(kind, "let") || IsKw(kind, "set");
}

std::unique_ptr<ProcDecl> Parser::Procedure(bool inClass) {
  auto decl = std::make_unique<ProcDecl>();
  decl->line = Cur().line;
  decl->column = Cur().column;
  if (IsKw("public") || IsKw("private")) {
    decl->isPublic = IsKw("public");
    Next();
  }
  if (IsIdent("default")) {
    if (!inClass) Fail(kErrMustBeInClass);
    if (!decl->isPublic) Fail(kErrDefaultNeedsPublic);
    decl->isDefault = true;
    Next();
  }
  std::string endWord;
  if (IsKw("sub")) {
    decl->kind = ProcKind::kSub;
    endWord = "sub";
    Next();
  } else if (IsKw("function")) {
    decl->kind = ProcKind::kFunction;
    endWord = "function";
    Next();
  } else {
    if (!inClass) Fail(kErrMustBeInClass);
    Next();  // Property
    if (IsIdent("get"))
      decl->kind = ProcKind::kPropertyGet;
    else if (IsKw("let"))
      decl->kind = ProcKind::kPropertyLet;
    else if (IsKw("set"))
      decl->kind = ProcKind::kPropertySet;
    else
      Fail(kErrPropertyKindExpected);
    Next();
    endWord = "property";
  }
  if (decl->isDefault && decl->kind != ProcKind::kPropertyGet &&
      decl->kind != ProcKind::kFunction && decl->kind != ProcKind::kSub)
    Fail(kErrDefaultOnlyGet);
  decl->name = Identifier();
  if (IsSym("(")) Parameters(*decl);
  if ((decl->kind == ProcKind::kPropertyLet || decl->kind == ProcKind::kPropertySet) &&
      decl->params.empty())
    Fail(kErrPropertyLetArgs);
  // The body may begin on the header's line: Sub f() x = 1 End Sub.
  if (At(TokenKind::kColon)) Next();
  ProcKind saved = procKind_;
  bool savedIn = inProc_;
  procKind_ = decl->kind;
  inProc_ = true;
  decl->body = BlockUntilEnd();
  procKind_ = saved;
  inProc_ = savedIn;
  ExpectKw("end", kErrEndExpected);
  if (endWord == "property") {
    if (!IsIdent("property")) Fail(kErrPropertyExpected);
    Next();
  } else {
    ExpectKw(endWord, endWord == "sub" ? kErrSubExpected : kErrFunctionExpected);
  }
  return decl;
}

void Parser::Parameters(ProcDecl& decl) {
  Next();  // (
  if (!IsSym(")")) {
    CommaList([&] {
      Param p;
      if (IsKw("byval")) {
        p.byRef = false;
        Next();
      } else if (IsKw("byref")) {
        Next();
      }
      p.line = Cur().line;
      p.column = Cur().column;
      p.name = Identifier();
      if (IsSym("(")) {
        Next();
        ExpectSym(")", kErrRParenExpected);
      }
      decl.params.push_back(std::move(p));
    });
  }
  ExpectSym(")", kErrRParenExpected);
}

std::unique_ptr<ClassDecl> Parser::Class() {
  if (inProc_) Fail(kErrStatementExpected);
  auto decl = std::make_unique<ClassDecl>();
  decl->line = Cur().line;
  decl->column = Cur().column;
  Next();
  decl->name = Identifier();
  EndOfLine();
  while (true) {
    SkipSeparators();
    if (IsKw("end")) break;
    if (At(TokenKind::kEnd)) Fail(kErrEndExpected);
    if (IsProcStart()) {
      decl->members.push_back(Procedure(true));
    } else if (IsKw("public") || IsKw("private") || IsKw("dim")) {
      bool isPublic = !IsKw("private");
      Next();
      CommaList([&] {
        VarDecl v = Variable();
        v.isPublic = isPublic;
        decl->fields.push_back(std::move(v));
      });
    } else {
      Fail(kErrStatementExpected);
    }
    if (!IsKw("end")) EndOfStatement();  // Dim x End Class
  }
  Next();
  ExpectKw("class", kErrClassExpected);
  return decl;
}

VarDecl Parser::Variable() {
  VarDecl v;
  v.line = Cur().line;
  v.column = Cur().column;
  v.name = Identifier();
  if (IsSym("(")) {
    Next();
    v.isArray = true;
    if (!IsSym(")")) {
      CommaList([&] {
        if (!At(TokenKind::kNumber)) Fail(kErrIntegerConstantExpected);
        ExprPtr e = MakeExpr(ExprKind::kLiteral, Cur().line, Cur().column);
        e->value = Cur().value;
        Next();
        v.bounds.push_back(std::move(e));
      });
    }
    ExpectSym(")", kErrRParenExpected);
  }
  return v;
}

StmtPtr Parser::DimList(const Token& start, StmtKind kind) {
  auto s = MakeStmt(start, kind);
  CommaList([&] {
    VarDecl v = Variable();
    ExprPtr e = MakeExpr(ExprKind::kName, v.line, v.column);
    e->name = v.name;
    e->hasArgs = v.isArray;
    e->args = std::move(v.bounds);
    s->exprs.push_back(std::move(e));
  });
  return s;
}

StmtPtr Parser::Const() {
  auto s = MakeStmt(Cur(), StmtKind::kConst);
  Next();
  CommaList([&] {
    ExprPtr e = NameExpr();
    ExpectSym("=", kErrEqualsExpected);
    // A literal, maybe signed, maybe in parentheses.
    int line = Cur().line, column = Cur().column;
    ExprPtr value = Expression();
    const Expr* v = value.get();
    while (v->kind == ExprKind::kParen || (v->kind == ExprKind::kUnary && v->op == Op::kNeg))
      v = v->target.get();
    if (v->kind != ExprKind::kLiteral) RaiseCompileError(kErrLiteralConstantExpected, line, column);
    e->target = std::move(value);
    s->exprs.push_back(std::move(e));
  });
  return s;
}

}  // namespace ketrova::script::vbscript
