#pragma once

#include "vxenhlib/nonlocal/block_search.h"
#include "vxenhlib/nonlocal/search_transform.h"

namespace vx {

/// The search by correlation in the frequency domain: the products of a block with all positions of
/// an area in a few transforms, whose price does not depend on the number of positions. It is the
/// plain evaluation, any step and any shape, and the costs are off by what single precision loses
/// in the transforms, a millionth of the largest ones.
///
/// Two blocks travel as the real and the imaginary part of one picture; the guides' products are
/// added before they are transformed back.
class CorrelationSearch final : public BlockSearch {
 public:
  /// The transform outlives this.
  explicit CorrelationSearch(const SearchTransform& transform) : transform_(transform) {}

  bool reserve(const SearchShape& shape) override;
  void search(const QuantisedGuides& guides, int planeWidth, const BlockPair& pair,
              const SearchArea& area, std::array<CostMap, 2>& maps) override;

 private:
  void transformArea(const QuantisedGuides& guides, int guide, const SearchArea& area);
  void transformPair(const QuantisedGuides& guides, int guide, const BlockPair& pair, float* to);

  const SearchTransform& transform_;
  SearchShape shape_;
  FftBuffer area_;
  FftBuffer pair_;
  FftBuffer product_;
};

}  // namespace vx
