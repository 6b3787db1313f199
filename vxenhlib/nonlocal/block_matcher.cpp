#include "vxenhlib/nonlocal/block_matcher.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "prim/vector.h"

namespace vx {
namespace {

prim::Complex32f* complexOf(float* data) { return reinterpret_cast<prim::Complex32f*>(data); }

}  // namespace

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

bool BlockMatcher::reserve(const SearchShape& shape, int guides, const PlaneView* planes,
                           const PlaneView* integrals) {
  shape_ = shape;
  guides_ = guides;
  std::copy(planes, planes + guides, planes_);
  std::copy(integrals, integrals + guides, integrals_);
  const std::size_t floats = SearchTransform::floatsOf(shape);
  const auto width = static_cast<std::size_t>(shape.searchWidth);
  for (int p = 0; p < guides; ++p)
    if (!tileSpectrum_[p].reserve(floats)) return false;
  if (!pairSpectrum_.reserve(floats) || !product_.reserve(floats) || !energy_.reserve(floats / 2) ||
      !extension_[0].reserve(floats / 2) || !extension_[1].reserve(floats / 2) ||
      !zeroRow_.reserve(width) ||
      !columns_.reserve(shape.blockWidth, shape.blockHeight, shape.searchWidth, shape.searchHeight))
    return false;
  std::fill(zeroRow_.data(), zeroRow_.data() + width, 0.0f);
  return true;
}

void BlockMatcher::setEnergies() {
  const int across = tile_.width - shape_.blockWidth + 1;
  const int down = tile_.height - shape_.blockHeight + 1;
  const int right = shape_.blockWidth - 1;
  for (int p = 0; p < guides_; ++p) {
    const PlaneView& integral = integrals_[p];
    for (int v = 0; v < down; ++v) {
      const int y = tile_.y + v;
      const float* bottom = integral.row(y + shape_.blockHeight - 1) + tile_.x;
      const float* top = y > 0 ? integral.row(y - 1) + tile_.x : zeroRow_.data();
      float* energy = energy_.data() + std::ptrdiff_t{v} * shape_.searchWidth;
      const auto put = [p](float& sum, float value) { sum = p == 0 ? value : sum + value; };
      put(energy[0], boxSum(integral, tile_.x, y, shape_.blockWidth, shape_.blockHeight));
      for (int u = 1; u < across; ++u)
        put(energy[u], bottom[u + right] - bottom[u - 1] - top[u + right] + top[u - 1]);
    }
  }
}

void BlockMatcher::setTile(const SearchTransform& transform, const Tile& tile) {
  tile_ = tile;
  setEnergies();
  const std::ptrdiff_t rowFloats = 2 * std::ptrdiff_t{shape_.searchWidth};
  for (int p = 0; p < guides_; ++p) {
    float* to = tileSpectrum_[p].data();
    for (int v = 0; v < tile.height; ++v, to += rowFloats) {
      const float* from = planes_[p].row(tile.y + v) + tile.x;
      for (int u = 0; u < tile.width; ++u) {
        to[2 * u] = from[u];
        to[2 * u + 1] = 0.0f;
      }
      std::fill(to + 2 * tile.width, to + rowFloats, 0.0f);
    }
    std::fill(to, to + (shape_.searchHeight - tile.height) * rowFloats, 0.0f);
    transform.forward(tileSpectrum_[p].data());
  }
}

float BlockMatcher::energy(int x, int y) const {
  float sum = 0.0f;
  for (int p = 0; p < guides_; ++p)
    sum += boxSum(integrals_[p], x, y, shape_.blockWidth, shape_.blockHeight);
  return sum;
}

// The blocks are turned by half a turn, so that the product of the spectra is a correlation.
void BlockMatcher::search(const SearchTransform& transform, const BlockPair& pair,
                          const PlaneView maps[2]) {
  const int right = shape_.blockWidth - 1;
  const int low = shape_.blockHeight - 1;
  const std::size_t floats = SearchTransform::floatsOf(shape_);
  const std::ptrdiff_t rowFloats = 2 * std::ptrdiff_t{shape_.searchWidth};
  for (int p = 0; p < guides_; ++p) {
    float* spectrum = p == 0 ? product_.data() : pairSpectrum_.data();
    float* to = spectrum;
    for (int r = 0; r <= low; ++r, to += rowFloats) {
      const float* upper = planes_[p].row(pair.y[0] + low - r) + pair.x;
      const float* lower = planes_[p].row(pair.y[1] + low - r) + pair.x;
      for (int c = 0; c <= right; ++c) {
        to[2 * c] = upper[right - c];
        to[2 * c + 1] = lower[right - c];
      }
      std::fill(to + 2 * right + 2, to + rowFloats, 0.0f);
    }
    std::fill(to, spectrum + floats, 0.0f);
    transform.forwardBlocks(spectrum);
    prim::primvMul_32fc_I(complexOf(tileSpectrum_[p].data()), complexOf(spectrum),
                          static_cast<int>(floats / 2));
    if (p > 0) prim::primvAdd_32f_I(spectrum, product_.data(), static_cast<int>(floats));
  }
  transform.inverse(product_.data());

  const float scale = -2.0f / static_cast<float>(shape_.searchHeight * shape_.searchWidth);
  const int across = tile_.width - right;
  const int down = tile_.height - low;
  const float upper = energy(pair.x, pair.y[0]);
  const float lower = energy(pair.x, pair.y[1]);
  for (int v = 0; v < down; ++v) {
    const float* energy = energy_.data() + std::ptrdiff_t{v} * shape_.searchWidth;
    const float* product = product_.data() + (v + low) * rowFloats + 2 * right;
    float* first = maps[0].row(v);
    float* second = maps[1].row(v);
    for (int u = 0; u < across; ++u) {
      first[u] = (energy[u] + upper) + product[2 * u] * scale;
      second[u] = (energy[u] + lower) + product[2 * u + 1] * scale;
    }
  }
}

std::array<float, 2> BlockMatcher::extend(int shift, const BlockPair& pair) {
  const int down = tile_.height - shape_.blockHeight + 1;
  const int kept = tile_.width - shape_.blockWidth + 1 - shift;
  std::array<float, 2> least;
  least.fill(std::numeric_limits<float>::infinity());
  if (shift == 0) return least;
  for (int p = 0; p < guides_; ++p) {
    columns_.setRegion(planes_[p], tile_.x + kept, tile_.y, shift, tile_.height);
    for (std::size_t j = 0; j < 2; ++j) {
      columns_.correlate(planes_[p], pair.x, pair.y[j]);
      const float own = energy(pair.x, pair.y[j]);
      for (int u = 0; u < shift; ++u) {
        float* costs = extension_[j].data() + std::ptrdiff_t{u} * shape_.searchHeight;
        const float* sums = columns_.sums(u);
        if (p == 0) {
          const float* energy = energy_.data() + kept + u;
          for (int v = 0; v < down; ++v)
            costs[v] = (energy[std::ptrdiff_t{v} * shape_.searchWidth] + own) - 2.0f * sums[v];
        } else {
          for (int v = 0; v < down; ++v) costs[v] -= 2.0f * sums[v];
        }
        if (p == guides_ - 1)
          for (int v = 0; v < down; ++v) least[j] = costs[v] < least[j] ? costs[v] : least[j];
      }
    }
  }
  return least;
}

void BlockMatcher::slide(int shift, int j, const PlaneView& map) const {
  if (shift == 0) return;
  const int down = tile_.height - shape_.blockHeight + 1;
  const int kept = tile_.width - shape_.blockWidth + 1 - shift;
  for (int v = 0; v < down; ++v) {
    float* row = map.row(v);
    std::memmove(row, row + shift, static_cast<std::size_t>(kept) * sizeof(float));
    const float* costs = extension_[j].data() + v;
    for (int u = 0; u < shift; ++u) row[kept + u] = costs[std::ptrdiff_t{u} * shape_.searchHeight];
  }
}

}  // namespace vx
