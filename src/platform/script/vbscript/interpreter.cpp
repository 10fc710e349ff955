#include "platform/script/vbscript/interpreter.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>

#include "platform/script/engine.h"
#include "platform/script/vbscript/compiler.h"
#include "platform/script/vbscript/errors.h"
#include "platform/script/vbscript/operators.h"
#include "platform/script/vbscript/parser.h"

namespace ketrova::script::vbscript {

enum class Flow { kNormal, kExitDo, kExitFor, kExitProc };

struct Frame {
  Procedure* proc = nullptr;
  Variant** slots = nullptr;
  ClassInstance* me = nullptr;
  Frame* outer = nullptr;  // the frame whose locals Execute/Eval code sees
  Module* module = nullptr;
  bool resumeNext = false;
};

// An instance of a script class: its fields, and its members reached through
// the interpreter.
class ClassInstance final : public Object {
 public:
  ClassInstance(ClassDef* cls, std::shared_ptr<Module> module, Interpreter* interp,
                std::shared_ptr<bool> alive)
      : cls(cls), module(std::move(module)), interp(interp), alive(std::move(alive)) {}
  ~ClassInstance() override {
    if (cls->terminate && *alive) interp->Terminate(*this);
  }
  std::string TypeName() const override { return cls->name; }
  int GetIDOfName(std::string_view name) override {
    auto it = cls->memberIndex.find(ToLower(name));
    return it == cls->memberIndex.end() ? kDispIdUnknown : it->second + 1;
  }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    if (!*alive) throw VbError(91);
    int member = dispId == kDispIdValue ? cls->defaultMember : dispId - 1;
    if (member < 0 || member >= static_cast<int>(cls->members.size())) throw VbError(438);
    return interp->InvokeMember(*this, member, kind, args);
  }
  std::vector<std::string> MemberNames() const override {
    std::vector<std::string> names;
    for (const auto& m : cls->members)
      if (m.isPublic) names.push_back(m.name);
    return names;
  }
  ObjectPtr Self() {
    ObjectPtr self = weak_from_this().lock();
    // In Class_Terminate the instance is already released: lend it unowned.
    return self ? self : ObjectPtr(ObjectPtr(), this);
  }

  ClassDef* cls;
  std::shared_ptr<Module> module;
  Interpreter* interp;
  std::shared_ptr<bool> alive;
  std::vector<Variant> fields;
};

// A script class's instance. ClassInstance is final, so comparing the type is
// enough, and far cheaper on the per-member path than a dynamic_cast across
// the host objects' several bases.
ClassInstance* AsClassInstance(Object* object) {
  return object && typeid(*object) == typeid(ClassInstance) ? static_cast<ClassInstance*>(object)
                                                            : nullptr;
}

namespace {

// The object GetRef answers: calling its default member calls the procedure.
class ProcedureRef : public Object {
 public:
  ProcedureRef(Procedure* proc, std::shared_ptr<Module> module, Interpreter* interp,
               std::shared_ptr<bool> alive)
      : proc_(proc), module_(std::move(module)), interp_(interp), alive_(std::move(alive)) {}
  std::string TypeName() const override { return "Object"; }
  Variant Invoke(int dispId, InvokeKind, std::span<Variant> args) override {
    if (dispId != kDispIdValue) throw VbError(438);
    if (!*alive_) throw VbError(91);
    return interp_->Call(*proc_, nullptr, args);
  }

