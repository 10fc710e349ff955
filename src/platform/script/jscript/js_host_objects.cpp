#include "platform/script/jscript/js_host_objects.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string_view>

#include "platform/script/binding.h"
#include "platform/script/jscript/js_boxes.h"
#include "platform/script/jscript/js_bridge.h"
#include "platform/script/jscript/js_errors.h"
#include "platform/script/jscript/js_heap.h"
#include "platform/script/jscript/js_timeout.h"
#include "platform/script/jscript/js_values.h"
#include "support/collection.h"

namespace ketrova::script::jscript {

namespace {

// The bound functions a wrapper has handed out, by member id, so that a
// method read again is not bound anew.
constexpr char kMethodsKey[] =
    "\xFF"
    "methods";

// A loop that makes host objects must not grow the cache without bound: at
// this size it is swept at once, and emptied if that frees nothing.
constexpr std::size_t kMaxWrappers = 4096;

duk_ret_t FinalizeHost(duk_context* ctx) {
  return FinalizeBox<HostBox>(ctx, kObjectKey);
}

// Gives the function or object on top of the stack a box holding `object`.
HostBox* AttachBox(duk_context* ctx, const ObjectPtr& object) {
  auto* box = new HostBox(object);
  duk_push_pointer(ctx, box);
  duk_put_prop_literal(ctx, -2, kObjectKey);
  duk_push_c_function(ctx, FinalizeHost, 1);
  duk_set_finalizer(ctx, -2);
  return box;
}

// The box of the C function being run.
HostBox* CurrentBox(duk_context* ctx) {
  duk_push_current_function(ctx);
  HostBox* box = BoxAt<HostBox>(ctx, -1, kObjectKey);
  duk_pop(ctx);
  return box;
}

int CurrentId(duk_context* ctx) {
  duk_push_current_function(ctx);
  duk_get_prop_literal(ctx, -1, kIdKey);
  int id = duk_get_int(ctx, -1);
  duk_pop_2(ctx);
  return id;
}

// Calls a member with the arguments on the stack; a few need no allocation.
Variant CallWithStack(duk_context* ctx, Object& object, int dispId) {
  auto count = static_cast<std::size_t>(duk_get_top(ctx));
  Variant few[4];
  std::vector<Variant> many(count > std::size(few) ? count : 0);
  std::span<Variant> args =
      many.empty() ? std::span<Variant>(few, count) : std::span<Variant>(many);
  for (std::size_t i = 0; i < count; ++i) args[i] = ToVariant(ctx, static_cast<duk_idx_t>(i));
  return object.Invoke(dispId, InvokeKind::kMethod, args);
}

// A method of a host object bound to it: calling it invokes the member.
duk_ret_t MemberCall(duk_context* ctx) {
  CheckTime(ctx);
  HostBox* box = CurrentBox(ctx);
  int dispId = CurrentId(ctx);
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    return PushResult(ctx, CallWithStack(ctx, *box->object, dispId));
  });
}

// Calling a wrapper calls the object's default member (Fields("x")). The
// proxy handler has no apply trap, so the call reaches its target, this
// function, with the arguments on the stack as they are.
duk_ret_t DefaultCall(duk_context* ctx) {
  CheckTime(ctx);
  HostBox* box = CurrentBox(ctx);
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    return PushResult(ctx, CallWithStack(ctx, *box->object, kDispIdValue));
  });
}

// Pushes the proxy target of a host object, holding the object.
HostBox* PushHostTarget(duk_context* ctx, const ObjectPtr& object) {
  duk_push_c_function(ctx, DefaultCall, DUK_VARARGS);
  return AttachBox(ctx, object);
}

// The default value of a host object as valueOf (id 0) / toString (id 1).
duk_ret_t DefaultValue(duk_context* ctx) {
  HostBox* box = CurrentBox(ctx);
  bool asText = CurrentId(ctx) != 0;
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    Variant value;
    try {
      value = box->object->Invoke(kDispIdValue, InvokeKind::kPropertyGet, {});
    } catch (const VbError&) {
      value = "[object " + box->object->TypeName() + "]";
    }
    if (asText) return PushResult(ctx, Variant(value.ToText()));
    return PushResult(ctx, value);
  });
}

