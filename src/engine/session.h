// The two memberless objects handed to scripts: CSession (under the name
// "Session", owned by CConverter) and CRuntime (what scripts see as
// "Converter", made by each CEngine). They are bound through the late-bound
// Object interface and answer every member call with 438.
#pragma once

#include <string>

#include "support/object.h"

namespace ketrova {

class CSession : public Object {
 public:
  std::string TypeName() const override { return "CSession"; }
};

class CRuntime : public Object {
 public:
  std::string TypeName() const override { return "CRuntime"; }
};

}  // namespace ketrova
