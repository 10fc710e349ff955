// One Duktape heap and what the bridge keeps beside it in C++: the objects it
// made once at start (proxy handler, prototypes, helpers), the cache of host
// object wrappers and the clock of the running call. The heap's user data
// points back at this struct, so a C function reaches it from its context
// with HeapOf.
//
// Made with std::make_shared: Ketrova objects that stand for JS objects keep a
// weak reference to it (weak_from_this) and do nothing once it is gone.
#pragma once

#include <duktape.h>

#include <chrono>
#include <memory>
#include <unordered_map>
#include <vector>

#include "support/object.h"

namespace ketrova::script::jscript {

struct HostBox;

// The time limit of the outermost call into the heap (js_timeout.h).
struct RunClock {
  int depth = 0;         // calls from C++ into the heap that are running
  bool limited = false;  // a limit applies to the running call
  bool expired = false;  // the limit was reached; every check fails until the call ends
  int countdown = 0;     // host calls left until the clock is read again
  std::chrono::steady_clock::time_point deadline;
};

// The JS wrapper of each host object that scripts were handed, so that an
// object reached again (a record set's field, record after record) is not
// wrapped anew (js_host_objects.h).
struct WrapperCache {
  struct Entry {
    duk_uarridx_t slot;  // index in the stash array `wrappers`, which keeps the wrapper alive
    void* wrapper;       // the wrapper itself
    HostBox* box;        // owned by the wrapper
  };
  std::unordered_map<const Object*, Entry> entries;
  std::vector<duk_uarridx_t> freeSlots;
  duk_uarridx_t nextSlot = 0;
  bool added = false;  // entries were added since the last sweep
};

// Objects made once per heap and kept reachable in its stash; C functions
// push them by these pointers instead of looking them up by name.
struct Stashed {
  void* handler = nullptr;       // the proxy handler of host objects
  void* wrappers = nullptr;      // array of cached host object wrappers
  void* refs = nullptr;          // JS objects that C++ holds, by reference number
  void* vbarrayProto = nullptr;  // prototype of VBArray objects
  void* enumProto = nullptr;     // prototype of Enumerator objects
  void* date = nullptr;          // the Date constructor as the heap began
  void* invoke = nullptr;        // JS helper that calls a JS object's member
  void* classOf = nullptr;       // JS helper: Object.prototype.toString
  void* timeOf = nullptr;        // JS helper: a Date's time value
  void* timeoutError = nullptr;  // the error of an expired run, while it unwinds
};

struct Heap : std::enable_shared_from_this<Heap> {
  Heap();
  ~Heap();
  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;

  duk_context* ctx = nullptr;
  long nextRef = 1;
  Stashed stashed;
  WrapperCache wrappers;
  RunClock clock;
};

// The Heap whose context `ctx` is (or a thread of it).
Heap& HeapOf(duk_context* ctx);

// Keeps the value on top of the stack under `name` in the heap stash, pops it
// and answers its pointer.
void* Stash(duk_context* ctx, const char* name);

}  // namespace ketrova::script::jscript
