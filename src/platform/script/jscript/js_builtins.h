// What JScript offers scripts besides the language: VBArray over a VB array
// (toArray, ubound, lbound, dimensions, getItem), Enumerator over a host
// collection, a VB array or a JS array (atEnd, item, moveNext, moveFirst), and
// ActiveXObject / CreateObject for the objects known by ProgID.
#pragma once

#include <duktape.h>

#include "support/variant.h"

namespace ketrova::script::jscript {

// Pushes a VBArray object for `array`.
void PushVBArray(duk_context* ctx, const ArrayPtr& array);

// Defines VBArray, Enumerator, ActiveXObject and CreateObject in a fresh
// heap; part of InstallBridge.
void InstallBuiltins(duk_context* ctx);

}  // namespace ketrova::script::jscript
