#include "vxenhlib/nonlocal/filtered_stacks.h"

#include <algorithm>

namespace vx {

bool FilteredStacks::reserve(const StackShape& shape, int planes) {
  // Each part begins on a multiple of 16 floats.
  const auto padded = [](std::size_t floats) { return (floats + 15) / 16 * 16; };
  const std::size_t window = padded(static_cast<std::size_t>(shape.blockWidth) *
                                    static_cast<std::size_t>(shape.blockHeight));
  const std::size_t blocks =
      padded(static_cast<std::size_t>(planes) * static_cast<std::size_t>(shape.stackFloats));
  if (!floats_.reserve(kKept * (window + blocks))) return false;
  float* next = floats_.data();
  for (Stack& stack : stacks_) {
    stack.depth = 0;
    stack.blockWeight = next;
    stack.blocks = next + window;
    next += window + blocks;
  }
  oldest_ = 0;
  return true;
}

const FilteredStacks::Stack* FilteredStacks::find(const StackMatches& matches, int depth) {
  const int compared = std::max(depth, 2);  // the second one tells the local noise
  for (Stack& stack : stacks_)
    if (stack.depth == depth && std::equal(matches.x, matches.x + compared, stack.matches.x) &&
        std::equal(matches.y, matches.y + compared, stack.matches.y)) {
      stack.matches = matches;
      return &stack;
    }
  return nullptr;
}

const FilteredStacks::Stack* FilteredStacks::find(int x, int y, int leftmost,
                                                  float leastNew) const {
  for (const Stack& stack : stacks_) {
    const StackMatches& m = stack.matches;
    if (stack.depth > 0 && m.x[0] == x && m.y[0] == y)
      return m.leftmost >= leftmost && leastNew > m.bound ? &stack : nullptr;
  }
  return nullptr;
}

FilteredStacks::Stack& FilteredStacks::replaceOldest(const StackMatches& matches, int depth) {
  for (Stack& other : stacks_)
    if (other.depth > 0 && other.matches.x[0] == matches.x[0] && other.matches.y[0] == matches.y[0])
      other.depth = 0;
  Stack& stack = stacks_[oldest_];
  oldest_ = (oldest_ + 1) % kKept;
  stack.depth = depth;
  stack.matches = matches;
  return stack;
}

}  // namespace vx
