// Modules, the host's objects, errors and the run's clock; the interpreter's
// public face. Running the code lives in the interpreter_*.cpp beside it.
#include "platform/script/vbscript/interpreter.h"

#include <pthread.h>

#include <algorithm>
#include <memory>

#include "platform/script/vbscript/interpreter_impl.h"
#include "platform/script/vbscript/parser.h"

namespace ketrova::script::vbscript {

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

void Interpreter::Impl::ReleaseGlobals() {
  for (auto& [name, module] : modules)
    for (Variant& v : module->storage) {
      Variant gone = std::move(v);
      v = Variant();
    }
}

void Interpreter::Impl::Reset() {
  ReleaseGlobals();
  if (alive) *alive = false;
  alive = std::make_shared<bool>(true);
  modules.clear();
  hosts.clear();
  err.Clear();
  errObject = MakeErrObject(err);
  Module& global = GetModule(kGlobalModule);
  (void)global;
}

Module& Interpreter::Impl::GetModule(std::string_view name) {
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

void Interpreter::Impl::StartClock() {
  countdown = kNoLimit;
  if (timeout <= 0) return;
  lastRead = Clock::now();
  deadline = lastRead + std::chrono::milliseconds(timeout);
  interval = 256;
  countdown = interval;
}

void Interpreter::Impl::ReadClock() {
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

ScriptError Interpreter::Impl::Located(const VbError& e, int line, int column) {
  return ScriptError(e.Number, e.Description, e.Source.empty() ? kRuntimeErrorSource : e.Source,
                     line, column);
}

void Interpreter::Impl::Record(const VbError& e) {
  err.Number = e.Number;
  err.Description = e.Description;
  err.Source = e.Source.empty() ? kRuntimeErrorSource : e.Source;
  const auto* raised = dynamic_cast<const RaisedError*>(&e);
  err.HelpFile = raised ? raised->HelpFile : std::string();
  err.HelpContext = raised ? raised->HelpContext : 0;
}

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
  // A limit set while a run goes on (by a host object) counts from now.
  if (impl_->entries > 0) impl_->StartClock();
}

void Interpreter::Terminate(ClassInstance& instance) {
  try {
    impl_->CallValues(*instance.cls->terminate, &instance, {});
  } catch (...) {
    // An error in Class_Terminate is lost, as in VBScript.
  }
}

}  // namespace ketrova::script::vbscript
