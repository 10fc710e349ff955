// Script views of record access. ado::Connection, Recordset, Fields and Field
// are plain C++ classes; scripts reach them through these bound views, with
// ADO's member names, so that `Destination.Fields("x") = Source.Fields("y")`
// works in VBScript (Fields takes the name, Value is the Field's default
// member) and `.Value` in JScript.
//
// The engines pass every object they are given through BindForScript, and
// so do bound members for the objects they answer, so a host adds or answers
// the ado object itself. A view keeps its ado object alive; views of
// the fields of one record set are made once and reused, since a conversion
// reads and writes them once per record.
#pragma once

#include "support/object.h"

namespace ketrova::script {

// Whether the object is one of the ado classes that scripts see through a view.
bool NeedsScriptView(const Object& object);

// The script view of an ado object; any other object (and a view) unchanged.
ObjectPtr BindForScript(ObjectPtr object);

// The ado object behind a view; any other object unchanged. For arguments a
// script hands back to record access (rs.Open sql, connection).
ObjectPtr UnbindFromScript(ObjectPtr object);

}  // namespace ketrova::script
