// The bridge between Duktape and Ketrova's values and objects, put together
// in a fresh heap by InstallBridge: value conversion (js_values.h), host
// objects as proxies (js_host_objects.h), VBArray, Enumerator and
// ActiveXObject (js_builtins.h), JS objects seen from C++
// (js_script_object.h), errors (js_errors.h) and the time check
// (js_timeout.h).
#pragma once

#include <duktape.h>

namespace ketrova::script::jscript {

// Installs the bridge in the fresh heap of `ctx`.
void InstallBridge(duk_context* ctx);

// Sets the C function `fn` as property `name` of the object at `object`;
// `magic` tells functions that share a body apart.
void PutFunction(duk_context* ctx, duk_idx_t object, const char* name, duk_c_function fn,
                 duk_idx_t nargs, int magic = 0);

// Defines a global function as the built-ins are: writable, configurable,
// not enumerated.
void DefineGlobalFunction(duk_context* ctx, const char* name, duk_c_function fn, duk_idx_t nargs);

}  // namespace ketrova::script::jscript
