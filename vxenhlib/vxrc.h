#pragma once

namespace vx {

/// Results of the classes for noise and tone.
enum VXRC : int {
  kVxrcOk = 0,
  kVxrcNoMemory = 1,      ///< memory allocation failed inside a grid class
  kVxrcSizeMismatch = 2,  ///< a plane has another size than was set up
  kVxrcBadArgument = 4,
  kVxrcBadSetup = 5  ///< a set-up value out of range
};

}  // namespace vx
