// A JS object handed to C++ (a function or object a script stores in a
// Dictionary, passes to a host method or returns): an Object whose members
// are the JS object's properties, so that VBScript-style callers can read,
// write and call them. The JS object is kept in the heap stash while C++
// holds it; once the heap is gone every call raises 424.
#pragma once

#include <duktape.h>

#include "support/object.h"

namespace ketrova::script::jscript {

// The Object for the JS object at `index`.
ObjectPtr ScriptObjectAt(duk_context* ctx, duk_idx_t index);

// Keeps the JS helpers the objects call in the heap stash; part of
// InstallBridge.
void InstallScriptObjects(duk_context* ctx);

}  // namespace ketrova::script::jscript
