// Errors between Duktape and Ketrova: a VbError raised by a host object
// becomes a JS error carrying JScript's `number` and `description`, and a
// thrown JS value is read back as number, description, source and line.
//
// Duktape unwinds with longjmp, so no C++ exception may cross a Duktape call:
// every C function the bridge registers runs its body in Guard, which catches
// the failure and throws it as a JS error once the body's C++ objects are gone.
#pragma once

#include <duktape.h>

#include <cstdint>
#include <exception>
#include <string>

#include "support/vb_error.h"

namespace ketrova::script::jscript {

// Pushes a JS Error for a host failure. `number` is VB's number; JScript
// sees it as 0x800A0000 | number when it fits a word.
void PushHostError(duk_context* ctx, const VbError& error);

// The JScript `number` of a VB error number, and back.
std::int32_t EncodeErrorNumber(std::int32_t number);
std::int32_t DecodeErrorNumber(std::int32_t number);

// Runs `body`, which pushes its results and answers their count; a C++
// exception becomes a thrown JS error once the handler is left.
template <typename Body>
duk_ret_t Guard(duk_context* ctx, Body&& body) {
  try {
    return body();
  } catch (const VbError& e) {
    PushHostError(ctx, e);
  } catch (const std::exception& e) {
    PushHostError(ctx, VbError(440, e.what()));
  }
  return duk_throw(ctx);
}

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
