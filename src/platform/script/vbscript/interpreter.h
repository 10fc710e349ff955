// The interpreter: runs compiled VBScript. It owns the modules, the host's
// objects and the script's Err object, walks the bound syntax tree, and turns
// every failure into a ScriptError with the line and column of the statement
// that failed (unless On Error Resume Next is in force, which records it in
// Err and goes on). Recursion is bounded: too deep a call chain raises 28.
// A run may be given a time limit (SetTimeout).
#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/script/vbscript/program.h"
#include "support/vb_error.h"

namespace ketrova::script::vbscript {

class ClassInstance;
struct Frame;

class Interpreter {
 public:
  Interpreter();
  ~Interpreter();

  // The module of that name (case ignored); created on demand. "Global" is
  // the global module, parent of all others.
  Module& GetModule(std::string_view name);
  Module* FindModule(std::string_view name) const;

  void AddCode(Module& module, std::string_view code);
  void AddObject(std::string_view name, ObjectPtr object, bool addMembers);
  Variant EvalText(Module& module, std::string_view expression);
  void ExecuteText(Module& module, std::string_view statements);
  // Calls a procedure; ByRef arguments are written back into `args`.
  Variant Call(Procedure& proc, ClassInstance* me, std::span<Variant> args);
  void Reset();
  // Milliseconds an outermost call (AddCode's top-level code, EvalText,
  // ExecuteText, Call) may run before it stops with kTimeoutErrorNumber; 0 or
  // less for no limit. Neither On Error Resume Next nor a host object between
  // the script and a nested call can keep it from ending the run.
  void SetTimeout(int milliseconds);

  // Used by class instances.
  Variant InvokeMember(ClassInstance& instance, int member, InvokeKind kind,
                       std::span<Variant> args);
  void Terminate(ClassInstance& instance);

 private:
  struct Impl;
  friend struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ketrova::script::vbscript
