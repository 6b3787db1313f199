#pragma once

namespace vx::prim {

int primSetFlushToZero(int enable, int* previous);
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
