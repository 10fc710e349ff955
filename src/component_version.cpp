#include "component_version.h"

namespace ketrova {

std::string ComponentVersion() {
  return KETROVA_VERSION;
}

}  // namespace ketrova
