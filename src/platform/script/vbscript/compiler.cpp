#include "platform/script/vbscript/compiler.h"

#include <algorithm>
#include <cctype>

#include "platform/script/vbscript/constants.h"
#include "platform/script/vbscript/errors.h"

namespace ketrova::script::vbscript {

std::string ToLower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

namespace {

bool FindSpecial(const std::string& lower, Special& special, int& minArgs, int& maxArgs) {
  struct Entry {
    const char* name;
    Special special;
    int minArgs, maxArgs;
  };
  static constexpr Entry kEntries[] = {
      {"err", Special::kErr, 0, 0},
      {"eval", Special::kEval, 1, 1},
      {"execute", Special::kExecute, 1, 1},
      {"executeglobal", Special::kExecuteGlobal, 1, 1},
      {"getref", Special::kGetRef, 1, 1},
      {"createobject", Special::kCreateObject, 1, 2},
      {"getobject", Special::kGetObject, 0, 2},
  };
  for (const Entry& e : kEntries) {
    if (lower == e.name) {
      special = e.special;
      minArgs = e.minArgs;
      maxArgs = e.maxArgs;
      return true;
    }
  }
  return false;
}

// Collects what a text declares and then binds its names; see compiler.h.
class Compiler {
 public:
  Compiler(const CompileScope& scope, Unit& unit)
      : scope_(scope), module_(*scope.module), unit_(unit) {}

  void Declare() {
    for (auto& cls : unit_.text.classes) DeclareClass(*cls);
    for (auto& decl : unit_.text.procs) {
      std::string lower = ToLower(decl->name);
      // A procedure defined twice in one text: the later definition wins.
      auto proc = NewProcedure(*decl, nullptr);
      newProcs_[lower] = proc;
    }
    for (auto& stmt : unit_.text.statements) DeclareGlobals(*stmt);
  }

  void BindAll() {
    // Top-level statements first, so that their implicit globals exist when
    // the procedures are bound.
    current_ = &unit_.top;
    currentClass_ = scope_.outerClass;
    topLevel_ = true;
    BindBlock(unit_.text.statements);
    topLevel_ = false;
    for (auto& proc : unit_.procs) BindProcedure(*proc);
  }

  void Commit() {
    for (auto& [lower, entry] : newGlobals_) {
      module_.storage.emplace_back();
      entry.variable = entry.isConst ? nullptr : &module_.storage.back();
    }
    // Globals were bound to placeholders; point them at the module storage.
    for (Binding* b : globalBindings_) {
      auto it = newGlobals_.find(b->constant.AsString());
      b->global = it->second.variable;
      b->constant = Variant();
    }
    for (auto& [lower, entry] : newGlobals_) {
      GlobalEntry g;
      g.variable = entry.variable;
      g.constant = entry.constant;
      g.fixedArray = entry.fixedArray;
      module_.globals[lower] = g;
    }
    for (auto& [lower, proc] : newProcs_) {
      auto it = module_.procs.find(lower);
      if (it != module_.procs.end()) {
        for (auto& p : module_.procOrder)
          if (p == it->second) p = proc;
      } else {
        module_.procOrder.push_back(proc);
      }
      module_.procs[lower] = proc;
    }
    for (auto& cls : unit_.classes) module_.classes[ToLower(cls->name)] = cls.get();
  }

  void BindExpression(Expr& e) {
    current_ = &unit_.top;
    currentClass_ = scope_.outerClass;
    topLevel_ = true;
    Bind(e);
  }

 private:
  struct NewGlobal {
    bool isConst = false;
    bool fixedArray = false;
    Variant constant;
    Variant* variable = nullptr;
  };

