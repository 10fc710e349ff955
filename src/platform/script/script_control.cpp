#include "platform/script/script_control.h"

namespace ketrova::script {

namespace {

std::unique_ptr<Engine> MakeEngine(const std::string& language) {
  return language == "JScript" ? CreateJScriptEngine() : CreateVBScriptEngine();
}

}  // namespace

// --- ScriptProcedures, ScriptModule, ScriptModules

const ProcedureInfo& ScriptProcedures::Item(std::int32_t index) const {
  if (index < 1 || index > Count()) throw VbError(9);
  return items_[static_cast<std::size_t>(index - 1)];
}

const ProcedureInfo& ScriptProcedures::Item(std::string_view name) const {
  for (const auto& item : items_)
    if (KeyEquals(item.Name, name)) return item;
  throw VbError(5);
}

void ScriptModule::AddCode(std::string_view code) {
  control_->Guarded([&] { control_->engine().AddCode(name_, code); });
}

Variant ScriptModule::Run(std::string_view procedure, std::span<Variant> args) {
  return control_->Guarded([&] { return control_->engine().Run(name_, procedure, args); });
}

Variant ScriptModule::Eval(std::string_view expression) {
  return control_->Guarded([&] { return control_->engine().Eval(name_, expression); });
}

void ScriptModule::ExecuteStatement(std::string_view statements) {
  control_->Guarded([&] { control_->engine().ExecuteStatement(name_, statements); });
}

ScriptProcedures ScriptModule::Procedures() const {
  return ScriptProcedures(control_->engine().Procedures(name_));
}

ScriptModule& ScriptModules::Add(std::string_view name) {
  if (ScriptModule* existing = modules_.Find(name)) return *existing;
  if (!modules_.Empty()) control_->Guarded([&] { control_->engine().AddModule(name); });
  return modules_.Add(std::make_unique<ScriptModule>(*control_, std::string(name)),
                      std::string(name));
}

void ScriptModules::Clear() {
  modules_.Clear();
  modules_.Add(std::make_unique<ScriptModule>(*control_, std::string(kGlobalModule)),
               std::string(kGlobalModule));
}

// --- ScriptControl

ScriptControl::ScriptControl() : modules_(*this) {
  SetLanguage("VBScript");
}

ScriptControl::~ScriptControl() = default;

template <typename F>
auto ScriptControl::Guarded(F&& call) -> decltype(call()) {
  error_.Clear();
  try {
    return call();
  } catch (const ScriptError& e) {
    error_.Number = e.Number;
    error_.Description = e.Description;
    error_.Source = e.Source;
    error_.Line = e.Line;
    error_.Column = e.Column;
    error_.Text = e.Text;
    throw;
  } catch (const VbError& e) {
    error_.Number = e.Number;
    error_.Description = e.Description;
    error_.Source = e.Source;
    throw;
  }
}

Engine& ScriptControl::engine() const {
  if (!engine_) throw VbError(429);
  return *engine_;
}

void ScriptControl::SetLanguage(std::string_view language) {
  std::string name;
  if (KeyEquals(language, "VBScript")) {
    name = "VBScript";
  } else if (KeyEquals(language, "JScript")) {
    name = "JScript";
  } else {
    throw VbError(380, "Ungültiger Eigenschaftswert");
  }
  language_ = name;
  engine_ = MakeEngine(language_);
  if (engine_) engine_->SetTimeout(timeout_);
  modules_.Clear();
  error_.Clear();
}

void ScriptControl::SetTimeout(int milliseconds) {
  timeout_ = milliseconds;
  if (engine_) engine_->SetTimeout(milliseconds);
}

void ScriptControl::Reset() {
  if (engine_) engine_->Reset();
  modules_.Clear();
  error_.Clear();
}

void ScriptControl::AddCode(std::string_view code) {
  modules_.Item(1).AddCode(code);
}

void ScriptControl::AddObject(std::string_view name, ObjectPtr object, bool addMembers) {
  Guarded([&] { engine().AddObject(name, std::move(object), addMembers); });
}

Variant ScriptControl::Run(std::string_view procedure, std::span<Variant> args) {
  return modules_.Item(1).Run(procedure, args);
}

Variant ScriptControl::Eval(std::string_view expression) {
  return modules_.Item(1).Eval(expression);
}

void ScriptControl::ExecuteStatement(std::string_view statements) {
  modules_.Item(1).ExecuteStatement(statements);
}

std::string ScriptControl::DumpCompiled() const {
  return engine().DumpCompiled(kGlobalModule);
}

ScriptProcedures ScriptControl::Procedures() const {
  return modules_.Item(1).Procedures();
}

ProcedureHandle ScriptControl::FindProcedure(std::string_view module, std::string_view name) const {
  return engine().FindProcedure(module, name);
}

Variant ScriptControl::Call(ProcedureHandle procedure, std::span<Variant> args) {
  return Guarded([&] { return engine().Call(procedure, args); });
}

}  // namespace ketrova::script
