#include "platform/script/jscript/js_bridge.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <regex>
#include <vector>

#include "platform/script/binding.h"
#include "platform/script/engine.h"
#include "support/collection.h"

namespace ketrova::script::jscript {

namespace {

// Hidden property names (Duktape's hidden symbols start with 0xFF).
constexpr const char* kHeapKey =
    "\xFF"
    "heap";
constexpr const char* kObjectKey =
    "\xFF"
    "obj";
constexpr const char* kArrayKey =
    "\xFF"
    "arr";
constexpr const char* kEnumKey =
    "\xFF"
    "enum";
constexpr const char* kTargetKey =
    "\xFF"
    "tgt";
constexpr const char* kIdKey =
    "\xFF"
    "id";
constexpr const char* kNameKey =
    "\xFF"
    "name";
constexpr const char* kSourceKey =
    "\xFF"
    "source";

struct HostBox {
  ObjectPtr object;
};
struct ArrayBox {
  ArrayPtr array;
};
struct EnumBox {
  Variant source;  // the collection or array walked
  std::unique_ptr<Enumerator> enumerator;
  std::size_t position = 0;  // for arrays
  Variant current;
  bool atEnd = true;
};

void FatalHandler(void*, const char* message) {
  std::fprintf(stderr, "JScript: fatal error: %s\n", message ? message : "");
  std::abort();
}

// Runs `body`, which pushes its result and answers the count of results;
// a C++ exception becomes a thrown JS error once the handler is left.
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

void PushStash(duk_context* ctx, const char* key) {
  duk_push_heap_stash(ctx);
  duk_get_prop_string(ctx, -1, key);
  duk_remove(ctx, -2);
}

template <typename Box>
Box* BoxAt(duk_context* ctx, duk_idx_t index, const char* key) {
  if (!duk_is_object(ctx, index)) return nullptr;
  duk_get_prop_string(ctx, index, key);
  auto* box = static_cast<Box*>(duk_get_pointer(ctx, -1));
  duk_pop(ctx);
  return box;
}

template <typename Box>
duk_ret_t FinalizeBox(duk_context* ctx, const char* key) {
  delete BoxAt<Box>(ctx, 0, key);
  duk_push_pointer(ctx, nullptr);
  duk_put_prop_string(ctx, 0, key);
  return 0;
}

duk_ret_t FinalizeHost(duk_context* ctx) {
  return FinalizeBox<HostBox>(ctx, kObjectKey);
}
duk_ret_t FinalizeArray(duk_context* ctx) {
  return FinalizeBox<ArrayBox>(ctx, kArrayKey);
}
duk_ret_t FinalizeEnum(duk_context* ctx) {
  return FinalizeBox<EnumBox>(ctx, kEnumKey);
}

std::vector<Variant> ArgsFromStack(duk_context* ctx, duk_idx_t first) {
  std::vector<Variant> args;
  duk_idx_t top = duk_get_top(ctx);
  for (duk_idx_t i = first; i < top; ++i) args.push_back(ToVariant(ctx, i));
  return args;
}

duk_ret_t PushResult(duk_context* ctx, const Variant& value) {
  PushVariant(ctx, value);
  return 1;
}

duk_ret_t TargetCall(duk_context*) {
  return 0;
}

// Pushes the proxy target of a host object: a function, so that the proxy
// can be called (Fields("x")), holding the object.
void PushHostTarget(duk_context* ctx, const ObjectPtr& object) {
  duk_push_c_function(ctx, TargetCall, DUK_VARARGS);
  duk_push_pointer(ctx, new HostBox{object});
  duk_put_prop_string(ctx, -2, kObjectKey);
  duk_push_c_function(ctx, FinalizeHost, 1);
  duk_set_finalizer(ctx, -2);
}

bool NeedsCall(Object& object, int dispId) {
  if (auto* shapes = dynamic_cast<MemberShapes*>(&object)) return shapes->NeedsCall(dispId);
  return false;
}

// A method of a host object bound to it: calling it invokes the member.
duk_ret_t MemberCall(duk_context* ctx) {
  duk_push_current_function(ctx);
  duk_get_prop_string(ctx, -1, kTargetKey);
  HostBox* box = BoxAt<HostBox>(ctx, -1, kObjectKey);
  duk_get_prop_string(ctx, -2, kIdKey);
  int dispId = duk_get_int(ctx, -1);
  duk_pop_3(ctx);
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    auto args = ArgsFromStack(ctx, 0);
    return PushResult(ctx, box->object->Invoke(dispId, InvokeKind::kMethod, args));
  });
}

