// The interpreter's inside, shared by the files that run compiled code:
// statements (interpreter_statements.cpp), expressions and names
// (interpreter_expressions.cpp), calls of procedures, built-ins and host
// objects (interpreter_calls.cpp), the objects scripts make
// (interpreter_objects.cpp), and modules, errors and the run's clock
// (interpreter.cpp). Only those files include it.
//
// Every run of code goes through a Frame: the procedure, its slots, the
// class instance of Me, and for Execute and Eval code the frame whose locals
// it sees. A failure inside a statement leaves as VbError and becomes a
// ScriptError at the statement that raised it.
#pragma once

#include <cassert>
#include <chrono>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <typeinfo>
#include <vector>

#include "platform/script/engine.h"
#include "platform/script/vbscript/compiler.h"
#include "platform/script/vbscript/errors.h"
#include "platform/script/vbscript/interpreter.h"

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
  int GetIDOfName(std::string_view name) override;
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override;
  std::vector<std::string> MemberNames() const override;
  ObjectPtr Self();

  ClassDef* cls;
  std::shared_ptr<Module> module;
  Interpreter* interp;
  std::shared_ptr<bool> alive;
  std::vector<Variant> fields;
};

// A script class's instance. ClassInstance is final, so comparing the type is
// enough, and far cheaper on the per-member path than a dynamic_cast across
// the host objects' several bases.
inline ClassInstance* AsClassInstance(Object* object) {
  return object && typeid(*object) == typeid(ClassInstance) ? static_cast<ClassInstance*>(object)
                                                            : nullptr;
}

// An error Err.Raise raised, with the help file and context it gives the Err
// object; any other error leaves those empty.
struct RaisedError : VbError {
  RaisedError(std::int32_t number, std::string description, std::string source,
              std::string helpFile, std::int32_t helpContext)
      : VbError(number, std::move(description), std::move(source)),
        HelpFile(std::move(helpFile)),
        HelpContext(helpContext) {}
  std::string HelpFile;
  std::int32_t HelpContext;
};

// The script's Err object, and the object GetRef answers for a procedure.
ObjectPtr MakeErrObject(ErrObject& err);
ObjectPtr MakeProcedureRef(Procedure* proc, Interpreter* interp, std::shared_ptr<bool> alive);

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

inline constexpr int kMaxCallDepth = 3000;

// The lowest address this thread's stack may reach before a call is refused.
std::uintptr_t StackLimit();

// Raised inside a run whose time is up. It is no VbError, so that neither On
// Error Resume Next nor a host's handler of script errors stops it; the
// innermost statement it leaves gives the position, and the outermost entry
// into the interpreter turns it into the ScriptError the caller sees.
struct TimedOut {
  int line = 0;
  int column = 0;
};

// An error text naming what it is about: "Typen unverträglich: 'x'".
inline std::string Quoted(std::int32_t number, const std::string& name) {
  return VbErrorText(number) + ": '" + name + "'";
}

inline bool IsVariableBinding(BindKind k) {
  return k == BindKind::kLocal || k == BindKind::kOuterLocal || k == BindKind::kGlobal ||
         k == BindKind::kField;
}

// The object whose member a script reaches. Nothing is no object here:
// VBScript answers o.Name on Nothing with 424, not 91.
inline ObjectPtr RequireObject(const Variant& v) {
  if (!v.IsObject() || v.IsNothing()) throw VbError(424);
  return v.AsObject();
}

// Whether every argument of a call site is a literal, so that it reads the
// same member with the same arguments every time.
bool ConstantArgs(Expr& e);
// The answer call site `e` kept of `object`'s member, while the object says
// it stands; nullptr otherwise.
ObjectPtr HeldAnswerOf(const Expr& e, const ObjectPtr& object);
// Keeps `answer` of `object`'s member at call site `e` where the object allows it.
void KeepAnswer(Expr& e, const ObjectPtr& object, int dispId, std::span<const Variant> args,
                const Variant& answer);

// The element `indexes` name in an array; 9 when out of range.
size_t ElementOffset(const SafeArray& array, std::span<const Variant> indexes);

struct Interpreter::Impl {
  explicit Impl(Interpreter* self) : self(self) { Reset(); }

  Interpreter* self;
  std::map<std::string, std::shared_ptr<Module>> modules;
  std::vector<HostObject> hosts;
  std::shared_ptr<bool> alive;
  ErrObject err;
  ObjectPtr errObject;
  int depth = 0;

  // ---- modules (interpreter.cpp)
  // Empties every global one by one, so that class instances end (and run
  // Class_Terminate) while the code around them is still whole.
  void ReleaseGlobals();
  void Reset();
  Module& GetModule(std::string_view name);

  // ---- the time limit of a run (interpreter.cpp)
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
  void StartClock();
  void ReadClock();

