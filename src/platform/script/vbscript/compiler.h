// The compiler: declares what a parsed text defines (global variables,
// constants, procedures, classes) in its module, then binds every name in the
// text to where it lives, once: locals to frame slots, globals to their
// variables, calls to user procedures, built-ins or host objects. A name that
// is unknown when compiling (a global of a later text, an object the host adds
// later) is bound to a run-time lookup. Errors found here (a name defined
// twice, a wrong argument count for a built-in) refuse the whole text.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/script/vbscript/program.h"

namespace ketrova::script::vbscript {

struct CompileScope {
  Module* module = nullptr;
  const std::vector<HostObject>* hosts = nullptr;
  // Code run by Execute or Eval inside a procedure sees that procedure's
  // locals (as outer locals) and its class.
  const Procedure* outer = nullptr;
  ClassDef* outerClass = nullptr;
};

// Compiles a parsed text into a new unit of the scope's module. On error the
// module is left as it was.
std::shared_ptr<Unit> CompileText(ParsedText text, const CompileScope& scope);

// Compiles one expression (for Eval); its hidden slots are counted in `top`.
void CompileExpression(Expr& expr, Procedure& top, const CompileScope& scope);

// Binds a name to the host object of that name or, failing that, to a member
// of an object added with its members; the object added last wins. False
// when no host object knows the name. `lower` is the name in lower case.
bool BindHostName(const std::vector<HostObject>& hosts, const std::string& name,
                  const std::string& lower, Binding& b);

}  // namespace ketrova::script::vbscript