// The default value of a host object as valueOf / toString.
duk_ret_t DefaultValue(duk_context* ctx) {
  duk_push_current_function(ctx);
  duk_get_prop_string(ctx, -1, kTargetKey);
  HostBox* box = BoxAt<HostBox>(ctx, -1, kObjectKey);
  duk_get_prop_string(ctx, -2, kIdKey);
  bool asText = duk_get_int(ctx, -1) != 0;
  duk_pop_3(ctx);
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

void PushBoundFunction(duk_context* ctx, duk_idx_t target, duk_c_function fn, int id) {
  target = duk_normalize_index(ctx, target);
  duk_push_c_function(ctx, fn, DUK_VARARGS);
  duk_dup(ctx, target);
  duk_put_prop_string(ctx, -2, kTargetKey);
  duk_push_int(ctx, id);
  duk_put_prop_string(ctx, -2, kIdKey);
}

// Reading a member: a property's value, or a function for what must be
// called (methods and properties with arguments).
void PushMember(duk_context* ctx, duk_idx_t target, Object& object, const std::string& name) {
  int dispId = object.GetIDOfName(name);
  if (dispId == kDispIdUnknown) {
    if (name == "valueOf" || name == "toString") {
      PushBoundFunction(ctx, target, DefaultValue, name == "toString" ? 1 : 0);
      return;
    }
    throw VbError(438);
  }
  if (!NeedsCall(object, dispId)) {
    Variant value;
    if (dynamic_cast<MemberShapes*>(&object)) {
      value = object.Invoke(dispId, InvokeKind::kPropertyGet, {});
    } else {
      try {
        value = object.Invoke(dispId, InvokeKind::kPropertyGet, {});
      } catch (const VbError& e) {
        if (e.Number != 450) throw;
        PushBoundFunction(ctx, target, MemberCall, dispId);
        return;
      }
    }
    PushVariant(ctx, value);
    return;
  }
  PushBoundFunction(ctx, target, MemberCall, dispId);
}

void PutMember(Object& object, const std::string& name, const Variant& value) {
  int dispId = object.GetIDOfName(name);
  if (dispId == kDispIdUnknown) throw VbError(438);
  Variant args[1] = {value};
  object.Invoke(dispId, value.IsObject() ? InvokeKind::kPropertyPutRef : InvokeKind::kPropertyPut,
                args);
}

// Proxy traps: (target, key, receiver), (target, key, value, receiver),
// (target, key), (target, this, argArray).
duk_ret_t TrapGet(duk_context* ctx) {
  if (duk_is_symbol(ctx, 1) || !duk_is_string(ctx, 1)) {
    duk_push_undefined(ctx);
    return 1;
  }
  HostBox* box = BoxAt<HostBox>(ctx, 0, kObjectKey);
  const char* key = duk_get_string(ctx, 1);
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    PushMember(ctx, 0, *box->object, key);
    return 1;
  });
}

duk_ret_t TrapSet(duk_context* ctx) {
  HostBox* box = BoxAt<HostBox>(ctx, 0, kObjectKey);
  if (duk_is_symbol(ctx, 1) || !duk_is_string(ctx, 1)) {
    duk_push_false(ctx);
    return 1;
  }
  const char* key = duk_get_string(ctx, 1);
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    PutMember(*box->object, key, ToVariant(ctx, 2));
    duk_push_true(ctx);
    return 1;
  });
}

duk_ret_t TrapHas(duk_context* ctx) {
  HostBox* box = BoxAt<HostBox>(ctx, 0, kObjectKey);
  bool has = false;
  if (box && duk_is_string(ctx, 1) && !duk_is_symbol(ctx, 1)) {
    try {
      has = box->object->GetIDOfName(duk_get_string(ctx, 1)) != kDispIdUnknown;
    } catch (const std::exception&) {
      has = false;
    }
  }
  duk_push_boolean(ctx, has);
  return 1;
}

