// No bound may call a stream fitting that does not fit.

#include "lqlib/src/stream_bound.h"

#include <omp.h>

#include "lqlib/src/failing_trips.h"
#include "tests/jpeg/pictures.h"
#include "tests/support/test.h"

namespace {

using namespace vx;
using test::Rgb;
using test::Scene;

// Both bounds against the scans of all trips; whether the first is below three times the longest.
bool expectBounds(Rgb picture, int quality, int jpegMode) {
  SCOPED_TRACE(testing::Message() << "quality " << quality << " mode " << jpegMode);
  const int w = picture.width, h = picture.height;
  ImageBuffer<std::uint8_t, 3> source(w, h);
  for (int y = 0; y < h; ++y)
    std::memcpy(source.row(y), picture.row(y), static_cast<std::size_t>(3 * w));
  const UnblockPlan plan(w, h, quality, jpegMode, 1);
  const JpegStreamBound bound(plan.coding, w, h);
  const RoughnessMap map(plan.coding, source);
  const UnblockPixels pixels{false, picture.bytes.data(), 3, 3 * w, w, h};
  TripSums levels{};
  UnblockStrip(plan, source, pixels).countLevels(-7, h + 8, levels);
  std::int64_t longest = 0;
  for (int top = 0; top < 8; ++top)
    for (int left = 0; left < 8; ++left) {
      const ShiftedRows rows(source, plan.coding.useYcc, top, left);
      const std::int64_t bytes =
          jpegEncodeScan(plan.coding, w + 8, h + 8, rows, nullptr, LLONG_MAX);
      longest = std::max(longest, bytes);
      EXPECT_FALSE(bound.fits(levels[top][left], bytes - 1));
    }
  EXPECT_FALSE(bound.fits(map, longest - 1));
  return bound.fits(map, 3 * longest);
}

// Blocks whose luma has a level at every so many places of the scan.
Rgb dearPicture(std::size_t distance, int level, int quality) {
  const JpegQuantTable table = jpegQuantTable(false, quality);
  double block[8][8] = {};
  for (std::size_t i = distance; i < 64; i += distance)
    for (int y = 0; y < 8; ++y)
      for (int x = 0; x < 8; ++x) {
        const auto wave = [](int frequency, int place) {
          return (frequency == 0 ? std::sqrt(0.125) : 0.5) *
                 std::cos((2 * place + 1) * frequency * std::numbers::pi / 16);
        };
        block[y][x] += level * table[i] * wave(kJpegZigzag[i] / 8, x) * wave(kJpegZigzag[i] % 8, y);
      }
  Rgb picture(128, 64);
  for (int y = 0; y < picture.height; ++y)
    for (int x = 0; x < 3 * picture.width; ++x)
      picture.row(y)[x] =
          static_cast<std::uint8_t>(std::clamp(128 + block[y % 8][x / 3 % 8], 0.0, 255.0));
  return picture;
}

TEST(StreamBound, isNeverBelowAStream) {
  omp_set_num_threads(1);  // pictures are small
  bool tight = false;
  for (const int mode : {0, 1, 2, 16})
    for (const int quality : {1, 30, 75, 95, 100}) {
      for (const Scene scene : {Scene::smooth, Scene::edges, Scene::noise})
        tight |= expectBounds(test::makePicture(scene, 83, 70), quality, mode);
      for (const std::size_t distance : {1, 3, 8})
        for (const int level : {-1, -4, -8})
          tight |= expectBounds(dearPicture(distance, level, quality), quality, mode);
    }
  omp_set_num_threads(omp_get_num_procs());
  EXPECT_TRUE(tight);
}

}  // namespace
