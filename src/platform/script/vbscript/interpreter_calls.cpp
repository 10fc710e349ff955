// Calls: of user procedures (with ByRef arguments), built-ins, host objects'
// members, and the special names Err, Eval, Execute, ExecuteGlobal, GetRef,
// CreateObject and GetObject.
#include "platform/script/vbscript/interpreter_impl.h"
#include "platform/script/vbscript/parser.h"
#include "platform/script/vbscript/regexp.h"

namespace ketrova::script::vbscript {

void Interpreter::Impl::CallStatement(Expr& e, Frame& f) {
  switch (e.kind) {
    case ExprKind::kName:
      EvalName(e, f, true);
      return;
    case ExprKind::kMember:
    case ExprKind::kWithMember:
      EvalMember(e, f, true);
      return;
    default:
      Eval(e, f);
  }
}

Variant Interpreter::Impl::CallBuiltin(Expr& e, Frame& f) {
  Binding& b = e.bind;
  // How the arguments meet objects: 1 keep them (TypeName, IsObject,
  // Array), 2 their default value where there is one (the Is... tests,
  // VarType), 3 their default value.
  if (b.index == 0) {
    std::string lower = ToLower(b.builtin->Name);
    if (lower == "typename" || lower == "isobject" || lower == "array")
      b.index = 1;
    else if (lower == "vartype" || lower == "isnull" || lower == "isempty" || lower == "isarray" ||
             lower == "isnumeric" || lower == "isdate")
      b.index = 2;
    else
      b.index = 3;
  }
  int count = static_cast<int>(e.args.size());
  if (count < b.builtin->MinArgs || (b.builtin->MaxArgs >= 0 && count > b.builtin->MaxArgs))
    throw VbError(450);
  Args args(e.args.size());
  for (size_t i = 0; i < e.args.size(); ++i) {
    Variant& a = args.data[i];
    if (!e.args[i]) {
      a = Variant::Missing();
      continue;
    }
    a = Eval(*e.args[i], f);
    if (!a.IsObject() || a.IsNothing() || b.index == 1) continue;
    if (b.index == 3) {
      a = DefaultValue(a);
    } else {
      try {
        a = DefaultValue(a);
      } catch (const VbError&) {
      }
    }
  }
  return b.builtin->Function(std::span<const Variant>(args.data, args.n));
}

Variant Interpreter::Impl::CallClassMember(Expr& e, Frame& f) {
  ClassMember& m = f.me->cls->members[e.bind.index];
  if (m.get) return CallUser(*m.get, e.args, f, f.me);
  if (m.sub) return CallUser(*m.sub, e.args, f, f.me);
  throw VbError(438, Quoted(438, e.name));
}

Variant Interpreter::Impl::CallUser(Procedure& p, std::vector<ExprPtr>& argExprs, Frame& caller,
                                    ClassInstance* me) {
  if (static_cast<int>(argExprs.size()) != p.numParams) throw VbError(450);
  DepthGuard guard(*this);
  Slots slots(p.numLocals);
  Variant** ptrs = slots.ptrs();
  std::vector<size_t> writeBack;
  for (size_t i = 0; i < argExprs.size(); ++i) {
    Expr* a = argExprs[i].get();
    if (!a) {
      slots[static_cast<int>(i)] = Variant::Missing();
      continue;
    }
    if (p.byRef[i] && a->kind == ExprKind::kName) {
      if (a->bind.kind == BindKind::kDynamic) Resolve(*a, caller);
      BindKind k = a->bind.kind;
      if (IsVariableBinding(k) || k == BindKind::kDynamic) {
        Variant* var = VarRef(*a, caller);
        if (!a->hasArgs) {
          ptrs[i] = var;
          continue;
        }
        if (var->IsArray()) writeBack.push_back(i);
      }
    }
    slots[static_cast<int>(i)] = Eval(*a, caller);
  }
  Variant result = RunBody(p, ptrs, me);
  for (size_t i : writeBack) {
    Variant v = slots[static_cast<int>(i)];
    bool isSet = v.IsObject();
    Assign(*argExprs[i], std::move(v), caller, isSet);
  }
  return result;
}

Variant Interpreter::Impl::CallValues(Procedure& p, ClassInstance* me, std::span<Variant> args) {
  if (static_cast<int>(args.size()) != p.numParams) throw VbError(450);
  DepthGuard guard(*this);
  Slots slots(p.numLocals);
  Variant** ptrs = slots.ptrs();
  for (size_t i = 0; i < args.size(); ++i) {
    if (p.byRef[i])
      ptrs[i] = &args[i];
    else
      slots[static_cast<int>(i)] = args[i];
  }
  return RunBody(p, ptrs, me);
}

Variant Interpreter::Impl::RunBody(Procedure& p, Variant** slots, ClassInstance* me) {
  Frame frame;
  frame.proc = &p;
  frame.slots = slots;
  frame.me = me;
  frame.module = p.module;
  ExecBlock(p.decl->body, frame);
  if (p.returnSlot >= 0) return std::move(*slots[p.returnSlot]);
  return Variant();
}

Variant Interpreter::Impl::InvokeWith(const ObjectPtr& object, int dispId, InvokeKind kind,
                                      std::vector<ExprPtr>& argExprs, Frame& f) {
  if (!object) throw VbError(91);
  Args args(argExprs.size());
  EvalArgs(argExprs, f, args, false);
  Variant result = object->Invoke(dispId, kind, args.span());
  // Variables passed to a script class's ByRef parameters take the new value.
  if (!argExprs.empty() && AsClassInstance(object.get())) {
    for (size_t i = 0; i < argExprs.size(); ++i) {
      Expr* a = argExprs[i].get();
      if (a && a->kind == ExprKind::kName && !a->hasArgs && IsVariableBinding(a->bind.kind))
        *VarRef(*a, f) = std::move(args.data[i]);
    }
  }
  return result;
}

Variant Interpreter::Impl::CallSpecial(Expr& e, Frame& f) {
  auto text = [&](size_t i) { return Value(*e.args.at(i), f).ToString(); };
  for (auto& a : e.args)
    if (!a) throw VbError(449);
  switch (e.bind.special) {
    case Special::kErr:
      if (e.hasArgs && !e.args.empty()) throw VbError(13);
      return errObject;
    case Special::kEval:
      return EvalIn(text(0), f);
    case Special::kExecute:
      ExecuteIn(text(0), f);
      return Variant();
    case Special::kExecuteGlobal: {
      ParsedText parsed = ParseText(text(0));
      CompileScope scope{f.module, &hosts, nullptr, nullptr};
      auto unit = CompileText(std::move(parsed), scope);
      RunTop(*unit, *f.module, nullptr, nullptr);
      return Variant();
    }
    case Special::kGetRef: {
      std::string lower = ToLower(text(0));
      for (Module* m = f.module; m; m = m->parent) {
        auto it = m->procs.find(lower);
        if (it != m->procs.end()) return MakeProcedureRef(it->second, self, alive);
      }
      throw VbError(5);
    }
    case Special::kCreateObject: {
      std::string progId = text(0);
      std::string lower = ToLower(progId);
      if (lower == "vbscript.regexp") return CreateRegExp();
      return ::ketrova::script::CreateObjectByProgId(progId);
    }
    case Special::kGetObject:
      throw VbError(429);
  }
  return Variant();
}

CompileScope Interpreter::Impl::ScopeFor(Frame& f) {
  Frame* scopeFrame = ScopeFrame(f);
  CompileScope scope{f.module, &hosts, nullptr, nullptr};
  if (scopeFrame->proc && scopeFrame->proc->decl) scope.outer = scopeFrame->proc;
  if (f.me) scope.outerClass = f.me->cls;
  return scope;
}

Variant Interpreter::Impl::EvalIn(const std::string& text, Frame& f) {
  ExprPtr expr = ParseExpression(text);
  Procedure top;
  top.module = f.module;
  CompileScope scope = ScopeFor(f);
  CompileExpression(*expr, top, scope);
  Slots slots(top.numLocals);
  Frame frame;
  frame.proc = &top;
  frame.slots = slots.ptrs();
  frame.me = f.me;
  frame.outer = scope.outer ? ScopeFrame(f) : nullptr;
  frame.module = f.module;
  return Eval(*expr, frame);
}

void Interpreter::Impl::ExecuteIn(const std::string& text, Frame& f) {
  ParsedText parsed = ParseText(text);
  CompileScope scope = ScopeFor(f);
  auto unit = CompileText(std::move(parsed), scope);
  RunTop(*unit, *f.module, scope.outer ? ScopeFrame(f) : nullptr, f.me);
}

}  // namespace ketrova::script::vbscript
