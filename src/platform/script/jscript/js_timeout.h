// The time limit of a call into a heap. The engine opens a call with
// BeginCall and closes it with EndCall; the outermost call starts the clock
// when a limit is given. Scripts meet the clock in two places: the loops call
// kCheckFunction every kTurnsPerCheck turns (js_loop_checks.h), which reads
// the clock under a limit, and every call into a host object runs CheckTime,
// which reads it every few thousand calls.
//
// When the time is up the check throws the time-out error into the script
// (number kTimeoutErrorNumber, with the line of the check). A script may catch
// it, but from then on every check throws it again, and when the call returns
// TakeTimeout makes it the call's error whatever the script did in between.
#pragma once

#include <duktape.h>

#include "platform/script/jscript/js_heap.h"

namespace ketrova::script::jscript {

// The global function the loop checks call, and the global counter of turns
// of loops outside functions.
inline constexpr const char* kCheckFunction = "__ketrovaCheck";
inline constexpr const char* kTurnCounter = "__ketrovaTurns";

// How many loop turns pass between two calls of kCheckFunction. A turn that
// does little costs well under a microsecond, so such a loop overruns the
// limit by a millisecond or so; a loop whose turns are slow overruns it by
// that many turns, unless they call host objects.
inline constexpr int kTurnsPerCheck = 1024;

// Defines kCheckFunction and kTurnCounter in a fresh heap, hidden from
// enumeration, the function not to be replaced by scripts; part of
// InstallBridge.
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
// reached, reading the clock every so many calls. Call it only where no C++ object with a
// destructor is alive: it may leave by longjmp.
inline void CheckTime(duk_context* ctx) {
  RunClock& clock = HeapOf(ctx).clock;
  if (clock.limited && --clock.countdown <= 0) CheckTimeSlow(ctx);
}

}  // namespace ketrova::script::jscript
