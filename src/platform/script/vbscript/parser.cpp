#include "platform/script/vbscript/parser.h"

#include <cctype>

#include "platform/script/vbscript/errors.h"
#include "platform/script/vbscript/scanner.h"

namespace ketrova::script::vbscript {
namespace {

constexpr int kMaxDepth = 200;

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

class Parser {
 public:
  explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  ParsedText Text() {
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
      } else if ((IsKw("public") || IsKw("private")) && !PeekIsProcOrConst()) {
        Next();
        out.statements.push_back(DimList(t, StmtKind::kDim));
      } else {
        if (IsKw("public") || IsKw("private")) Next();  // Public Const
        StmtPtr s = Statement();
        if (s) out.statements.push_back(std::move(s));
      }
      EndOfStatement();
    }
    return out;
  }

  ExprPtr SingleExpression() {
    SkipNewLines();
    ExprPtr e = Expression();
    SkipNewLines();
    if (!At(TokenKind::kEnd)) Fail(kErrEndOfStatementExpected);
    return e;
  }

 private:
  // ---- tokens
  const Token& Cur() const { return tokens_[pos_]; }
  const Token& Ahead(size_t n) const { return tokens_[std::min(pos_ + n, tokens_.size() - 1)]; }
  void Next() {
    if (pos_ + 1 < tokens_.size()) ++pos_;
  }
  bool At(TokenKind kind) const { return Cur().kind == kind; }
  bool IsKw(std::string_view kw) const {
    return Cur().kind == TokenKind::kKeyword && Cur().text == kw;
  }
  bool IsIdent(std::string_view word) const {
    return Cur().kind == TokenKind::kIdentifier && EqualsNoCase(Cur().text, word);
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
  std::string Identifier() {
    if (!At(TokenKind::kIdentifier)) Fail(kErrIdentifierExpected);
    std::string name = Cur().text;
    Next();
    return name;
  }
  // A member name after "." may be any word, keywords included (rs.Open, x.End).
  std::string MemberName() {
    if (!At(TokenKind::kIdentifier) && !At(TokenKind::kKeyword)) Fail(kErrIdentifierExpected);
    std::string name = Cur().text;
    Next();
    return name;
  }
  bool AtEndOfStatement() const {
    return At(TokenKind::kNewLine) || At(TokenKind::kColon) || At(TokenKind::kEnd) ||
           (singleLineIf_ > 0 && IsKw("else"));
  }
  void EndOfStatement() {
    if (!AtEndOfStatement()) Fail(kErrEndOfStatementExpected);
  }
  void SkipSeparators() {
    while (At(TokenKind::kNewLine) || At(TokenKind::kColon)) Next();
  }
  void SkipNewLines() {
    while (At(TokenKind::kNewLine)) Next();
  }
  void EndOfLine() {
    // After a block header: only a line end or ":" may follow.
    if (!At(TokenKind::kNewLine) && !At(TokenKind::kColon) && !At(TokenKind::kEnd))
      Fail(kErrEndOfStatementExpected);
  }
  struct DepthGuard {
    explicit DepthGuard(Parser& p) : parser(p) {
      if (++parser.depth_ > kMaxDepth) parser.Fail(kErrSyntax);
    }
    ~DepthGuard() { --parser.depth_; }
    Parser& parser;
  };

  bool IsProcStart() const {
    size_t i = pos_;
    auto kwAt = [&](size_t k, std::string_view kw) {
      return tokens_[k].kind == TokenKind::kKeyword && tokens_[k].text == kw;
    };
    if (kwAt(i, "public") || kwAt(i, "private")) ++i;
    if (tokens_[i].kind == TokenKind::kIdentifier && EqualsNoCase(tokens_[i].text, "default")) ++i;
    return kwAt(i, "sub") || kwAt(i, "function") ||
           (tokens_[i].kind == TokenKind::kIdentifier && EqualsNoCase(tokens_[i].text, "property"));
  }
  bool PeekIsProcOrConst() const {
    return Ahead(1).kind == TokenKind::kKeyword && Ahead(1).text == "const";
  }

  // ---- declarations
  std::unique_ptr<ProcDecl> Procedure(bool inClass) {
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
    if (IsSym("(")) {
      Next();
      if (!IsSym(")")) {
        while (true) {
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
          decl->params.push_back(std::move(p));
          if (!IsSym(",")) break;
          Next();
        }
      }
      ExpectSym(")", kErrRParenExpected);
    }
    if ((decl->kind == ProcKind::kPropertyLet || decl->kind == ProcKind::kPropertySet) &&
        decl->params.empty())
      Fail(kErrPropertyLetArgs);
    EndOfLine();
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

  std::unique_ptr<ClassDecl> Class() {
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
        while (true) {
          VarDecl v = Variable();
          v.isPublic = isPublic;
          decl->fields.push_back(std::move(v));
          if (!IsSym(",")) break;
          Next();
        }
      } else {
        Fail(kErrStatementExpected);
      }
      EndOfStatement();
    }
    Next();
    ExpectKw("class", kErrClassExpected);
    return decl;
  }

