// C++ values carried by JS objects: a host object, a VB array or an
// enumeration, each in a box that a hidden property of its JS object points
// at and that the object's finalizer deletes. Hidden properties (Duktape's
// hidden symbols start with 0xFF) cannot be seen or reached from script, and a
// proxy passes them to its target without running a trap.
#pragma once

#include <duktape.h>

#include <cstddef>
#include <memory>

#include "platform/script/binding.h"
#include "support/object.h"
#include "support/variant.h"

namespace ketrova::script::jscript {

inline constexpr char kObjectKey[] =
    "\xFF"
    "obj";
inline constexpr char kArrayKey[] =
    "\xFF"
    "arr";
inline constexpr char kEnumKey[] =
    "\xFF"
    "enum";
// The host object wrapper a bound function belongs to, and its member.
inline constexpr char kTargetKey[] =
    "\xFF"
    "tgt";
inline constexpr char kIdKey[] =
    "\xFF"
    "id";
inline constexpr char kNameKey[] =
    "\xFF"
    "name";
// The source of a host error, when it is not the language's own.
inline constexpr char kSourceKey[] =
    "\xFF"
    "source";

struct HostBox {
  explicit HostBox(ObjectPtr o)
      : object(std::move(o)), shapes(dynamic_cast<MemberShapes*>(object.get())) {}
  ObjectPtr object;
  MemberShapes* shapes;  // null when the object cannot tell its members' shapes
};

struct ArrayBox {
  ArrayPtr array;
};

// The box behind the hidden property `key` of the object at `index`; null
// when the value is no such object. Keys are literals, which Duktape finds
// by their address without hashing their text.
template <typename Box, std::size_t N>
Box* BoxAt(duk_context* ctx, duk_idx_t index, const char (&key)[N]) {
  if (!duk_is_object(ctx, index)) return nullptr;
  duk_get_prop_literal(ctx, index, key);
  auto* box = static_cast<Box*>(duk_get_pointer(ctx, -1));
  duk_pop(ctx);
  return box;
}

// The body of a finalizer: deletes the box of the object being finalized.
template <typename Box, std::size_t N>
duk_ret_t FinalizeBox(duk_context* ctx, const char (&key)[N]) {
  delete BoxAt<Box>(ctx, 0, key);
  duk_push_pointer(ctx, nullptr);
  duk_put_prop_literal(ctx, 0, key);
  return 0;
}

}  // namespace ketrova::script::jscript
