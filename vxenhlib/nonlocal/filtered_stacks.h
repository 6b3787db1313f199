#pragma once

#include <cstddef>

#include "frame/aligned_array.h"
#include "vxenhlib/nonlocal/stack_selection.h"

namespace vx {

/// The stacks that one thread of the walk filtered last. A column of blocks is visited from two
/// areas, and in photographs six times of ten the second one finds the same blocks alike: what the
/// filter made of them is the same too.
class FilteredStacks {
 public:
  struct Stack {
    int depth = 0;  ///< blocks; 0 in a stack that holds nothing yet
    StackMatches matches;
    float* blockWeight;  ///< blockSize by blockSize
    float* blocks;       ///< of all planes, planeFloats() apart, one block behind the other
  };

  /// For stacks of up to `depth` blocks in `planes` planes; false when memory is short. Forgets all
  /// stacks.
  bool reserve(int blockSize, int depth, int planes);
  std::ptrdiff_t planeFloats() const { return planeFloats_; }

  /// The stack chosen last for the block at (x, y), where the choice from an area that begins at
  /// column `leftmost`, with new positions that cost `leastNew` or more, is the same; else null.
  const Stack* sameChoice(int x, int y, int leftmost, std::int32_t leastNew) const;

  /// The oldest stack, to be replaced by a new one for the block at (x, y). An earlier choice for
  /// the same block is forgotten: it has not seen what this one has.
  Stack& replaceOldest(int x, int y);

 private:
  // A group of blocks asks for two stacks of the group before it: the one before the last of that
  // group, and the last, each after two more at most.
  static constexpr int kKept = 4;

  Stack stacks_[kKept];
  int oldest_ = 0;
  std::ptrdiff_t planeFloats_ = 0;
  AlignedArray<float> floats_;
};

}  // namespace vx