  VarDecl Variable() {
    VarDecl v;
    v.line = Cur().line;
    v.column = Cur().column;
    v.name = Identifier();
    if (IsSym("(")) {
      Next();
      v.isArray = true;
      if (!IsSym(")")) {
        while (true) {
          if (!At(TokenKind::kNumber)) Fail(kErrIntegerConstantExpected);
          auto e = std::make_unique<Expr>();
          e->kind = ExprKind::kLiteral;
          e->value = Cur().value;
          e->line = Cur().line;
          e->column = Cur().column;
          Next();
          v.bounds.push_back(std::move(e));
          if (!IsSym(",")) break;
          Next();
        }
      }
      ExpectSym(")", kErrRParenExpected);
    }
    return v;
  }

  StmtPtr DimList(const Token& start, StmtKind kind) {
    auto s = MakeStmt(start, kind);
    while (true) {
      int line = Cur().line, column = Cur().column;
      VarDecl v = Variable();
      auto e = std::make_unique<Expr>();
      e->kind = ExprKind::kName;
      e->name = v.name;
      e->line = line;
      e->column = column;
      e->hasArgs = v.isArray;
      e->args = std::move(v.bounds);
      s->exprs.push_back(std::move(e));
      if (!IsSym(",")) break;
      Next();
    }
    return s;
  }

  // ---- statements
  StmtPtr MakeStmt(const Token& t, StmtKind kind) {
    auto s = std::make_unique<Stmt>();
    s->kind = kind;
    s->line = t.line;
    s->column = t.column;
    return s;
  }

  bool AtBlockEnd() const {
    if (At(TokenKind::kEnd)) return true;
    if (Cur().kind != TokenKind::kKeyword) return false;
    const std::string& k = Cur().text;
    return k == "end" || k == "else" || k == "elseif" || k == "case" || k == "loop" ||
           k == "next" || k == "wend";
  }

  Block BlockUntilEnd() {
    DepthGuard guard(*this);
    Block block;
    while (true) {
      SkipSeparators();
      if (AtBlockEnd()) break;
      StmtPtr s = Statement();
      if (s) block.push_back(std::move(s));
      EndOfStatement();
    }
    return block;
  }

