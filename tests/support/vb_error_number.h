// The number of the VbError a call raises, 0 when it raises none: for tests
// that assert which of VB's errors a failure gives.
#pragma once

#include "support/vb_error.h"

namespace ketrova {

int VbErrorNumber(auto&& call) {
  try {
    call();
  } catch (const VbError& e) {
    return e.Number;
  }
  return 0;
}

}  // namespace ketrova