 private:
  Procedure* proc_;
  std::shared_ptr<Module> module_;
  Interpreter* interp_;
  std::shared_ptr<bool> alive_;
};

// The script's Err object.
class ErrObjectRef : public Object {
 public:
  explicit ErrObjectRef(ErrObject& err) : err_(err) {}
  std::string TypeName() const override { return "ErrObject"; }
  int GetIDOfName(std::string_view name) override {
    static constexpr std::string_view kNames[] = {
        "number", "description", "source", "helpfile", "helpcontext", "raise", "clear"};
    std::string lower = ToLower(name);
    for (int i = 0; i < 7; ++i)
      if (lower == kNames[i]) return i + 1;
    return kDispIdUnknown;
  }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    bool put = kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
    if (dispId == kDispIdValue) dispId = 1;
    switch (dispId) {
      case 1:
        if (put) return err_.Number = Last(args).ToLong(), Variant();
        return Variant::Long(err_.Number);
      case 2:
        if (put) return err_.Description = Last(args).ToString(), Variant();
        return err_.Description;
      case 3:
        if (put) return err_.Source = Last(args).ToString(), Variant();
        return err_.Source;
      case 4:
        if (put) return err_.HelpFile = Last(args).ToString(), Variant();
        return err_.HelpFile;
      case 5:
        if (put) return err_.HelpContext = Last(args).ToLong(), Variant();
        return Variant::Long(err_.HelpContext);
      case 6: {
        if (args.empty() || args[0].IsMissing()) throw VbError(449);
        std::int32_t number = args[0].ToLong();
        auto text = [&](size_t i) {
          return i < args.size() && !args[i].IsMissing() ? args[i].ToString() : std::string();
        };
        std::string source = text(1);
        if (source.empty()) source = kRuntimeErrorSource;
        std::string description = text(2);
        if (description.empty()) description = RaisedErrorText(number);
        throw VbError(number, description, source);
      }
      case 7:
        err_.Clear();
        return Variant();
      default:
        throw VbError(438);
    }
  }

 private:
  static const Variant& Last(std::span<Variant> args) {
    if (args.empty()) throw VbError(450);
    return args.back();
  }
  ErrObject& err_;
};

// Frame slots, on the C++ stack for small procedures.
class Slots {
 public:
  explicit Slots(int n) : n_(n) {
    if (n <= kInline) {
      values_ = inline_;
      ptrs_ = inlinePtrs_;
    } else {
      heapValues_.resize(n);
      heapPtrs_.resize(n);
      values_ = heapValues_.data();
      ptrs_ = heapPtrs_.data();
    }
    for (int i = 0; i < n; ++i) ptrs_[i] = &values_[i];
  }
  Variant& operator[](int i) { return values_[i]; }
  Variant** ptrs() { return ptrs_; }
  int size() const { return n_; }

 private:
  static constexpr int kInline = 8;
  int n_;
  Variant inline_[kInline];
  Variant* inlinePtrs_[kInline];
  std::vector<Variant> heapValues_;
  std::vector<Variant*> heapPtrs_;
  Variant* values_;
  Variant** ptrs_;
};

constexpr int kMaxCallDepth = 3000;

// The lowest address this thread's stack may reach before a call is refused.
std::uintptr_t StackLimit() {
  thread_local std::uintptr_t limit = [] {
    pthread_attr_t attr;
    std::uintptr_t low = 0;
    if (pthread_getattr_np(pthread_self(), &attr) == 0) {
      void* addr = nullptr;
      size_t size = 0;
      if (pthread_attr_getstack(&attr, &addr, &size) == 0) {
        size_t margin = std::min<size_t>(size / 4, 512 * 1024);
        low = reinterpret_cast<std::uintptr_t>(addr) + margin;
      }
      pthread_attr_destroy(&attr);
    }
    return low;
  }();
  return limit;
}

// Raised inside a run whose time is up. It is no VbError, so that neither On
// Error Resume Next nor a host's handler of script errors stops it; the
// innermost statement it leaves gives the position, and the outermost entry
// into the interpreter turns it into the ScriptError the caller sees.
struct TimedOut {
  int line = 0;
  int column = 0;
};

std::string Quoted(std::int32_t number, const std::string& name) {
  return VbErrorText(number) + ": '" + name + "'";
}

}  // namespace

struct Interpreter::Impl {
  explicit Impl(Interpreter* self) : self(self) { Reset(); }

  Interpreter* self;
  std::map<std::string, std::shared_ptr<Module>> modules;
  std::vector<HostObject> hosts;
  std::shared_ptr<bool> alive;
  ErrObject err;
  ObjectPtr errObject;
  int depth = 0;

  // ---- the time limit of a run
  // Loops tick at each turn and procedures at each entry; only every
  // `interval` ticks is the clock read, and not at all without a limit.
  using Clock = std::chrono::steady_clock;
  static constexpr std::int32_t kNoLimit = std::numeric_limits<std::int32_t>::max();
  static constexpr std::int32_t kMaxInterval = 4096;
  int timeout = -1;  // milliseconds; 0 or less: no limit
  int entries = 0;   // calls into the interpreter now running, nested ones included
  std::int32_t countdown = kNoLimit;
  std::int32_t interval = kMaxInterval;
  Clock::time_point deadline;
  Clock::time_point lastRead;