  StmtPtr Statement() {
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
      if (k == "erase") {
        Next();
        auto s = MakeStmt(t, StmtKind::kErase);
        while (true) {
          auto e = std::make_unique<Expr>();
          e->kind = ExprKind::kName;
          e->line = Cur().line;
          e->column = Cur().column;
          e->name = Identifier();
          s->exprs.push_back(std::move(e));
          if (!IsSym(",")) break;
          Next();
        }
        return s;
      }
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

  StmtPtr ExpressionStatement() {
    const Token& t = Cur();
    ExprPtr lhs = Postfix(nullptr);
    if (lhs->kind == ExprKind::kLiteral || lhs->kind == ExprKind::kParen)
      Fail(kErrStatementExpected);
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
        if (lhs->args.size() == 1 && lhs->args[0]) {
          auto paren = std::make_unique<Expr>();
          paren->kind = ExprKind::kParen;
          paren->line = lhs->args[0]->line;
          paren->column = lhs->args[0]->column;
          paren->target = std::move(lhs->args[0]);
          lhs->args[0] = std::move(paren);
        }
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
      auto paren = std::make_unique<Expr>();
      paren->kind = ExprKind::kParen;
      paren->line = lhs->args[0]->line;
      paren->column = lhs->args[0]->column;
      paren->target = std::move(lhs->args[0]);
      lhs->args.clear();
      ExprPtr seed = std::move(paren);
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

  void ArgumentsWithoutParens(std::vector<ExprPtr>& args) {
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

  StmtPtr ReDim() {
    auto s = MakeStmt(Cur(), StmtKind::kReDim);
    Next();
    if (IsIdent("preserve")) {
      s->preserve = true;
      Next();
    }
    while (true) {
      auto e = std::make_unique<Expr>();
      e->kind = ExprKind::kName;
      e->line = Cur().line;
      e->column = Cur().column;
      e->name = Identifier();
      ExpectSym("(", kErrLParenExpected);
      while (true) {
        e->args.push_back(Expression());
        if (!IsSym(",")) break;
        Next();
      }
      ExpectSym(")", kErrRParenExpected);
      e->hasArgs = true;
      s->exprs.push_back(std::move(e));
      if (!IsSym(",")) break;
      Next();
    }
    return s;
  }

  StmtPtr Const() {
    auto s = MakeStmt(Cur(), StmtKind::kConst);
    Next();
    while (true) {
      auto e = std::make_unique<Expr>();
      e->kind = ExprKind::kName;
      e->line = Cur().line;
      e->column = Cur().column;
      e->name = Identifier();
      ExpectSym("=", kErrEqualsExpected);
      // A literal, maybe signed, maybe in parentheses.
      int line = Cur().line, column = Cur().column;
      ExprPtr value = Expression();
      const Expr* v = value.get();
      while (v->kind == ExprKind::kParen || (v->kind == ExprKind::kUnary && v->op == Op::kNeg))
        v = v->target.get();
      if (v->kind != ExprKind::kLiteral)
        RaiseCompileError(kErrLiteralConstantExpected, line, column);
      e->target = std::move(value);
      s->exprs.push_back(std::move(e));
      if (!IsSym(",")) break;
      Next();
    }
    return s;
  }

  StmtPtr If() {
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
      if (IsKw("end") && Ahead(1).kind == TokenKind::kKeyword && Ahead(1).text == "if") {
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

  Block SingleLineStatements() {
    Block block;
    while (true) {
      if (At(TokenKind::kColon)) {
        Next();
        continue;
      }
      if (At(TokenKind::kNewLine) || At(TokenKind::kEnd) || IsKw("else")) break;
      if (IsKw("end") && Ahead(1).kind == TokenKind::kKeyword && Ahead(1).text == "if") break;
      StmtPtr st = Statement();
      if (st) block.push_back(std::move(st));
      if (!AtEndOfStatement() && !IsKw("end")) Fail(kErrEndOfStatementExpected);
    }
    return block;
  }

  StmtPtr Select() {
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
        while (true) {
          values.push_back(Expression());
          if (!IsSym(",")) break;
          Next();
        }
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

  StmtPtr For() {
    const Token& t = Cur();
    Next();
    if (IsKw("each")) {
      Next();
      auto s = MakeStmt(t, StmtKind::kForEach);
      s->target = LoopVariable();
      ExpectKw("in", kErrInExpected);
      s->value = Expression();
      EndOfLine();
      ++loopFor_;
      s->body = BlockUntilEnd();
      --loopFor_;
      ExpectKw("next", kErrNextExpected);
      if (At(TokenKind::kIdentifier)) Next();
      return s;
    }
    auto s = MakeStmt(t, StmtKind::kFor);
    s->target = LoopVariable();
    ExpectSym("=", kErrEqualsExpected);
    s->value = Expression();
    ExpectKw("to", kErrToExpected);
    s->limit = Expression();
    if (IsIdent("step")) {
      Next();
      s->step = Expression();
    }
    EndOfLine();
    ++loopFor_;
    s->body = BlockUntilEnd();
    --loopFor_;
    ExpectKw("next", kErrNextExpected);
    if (At(TokenKind::kIdentifier)) Next();
    return s;
  }

  ExprPtr LoopVariable() {
    if (!At(TokenKind::kIdentifier)) Fail(kErrInvalidForVariable);
    auto e = std::make_unique<Expr>();
    e->kind = ExprKind::kName;
    e->line = Cur().line;
    e->column = Cur().column;
    e->name = Cur().text;
    Next();
    return e;
  }

  StmtPtr Do() {
    auto s = MakeStmt(Cur(), StmtKind::kDo);
    Next();
    if (IsKw("while") || IsKw("until")) {
      s->until = IsKw("until");
      Next();
      s->cond = Expression();
    }
    if (!At(TokenKind::kNewLine) && !At(TokenKind::kColon) && !At(TokenKind::kEnd))
      Fail(s->cond ? kErrEndOfStatementExpected : kErrWhileUntilEosExpected);
    ++loopDo_;
    s->body = BlockUntilEnd();
    --loopDo_;
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

  StmtPtr While() {
    auto s = MakeStmt(Cur(), StmtKind::kDo);
    Next();
    s->cond = Expression();
    EndOfLine();
    ++whileDepth_;
    s->body = BlockUntilEnd();
    --whileDepth_;
    ExpectKw("wend", kErrWendExpected);
    s->slot = -1;  // a While loop: Exit Do does not leave it
    return s;
  }

  StmtPtr Exit() {
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

  StmtPtr With() {
    auto s = MakeStmt(Cur(), StmtKind::kWith);
    Next();
    s->value = Expression();
    EndOfLine();
    s->body = BlockUntilEnd();
    ExpectKw("end", kErrEndExpected);
    ExpectKw("with", kErrWithExpected);
    return s;
  }

  StmtPtr OnError() {
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
      if (!At(TokenKind::kNumber) || Cur().value.Type() != vbInteger ||
          Cur().value.AsInteger() != 0)
        Fail(kErrSyntax);
      Next();
      return MakeStmt(t, StmtKind::kOnErrorGoto0);
    }
    Fail(kErrSyntax);
  }

  // ---- expressions, lowest precedence first. `seed` is an operand already
  // parsed (the parenthesised first argument of a call statement).
  ExprPtr Binary(ExprPtr left, Op op, ExprPtr right, const Token& at) {
    auto e = std::make_unique<Expr>();
    e->kind = ExprKind::kBinary;
    e->op = op;
    e->line = left ? left->line : at.line;
    e->column = left ? left->column : at.column;
    e->target = std::move(left);
    e->right = std::move(right);
    return e;
  }
  ExprPtr Unary(Op op, ExprPtr operand, const Token& at) {
    auto e = std::make_unique<Expr>();
    e->kind = ExprKind::kUnary;
    e->op = op;
    e->line = at.line;
    e->column = at.column;
    e->target = std::move(operand);
    return e;
  }

  ExprPtr Expression(ExprPtr* seed = nullptr) {
    DepthGuard guard(*this);
    return Imp(seed);
  }
  ExprPtr Imp(ExprPtr* seed) {
    ExprPtr left = Eqv(seed);
    while (IsKw("imp")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kImp, Eqv(nullptr), t);
    }
    return left;
  }
  ExprPtr Eqv(ExprPtr* seed) {
    ExprPtr left = Xor(seed);
    while (IsKw("eqv")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kEqv, Xor(nullptr), t);
    }
    return left;
  }
  ExprPtr Xor(ExprPtr* seed) {
    ExprPtr left = Or(seed);
    while (IsKw("xor")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kXor, Or(nullptr), t);
    }
    return left;
  }
  ExprPtr Or(ExprPtr* seed) {
    ExprPtr left = And(seed);
    while (IsKw("or")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kOr, And(nullptr), t);
    }
    return left;
  }
  ExprPtr And(ExprPtr* seed) {
    ExprPtr left = Not(seed);
    while (IsKw("and")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kAnd, Not(nullptr), t);
    }
    return left;
  }
  ExprPtr Not(ExprPtr* seed) {
    if (!seed && IsKw("not")) {
      DepthGuard guard(*this);
      const Token& t = Cur();
      Next();
      return Unary(Op::kNot, Not(nullptr), t);
    }
    return Comparison(seed);
  }
  ExprPtr Comparison(ExprPtr* seed) {
    ExprPtr left = Concat(seed);
    while (true) {
      const Token& t = Cur();
      Op op;
      if (IsSym("="))
        op = Op::kEq;
      else if (IsSym("<>"))
        op = Op::kNe;
      else if (IsSym("<"))
        op = Op::kLt;
      else if (IsSym(">"))
        op = Op::kGt;
      else if (IsSym("<="))
        op = Op::kLe;
      else if (IsSym(">="))
        op = Op::kGe;
      else if (IsKw("is"))
        op = Op::kIs;
      else
        return left;
      Next();
      left = Binary(std::move(left), op, Concat(nullptr), t);
    }
  }
  ExprPtr Concat(ExprPtr* seed) {
    ExprPtr left = AddSub(seed);
    while (IsSym("&")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kConcat, AddSub(nullptr), t);
    }
    return left;
  }
  ExprPtr AddSub(ExprPtr* seed) {
    ExprPtr left = Mod(seed);
    while (IsSym("+") || IsSym("-")) {
      const Token& t = Cur();
      Op op = IsSym("+") ? Op::kAdd : Op::kSub;
      Next();
      left = Binary(std::move(left), op, Mod(nullptr), t);
    }
    return left;
  }
  ExprPtr Mod(ExprPtr* seed) {
    ExprPtr left = IntDiv(seed);
    while (IsKw("mod")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kMod, IntDiv(nullptr), t);
    }
    return left;
  }
  ExprPtr IntDiv(ExprPtr* seed) {
    ExprPtr left = MulDiv(seed);
    while (IsSym("\\")) {
      const Token& t = Cur();
      Next();
      left = Binary(std::move(left), Op::kIntDiv, MulDiv(nullptr), t);
    }
    return left;
  }
  ExprPtr MulDiv(ExprPtr* seed) {
    ExprPtr left = Negation(seed);
    while (IsSym("*") || IsSym("/")) {
      const Token& t = Cur();
      Op op = IsSym("*") ? Op::kMul : Op::kDiv;
      Next();
      left = Binary(std::move(left), op, Negation(nullptr), t);
    }
    return left;
  }
  ExprPtr Negation(ExprPtr* seed) {
    if (!seed && (IsSym("-") || IsSym("+"))) {
      DepthGuard guard(*this);
      const Token& t = Cur();
      bool negate = IsSym("-");
      Next();
      ExprPtr operand = Negation(nullptr);
      return negate ? Unary(Op::kNeg, std::move(operand), t) : std::move(operand);
    }
    return Power(seed);
  }
  ExprPtr Power(ExprPtr* seed) {
    ExprPtr left = Postfix(seed);
    while (IsSym("^")) {
      const Token& t = Cur();
      Next();
      ExprPtr right;
      if (IsSym("-") || IsSym("+")) {
        const Token& sign = Cur();
        bool negate = IsSym("-");
        Next();
        right = Postfix(nullptr);
        if (negate) right = Unary(Op::kNeg, std::move(right), sign);
      } else {
        right = Postfix(nullptr);
      }
      left = Binary(std::move(left), Op::kPow, std::move(right), t);
    }
    return left;
  }

