#include "engine/script_host_object.h"

#include "platform/script/script_control.h"

namespace ketrova {

const script::MemberTable<ScriptHostObject>& ScriptHostObject::Members() {
  static const auto table = script::MemberTable<ScriptHostObject>()
                                .Method("Run", 1, -1,
                                        [](ScriptHostObject& o, script::Args a) {
                                          return o.Control().Run(a[0].ToString(), a.subspan(1));
                                        })
                                .Method("Eval", 1, 1,
                                        [](ScriptHostObject& o, script::Args a) {
                                          return o.Control().Eval(a[0].ToString());
                                        })
                                .Property("Language", [](ScriptHostObject& o, script::Args) {
                                  return Variant(o.Control().Language());
                                });
  return table;
}

}  // namespace ketrova
