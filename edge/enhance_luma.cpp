#include <cmath>

#include "edge/edge_plane.h"
#include "edge/enh_edge.h"
#include "edge/gauss_kernel7.h"
#include "frame/to_int.h"
#include "prim/arith.h"
#include "prim/filter.h"
#include "prim/geometry.h"
#include "prim/rank.h"
#include "prim/threshold.h"

namespace vx {
namespace {

using namespace prim;

constexpr int kReach = kGaussReach;
constexpr int kCubic = 4;  // the interpolation of primResize_32f_C1R

}  // namespace

// Buffers of one tile. The local range is needed three pixels around it.
struct EnhEdge::LumaScratch {
  LumaScratch(int width, int height)
      : column(width + 2 * kReach, height + 2 * kReach),
        highest(width + 2 * kReach, height + 2 * kReach),
        lowest(width + 2 * kReach, height + 2 * kReach),
        range(width + 2 * kReach, height + 2 * kReach),
        mask(width, height) {}

  EdgePlane column;
  EdgePlane highest;
  EdgePlane lowest;
  EdgePlane range;
  ImageBuffer<std::uint8_t> mask;
};

int EnhEdge::enhanceLuma(const EdgePlane& input, EdgePlane& output) {
  EdgePlane resampled;
  const EdgePlane* image = &input;
  scaledWidth = input.width;
  scaledHeight = input.height;
  if (std::fabs(scaleX - 1.0) > 0.0001 || std::fabs(scaleY - 1.0) > 0.0001) {
    scaledWidth = toInt(input.width * scaleX);
    scaledHeight = toInt(input.height * scaleY);
    resampled.resize(scaledWidth, scaledHeight);
    primSet_32f_C1R(0.0f, resampled.data, resampled.step, scaledWidth, scaledHeight);
    primResize_32f_C1R(input.data, input.width, input.height, input.step, 0, 0, input.width,
                       input.height, resampled.data, resampled.step, scaledWidth, scaledHeight,
                       scaleX, scaleY, kCubic);
    image = &resampled;
  }
  const int width = scaledWidth;
  const int height = scaledHeight;
  ensureSize(output, width, height);
  if (width < 1 || height < 1) return 1;

  // The frame has no detail, so it returns the input whatever the gains are.
  if (width <= 2 * kReach || height <= 2 * kReach) {
    primCopy_32f_C1R(image->data, image->step, output.data, output.step, width, height);
    return 1;
  }
  copyBorder(*image, output, kReach, kReach);
  const int innerWidth = width - 2 * kReach;
  const int innerHeight = height - 2 * kReach;
  const int bufferWidth = tileWidth < innerWidth ? tileWidth : innerWidth;
  const int bufferHeight = tileHeight < innerHeight ? tileHeight : innerHeight;
  LumaScratch scratch(bufferWidth, bufferHeight);
  blurred.resize(bufferWidth, bufferHeight);
  detail.resize(bufferWidth, bufferHeight);
  ratio.resize(bufferWidth, bufferHeight);
  forTiles(kReach, kReach, width - kReach, height - kReach, bufferWidth, bufferHeight,
           [&](int x0, int y0, int x1, int y1) {
             enhanceTile(*image, x0, y0, x1, y1, output, scratch);
           });
  return 1;
}

// One tile of pixels x0..x1 - 1, y0..y1 - 1, none of them within three of the border.
void EnhEdge::enhanceTile(const EdgePlane& image, int x0, int y0, int x1, int y1, EdgePlane& output,
                          LumaScratch& scratch) {
  const int width = x1 - x0;
  const int height = y1 - y0;
  const int wide = width + 2 * kReach;
  const int high = height + 2 * kReach;
  const int left = x0 - kReach;
  const int top = y0 - kReach;
  const int step = image.step;
  const float* centre = at(image, x0, y0);

  // Base layer and detail.
  const float* vertical = at(image, left, y0);
  int verticalStep = step;
  if (!(blurSigmaY <= 0.4f)) {
    primFilterColumn_32f_C1R(vertical, step, scratch.column.data, scratch.column.step, wide, height,
                             gaussKernel7(blurSigmaY), kGaussTaps, kGaussReach);
    vertical = scratch.column.data;
    verticalStep = scratch.column.step;
  }
  if (!(blurSigmaX <= 0.4f)) {
    primFilterRow_32f_C1R(vertical + kReach, verticalStep, blurred.data, blurred.step, width,
                          height, gaussKernel7(blurSigmaX), kGaussTaps, kGaussReach);
  } else {
    primCopy_32f_C1R(vertical + kReach, verticalStep, blurred.data, blurred.step, width, height);
  }
  primSub_32f_C1R(blurred.data, blurred.step, centre, step, detail.data, detail.step, width,
                  height);

  // Local extremes, three pixels around the tile; on the image's border a pixel is both of its own.
  const int cutLeft = left == 0 ? 1 : 0;
  const int cutTop = top == 0 ? 1 : 0;
  const int cutRight = left + wide == image.width ? 1 : 0;
  const int cutBottom = top + high == image.height ? 1 : 0;
  const auto extremes = [&](auto filter, EdgePlane& extreme) {
    filter(at(image, left + cutLeft, top + cutTop), step, at(extreme, cutLeft, cutTop),
           extreme.step, wide - cutLeft - cutRight, high - cutTop - cutBottom);
    const auto copyRim = [&](int x, int y, int w, int h) {
      primCopy_32f_C1R(at(image, left + x, top + y), step, at(extreme, x, y), extreme.step, w, h);
    };
    if (cutTop != 0) copyRim(0, 0, wide, 1);
    if (cutBottom != 0) copyRim(0, high - 1, wide, 1);
    if (cutLeft != 0) copyRim(0, 0, 1, high);
    if (cutRight != 0) copyRim(wide - 1, 0, 1, high);
  };
  extremes(primDilate3x3_32f_C1R, scratch.highest);
  extremes(primErode3x3_32f_C1R, scratch.lowest);

  // Their range, smoothed by twice the sigmas of the base layer, whatever these are.
  EdgePlane& range = scratch.range;
  primSub_32f_C1R(scratch.lowest.data, scratch.lowest.step, scratch.highest.data,
                  scratch.highest.step, range.data, range.step, wide, high);
  primFilterColumn_32f_C1R(at(range, 0, kReach), range.step, scratch.column.data,
                           scratch.column.step, wide, height, gaussKernel7(blurSigmaY * 2.0f),
                           kGaussTaps, kGaussReach);
  primFilterRow_32f_C1R(scratch.column.data + kReach, scratch.column.step, range.data, range.step,
                        width, height, gaussKernel7(blurSigmaX * 2.0f), kGaussTaps, kGaussReach);

  // The smaller of the distances to the extremes over the range.
  float* below = at(scratch.highest, kReach, kReach);
  float* above = at(scratch.lowest, kReach, kReach);
  primSub_32f_C1IR(centre, step, below, scratch.highest.step, width, height);
  primSub_32f_C1R(above, scratch.lowest.step, centre, step, ratio.data, ratio.step, width, height);
  primCompare_32f_C1R(below, scratch.highest.step, ratio.data, ratio.step, scratch.mask.data,
                      scratch.mask.step, width, height, kCompareLess);
  primCopy_32f_C1MR(below, scratch.highest.step, ratio.data, ratio.step, width, height,
                    scratch.mask.data, scratch.mask.step);
  primAddC_32f_C1IR(rangeFloor, range.data, range.step, width, height);
  primDiv_32f_C1IR(range.data, range.step, ratio.data, ratio.step, width, height);

  combineLuma(at(output, x0, y0), output.step, width, height);
}

void EnhEdge::combineLuma(float* output, int outputStep, int width, int height) {
  primMulC_32f_C1R(ratio.data, ratio.step, adaptiveGain, output, outputStep, width, height);
  if (gainLimit < 99.0f) primThreshold_GT_32f_C1IR(output, outputStep, width, height, gainLimit);
  primAddC_32f_C1IR(baseGain, output, outputStep, width, height);
  primMul_32f_C1IR(detail.data, detail.step, output, outputStep, width, height);
  primAdd_32f_C1IR(blurred.data, blurred.step, output, outputStep, width, height);
}

}  // namespace vx
