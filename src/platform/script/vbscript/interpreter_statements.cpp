// Running statements: blocks with their error handling, assignment, the
// loops (each turn ticks the run's clock) and Dim / ReDim.
#include <cassert>
#include <memory>

#include "platform/script/vbscript/interpreter_impl.h"
#include "platform/script/vbscript/operators.h"

namespace ketrova::script::vbscript {
namespace {

// What a For loop counts with: numbers as they are, Empty and Booleans as
// Integers, anything else as a Double; Null is refused.
Variant LoopNumber(Variant v) {
  switch (v.Type()) {
    case vbByte:
    case vbInteger:
    case vbLong:
    case vbSingle:
    case vbDouble:
    case vbCurrency:
    case vbDecimal:
      return v;
    case vbEmpty:
      return Variant::Integer(0);
    case vbBoolean:
      return Variant::Integer(v.AsBool() ? -1 : 0);
    case vbNull:
      throw VbError(94);
    default:
      return Variant(v.ToDouble());
  }
}

}  // namespace

void Interpreter::Impl::RunTop(Unit& unit, Module& module, Frame* outer, ClassInstance* me) {
  DepthGuard guard(*this);
  Slots slots(unit.top.numLocals);
  Frame frame;
  frame.proc = &unit.top;
  frame.slots = slots.ptrs();
  frame.me = me;
  frame.outer = outer;
  frame.module = &module;
  ExecBlock(unit.text.statements, frame);
}

Flow Interpreter::Impl::ExecBlock(Block& block, Frame& f) {
  for (auto& sp : block) {
    Stmt& s = *sp;
    try {
      Flow flow = Exec(s, f);
      if (flow != Flow::kNormal) return flow;
    } catch (const ScriptError& e) {
      if (!f.resumeNext) throw;
      Record(e);
    } catch (const VbError& e) {
      if (!f.resumeNext) throw Located(e, s.line, s.column);
      Record(e);
    } catch (const std::bad_alloc&) {
      if (!f.resumeNext) throw Located(VbError(7), s.line, s.column);
      Record(VbError(7));
    } catch (TimedOut& t) {
      if (t.line == 0) t.line = s.line, t.column = s.column;
      throw;
    }
  }
  return Flow::kNormal;
}

Flow Interpreter::Impl::Exec(Stmt& s, Frame& f) {
  switch (s.kind) {
    case StmtKind::kLet:
      Assign(*s.target, Value(*s.value, f), f, false);
      return Flow::kNormal;
    case StmtKind::kSet: {
      Variant v = Eval(*s.value, f);
      if (!v.IsObject()) throw VbError(424);
      Assign(*s.target, std::move(v), f, true);
      return Flow::kNormal;
    }
    case StmtKind::kCall:
      CallStatement(*s.target, f);
      return Flow::kNormal;
    case StmtKind::kDim:
      for (auto& e : s.exprs) {
        if (!e->hasArgs) continue;
        *VarRef(*e, f) = NewArray(*e, f, nullptr);
      }
      return Flow::kNormal;
    case StmtKind::kReDim:
      for (auto& e : s.exprs) {
        if (e->bind.fixedArray) throw VbError(10);  // Dim a(n) keeps its size
        Variant* var = VarRef(*e, f);
        if (!var) throw VbError(13);
        *var = NewArray(*e, f, s.preserve ? var : nullptr);
      }
      return Flow::kNormal;
    case StmtKind::kErase:
      for (auto& e : s.exprs) {
        Variant* var = VarRef(*e, f);
        if (!var || !var->IsArray()) throw VbError(13);
        if (e->bind.fixedArray) {
          for (Variant& item : var->MutableArray().data) item = Variant();
        } else {
          *var = Variant(std::make_shared<SafeArray>());
        }
      }
      return Flow::kNormal;
    case StmtKind::kIf:
      for (size_t i = 0; i < s.conds.size(); ++i) {
        bool c;
        try {
          c = IsTrue(Value(*s.conds[i], f));
        } catch (const VbError& e) {
          if (!f.resumeNext) throw Located(e, s.conds[i]->line, s.conds[i]->column);
          // VBScript goes on with the statement after Then.
          Record(e);
          c = true;
        }
        if (c) return ExecBlock(s.blocks[i], f);
      }
      return ExecBlock(s.elseBlock, f);
    case StmtKind::kSelect: {
      Variant v;
      try {
        v = Value(*s.value, f);
      } catch (const VbError& e) {
        if (!ResumesHeader(e, f)) throw;
        // Resumed, VBScript goes on with the first Case's statements.
        return s.blocks.empty() ? Flow::kNormal : ExecBlock(s.blocks[0], f);
      }
      for (size_t i = 0; i < s.cases.size(); ++i) {
        if (s.cases[i].empty()) return ExecBlock(s.blocks[i], f);
        for (auto& c : s.cases[i]) {
          Variant cv = Value(*c, f);
          if (!v.IsArray() && !cv.IsArray() && Compare(v, cv) == CompareResult::kEqual)
            return ExecBlock(s.blocks[i], f);
        }
      }
      return Flow::kNormal;
    }
    case StmtKind::kFor:
      return ExecFor(s, f);
    case StmtKind::kForEach:
      return ExecForEach(s, f);
    case StmtKind::kDo:
      return ExecDo(s, f);
    case StmtKind::kWith: {
      Variant v = Eval(*s.value, f);
      // With Nothing is allowed; its members raise 424 when used.
      if (!v.IsObject()) throw VbError(424);
      *f.slots[s.slot] = std::move(v);
      Flow flow = ExecBlock(s.body, f);
      *f.slots[s.slot] = Variant();
      return flow;
    }
    case StmtKind::kExit:
      switch (s.exitKind) {
        case ExitKind::kDo:
          return Flow::kExitDo;
        case ExitKind::kFor:
          return Flow::kExitFor;
        default:
          return Flow::kExitProc;
      }
    case StmtKind::kOnErrorResumeNext:
      f.resumeNext = true;
      err.Clear();
      return Flow::kNormal;
    case StmtKind::kOnErrorGoto0:
      f.resumeNext = false;
      err.Clear();
      return Flow::kNormal;
    case StmtKind::kConst:
    case StmtKind::kNop:
      return Flow::kNormal;
  }
  return Flow::kNormal;
}

bool Interpreter::Impl::ResumesHeader(const VbError& e, Frame& f) {
  if (!f.resumeNext) return false;
  Record(e);
  return true;
}

Flow Interpreter::Impl::RunBodyOnce(Stmt& s, Frame& f) {
  Flow flow = ExecBlock(s.body, f);
  return flow == Flow::kExitFor || flow == Flow::kExitDo ? Flow::kNormal : flow;
}

Flow Interpreter::Impl::ExecFor(Stmt& s, Frame& f) {
  Variant start, limitValue, step;
  try {
    start = LoopNumber(Value(*s.value, f));
    limitValue = LoopNumber(Value(*s.limit, f));
    step = s.step ? LoopNumber(Value(*s.step, f)) : Variant::Integer(1);
  } catch (const VbError& e) {
    // Resumed after a failed header, VBScript runs the body once.
    if (!ResumesHeader(e, f)) throw;
    return RunBodyOnce(s, f);
  }
  double limit = limitValue.ToDouble();
  bool up = step.ToDouble() >= 0;
  Variant* var = VarRef(*s.target, f);
  *var = start;
  while (true) {
    Tick();
    double current = LoopNumber(*var).ToDouble();
    if (up ? current > limit : current < limit) break;
    Flow flow = ExecBlock(s.body, f);
    if (flow == Flow::kExitFor) break;
    if (flow != Flow::kNormal) return flow;
    var = VarRef(*s.target, f);
    *var = BinaryOp(Op::kAdd, LoopNumber(*var), step);
  }
  return Flow::kNormal;
}

Flow Interpreter::Impl::ExecForEach(Stmt& s, Frame& f) {
  Variant collection;
  try {
    collection = Eval(*s.value, f);
    if (!collection.IsArray() && !collection.IsObject()) throw VbError(451);
    if (collection.IsNothing()) throw VbError(91);
  } catch (const VbError& e) {
    // Resumed after a failed header (For Each x In Empty), VBScript runs the
    // body once.
    if (!ResumesHeader(e, f)) throw;
    return RunBodyOnce(s, f);
  }
  auto body = [&](Variant item) -> int {
    Tick();
    *VarRef(*s.target, f) = std::move(item);
    Flow flow = ExecBlock(s.body, f);
    if (flow == Flow::kExitFor) return 1;
    if (flow != Flow::kNormal) return 2;
    return 0;
  };
  if (collection.IsArray()) {
    ArrayPtr array = collection.AsArray();  // the loop walks a snapshot
    const auto& bounds = array->bounds;
    size_t total = array->data.size();
    size_t dims = bounds.size();
    std::vector<std::int32_t> index(dims, 0);
    for (size_t n = 0; n < total; ++n) {
      // Elements in storage order of the first index fastest, as VB walks them.
      size_t offset = 0;
      for (size_t d = 0; d < dims; ++d) offset = offset * bounds[d].count + index[d];
      int r = body(array->data[offset]);
      if (r == 1) break;
      if (r == 2) return Flow::kExitProc;
      for (size_t d = 0; d < dims; ++d) {
        if (++index[d] < bounds[d].count) break;
        index[d] = 0;
      }
    }
    return Flow::kNormal;
  }
  assert(collection.IsObject() && !collection.IsNothing());
  auto enumerator = collection.AsObject()->NewEnum();
  Variant item;
  while (enumerator->Next(item)) {
    int r = body(std::move(item));
    item = Variant();
    if (r == 1) break;
    if (r == 2) return Flow::kExitProc;
  }
  return Flow::kNormal;
}

Flow Interpreter::Impl::ExecDo(Stmt& s, Frame& f) {
  // A condition that fails, resumed, counts as "go on" at the head of the
  // loop (VBScript enters the body) and as "done" at its foot (it goes on
  // after Loop).
  auto done = [&]() {
    try {
      bool c = IsTrue(Value(*s.cond, f));
      return s.until ? c : !c;
    } catch (const VbError& e) {
      if (!ResumesHeader(e, f)) throw;
      return s.condAtEnd;
    }
  };
  while (true) {
    Tick();
    if (s.cond && !s.condAtEnd && done()) break;
    Flow flow = ExecBlock(s.body, f);
    if (flow == Flow::kExitDo) {
      if (s.slot == -1) return flow;  // While ... Wend: the Exit belongs to an outer Do
      break;
    }
    if (flow != Flow::kNormal) return flow;
    if (s.cond && s.condAtEnd && done()) break;
  }
  return Flow::kNormal;
}

Variant Interpreter::Impl::NewArray(Expr& e, Frame& f, Variant* preserve) {
  auto array = std::make_shared<SafeArray>();
  // Dim a() is an array without elements.
  size_t total = e.args.empty() ? 0 : 1;
  for (auto& a : e.args) {
    if (!a) throw VbError(9);
    std::int32_t upper = Value(*a, f).ToLong();
    if (upper < -1) throw VbError(9);
    array->bounds.push_back({0, upper + 1});
    total *= static_cast<size_t>(upper + 1);
    if (total > 100'000'000) throw VbError(7);
  }
  array->data.resize(total);
  if (preserve && preserve->IsArray() && !e.args.empty()) {
    const SafeArray& old = *preserve->AsArray();
    if (old.bounds.size() == array->bounds.size() && !old.data.empty()) {
      for (size_t d = 0; d + 1 < old.bounds.size(); ++d)
        if (old.bounds[d].count != array->bounds[d].count) throw VbError(9);
      size_t dims = old.bounds.size();
      std::vector<std::int32_t> index(dims, 0);
      for (size_t n = 0; n < old.data.size(); ++n) {
        bool inside = true;
        size_t offset = 0;
        for (size_t d = 0; d < dims; ++d) {
          if (index[d] >= array->bounds[d].count) inside = false;
          offset = offset * array->bounds[d].count + index[d];
        }
        if (inside) array->data[offset] = old.data[n];
        for (size_t d = dims; d-- > 0;) {
          if (++index[d] < old.bounds[d].count) break;
          index[d] = 0;
        }
      }
    } else if (!old.bounds.empty() && old.bounds.size() != array->bounds.size()) {
      throw VbError(9);
    }
  }
  return Variant(array);
}

void Interpreter::Impl::Assign(Expr& t, Variant v, Frame& f, bool isSet) {
  switch (t.kind) {
    case ExprKind::kName: {
      Binding& b = t.bind;
      switch (b.kind) {
        case BindKind::kLocal:
        case BindKind::kOuterLocal:
        case BindKind::kGlobal:
        case BindKind::kField:
        case BindKind::kDynamic: {
          if (b.kind == BindKind::kDynamic && Resolve(t, f))
            return Assign(t, std::move(v), f, isSet);
          Variant* var = VarRef(t, f);
          if (!t.hasArgs) {
            *var = std::move(v);
            return;
          }
          if (var->IsArray()) {
            Args args(t.args.size());
            EvalArgs(t.args, f, args, true);
            SafeArray& array = var->MutableArray();
            array.data[ElementOffset(array, args.span())] = std::move(v);
            return;
          }
          if (var->IsObject()) {
            PutWithArgs(RequireObject(*var), kDispIdValue, t.args, std::move(v), f, isSet);
            return;
          }
          throw VbError(13, Quoted(13, t.name));
        }
        case BindKind::kClassMember: {
          Args args(t.args.size() + 1);
          EvalArgs(t.args, f, args, false);
          args.data[t.args.size()] = std::move(v);
          InvokeMember(*f.me, b.index,
                       isSet ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut, args.span());
          return;
        }
        case BindKind::kHostMember:
          PutWithArgs(hosts[b.index].object, b.dispId, t.args, std::move(v), f, isSet);
          return;
        case BindKind::kHostObject:
          if (t.hasArgs) {
            PutWithArgs(RequireObject(hosts[b.index].object), kDispIdValue, t.args, std::move(v), f,
                        isSet);
            return;
          }
          break;
        default:
          break;
      }
      throw VbError(501);
    }
    case ExprKind::kMember:
    case ExprKind::kWithMember: {
      ObjectPtr holder;
      const ObjectPtr& lent = MemberObject(t, f, holder);
      const bool toDefault = !t.args.empty() && !isSet && !AsClassInstance(lent.get());
      // rs.Fields("x") = v record after record: the field kept from the last
      // time, while the record set says it stands.
      if (toDefault && ConstantArgs(t)) {
        if (ObjectPtr held = HeldAnswerOf(t, lent)) {
          Variant value[1] = {std::move(v)};
          held->Invoke(kDispIdValue, InvokeKind::kPropertyPut, value);
          return;
        }
      }
      // The calls below may run a script: the object is held for them.
      if (!holder) holder = lent;
      const ObjectPtr& object = holder;
      int id = DispId(t, *object);
      if (toDefault) {
        // obj.Fields("a") = 5: the value goes to the default member of what
        // the property answers, when that is an object.
        Args args(t.args.size());
        EvalArgs(t.args, f, args, false);
        Variant got;
        bool haveGot = true;
        try {
          got = object->Invoke(id, InvokeKind::kPropertyGet, args.span());
        } catch (const VbError&) {
          haveGot = false;
        }
        if (haveGot && got.IsObject() && !got.IsNothing()) {
          if (ConstantArgs(t)) KeepAnswer(t, object, id, args.span(), got);
          Variant value[1] = {std::move(v)};
          got.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyPut, value);
          return;
        }
        Args put(t.args.size() + 1);
        for (size_t i = 0; i < t.args.size(); ++i) put.data[i] = std::move(args.data[i]);
        put.data[t.args.size()] = std::move(v);
        object->Invoke(id, InvokeKind::kPropertyPut, put.span());
        return;
      }
      PutWithArgs(object, id, t.args, std::move(v), f, isSet);
      return;
    }
    case ExprKind::kIndex: {
      Variant target = Eval(*t.target, f);
      if (target.IsObject()) {
        PutWithArgs(RequireObject(target), kDispIdValue, t.args, std::move(v), f, isSet);
        return;
      }
      throw VbError(13);
    }
    default:
      throw VbError(501);
  }
}

void Interpreter::Impl::PutWithArgs(const ObjectPtr& object, int dispId,
                                    std::vector<ExprPtr>& argExprs, Variant v, Frame& f,
                                    bool isSet) {
  Args args(argExprs.size() + 1);
  for (size_t i = 0; i < argExprs.size(); ++i)
    args.data[i] = argExprs[i] ? Eval(*argExprs[i], f) : Variant::Missing();
  args.data[argExprs.size()] = std::move(v);
  object->Invoke(dispId, isSet ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut,
                 args.span());
}

}  // namespace ketrova::script::vbscript