  void Tick() {
    if (--countdown <= 0) ReadClock();
  }

  void StartClock() {
    countdown = kNoLimit;
    if (timeout <= 0) return;
    lastRead = Clock::now();
    deadline = lastRead + std::chrono::milliseconds(timeout);
    interval = 256;
    countdown = interval;
  }

  void ReadClock() {
    if (timeout <= 0 || entries == 0) {
      countdown = kNoLimit;
      return;
    }
    Clock::time_point now = Clock::now();
    if (now >= deadline) {
      countdown = 1;  // a host that swallowed it meets it again at the next tick
      throw TimedOut{};
    }
    // Reads a few milliseconds apart, whether a tick takes nanoseconds (an
    // empty loop) or milliseconds (a loop around a slow host call).
    Clock::duration spent = now - lastRead;
    lastRead = now;
    if (spent > std::chrono::milliseconds(4))
      interval = std::max(1, interval / 2);
    else if (spent < std::chrono::milliseconds(1))
      interval = std::min(kMaxInterval, interval * 2);
    countdown = interval;
  }

  // Runs one call into the interpreter. The outermost one starts the clock
  // and reports a time-out; a nested one (a host object calling back into
  // the script) runs on the outer call's clock.
  template <typename F>
  auto Entered(F&& run) -> decltype(run()) {
    struct Entry {
      explicit Entry(Impl& impl) : impl(impl) { ++impl.entries; }
      ~Entry() { --impl.entries; }
      Impl& impl;
    };
    if (entries > 0) {
      Entry entry(*this);
      return run();
    }
    StartClock();
    Entry entry(*this);
    try {
      return run();
    } catch (const TimedOut& t) {
      countdown = kNoLimit;
      throw ScriptError(kTimeoutErrorNumber, std::string(kTimeoutErrorText), kRuntimeErrorSource,
                        t.line, t.column);
    }
  }

  // Empties every global one by one, so that class instances end (and run
  // Class_Terminate) while the code around them is still whole.
  void ReleaseGlobals() {
    for (auto& [name, module] : modules)
      for (Variant& v : module->storage) {
        Variant gone = std::move(v);
        v = Variant();
      }
  }

  void Reset() {
    ReleaseGlobals();
    if (alive) *alive = false;
    alive = std::make_shared<bool>(true);
    modules.clear();
    hosts.clear();
    err.Clear();
    errObject = std::make_shared<ErrObjectRef>(err);
    Module& global = GetModule(kGlobalModule);
    (void)global;
  }

  Module& GetModule(std::string_view name) {
    std::string lower = ToLower(name);
    auto it = modules.find(lower);
    if (it != modules.end()) return *it->second;
    auto module = std::make_shared<Module>();
    module->name = std::string(name);
    if (lower != ToLower(kGlobalModule)) module->parent = &GetModule(kGlobalModule);
    Module& ref = *module;
    modules[lower] = std::move(module);
    return ref;
  }

  struct DepthGuard {
    explicit DepthGuard(Impl& impl) : impl(impl) {
      char probe;
      if (impl.depth >= kMaxCallDepth || reinterpret_cast<std::uintptr_t>(&probe) < StackLimit())
        throw VbError(28);
      impl.Tick();
      ++impl.depth;
    }
    ~DepthGuard() { --impl.depth; }
    Impl& impl;
  };

  // ---- errors
  static ScriptError Located(const VbError& e, int line, int column) {
    return ScriptError(e.Number, e.Description, e.Source.empty() ? kRuntimeErrorSource : e.Source,
                       line, column);
  }
  void Record(const VbError& e) {
    err.Number = e.Number;
    err.Description = e.Description;
    err.Source = e.Source.empty() ? kRuntimeErrorSource : e.Source;
  }

