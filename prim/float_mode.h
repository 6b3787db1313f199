#pragma once

namespace vx::prim {

/// Switches the thread's flush-to-zero mode: denormal results of the vector unit become 0.
///
/// Switching on masks the underflow exception as well and leaves the other masks alone.
/// @param previous   may be null; switching on stores the underflow mask that was (0x800 or 0),
///   switching off reads it and takes the mask away again if it holds 0
/// @return kStatusOk: every 64-bit processor has the mode
int primSetFlushToZero(int enable, int* previous);

/// Switches the thread's denormals-are-zero mode: denormal operands of the vector unit count as 0.
///
/// @return kStatusNoFloatMode if the processor lacks the mode
int primSetDenormalsAreZero(int enable);

/// Gives the thread the floating-point state that every computation of the library assumes (round
/// to nearest, all exceptions masked, flush-to-zero, denormals-are-zero) and puts the thread's own
/// state back when it goes out of scope.
class FloatModeGuard {
 public:
  FloatModeGuard() noexcept;
  ~FloatModeGuard();
  FloatModeGuard(const FloatModeGuard&) = delete;
  FloatModeGuard& operator=(const FloatModeGuard&) = delete;

  /// The state that the thread had before; for calls back into the host.
  unsigned hostState() const noexcept { return saved_; }

 private:
  unsigned saved_;
};

/// Gives the thread back the host's state for the length of a callback.
class HostFloatMode {
 public:
  explicit HostFloatMode(const FloatModeGuard& guard) noexcept;
  ~HostFloatMode();
  HostFloatMode(const HostFloatMode&) = delete;
  HostFloatMode& operator=(const HostFloatMode&) = delete;

 private:
  unsigned saved_;
};

}  // namespace vx::prim
