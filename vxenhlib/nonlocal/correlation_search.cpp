#include "vxenhlib/nonlocal/correlation_search.h"

#include <algorithm>
#include <cmath>

#include "prim/vector.h"

namespace vx {
namespace {

prim::Complex32f* complexOf(float* data) { return reinterpret_cast<prim::Complex32f*>(data); }

}  // namespace

bool CorrelationSearch::reserve(const SearchShape& shape) {
  shape_ = shape;
  const std::size_t floats = SearchTransform::floatsOf(shape);
  return area_.reserve(floats) && pair_.reserve(floats) && product_.reserve(floats);
}

void CorrelationSearch::transformArea(const QuantisedGuides& guides, int guide,
                                      const SearchArea& area) {
  const std::ptrdiff_t rowFloats = 2 * std::ptrdiff_t{shape_.searchSize};
  float* to = area_.data();
  std::fill_n(to, SearchTransform::floatsOf(shape_), 0.0f);
  for (int v = 0; v < area.height; ++v, to += rowFloats)
    for (int u = 0; u < area.width; ++u)
      to[2 * u] = static_cast<float>(guides.sample(guide, area.x + u, area.y + v));
  transform_.forward(area_.data());
}

// The blocks are turned by half a turn, so that the product of the spectra is a correlation.
void CorrelationSearch::transformPair(const QuantisedGuides& guides, int guide,
                                      const BlockPair& pair, float* to) {
  const std::ptrdiff_t rowFloats = 2 * std::ptrdiff_t{shape_.searchSize};
  std::fill_n(to, SearchTransform::floatsOf(shape_), 0.0f);
  for (int r = 0; r < shape_.blockSize; ++r)
    for (int c = 0; c < shape_.blockSize; ++c)
      for (int j = 0; j < 2; ++j)
        to[r * rowFloats + 2 * c + j] = static_cast<float>(guides.sample(
            guide, pair.x + shape_.blockSize - 1 - c, pair.y[j] + shape_.blockSize - 1 - r));
  transform_.forward(to);
}

void CorrelationSearch::search(const QuantisedGuides& guides, int /*planeWidth*/,
                               const BlockPair& pair, const SearchArea& area,
                               std::array<CostMap, 2>& maps) {
  const auto floats = static_cast<int>(SearchTransform::floatsOf(shape_));
  for (int g = 0; g < guides.count(); ++g) {
    float* spectrum = g == 0 ? product_.data() : pair_.data();
    transformArea(guides, g, area);
    transformPair(guides, g, pair, spectrum);
    prim::primvMul_32fc_I(complexOf(area_.data()), complexOf(spectrum), floats / 2);
    if (g > 0) prim::primvAdd_32f_I(spectrum, product_.data(), floats);
  }
  transform_.inverse(product_.data());

  // Position (u, v) stands where the block's last sample is.
  const int last = shape_.blockSize - 1;
  const double scale = 2.0 / (double{1} * shape_.searchSize * shape_.searchSize);
  for (std::size_t j = 0; j < 2; ++j) {
    CostMap& map = maps[j];
    map.rows = area.height - last;
    map.columns = area.width - last;
    map.x = area.x;
    map.y = area.y;
    const double own = *guides.energies(pair.x, pair.y[j]);
    for (int v = 0; v < map.rows; ++v) {
      const std::uint32_t* energies = guides.energies(area.x, area.y + v);
      const float* products =
          product_.data() + 2 * (std::ptrdiff_t{v + last} * shape_.searchSize + last) + j;
      std::int32_t* costs = map.costs.data() + std::ptrdiff_t{v} * map.lanes;
      for (int u = 0; u < map.columns; ++u) {
        const double cost = own + energies[u] - scale * double{products[2 * u]};
        costs[u] = static_cast<std::int32_t>(std::clamp(cost + 0.5, 0.0, 0x1p31 - 1.0));
      }
    }
  }
}

}  // namespace vx
