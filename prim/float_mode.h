#pragma once

#include <cstdint>

namespace vx::prim {

/// Switches the thread's flush-to-zero mode: denormal results of the vector unit become 0.
///
/// Switching on masks the underflow exception as well and leaves the other masks alone.
/// @param previous   may be null; switching on stores the former underflow mask (0x800 or 0),
///   switching off reads it and clears the mask again if it holds 0
/// @return kStatusOk: every 64-bit processor has the mode
int primSetFlushToZero(int enable, int* previous);

/// Switches the thread's denormals-are-zero mode: denormal operands of the vector unit count as 0.
///
/// @return kStatusNoFloatMode if the processor lacks the mode
int primSetDenormalsAreZero(int enable);

/// A thread's floating-point state: control and flags of the vector unit and of the x87 unit.
struct FloatState {
  unsigned vector;       ///< MXCSR
  std::uint32_t x87[7];  ///< as FNSTENV lays it out: control, status, tags, last instruction
};

/// Gives the thread the floating-point state that every computation of the library assumes (round
/// to nearest, all exceptions masked; in the vector unit flush-to-zero and denormals-are-zero) and
/// puts the thread's own state back, flags included, when it goes out of scope.
///
/// The C library rounds the numbers that it prints as the x87 unit is told to. A thread inherits
/// the state of its creator and keeps it, so every thread of a team needs a guard of its own.
/// Guarding takes 0.1 to 0.2 us.
class FloatModeGuard {
 public:
  FloatModeGuard() noexcept;
  ~FloatModeGuard();
  FloatModeGuard(const FloatModeGuard&) = delete;
  FloatModeGuard& operator=(const FloatModeGuard&) = delete;

 private:
  friend class HostFloatMode;
  FloatState host_;
};

/// Gives the thread back the host's state for the duration of a callback; changes that the callback
/// makes to it are lost.
class HostFloatMode {
 public:
  explicit HostFloatMode(const FloatModeGuard& guard) noexcept;
  ~HostFloatMode();
  HostFloatMode(const HostFloatMode&) = delete;
  HostFloatMode& operator=(const HostFloatMode&) = delete;
};

}  // namespace vx::prim
