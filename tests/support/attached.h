#pragma once

#include "frame/exports/load.h"

namespace vx::test {

// The archive of the library's objects runs nothing at load: without this, only generic code.
inline const bool attached = (attachProcess(), true);

}  // namespace vx::test
