#include "vxenhlib/nonlocal/quantised_guides.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vx {
namespace {

constexpr float kLow = -1.0f, kHigh = 1.5f, kMiddle = 0.25f;

void addShifted(const std::uint32_t* a, const std::uint32_t* b, int count, std::uint32_t* to) {
  for (int x = 0; x < count; ++x) to[x] = a[x] + b[x];
}

}  // namespace

bool QuantisedGuides::reserve(const PlaneView* planes, int count, int block, int rows,
                              float threshold, std::int32_t most) {
  std::copy(planes, planes + count, planes_);
  count_ = count;
  block_ = block;
  first_ = start_ = bottom_ = 0;
  const double range = double{kHigh} - double{kLow};
  double scale = std::sqrt(0x1p31 * 0.99 / (range * range * block * block * count));
  if (threshold > 0.0f) scale = std::min(scale, std::sqrt(double(most) / double{threshold}));
  scale_ = static_cast<float>(scale);
  const double limit = double{scale_} * double{scale_} * double{threshold};
  limit_ = limit > 0.0 ? static_cast<std::int32_t>(std::min(limit, double(most))) : 0;
  // More rows than are asked for: what is kept moves up only once in a while.
  rows_ = std::min(planes[0].height, rows + rows / 2);
  pitch_ = (std::ptrdiff_t{planes[0].width} + kPadding + 15) / 16 * 16;
  const auto row = static_cast<std::size_t>(pitch_);
  const std::size_t size = row * static_cast<std::size_t>(rows_);
  for (int g = 0; g < count; ++g)
    if (!pairs_[g].reserve(size)) return false;
  return energies_.reserve(size) && columns_.reserve(row) && twos_.reserve(row) &&
         fours_.reserve(row);
}

void QuantisedGuides::cover(int top, int bottom) {
  if (top < first_ || bottom_ - block_ < top) {  // the sums of the columns begin anew
    first_ = start_ = bottom_ = top;
    std::fill_n(columns_.data(), pitch_, 0u);
  } else if (bottom > first_ + rows_) {
    const auto bytes = static_cast<std::size_t>(pitch_ * (bottom_ - top)) * sizeof(std::uint32_t);
    for (int g = 0; g < count_; ++g) std::memmove(pairs_[g].data(), pairs(g, 0, top), bytes);
    std::memmove(energies_.data(), energies(0, top), bytes);
    first_ = top;
  }
  for (; bottom_ < bottom; ++bottom_) {
    for (int g = 0; g < count_; ++g) {
      quantise(g, bottom_);
      addSquares(g, bottom_);
    }
    if (bottom_ - start_ >= block_ - 1) sumEnergies(bottom_ - block_ + 1);
  }
}

// Two passes, so that the compiler makes vectors of both.
void QuantisedGuides::quantise(int guide, int y) {
  const int width = planes_[guide].width;
  const float* from = planes_[guide].row(y);
  std::uint32_t* to = at(pairs_[guide], 0, y);
  const float scale = scale_;
  // Moved above 0, where truncation rounds down.
  const float whole = std::ceil((kMiddle - kLow) * scale);
  const float offset = whole + 0.5f;
  const int below = static_cast<int>(whole);
  for (int x = 0; x < width; ++x) {
    const float high = from[x] < kHigh ? from[x] : from[x] >= kHigh ? kHigh : kLow;
    const float value = high > kLow ? high : kLow;
    to[x] =
        static_cast<std::uint32_t>(static_cast<int>((value - kMiddle) * scale + offset) - below);
  }
  std::fill(to + width, to + pitch_, 0u);
  for (int x = 0; x < width; ++x) to[x] = (to[x] & 0xFFFF) | to[x + 1] << 16;
}

void QuantisedGuides::addSquares(int guide, int y) {
  const int width = planes_[guide].width;
  const auto square = [](std::uint32_t pair) {
    const int q = static_cast<std::int16_t>(pair & 0xFFFF);
    return static_cast<std::uint32_t>(q * q);
  };
  std::uint32_t* columns = columns_.data();
  const std::uint32_t* row = pairs(guide, 0, y);
  if (y - block_ < start_) {
    for (int x = 0; x < width; ++x) columns[x] += square(row[x]);
    return;
  }
  const std::uint32_t* gone = pairs(guide, 0, y - block_);
  for (int x = 0; x < width; ++x) columns[x] += square(row[x]) - square(gone[x]);
}

// Sums of 8, 12 or 16 neighbours from sums of 2 and 4 of them.
void QuantisedGuides::sumEnergies(int y) {
  const int width = planes_[0].width;
  std::uint32_t* twos = twos_.data();
  std::uint32_t* fours = fours_.data();
  std::uint32_t* to = at(energies_, 0, y);
  addShifted(columns_.data(), columns_.data() + 1, width + 14, twos);
  addShifted(twos, twos + 2, width + 12, fours);
  addShifted(fours, fours + 4, width + 8, twos);
  if (block_ == 8) std::copy_n(twos, width, to);
  if (block_ == 12) addShifted(twos, fours + 8, width, to);
  if (block_ == 16) addShifted(twos, twos + 8, width, to);
  std::fill(to + width, to + pitch_, 0u);
}

}  // namespace vx
