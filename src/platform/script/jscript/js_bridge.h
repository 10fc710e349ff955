// The bridge between Duktape and Ketrova's values: Variants become JS values
// and back, host Objects appear in JScript as proxies whose property reads,
// writes and calls go to GetIDOfName/Invoke, VB arrays appear as VBArray
// objects, and a VbError raised by a host object becomes a JS error carrying
// JScript's `number` and `description`.
//
// Duktape unwinds with longjmp, so no C++ exception may cross a Duktape call:
// every C function the bridge registers catches its own failures and throws
// them as JS errors once its C++ objects are gone.
#pragma once

#include <duktape.h>

#include <memory>
#include <string>
#include <vector>

#include "support/object.h"
#include "support/variant.h"
#include "support/vb_error.h"

namespace ketrova::script::jscript {

// One Duktape heap; JS objects handed out to C++ keep a weak reference to it.
struct Heap {
  Heap();
  ~Heap();
  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;
  duk_context* ctx = nullptr;
  long nextRef = 1;
};

// Registers the handler, VBArray, Enumerator, ActiveXObject and CreateObject
// in a fresh heap. `self` must own `heap`.
void InstallBridge(const std::shared_ptr<Heap>& heap);

// Pushes a Variant as a JS value.
void PushVariant(duk_context* ctx, const Variant& value);
// The JS value at `index` as a Variant. Whole numbers in the Long range become
// Longs, other numbers Doubles; a JS object that is no host object is wrapped
// as an Object.
Variant ToVariant(duk_context* ctx, duk_idx_t index);

// Defines the members of `object` as accessors of the object at `index`
// (the global object), for AddObject with addMembers. Names in `keep` (the
// objects added by name) are left alone: a record set's member Source must not
// hide the object Source.
void DefineMembers(duk_context* ctx, duk_idx_t index, const ObjectPtr& object,
                   const std::vector<std::string>& keep);

// Pushes a JS Error for a host failure. `number` is VB's number; JScript
// sees it as 0x800A0000 | number when it fits a word.
void PushHostError(duk_context* ctx, const VbError& error);

// The JScript `number` of a VB error number, and back.
std::int32_t EncodeErrorNumber(std::int32_t number);
std::int32_t DecodeErrorNumber(std::int32_t number);

}  // namespace ketrova::script::jscript

namespace ketrova::script::jscript {

// What a thrown JS value says, in JScript's terms.
struct JsErrorInfo {
  std::int32_t number = 0;
  std::string description;
  std::string source;      // empty: the language's own source
  int line = 0;            // 1-based within the compiled text; 0 when not known
  std::string fileName;    // the name the text was compiled under
  std::string identifier;  // the name the error is about, where there is one
};
// Reads the error value at `index`. `compile` when it came from compiling.
JsErrorInfo DescribeError(duk_context* ctx, duk_idx_t index, bool compile);

}  // namespace ketrova::script::jscript