duk_ret_t TrapApply(duk_context* ctx) {
  HostBox* box = BoxAt<HostBox>(ctx, 0, kObjectKey);
  duk_size_t count = duk_is_object(ctx, 2) ? duk_get_length(ctx, 2) : 0;
  return Guard(ctx, [&] {
    if (!box) throw VbError(424);
    std::vector<Variant> args;
    for (duk_size_t i = 0; i < count; ++i) {
      duk_get_prop_index(ctx, 2, static_cast<duk_uarridx_t>(i));
      args.push_back(ToVariant(ctx, -1));
      duk_pop(ctx);
    }
    return PushResult(ctx, box->object->Invoke(kDispIdValue, InvokeKind::kMethod, args));
  });
}

// Accessors for the members of an object added with addMembers.
duk_ret_t GlobalMemberGet(duk_context* ctx) {
  duk_push_current_function(ctx);
  duk_get_prop_string(ctx, -1, kTargetKey);
  duk_get_prop_string(ctx, -2, kNameKey);
  std::string name = duk_get_string(ctx, -1) ? duk_get_string(ctx, -1) : "";
  duk_pop(ctx);
  HostBox* box = BoxAt<HostBox>(ctx, -1, kObjectKey);
  duk_idx_t target = duk_get_top_index(ctx);
  duk_ret_t result = Guard(ctx, [&] {
    if (!box) throw VbError(424);
    PushMember(ctx, target, *box->object, name);
    return 1;
  });
  return result;
}

duk_ret_t GlobalMemberSet(duk_context* ctx) {
  duk_push_current_function(ctx);
  duk_get_prop_string(ctx, -1, kTargetKey);
  HostBox* box = BoxAt<HostBox>(ctx, -1, kObjectKey);
  duk_get_prop_string(ctx, -2, kNameKey);
  const char* name = duk_get_string(ctx, -1);
  return Guard(ctx, [&] {
    if (!box || !name) throw VbError(424);
    PutMember(*box->object, name, ToVariant(ctx, 0));
    return 0;
  });
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
    PushStash(ctx, "enumProto");
    duk_set_prototype(ctx, -2);
    duk_push_pointer(ctx, box.release());
    duk_put_prop_string(ctx, -2, kEnumKey);
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

// Ketrova objects for JS objects handed to C++.
class JsObject : public Object {
 public:
  JsObject(std::weak_ptr<Heap> heap, long ref) : heap_(std::move(heap)), ref_(ref) {}
  ~JsObject() override {
    if (auto heap = heap_.lock()) {
      duk_context* ctx = heap->ctx;
      PushStash(ctx, "refs");
      duk_del_prop_index(ctx, -1, static_cast<duk_uarridx_t>(ref_));
      duk_pop(ctx);
    }
  }
  std::string TypeName() const override { return "JScriptTypeInfo"; }
  int GetIDOfName(std::string_view name) override {
    for (std::size_t i = 0; i < names_.size(); ++i)
      if (names_[i] == name) return static_cast<int>(i + 1);
    names_.emplace_back(name);
    return static_cast<int>(names_.size());
  }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    auto heap = heap_.lock();
    if (!heap) throw VbError(424);
    duk_context* ctx = heap->ctx;
    duk_idx_t base = duk_get_top(ctx);
    PushStash(ctx, "invoke");
    PushStash(ctx, "refs");
    duk_get_prop_index(ctx, -1, static_cast<duk_uarridx_t>(ref_));
    duk_remove(ctx, -2);
    if (dispId == kDispIdValue) {
      duk_push_null(ctx);
    } else if (dispId >= 1 && static_cast<std::size_t>(dispId) <= names_.size()) {
      duk_push_string(ctx, names_[static_cast<std::size_t>(dispId - 1)].c_str());
    } else {
      duk_set_top(ctx, base);
      throw VbError(438);
    }
    duk_push_int(ctx, static_cast<int>(kind));
    duk_idx_t array = duk_push_array(ctx);
    duk_uarridx_t i = 0;
    for (const Variant& arg : args) {
      PushVariant(ctx, arg);
      duk_put_prop_index(ctx, array, i++);
    }
    if (duk_pcall(ctx, 4) != DUK_EXEC_SUCCESS) {
      JsErrorInfo info = DescribeError(ctx, -1, false);
      duk_set_top(ctx, base);
      throw VbError(info.number, info.description, info.source);
    }
    Variant result = ToVariant(ctx, -1);
    duk_set_top(ctx, base);
    return result;
  }

 private:
  std::weak_ptr<Heap> heap_;
  long ref_;
  std::vector<std::string> names_;
};

