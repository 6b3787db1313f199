#include "vxenhlib/noise/grid_denoise.h"

#include "frame/bands.h"
#include "prim/arith.h"
#include "prim/channel.h"
#include "prim/memory.h"
#include "vxenhlib/noise/luma_chroma.h"

namespace vx {
namespace {

class GridDenoise {
 public:
  GridDenoise(IMG3<float>& image, GIMG<float>* const* removed)
      : image_(image),
        removed_(removed),
        width_(image.roiWidth),
        height_(image.roiHeight),
        rows_(bandRows(0, width_, height_)) {
    for (int c = 0; c < 3; ++c)
      planes_[c] = PlaneView(image.data + std::ptrdiff_t{c} * width_, image.step, width_, height_);
  }

  bool begin(const GridStep& luma, const GridStep& chroma) {
    const auto pixels = static_cast<std::size_t>(width_) * static_cast<std::size_t>(rows_);
    if (!scratch_.reserve(3 * pixels)) return false;
    for (int c = 0; c < 3; ++c)
      on_[c] = (c == 0 ? luma : chroma).setUp(grids_[c], width_, height_) && grids_[c].startSplat();
    return true;
  }

  void run() {
    parallelThenLanes(
        height_, rows_, 3, [&](int y, int count, int slot) { separate(y, count, slot); },
        [&](int c, int y, int count) { splat(c, y, count); });
    parallelFor(0, 3, [&](int c) { complete(c); });
    parallelBands(height_, rows_, [&](int y, int count, int slot) { join(y, count, slot); });
  }

 private:
  struct Rows {
    PlaneView plane[3];
  };
  Rows scratch(int count, int slot) const {
    const int step = width_ * static_cast<int>(sizeof(float));
    float* first = scratch_.at(slot);
    const std::ptrdiff_t pixels = std::ptrdiff_t{width_} * rows_;
    return {{{first, step, width_, count},
             {first + pixels, step, width_, count},
             {first + 2 * pixels, step, width_, count}}};
  }

  void separate(int y, int count, int slot) {
    const Rows rows = scratch(count, slot);
    for (int c = 0; c < 3; ++c) {
      const PlaneView& to = rows.plane[c];
      prim::primCopy_32f_C3C1R(image_.row(y) + c, image_.step, to.data, to.step, width_, count);
      if (removed_ != nullptr) {
        const PlaneView before = PlaneView(*removed_[c]).rows(y, count);
        prim::primCopy_32f_C1R(to.data, to.step, before.data, before.step, width_, count);
      }
    }
    toLumaChroma(rows.plane, true);
    for (int c = 0; c < 3; ++c)
      prim::primCopy_32f_C1R(rows.plane[c].data, rows.plane[c].step, planes_[c].row(y), image_.step,
                             width_, count);
  }

  void splat(int c, int y, int count) {
    const PlaneView rows = planes_[c].rows(y, count);
    if (on_[c]) grids_[c].splatRows(y, rows, rows);
  }

  void complete(int c) {
    if (on_[c]) grids_[c].endSplat(0.0f);
  }

  void join(int y, int count, int slot) {
    const Rows rows = scratch(count, slot);
    for (int c = 0; c < 3; ++c) {
      const PlaneView from = planes_[c].rows(y, count);
      const PlaneView& to = rows.plane[c];
      if (on_[c]) {
        grids_[c].readRows(y, from, to, slot);
      } else {
        prim::primCopy_32f_C1R(from.data, from.step, to.data, to.step, width_, count);
      }
    }
    fromLumaChroma(rows.plane, true);
    for (int c = 0; c < 3; ++c) {
      const PlaneView& after = rows.plane[c];
      prim::primCopy_32f_C1C3R(after.data, after.step, image_.row(y) + c, image_.step, width_,
                               count);
      if (removed_ != nullptr) {
        const PlaneView grain = PlaneView(*removed_[c]).rows(y, count);
        prim::primSub_32f_C1IR(after.data, after.step, grain.data, grain.step, width_, count);
      }
    }
  }

  IMG3<float>& image_;
  GIMG<float>* const* removed_;
  int width_;
  int height_;
  int rows_;
  PlaneView planes_[3];  // in the rows of the image
  BilateralFilter grids_[3];
  bool on_[3] = {};
  PerSlot<float> scratch_;
};

}  // namespace

bool denoiseOnGrids(IMG3<float>& image, const GridStep& luma, const GridStep& chroma,
                    GIMG<float>* const* removed) {
  GridDenoise denoise(image, removed);
  if (!denoise.begin(luma, chroma)) return false;
  denoise.run();
  return true;
}

}  // namespace vx
