// JScript on Duktape behind the script engine interface.
//
// The global module is the heap's global object. A named module runs in a
// Duktape thread of its own whose global object inherits from the global
// module's: its declarations stay its own, and every name of the global module
// (procedures, variables, added objects) resolves through the prototype.
//
// Duktape gives the line of an error but not its column; the column answered
// is that of the name the error is about where the message names one, else the
// first non-blank character of the line, always in the text as it was added.
//
// The build of Duktape that Debian ships has no hook into its executor, so a
// Timeout is enforced by the code itself: every text is compiled with a check
// in each loop condition (js_loop_checks.h), which keeps its lines, and the
// calls into host objects check as well (js_timeout.h).
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "platform/script/ado_binding.h"
#include "platform/script/engine.h"
#include "platform/script/jscript/js_bridge.h"
#include "platform/script/jscript/js_errors.h"
#include "platform/script/jscript/js_heap.h"
#include "platform/script/jscript/js_host_objects.h"
#include "platform/script/jscript/js_loop_checks.h"
#include "platform/script/jscript/js_timeout.h"
#include "platform/script/jscript/js_values.h"
#include "support/collection.h"

namespace ketrova::script {

namespace {

using jscript::Heap;

constexpr const char* kCompileSource = "Kompilierungsfehler in JScript";
constexpr const char* kRuntimeSource = "Laufzeitfehler in JScript";

struct Lookup {
  void* global;
  const char* name;
  bool isFunction = false;
};

duk_ret_t LookupFunction(duk_context* ctx, void* udata) {
  auto* lookup = static_cast<Lookup*>(udata);
  duk_push_heapptr(ctx, lookup->global);
  duk_get_prop_string(ctx, -1, lookup->name);
  lookup->isFunction = duk_is_function(ctx, -1);
  return 0;
}

std::string LineOf(const std::string& text, int line) {
  if (line < 1) return {};
  std::size_t start = 0;
  for (int i = 1; i < line; ++i) {
    start = text.find('\n', start);
    if (start == std::string::npos) return {};
    ++start;
  }
  std::size_t end = text.find('\n', start);
  std::string result = text.substr(start, end == std::string::npos ? end : end - start);
  if (!result.empty() && result.back() == '\r') result.pop_back();
  return result;
}

int ColumnOf(const std::string& lineText, const std::string& identifier) {
  if (!identifier.empty()) {
    std::size_t at = lineText.find(identifier);
    if (at != std::string::npos) return static_cast<int>(at + 1);
  }
  std::size_t first = lineText.find_first_not_of(" \t");
  return first == std::string::npos ? 1 : static_cast<int>(first + 1);
}

class JsEngine : public Engine {
 public:
  JsEngine() { Init(); }

  std::string Language() const override { return "JScript"; }

  void AddModule(std::string_view module) override {
    if (FindModule(module)) return;
    duk_context* main = heap_->ctx;
    duk_push_thread_new_globalenv(main);
    duk_context* thread = duk_get_context(main, -1);
    duk_push_object(thread);
    duk_push_global_object(main);
    duk_xmove_top(thread, main, 1);
    duk_set_prototype(thread, -2);
    void* global = duk_get_heapptr(thread, -1);
    duk_set_global_object(thread);
    // Keep the thread reachable.
    duk_push_heap_stash(main);
    duk_get_prop_string(main, -1, "modules");
    if (!duk_is_object(main, -1)) {
      duk_pop(main);
      duk_push_array(main);
      duk_dup(main, -1);
      duk_put_prop_string(main, -3, "modules");
    }
    duk_dup(main, -3);
    duk_put_prop_index(main, -2, static_cast<duk_uarridx_t>(modules_.size()));
    duk_pop_3(main);
    modules_.push_back(std::make_unique<Module>(Module{std::string(module), thread, global}));
  }

  void AddCode(std::string_view module, std::string_view code) override {
    Module& m = RequireModule(module);
    int chunk = static_cast<int>(chunks_.size());
    chunks_.emplace_back(code);
    Execute(m, code, chunk, 0, nullptr);
  }