  void ArgumentList(Expr& e) {
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

  ExprPtr Postfix(ExprPtr* seed) {
    ExprPtr e = seed ? std::move(*seed) : Primary();
    while (true) {
      if (IsSym("(") && !seed) {
        if ((e->kind == ExprKind::kName || e->kind == ExprKind::kMember ||
             e->kind == ExprKind::kWithMember) &&
            !e->hasArgs) {
          ArgumentList(*e);
        } else if (e->kind == ExprKind::kName || e->kind == ExprKind::kMember ||
                   e->kind == ExprKind::kWithMember || e->kind == ExprKind::kIndex) {
          auto index = std::make_unique<Expr>();
          index->kind = ExprKind::kIndex;
          index->line = e->line;
          index->column = e->column;
          index->target = std::move(e);
          ArgumentList(*index);
          e = std::move(index);
        } else {
          return e;
        }
      } else if (IsSym(".") && Cur().attached) {
        Next();
        auto m = std::make_unique<Expr>();
        m->kind = ExprKind::kMember;
        m->line = e->line;
        m->column = e->column;
        m->name = MemberName();
        m->target = std::move(e);
        e = std::move(m);
      } else {
        return e;
      }
      seed = nullptr;
    }
  }

  ExprPtr Primary() {
    const Token& t = Cur();
    auto e = std::make_unique<Expr>();
    e->line = t.line;
    e->column = t.column;
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

  std::vector<Token> tokens_;
  size_t pos_ = 0;
  int depth_ = 0;
  int singleLineIf_ = 0;
  int loopDo_ = 0;
  int loopFor_ = 0;
  int whileDepth_ = 0;
  bool inProc_ = false;
  ProcKind procKind_ = ProcKind::kSub;
};

}  // namespace

ParsedText ParseText(std::string_view text) {
  return Parser(Scan(text)).Text();
}

ExprPtr ParseExpression(std::string_view text) {
  return Parser(Scan(text)).SingleExpression();
}

}  // namespace ketrova::script::vbscript
