// The VBScript Engine: modules, procedures and errors over the interpreter.
#include "platform/script/engine.h"

#include "platform/script/ado_binding.h"
#include "platform/script/vbscript/errors.h"
#include "platform/script/vbscript/interpreter.h"
#include "platform/script/vbscript/tree_dump.h"

namespace ketrova::script {
namespace {

using vbscript::Interpreter;
using vbscript::Module;
using vbscript::Procedure;

// Every failure leaves as ScriptError; others become one without a position.
template <typename F>
auto Guarded(F&& f) -> decltype(f()) {
  try {
    return f();
  } catch (const ScriptError&) {
    throw;
  } catch (const VbError& e) {
    throw ScriptError(e.Number, e.Description,
                      e.Source.empty() ? vbscript::kRuntimeErrorSource : e.Source, 0, 0);
  } catch (const std::bad_alloc&) {
    throw ScriptError(7, VbErrorText(7), vbscript::kRuntimeErrorSource, 0, 0);
  } catch (const std::exception& e) {
    throw ScriptError(51, e.what(), vbscript::kRuntimeErrorSource, 0, 0);
  }
}

class VBScriptEngine : public Engine {
 public:
  std::string Language() const override { return "VBScript"; }

  void AddModule(std::string_view module) override { interp_.GetModule(module); }

  void AddCode(std::string_view module, std::string_view code) override {
    Guarded([&] { interp_.AddCode(interp_.GetModule(module), code); });
  }

  void AddObject(std::string_view name, ObjectPtr object, bool addMembers) override {
    interp_.AddObject(name, BindForScript(std::move(object)), addMembers);
  }

  std::string DumpCompiled(std::string_view module) const override {
    Module* m = interp_.FindModule(module);
    return m ? DumpModule(*m) : std::string();
  }

  std::vector<ProcedureInfo> Procedures(std::string_view module) const override {
    std::vector<ProcedureInfo> out;
    Module* m = interp_.FindModule(module);
    if (!m) return out;
    for (const Procedure* p : m->procOrder) {
      ProcedureInfo info;
      info.Name = p->name;
      info.NumArgs = p->numParams;
      info.HasReturnValue = p->returnSlot >= 0;
      out.push_back(std::move(info));
    }
    return out;
  }

  ProcedureHandle FindProcedure(std::string_view module, std::string_view name) const override {
    std::string lower = vbscript::ToLower(name);
    for (Module* m = interp_.FindModule(module); m; m = m->parent) {
      auto it = m->procs.find(lower);
      if (it != m->procs.end()) return it->second;
    }
    return nullptr;
  }

  Variant Call(ProcedureHandle procedure, std::span<Variant> args) override {
    auto* proc = static_cast<Procedure*>(const_cast<void*>(procedure));
    return Guarded([&] { return interp_.Call(*proc, nullptr, args); });
  }

  Variant Eval(std::string_view module, std::string_view expression) override {
    return Guarded([&] { return interp_.EvalText(interp_.GetModule(module), expression); });
  }

  void ExecuteStatement(std::string_view module, std::string_view statements) override {
    Guarded([&] { interp_.ExecuteText(interp_.GetModule(module), statements); });
  }

  void Reset() override { interp_.Reset(); }

  void SetTimeout(int milliseconds) override { interp_.SetTimeout(milliseconds); }

 private:
  mutable Interpreter interp_;
};

}  // namespace

std::unique_ptr<Engine> CreateVBScriptEngine() {
  return std::make_unique<VBScriptEngine>();
}

}  // namespace ketrova::script
