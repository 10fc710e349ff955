// The version of the component, the one version of the build (the project's
// version in CMakeLists.txt), as major.minor.revision.
#pragma once

#include <string>

namespace ketrova {

// "2.5.0" for version 2.5.0. Defined in libketrova only.
std::string ComponentVersion();

}  // namespace ketrova
