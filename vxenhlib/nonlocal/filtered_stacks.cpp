#include "vxenhlib/nonlocal/filtered_stacks.h"

namespace vx {

bool FilteredStacks::reserve(int blockSize, int depth, int planes) {
  const std::ptrdiff_t window = std::ptrdiff_t{blockSize} * blockSize;
  planeFloats_ = window * depth;
  const std::ptrdiff_t each = window + planeFloats_ * planes;
  if (!floats_.reserve(static_cast<std::size_t>(kKept * each))) return false;
  float* next = floats_.data();
  for (Stack& stack : stacks_) {
    stack.depth = 0;
    stack.blockWeight = next;
    stack.blocks = next + window;
    next += each;
  }
  oldest_ = 0;
  return true;
}

const FilteredStacks::Stack* FilteredStacks::sameChoice(int x, int y, int leftmost,
                                                        std::int32_t leastNew) const {
  for (const Stack& stack : stacks_) {
    const StackMatches& m = stack.matches;
    if (stack.depth > 0 && m.x[0] == x && m.y[0] == y)
      return m.leftmost >= leftmost && leastNew > m.bound ? &stack : nullptr;
  }
  return nullptr;
}

FilteredStacks::Stack& FilteredStacks::replaceOldest(int x, int y) {
  for (Stack& other : stacks_)
    if (other.depth > 0 && other.matches.x[0] == x && other.matches.y[0] == y) other.depth = 0;
  Stack& stack = stacks_[oldest_];
  oldest_ = (oldest_ + 1) % kKept;
  return stack;
}

}  // namespace vx