  // Runs one call into the interpreter. The outermost one starts the clock
  // and reports a time-out; a nested one (a host object calling back into
  // the script) runs on the outer call's clock.
  template <typename F>
  auto Entered(F&& run) -> decltype(run()) {
    struct Entry {
      explicit Entry(Impl& impl) : impl(impl) { ++impl.entries; }
      ~Entry() {
        assert(impl.entries > 0);
        --impl.entries;
      }
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

  // Every run of a procedure or of top-level code: bounds the depth of calls
  // and the stack, and ticks the clock.
  struct DepthGuard {
    explicit DepthGuard(Impl& impl) : impl(impl) {
      char probe;
      if (impl.depth >= kMaxCallDepth || reinterpret_cast<std::uintptr_t>(&probe) < StackLimit())
        throw VbError(28);
      impl.Tick();
      ++impl.depth;
    }
    ~DepthGuard() {
      assert(impl.depth > 0);
      --impl.depth;
    }
    Impl& impl;
  };

  // ---- errors (interpreter.cpp)
  static ScriptError Located(const VbError& e, int line, int column);
  void Record(const VbError& e);

  // ---- statements (interpreter_statements.cpp)
  void RunTop(Unit& unit, Module& module, Frame* outer, ClassInstance* me);
  Flow ExecBlock(Block& block, Frame& f);
  Flow Exec(Stmt& s, Frame& f);
  // An error in a block's header under On Error Resume Next: recorded, and
  // true, so that the statement goes on as VBScript's resume does. False
  // where trapping is off: the caller raises it.
  bool ResumesHeader(const VbError& e, Frame& f);
  // A loop's body run once, its Exit For / Exit Do ending only the body.
  Flow RunBodyOnce(Stmt& s, Frame& f);
  Flow ExecFor(Stmt& s, Frame& f);
  Flow ExecForEach(Stmt& s, Frame& f);
  Flow ExecDo(Stmt& s, Frame& f);
  Variant NewArray(Expr& e, Frame& f, Variant* preserve);
  void Assign(Expr& t, Variant v, Frame& f, bool isSet);
  void PutWithArgs(const ObjectPtr& object, int dispId, std::vector<ExprPtr>& argExprs, Variant v,
                   Frame& f, bool isSet);

  // ---- expressions and names (interpreter_expressions.cpp)
  Variant Eval(Expr& e, Frame& f);
  Variant Value(Expr& e, Frame& f) {
    Variant v = Eval(e, f);
    if (v.IsObject()) return DefaultValue(v);
    return v;
  }
  // A value without copying it when the expression is a plain variable.
  const Variant& ValueRef(Expr& e, Frame& f, Variant& temp);
  void EvalArgs(std::vector<ExprPtr>& exprs, Frame& f, Args& args, bool values);
  // The variable a name is bound to; nullptr when it is no variable.
  Variant* VarRef(Expr& e, Frame& f) {
    Binding& b = e.bind;
    switch (b.kind) {
      case BindKind::kLocal:
        assert(f.proc && b.index >= 0 && b.index < f.proc->numLocals);
        return f.slots[b.index];
      case BindKind::kOuterLocal:
        assert(f.outer && b.index >= 0 && b.index < f.outer->proc->numLocals);
        return f.outer->slots[b.index];
      case BindKind::kGlobal:
        assert(b.global);
        return b.global;
      case BindKind::kField:
        assert(f.me && b.index >= 0 && static_cast<size_t>(b.index) < f.me->fields.size());
        return &f.me->fields[b.index];
      case BindKind::kDynamic:
        if (Resolve(e, f)) return VarRef(e, f);
        return ImplicitVariable(e, f);
      default:
        return nullptr;
    }
  }
  // Looks a name up that was unknown when compiling; rebinds on success.
  bool Resolve(Expr& e, Frame& f);
  // The variable an unknown name stands for: an implicit local, or a new
  // global for code run by Execute.
  Variant* ImplicitVariable(Expr& e, Frame& f);
  Variant EvalName(Expr& e, Frame& f, bool statement);
  Variant IndexValue(const Variant& value, Expr& e, Frame& f);
  Variant MemberTarget(Expr& e, Frame& f);
  // The object whose member `e` reaches (424 for anything else); a host
  // object named as it is (Source.Fields) is lent from the host list, not
  // copied, which only holds until a call could change that list.
  const ObjectPtr& MemberObject(Expr& e, Frame& f, ObjectPtr& holder) {
    if (e.kind == ExprKind::kMember && e.target->kind == ExprKind::kName && !e.target->hasArgs &&
        e.target->bind.kind == BindKind::kHostObject) {
      const ObjectPtr& object = hosts[e.target->bind.index].object;
      if (!object) throw VbError(424);
      return object;
    }
    holder = RequireObject(MemberTarget(e, f));
    return holder;
  }
  Variant EvalMember(Expr& e, Frame& f, bool statement);
  Variant DefaultValue(const Variant& v);
  int DispId(Expr& e, Object& object);

  // ---- calls (interpreter_calls.cpp)
  void CallStatement(Expr& e, Frame& f);
  Variant CallBuiltin(Expr& e, Frame& f);
  Variant CallClassMember(Expr& e, Frame& f);
  // Calls a user procedure with argument expressions: a variable passed to a
  // ByRef parameter is passed itself; an array element is copied in and
  // written back; anything else is a copy.
  Variant CallUser(Procedure& p, std::vector<ExprPtr>& argExprs, Frame& caller, ClassInstance* me);
  Variant CallValues(Procedure& p, ClassInstance* me, std::span<Variant> args);
  // Runs a procedure's body on slots its caller filled; answers its result.
  Variant RunBody(Procedure& p, Variant** slots, ClassInstance* me);
  Variant InvokeWith(const ObjectPtr& object, int dispId, InvokeKind kind,
                     std::vector<ExprPtr>& argExprs, Frame& f);
  Variant CallSpecial(Expr& e, Frame& f);
  // Frames of Execute and Eval code see the locals of the procedure that ran
  // them.
  Frame* ScopeFrame(Frame& f) { return f.outer ? f.outer : &f; }
  CompileScope ScopeFor(Frame& f);
  Variant EvalIn(const std::string& text, Frame& f);
  void ExecuteIn(const std::string& text, Frame& f);

  // ---- objects (interpreter_objects.cpp)
  Variant NewObject(Expr& e, Frame& f);
  // A member of a script class's instance, called from outside it.
  Variant InvokeMember(ClassInstance& instance, int member, InvokeKind kind,
                       std::span<Variant> args);
};

}  // namespace ketrova::script::vbscript
