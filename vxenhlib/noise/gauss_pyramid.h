#pragma once

#include <cstdint>
#include <memory>

#include "frame/aligned_array.h"
#include "frame/img.h"
#include "vxenhlib/vxrc.h"

namespace vx {

/// Copies what two images of any sizes have in common to the top left of `target`, and fills the
/// rest of it by repeating the last copied column and row.
void copyPadded(const GIMG<float>& source, GIMG<float>& target);

/// Halvings of an image by the Gaussian pyramid of prim/pyramid.h. The image is padded first, so
/// that every level has exactly half the size of the one before.
class GaussPyramid {
 public:
  static constexpr int kMostLevels = 7;

  bool laplacian = false;  ///< each level but the last holds its difference to the next, expanded
  int levels = 0;          ///< number of halvings
  std::unique_ptr<GIMG<float>> level[kMostLevels + 1];  ///< level 0 is the padded image

  GaussPyramid() = default;
  GaussPyramid(const GaussPyramid&) = delete;
  GaussPyramid& operator=(const GaussPyramid&) = delete;

  /// Makes the levels from an image. Memory is kept from one image to the next of its size.
  ///
  /// @return kVxrcBadArgument for a number of levels outside 1 to 7; kVxrcNoMemory, with no levels
  int build(const GIMG<float>& image, int newLevels, bool newLaplacian);

  /// detail = level `index` minus the next one, expanded; the expansion stays in level `index`.
  ///
  /// @return kVxrcBadArgument for a laplacian pyramid or an index without a next level;
  ///   kVxrcSizeMismatch for a detail of another size than the level
  int takeDetail(int index, GIMG<float>& detail);

 private:
  bool reallocate(int width, int height);
  void release();

  AlignedArray<std::uint8_t> downBuffer_;
  AlignedArray<std::uint8_t> upBuffer_;
};

}  // namespace vx
