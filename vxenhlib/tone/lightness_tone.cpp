#include "vxenhlib/tone/lightness_tone.h"

#include "frame/bands.h"
#include "vxenhlib/tone/base_detail_split.h"
#include "vxenhlib/tone/lightness_pass.h"

namespace vx {

int LightnessTone::apply(GIMG<float>& image, int rows) const {
  const PlaneView plane(image);
  if (plane.empty()) return 0;
  const int bandHeight = bandRows(rows, plane.width, plane.height);
  LightnessPass pass;
  pass.begin(*this, plane, bandHeight);
  forEachBand(plane.height, bandHeight, [&](int y, int count) { pass.collect(y, count); });
  pass.process();
  forEachBand(plane.height, bandHeight, [&](int y, int count) { pass.finish(y, count, 0); });
  pass.end();
  return 0;
}

void LightnessTone::splitBaseDetail(GIMG<float>& plane, GIMG<float>& detail) const {
  vx::splitBaseDetail(PlaneView(plane), PlaneView(detail), detailRange, detailSample);
}

}  // namespace vx
