// Evaluating expressions: values, names and their late binding, array
// elements and object members.
#include <cassert>

#include "platform/script/vbscript/interpreter_impl.h"
#include "platform/script/vbscript/operators.h"

namespace ketrova::script::vbscript {

size_t ElementOffset(const SafeArray& array, std::span<const Variant> indexes) {
  if (indexes.size() != array.bounds.size()) throw VbError(9);
  size_t offset = 0;
  for (size_t d = 0; d < indexes.size(); ++d) {
    if (indexes[d].IsMissing()) throw VbError(9);
    std::int32_t i = indexes[d].ToLong() - array.bounds[d].lower;
    if (i < 0 || i >= array.bounds[d].count) throw VbError(9);
    offset = offset * array.bounds[d].count + static_cast<size_t>(i);
  }
  return offset;
}

Variant Interpreter::Impl::Eval(Expr& e, Frame& f) {
  switch (e.kind) {
    case ExprKind::kLiteral:
      return e.value;
    case ExprKind::kName:
      return EvalName(e, f, false);
    case ExprKind::kMember:
    case ExprKind::kWithMember:
      return EvalMember(e, f, false);
    case ExprKind::kIndex: {
      Variant target = Eval(*e.target, f);
      return IndexValue(target, e, f);
    }
    case ExprKind::kUnary:
      return UnaryOp(e.op, Value(*e.target, f));
    case ExprKind::kBinary: {
      if (e.op == Op::kIs) return BinaryOp(Op::kIs, Eval(*e.target, f), Eval(*e.right, f));
      Variant ta, tb;
      const Variant& a = ValueRef(*e.target, f, ta);
      const Variant& b = ValueRef(*e.right, f, tb);
      return BinaryOp(e.op, a, b);
    }
    case ExprKind::kNew:
      return NewObject(e, f);
    case ExprKind::kMe:
      return Variant(f.me->Self());
    case ExprKind::kParen:
      return Eval(*e.target, f);
  }
  return Variant();
}

const Variant& Interpreter::Impl::ValueRef(Expr& e, Frame& f, Variant& temp) {
  if (e.kind == ExprKind::kName && !e.hasArgs && IsVariableBinding(e.bind.kind)) {
    const Variant* var = VarRef(e, f);
    if (!var->IsObject()) return *var;
  } else if (e.kind == ExprKind::kLiteral) {
    return e.value;
  }
  temp = Value(e, f);
  return temp;
}

void Interpreter::Impl::EvalArgs(std::vector<ExprPtr>& exprs, Frame& f, Args& args, bool values) {
  for (size_t i = 0; i < exprs.size(); ++i) {
    if (!exprs[i]) {
      args.data[i] = Variant::Missing();
    } else {
      args.data[i] = values ? Value(*exprs[i], f) : Eval(*exprs[i], f);
    }
  }
}

bool Interpreter::Impl::Resolve(Expr& e, Frame& f) {
  std::string lower = ToLower(e.name);
  Binding& b = e.bind;
  for (Module* m = f.module; m; m = m->parent) {
    auto it = m->globals.find(lower);
    if (it != m->globals.end()) {
      if (it->second.variable) {
        b.kind = BindKind::kGlobal;
        b.global = it->second.variable;
      } else {
        b.kind = BindKind::kConst;
        b.constant = it->second.constant;
      }
      return true;
    }
  }
  for (Module* m = f.module; m; m = m->parent) {
    auto it = m->procs.find(lower);
    if (it != m->procs.end()) {
      b.kind = BindKind::kProc;
      b.proc = it->second;
      return true;
    }
  }
  return BindHostName(hosts, e.name, lower, b);
}

Variant* Interpreter::Impl::ImplicitVariable(Expr& e, Frame& f) {
  Binding& b = e.bind;
  if (b.explicitOnly) throw VbError(500, Quoted(500, e.name));
  if (b.index >= 0) return f.slots[b.index];
  Module& m = *f.module;
  m.storage.emplace_back();
  GlobalEntry g;
  g.variable = &m.storage.back();
  m.globals[ToLower(e.name)] = g;
  b.kind = BindKind::kGlobal;
  b.global = g.variable;
  return g.variable;
}

Variant Interpreter::Impl::EvalName(Expr& e, Frame& f, bool statement) {
  Binding& b = e.bind;
  switch (b.kind) {
    case BindKind::kLocal:
    case BindKind::kOuterLocal:
    case BindKind::kGlobal:
    case BindKind::kField: {
      Variant* var = VarRef(e, f);
      if (!e.hasArgs) return *var;
      return IndexValue(*var, e, f);
    }
    case BindKind::kConst:
      if (e.hasArgs) throw VbError(13);
      return b.constant;
    case BindKind::kBuiltin:
      return CallBuiltin(e, f);
    case BindKind::kProc:
      return CallUser(*b.proc, e.args, f, nullptr);
    case BindKind::kClassMember:
      return CallClassMember(e, f);
    case BindKind::kHostObject: {
      const ObjectPtr& object = hosts[b.index].object;
      if (!e.hasArgs) return object;
      if (!object) throw VbError(91);
      return InvokeWith(object, kDispIdValue, InvokeKind::kPropertyGet, e.args, f);
    }
    case BindKind::kHostMember:
      return InvokeWith(hosts[b.index].object, b.dispId,
                        statement ? InvokeKind::kMethod : InvokeKind::kPropertyGet, e.args, f);
    case BindKind::kSpecial:
      return CallSpecial(e, f);
    case BindKind::kDynamic:
      if (Resolve(e, f)) return EvalName(e, f, statement);
      if (e.hasArgs || statement) throw VbError(13, Quoted(13, e.name));
      return *ImplicitVariable(e, f);
    case BindKind::kUnbound:
      break;
  }
  throw VbError(13, Quoted(13, e.name));
}

Variant Interpreter::Impl::IndexValue(const Variant& value, Expr& e, Frame& f) {
  if (value.IsArray()) {
    Args args(e.args.size());
    EvalArgs(e.args, f, args, true);
    const SafeArray& array = *value.AsArray();
    return array.data[ElementOffset(array, args.span())];
  }
  if (value.IsObject()) {
    if (value.IsNothing()) throw VbError(91);
    return InvokeWith(value.AsObject(), kDispIdValue, InvokeKind::kPropertyGet, e.args, f);
  }
  if (e.args.empty()) return value;
  throw VbError(13, Quoted(13, e.name));
}

Variant Interpreter::Impl::MemberTarget(Expr& e, Frame& f) {
  if (e.kind == ExprKind::kWithMember) return *f.slots[e.bind.index];
  return Eval(*e.target, f);
}

bool ConstantArgs(Expr& e) {
  if (e.constantArgs < 0) {
    bool constant = !e.args.empty();
    for (const ExprPtr& a : e.args) constant = constant && a && a->kind == ExprKind::kLiteral;
    e.constantArgs = constant ? 1 : 0;
  }
  return e.constantArgs == 1;
}

ObjectPtr HeldAnswerOf(const Expr& e, const ObjectPtr& object) {
  if (!e.held) return nullptr;
  const HeldMember& held = *e.held;
  // The same object, by its control block: no reference count is touched.
  if (held.owner.owner_before(object) || object.owner_before(held.owner)) return nullptr;
  if (!object->AnswerStands(held.answer)) return nullptr;
  return held.answer.answer.lock();
}

void KeepAnswer(Expr& e, const ObjectPtr& object, int dispId, std::span<const Variant> args,
                const Variant& answer) {
  // An object without a control block of its own could not be told apart.
  if (!answer.IsObject() || answer.IsNothing() || object.use_count() == 0) return;
  HeldAnswer held;
  if (!object->HoldAnswer(dispId, args, answer, held)) return;
  if (!e.held) e.held = std::make_unique<HeldMember>();
  e.held->owner = object;
  e.held->answer = std::move(held);
}

Variant Interpreter::Impl::EvalMember(Expr& e, Frame& f, bool statement) {
  ObjectPtr holder;
  const ObjectPtr& lent = MemberObject(e, f, holder);
  // rs.Fields("x") read record after record: the answer kept from the last
  // read, while the object says it stands.
  const bool keep = !statement && ConstantArgs(e) && !AsClassInstance(lent.get());
  if (keep) {
    if (ObjectPtr held = HeldAnswerOf(e, lent)) return Variant(std::move(held));
  }
  // The calls below may run a script: the object is held for them.
  if (!holder) holder = lent;
  const ObjectPtr& object = holder;
  int id = DispId(e, *object);
  if (!keep)
    return InvokeWith(object, id, statement ? InvokeKind::kMethod : InvokeKind::kPropertyGet,
                      e.args, f);
  Args args(e.args.size());
  EvalArgs(e.args, f, args, false);
  Variant result = object->Invoke(id, InvokeKind::kPropertyGet, args.span());
  KeepAnswer(e, object, id, args.span(), result);
  return result;
}

Variant Interpreter::Impl::DefaultValue(const Variant& v) {
  if (!v.IsObject()) return v;
  if (v.IsNothing()) throw VbError(91);
  // Up to eight default members deep, the object itself not copied.
  Variant current = v.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
  for (int i = 1; i < 8 && current.IsObject(); ++i) {
    if (current.IsNothing()) throw VbError(91);
    current = current.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
  }
  if (current.IsObject()) throw VbError(438);
  return current;
}

int Interpreter::Impl::DispId(Expr& e, Object& object) {
  const void* key = &object;
  if (auto* instance = AsClassInstance(&object)) key = instance->cls;
  const std::type_info* type = &typeid(object);
  if (e.cache.object == key && e.cache.type == type) return e.cache.dispId;
  int id = object.GetIDOfName(e.name);
  // A class's Private members are reached only from inside it (Me.x).
  if (auto* instance = AsClassInstance(&object);
      instance && id != kDispIdUnknown && !(e.target && e.target->kind == ExprKind::kMe)) {
    assert(id >= 1 && id <= static_cast<int>(instance->cls->members.size()));
    if (!instance->cls->members[id - 1].isPublic) id = kDispIdUnknown;
  }
  if (id == kDispIdUnknown) {
    std::string name = e.name;
    if (e.target && e.target->kind == ExprKind::kName) name = e.target->name + "." + name;
    throw VbError(438, Quoted(438, name));
  }
  e.cache = DispCache{key, type, id};
  return id;
}

}  // namespace ketrova::script::vbscript
