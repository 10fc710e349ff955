#include "platform/script/jscript/js_timeout.h"

#include <string>

#include "platform/script/engine.h"
#include "platform/script/jscript/js_errors.h"

namespace ketrova::script::jscript {

namespace {

// How many host calls pass between two readings of the clock. Each costs a
// microsecond or more, so reading the clock stays out of the profile.
constexpr int kCallsPerReading = 256;

constexpr const char* kTimeoutKey = "timeout";

// Makes the time-out error and keeps it for TakeTimeout.
void PushTimeoutError(duk_context* ctx) {
  PushHostError(ctx, VbError(kTimeoutErrorNumber, std::string(kTimeoutErrorText)));
  duk_dup_top(ctx);
  HeapOf(ctx).stashed.timeoutError = Stash(ctx, kTimeoutKey);
}

// Throws the time-out error when the time is up or was up before; from then
// on every check comes here.
void CheckClock(duk_context* ctx) {
  Heap& heap = HeapOf(ctx);
  if (!heap.clock.expired) {
    if (std::chrono::steady_clock::now() < heap.clock.deadline) return;
    heap.clock.expired = true;
    heap.clock.countdown = 0;
    PushTimeoutError(ctx);
  } else {
    duk_push_heapptr(ctx, heap.stashed.timeoutError);
  }
  duk_throw(ctx);
}

// Called by the loops every kTurnsPerCheck turns: reads the clock.
duk_ret_t CheckFunction(duk_context* ctx) {
  if (HeapOf(ctx).clock.limited) CheckClock(ctx);
  duk_push_int(ctx, kTurnsPerCheck);
  return 1;
}

}  // namespace

void InstallTimeCheck(duk_context* ctx) {
  duk_push_global_object(ctx);
  duk_push_string(ctx, kCheckFunction);
  duk_push_c_function(ctx, CheckFunction, 0);
  duk_def_prop(ctx, -3,
               DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_CLEAR_WRITABLE |
                   DUK_DEFPROP_CLEAR_CONFIGURABLE | DUK_DEFPROP_CLEAR_ENUMERABLE);
  duk_push_string(ctx, kTurnCounter);
  duk_push_int(ctx, 0);
  duk_def_prop(ctx, -3,
               DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_CLEAR_CONFIGURABLE |
                   DUK_DEFPROP_CLEAR_ENUMERABLE);
  duk_pop(ctx);
}

void BeginCall(Heap& heap, int milliseconds) {
  RunClock& clock = heap.clock;
  if (clock.depth++ > 0 || milliseconds <= 0) return;
  clock.limited = true;
  clock.expired = false;
  clock.countdown = kCallsPerReading;
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
  CheckClock(ctx);
  HeapOf(ctx).clock.countdown = kCallsPerReading;
}

}  // namespace ketrova::script::jscript
