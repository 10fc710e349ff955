// script::Engine: what the script control needs of a script language. The
// VBScript interpreter and JScript on Duktape both implement it; the script
// control (script_control.h) sits on top and adds VB's Modules, Procedures and
// Error objects.
//
// Code lives in modules. The global module is named kGlobalModule and always
// exists; a named module sees the global module's procedures and variables,
// not the other way round. Code is compiled once per AddCode and may then be run
// many times: the per-record call of a conversion is the hot path, so callers
// look a procedure up once with FindProcedure and Call it by handle.
//
// Every failure is raised as ScriptError, a VbError with the 1-based line and
// column of the fault: VBScript's own numbers and German descriptions ("Typen
// unverträglich" for 13, "Syntaxfehler" for 1002 ...) with the source
// "Laufzeitfehler in VBScript" or "Kompilierungsfehler in VBScript"; JScript's
// with "Laufzeitfehler in JScript" or "Kompilierungsfehler in JScript". A
// compile error anywhere in a text refuses the whole text.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/object.h"
#include "support/variant.h"
#include "support/vb_error.h"

namespace ketrova::script {

inline constexpr std::string_view kGlobalModule = "Global";

class ScriptError : public VbError {
 public:
  ScriptError(std::int32_t number, std::string description, std::string source, int line,
              int column, std::string text = {})
      : VbError(number, std::move(description), std::move(source)),
        Line(line),
        Column(column),
        Text(std::move(text)) {}
  int Line = 0;      // 1-based; 0 when not known
  int Column = 0;    // 1-based; 0 when not known
  std::string Text;  // the source line, where known
};

struct ProcedureInfo {
  std::string Name;
  int NumArgs = 0;
  bool HasReturnValue = false;  // a Function rather than a Sub
};

// What a call raises when it runs longer than the engine's Timeout: VB's
// number for an interrupted run, with a text that names the reason. The source
// is the engine's run-time source, the line and column those of the statement
// at which the run was stopped. A script cannot trap it.
inline constexpr std::int32_t kTimeoutErrorNumber = 18;
inline constexpr std::string_view kTimeoutErrorText =
    "Die Ausführung des Skripts wurde wegen Zeitüberschreitung abgebrochen";

// A procedure found by FindProcedure; valid until the next Reset.
using ProcedureHandle = const void*;

class Engine {
 public:
  virtual ~Engine() = default;

  // "VBScript" or "JScript".
  virtual std::string Language() const = 0;

  // Creates a named module; adding one that exists is a no-op.
  virtual void AddModule(std::string_view module) = 0;
  // Compiles `code` into a module and runs its top-level statements.
  virtual void AddCode(std::string_view module, std::string_view code) = 0;
  // Makes an object known by name to all modules. With addMembers its members
  // also resolve without the object's name.
  virtual void AddObject(std::string_view name, ObjectPtr object, bool addMembers) = 0;

  // The module's procedures in the order they were defined.
  virtual std::vector<ProcedureInfo> Procedures(std::string_view module) const = 0;
  // nullptr when the module has no such procedure (for a named module the
  // global module is searched as well).
  virtual ProcedureHandle FindProcedure(std::string_view module, std::string_view name) const = 0;
  // Calls a procedure with arguments; a Sub answers Empty. Arguments passed by
  // reference are written back into `args`.
  virtual Variant Call(ProcedureHandle procedure, std::span<Variant> args) = 0;
  // FindProcedure + Call; error 35 when there is no such procedure.
  Variant Run(std::string_view module, std::string_view name, std::span<Variant> args);

  // Evaluates an expression / executes statements in a module's scope.
  virtual Variant Eval(std::string_view module, std::string_view expression) = 0;
  virtual void ExecuteStatement(std::string_view module, std::string_view statements) = 0;

  // Drops all code, modules and objects.
  virtual void Reset() = 0;
  // Milliseconds a call (Call, Eval, ExecuteStatement, the top-level code of
  // AddCode) may take before it is stopped with kTimeoutErrorNumber; -1 or 0
  // for no limit. The clock starts when the outermost call begins.
  virtual void SetTimeout(int milliseconds) = 0;

  // A readable listing of the module's compiled code, for diagnosing the
  // interpreter; empty where the engine keeps none it can show (JScript).
  virtual std::string DumpCompiled(std::string_view /*module*/) const { return {}; }
};

std::unique_ptr<Engine> CreateVBScriptEngine();
std::unique_ptr<Engine> CreateJScriptEngine();

// The objects scripts create by ProgID with CreateObject (VBScript) or
// new ActiveXObject (JScript): "Scripting.Dictionary",
// "Scripting.FileSystemObject", "ADODB.Connection", "ADODB.Recordset". Raises
// 429 for any other ProgID.
ObjectPtr CreateObjectByProgId(std::string_view progId);

}  // namespace ketrova::script