// JS helpers the bridge calls by pcall.
constexpr const char* kInvokeHelper =
    "(function (o, k, kind, a) {\n"
    "  if (k === null) return typeof o === 'function' ? o.apply(null, a) : String(o);\n"
    "  if (kind === 4 || kind === 8) { o[k] = a[a.length - 1]; return undefined; }\n"
    "  var v = o[k];\n"
    "  if (typeof v === 'function' && (kind === 1 || a.length > 0)) return v.apply(o, a);\n"
    "  return v;\n"
    "})";
constexpr const char* kClassHelper = "(function (x) { return Object.prototype.toString.call(x); })";
constexpr const char* kTimeHelper = "(function (d) { return d.getTime(); })";

void StashEval(duk_context* ctx, const char* name, const char* code) {
  duk_push_heap_stash(ctx);
  duk_eval_string(ctx, code);
  duk_put_prop_string(ctx, -2, name);
  duk_pop(ctx);
}

void PutFunction(duk_context* ctx, duk_idx_t object, const char* name, duk_c_function fn,
                 duk_idx_t nargs, int magic = 0) {
  object = duk_normalize_index(ctx, object);
  duk_push_c_function(ctx, fn, nargs);
  duk_set_magic(ctx, -1, magic);
  duk_put_prop_string(ctx, object, name);
}

void DefineGlobalFunction(duk_context* ctx, const char* name, duk_c_function fn, duk_idx_t nargs) {
  duk_push_global_object(ctx);
  duk_push_string(ctx, name);
  duk_push_c_function(ctx, fn, nargs);
  duk_def_prop(ctx, -3,
               DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_SET_CONFIGURABLE |
                   DUK_DEFPROP_CLEAR_ENUMERABLE);
  duk_pop(ctx);
}

// OLE dates are local time; JS time values are milliseconds since 1970 UTC.
double OleToJsTime(double ole) {
  double days = std::floor(ole);
  double fraction = std::fabs(ole - days);
  long dayNumber = static_cast<long>(days) - 25569;  // days since 1970-01-01
  // Civil date of the day number.
  long z = dayNumber + 719468;
  long era = (z >= 0 ? z : z - 146096) / 146097;
  long doe = z - era * 146097;
  long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  long y = yoe + era * 400;
  long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  long mp = (5 * doy + 2) / 153;
  long d = doy - (153 * mp + 2) / 5 + 1;
  long m = mp < 10 ? mp + 3 : mp - 9;
  if (m <= 2) ++y;
  double msOfDay = std::round(fraction * 86400000.0);
  std::tm local{};
  local.tm_year = static_cast<int>(y - 1900);
  local.tm_mon = static_cast<int>(m - 1);
  local.tm_mday = static_cast<int>(d);
  local.tm_isdst = -1;
  std::time_t midnight = std::mktime(&local);
  return static_cast<double>(midnight) * 1000.0 + msOfDay;
}

double JsTimeToOle(double ms) {
  double seconds = std::floor(ms / 1000.0);
  double rest = ms - seconds * 1000.0;
  std::time_t t = static_cast<std::time_t>(seconds);
  std::tm local{};
  localtime_r(&t, &local);
  // Day number of the local civil date.
  long y = local.tm_year + 1900;
  long m = local.tm_mon + 1;
  long d = local.tm_mday;
  y -= m <= 2;
  long era = (y >= 0 ? y : y - 399) / 400;
  long yoe = y - era * 400;
  long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  long days = era * 146097 + doe - 719468 + 25569;
  double fraction =
      ((local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec) * 1000.0 + rest) / 86400000.0;
  return days >= 0 ? days + fraction : days - fraction;
}

}  // namespace

Heap::Heap() {
  ctx = duk_create_heap(nullptr, nullptr, nullptr, nullptr, FatalHandler);
}
Heap::~Heap() {
  if (!ctx) return;
  duk_push_heap_stash(ctx);
  duk_get_prop_string(ctx, -1, kHeapKey);
  delete static_cast<std::weak_ptr<Heap>*>(duk_get_pointer(ctx, -1));
  duk_pop_2(ctx);
  duk_destroy_heap(ctx);
}

std::int32_t EncodeErrorNumber(std::int32_t number) {
  if (number > 0 && number <= 0xFFFF) return static_cast<std::int32_t>(0x800A0000u | number);
  return number;
}

