#include "prim/float_mode.h"

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "prim/types.h"

namespace vx::prim {
namespace {

constexpr unsigned kFlushToZero = 0x8000;
constexpr unsigned kUnderflowMask = 0x0800;
constexpr unsigned kDenormalsAreZero = 0x0040;
// Nearest, traps masked, flush-to-zero, denormals-are-zero, no sticky flags.
constexpr unsigned kLibraryState = 0x9FC0;
// Nearest, traps masked, full precision.
constexpr std::uint16_t kLibraryX87 = 0x037F;

// The state-save area holds the bits of the control register that may be set; 0 stands for the set
// of the first processors, without the mode.
bool hasDenormalsAreZero() {
  alignas(16) std::uint8_t area[512] = {};
  _fxsave(area);
  std::uint32_t mask = 0;
  std::memcpy(&mask, area + 28, sizeof(mask));
  return (mask & kDenormalsAreZero) != 0;
}

// FNSTENV masks the exceptions of the x87 unit, so that FLDCW does not deliver one of the host's
// that is pending: it stays pending for the host.
FloatState enterLibraryState() noexcept {
  FloatState before;
  before.vector = _mm_getcsr();
  _mm_setcsr(kLibraryState);
  asm volatile("fnstenv %0" : "=m"(before.x87));
  asm volatile("fldcw %0" : : "m"(kLibraryX87));
  return before;
}

void leaveLibraryState(const FloatState& state) noexcept {
  asm volatile("fldenv %0" : : "m"(state.x87));
  _mm_setcsr(state.vector);
}

}  // namespace

int primSetFlushToZero(int enable, int* previous) {
  unsigned state = _mm_getcsr();
  if (enable != 0) {
    if (previous != nullptr) *previous = static_cast<int>(state & kUnderflowMask);
    state |= kFlushToZero | kUnderflowMask;
  } else {
    state &= ~kFlushToZero;
    if (previous != nullptr && *previous == 0) state &= ~kUnderflowMask;
  }
  _mm_setcsr(state);
  return kStatusOk;
}

int primSetDenormalsAreZero(int enable) {
  if (!hasDenormalsAreZero()) return kStatusNoFloatMode;
  const unsigned state = _mm_getcsr();
  _mm_setcsr(enable != 0 ? state | kDenormalsAreZero : state & ~kDenormalsAreZero);
  return kStatusOk;
}

FloatModeGuard::FloatModeGuard() noexcept : host_(enterLibraryState()) {}
FloatModeGuard::~FloatModeGuard() { leaveLibraryState(host_); }

HostFloatMode::HostFloatMode(const FloatModeGuard& guard) noexcept {
  leaveLibraryState(guard.host_);
}
HostFloatMode::~HostFloatMode() { enterLibraryState(); }

}  // namespace vx::prim
