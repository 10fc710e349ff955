// Jobs run end to end.
#include <gtest/gtest.h>

#include "engine_fixture.h"

namespace ketrova::testing {
namespace {}  // namespace
}  // namespace ketrova::testing
