#pragma once

#include <cstdint>

#include "frame/aligned_array.h"
#include "frame/plane_view.h"

namespace vx {

/// Guide planes as small integers, a few rows of them at a time, and the sums of squares of the
/// blocks in them: what an exact search works on. One object serves one thread.
///
/// A sample v becomes q = round((v - 0.25) * scale), v limited to -1 and 1.5 first: luma and chroma
/// of a picture lie well inside, and a NaN counts as the lower limit. One scale serves all guides:
/// the largest with which no cost leaves 31 bits, and the threshold of the search, scale^2 times as
/// large in these units, stays below a given one. That is far below the noise: a step is 1/2300
/// where the noise has a sigma of 10/255.
///
/// Rows are held as pairs (q(x), q(x + 1)), the form of prim/match.h, with zeros to the right of
/// the plane.
class QuantisedGuides {
 public:
  static constexpr int kMost = 3;

  /// Forgets all rows; false when memory is short.
  ///
  /// @param rows       as many as cover() is asked for at a time
  /// @param threshold  largest cost of interest, in units of the planes
  /// @param most       what it may become here
  bool reserve(const PlaneView* planes, int count, int block, int rows, float threshold,
               std::int32_t most);

  /// Makes the rows from `top` to below `bottom` available; rows above `top` are lost. What the
  /// call before has left is kept, and cheapest where both move down a little.
  void cover(int top, int bottom);

  int count() const { return count_; }
  std::ptrdiff_t pitch() const { return pitch_; }
  /// The threshold in units of the costs here.
  std::int32_t limit() const { return limit_; }

  const std::uint32_t* pairs(int guide, int x, int y) const { return at(pairs_[guide], x, y); }
  /// The sum of the squares of the block at (x, y) in all guides; the block's rows are available.
  const std::uint32_t* energies(int x, int y) const { return at(energies_, x, y); }
  int sample(int guide, int x, int y) const {
    return static_cast<std::int16_t>(*pairs(guide, x, y) & 0xFFFF);
  }

 private:
  // A map may be 64 lanes wide, a block 16 samples.
  static constexpr int kPadding = 96;

  std::uint32_t* at(const AlignedArray<std::uint32_t>& rows, int x, int y) const {
    return rows.data() + (y - first_) * pitch_ + x;
  }
  void quantise(int guide, int y);
  void addSquares(int guide, int y);
  void sumEnergies(int y);

  PlaneView planes_[kMost];
  int count_ = 0;
  int block_ = 0;
  int rows_ = 0;  // of memory
  float scale_ = 0.0f;
  std::int32_t limit_ = 0;
  std::ptrdiff_t pitch_ = 0;
  int first_ = 0;   // row that memory begins with
  int start_ = 0;   // row that the sums of the columns began with
  int bottom_ = 0;  // one behind the last row available
  AlignedArray<std::uint32_t> pairs_[kMost];
  AlignedArray<std::uint32_t> energies_;
  AlignedArray<std::uint32_t> columns_;  // squares of the last `block` rows, column by column
  AlignedArray<std::uint32_t> twos_;     // scratch of a row
  AlignedArray<std::uint32_t> fours_;    // scratch of a row
};

}  // namespace vx
