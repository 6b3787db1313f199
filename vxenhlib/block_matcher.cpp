#include "vxenhlib/block_matcher.h"

#include <algorithm>
#include <cstring>

#include "prim/vector.h"

namespace vx {

void integrate(const PlaneView& squares) {
  if (squares.empty()) return;
  float* above = squares.row(0);
  for (int x = 1; x < squares.width; ++x) above[x] += above[x - 1];
  for (int y = 1; y < squares.height; ++y) {
    float* row = squares.row(y);
    row[0] += above[0];
    for (int x = 1; x < squares.width; ++x) row[x] += row[x - 1] + above[x] - above[x - 1];
    above = row;
  }
}

float boxSum(const PlaneView& integral, int x, int y, int width, int height) {
  const float* bottom = integral.row(y + height - 1);
  const float* top = y > 0 ? integral.row(y - 1) : nullptr;
  const float left = x > 0 ? bottom[x - 1] : 0.0f;
  const float above = top != nullptr ? top[x + width - 1] : 0.0f;
  const float corner = top != nullptr && x > 0 ? top[x - 1] : 0.0f;
  return bottom[x + width - 1] - left - above + corner;
}

bool BlockMatcher::reserve(const SearchShape& shape) {
  shape_ = shape;
  rowFloats_ = fftRowFloats(shape.searchWidth);
  floats_ = static_cast<std::size_t>(shape.searchHeight) * static_cast<std::size_t>(rowFloats_);
  const auto width = static_cast<std::size_t>(shape.searchWidth);
  oldest_ = 0;
  for (Turned& t : turned_) {
    t.x = t.y = -1;
    if (!t.spectrum.reserve(floats_)) return false;
  }
  if (!tileSpectrum_.reserve(floats_) || !product_.reserve(floats_) ||
      !energy_.reserve(width * static_cast<std::size_t>(shape.searchHeight)) ||
      !zeroRow_.reserve(width))
    return false;
  std::fill(zeroRow_.data(), zeroRow_.data() + width, 0.0f);
  return true;
}

void BlockMatcher::setTile(const FftPlan& plan, const PlaneView& guide, const PlaneView& integral,
                           const Tile& tile) {
  tile_ = tile;
  const int across = tile.width - shape_.blockWidth + 1;
  const int down = tile.height - shape_.blockHeight + 1;
  for (int v = 0; v < down; ++v) {
    const int y = tile.y + v;
    const float* bottom = integral.row(y + shape_.blockHeight - 1) + tile.x;
    const float* top = y > 0 ? integral.row(y - 1) + tile.x : zeroRow_.data();
    const int right = shape_.blockWidth - 1;
    float* energy = energy_.data() + std::ptrdiff_t{v} * shape_.searchWidth;
    energy[0] = boxSum(integral, tile.x, y, shape_.blockWidth, shape_.blockHeight);
    for (int u = 1; u < across; ++u)
      energy[u] = bottom[u + right] - bottom[u - 1] - top[u + right] + top[u - 1];
  }

  float* spectrum = tileSpectrum_.data();
  if (tile.width < shape_.searchWidth || tile.height < shape_.searchHeight)
    std::memset(spectrum, 0, floats_ * sizeof(float));
  for (int v = 0; v < tile.height; ++v)
    std::memcpy(spectrum + std::ptrdiff_t{v} * rowFloats_, guide.row(tile.y + v) + tile.x,
                static_cast<std::size_t>(tile.width) * sizeof(float));
  plan.forward(spectrum);
}

// Turned, so that the product of the spectra is a correlation.
const float* BlockMatcher::turnedSpectrum(const FftPlan& plan, const PlaneView& guide, int x,
                                          int y) {
  for (const Turned& t : turned_)
    if (t.x == x && t.y == y) return t.spectrum.data();
  Turned& t = turned_[oldest_];
  oldest_ = (oldest_ + 1) % kTurned;
  t.x = x;
  t.y = y;
  float* spectrum = t.spectrum.data();
  std::memset(spectrum, 0, floats_ * sizeof(float));
  for (int r = 0; r < shape_.blockHeight; ++r) {
    const float* from = guide.row(y + shape_.blockHeight - 1 - r) + x;
    float* to = spectrum + std::ptrdiff_t{r} * rowFloats_;
    for (int c = 0; c < shape_.blockWidth; ++c) to[c] = from[shape_.blockWidth - 1 - c];
  }
  plan.forward(spectrum);
  return spectrum;
}

float BlockMatcher::addCosts(const FftPlan& plan, const PlaneView& guide, const PlaneView& integral,
                             int x, int y, bool first, const PlaneView& costs) {
  const int right = shape_.blockWidth - 1;
  const int low = shape_.blockHeight - 1;
  const float blockEnergy = boxSum(integral, x, y, shape_.blockWidth, shape_.blockHeight);

  float* spectrum = product_.data();
  std::memcpy(spectrum, turnedSpectrum(plan, guide, x, y), floats_ * sizeof(float));
  prim::primvMul_32fc_I(reinterpret_cast<const prim::Complex32f*>(tileSpectrum_.data()),
                        reinterpret_cast<prim::Complex32f*>(spectrum),
                        static_cast<int>(floats_ / 2));
  plan.inverse(spectrum);

  const float scale = -2.0f / static_cast<float>(shape_.searchHeight * shape_.searchWidth);
  const int across = tile_.width - right;
  const int down = tile_.height - low;
  for (int v = 0; v < down; ++v) {
    const float* energy = energy_.data() + std::ptrdiff_t{v} * shape_.searchWidth;
    const float* product = spectrum + std::ptrdiff_t{v + low} * rowFloats_ + right;
    float* cost = costs.row(v);
    if (first) {
      for (int u = 0; u < across; ++u) cost[u] = (energy[u] + blockEnergy) + product[u] * scale;
    } else {
      for (int u = 0; u < across; ++u) cost[u] += (energy[u] + blockEnergy) + product[u] * scale;
    }
  }
  return blockEnergy;
}

}  // namespace vx