// Pushes `fn` bound to the object of `box`, made once per wrapper `target`
// and kept in its methods under `name`, or else under the member id (not for
// ids below 0). The function holds the object itself, not the target, so
// that no cycle keeps the wrapper alive.
void PushBoundFunction(duk_context* ctx, duk_idx_t target, const HostBox& box, duk_c_function fn,
                       int id, const char* name = nullptr) {
  target = duk_normalize_index(ctx, target);
  bool keep = name || id >= 0;
  if (keep) {
    if (!duk_get_prop_literal(ctx, target, kMethodsKey)) {
      duk_pop(ctx);
      duk_push_bare_object(ctx);
      duk_dup_top(ctx);
      duk_put_prop_literal(ctx, target, kMethodsKey);
    }
    bool found = name ? duk_get_prop_string(ctx, -1, name)
                      : duk_get_prop_index(ctx, -1, static_cast<duk_uarridx_t>(id));
    if (found) {
      duk_remove(ctx, -2);
      return;
    }
    duk_pop(ctx);
  }
  duk_push_c_function(ctx, fn, DUK_VARARGS);
  AttachBox(ctx, box.object);
  duk_push_int(ctx, id);
  duk_put_prop_literal(ctx, -2, kIdKey);
  if (!keep) return;
  duk_dup_top(ctx);
  if (name)
    duk_put_prop_string(ctx, -3, name);
  else
    duk_put_prop_index(ctx, -3, static_cast<duk_uarridx_t>(id));
  duk_remove(ctx, -2);
}

// Reading a member: a property's value, or a function for what must be
// called (methods and properties with arguments).
void PushMember(duk_context* ctx, duk_idx_t target, const HostBox& box, std::string_view name) {
  Object& object = *box.object;
  int dispId = object.GetIDOfName(name);
  if (dispId == kDispIdUnknown) {
    if (name == "valueOf" || name == "toString") {
      bool asText = name == "toString";
      PushBoundFunction(ctx, target, box, DefaultValue, asText ? 1 : 0,
                        asText ? "toString" : "valueOf");
      return;
    }
    throw VbError(438);
  }
  if (box.shapes) {
    if (box.shapes->NeedsCall(dispId))
      return PushBoundFunction(ctx, target, box, MemberCall, dispId);
    PushVariant(ctx, object.Invoke(dispId, InvokeKind::kPropertyGet, {}));
    return;
  }
  Variant value;
  try {
    value = object.Invoke(dispId, InvokeKind::kPropertyGet, {});
  } catch (const VbError& e) {
    if (e.Number != 450) throw;
    PushBoundFunction(ctx, target, box, MemberCall, dispId);
    return;
  }
  PushVariant(ctx, value);
}

void PutMember(Object& object, std::string_view name, const Variant& value) {
  int dispId = object.GetIDOfName(name);
  if (dispId == kDispIdUnknown) throw VbError(438);
  Variant args[1] = {value};
  object.Invoke(dispId, value.IsObject() ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut,
                args);
}

// The name a trap is asked about; null for symbols, which host objects do
// not have.
const char* KeyName(duk_context* ctx, duk_idx_t index) {
  if (duk_is_symbol(ctx, index) || !duk_is_string(ctx, index)) return nullptr;
  return duk_get_string(ctx, index);
}

// Proxy traps: (target, key, receiver), (target, key, value, receiver),
// (target, key).
duk_ret_t TrapGet(duk_context* ctx) {
  CheckTime(ctx);
  const char* key = KeyName(ctx, 1);
  if (!key) {
    duk_push_undefined(ctx);
    return 1;
  }
  HostBox* box = BoxAt<HostBox>(ctx, 0, kObjectKey);
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    PushMember(ctx, 0, *box, key);
    return 1;
  });
}

duk_ret_t TrapSet(duk_context* ctx) {
  CheckTime(ctx);
  const char* key = KeyName(ctx, 1);
  if (!key) {
    duk_push_false(ctx);
    return 1;
  }
  HostBox* box = BoxAt<HostBox>(ctx, 0, kObjectKey);
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    PutMember(*box->object, key, ToVariant(ctx, 2));
    duk_push_true(ctx);
    return 1;
  });
}

duk_ret_t TrapHas(duk_context* ctx) {
  CheckTime(ctx);
  HostBox* box = BoxAt<HostBox>(ctx, 0, kObjectKey);
  const char* key = KeyName(ctx, 1);
  bool has = false;
  if (box && key) {
    try {
      has = box->object->GetIDOfName(key) != kDispIdUnknown;
    } catch (const std::exception&) {
      has = false;
    }
  }
  duk_push_boolean(ctx, has);
  return 1;
}

// Accessors for the members of an object added with addMembers: the function
// holds the wrapper target and the member's name.
duk_ret_t GlobalMemberGet(duk_context* ctx) {
  CheckTime(ctx);
  duk_push_current_function(ctx);
  duk_get_prop_literal(ctx, -1, kNameKey);
  const char* name = duk_get_string(ctx, -1);
  duk_get_prop_literal(ctx, -2, kTargetKey);
  HostBox* box = BoxAt<HostBox>(ctx, -1, kObjectKey);
  duk_idx_t target = duk_get_top_index(ctx);
  return Guard(ctx, [&] {
    if (!box || !name) throw VbError(424);
    PushMember(ctx, target, *box, name);
    return 1;
  });
}