  Procedure* NewProcedure(ProcDecl& decl, ClassDef* owner) {
    auto proc = std::make_unique<Procedure>();
    proc->name = decl.name;
    proc->decl = &decl;
    proc->module = &module_;
    proc->owner = owner;
    proc->numParams = static_cast<int>(decl.params.size());
    for (const Param& p : decl.params) {
      std::string lower = ToLower(p.name);
      if (proc->localIndex.count(lower)) RaiseCompileError(kErrNameRedefined, p.line, p.column);
      proc->localIndex[lower] = static_cast<int>(proc->localNames.size());
      proc->localNames.push_back(lower);
      proc->byRef.push_back(p.byRef);
    }
    if (decl.kind == ProcKind::kFunction || decl.kind == ProcKind::kPropertyGet) {
      std::string lower = ToLower(decl.name);
      proc->returnSlot = static_cast<int>(proc->localNames.size());
      proc->localNames.push_back(lower);
      if (!proc->localIndex.count(lower)) proc->localIndex[lower] = proc->returnSlot;
    }
    DeclareLocals(*proc, decl.body);
    proc->numLocals = static_cast<int>(proc->localNames.size());
    Procedure* raw = proc.get();
    unit_.procs.push_back(std::move(proc));
    return raw;
  }

  void DeclareLocals(Procedure& proc, const Block& block) {
    for (const auto& stmt : block) {
      if (stmt->kind == StmtKind::kDim) {
        for (const auto& e : stmt->exprs) {
          std::string lower = ToLower(e->name);
          auto it = proc.localIndex.find(lower);
          if (it != proc.localIndex.end() && it->second != proc.returnSlot)
            RaiseCompileError(kErrNameRedefined, e->line, e->column);
          proc.localIndex[lower] = static_cast<int>(proc.localNames.size());
          if (e->hasArgs && !e->args.empty()) proc.fixedLocals.push_back(proc.localIndex[lower]);
          proc.localNames.push_back(lower);
        }
      } else if (stmt->kind == StmtKind::kReDim) {
        // ReDim of a name not declared otherwise declares it.
        for (const auto& e : stmt->exprs) {
          std::string lower = ToLower(e->name);
          if (proc.localIndex.count(lower) || proc.constants.count(lower)) continue;
          proc.localIndex[lower] = static_cast<int>(proc.localNames.size());
          proc.localNames.push_back(lower);
        }
      } else if (stmt->kind == StmtKind::kConst) {
        for (const auto& e : stmt->exprs) {
          std::string lower = ToLower(e->name);
          if (proc.localIndex.count(lower) || proc.constants.count(lower))
            RaiseCompileError(kErrNameRedefined, e->line, e->column);
          proc.constants[lower] = ConstantValue(*e->target);
        }
      }
      for (const Block& b : stmt->blocks) DeclareLocals(proc, b);
      DeclareLocals(proc, stmt->body);
      DeclareLocals(proc, stmt->elseBlock);
    }
  }

  Variant ConstantValue(const Expr& e) {
    if (e.kind == ExprKind::kLiteral) return e.value;
    if (e.kind == ExprKind::kParen) return ConstantValue(*e.target);
    Variant v = ConstantValue(*e.target);
    // Unary minus of a literal.
    switch (v.Type()) {
      case vbInteger:
        return v.AsInteger() == -32768
                   ? Variant::Long(32768)
                   : Variant::Integer(static_cast<std::int16_t>(-v.AsInteger()));
      case vbLong:
        return v.AsLong() == INT32_MIN ? Variant(-static_cast<double>(v.AsLong()))
                                       : Variant::Long(-v.AsLong());
      case vbDouble:
        return Variant(-v.AsDouble());
      case vbBoolean:
        return Variant::Integer(v.AsBool() ? 1 : 0);
      case vbDate:
        return Variant::FromDate(-v.AsDate().value);
      default:
        RaiseCompileError(kErrLiteralConstantExpected, e.line, e.column);
    }
  }

  // Declarations anywhere in the outer level's blocks belong to the whole
  // text (a Const in an If that never runs is defined all the same).
  void DeclareGlobals(const Stmt& stmt) {
    for (const Block& b : stmt.blocks)
      for (const auto& inner : b) DeclareGlobals(*inner);
    for (const auto& inner : stmt.body) DeclareGlobals(*inner);
    for (const auto& inner : stmt.elseBlock) DeclareGlobals(*inner);
    if (stmt.kind == StmtKind::kReDim) {
      for (const auto& e : stmt.exprs) {
        std::string lower = ToLower(e->name);
        if (newGlobals_.count(lower) || newProcs_.count(lower) || module_.globals.count(lower))
          continue;
        newGlobals_[lower] = NewGlobal{};
      }
    } else if (stmt.kind == StmtKind::kDim) {
      for (const auto& e : stmt.exprs) {
        std::string lower = ToLower(e->name);
        if (newGlobals_.count(lower) || newProcs_.count(lower))
          RaiseCompileError(kErrNameRedefined, e->line, e->column);
        NewGlobal g;
        g.fixedArray = e->hasArgs && !e->args.empty();
        if (!module_.globals.count(lower)) newGlobals_[lower] = g;
      }
    } else if (stmt.kind == StmtKind::kConst) {
      for (const auto& e : stmt.exprs) {
        std::string lower = ToLower(e->name);
        if (newGlobals_.count(lower) || newProcs_.count(lower))
          RaiseCompileError(kErrNameRedefined, e->line, e->column);
        NewGlobal g;
        g.isConst = true;
        g.constant = ConstantValue(*e->target);
        newGlobals_[lower] = g;
      }
    }
  }

