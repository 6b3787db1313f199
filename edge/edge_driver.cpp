#include "edge/edge_driver.h"

#include <climits>
#include <cstddef>
#include <cstdint>

#include "edge/edge_plane.h"
#include "edge/enh_edge.h"
#include "edge/yuv_transform.h"
#include "prim/arith.h"
#include "prim/convert.h"
#include "prim/threshold.h"

namespace vx {
namespace {

using namespace prim;

void applySettings(const EdgeSettings& s, EnhEdge& edge) {
  edge.baseGain = static_cast<float>(s.baseGain);
  edge.rangeFloor = static_cast<float>(s.rangeFloor);
  edge.blurSigmaX = static_cast<float>(s.blurSigmaX);
  edge.blurSigmaY = static_cast<float>(s.blurSigmaY);
  edge.adaptiveGain = static_cast<float>(s.adaptiveGain);
  edge.chromaBlurX = static_cast<float>(s.chromaBlurX);
  edge.chromaBlurY = static_cast<float>(s.chromaBlurY);
  edge.chromaShiftX = s.chromaShiftX;
  edge.chromaShiftY = s.chromaShiftY;
  edge.alignSigmaX = static_cast<float>(s.alignSigmaX);
  edge.alignSigmaY = static_cast<float>(s.alignSigmaY);
  edge.alignThreshold = static_cast<float>(s.alignThreshold);
  edge.edgeReserved = s.edgeReserved;
}

// One row of the host's samples to floats and back.
void readRow(bool deep, const void* host, float* rgb, int width) {
  const int rgbStep = width * 12;
  if (deep) {
    primConvert_16u32f_C3R(static_cast<const std::uint16_t*>(host), width * 6, rgb, rgbStep, width,
                           1);
  } else {
    primConvert_8u32f_C3R(static_cast<const std::uint8_t*>(host), width * 3, rgb, rgbStep, width,
                          1);
  }
  primMulC_32f_C1IR(deep ? 1.0f / 32768.0f : 1.0f / 256.0f, rgb, rgbStep, 3 * width, 1);
}

void writeRow(bool deep, float* rgb, void* host, int width) {
  const int rgbStep = width * 12;
  primMulC_32f_C1IR(deep ? 32768.0f : 256.0f, rgb, rgbStep, 3 * width, 1);
  // The limit comes first, since it turns a NaN into the top of the range.
  primThreshold_GT_32f_C1IR(rgb, rgbStep, 3 * width, 1, deep ? 32767.0f : 255.0f);
  if (deep) {
    primConvert_32f16u_C3R(rgb, rgbStep, static_cast<std::uint16_t*>(host), width * 6, width, 1,
                           primRndNear);
  } else {
    primConvert_32f8u_C3R(rgb, rgbStep, static_cast<std::uint8_t*>(host), width * 3, width, 1,
                          primRndNear);
  }
}

}  // namespace

int enhanceEdges(bool deep, void* pixels, int rowStep, int width, int height,
                 const EdgeSettings& settings) {
  if (pixels == nullptr || width < 1 || height < 1) return 1;
  if (width > INT_MAX / 12 - 32) throw MemoryException();
  const std::ptrdiff_t hostStep = std::ptrdiff_t{rowStep} * (deep ? 2 : 1);
  std::uint8_t* const host = static_cast<std::uint8_t*>(pixels);

  EdgePlane rgb(3 * width, 1);
  EdgePlane yuv[3];
  for (EdgePlane& plane : yuv) plane.resize(width, height);
  for (int y = 0; y < height; ++y) {
    readRow(deep, host + hostStep * y, rgb.data, width);
    rgbToYuv(rgb.data, rgb.step, yuv, y, 1);
  }

  EnhEdge edge(1.5f, 1.5f, 0.01f, 1.0, 1.0);
  applySettings(settings, edge);
  edge.enhanceAll(yuv[0], yuv[1], yuv[2]);

  for (int y = 0; y < height; ++y) {
    yuvToRgb(yuv, y, 1, rgb.data, rgb.step);
    writeRow(deep, rgb.data, host + hostStep * y, width);
  }
  return 1;
}

}  // namespace vx
