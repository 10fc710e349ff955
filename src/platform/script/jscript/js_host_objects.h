// Host objects in JScript. A host Object appears as a Proxy whose property
// reads, writes and calls go to GetIDOfName/Invoke: reading a property gives
// its value, reading a method (or a property that takes arguments) a function
// bound to the object, and calling the proxy itself calls the default member
// (Fields("x")). valueOf and toString give the default value.
//
// Each host object has one wrapper while it is cached: a record set's fields,
// reached record after record, are wrapped once per heap. The cache keeps a
// wrapper, and with it the object, alive; SweepWrappers drops the wrappers of
// objects that nothing else holds, so that an object a script made and let go
// is released, as before, at the latest when the call ends.
#pragma once

#include <duktape.h>

#include <string>
#include <vector>

#include "support/object.h"

namespace ketrova::script::jscript {

// Pushes the wrapper of `object`, which must not be null.
void PushHostObject(duk_context* ctx, const ObjectPtr& object);

// Defines the members of `object` as accessors of the object at `index`
// (the global object), for AddObject with addMembers. Names in `keep` (the
// objects added by name) are left alone: a record set's member Source must not
// hide the object Source.
void DefineMembers(duk_context* ctx, duk_idx_t index, const ObjectPtr& object,
                   const std::vector<std::string>& keep);

// Drops the cached wrappers of objects held by nothing but their wrapper.
// The engine calls it when its outermost call ends.
void SweepWrappers(duk_context* ctx);

// Makes the proxy handler and the wrapper cache of a fresh heap; part of
// InstallBridge.
void InstallHostObjects(duk_context* ctx);

}  // namespace ketrova::script::jscript
