#include "adjust/host_layout.h"
#include "adjust/host_pixels.h"
#include "prim/arith.h"
#include "prim/threshold.h"

namespace vx {
namespace {

using prim::primRndNear;

// The top of the 16-bit range.
constexpr std::uint16_t kTop[3] = {0x8000, 0x8000, 0x8000};

template <class L>
constexpr bool kDeep = sizeof(typename L::Sample) == 2;

// One block of float colour on the samples' scale, into the host pixels.
template <class L>
void narrowBlock(L layout, const float* src, int srcStep, const Block& block, std::uint8_t* pixels,
                 int rowStep) {
  const int w = block.width, h = block.height;
  auto* first = hostSample(layout, pixels, rowStep, block.x, block.y, L::kFirstColour);
  if constexpr (L::kSamples == 3) {
    const int status = L::narrow(src, srcStep, first, rowStep, w, h, primRndNear);
    if constexpr (kDeep<L>) {
      if (status >= 0) prim::primThreshold_GT_16u_C3IR(first, rowStep, w, h, kTop);
    }
  } else {
    typename L::Sample plane[kBlockPixels];
    typename L::Sample colour[3 * kBlockPixels];
    const int planeStep = w * static_cast<int>(sizeof plane[0]);
    L::narrow(src, srcStep, colour, 3 * planeStep, w, h, primRndNear);
    for (int c = 0; c < 3; ++c) {
      L::takeOf3(colour + c, 3 * planeStep, plane, planeStep, w, h);
      L::putIn4(plane, planeStep, first + c, rowStep, w, h);
    }
  }
}

// Cuts the colour samples of a block, from its first one on, to the top of the 16-bit range.
template <class L>
void cutColour(L /*layout*/, std::uint16_t* first, int rowStep, int w, int h) {
  if constexpr (L::kSamples == 3) {
    prim::primThreshold_GT_16u_C3IR(first, rowStep, w, h, kTop);
  } else {
    prim::primThreshold_GT_16u_AC4IR(first, rowStep, w, h, kTop);
  }
}

}  // namespace

int writeHostImage(const RgbRows& rows, int format, void* pixels, int rowStep) {
  const auto write = [&]<class L>(L layout) {
    if (pixels == nullptr || rows.data == nullptr) return;
    auto* dst = static_cast<std::uint8_t*>(pixels);
    const float toSamples[3] = {1.0f / L::kScale, 1.0f / L::kScale, 1.0f / L::kScale};
    forEachBlock(rows.width, rows.height, [&](const Block& block) {
      float* src = planePixel(rows.data, rows.step, 3 * block.x, block.y);
      prim::primMulC_32f_C3IR(toSamples, src, rows.step, block.width, block.height);
      narrowBlock(layout, src, rows.step, block, dst, rowStep);
    });
    // Three words a pixel from the start of the row, as in the three-channel layout: part of the
    // documented behaviour of format 6.
    if constexpr (kDeep<L> && L::kSamples == 4)
      prim::primThreshold_GT_16u_C3IR(reinterpret_cast<std::uint16_t*>(dst), rowStep, rows.width,
                                      rows.height, kTop);
  };
  return withLayout(format, write) ? 1 : 0;
}

int writeHostPlanes(float* const planes[3], const int planeSteps[3], int width, int height,
                    int format, void* pixels, int rowStep) {
  const auto write = [&]<class L>(L layout) {
    if (pixels == nullptr) return;
    auto* dst = static_cast<std::uint8_t*>(pixels);
    forEachBlock(width, height, [&](const Block& block) {
      const int w = block.width, h = block.height;
      typename L::Sample plane[kBlockPixels];
      const int planeStep = w * static_cast<int>(sizeof plane[0]);
      const auto put = L::kSamples == 3 ? L::putIn3 : L::putIn4;
      auto* first = hostSample(layout, dst, rowStep, block.x, block.y, L::kFirstColour);
      for (int c = 0; c < 3; ++c) {
        if (planes[c] == nullptr) continue;
        float* src = planePixel(planes[c], planeSteps[c], block.x, block.y);
        prim::primMulC_32f_C1IR(1.0f / L::kScale, src, planeSteps[c], w, h);
        L::narrowPlane(src, planeSteps[c], plane, planeStep, w, h, primRndNear);
        put(plane, planeStep, first + c, rowStep, w, h);
      }
      if constexpr (kDeep<L>) cutColour(layout, first, rowStep, w, h);
    });
  };
  return withLayout(format, write) ? 1 : 0;
}

}  // namespace vx
