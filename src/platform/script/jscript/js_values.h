// Ketrova's Variants as JS values and back. Strings, numbers, booleans, Empty
// (undefined) and Null cross as themselves; dates become JS Dates in local
// time; host objects appear as proxies (js_host_objects.h), VB arrays as
// VBArray objects and JS arrays as one-dimensional VB arrays; any other JS
// object reaches C++ as an Object that calls back into the heap.
#pragma once

#include <duktape.h>

#include "support/variant.h"

namespace ketrova::script::jscript {

// Pushes a Variant as a JS value.
void PushVariant(duk_context* ctx, const Variant& value);

// Pushes a C function's result and answers the count of results.
inline duk_ret_t PushResult(duk_context* ctx, const Variant& value) {
  PushVariant(ctx, value);
  return 1;
}

// The JS value at `index` as a Variant. Whole numbers in the Long range become
// Longs, other numbers Doubles; a JS object that is no host object is wrapped
// as an Object.
Variant ToVariant(duk_context* ctx, duk_idx_t index);

// Keeps what the conversions need of a fresh heap (the Date constructor and
// two helpers) in its stash; part of InstallBridge.
void InstallValues(duk_context* ctx);

}  // namespace ketrova::script::jscript
