#include "platform/script/jscript/js_builtins.h"

#include <memory>
#include <string>
#include <vector>

#include "platform/script/engine.h"
#include "platform/script/jscript/js_boxes.h"
#include "platform/script/jscript/js_bridge.h"
#include "platform/script/jscript/js_errors.h"
#include "platform/script/jscript/js_heap.h"
#include "platform/script/jscript/js_values.h"

namespace ketrova::script::jscript {

namespace {

struct EnumBox {
  Variant source;  // the collection or array walked
  std::unique_ptr<Enumerator> enumerator;
  std::size_t position = 0;  // for arrays
  Variant current;
  bool atEnd = true;
};

duk_ret_t FinalizeArray(duk_context* ctx) {
  return FinalizeBox<ArrayBox>(ctx, kArrayKey);
}
duk_ret_t FinalizeEnum(duk_context* ctx) {
  return FinalizeBox<EnumBox>(ctx, kEnumKey);
}

// VBArray: toArray, ubound, lbound, dimensions, getItem.
ArrayBox* ThisArray(duk_context* ctx) {
  duk_push_this(ctx);
  ArrayBox* box = BoxAt<ArrayBox>(ctx, -1, kArrayKey);
  duk_pop(ctx);
  return box;
}

std::size_t Dimension(duk_context* ctx, const SafeArray& array) {
  int dim = duk_is_undefined(ctx, 0) ? 1 : duk_to_int(ctx, 0);
  if (dim < 1 || static_cast<std::size_t>(dim) > array.bounds.size()) throw VbError(9);
  return static_cast<std::size_t>(dim - 1);
}

duk_ret_t VBArrayToArray(duk_context* ctx) {
  ArrayBox* box = ThisArray(ctx);
  return Guard(ctx, [&] {
    if (!box) throw VbError(5028, "Array oder arguments-Objekt erwartet");
    duk_idx_t result = duk_push_array(ctx);
    duk_uarridx_t i = 0;
    for (const Variant& item : box->array->data) {
      PushVariant(ctx, item);
      duk_put_prop_index(ctx, result, i++);
    }
    return 1;
  });
}

duk_ret_t VBArrayBound(duk_context* ctx) {
  bool upper = duk_get_current_magic(ctx) != 0;
  ArrayBox* box = ThisArray(ctx);
  return Guard(ctx, [&] {
    if (!box) throw VbError(5028, "Array oder arguments-Objekt erwartet");
    const auto& bound = box->array->bounds[Dimension(ctx, *box->array)];
    duk_push_int(ctx, upper ? bound.lower + bound.count - 1 : bound.lower);
    return 1;
  });
}

duk_ret_t VBArrayDimensions(duk_context* ctx) {
  ArrayBox* box = ThisArray(ctx);
  duk_push_int(ctx, box ? static_cast<int>(box->array->bounds.size()) : 0);
  return 1;
}

duk_ret_t VBArrayGetItem(duk_context* ctx) {
  ArrayBox* box = ThisArray(ctx);
  duk_idx_t top = duk_get_top(ctx);
  std::vector<int> indexes;
  for (duk_idx_t i = 0; i < top; ++i) indexes.push_back(duk_to_int(ctx, i));
  return Guard(ctx, [&] {
    if (!box) throw VbError(5028, "Array oder arguments-Objekt erwartet");
    const SafeArray& array = *box->array;
    if (indexes.size() != array.bounds.size()) throw VbError(9);
    std::size_t offset = 0;
    for (std::size_t d = 0; d < indexes.size(); ++d) {
      int at = indexes[d] - array.bounds[d].lower;
      if (at < 0 || at >= array.bounds[d].count) throw VbError(9);
      offset =
          offset * static_cast<std::size_t>(array.bounds[d].count) + static_cast<std::size_t>(at);
    }
    return PushResult(ctx, array.data[offset]);
  });
}

// VBArray(x) and new VBArray(x): the array itself.
duk_ret_t VBArrayConstructor(duk_context* ctx) {
  if (BoxAt<ArrayBox>(ctx, 0, kArrayKey)) {
    duk_dup(ctx, 0);
    return 1;
  }
  return Guard(ctx,
               []() -> duk_ret_t { throw VbError(5028, "Array oder arguments-Objekt erwartet"); });
}

// Enumerator over a host collection, a VBArray or a JS array.
EnumBox* ThisEnum(duk_context* ctx) {
  duk_push_this(ctx);
  EnumBox* box = BoxAt<EnumBox>(ctx, -1, kEnumKey);
  duk_pop(ctx);
  return box;
}

void EnumFirst(EnumBox& box) {
  box.position = 0;
  box.enumerator.reset();
  if (box.source.IsObject()) box.enumerator = box.source.AsObject()->NewEnum();
  if (box.enumerator) {
    box.atEnd = !box.enumerator->Next(box.current);
  } else if (box.source.IsArray()) {
    const auto& data = box.source.AsArray()->data;
    box.atEnd = data.empty();
    box.current = box.atEnd ? Variant() : data[0];
  } else {
    box.atEnd = true;
  }
}

void EnumNext(EnumBox& box) {
  if (box.atEnd) return;
  if (box.enumerator) {
    box.atEnd = !box.enumerator->Next(box.current);
    if (box.atEnd) box.current = Variant();
    return;
  }
  const auto& data = box.source.AsArray()->data;
  ++box.position;
  box.atEnd = box.position >= data.size();
  box.current = box.atEnd ? Variant() : data[box.position];
}

duk_ret_t EnumeratorConstructor(duk_context* ctx) {
  Variant source = duk_is_undefined(ctx, 0) ? Variant() : ToVariant(ctx, 0);
  return Guard(ctx, [&] {
    auto box = std::make_unique<EnumBox>();
    box->source = source;
    if (!source.IsEmpty()) {
      if (!source.IsArray() && (!source.IsObject() || source.IsNothing()))
        throw VbError(5007, "Objekt erwartet");
      EnumFirst(*box);
    }
    duk_push_object(ctx);
    duk_push_heapptr(ctx, HeapOf(ctx).stashed.enumProto);
    duk_set_prototype(ctx, -2);
    duk_push_pointer(ctx, box.release());
    duk_put_prop_literal(ctx, -2, kEnumKey);
    duk_push_c_function(ctx, FinalizeEnum, 1);
    duk_set_finalizer(ctx, -2);
    return 1;
  });
}

duk_ret_t EnumeratorMethod(duk_context* ctx) {
  int which = duk_get_current_magic(ctx);
  EnumBox* box = ThisEnum(ctx);
  return Guard(ctx, [&] {
    if (!box) throw VbError(5007, "Objekt erwartet");
    switch (which) {
      case 0:
        duk_push_boolean(ctx, box->atEnd);
        return 1;
      case 1:
        return PushResult(ctx, box->current);
      case 2:
        EnumNext(*box);
        return 0;
      default:
        EnumFirst(*box);
        return 0;
    }
  });
}

duk_ret_t CreateObjectFunction(duk_context* ctx) {
  std::string progId = duk_is_string(ctx, 0) ? duk_get_string(ctx, 0) : "";
  return Guard(ctx, [&] { return PushResult(ctx, Variant(CreateObjectByProgId(progId))); });
}

}  // namespace

void PushVBArray(duk_context* ctx, const ArrayPtr& array) {
  duk_push_object(ctx);
  duk_push_heapptr(ctx, HeapOf(ctx).stashed.vbarrayProto);
  duk_set_prototype(ctx, -2);
  duk_push_pointer(ctx, new ArrayBox{array});
  duk_put_prop_literal(ctx, -2, kArrayKey);
  duk_push_c_function(ctx, FinalizeArray, 1);
  duk_set_finalizer(ctx, -2);
}

void InstallBuiltins(duk_context* ctx) {
  Stashed& stashed = HeapOf(ctx).stashed;
  duk_push_object(ctx);
  PutFunction(ctx, -1, "toArray", VBArrayToArray, 0);
  PutFunction(ctx, -1, "ubound", VBArrayBound, 1, 1);
  PutFunction(ctx, -1, "lbound", VBArrayBound, 1, 0);
  PutFunction(ctx, -1, "dimensions", VBArrayDimensions, 0);
  PutFunction(ctx, -1, "getItem", VBArrayGetItem, DUK_VARARGS);
  stashed.vbarrayProto = Stash(ctx, "vbarrayProto");

  duk_push_object(ctx);
  PutFunction(ctx, -1, "atEnd", EnumeratorMethod, 0, 0);
  PutFunction(ctx, -1, "item", EnumeratorMethod, 0, 1);
  PutFunction(ctx, -1, "moveNext", EnumeratorMethod, 0, 2);
  PutFunction(ctx, -1, "moveFirst", EnumeratorMethod, 0, 3);
  stashed.enumProto = Stash(ctx, "enumProto");

  DefineGlobalFunction(ctx, "VBArray", VBArrayConstructor, 1);
  DefineGlobalFunction(ctx, "Enumerator", EnumeratorConstructor, 1);
  DefineGlobalFunction(ctx, "ActiveXObject", CreateObjectFunction, 1);
  DefineGlobalFunction(ctx, "CreateObject", CreateObjectFunction, 1);
}

}  // namespace ketrova::script::jscript
