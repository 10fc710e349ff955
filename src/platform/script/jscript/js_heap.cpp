#include "platform/script/jscript/js_heap.h"

#include <cstdio>
#include <cstdlib>

namespace ketrova::script::jscript {

namespace {

void FatalHandler(void*, const char* message) {
  std::fprintf(stderr, "JScript: fatal error: %s\n", message ? message : "");
  std::abort();
}

}  // namespace

Heap::Heap() {
  ctx = duk_create_heap(nullptr, nullptr, nullptr, this, FatalHandler);
}

Heap::~Heap() {
  if (ctx) duk_destroy_heap(ctx);
}

Heap& HeapOf(duk_context* ctx) {
  duk_memory_functions functions;
  duk_get_memory_functions(ctx, &functions);
  return *static_cast<Heap*>(functions.udata);
}

void* Stash(duk_context* ctx, const char* name) {
  void* object = duk_get_heapptr(ctx, -1);
  duk_push_heap_stash(ctx);
  duk_insert(ctx, -2);
  duk_put_prop_string(ctx, -2, name);
  duk_pop(ctx);
  return object;
}

}  // namespace ketrova::script::jscript
