#pragma once

#include "prim/float_mode.h"

namespace vx::test {

// That of the library, for a whole program that calls what lies below the exported functions.
inline const prim::FloatModeGuard kFloatMode;

}  // namespace vx::test
