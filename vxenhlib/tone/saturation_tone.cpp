#include "vxenhlib/tone/saturation_tone.h"

#include "frame/bands.h"
#include "vxenhlib/tone/base_detail_split.h"
#include "vxenhlib/tone/saturation_pass.h"

namespace vx {

int SaturationTone::apply(GIMG<float>& image, int rows) {
  const PlaneView plane(image);
  if (plane.empty()) return 0;
  const int bandHeight = bandRows(rows, plane.width, plane.height);
  SaturationPass pass;
  pass.begin(*this, plane, bandHeight);
  forEachBand(plane.height, bandHeight, [&](int y, int count) { pass.collect(y, count); });
  pass.process();
  forEachBand(plane.height, bandHeight, [&](int y, int count) { pass.finish(y, count); });
  pass.end();
  return 0;
}

void SaturationTone::splitBaseDetail(GIMG<float>& plane, GIMG<float>& detail) const {
  vx::splitBaseDetail(PlaneView(plane), PlaneView(detail), detailRange, detailSample);
}

void SaturationTone::buildCurve() {
  const float c = contrast;
  const float b = brightness;
  const bool flattens = c < 1.0f;
  const auto set = [this](std::size_t point, float level, float value) {
    curveLevels[point] = level;
    curveValues[point] = value;
  };
  curvePoints = 5;
  set(2, 0.5f, b + 0.5f);
  if (flattens) {
    set(0, 0.0f, 0.0f);
    set(1, lowKnee, (lowKnee - 0.5f) * c + 0.5f + b);
    set(3, 1.0f - highKnee, (0.5f - highKnee) * c + 0.5f + b);
    set(4, 1.0f, 1.0f);
  } else {
    set(0, 0.0f, lowKnee * 0.25f);
    set(1, ((lowKnee - 0.5f) - b) / c + 0.5f, lowKnee);
    set(3, ((0.5f - highKnee) - b) / c + 0.5f, 1.0f - highKnee);
    set(4, 1.0f, 1.0f - highKnee * 0.25f);
  }
}

}  // namespace vx
