// ScriptControl: the script host that runs the user's logic, with the members
// the conversion engine needs of it: Language, Timeout, Reset, AddCode,
// AddObject, Run, Eval, ExecuteStatement, Modules, Procedures and Error.
//
// It sits on one script::Engine (VBScript or JScript, chosen by Language; a
// new Language starts an empty engine). Code added to the control itself goes
// into the global module; a module made with Modules().Add sees the global
// module's procedures, variables and objects.
//
// A failing call fills Error (number, description, source, line, column and
// the source line) and then raises the error again as ScriptError / VbError,
// so that a caller with error trapping off records it as the pending error.
// Error is cleared at the start of each call and by Error().Clear().
//
// Modules and their Procedures are views: a ScriptModule reference stays
// valid until Reset or a change of Language.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/script/engine.h"
#include "support/collection.h"
#include "support/object.h"
#include "support/variant.h"

namespace ketrova::script {

class ScriptControl;

// The control's Error object.
struct ScriptControlError {
  std::int32_t Number = 0;
  std::string Description;
  std::string Source;
  std::string Text;  // the source line, where known
  int Line = 0;
  int Column = 0;
  void Clear() { *this = ScriptControlError(); }
};

// The procedures of a module, as they were when asked for.
class ScriptProcedures {
 public:
  explicit ScriptProcedures(std::vector<ProcedureInfo> items) : items_(std::move(items)) {}
  std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }
  // 1-based; 9 for a position out of range.
  const ProcedureInfo& Item(std::int32_t index) const;
  // By name, without regard to case; 5 when there is none.
  const ProcedureInfo& Item(std::string_view name) const;

 private:
  std::vector<ProcedureInfo> items_;
};

class ScriptModule {
 public:
  ScriptModule(ScriptControl& control, std::string name)
      : control_(&control), name_(std::move(name)) {}
  const std::string& Name() const { return name_; }
  void AddCode(std::string_view code);
  Variant Run(std::string_view procedure, std::span<Variant> args = {});
  Variant Eval(std::string_view expression);
  void ExecuteStatement(std::string_view statements);
  ScriptProcedures Procedures() const;

 private:
  ScriptControl* control_;
  std::string name_;
};

// The modules; the global module is always item 1.
class ScriptModules {
 public:
  explicit ScriptModules(ScriptControl& control) : control_(&control) {}
  // Adds a module, or answers the one of that name.
  ScriptModule& Add(std::string_view name);
  std::int32_t Count() const { return modules_.Count(); }
  ScriptModule& Item(std::int32_t index) const { return modules_.Item(index); }
  ScriptModule& Item(std::string_view name) const { return modules_.Item(name); }
  void Clear();

 private:
  ScriptControl* control_;
  Collection<ScriptModule> modules_;
};

class ScriptControl {
 public:
  // Language "VBScript", Timeout -1 (no limit).
  ScriptControl();
  ~ScriptControl();

  const std::string& Language() const { return language_; }
  // "VBScript" or "JScript", in any case; 380 for any other. Drops all code,
  // modules and objects.
  void SetLanguage(std::string_view language);
  int Timeout() const { return timeout_; }
  void SetTimeout(int milliseconds);

  // Drops all code, modules and objects.
  void Reset();
  void AddCode(std::string_view code);
  void AddObject(std::string_view name, ObjectPtr object, bool addMembers = false);
  Variant Run(std::string_view procedure, std::span<Variant> args = {});
  Variant Eval(std::string_view expression);
  void ExecuteStatement(std::string_view statements);

  // The listing of the global module's compiled code (VBScript), for
  // diagnosing the interpreter; empty for JScript.
  std::string DumpCompiled() const;

  ScriptModules& Modules() { return modules_; }
  // The procedures of the global module.
  ScriptProcedures Procedures() const;
  ScriptControlError& Error() { return error_; }
  const ScriptControlError& Error() const { return error_; }

  // The hot path: look a procedure up once, call it per record. Call fills
  // Error as the other calls do.
  ProcedureHandle FindProcedure(std::string_view module, std::string_view name) const;
  Variant Call(ProcedureHandle procedure, std::span<Variant> args);

 private:
  friend class ScriptModule;
  friend class ScriptModules;
  Engine& engine() const;
  // Runs one call of the engine, filling Error when it fails.
  template <typename F>
  auto Guarded(F&& call) -> decltype(call());

  std::string language_;
  int timeout_ = -1;
  std::unique_ptr<Engine> engine_;
  ScriptModules modules_;
  ScriptControlError error_;
};

}  // namespace ketrova::script