  void DeclareClass(const ClassDecl& decl) {
    auto cls = std::make_unique<ClassDef>();
    cls->name = decl.name;
    cls->module = &module_;
    for (const auto& other : unit_.classes)
      if (ToLower(other->name) == ToLower(decl.name))
        RaiseCompileError(kErrNameRedefined, decl.line, decl.column);
    auto memberFor = [&](const std::string& name, bool isPublic) -> ClassMember& {
      std::string lower = ToLower(name);
      auto it = cls->memberIndex.find(lower);
      if (it != cls->memberIndex.end()) return cls->members[it->second];
      cls->memberIndex[lower] = static_cast<int>(cls->members.size());
      cls->members.push_back(ClassMember{name, isPublic});
      return cls->members.back();
    };
    for (const VarDecl& v : decl.fields) {
      if (cls->memberIndex.count(ToLower(v.name)))
        RaiseCompileError(kErrNameRedefined, v.line, v.column);
      ClassMember& m = memberFor(v.name, v.isPublic);
      m.field = static_cast<int>(cls->fieldNames.size());
      cls->fieldNames.push_back(v.name);
      std::vector<std::int32_t> bounds;
      for (const auto& b : v.bounds) bounds.push_back(b->value.ToLong());
      if (v.isArray && bounds.empty()) bounds.push_back(-1);  // Dim a(): an empty array
      cls->fieldBounds.push_back(std::move(bounds));
    }
    ClassDef* raw = cls.get();
    for (const auto& decl2 : decl.members) {
      ProcDecl& d = *decl2;
      Procedure* proc = NewProcedure(d, raw);
      std::string lower = ToLower(d.name);
      bool exists = cls->memberIndex.count(lower) > 0;
      ClassMember& m = memberFor(d.name, d.isPublic);
      auto redefined = [&] { RaiseCompileError(kErrNameRedefined, d.line, d.column); };
      if (m.field >= 0) redefined();
      switch (d.kind) {
        case ProcKind::kSub:
          if (exists) redefined();
          m.sub = proc;
          break;
        case ProcKind::kFunction:
          if (exists) redefined();
          m.get = proc;
          break;
        case ProcKind::kPropertyGet:
          if (m.get || m.sub) redefined();
          m.get = proc;
          break;
        case ProcKind::kPropertyLet:
          if (m.let || m.sub) redefined();
          m.let = proc;
          break;
        case ProcKind::kPropertySet:
          if (m.set || m.sub) redefined();
          m.set = proc;
          break;
      }
      if (m.get && m.let && m.let->numParams != m.get->numParams + 1)
        RaiseCompileError(kErrPropertyArgCount, d.line, d.column);
      if (d.isDefault) {
        if (cls->defaultMember >= 0) RaiseCompileError(kErrMultipleDefaults, d.line, d.column);
        cls->defaultMember = cls->memberIndex[lower];
      }
      if (d.kind == ProcKind::kSub && (lower == "class_initialize" || lower == "class_terminate")) {
        if (!d.params.empty()) RaiseCompileError(kErrInitializeArgs, d.line, d.column);
        (lower == "class_initialize" ? cls->initialize : cls->terminate) = proc;
      }
    }
    unit_.classes.push_back(std::move(cls));
  }

  void BindProcedure(Procedure& proc) {
    current_ = &proc;
    currentClass_ = proc.owner;
    withSlots_.clear();
    implicit_.clear();
    BindBlock(proc.decl->body);
    proc.numLocals = static_cast<int>(proc.localNames.size());
    proc.compiled = true;
  }

