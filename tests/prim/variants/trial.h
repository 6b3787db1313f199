#pragma once

#include <cfloat>
#include <cmath>
#include <iterator>
#include <limits>
#include <type_traits>

#include "prim/types.h"
#include "tests/prim/variants/guarded_image.h"
#include "tests/prim/variants/prim_info.h"

namespace vx::test {

/// Where the values of a trial's images come from.
enum class Fill {
  few,     ///< four values: equal neighbours, greys, hits on every relation
  unit,    ///< floats in 0..1
  pixels,  ///< floats around 0..255, bytes and words in that range, quarters so that ties occur
  words,   ///< floats around the 16-bit ranges, half of them ties
  spread,  ///< floats of many magnitudes, none denormal; integers over their whole range
  wild     ///< floats with infinities, NaN, denormals, -0 and the ends of ranges among them
};

/// Trials of a primitive: widths 1 to 70 in every placement, then some long rows.
inline constexpr int kNarrowWidths = 70, kPlacements = 4;
inline constexpr int kLongWidths[] = {127, 256, 257, 1031};
inline constexpr int kLongHeight = 13;
inline constexpr int kTrials = kPlacements * (kNarrowWidths + int(std::size(kLongWidths)));

/// Size, placement and values of one call, all drawn from a fixed seed.
class Trial {
 public:
  Trial(const Prim& entry, int trial) : number(trial), seed(static_cast<std::uint32_t>(trial)) {
    std::uint32_t hash = 2166136261u;  // FNV-1a
    for (const char c : entry.name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
    rng.seed(seed += hash);
    placement = static_cast<Placement>(number % kPlacements);
    const int index = number / kPlacements;
    const bool isLong = index >= kNarrowWidths;
    width = isLong ? kLongWidths[index - kNarrowWidths] : index + 1;
    height = isLong ? kLongHeight : pick({1, 2, 3, 5, 8});
    packed = oneIn(6);
    bottomUp = oneIn(12);
    fill = static_cast<Fill>(uniform(0, int(Fill::wild)));
  }

  const int number;
  std::uint32_t seed;
  int width, height;
  bool packed;    ///< no bytes between rows
  bool bottomUp;  ///< negative steps, which many primitives refuse
  Placement placement;
  Fill fill;
  std::mt19937 rng;

  int uniform(int low, int high) {
    return low + static_cast<int>(rng() % static_cast<unsigned>(high - low + 1));
  }
  bool oneIn(int n) { return uniform(1, n) == 1; }
  template <class T, std::size_t n>
  T pick(const T (&set)[n]) {
    return set[rng() % n];
  }

  /// For primitives whose result on infinities and NaN is not defined.
  void stayFinite() {
    if (fill == Fill::wild) fill = Fill::spread;
  }
  /// Bytes between the rows of the trial's next image, other ones for every image.
  int nextPadding(int addressBytes) {
    return packed ? 0 : addressBytes * (1 + 4 * images_++ + uniform(0, 3));
  }
  template <class T>
  T value() {
    if constexpr (std::is_same_v<T, float>)
      return floatValue();
    else if constexpr (std::is_same_v<T, prim::Complex32f>)
      return {floatValue(), floatValue()};
    else if constexpr (std::is_integral_v<T>)
      return static_cast<T>(integerValue(std::is_signed_v<T>, sizeof(T)));
    else
      return T(uniform(-100, 100));
  }

 private:
  float floatValue() {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    // The processor's own NaN. With another one the operand that a compiler puts first would show
    // in the sign of a sum of two NaNs, which no formula decides.
    constexpr float kNaN = -std::numeric_limits<float>::quiet_NaN();
    static constexpr float kSpecial[] = {
        0.0f,     -0.0f,    kInfinity, -kInfinity, kNaN,      FLT_MAX,    -FLT_MAX,   FLT_MIN,
        1e-40f,   -1e-40f,  0.5f,      1.5f,       2.5f,      254.5f,     254.50002f, 0.4999999f,
        65535.0f, 32767.5f, -32768.5f, 1.0f,       88.72284f, -87.33655f, 3e9f,       -3e9f};
    const auto r = static_cast<std::uint32_t>(rng());
    if (fill == Fill::few) return static_cast<float>(r % 4) * 0.25f;
    if (fill == Fill::unit) return static_cast<float>(r >> 8) * 0x1p-24f;
    if (fill == Fill::pixels) return static_cast<float>(r % 1536) * 0.25f - 64.0f;
    if (fill == Fill::words) return static_cast<float>(r % 262144) * 0.5f - 49152.0f;
    if (fill == Fill::spread)
      return std::ldexp(static_cast<float>(static_cast<int>(r | 0x40000000)), uniform(-60, -1));
    return r % 4 == 0 ? pick(kSpecial) : static_cast<float>(r % 4096) * 0.125f - 128.0f;
  }

  std::int64_t integerValue(bool isSigned, std::size_t bytes) {
    const std::int64_t high = (std::int64_t{1} << (8 * bytes - (isSigned ? 1 : 0))) - 1;
    const std::int64_t low = isSigned ? -high - 1 : 0;
    const auto r = static_cast<std::int64_t>(rng());
    const std::int64_t kSpecial[] = {low, low + 1, high - 1, high, 0, 1, high / 2, high / 2 + 1};
    return fill == Fill::few || fill == Fill::unit ? r % 4 - (isSigned ? 1 : 0)
           : fill == Fill::wild                    ? pick(kSpecial)
           : fill == Fill::pixels                  ? r % 256
                                                   : low + r % (high - low + 1);
  }

  int images_ = 0;
};

/// Size of an image that differs from the trial's.
struct Shape {
  int width, height;
  Pixels pixels{};
  Frame frame{};
  int padding = -1;          ///< bytes between rows; -1: other ones for every image
  bool oddAddresses = true;  ///< 16-bit elements may start anywhere
};

/// A guarded image of elements T, filled with values of the trial.
template <class T>
class Image : public GuardedImage {
 public:
  Image(Trial& trial, Role role, const Shape& shape)
      : GuardedImage(role, layoutOf(trial, shape), trial.rng) {
    const Frame& f = layout_.frame;
    for (int y = -f.top; y < layout_.height + f.bottom; ++y)
      for (int x = -f.left; x < layout_.width + f.right; ++x)
        for (int c = 0; c < layout_.pixels.used; ++c)
          set(x * layout_.pixels.stride + c, y, trial.value<T>());
  }

  T* data() const { return reinterpret_cast<T*>(address(0, 0)); }
  void set(int element, int row, T value) { std::memcpy(address(row, element), &value, sizeof(T)); }

 private:
  static Layout layoutOf(Trial& trial, const Shape& shape) {
    // 16-bit images may start at odd addresses and have odd steps.
    const int addressBytes = sizeof(T) == 2 && shape.oddAddresses ? 1 : int(alignof(T));
    const int padding = shape.padding < 0 ? trial.nextPadding(addressBytes) : shape.padding;
    const int channel = shape.pixels.used == 1 ? trial.uniform(0, shape.pixels.stride - 1) : 0;
    return {int(sizeof(T)), addressBytes, shape.width, shape.height,    shape.pixels,
            channel,        shape.frame,  padding,     trial.placement, trial.bottomUp};
  }
};

/// One row of values without padding: a vector, a table or a scalar result.
inline Shape listOf(int length) { return {length, 1, {}, {}, 0, false}; }

}  // namespace vx::test
