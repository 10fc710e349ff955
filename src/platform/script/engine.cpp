#include "platform/script/engine.h"

namespace ketrova::script {

Variant Engine::Run(std::string_view module, std::string_view name, std::span<Variant> args) {
  ProcedureHandle procedure = FindProcedure(module, name);
  if (!procedure) throw VbError(35);
  return Call(procedure, args);
}

}  // namespace ketrova::script