  void AddObject(std::string_view name, ObjectPtr object, bool addMembers) override {
    duk_context* ctx = heap_->ctx;
    object = BindForScript(std::move(object));
    if (std::none_of(objectNames_.begin(), objectNames_.end(),
                     [&](const std::string& n) { return KeyEquals(n, name); }))
      objectNames_.emplace_back(name);
    duk_push_global_object(ctx);
    if (addMembers && object) jscript::DefineMembers(ctx, -1, object, objectNames_);
    duk_push_lstring(ctx, name.data(), name.size());
    jscript::PushVariant(ctx, Variant(std::move(object)));
    duk_def_prop(ctx, -3,
                 DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_SET_CONFIGURABLE |
                     DUK_DEFPROP_CLEAR_ENUMERABLE | DUK_DEFPROP_FORCE);
    duk_pop(ctx);
  }

  std::vector<ProcedureInfo> Procedures(std::string_view module) const override {
    std::vector<ProcedureInfo> result;
    const Module* m = FindModule(module);
    if (!m) return result;
    duk_context* ctx = heap_->ctx;
    duk_push_heapptr(ctx, m->global);
    duk_enum(ctx, -1, DUK_ENUM_OWN_PROPERTIES_ONLY);
    while (duk_next(ctx, -1, 0)) {
      std::string name = duk_get_string(ctx, -1);
      duk_get_prop_desc(ctx, -3, 0);  // the descriptor, so that no getter runs
      duk_get_prop_string(ctx, -1, "value");
      if (duk_is_function(ctx, -1)) {
        duk_get_prop_string(ctx, -1, "length");
        result.push_back({name, duk_get_int(ctx, -1), true});
        duk_pop(ctx);
      }
      duk_pop_2(ctx);
    }
    duk_pop_2(ctx);
    return result;
  }

  ProcedureHandle FindProcedure(std::string_view module, std::string_view name) const override {
    const Module* m = FindModule(module);
    if (!m) return nullptr;
    std::string key = m->name + '\n' + std::string(name);
    auto it = procedures_.find(key);
    if (it != procedures_.end()) return it->second.get();
    std::string text(name);
    Lookup lookup{m->global, text.c_str()};
    duk_context* ctx = heap_->ctx;
    if (duk_safe_call(ctx, LookupFunction, &lookup, 0, 1) != DUK_EXEC_SUCCESS)
      lookup.isFunction = false;
    duk_pop(ctx);
    if (!lookup.isFunction) return nullptr;
    auto procedure = std::make_unique<Procedure>(Procedure{m, text});
    const Procedure* handle = procedure.get();
    procedures_.emplace(key, std::move(procedure));
    return handle;
  }

  Variant Call(ProcedureHandle handle, std::span<Variant> args) override {
    const auto* procedure = static_cast<const Procedure*>(handle);
    duk_context* ctx = heap_->ctx;
    CallScope scope(*heap_, timeout_);
    duk_idx_t base = duk_get_top(ctx);
    duk_push_heapptr(ctx, procedure->module->global);
    duk_push_lstring(ctx, procedure->name.data(), procedure->name.size());
    for (const Variant& arg : args) jscript::PushVariant(ctx, arg);
    if (Failed(ctx, duk_pcall_prop(ctx, base, static_cast<duk_idx_t>(args.size()))))
      Raise(ctx, false, base, -1);
    Variant result = jscript::ToVariant(ctx, -1);
    duk_set_top(ctx, base);
    return result;
  }

  Variant Eval(std::string_view module, std::string_view expression) override {
    Variant result;
    ExecuteEval(RequireModule(module), expression, &result);
    return result;
  }

  void ExecuteStatement(std::string_view module, std::string_view statements) override {
    ExecuteEval(RequireModule(module), statements, nullptr);
  }

  void Reset() override {
    procedures_.clear();
    modules_.clear();
    objectNames_.clear();
    chunks_.clear();
    heap_.reset();
    Init();
  }

  void SetTimeout(int milliseconds) override { timeout_ = milliseconds; }

 private:
  struct Module {
    std::string name;
    duk_context* ctx;
    void* global;
  };
  struct Procedure {
    const Module* module;
    std::string name;
  };

