#include "vxenhlib/tone/adjust_tone_stage.h"

#include <cmath>

#include "frame/bands.h"
#include "frame/plane_ops.h"
#include "prim/colour.h"
#include "prim/tone.h"
#include "vxenhlib/tone/tone_scratch.h"

namespace vx {
namespace {

void clipToOne(const PlaneView& p) {
  for (int y = 0; y < p.height; ++y) prim::primvClip_32f_I(0.0f, 1.0f, p.row(y), p.width);
}

// One image on its way through the stage.
class StageRun {
 public:
  StageRun(AdjustToneStage& stage, const IMG3<float>& image, RowSource& from, RowSink& to,
           ToneScratch& scratch, int rows)
      : stage_(stage),
        from_(from),
        to_(to),
        scratch_(scratch),
        hue_(image.data, image.step, image.roiWidth, image.roiHeight),
        lightness_(image.data + image.roiWidth, image.step, image.roiWidth, image.roiHeight),
        saturation_(lightness_.data + image.roiWidth, image.step, image.roiWidth, image.roiHeight),
        width_(image.roiWidth),
        height_(image.roiHeight),
        step_(image.step),
        rows_(bandRows(rows, width_, height_)) {}

  bool begin() {
    const auto pixels = static_cast<std::size_t>(width_) * static_cast<std::size_t>(rows_);
    turnHue_ = std::fabs(stage_.hueShift) > 1e-7f;
    sharpen_ = std::fabs(stage_.sharpenAmount - 1.0f) > 0.001f && stage_.sharpenSigma > 0.5f;
    UnsharpMask mask;
    mask.amount = stage_.sharpenAmount;
    mask.sigma = stage_.sharpenSigma;
    unsharpRows_ = sharpen_ && scratch_.unsharp.begin(mask, width_, height_, rows_);
    return scratch_.pixels.reserve(3 * pixels);
  }

  void run() {
    LightnessPass& lightness = scratch_.lightness;
    SaturationPass& saturation = scratch_.saturation;
    lightness.begin(stage_.lightness, lightness_, rows_);
    saturation.begin(stage_.saturation, saturation_, rows_);
    parallelThenLanes(
        height_, rows_, 2, [&](int y, int count, int slot) { toPlanes(y, count, slot); },
        [&](int lane, int y, int count) {
          if (lane == 0)
            sharpen(y, count);
          else
            saturation.collect(y, count);
        });
    lightness.process();
    saturation.process();
    parallelBands(height_, rows_, [&](int y, int count, int slot) {
      lightness.finish(y, count, slot);
      saturation.finish(y, count);
      toPixels(y, count, slot);
    });
    lightness.end();
    saturation.end();
  }

 private:
  void toPlanes(int y, int count, int slot) {
    const RgbRows pixels = pixelRows(count, slot);
    from_.take(y, pixels);
    prim::primRGBToHLS_32f_C3P3R(pixels.data, pixels.step, hue_.row(y), step_, lightness_.row(y),
                                 step_, saturation_.row(y), step_, width_, count);
  }

  void sharpen(int y, int count) {
    int first = y;
    int ready = count;
    if (unsharpRows_) {
      copy(lightness_.rows(y, count), scratch_.unsharp.input(count));
      ready = scratch_.unsharp.advance(lightness_, &first);
    }
    if (ready < 1) return;
    if (sharpen_) clipToOne(lightness_.rows(first, ready));
    scratch_.lightness.collect(first, ready);
  }

  void toPixels(int y, int count, int slot) {
    // One wrap: a shift of a whole turn or more leaves 0 to 1, and is clipped.
    for (int i = y; turnHue_ && i < y + count; ++i)
      prim::primvTurnHue_32f_I(stage_.hueShift, hue_.row(i), width_);
    clipToOne({hue_.row(y), step_, 3 * width_, count});
    const RgbRows pixels = pixelRows(count, slot);
    prim::primHLSToRGB_32f_P3C3R(hue_.row(y), step_, lightness_.row(y), step_, saturation_.row(y),
                                 step_, pixels.data, pixels.step, width_, count);
    to_.give(y, pixels);
  }

  RgbRows pixelRows(int count, int slot) const {
    return {scratch_.pixels.at(slot), width_ * 3 * static_cast<int>(sizeof(float)), width_, count};
  }

  AdjustToneStage& stage_;
  RowSource& from_;
  RowSink& to_;
  ToneScratch& scratch_;
  // The three planes in the rows of the image, in the place of its pixels.
  PlaneView hue_;
  PlaneView lightness_;
  PlaneView saturation_;
  int width_;
  int height_;
  int step_;
  int rows_;
  bool sharpen_ = false;
  bool unsharpRows_ = false;
  bool turnHue_ = false;
};

}  // namespace

int AdjustToneStage::apply(IMG3<float>& image, int rows) {
  ImageRows pixels(image);
  ToneScratch scratch;
  return apply(image, pixels, pixels, scratch, rows);
}

int AdjustToneStage::apply(IMG3<float>& work, RowSource& from, RowSink& to, ToneScratch& scratch,
                           int rows) {
  const RgbRows all(work);
  if (all.empty()) return 0;
  StageRun run(*this, work, from, to, scratch, rows);
  if (run.begin()) {
    run.run();
  } else {
    from.take(0, all);
    to.give(0, all);
  }
  return 0;
}

}  // namespace vx