duk_ret_t GlobalMemberSet(duk_context* ctx) {
  CheckTime(ctx);
  duk_push_current_function(ctx);
  duk_get_prop_literal(ctx, -1, kTargetKey);
  HostBox* box = BoxAt<HostBox>(ctx, -1, kObjectKey);
  duk_get_prop_literal(ctx, -2, kNameKey);
  const char* name = duk_get_string(ctx, -1);
  return Guard(ctx, [&] {
    if (!box || !name) throw VbError(424);
    PutMember(*box->object, name, ToVariant(ctx, 0));
    return 0;
  });
}

void PushAccessor(duk_context* ctx, duk_c_function fn, duk_idx_t nargs, duk_idx_t target,
                  const std::string& name) {
  duk_push_c_function(ctx, fn, nargs);
  duk_dup(ctx, target);
  duk_put_prop_literal(ctx, -2, kTargetKey);
  duk_push_string(ctx, name.c_str());
  duk_put_prop_literal(ctx, -2, kNameKey);
}

// Drops cached wrappers: those whose object nothing else holds, or all.
void Sweep(duk_context* ctx, bool all) {
  Heap& heap = HeapOf(ctx);
  WrapperCache& cache = heap.wrappers;
  duk_push_heapptr(ctx, heap.stashed.wrappers);
  for (auto it = cache.entries.begin(); it != cache.entries.end();) {
    if (all || it->second.box->object.use_count() == 1) {
      // The wrapper may be finalized right here, which deletes its box.
      duk_push_undefined(ctx);
      duk_put_prop_index(ctx, -2, it->second.slot);
      cache.freeSlots.push_back(it->second.slot);
      it = cache.entries.erase(it);
    } else {
      ++it;
    }
  }
  duk_pop(ctx);
  cache.added = false;
}

}  // namespace

void PushHostObject(duk_context* ctx, const ObjectPtr& object) {
  Heap& heap = HeapOf(ctx);
  WrapperCache& cache = heap.wrappers;
  auto it = cache.entries.find(object.get());
  if (it != cache.entries.end()) {
    duk_push_heapptr(ctx, it->second.wrapper);
    return;
  }
  if (cache.entries.size() >= kMaxWrappers) {
    Sweep(ctx, false);
    if (cache.entries.size() >= kMaxWrappers) Sweep(ctx, true);
  }
  HostBox* box = PushHostTarget(ctx, object);
  duk_push_heapptr(ctx, heap.stashed.handler);
  duk_push_proxy(ctx, 0);
  duk_uarridx_t slot = cache.nextSlot;
  if (cache.freeSlots.empty()) {
    ++cache.nextSlot;
  } else {
    slot = cache.freeSlots.back();
    cache.freeSlots.pop_back();
  }
  duk_push_heapptr(ctx, heap.stashed.wrappers);
  duk_dup(ctx, -2);
  duk_put_prop_index(ctx, -2, slot);
  duk_pop(ctx);
  cache.entries.emplace(object.get(), WrapperCache::Entry{slot, duk_get_heapptr(ctx, -1), box});
  cache.added = true;
}

void DefineMembers(duk_context* ctx, duk_idx_t index, const ObjectPtr& object,
                   const std::vector<std::string>& keep) {
  index = duk_normalize_index(ctx, index);
  PushHostTarget(ctx, object);
  duk_idx_t target = duk_get_top_index(ctx);
  for (const std::string& name : object->MemberNames()) {
    if (std::any_of(keep.begin(), keep.end(),
                    [&](const std::string& k) { return KeyEquals(k, name); }))
      continue;
    duk_push_string(ctx, name.c_str());
    PushAccessor(ctx, GlobalMemberGet, 0, target, name);
    PushAccessor(ctx, GlobalMemberSet, 1, target, name);
    duk_def_prop(ctx, index,
                 DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | DUK_DEFPROP_SET_CONFIGURABLE |
                     DUK_DEFPROP_CLEAR_ENUMERABLE | DUK_DEFPROP_FORCE);
  }
  duk_pop(ctx);
}

void SweepWrappers(duk_context* ctx) {
  if (HeapOf(ctx).wrappers.added) Sweep(ctx, false);
}

void InstallHostObjects(duk_context* ctx) {
  Stashed& stashed = HeapOf(ctx).stashed;
  duk_push_object(ctx);
  PutFunction(ctx, -1, "get", TrapGet, 3);
  PutFunction(ctx, -1, "set", TrapSet, 4);
  PutFunction(ctx, -1, "has", TrapHas, 2);
  stashed.handler = Stash(ctx, "handler");
  duk_push_array(ctx);
  stashed.wrappers = Stash(ctx, "wrappers");
}

}  // namespace ketrova::script::jscript