std::int32_t DecodeErrorNumber(std::int32_t number) {
  if ((static_cast<std::uint32_t>(number) & 0xFFFF0000u) == 0x800A0000u) return number & 0xFFFF;
  return number;
}

void PushHostError(duk_context* ctx, const VbError& error) {
  duk_push_error_object_raw(ctx, DUK_ERR_ERROR, nullptr, 0, "%s", error.Description.c_str());
  duk_push_int(ctx, EncodeErrorNumber(error.Number));
  duk_put_prop_string(ctx, -2, "number");
  duk_push_string(ctx, error.Description.c_str());
  duk_put_prop_string(ctx, -2, "description");
  if (!error.Source.empty()) {
    duk_push_string(ctx, error.Source.c_str());
    duk_put_prop_string(ctx, -2, kSourceKey);
  }
}

void InstallBridge(const std::shared_ptr<Heap>& heap) {
  duk_context* ctx = heap->ctx;
  duk_push_heap_stash(ctx);
  duk_push_pointer(ctx, new std::weak_ptr<Heap>(heap));
  duk_put_prop_string(ctx, -2, kHeapKey);

  duk_push_object(ctx);  // proxy handler
  PutFunction(ctx, -1, "get", TrapGet, 3);
  PutFunction(ctx, -1, "set", TrapSet, 4);
  PutFunction(ctx, -1, "has", TrapHas, 2);
  PutFunction(ctx, -1, "apply", TrapApply, 3);
  duk_put_prop_string(ctx, -2, "handler");

  duk_push_object(ctx);
  PutFunction(ctx, -1, "toArray", VBArrayToArray, 0);
  PutFunction(ctx, -1, "ubound", VBArrayBound, 1, 1);
  PutFunction(ctx, -1, "lbound", VBArrayBound, 1, 0);
  PutFunction(ctx, -1, "dimensions", VBArrayDimensions, 0);
  PutFunction(ctx, -1, "getItem", VBArrayGetItem, DUK_VARARGS);
  duk_put_prop_string(ctx, -2, "vbarrayProto");

  duk_push_object(ctx);
  PutFunction(ctx, -1, "atEnd", EnumeratorMethod, 0, 0);
  PutFunction(ctx, -1, "item", EnumeratorMethod, 0, 1);
  PutFunction(ctx, -1, "moveNext", EnumeratorMethod, 0, 2);
  PutFunction(ctx, -1, "moveFirst", EnumeratorMethod, 0, 3);
  duk_put_prop_string(ctx, -2, "enumProto");

  duk_push_object(ctx);
  duk_put_prop_string(ctx, -2, "refs");
  duk_get_global_string(ctx, "Date");
  duk_put_prop_string(ctx, -2, "Date");
  duk_pop(ctx);

  StashEval(ctx, "invoke", kInvokeHelper);
  StashEval(ctx, "classOf", kClassHelper);
  StashEval(ctx, "timeOf", kTimeHelper);

  DefineGlobalFunction(ctx, "VBArray", VBArrayConstructor, 1);
  DefineGlobalFunction(ctx, "Enumerator", EnumeratorConstructor, 1);
  DefineGlobalFunction(ctx, "ActiveXObject", CreateObjectFunction, 1);
  DefineGlobalFunction(ctx, "CreateObject", CreateObjectFunction, 1);
}

void PushVariant(duk_context* ctx, const Variant& value) {
  switch (value.Type()) {
    case vbEmpty:
      duk_push_undefined(ctx);
      return;
    case vbNull:
      duk_push_null(ctx);
      return;
    case vbBoolean:
      duk_push_boolean(ctx, value.AsBool());
      return;
    case vbString: {
      const std::string& text = value.AsString();
      duk_push_lstring(ctx, text.data(), text.size());
      return;
    }
    case vbDate:
      PushStash(ctx, "Date");
      duk_push_number(ctx, OleToJsTime(value.AsDate().value));
      duk_new(ctx, 1);
      return;
    case vbObject:
      if (value.IsNothing()) {
        duk_push_null(ctx);
        return;
      }
      PushHostTarget(ctx, value.AsObject());
      PushStash(ctx, "handler");
      duk_push_proxy(ctx, 0);
      return;
    case vbError:
      if (value.IsMissing()) {
        duk_push_undefined(ctx);
      } else {
        duk_push_int(ctx, value.AsError().code);
      }
      return;
    default:
      break;
  }
  if (value.IsArray()) {
    duk_push_object(ctx);
    PushStash(ctx, "vbarrayProto");
    duk_set_prototype(ctx, -2);
    duk_push_pointer(ctx, new ArrayBox{value.AsArray()});
    duk_put_prop_string(ctx, -2, kArrayKey);
    duk_push_c_function(ctx, FinalizeArray, 1);
    duk_set_finalizer(ctx, -2);
    return;
  }
  duk_push_number(ctx, value.ToDouble());
}