  // Opens a call into the heap for its time limit; the outermost one also
  // lets go of the host object wrappers that nothing holds any more.
  class CallScope {
   public:
    CallScope(Heap& heap, int timeout) : heap_(heap) { jscript::BeginCall(heap, timeout); }
    ~CallScope() {
      jscript::EndCall(heap_);
      if (heap_.clock.depth == 0) jscript::SweepWrappers(heap_.ctx);
    }
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

   private:
    Heap& heap_;
  };

  // Whether a call failed: by its result, or because its time ran out, in
  // which case the time-out error replaces what the call left on the stack.
  static bool Failed(duk_context* ctx, duk_int_t result) {
    return jscript::TakeTimeout(ctx) || result != DUK_EXEC_SUCCESS;
  }

  void Init() {
    heap_ = std::make_shared<Heap>();
    jscript::InstallBridge(heap_->ctx);
    duk_context* ctx = heap_->ctx;
    duk_push_global_object(ctx);
    void* global = duk_get_heapptr(ctx, -1);
    duk_pop(ctx);
    modules_.push_back(std::make_unique<Module>(Module{std::string(kGlobalModule), ctx, global}));
  }

  const Module* FindModule(std::string_view name) const {
    if (name.empty()) return modules_.front().get();
    for (const auto& m : modules_)
      if (KeyEquals(m->name, name)) return m.get();
    return nullptr;
  }

  Module& RequireModule(std::string_view name) {
    const Module* m = FindModule(name);
    if (!m) throw VbError(35);
    return const_cast<Module&>(*m);
  }

  void ExecuteEval(Module& m, std::string_view code, Variant* result) {
    // The text of the latest Eval takes the slot after the added code, so
    // that its errors can show their line.
    int chunk = static_cast<int>(chunks_.size());
    chunks_.emplace_back(code);
    struct PopChunk {
      decltype(chunks_)& chunks;
      ~PopChunk() { chunks.pop_back(); }
    } pop{chunks_};
    Execute(m, code, chunk, DUK_COMPILE_EVAL, result);
  }

  void Execute(Module& m, std::string_view code, int chunk, duk_uint_t flags, Variant* result) {
    duk_context* ctx = m.ctx;
    CallScope scope(*heap_, timeout_);
    duk_idx_t base = duk_get_top(ctx);
    std::string checked =
        jscript::InsertLoopChecks(code, jscript::kCheckFunction, jscript::kTurnCounter);
    duk_push_lstring(ctx, checked.data(), checked.size());
    duk_push_string(ctx, std::to_string(chunk).c_str());
    if (duk_pcompile(ctx, flags) != DUK_EXEC_SUCCESS) Raise(ctx, true, base, chunk);
    if (Failed(ctx, duk_pcall(ctx, 0))) Raise(ctx, false, base, chunk);
    if (result) *result = jscript::ToVariant(ctx, -1);
    duk_set_top(ctx, base);
  }

  // Turns the error on top of the stack into ScriptError.
  [[noreturn]] void Raise(duk_context* ctx, bool compile, duk_idx_t base, int chunk) {
    jscript::JsErrorInfo info = jscript::DescribeError(ctx, -1, compile);
    duk_set_top(ctx, base);
    if (!info.fileName.empty() &&
        info.fileName.find_first_not_of("0123456789") == std::string::npos)
      chunk = std::stoi(info.fileName);
    std::string lineText;
    if (chunk >= 0 && chunk < static_cast<int>(chunks_.size()))
      lineText = LineOf(chunks_[static_cast<std::size_t>(chunk)], info.line);
    int column = info.line > 0 ? ColumnOf(lineText, info.identifier) : 0;
    std::string source = !info.source.empty() ? info.source
                         : compile            ? kCompileSource
                                              : kRuntimeSource;
    throw ScriptError(info.number, info.description, source, info.line, column, lineText);
  }

  std::shared_ptr<Heap> heap_;
  std::vector<std::unique_ptr<Module>> modules_;
  mutable std::map<std::string, std::unique_ptr<Procedure>> procedures_;
  std::vector<std::string> chunks_;
  std::vector<std::string> objectNames_;  // added by AddObject, in order
  int timeout_ = -1;
};

}  // namespace

std::unique_ptr<Engine> CreateJScriptEngine() {
  return std::make_unique<JsEngine>();
}

}  // namespace ketrova::script
