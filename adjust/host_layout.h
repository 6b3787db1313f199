#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/row_at.h"
#include "prim/channel.h"
#include "prim/convert.h"

namespace vx {

// The primitives of the two sample types under common names. The functions of one type have the
// same signature but for the sample.
struct Samples8 {
  using Sample = std::uint8_t;
  static constexpr float kScale = 1.0f / 256.0f;
  static constexpr auto widenPlane = prim::primConvert_8u32f_C1R;
  static constexpr auto widen = prim::primConvert_8u32f_C3R;
  static constexpr auto narrowPlane = prim::primConvert_32f8u_C1R;
  static constexpr auto narrow = prim::primConvert_32f8u_C3R;
  static constexpr auto takeOf3 = prim::primCopy_8u_C3C1R;
  static constexpr auto takeOf4 = prim::primCopy_8u_C4C1R;
  static constexpr auto putIn3 = prim::primCopy_8u_C1C3R;
  static constexpr auto putIn4 = prim::primCopy_8u_C1C4R;
};

struct Samples16 {
  using Sample = std::uint16_t;
  static constexpr float kScale = 1.0f / 32768.0f;
  static constexpr auto widenPlane = prim::primConvert_16u32f_C1R;
  static constexpr auto widen = prim::primConvert_16u32f_C3R;
  static constexpr auto narrowPlane = prim::primConvert_32f16u_C1R;
  static constexpr auto narrow = prim::primConvert_32f16u_C3R;
  static constexpr auto takeOf3 = prim::primCopy_16u_C3C1R;
  static constexpr auto takeOf4 = prim::primCopy_16u_C4C1R;
  static constexpr auto putIn3 = prim::primCopy_16u_C1C3R;
  static constexpr auto putIn4 = prim::primCopy_16u_C1C4R;
};

/// Host pixels of `N` samples; with 4 the first one is not colour.
template <class Samples, int N>
struct Layout : Samples {
  using typename Samples::Sample;
  static constexpr int kSamples = N;
  static constexpr int kPixelBytes = N * static_cast<int>(sizeof(Sample));
  static constexpr int kFirstColour = N - 3;
};

/// Calls visit with the layout of a format; false, and no call, for an unknown one.
template <class Visit>
bool withLayout(int format, const Visit& visit) {
  switch (format) {
    case 1:
      return visit(Layout<Samples8, 3>()), true;
    case 3:
      return visit(Layout<Samples16, 3>()), true;
    case 5:
      return visit(Layout<Samples8, 4>()), true;
    case 6:
      return visit(Layout<Samples16, 4>()), true;
    default:
      return false;
  }
}

/// Whether a format can be read and written.
inline bool known(int format) {
  return withLayout(format, [](auto) {});
}

/// Whether the functions for interleaved floats refuse a row step: the conversions that read and
/// write formats without an extra channel want one of 1 and more.
inline bool refusesStep(int format, int rowStep) {
  bool refuses = false;
  withLayout(format, [&](auto layout) { refuses = layout.kSamples == 3 && rowStep < 1; });
  return refuses;
}

/// Pixels of a block: 48 KB as float RGB, which together with its samples stays in the L2 cache of
/// every processor in use; the temporaries in samples fit on the stack.
constexpr int kBlockPixels = 4096;

struct Block {
  int x, y, width, height;
};

/// Calls body for the blocks of a rectangle, rows in order.
template <class Body>
void forEachBlock(int width, int height, const Body& body) {
  if (width < 1 || height < 1) return;
  const int columns = std::min(width, kBlockPixels);
  const int rows = kBlockPixels / columns;
  for (int y = 0; y < height;) {
    const int blockHeight = std::min(rows, height - y);
    for (int x = 0; x < width;) {
      const int blockWidth = std::min(columns, width - x);
      body(Block{x, y, blockWidth, blockHeight});
      x += blockWidth;
    }
    y += blockHeight;
  }
}

/// Address of sample `sample` of pixel (x, y).
template <class L, class Byte>
auto* hostSample(L /*layout*/, Byte* pixels, int rowStep, int x, int y, int sample) {
  using Sample = typename L::Sample;
  Byte* at = pixels + std::ptrdiff_t{rowStep} * y + std::ptrdiff_t{x} * L::kPixelBytes +
             sample * static_cast<int>(sizeof(Sample));
  if constexpr (std::is_const_v<Byte>)
    return reinterpret_cast<const Sample*>(at);
  else
    return reinterpret_cast<Sample*>(at);
}

/// Address of pixel (x, y) of a float plane whose rows are `step` bytes apart.
inline float* planePixel(float* plane, int step, int x, int y) { return rowAt(plane, step, y) + x; }

}  // namespace vx
