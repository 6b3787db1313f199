#pragma once

// Calls of all exported functions, for tests of what no circumstance of a call may change.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vx::test {

struct Service {
  std::string name;
  /// Makes the call on a picture of its own and returns what it gave: the bytes of the picture, the
  /// result, or how it ended. Any number of threads may be in it.
  std::function<std::vector<std::uint8_t>()> call;
  /// Float sums of a plane decide: the generic bodies add in another order than all others.
  bool sums = false;
};

const std::vector<Service>& services();

}  // namespace vx::test
