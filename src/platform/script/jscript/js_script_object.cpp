#include "platform/script/jscript/js_script_object.h"

#include <memory>
#include <string>
#include <vector>

#include "platform/script/jscript/js_errors.h"
#include "platform/script/jscript/js_heap.h"
#include "platform/script/jscript/js_values.h"

namespace ketrova::script::jscript {

namespace {

// Reads, writes or calls member `k` of `o`; with k null calls o itself or
// answers its text.
constexpr const char* kInvokeHelper =
    "(function (o, k, kind, a) {\n"
    "  if (k === null) return typeof o === 'function' ? o.apply(null, a) : String(o);\n"
    "  if (kind === 4 || kind === 8) { o[k] = a[a.length - 1]; return undefined; }\n"
    "  var v = o[k];\n"
    "  if (typeof v === 'function' && (kind === 1 || a.length > 0)) return v.apply(o, a);\n"
    "  return v;\n"
    "})";
// Ketrova objects for JS objects handed to C++.
class JsObject : public Object {
 public:
  JsObject(std::weak_ptr<Heap> heap, long ref) : heap_(std::move(heap)), ref_(ref) {}
  ~JsObject() override {
    if (auto heap = heap_.lock()) {
      duk_context* ctx = heap->ctx;
      duk_push_heapptr(ctx, heap->stashed.refs);
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
    duk_push_heapptr(ctx, heap->stashed.invoke);
    duk_push_heapptr(ctx, heap->stashed.refs);
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

}  // namespace

ObjectPtr ScriptObjectAt(duk_context* ctx, duk_idx_t index) {
  index = duk_normalize_index(ctx, index);
  Heap& heap = HeapOf(ctx);
  long ref = heap.nextRef++;
  duk_push_heapptr(ctx, heap.stashed.refs);
  duk_dup(ctx, index);
  duk_put_prop_index(ctx, -2, static_cast<duk_uarridx_t>(ref));
  duk_pop(ctx);
  return std::make_shared<JsObject>(heap.weak_from_this(), ref);
}

void InstallScriptObjects(duk_context* ctx) {
  Stashed& stashed = HeapOf(ctx).stashed;
  duk_push_object(ctx);
  stashed.refs = Stash(ctx, "refs");
  duk_eval_string(ctx, kInvokeHelper);
  stashed.invoke = Stash(ctx, "invoke");
}

}  // namespace ketrova::script::jscript
