#pragma once

#include <cstddef>

#include "prim/float_mode.h"
#include "vxicore26.h"

namespace vx {

/// The host's functions for the length of one call. They run on the calling thread, under the
/// host's own floating-point state; they may throw, and they may call the library again.
class HostCallbacks {
 public:
  /// @param floatMode  the guard of the exported function, which holds the host's state
  HostCallbacks(VxHostAlloc hostAlloc, VxHostFree hostFree, VxProgress progress, void* hostContext,
                const prim::FloatModeGuard& floatMode)
      : alloc_(hostAlloc),
        free_(hostFree),
        progress_(progress),
        context_(hostContext),
        floatMode_(floatMode) {}

  /// Whether memory is to be asked of the host: an allocator without its release is not used.
  bool allocates() const { return alloc_ != nullptr && free_ != nullptr; }

  void* allocate(std::size_t size) const {
    const prim::HostFloatMode hostMode(floatMode_);
    return alloc_(size, context_);
  }

  void release(void* block) const {
    const prim::HostFloatMode hostMode(floatMode_);
    free_(block, context_);
  }

  /// Reports `position` of 100; false when the host cancels.
  bool report(int position) const {
    if (progress_ == nullptr) return true;
    const prim::HostFloatMode hostMode(floatMode_);
    return progress_(position, 100, context_) != 0;
  }

 private:
  VxHostAlloc alloc_;
  VxHostFree free_;
  VxProgress progress_;
  void* context_;
  const prim::FloatModeGuard& floatMode_;
};

}  // namespace vx
