#include "platform/script/jscript/js_bridge.h"

#include "platform/script/jscript/js_builtins.h"
#include "platform/script/jscript/js_host_objects.h"
#include "platform/script/jscript/js_script_object.h"
#include "platform/script/jscript/js_timeout.h"
#include "platform/script/jscript/js_values.h"

namespace ketrova::script::jscript {

void InstallBridge(duk_context* ctx) {
  InstallValues(ctx);
  InstallHostObjects(ctx);
  InstallScriptObjects(ctx);
  InstallBuiltins(ctx);
  InstallTimeCheck(ctx);
}

void PutFunction(duk_context* ctx, duk_idx_t object, const char* name, duk_c_function fn,
                 duk_idx_t nargs, int magic) {
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

}  // namespace ketrova::script::jscript
