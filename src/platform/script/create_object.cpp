// CreateObjectByProgId: the objects scripts may create by name.
#include "platform/ado/connection.h"
#include "platform/ado/providers/file_providers.h"
#include "platform/ado/recordset.h"
#include "platform/script/ado_binding.h"
#include "platform/script/engine.h"
#include "platform/script/objects/dictionary.h"
#include "platform/script/objects/file_system_object.h"
#include "support/collection.h"

namespace ketrova::script {

ObjectPtr CreateObjectByProgId(std::string_view progId) {
  if (KeyEquals(progId, "Scripting.Dictionary")) return std::make_shared<Dictionary>();
  if (KeyEquals(progId, "Scripting.FileSystemObject")) return std::make_shared<FileSystemObject>();
  if (KeyEquals(progId, "ADODB.Connection")) {
    ado::RegisterFileProviders();
    return BindForScript(std::make_shared<ado::Connection>());
  }
  if (KeyEquals(progId, "ADODB.Recordset")) {
    ado::RegisterFileProviders();  // its Open may take a connection string
    return BindForScript(std::make_shared<ado::Recordset>());
  }
  throw VbError(429);
}

}  // namespace ketrova::script