  int HiddenSlot() {
    current_->localNames.emplace_back();
    current_->numLocals = static_cast<int>(current_->localNames.size());
    return current_->numLocals - 1;
  }

  void BindBlock(Block& block) {
    for (auto& stmt : block) BindStatement(*stmt);
  }

  void BindStatement(Stmt& s) {
    switch (s.kind) {
      case StmtKind::kDim:
      case StmtKind::kReDim:
      case StmtKind::kErase:
        for (auto& e : s.exprs) {
          BindName(*e, true);
          for (auto& a : e->args)
            if (a) Bind(*a);
          if (s.kind == StmtKind::kDim) e->bind.fixedArray = e->hasArgs && !e->args.empty();
        }
        break;
      case StmtKind::kConst:
        s.kind = StmtKind::kNop;
        break;
      case StmtKind::kLet:
      case StmtKind::kSet:
        Bind(*s.target);
        Bind(*s.value);
        break;
      case StmtKind::kCall:
        if (s.target->kind == ExprKind::kName) {
          calling_ = true;
          BindName(*s.target, false);
          calling_ = false;
          for (auto& a : s.target->args)
            if (a) Bind(*a);
        } else {
          Bind(*s.target);
        }
        break;
      case StmtKind::kIf:
        for (auto& c : s.conds) Bind(*c);
        for (auto& b : s.blocks) BindBlock(b);
        BindBlock(s.elseBlock);
        break;
      case StmtKind::kSelect:
        Bind(*s.value);
        for (auto& c : s.cases)
          for (auto& e : c) Bind(*e);
        for (auto& b : s.blocks) BindBlock(b);
        break;
      case StmtKind::kFor:
        BindName(*s.target, true);
        CheckLoopVariable(*s.target);
        Bind(*s.value);
        Bind(*s.limit);
        if (s.step) Bind(*s.step);
        s.slot = HiddenSlot();
        HiddenSlot();
        BindBlock(s.body);
        break;
      case StmtKind::kForEach:
        BindName(*s.target, true);
        CheckLoopVariable(*s.target);
        Bind(*s.value);
        BindBlock(s.body);
        break;
      case StmtKind::kDo:
        if (s.cond) Bind(*s.cond);
        BindBlock(s.body);
        break;
      case StmtKind::kWith:
        Bind(*s.value);
        s.slot = HiddenSlot();
        withSlots_.push_back(s.slot);
        BindBlock(s.body);
        withSlots_.pop_back();
        break;
      default:
        break;
    }
  }

  void CheckLoopVariable(const Expr& e) {
    BindKind k = e.bind.kind;
    if (k != BindKind::kLocal && k != BindKind::kGlobal && k != BindKind::kField &&
        k != BindKind::kOuterLocal && k != BindKind::kDynamic)
      RaiseCompileError(kErrInvalidForVariable, e.line, e.column);
  }

  void Bind(Expr& e) {
    switch (e.kind) {
      case ExprKind::kName:
        BindName(e, false);
        break;
      case ExprKind::kMember:
      case ExprKind::kIndex:
      case ExprKind::kUnary:
      case ExprKind::kParen:
        Bind(*e.target);
        break;
      case ExprKind::kBinary:
        Bind(*e.target);
        Bind(*e.right);
        break;
      case ExprKind::kWithMember:
        if (withSlots_.empty()) {
          // Outside any With: a member of a target that raises 505 when it runs.
          auto nowhere = std::make_unique<Expr>();
          nowhere->kind = ExprKind::kName;
          nowhere->line = e.line;
          nowhere->column = e.column;
          nowhere->bind.kind = BindKind::kBuiltin;
          nowhere->bind.builtin = UnqualifiedReference();
          e.kind = ExprKind::kMember;
          e.target = std::move(nowhere);
          break;
        }
        e.bind.index = withSlots_.back();
        break;
      case ExprKind::kMe:
        if (!currentClass_) RaiseCompileError(kErrInvalidMe, e.line, e.column);
        break;
      case ExprKind::kNew: {
        // A class of the script may be named RegExp, but New RegExp still
        // makes the built-in one, as in VBScript.
        std::string lower = ToLower(e.name);
        if (lower == "regexp") break;
        if (auto it = newClassIndex(lower)) e.newClass = it;
        break;
      }
      case ExprKind::kLiteral:
        break;
    }
    for (auto& a : e.args)
      if (a) Bind(*a);
  }

