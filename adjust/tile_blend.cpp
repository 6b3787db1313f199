#include "adjust/tile_blend.h"

#include <algorithm>
#include <cstddef>

#include "adjust/host_layout.h"
#include "prim/arith.h"
#include "prim/channel.h"
#include "prim/memory.h"
#include "prim/types.h"
#include "prim/window.h"

namespace vx {
namespace {

// Keeps the division defined, and out of every sum: the least weight of a tile is 1e-6.
constexpr float kPlaneWeightFloor = 1e-24f;
// Bartlett windows are 0 at the edges of a tile, which at the picture's edge no other tile covers.
constexpr float kTileWeightFloor = 1e-6f;
// Floats per plane of a band in the final pass: four planes of it stay in the L2 cache.
constexpr int kBandFloats = 16384;

}  // namespace

BlendPlane::~BlendPlane() {
  try {
    release();
  } catch (...) {  // another exception may be on its way already
  }
}

bool BlendPlane::acquire(int width, int height) {
  if (host_.allocates()) {
    data = static_cast<float*>(host_.allocate(sizeof(float) * static_cast<std::size_t>(width) *
                                              static_cast<std::size_t>(height)));
    fromHost_ = data != nullptr;
    step = static_cast<int>(sizeof(float)) * width;
  }
  if (data == nullptr) data = prim::primMalloc_32f_C1(width, height, &step);
  return data != nullptr;
}

void BlendPlane::release() {
  float* block = data;
  data = nullptr;
  if (block == nullptr) return;
  if (fromHost_)
    host_.release(block);
  else
    prim::primFree(block);
}

TileBlend::TileBlend(const HostCallbacks& host, int width, int height)
    : width_(width),
      height_(height),
      planes_{BlendPlane(host), BlendPlane(host), BlendPlane(host), BlendPlane(host)} {}

bool TileBlend::acquire(int tileWidth, int tileHeight) {
  bool complete = true;
  for (BlendPlane& plane : planes_) complete = plane.acquire(width_, height_) && complete;
  tileWeight_.emplace(tileWidth, tileHeight);
  return complete && tileWeight_->data != nullptr;
}

bool TileBlend::prepare() {
  for (int i = 0; i < 4; ++i)
    prim::primSet_32f_C1R(i < 3 ? 0.0f : kPlaneWeightFloor, planes_[i].data, planes_[i].step,
                          width_, height_);
  GIMG<float>& weight = *tileWeight_;
  prim::primSet_32f_C1R(1.0f, weight.data, weight.step, weight.width, weight.height);
  // A tile of two rows or columns is too small for the window and keeps equal weights.
  weight.status =
      prim::primWinBartlett2D_32f_C1IR(weight.data, weight.step, weight.width, weight.height);
  if (weight.status == prim::kStatusNoMemory) return false;
  prim::primAddC_32f_C1IR(kTileWeightFloor, weight.data, weight.step, weight.width, weight.height);
  return true;
}

void TileBlend::add(const RgbRows& rows, int y, int x0, int y0) {
  const GIMG<float>& weight = *tileWeight_;
  forEachBlock(rows.width, rows.height, [&](const Block& block) {
    const int w = block.width, h = block.height;
    float scratch[kBlockPixels];
    const int scratchStep = w * static_cast<int>(sizeof(float));
    const float* blockWeight = planePixel(weight.data, weight.step, block.x, y + block.y);
    const auto addTo = [&](const BlendPlane& plane, const float* src, int srcStep) {
      prim::primAdd_32f_C1IR(src, srcStep,
                             planePixel(plane.data, plane.step, x0 + block.x, y0 + y + block.y),
                             plane.step, w, h);
    };
    for (int c = 0; c < 3; ++c) {
      prim::primCopy_32f_C3C1R(planePixel(rows.data, rows.step, 3 * block.x, block.y) + c,
                               rows.step, scratch, scratchStep, w, h);
      prim::primMul_32f_C1IR(blockWeight, weight.step, scratch, scratchStep, w, h);
      addTo(planes_[c], scratch, scratchStep);
    }
    addTo(planes_[3], blockWeight, weight.step);
  });
}

// Band by band, so that the quotients are written out while they are in the cache.
void TileBlend::writeTo(const HostImage& image) {
  const int rows = image.rowsOverlap() ? 1 : std::max(1, kBandFloats / width_);
  const int steps[3] = {planes_[0].step, planes_[1].step, planes_[2].step};
  for (int y = 0; y < height_; y += std::min(rows, height_ - y)) {
    const int bandHeight = std::min(rows, height_ - y);
    const float* weights = planePixel(planes_[3].data, planes_[3].step, 0, y);
    float* band[3];
    for (std::size_t c = 0; c < 3; ++c) {
      band[c] = planePixel(planes_[c].data, steps[c], 0, y);
      prim::primDiv_32f_C1IR(weights, planes_[3].step, band[c], steps[c], width_, bandHeight);
    }
    writeHostPlanes(band, steps, width_, bandHeight, image.format, image.row(y), image.rowStep);
  }
}

void TileBlend::release() {
  for (BlendPlane& plane : planes_) plane.release();
}

}  // namespace vx
