#include <cstdlib>

#include "adjust/host_layout.h"
#include "adjust/host_pixels.h"
#include "prim/arith.h"
#include "prim/memory.h"

namespace vx {
namespace {

constexpr float kZero[3] = {0.0f, 0.0f, 0.0f};

// The colour of one block as floats on the samples' own scale.
template <class L>
int widenBlock(L layout, const std::uint8_t* src, int rowStep, const Block& block, float* dst,
               int dstStep) {
  const auto* first = hostSample(layout, src, rowStep, block.x, block.y, L::kFirstColour);
  if constexpr (L::kSamples == 3) {
    return L::widen(first, rowStep, dst, dstStep, block.width, block.height);
  } else {
    typename L::Sample plane[kBlockPixels];
    typename L::Sample colour[3 * kBlockPixels];
    const int planeStep = block.width * static_cast<int>(sizeof plane[0]);
    for (int c = 0; c < 3; ++c) {
      L::takeOf4(first + c, rowStep, plane, planeStep, block.width, block.height);
      L::putIn3(plane, planeStep, colour + c, 3 * planeStep, block.width, block.height);
    }
    return L::widen(colour, 3 * planeStep, dst, dstStep, block.width, block.height);
  }
}

template <class L>
int widenPlaneBlock(L layout, const std::uint8_t* src, int rowStep, int channel, const Block& block,
                    float* dst, int dstStep) {
  const auto* first = hostSample(layout, src, rowStep, block.x, block.y, L::kFirstColour + channel);
  typename L::Sample plane[kBlockPixels];
  const int planeStep = block.width * static_cast<int>(sizeof plane[0]);
  const auto take = L::kSamples == 3 ? L::takeOf3 : L::takeOf4;
  take(first, rowStep, plane, planeStep, block.width, block.height);
  return L::widenPlane(plane, planeStep, dst, dstStep, block.width, block.height);
}

}  // namespace

int bytesPerPixel(int format) {
  int bytes = 0;
  withLayout(format, [&](auto layout) { bytes = layout.kPixelBytes; });
  return bytes;
}

bool HostImage::rowsOverlap() const {
  return height > 1 &&
         std::abs(std::int64_t{rowStep}) < std::int64_t{bytesPerPixel(format)} * width;
}

int readHostImage(int format, const void* pixels, int rowStep, int x, int y, const RgbRows& rows) {
  const auto read = [&]<class L>(L layout) {
    if (pixels == nullptr || rows.data == nullptr) return;
    const auto* src = static_cast<const std::uint8_t*>(pixels) + std::ptrdiff_t{rowStep} * y +
                      std::ptrdiff_t{x} * L::kPixelBytes;
    const float scale[3] = {L::kScale, L::kScale, L::kScale};
    const float middle[3] = {0.49f * L::kScale, 0.49f * L::kScale, 0.49f * L::kScale};
    forEachBlock(rows.width, rows.height, [&](const Block& block) {
      float* dst = planePixel(rows.data, rows.step, 3 * block.x, block.y);
      if (widenBlock(layout, src, rowStep, block, dst, rows.step) < 0)
        prim::primSet_32f_C3R(kZero, dst, rows.step, block.width, block.height);
      prim::primMulC_32f_C3IR(scale, dst, rows.step, block.width, block.height);
      prim::primAddC_32f_C3IR(middle, dst, rows.step, block.width, block.height);
    });
  };
  return withLayout(format, read) ? 1 : 0;
}

int readHostPlanes(int format, const void* pixels, int rowStep, GIMG<float>* const planes[3]) {
  const auto read = [&]<class L>(L layout) {
    const auto* src = static_cast<const std::uint8_t*>(pixels);
    for (int c = 0; c < 3; ++c) {
      GIMG<float>& plane = *planes[c];
      if (pixels == nullptr || plane.data == nullptr) continue;
      forEachBlock(plane.roiWidth, plane.roiHeight, [&](const Block& block) {
        float* dst = planePixel(plane.data, plane.step, block.x, block.y);
        widenPlaneBlock(layout, src, rowStep, c, block, dst, plane.step);
        prim::primMulC_32f_C1IR(L::kScale, dst, plane.step, block.width, block.height);
        plane.status =
            prim::primAddC_32f_C1IR(L::kScale * 0.49f, dst, plane.step, block.width, block.height);
      });
    }
  };
  return withLayout(format, read) ? 1 : 0;
}

}  // namespace vx
