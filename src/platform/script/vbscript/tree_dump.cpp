#include "platform/script/vbscript/tree_dump.h"

#include <array>
#include <cassert>
#include <sstream>

#include "platform/script/vbscript/ast.h"

namespace ketrova::script::vbscript {
namespace {

constexpr std::array<const char*, 22> kOpNames = {
    "Neg", "Not", "^", "*",  "/",  "\\", "Mod", "+",  "-",   "&",   "=",
    "<>",  "<",   ">", "<=", ">=", "Is", "And", "Or", "Xor", "Eqv", "Imp"};

constexpr std::array<const char*, 13> kBindNames = {
    "unbound", "local",        "outer local", "global",      "field",   "const",  "builtin",
    "proc",    "class member", "host object", "host member", "special", "dynamic"};

constexpr std::array<const char*, 17> kStmtNames = {"Let",
                                                    "Set",
                                                    "Call",
                                                    "Dim",
                                                    "Const",
                                                    "ReDim",
                                                    "Erase",
                                                    "If",
                                                    "Select",
                                                    "For",
                                                    "For Each",
                                                    "Do",
                                                    "Exit",
                                                    "With",
                                                    "On Error Resume Next",
                                                    "On Error GoTo 0",
                                                    "Nop"};

constexpr std::array<const char*, 5> kProcNames = {"Sub", "Function", "Property Get",
                                                   "Property Let", "Property Set"};

class Dumper {
 public:
  std::string Text() const { return out_.str(); }

  void Unit(const vbscript::Unit& unit, int number) {
    Line(0) << "Text " << number << (unit.text.optionExplicit ? " (Option Explicit)" : "") << ", "
            << unit.top.numLocals << " hidden slots\n";
    Block(unit.text.statements, 1);
    for (const auto& proc : unit.procs) Procedure(*proc, 1);
    for (const auto& cls : unit.classes) {
      Line(1) << "Class " << cls->name << ", fields:";
      for (const auto& f : cls->fieldNames) out_ << " " << f;
      out_ << "\n";
    }
  }

 private:
  std::ostream& Line(int depth) {
    for (int i = 0; i < depth; ++i) out_ << "  ";
    return out_;
  }

  void Procedure(const vbscript::Procedure& proc, int depth) {
    assert(proc.decl);
    auto kind = static_cast<size_t>(proc.decl->kind);
    assert(kind < kProcNames.size());
    Line(depth) << kProcNames[kind] << " " << proc.name
                << (proc.owner ? " of " + proc.owner->name : std::string()) << ", "
                << proc.numParams << " parameters, slots:";
    for (size_t i = 0; i < proc.localNames.size(); ++i)
      out_ << " " << i << "=" << (proc.localNames[i].empty() ? "(hidden)" : proc.localNames[i]);
    out_ << "\n";
    Block(proc.decl->body, depth + 1);
  }

  void Block(const vbscript::Block& block, int depth) {
    for (const auto& s : block) Statement(*s, depth);
  }

  void Statement(const Stmt& s, int depth) {
    auto kind = static_cast<size_t>(s.kind);
    assert(kind < kStmtNames.size());
    Line(depth) << s.line << ":" << s.column << " " << kStmtNames[kind];
    if (s.kind == StmtKind::kReDim && s.preserve) out_ << " Preserve";
    if (s.kind == StmtKind::kDo && s.cond)
      out_ << (s.condAtEnd ? " (condition at Loop)" : "") << (s.until ? " Until" : " While");
    out_ << "\n";
    Expression("target", s.target.get(), depth + 1);
    Expression("value", s.value.get(), depth + 1);
    Expression("limit", s.limit.get(), depth + 1);
    Expression("step", s.step.get(), depth + 1);
    Expression("cond", s.cond.get(), depth + 1);
    for (const auto& e : s.exprs) Expression("name", e.get(), depth + 1);
    for (size_t i = 0; i < s.blocks.size(); ++i) {
      if (i < s.conds.size()) Expression("if", s.conds[i].get(), depth + 1);
      if (i < s.cases.size()) {
        Line(depth + 1) << (s.cases[i].empty() ? "case else\n" : "case\n");
        for (const auto& c : s.cases[i]) Expression("is", c.get(), depth + 2);
      }
      Line(depth + 1) << "then\n";
      Block(s.blocks[i], depth + 2);
    }
    if (!s.body.empty()) {
      Line(depth + 1) << "body\n";
      Block(s.body, depth + 2);
    }
    if (!s.elseBlock.empty()) {
      Line(depth + 1) << "else\n";
      Block(s.elseBlock, depth + 2);
    }
  }

  void Expression(const char* role, const Expr* e, int depth) {
    if (!e) return;
    Line(depth) << role << ": ";
    switch (e->kind) {
      case ExprKind::kLiteral:
        out_ << e->value.TypeName() << " " << (e->value.IsObject() ? "" : e->value.ToText());
        break;
      case ExprKind::kName:
        out_ << e->name << " -> " << Binding(e->bind);
        break;
      case ExprKind::kMember:
        out_ << "." << e->name;
        break;
      case ExprKind::kWithMember:
        out_ << "." << e->name << " of the With target in slot " << e->bind.index;
        break;
      case ExprKind::kIndex:
        out_ << "index";
        break;
      case ExprKind::kUnary:
      case ExprKind::kBinary:
        assert(static_cast<size_t>(e->op) < kOpNames.size());
        out_ << kOpNames[static_cast<size_t>(e->op)];
        break;
      case ExprKind::kNew:
        out_ << "New " << e->name;
        break;
      case ExprKind::kMe:
        out_ << "Me";
        break;
      case ExprKind::kParen:
        out_ << "( )";
        break;
    }
    if (e->hasArgs) out_ << " with " << e->args.size() << " arguments";
    out_ << "\n";
    Expression("of", e->target.get(), depth + 1);
    Expression("right", e->right.get(), depth + 1);
    for (const auto& a : e->args) {
      if (a)
        Expression("arg", a.get(), depth + 1);
      else
        Line(depth + 1) << "arg: (left out)\n";
    }
  }

  static std::string Binding(const vbscript::Binding& b) {
    auto kind = static_cast<size_t>(b.kind);
    assert(kind < kBindNames.size());
    std::string text = kBindNames[kind];
    switch (b.kind) {
      case BindKind::kLocal:
      case BindKind::kOuterLocal:
      case BindKind::kField:
      case BindKind::kClassMember:
      case BindKind::kHostObject:
        text += " " + std::to_string(b.index);
        break;
      case BindKind::kHostMember:
        text += " " + std::to_string(b.index) + ", member " + std::to_string(b.dispId);
        break;
      case BindKind::kConst:
        text += " " + b.constant.ToText();
        break;
      case BindKind::kBuiltin:
        text += " " + std::string(b.builtin->Name);
        break;
      case BindKind::kProc:
        text += " " + b.proc->name;
        break;
      default:
        break;
    }
    if (b.fixedArray) text += ", fixed array";
    return text;
  }

  std::ostringstream out_;
};

}  // namespace

std::string DumpModule(const Module& module) {
  Dumper dumper;
  int number = 0;
  for (const auto& unit : module.units) dumper.Unit(*unit, ++number);
  return dumper.Text();
}

}  // namespace ketrova::script::vbscript
