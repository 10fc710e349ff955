// ScriptHostObject: the engine's script host as a late-bound object, so that
// a job side can run txSQLSearchResult (ScriptControl.Run) without knowing
// the engine. Members: Run(name, args...), Eval(expression), Language. It
// refers to the host without owning it; the engine outlives its jobs' use.
#pragma once

#include <string>

#include "platform/script/binding.h"

namespace ketrova {

namespace script {
class ScriptControl;
}  // namespace script

class ScriptHostObject : public script::BoundObject<ScriptHostObject> {
 public:
  explicit ScriptHostObject(script::ScriptControl& control) : control_(&control) {}
  std::string TypeName() const override { return "ScriptControl"; }
  static const script::MemberTable<ScriptHostObject>& Members();
  script::ScriptControl& Control() const { return *control_; }

 private:
  script::ScriptControl* control_;
};

}  // namespace ketrova