Variant ToVariant(duk_context* ctx, duk_idx_t index) {
  index = duk_normalize_index(ctx, index);
  switch (duk_get_type(ctx, index)) {
    case DUK_TYPE_UNDEFINED:
    case DUK_TYPE_NONE:
      return Variant();
    case DUK_TYPE_NULL:
      return Variant::Null();
    case DUK_TYPE_BOOLEAN:
      return Variant(static_cast<bool>(duk_get_boolean(ctx, index)));
    case DUK_TYPE_NUMBER: {
      double number = duk_get_number(ctx, index);
      if (number == std::floor(number) && number >= -2147483648.0 && number <= 2147483647.0 &&
          !(number == 0 && std::signbit(number)))
        return Variant::Long(static_cast<std::int32_t>(number));
      return Variant(number);
    }
    case DUK_TYPE_STRING: {
      duk_size_t length = 0;
      const char* text = duk_get_lstring(ctx, index, &length);
      return Variant(std::string(text, length));
    }
    case DUK_TYPE_POINTER:
    case DUK_TYPE_BUFFER:
    case DUK_TYPE_LIGHTFUNC:
      return Variant();
    default:
      break;
  }
  if (HostBox* box = BoxAt<HostBox>(ctx, index, kObjectKey)) return Variant(box->object);
  if (ArrayBox* box = BoxAt<ArrayBox>(ctx, index, kArrayKey)) return Variant(box->array);
  PushStash(ctx, "classOf");
  duk_dup(ctx, index);
  std::string kind;
  if (duk_pcall(ctx, 1) == DUK_EXEC_SUCCESS && duk_is_string(ctx, -1))
    kind = duk_get_string(ctx, -1);
  duk_pop(ctx);
  if (kind == "[object Date]") {
    PushStash(ctx, "timeOf");
    duk_dup(ctx, index);
    double ms = 0;
    bool ok = duk_pcall(ctx, 1) == DUK_EXEC_SUCCESS && duk_is_number(ctx, -1);
    if (ok) ms = duk_get_number(ctx, -1);
    duk_pop(ctx);
    if (ok && !std::isnan(ms)) return Variant::FromDate(JsTimeToOle(ms));
    return Variant::Null();
  }
  if (kind == "[object Array]") {
    auto array = std::make_shared<SafeArray>();
    duk_size_t length = duk_get_length(ctx, index);
    array->bounds.push_back({0, static_cast<std::int32_t>(length)});
    for (duk_size_t i = 0; i < length; ++i) {
      duk_get_prop_index(ctx, index, static_cast<duk_uarridx_t>(i));
      array->data.push_back(ToVariant(ctx, -1));
      duk_pop(ctx);
    }
    return Variant(array);
  }
  // Any other JS object: kept in the stash and reached through a wrapper.
  duk_push_heap_stash(ctx);
  duk_get_prop_string(ctx, -1, kHeapKey);
  auto* weak = static_cast<std::weak_ptr<Heap>*>(duk_get_pointer(ctx, -1));
  duk_pop(ctx);
  auto heap = weak ? weak->lock() : nullptr;
  if (!heap) {
    duk_pop(ctx);
    return Variant();
  }
  long ref = heap->nextRef++;
  duk_get_prop_string(ctx, -1, "refs");
  duk_dup(ctx, index);
  duk_put_prop_index(ctx, -2, static_cast<duk_uarridx_t>(ref));
  duk_pop_2(ctx);
  return Variant(ObjectPtr(std::make_shared<JsObject>(heap, ref)));
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
    duk_push_c_function(ctx, GlobalMemberGet, 0);
    duk_dup(ctx, target);
    duk_put_prop_string(ctx, -2, kTargetKey);
    duk_push_string(ctx, name.c_str());
    duk_put_prop_string(ctx, -2, kNameKey);
    duk_push_c_function(ctx, GlobalMemberSet, 1);
    duk_dup(ctx, target);
    duk_put_prop_string(ctx, -2, kTargetKey);
    duk_push_string(ctx, name.c_str());
    duk_put_prop_string(ctx, -2, kNameKey);
    duk_def_prop(ctx, index,
                 DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | DUK_DEFPROP_SET_CONFIGURABLE |
                     DUK_DEFPROP_CLEAR_ENUMERABLE | DUK_DEFPROP_FORCE);
  }
  duk_pop(ctx);
}

