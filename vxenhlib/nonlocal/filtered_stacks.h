#pragma once

#include <cstddef>

#include "frame/aligned_array.h"
#include "vxenhlib/nonlocal/stack_filter.h"

namespace vx {

/// The stacks that one thread of the walk filtered last. A column of blocks is visited from two
/// tiles, and in photographs six times of ten the second one finds the same blocks alike: what the
/// filter made of them is the same too.
class FilteredStacks {
 public:
  struct Stack {
    int depth = 0;  ///< blocks; 0 in a stack that holds nothing yet
    StackMatches matches;
    float* blockWeight;  ///< rows blockWidth apart
    float* blocks;       ///< of all planes, stackFloats apart
  };

  /// For stacks of `planes` planes; false when memory is short. Forgets all stacks.
  bool reserve(const StackShape& shape, int planes);

  /// The stack of these blocks, compared with the same second match, from now on known by this
  /// choice of them; null when it is not there.
  const Stack* find(const StackMatches& matches, int depth);

  /// The stack chosen last for the block at (x, y), when a map from column `leftmost` on gives it
  /// too and all its costs that the choice did not see are at least `leastNew`; else null.
  const Stack* find(int x, int y, int leftmost, float leastNew) const;

  /// The oldest stack, to be replaced by the one of these blocks. An earlier choice for the same
  /// block is forgotten: it has not seen what this one has.
  Stack& replaceOldest(const StackMatches& matches, int depth);

 private:
  // A group of blocks asks for two stacks of the group before it, having replaced two at most.
  static constexpr int kKept = 4;

  Stack stacks_[kKept];
  int oldest_ = 0;
  AlignedArray<float> floats_;
};

}  // namespace vx
