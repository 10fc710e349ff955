// The syntax tree of a VBScript text, as the parser builds it. The compiler
// then fills in each name's Binding (where the name lives: a local slot, a
// global variable, a procedure, a built-in, a host object ...) in place, and
// the interpreter walks the bound tree. Every node keeps the line and column
// of its first token.
#pragma once

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "platform/script/vbscript/builtins.h"
#include "support/object.h"
#include "support/variant.h"

namespace ketrova::script::vbscript {

struct Procedure;
struct ClassDef;

enum class Op {
  kNeg,
  kNot,
  kPow,
  kMul,
  kDiv,
  kIntDiv,
  kMod,
  kAdd,
  kSub,
  kConcat,
  kEq,
  kNe,
  kLt,
  kGt,
  kLe,
  kGe,
  kIs,
  kAnd,
  kOr,
  kXor,
  kEqv,
  kImp,
};

// The functions of the runtime itself, which need the interpreter.
enum class Special { kErr, kEval, kExecute, kExecuteGlobal, kGetRef, kCreateObject, kGetObject };

enum class BindKind {
  kUnbound,
  kLocal,        // index: slot of the current frame
  kOuterLocal,   // index: slot of the frame that ran Execute or Eval
  kGlobal,       // global: a module variable
  kField,        // index: field of the class instance the code runs in
  kConst,        // constant: a value known when compiling
  kBuiltin,      // builtin
  kProc,         // proc: a user Sub or Function
  kClassMember,  // index: member of the class the code runs in
  kHostObject,   // index: an object added by the host
  kHostMember,   // index: an object added with its members; dispId
  kSpecial,      // special
  kDynamic,      // looked up when run (a name unknown at compile time)
};

struct Binding {
  BindKind kind = BindKind::kUnbound;
  int index = 0;
  int dispId = 0;
  Variant* global = nullptr;
  const Builtin* builtin = nullptr;
  Procedure* proc = nullptr;
  Special special = Special::kErr;
  Variant constant;
  bool fixedArray = false;    // a variable declared with Dim a(n)
  bool explicitOnly = false;  // kDynamic under Option Explicit: no implicit variable
};

// Per call site: the member id of the last object type called here.
struct DispCache {
  const void* object = nullptr;
  const std::type_info* type = nullptr;
  int dispId = 0;
};

// Per call site of a member read with constant arguments (rs.Fields("x")):
// whose member answered, compared by owner and never locked, and what it let
// the call site keep.
struct HeldMember {
  std::weak_ptr<Object> owner;
  HeldAnswer answer;
};

enum class ExprKind {
  kLiteral,     // value
  kName,        // name [(args)]
  kMember,      // target.name [(args)]
  kWithMember,  // .name [(args)], on the innermost With target
  kIndex,       // target(args): a further argument list after a call
  kUnary,       // op target
  kBinary,      // target op right
  kNew,         // New name
  kMe,
  kParen,  // (target): a value, never a reference
};

struct Expr;
using ExprPtr = std::unique_ptr<Expr>;

struct Expr {
  ExprKind kind = ExprKind::kLiteral;
  int line = 0;
  int column = 0;
  Variant value;
  std::string name;
  ExprPtr target;
  ExprPtr right;
  Op op = Op::kAdd;
  std::vector<ExprPtr> args;         // nullptr where an argument is left out
  bool hasArgs = false;              // an argument list in parentheses follows the name
  Binding bind;                      // kName; kWithMember: index is the With slot
  DispCache cache;                   // kMember, kWithMember, kHostMember
  std::unique_ptr<HeldMember> held;  // kMember, kWithMember with constant arguments
  signed char constantArgs = -1;     // whether every argument is a literal; -1 not asked yet
  ClassDef* newClass = nullptr;      // kNew
};

struct Stmt;
using StmtPtr = std::unique_ptr<Stmt>;
using Block = std::vector<StmtPtr>;

enum class StmtKind {
  kLet,      // target = value
  kSet,      // Set target = value
  kCall,     // target: the called expression (with its arguments)
  kDim,      // exprs: kName nodes, args the bounds (only those with bounds do work)
  kConst,    // exprs: kName nodes, target the value
  kReDim,    // exprs: names with their bounds; preserve
  kErase,    // exprs: names
  kIf,       // conds[i] -> blocks[i]; elseBlock
  kSelect,   // value; cases[i] (empty: Case Else) -> blocks[i]
  kFor,      // target = value To limit Step step: body; slot: hidden slots
  kForEach,  // target In value: body; slot: hidden slot
  kDo,       // cond (may be null), condAtEnd, until: body
  kExit,     // exitKind
  kWith,     // value; slot: the hidden slot of the target; body
  kOnErrorResumeNext,
  kOnErrorGoto0,
  kNop,
};

enum class ExitKind { kDo, kFor, kFunction, kSub, kProperty };

struct Stmt {
  StmtKind kind = StmtKind::kNop;
  int line = 0;
  int column = 0;
  ExprPtr target;
  ExprPtr value;
  ExprPtr limit;
  ExprPtr step;
  ExprPtr cond;
  std::vector<ExprPtr> exprs;
  std::vector<ExprPtr> conds;
  std::vector<std::vector<ExprPtr>> cases;
  std::vector<Block> blocks;
  Block body;
  Block elseBlock;
  bool preserve = false;
  bool condAtEnd = false;
  bool until = false;
  ExitKind exitKind = ExitKind::kDo;
  int slot = 0;
};

struct Param {
  std::string name;
  bool byRef = true;
  int line = 0;
  int column = 0;
};

enum class ProcKind { kSub, kFunction, kPropertyGet, kPropertyLet, kPropertySet };

struct ProcDecl {
  ProcKind kind = ProcKind::kSub;
  std::string name;
  bool isPublic = true;
  bool isDefault = false;
  std::vector<Param> params;
  Block body;
  int line = 0;
  int column = 0;
};

struct VarDecl {
  std::string name;
  bool isPublic = true;
  std::vector<ExprPtr> bounds;
  bool isArray = false;  // written with parentheses, maybe empty ones
  int line = 0;
  int column = 0;
};

struct ClassDecl {
  std::string name;
  std::vector<VarDecl> fields;
  std::vector<std::unique_ptr<ProcDecl>> members;
  int line = 0;
  int column = 0;
};

// A parsed text: its top-level statements in order, and the procedures and
// classes it declares (which exist before any statement runs).
struct ParsedText {
  bool optionExplicit = false;
  Block statements;
  std::vector<std::unique_ptr<ProcDecl>> procs;
  std::vector<std::unique_ptr<ClassDecl>> classes;
};

}  // namespace ketrova::script::vbscript
