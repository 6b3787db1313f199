#include "vxenhlib/noise/grid_denoise.h"

#include "frame/bands.h"
#include "frame/plane_ops.h"
#include "vxenhlib/noise/luma_chroma.h"

namespace vx {
namespace {

class GridDenoise {
 public:
  GridDenoise(const RgbRows& image, GIMG<float>* const* removed)
      : image_(image),
        removed_(removed),
        width_(image_.width),
        height_(image_.height),
        rows_(bandRows(0, width_, height_)) {
    for (int c = 0; c < 3; ++c)
      planes_[c] = PlaneView(image.data + std::ptrdiff_t{c} * width_, image.step, width_, height_);
  }

  bool begin(const GridStep& luma, const GridStep& chroma) {
    const auto pixels = static_cast<std::size_t>(width_) * static_cast<std::size_t>(rows_);
    if (!scratch_.reserve(3 * pixels)) return false;
    for (int c = 0; c < 3; ++c)
      on_[c] = (c == 0 ? luma : chroma).setUp(grids_[c], width_, height_) && grids_[c].begin();
    return true;
  }

  void run() {
    parallelThenLanes(
        height_, rows_, 3, [&](int y, int count, int slot) { separate(y, count, slot); },
        [&](int c, int y, int count) { splat(c, y, count); });
    parallelFor(0, 3, [&](int c) { complete(c); });
    parallelBands(height_, rows_, [&](int y, int count, int slot) { join(y, count, slot); });
    for (int c = 0; c < 3; ++c)
      if (on_[c]) grids_[c].end();
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
      takeChannel(image_.rows(y, count), c, rows.plane[c]);
      if (removed_ != nullptr) copy(rows.plane[c], PlaneView(*removed_[c]).rows(y, count));
    }
    toLumaChroma(rows.plane, true);
    for (int c = 0; c < 3; ++c) copy(rows.plane[c], planes_[c].rows(y, count));
  }

  void splat(int c, int y, int count) {
    const PlaneView rows = planes_[c].rows(y, count);
    if (on_[c]) grids_[c].collect(y, rows, rows);
  }

  void complete(int c) {
    if (on_[c]) grids_[c].process(0.0f);
  }

  void join(int y, int count, int slot) {
    const Rows rows = scratch(count, slot);
    for (int c = 0; c < 3; ++c) {
      const PlaneView from = planes_[c].rows(y, count);
      if (on_[c])
        grids_[c].finish(y, from, rows.plane[c], slot);
      else
        copy(from, rows.plane[c]);
    }
    fromLumaChroma(rows.plane, true);
    for (int c = 0; c < 3; ++c) {
      putChannel(rows.plane[c], image_.rows(y, count), c);
      if (removed_ != nullptr) sub(rows.plane[c], PlaneView(*removed_[c]).rows(y, count));
    }
  }

  RgbRows image_;
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
