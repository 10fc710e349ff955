// The time limit of a call into a heap. The engine opens a call with
// BeginCall and closes it with EndCall; the outermost call starts the clock
// when a limit is given. Scripts meet the clock in CheckTime, which the loop
// checks (js_loop_checks.h) and every call into a host object run: it reads
// the steady clock only every few thousand checks, and only under a limit.
//
// When the time is up CheckTime throws the time-out error into the script
// (number kTimeoutErrorNumber, with the line of the check). A script may catch
// it, but from then on every check throws it again, and when the call returns
// TakeTimeout makes it the call's error whatever the script did in between.
#pragma once

#include <duktape.h>

#include "platform/script/jscript/js_heap.h"

namespace ketrova::script::jscript {

// The global function the loop checks call.
inline constexpr const char* kCheckFunction = "__ketrovaCheck";

// Defines kCheckFunction in a fresh heap, hidden from enumeration and not to
// be replaced by scripts; part of InstallBridge.
void InstallTimeCheck(duk_context* ctx);

// `milliseconds` > 0 limits the call if it is the outermost one.
void BeginCall(Heap& heap, int milliseconds);
// The outermost call's end stops the clock and forgets an expiry.
void EndCall(Heap& heap);

// After a call: when its time ran out, replaces the value on top of the stack
// by the time-out error and answers true.
bool TakeTimeout(duk_context* ctx);

void CheckTimeSlow(duk_context* ctx);

// Throws the time-out error into the running script when the limit is
// reached. Call it only where no C++ object with a destructor is alive: it may
// leave by longjmp.
inline void CheckTime(duk_context* ctx) {
  RunClock& clock = HeapOf(ctx).clock;
  if (clock.limited && --clock.countdown <= 0) CheckTimeSlow(ctx);
}

}  // namespace ketrova::script::jscript