JsErrorInfo DescribeError(duk_context* ctx, duk_idx_t index, bool compile) {
  index = duk_normalize_index(ctx, index);
  JsErrorInfo info;
  std::string name;
  std::string message;
  bool hasNumber = false;
  if (duk_is_object(ctx, index) && !BoxAt<HostBox>(ctx, index, kObjectKey)) {
    duk_get_prop_string(ctx, index, "name");
    if (duk_is_string(ctx, -1)) name = duk_get_string(ctx, -1);
    duk_get_prop_string(ctx, index, "message");
    if (duk_is_string(ctx, -1)) message = duk_get_string(ctx, -1);
    duk_get_prop_string(ctx, index, "lineNumber");
    if (duk_is_number(ctx, -1)) info.line = duk_get_int(ctx, -1);
    duk_get_prop_string(ctx, index, "fileName");
    if (duk_is_string(ctx, -1)) info.fileName = duk_get_string(ctx, -1);
    duk_get_prop_string(ctx, index, "number");
    if (duk_is_number(ctx, -1)) {
      hasNumber = true;
      info.number = DecodeErrorNumber(static_cast<std::int32_t>(duk_get_number(ctx, -1)));
    }
    duk_get_prop_string(ctx, index, "description");
    if (duk_is_string(ctx, -1)) info.description = duk_get_string(ctx, -1);
    duk_get_prop_string(ctx, index, kSourceKey);
    if (duk_is_string(ctx, -1)) info.source = duk_get_string(ctx, -1);
    duk_pop_n(ctx, 7);
  } else {
    info.number = 5022;
    info.description = "Ausnahme ausgelöst und nicht abgefangen";
    return info;
  }
  if (hasNumber) {
    if (info.description.empty()) info.description = message;
    return info;
  }
  std::smatch match;
  static const std::regex kQuoted("'([^']*)'");
  if (std::regex_search(message, match, kQuoted)) info.identifier = match[1];
  if (compile || name == "SyntaxError") {
    if (message.find("unterminated string") != std::string::npos) {
      info.number = 1015;
      info.description = "Nicht abgeschlossene Zeichenfolgenkonstante";
    } else if (message.find("unterminated comment") != std::string::npos) {
      info.number = 1016;
      info.description = "Nicht abgeschlossener Kommentar";
    } else if (message.find("unterminated statement") != std::string::npos) {
      info.number = 1004;
      info.description = "';' erwartet";
    } else if (message.find("invalid object literal") != std::string::npos) {
      info.number = 1028;
      info.description = "Bezeichner, Zeichenfolge oder Zahl erwartet";
    } else if (message.find("expected identifier") != std::string::npos ||
               message.find("invalid variable declaration") != std::string::npos) {
      info.number = 1010;
      info.description = "Bezeichner erwartet";
    } else {
      info.number = 1002;
      info.description = "Syntaxfehler";
    }
    return info;
  }
  if (name == "ReferenceError" && message.find("undefined") != std::string::npos) {
    info.number = 5009;
    info.description = "'" + info.identifier + "' ist nicht definiert";
  } else if (name == "TypeError" && message.find("not callable") != std::string::npos) {
    info.number = 5002;
    info.description = "Funktion erwartet";
  } else if (name == "TypeError" && message.find("not constructable") != std::string::npos) {
    info.number = 5002;
    info.description = "Funktion erwartet";
  } else if (name == "TypeError") {
    info.number = 5007;
    info.description = "Objekt erwartet";
  } else if (name == "RangeError" && message.find("array length") != std::string::npos) {
    info.number = 5029;
    info.description = "Die Arraylänge muss eine endliche positive ganze Zahl sein";
  } else if (name == "RangeError") {
    info.number = 28;
    info.description = "Nicht genügend Stapelspeicher";
  } else {
    info.number = 5022;
    info.description = message.empty() ? "Ausnahme ausgelöst und nicht abgefangen" : message;
  }
  return info;
}

}  // namespace ketrova::script::jscript