  ClassDef* newClassIndex(const std::string& lower) {
    for (auto& cls : unit_.classes)
      if (ToLower(cls->name) == lower) return cls.get();
    for (Module* m = &module_; m; m = m->parent) {
      auto it = m->classes.find(lower);
      if (it != m->classes.end()) return it->second;
    }
    return nullptr;
  }

  // Binds a name; `declaring` for names of Dim, ReDim, For, which may create
  // the variable.
  void BindName(Expr& e, bool declaring) {
    std::string lower = ToLower(e.name);
    Binding& b = e.bind;
    // Inside a Function its own name with arguments is a recursive call, not
    // the return value.
    bool recursiveCall = e.hasArgs && !declaring && current_->returnSlot >= 0 &&
                         current_->localNames[current_->returnSlot] == lower;
    if (!recursiveCall) {
      auto it = current_->localIndex.find(lower);
      if (it != current_->localIndex.end()) {
        b.kind = BindKind::kLocal;
        b.index = it->second;
        const auto& fixed = current_->fixedLocals;
        b.fixedArray = std::find(fixed.begin(), fixed.end(), b.index) != fixed.end();
        return;
      }
      auto c = current_->constants.find(lower);
      if (c != current_->constants.end()) {
        b.kind = BindKind::kConst;
        b.constant = c->second;
        return;
      }
    }
    if (scope_.outer) {
      auto it = scope_.outer->localIndex.find(lower);
      if (it != scope_.outer->localIndex.end()) {
        b.kind = BindKind::kOuterLocal;
        b.index = it->second;
        return;
      }
      auto c = scope_.outer->constants.find(lower);
      if (c != scope_.outer->constants.end()) {
        b.kind = BindKind::kConst;
        b.constant = c->second;
        return;
      }
    }
    if (currentClass_) {
      auto it = currentClass_->memberIndex.find(lower);
      if (it != currentClass_->memberIndex.end()) {
        const ClassMember& m = currentClass_->members[it->second];
        if (m.field >= 0) {
          b.kind = BindKind::kField;
          b.index = m.field;
        } else {
          b.kind = BindKind::kClassMember;
          b.index = it->second;
        }
        return;
      }
    }
    auto ng = newGlobals_.find(lower);
    if (ng != newGlobals_.end()) {
      if (ng->second.isConst) {
        b.kind = BindKind::kConst;
        b.constant = ng->second.constant;
      } else {
        b.kind = BindKind::kGlobal;
        b.fixedArray = ng->second.fixedArray;
        b.constant = lower;  // resolved to the variable at Commit
        globalBindings_.push_back(&b);
      }
      return;
    }
    for (Module* m = &module_; m; m = m->parent) {
      auto it = m->globals.find(lower);
      if (it != m->globals.end()) {
        if (it->second.variable) {
          b.kind = BindKind::kGlobal;
          b.global = it->second.variable;
          b.fixedArray = it->second.fixedArray;
        } else {
          b.kind = BindKind::kConst;
          b.constant = it->second.constant;
        }
        return;
      }
    }
    Variant constant;
    if (FindConstant(lower, constant)) {
      b.kind = BindKind::kConst;
      b.constant = constant;
      return;
    }
    auto np = newProcs_.find(lower);
    if (np != newProcs_.end()) {
      b.kind = BindKind::kProc;
      b.proc = np->second;
      return;
    }
    for (Module* m = &module_; m; m = m->parent) {
      auto it = m->procs.find(lower);
      if (it != m->procs.end()) {
        b.kind = BindKind::kProc;
        b.proc = it->second;
        return;
      }
    }
    Special special;
    int minArgs = 0, maxArgs = 0;
    if (FindSpecial(lower, special, minArgs, maxArgs)) {
      CheckArity(e, minArgs, maxArgs);
      b.kind = BindKind::kSpecial;
      b.special = special;
      return;
    }
    if (scope_.hosts && BindHostName(*scope_.hosts, e.name, lower, b)) return;
    if (const Builtin* builtin = FindBuiltin(e.name)) {
      // A built-in's argument count is checked when it is called (450, which
      // On Error Resume Next traps).
      b.kind = BindKind::kBuiltin;
      b.builtin = BuiltinAs(builtin, calling_);
      return;
    }
    // Unknown now. At top level without Option Explicit the name becomes a
    // global; in a procedure it is looked up when run and, failing that, is an
    // implicit local.
    bool isExplicit = unit_.text.optionExplicit;
    // A name called or given arguments is no implicit variable: it may be a
    // procedure that a later text (or ExecuteGlobal) defines.
    bool called = calling_ || e.hasArgs;
    if (topLevel_ && current_ == &unit_.top && !isExplicit && !scope_.outer && !called) {
      NewGlobal g;
      newGlobals_[lower] = g;
      b.kind = BindKind::kGlobal;
      b.constant = lower;
      globalBindings_.push_back(&b);
      return;
    }
    b.kind = BindKind::kDynamic;
    b.explicitOnly = isExplicit;
    if (!isExplicit) {
      if (topLevel_ && current_ == &unit_.top) {
        b.index = -1;  // Execute/Eval inside a procedure: a new global when run
      } else {
        // Every use of the name shares one slot, and each looks up first.
        auto it = implicit_.find(lower);
        if (it != implicit_.end()) {
          b.index = it->second;
        } else {
          b.index = static_cast<int>(current_->localNames.size());
          current_->localNames.push_back(lower);
          current_->numLocals = static_cast<int>(current_->localNames.size());
          implicit_[lower] = b.index;
        }
      }
    }
    (void)declaring;
  }

