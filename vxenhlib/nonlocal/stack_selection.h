#pragma once

#include "frame/aligned_array.h"
#include "frame/plane_view.h"

namespace vx {

/// The blocks of one stack, by the image positions of their first pixels. Entry 0 is the block that
/// was asked for; one entry behind the last that counts may hold the best block that was refused.
struct StackMatches {
  static constexpr int kMost = 32;

  int x[kMost];
  int y[kMost];
  float cost[kMost];

  /// A map without columns left of this image position, and with more columns whose costs are all
  /// above `bound`, gives the same choice.
  int leftmost;
  float bound;
};

/// Chooses the blocks of a stack from a map of costs. Keeps the smallest cost of each row, so that
/// a choice costs a look at these and at the rows that it blanks. One object serves one thread.
class StackSelection {
 public:
  /// For maps of up to `rows` rows; false when memory is short.
  bool reserve(int rows) { return rowLeast_.reserve(static_cast<std::size_t>(rows)); }

  /// Takes the cheapest position, first in row order, again and again. Around each one taken, the
  /// block's own position first of all, a square of half-width `exclusion` is blanked with 1e20:
  /// blocks that overlap almost fully would all say the same. A NaN is never taken, except that
  /// position (0, 0) of a map of NaN alone counts as 0.
  ///
  /// @param costs      overwritten
  /// @param ownU,ownV  the block's own position in the map
  /// @param tileX,tileY  image position of the map's position (0, 0)
  /// @param limit      most blocks, 1 to 16
  /// @param threshold  ends the choice at the first cost above it
  /// @return the number of blocks taken, at least 1
  int select(const PlaneView& costs, int ownU, int ownV, int tileX, int tileY, int limit,
             int exclusionX, int exclusionY, float threshold, StackMatches& matches);

 private:
  void blank(const PlaneView& costs, int u, int v, int exclusionX, int exclusionY);
  float takeLeast(const PlaneView& costs, int& u, int& v) const;

  AlignedArray<float> rowLeast_;
};

}  // namespace vx