  // ---- running code
  void RunTop(Unit& unit, Module& module, Frame* outer, ClassInstance* me) {
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

  Flow ExecBlock(Block& block, Frame& f) {
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

  Flow Exec(Stmt& s, Frame& f) {
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
        Variant v = Value(*s.value, f);
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
        if (!v.IsObject()) throw VbError(424);
        if (v.IsNothing()) throw VbError(91);
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

  static Variant LoopNumber(Variant v) {
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

  Flow ExecFor(Stmt& s, Frame& f) {
    Variant start = LoopNumber(Value(*s.value, f));
    Variant limitValue = LoopNumber(Value(*s.limit, f));
    Variant step = s.step ? LoopNumber(Value(*s.step, f)) : Variant::Integer(1);
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

  Flow ExecForEach(Stmt& s, Frame& f) {
    Variant collection = Eval(*s.value, f);
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
    if (!collection.IsObject()) throw VbError(451);
    if (collection.IsNothing()) throw VbError(91);
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

  Flow ExecDo(Stmt& s, Frame& f) {
    auto done = [&]() {
      bool c = IsTrue(Value(*s.cond, f));
      return s.until ? c : !c;
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

  // ---- arrays
  Variant NewArray(Expr& e, Frame& f, Variant* preserve) {
    auto array = std::make_shared<SafeArray>();
    size_t total = 1;
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

  static size_t ElementOffset(const SafeArray& array, std::span<const Variant> indexes) {
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

  // ---- argument lists
  // Arguments of one call. Up to kInline live on the stack, and only as many
  // as the call has are constructed: this runs for every call and member
  // access of a script.
  struct Args {
    explicit Args(size_t n) : n(n) {
      if (n > kInline) {
        heap.resize(n);
        data = heap.data();
      } else {
        data = reinterpret_cast<Variant*>(inline_);
        std::uninitialized_value_construct_n(data, n);
      }
    }
    ~Args() {
      if (n <= kInline) std::destroy_n(data, n);
    }
    Args(const Args&) = delete;
    Args& operator=(const Args&) = delete;
    static constexpr size_t kInline = 6;
    size_t n;
    alignas(Variant) unsigned char inline_[kInline * sizeof(Variant)];
    std::vector<Variant> heap;
    Variant* data;
    std::span<Variant> span() { return {data, n}; }
  };

  void EvalArgs(std::vector<ExprPtr>& exprs, Frame& f, Args& args, bool values) {
    for (size_t i = 0; i < exprs.size(); ++i) {
      if (!exprs[i]) {
        args.data[i] = Variant::Missing();
      } else {
        args.data[i] = values ? Value(*exprs[i], f) : Eval(*exprs[i], f);
      }
    }
  }

  // ---- names
  static bool IsVariableBinding(BindKind k) {
    return k == BindKind::kLocal || k == BindKind::kOuterLocal || k == BindKind::kGlobal ||
           k == BindKind::kField;
  }

  // Looks a name up that was unknown when compiling; rebinds on success.
  bool Resolve(Expr& e, Frame& f) {
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
    for (size_t i = hosts.size(); i-- > 0;) {
      if (ToLower(hosts[i].name) == lower) {
        b.kind = BindKind::kHostObject;
        b.index = static_cast<int>(i);
        return true;
      }
    }
    for (size_t i = hosts.size(); i-- > 0;) {
      if (!hosts[i].addMembers || !hosts[i].object) continue;
      int id = hosts[i].object->GetIDOfName(e.name);
      if (id != kDispIdUnknown) {
        b.kind = BindKind::kHostMember;
        b.index = static_cast<int>(i);
        b.dispId = id;
        return true;
      }
    }
    return false;
  }

  // The variable an unknown name stands for: an implicit local, or a new
  // global for code run by Execute.
  Variant* ImplicitVariable(Expr& e, Frame& f) {
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

  // The variable a name is bound to; nullptr when it is no variable.
  Variant* VarRef(Expr& e, Frame& f) {
    Binding& b = e.bind;
    switch (b.kind) {
      case BindKind::kLocal:
        return f.slots[b.index];
      case BindKind::kOuterLocal:
        return f.outer->slots[b.index];
      case BindKind::kGlobal:
        return b.global;
      case BindKind::kField:
        return &f.me->fields[b.index];
      case BindKind::kDynamic:
        if (Resolve(e, f)) return VarRef(e, f);
        return ImplicitVariable(e, f);
      default:
        return nullptr;
    }
  }

  Variant EvalName(Expr& e, Frame& f, bool statement) {
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
        ObjectPtr object = hosts[b.index].object;
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

  Variant IndexValue(const Variant& value, Expr& e, Frame& f) {
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

  Variant CallBuiltin(Expr& e, Frame& f) {
    Binding& b = e.bind;
    // How the arguments meet objects: 1 keep them (TypeName, IsObject,
    // Array), 2 their default value where there is one (the Is... tests,
    // VarType), 3 their default value.
    if (b.index == 0) {
      std::string lower = ToLower(b.builtin->Name);
      if (lower == "typename" || lower == "isobject" || lower == "array")
        b.index = 1;
      else if (lower == "vartype" || lower == "isnull" || lower == "isempty" ||
               lower == "isarray" || lower == "isnumeric" || lower == "isdate")
        b.index = 2;
      else
        b.index = 3;
    }
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

  Variant CallClassMember(Expr& e, Frame& f) {
    ClassMember& m = f.me->cls->members[e.bind.index];
    if (m.get) return CallUser(*m.get, e.args, f, f.me);
    if (m.sub) return CallUser(*m.sub, e.args, f, f.me);
    throw VbError(438, Quoted(438, e.name));
  }

  // Calls a user procedure with argument expressions: a variable passed to a
  // ByRef parameter is passed itself; an array element is copied in and
  // written back; anything else is a copy.
  Variant CallUser(Procedure& p, std::vector<ExprPtr>& argExprs, Frame& caller, ClassInstance* me) {
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
    Frame frame;
    frame.proc = &p;
    frame.slots = ptrs;
    frame.me = me;
    frame.module = p.module;
    ExecBlock(p.decl->body, frame);
    for (size_t i : writeBack) {
      Variant v = slots[static_cast<int>(i)];
      bool isSet = v.IsObject();
      Assign(*argExprs[i], std::move(v), caller, isSet);
    }
    if (p.returnSlot >= 0) return std::move(*ptrs[p.returnSlot]);
    return Variant();
  }

  Variant CallValues(Procedure& p, ClassInstance* me, std::span<Variant> args) {
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
    Frame frame;
    frame.proc = &p;
    frame.slots = ptrs;
    frame.me = me;
    frame.module = p.module;
    ExecBlock(p.decl->body, frame);
    if (p.returnSlot >= 0) return std::move(*ptrs[p.returnSlot]);
    return Variant();
  }

  // ---- objects
  static ObjectPtr RequireObject(const Variant& v) {
    if (!v.IsObject()) throw VbError(424);
    if (v.IsNothing()) throw VbError(91);
    return v.AsObject();
  }

  Variant DefaultValue(const Variant& v) {
    Variant current = v;
    for (int i = 0; i < 8 && current.IsObject(); ++i) {
      if (current.IsNothing()) throw VbError(91);
      current = current.AsObject()->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
    }
    if (current.IsObject()) throw VbError(438);
    return current;
  }

  int DispId(Expr& e, Object& object) {
    const void* key = &object;
    if (auto* instance = AsClassInstance(&object)) key = instance->cls;
    const std::type_info* type = &typeid(object);
    if (e.cache.object == key && e.cache.type == type) return e.cache.dispId;
    int id = object.GetIDOfName(e.name);
    if (id == kDispIdUnknown) {
      std::string name = e.name;
      if (e.target && e.target->kind == ExprKind::kName) name = e.target->name + "." + name;
      throw VbError(438, Quoted(438, name));
    }
    e.cache = DispCache{key, type, id};
    return id;
  }

  Variant InvokeWith(const ObjectPtr& object, int dispId, InvokeKind kind,
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

  Variant MemberTarget(Expr& e, Frame& f) {
    if (e.kind == ExprKind::kWithMember) return *f.slots[e.bind.index];
    return Eval(*e.target, f);
  }

  Variant EvalMember(Expr& e, Frame& f, bool statement) {
    ObjectPtr object = RequireObject(MemberTarget(e, f));
    int id = DispId(e, *object);
    return InvokeWith(object, id, statement ? InvokeKind::kMethod : InvokeKind::kPropertyGet,
                      e.args, f);
  }

  Variant NewObject(Expr& e, Frame& f) {
    if (!e.newClass) {
      std::string lower = ToLower(e.name);
      if (lower == "regexp") return CreateRegExp();
      for (Module* m = f.module; m && !e.newClass; m = m->parent) {
        auto it = m->classes.find(lower);
        if (it != m->classes.end()) e.newClass = it->second;
      }
      if (!e.newClass) throw VbError(506, Quoted(506, e.name));
    }
    ClassDef* cls = e.newClass;
    auto instance =
        std::make_shared<ClassInstance>(cls, cls->module->shared_from_this(), self, alive);
    instance->fields.resize(cls->fieldNames.size());
    for (size_t i = 0; i < cls->fieldBounds.size(); ++i) {
      if (cls->fieldBounds[i].empty()) continue;
      auto array = std::make_shared<SafeArray>();
      size_t total = 1;
      for (std::int32_t upper : cls->fieldBounds[i]) {
        if (upper < 0) break;
        array->bounds.push_back({0, upper + 1});
        total *= static_cast<size_t>(upper + 1);
      }
      array->data.resize(array->bounds.empty() ? 0 : total);
      instance->fields[i] = Variant(array);
    }
    if (cls->initialize) CallValues(*cls->initialize, instance.get(), {});
    return Variant(ObjectPtr(instance));
  }

  Variant CallSpecial(Expr& e, Frame& f) {
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
          if (it != m->procs.end())
            return ObjectPtr(std::make_shared<ProcedureRef>(
                it->second, it->second->module->shared_from_this(), self, alive));
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

  // Frames of Execute and Eval code see the locals of the procedure that ran
  // them.
  Frame* ScopeFrame(Frame& f) { return f.outer ? f.outer : &f; }

  CompileScope ScopeFor(Frame& f) {
    Frame* scopeFrame = ScopeFrame(f);
    CompileScope scope{f.module, &hosts, nullptr, nullptr};
    if (scopeFrame->proc && scopeFrame->proc->decl) scope.outer = scopeFrame->proc;
    if (f.me) scope.outerClass = f.me->cls;
    return scope;
  }

  Variant EvalIn(const std::string& text, Frame& f) {
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

  void ExecuteIn(const std::string& text, Frame& f) {
    ParsedText parsed = ParseText(text);
    CompileScope scope = ScopeFor(f);
    auto unit = CompileText(std::move(parsed), scope);
    RunTop(*unit, *f.module, scope.outer ? ScopeFrame(f) : nullptr, f.me);
  }

  // ---- expressions
  Variant Eval(Expr& e, Frame& f) {
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

  Variant Value(Expr& e, Frame& f) {
    Variant v = Eval(e, f);
    if (v.IsObject()) return DefaultValue(v);
    return v;
  }

  // A value without copying it when the expression is a plain variable.
  const Variant& ValueRef(Expr& e, Frame& f, Variant& temp) {
    if (e.kind == ExprKind::kName && !e.hasArgs && IsVariableBinding(e.bind.kind)) {
      const Variant* var = VarRef(e, f);
      if (!var->IsObject()) return *var;
    } else if (e.kind == ExprKind::kLiteral) {
      return e.value;
    }
    temp = Value(e, f);
    return temp;
  }

  void CallStatement(Expr& e, Frame& f) {
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

  // ---- assignment
  void PutWithArgs(const ObjectPtr& object, int dispId, std::vector<ExprPtr>& argExprs, Variant v,
                   Frame& f, bool isSet) {
    Args args(argExprs.size() + 1);
    for (size_t i = 0; i < argExprs.size(); ++i)
      args.data[i] = argExprs[i] ? Eval(*argExprs[i], f) : Variant::Missing();
    args.data[argExprs.size()] = std::move(v);
    object->Invoke(dispId, isSet ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut,
                   args.span());
  }

  void Assign(Expr& t, Variant v, Frame& f, bool isSet) {
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
                         isSet ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut,
                         args.span());
            return;
          }
          case BindKind::kHostMember:
            PutWithArgs(hosts[b.index].object, b.dispId, t.args, std::move(v), f, isSet);
            return;
          case BindKind::kHostObject:
            if (t.hasArgs) {
              PutWithArgs(RequireObject(hosts[b.index].object), kDispIdValue, t.args, std::move(v),
                          f, isSet);
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
        ObjectPtr object = RequireObject(MemberTarget(t, f));
        int id = DispId(t, *object);
        if (!t.args.empty() && !isSet && !AsClassInstance(object.get())) {
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

  // ---- class members called from outside
  Variant InvokeMember(ClassInstance& instance, int member, InvokeKind kind,
                       std::span<Variant> args) {
    ClassMember& m = instance.cls->members[member];
    bool put = kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
    if (m.field >= 0) {
      Variant& field = instance.fields[m.field];
      if (put) {
        if (args.empty()) throw VbError(450);
        Variant v = args.back();
        if (kind == InvokeKind::kPropertyPut && v.IsObject()) v = DefaultValue(v);
        if (args.size() == 1) {
          field = std::move(v);
        } else if (field.IsArray()) {
          SafeArray& array = field.MutableArray();
          array.data[ElementOffset(array, args.first(args.size() - 1))] = std::move(v);
        } else {
          throw VbError(13);
        }
        return Variant();
      }
      if (args.empty()) return field;
      if (field.IsArray()) return field.AsArray()->data[ElementOffset(*field.AsArray(), args)];
      if (field.IsObject()) return RequireObject(field)->Invoke(kDispIdValue, kind, args);
      throw VbError(13);
    }
    if (kind == InvokeKind::kPropertyPut) {
      if (m.let) return CallValues(*m.let, &instance, args);
      if (m.set && !args.empty() && args.back().IsObject())
        return CallValues(*m.set, &instance, args);
      throw VbError(438, Quoted(438, m.name));
    }
    if (kind == InvokeKind::kPropertyPutRef) {
      if (m.set) return CallValues(*m.set, &instance, args);
      if (m.let) return CallValues(*m.let, &instance, args);
      throw VbError(438, Quoted(438, m.name));
    }
    if (m.get) return CallValues(*m.get, &instance, args);
    if (m.sub) {
      CallValues(*m.sub, &instance, args);
      return Variant();
    }
    throw VbError(438, Quoted(438, m.name));
  }
};

Interpreter::Interpreter() : impl_(std::make_unique<Impl>(this)) {}

Interpreter::~Interpreter() {
  impl_->ReleaseGlobals();
  *impl_->alive = false;
}

Module& Interpreter::GetModule(std::string_view name) {
  return impl_->GetModule(name);
}

Module* Interpreter::FindModule(std::string_view name) const {
  auto it = impl_->modules.find(ToLower(name));
  return it == impl_->modules.end() ? nullptr : it->second.get();
}

void Interpreter::AddCode(Module& module, std::string_view code) {
  ParsedText parsed = ParseText(code);
  CompileScope scope{&module, &impl_->hosts, nullptr, nullptr};
  auto unit = CompileText(std::move(parsed), scope);
  impl_->Entered([&] { impl_->RunTop(*unit, module, nullptr, nullptr); });
}

void Interpreter::AddObject(std::string_view name, ObjectPtr object, bool addMembers) {
  for (HostObject& h : impl_->hosts) {
    if (ToLower(h.name) == ToLower(name)) {
      h.object = std::move(object);
      h.addMembers = addMembers;
      return;
    }
  }
  impl_->hosts.push_back(HostObject{std::string(name), std::move(object), addMembers});
}

Variant Interpreter::EvalText(Module& module, std::string_view expression) {
  ExprPtr expr = ParseExpression(expression);
  Procedure top;
  top.module = &module;
  CompileScope scope{&module, &impl_->hosts, nullptr, nullptr};
  CompileExpression(*expr, top, scope);
  return impl_->Entered([&] {
    Impl::DepthGuard guard(*impl_);
    Slots slots(top.numLocals);
    Frame frame;
    frame.proc = &top;
    frame.slots = slots.ptrs();
    frame.module = &module;
    try {
      return impl_->Eval(*expr, frame);
    } catch (const ScriptError&) {
      throw;
    } catch (const VbError& e) {
      throw Impl::Located(e, expr->line, expr->column);
    }
  });
}

void Interpreter::ExecuteText(Module& module, std::string_view statements) {
  AddCode(module, statements);
}

Variant Interpreter::Call(Procedure& proc, ClassInstance* me, std::span<Variant> args) {
  return impl_->Entered([&] {
    try {
      return impl_->CallValues(proc, me, args);
    } catch (const ScriptError&) {
      throw;
    } catch (const VbError& e) {
      const ProcDecl* d = proc.decl;
      throw Impl::Located(e, d ? d->line : 0, d ? d->column : 0);
    }
  });
}

void Interpreter::Reset() {
  impl_->Reset();
}

Variant Interpreter::InvokeMember(ClassInstance& instance, int member, InvokeKind kind,
                                  std::span<Variant> args) {
  return impl_->Entered([&] { return impl_->InvokeMember(instance, member, kind, args); });
}

void Interpreter::SetTimeout(int milliseconds) {
  impl_->timeout = milliseconds;
}

void Interpreter::Terminate(ClassInstance& instance) {
  try {
    impl_->CallValues(*instance.cls->terminate, &instance, {});
  } catch (...) {
    // An error in Class_Terminate is lost, as in VBScript.
  }
}

}  // namespace ketrova::script::vbscript
