#include "platform/script/jscript/js_timeout.h"

#include <string>

#include "platform/script/engine.h"
#include "platform/script/jscript/js_errors.h"

namespace ketrova::script::jscript {

namespace {

// How many checks pass between two readings of the clock. A loop turn that
// does little costs well under a microsecond, so such a loop overruns the
// limit by a millisecond or so, and reading the clock stays out of the
// profile; a loop whose turns are slow overruns it by that many turns.
constexpr int kChecksPerReading = 2048;

constexpr const char* kTimeoutKey = "timeout";

duk_ret_t CheckFunction(duk_context* ctx) {
  CheckTime(ctx);
  duk_push_true(ctx);
  return 1;
}

// Makes the time-out error and keeps it for TakeTimeout.
void PushTimeoutError(duk_context* ctx) {
  PushHostError(ctx, VbError(kTimeoutErrorNumber, std::string(kTimeoutErrorText)));
  duk_dup_top(ctx);
  HeapOf(ctx).stashed.timeoutError = Stash(ctx, kTimeoutKey);
}

}  // namespace

void InstallTimeCheck(duk_context* ctx) {
  duk_push_global_object(ctx);
  duk_push_string(ctx, kCheckFunction);
  duk_push_c_function(ctx, CheckFunction, 0);
  duk_def_prop(ctx, -3,
               DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_CLEAR_WRITABLE |
                   DUK_DEFPROP_CLEAR_CONFIGURABLE | DUK_DEFPROP_CLEAR_ENUMERABLE);
  duk_pop(ctx);
}

void BeginCall(Heap& heap, int milliseconds) {
  RunClock& clock = heap.clock;
  if (clock.depth++ > 0 || milliseconds <= 0) return;
  clock.limited = true;
  clock.expired = false;
  clock.countdown = kChecksPerReading;
  clock.deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

void EndCall(Heap& heap) {
  RunClock& clock = heap.clock;
  if (--clock.depth > 0) return;
  clock.limited = false;
  if (!clock.expired) return;
  clock.expired = false;
  heap.stashed.timeoutError = nullptr;
  duk_push_heap_stash(heap.ctx);
  duk_del_prop_string(heap.ctx, -1, kTimeoutKey);
  duk_pop(heap.ctx);
}

bool TakeTimeout(duk_context* ctx) {
  Heap& heap = HeapOf(ctx);
  if (!heap.clock.expired) return false;
  duk_pop(ctx);
  duk_push_heapptr(ctx, heap.stashed.timeoutError);
  return true;
}

void CheckTimeSlow(duk_context* ctx) {
  RunClock& clock = HeapOf(ctx).clock;
  if (clock.expired) {
    duk_push_heapptr(ctx, HeapOf(ctx).stashed.timeoutError);
    duk_throw(ctx);
  }
  clock.countdown = kChecksPerReading;
  if (std::chrono::steady_clock::now() < clock.deadline) return;
  clock.expired = true;
  PushTimeoutError(ctx);
  duk_throw(ctx);
}

}  // namespace ketrova::script::jscript