  void CheckArity(const Expr& e, int minArgs, int maxArgs) {
    int n = static_cast<int>(e.args.size());
    if (n < minArgs || (maxArgs >= 0 && n > maxArgs))
      throw ScriptError(450, VbErrorText(450), kCompileErrorSource, e.line, e.column);
  }

  const CompileScope& scope_;
  Module& module_;
  Unit& unit_;
  Procedure* current_ = nullptr;
  ClassDef* currentClass_ = nullptr;
  bool topLevel_ = false;
  std::vector<int> withSlots_;
  std::unordered_map<std::string, NewGlobal> newGlobals_;
  std::unordered_map<std::string, Procedure*> newProcs_;
  std::vector<Binding*> globalBindings_;
  std::unordered_map<std::string, int> implicit_;
  bool calling_ = false;
};

}  // namespace

std::shared_ptr<Unit> CompileText(ParsedText text, const CompileScope& scope) {
  auto unit = std::make_shared<Unit>();
  unit->text = std::move(text);
  unit->top.name = "";
  unit->top.module = scope.module;
  Compiler compiler(scope, *unit);
  compiler.Declare();
  compiler.BindAll();
  compiler.Commit();
  scope.module->units.push_back(unit);
  return unit;
}

void CompileExpression(Expr& expr, Procedure& top, const CompileScope& scope) {
  Unit unit;
  unit.top.module = scope.module;
  Compiler compiler(scope, unit);
  compiler.BindExpression(expr);
  compiler.Commit();
  top.localNames = unit.top.localNames;
  top.numLocals = unit.top.numLocals;
}

// Names of the host come after the script's own (a script's RecordCount
// global hides a record set's member of that name). An object's own name
// wins over every member; among the members of objects added with their
// members visible, the object added last answers (in a job script a bare
// Fields or EOF is the Destination's, added after Source).
bool BindHostName(const std::vector<HostObject>& hosts, const std::string& name,
                  const std::string& lower, Binding& b) {
  for (size_t i = hosts.size(); i-- > 0;) {
    if (ToLower(hosts[i].name) == lower) {
      b.kind = BindKind::kHostObject;
      b.index = static_cast<int>(i);
      return true;
    }
  }
  for (size_t i = hosts.size(); i-- > 0;) {
    if (!hosts[i].addMembers || !hosts[i].object) continue;
    int id = hosts[i].object->GetIDOfName(name);
    if (id != kDispIdUnknown) {
      b.kind = BindKind::kHostMember;
      b.index = static_cast<int>(i);
      b.dispId = id;
      return true;
    }
  }
  return false;
}

}  // namespace ketrova::script::vbscript
