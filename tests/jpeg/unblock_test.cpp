// vxUnblock against its definition: encode and decode the padded picture for every shift, add,
// divide.

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "frame/exceptions.h"
#include "prim/memory.h"
#include "tests/jpeg/pictures.h"
#include "tests/support/images.h"
#include "vxicore26.h"

namespace {

using vx::test::Rgb;
using vx::test::Scene;

// How often a round trip failed, beside the result.
struct Reference {
  std::vector<float> sum;
  int trips = 0, failures = 0;
};

Reference roundTrips(const Rgb& picture, int quality, int jpegMode, int shiftStep) {
  const int w = picture.width, h = picture.height;
  const int step = (3 * (w + 8) + 31) / 32 * 32;
  Reference r;
  r.sum.assign(picture.bytes.size(), 0.0f);
  std::vector<std::uint8_t> padded(static_cast<std::size_t>(step) *
                                   static_cast<std::size_t>(h + 8));
  std::vector<std::uint8_t> block(padded.size() + 128);
  for (int dy = -4; dy < 4; dy += shiftStep)
    for (int dx = -4; dx < 4; dx += shiftStep, ++r.trips) {
      EXPECT_EQ(
          vx::prim::primCopyReplicateBorder_8u_C3R(picture.bytes.data(), 3 * w, w, h, padded.data(),
                                                   step, w + 8, h + 8, dy + 4, dx + 4),
          0);
      r.failures += 1 - vx::jpegRoundTrip(padded.data(), step, w + 8, h + 8, block.data(),
                                          static_cast<int>(block.size()), (jpegMode & 0xF0) == 0,
                                          jpegMode & 15, quality & 255);
      for (int y = 0; y < h; ++y)
        for (int i = 0; i < 3 * w; ++i)
          r.sum[3 * w * y + i] +=
              static_cast<float>(padded[step * (y + dy + 4) + 3 * (dx + 4) + i]);
    }
  return r;
}

std::vector<std::uint8_t> mean(const Reference& r) {
  std::vector<std::uint8_t> out;
  const float factor = 1.0f / static_cast<float>(r.trips);
  for (const float v : r.sum) out.push_back(static_cast<std::uint8_t>(v * factor));
  return out;
}

// One thread: hundreds of calls for a few pixels would otherwise wait for teams to gather.
class Unblock : public testing::Test {
 protected:
  Unblock() { omp_set_num_threads(1); }
  ~Unblock() override { omp_set_num_threads(omp_get_num_procs()); }
};

void expectDefinition(const Rgb& picture, int quality, int jpegMode, int shiftStep,
                      int* failures = nullptr) {
  SCOPED_TRACE(testing::Message() << picture.width << "x" << picture.height << " quality "
                                  << quality << " mode " << jpegMode << " step " << shiftStep);
  const Reference reference = roundTrips(picture, quality, jpegMode, shiftStep);
  Rgb result = picture;
  ASSERT_EQ(vxUnblock(0, result.bytes.data(), 3, 3 * picture.width, picture.width, picture.height,
                      quality, jpegMode, shiftStep, 0),
            reference.trips);
  const auto wanted = mean(reference);
  const auto differs = std::mismatch(wanted.begin(), wanted.end(), result.bytes.begin());
  if (differs.first != wanted.end()) {
    const auto at = static_cast<int>(differs.first - wanted.begin());
    FAIL() << "pixel " << at / 3 % picture.width << ", " << at / 3 / picture.width << " channel "
           << at % 3 << ": " << int{*differs.second} << " instead of " << int{*differs.first};
  }
  if (failures != nullptr) *failures = reference.failures;
}

TEST_F(Unblock, isTheMeanOfRoundTrips) {
  // Mode 1 has both quantisation tables.
  for (const int mode : {0, 1, 2, 16, 17, 18})
    for (int quality = 0; quality <= 101; quality += mode == 1 ? 1 : 7)
      expectDefinition(vx::test::makePicture(Scene::edges, 21, 19), quality, mode, 1);
  // The low byte of the quality counts: 40 twice.
  for (const int quality : {255, 296, -216})
    expectDefinition(vx::test::makePicture(Scene::edges, 45, 38), quality, 1, 1);
  // The low byte tells the mode: high four bits RGB, low four bits from 2 on both axes.
  for (const int mode : {3, 15, 0x25, 0xF0, 0x100, 0x3011, -1})
    expectDefinition(vx::test::makePicture(Scene::edges, 35, 18), 40, mode, 1);
}

TEST_F(Unblock, isTheMeanOfRoundTripsInAllSizes) {
  for (const int mode : {0, 1, 2, 17}) {
    const auto expect = [mode](Scene scene, int width, int height) {
      expectDefinition(vx::test::makePicture(scene, width, height), 60, mode, 1);
    };
    for (int width = 1; width <= 20; ++width)
      for (const int height : {1, 7, 16}) expect(Scene::edges, width, height);
    for (const int width : {2, 9, 16})
      for (const int height : {2, 5, 8, 9, 15, 17, 25}) expect(Scene::edges, width, height);
    expect(Scene::edges, 131, 7);
    expect(Scene::smooth, 64, 128);
  }
}

TEST_F(Unblock, takesTheShiftsOfItsStep) {
  for (const int mode : {0, 1, 2})
    for (const int step : {2, 3, 4, 5, 8, 9})
      expectDefinition(vx::test::makePicture(Scene::edges, 37, 41), 30, mode, step);
  std::uint8_t pixels[3] = {1, 2, 3};
  const int trips[][2] = {{1, 64}, {0, 64}, {-5, 64}, {2, 16}, {3, 9},
                          {4, 4},  {7, 4},  {8, 1},   {99, 1}};
  for (const auto& [step, count] : trips) {
    EXPECT_EQ(vxUnblock(0, pixels, 3, 3, 1, 1, 50, 1, step, 0), count);
    EXPECT_EQ(vxUnblock(0, nullptr, 3, 3, 1, 1, 50, 1, step, 0), count);
    EXPECT_EQ(vxUnblock(0, pixels, 3, 3, 0, 7, 50, 1, step, 0), count);
    EXPECT_EQ(vxUnblock(1, pixels, 3, 3, 65536, -1, 50, 1, step, 0), count);
  }
  EXPECT_THROW(vxUnblock(0, pixels, 3, 0, 1, INT_MAX, 50, 1, 1, 0), vx::MemoryException);
}

// The block holds three bytes a pixel; noise at the finest tables needs more, and so do the headers
// of the smallest pictures. Such trips count with the picture as it is.
TEST_F(Unblock, tripsThatDoNotFitLeaveThePictureAsItIs) {
  int failures = 0;
  expectDefinition(vx::test::makePicture(Scene::noise, 50, 40), 98, 16, 1, &failures);
  EXPECT_GT(failures, 0);
  expectDefinition(vx::test::makePicture(Scene::noise, 50, 40), 100, 16, 1, &failures);
  EXPECT_EQ(failures, 64);
  expectDefinition(vx::test::makePicture(Scene::noise, 50, 40), 100, 0, 1, &failures);
  expectDefinition(vx::test::makePicture(Scene::noise, 50, 40), 100, 1, 1, &failures);
  EXPECT_EQ(failures, 0);
  expectDefinition(vx::test::makePicture(Scene::noise, 2, 6), 50, 1, 1, &failures);
  EXPECT_EQ(failures, 64);
  expectDefinition(vx::test::makePicture(Scene::noise, 2, 7), 50, 1, 1);
  expectDefinition(vx::test::makePicture(Scene::noise, 3, 1), 50, 1, 1, &failures);
  EXPECT_EQ(failures, 0);
  // One set of tables makes short headers: mode 16 fits always.
  for (const auto& [w, h] : {std::pair(1, 1), {2, 6}}) {
    expectDefinition(vx::test::makePicture(Scene::noise, w, h), 50, 16, 1, &failures);
    EXPECT_EQ(failures, 0);
  }
}

// Half noise, half flat: some trips fit and some do not.
TEST_F(Unblock, eachTripIsJudgedByItself) {
  int mixed = 0;
  for (int rows = 30; rows <= 40 && mixed == 0; ++rows) {
    Rgb picture = vx::test::makePicture(Scene::noise, 48, 40);
    for (int y = rows; y < 40; ++y) std::memset(picture.row(y), 99, 3 * 48);
    for (const int quality : {98, 99}) {
      int failures = 0;
      expectDefinition(picture, quality, 16, 1, &failures);
      if (failures > 0 && failures < 64) ++mixed;
    }
  }
  EXPECT_GT(mixed, 0);
}

TEST_F(Unblock, deepSamplesAreReadAsBytesAndKeepTheFractionOfTheMean) {
  for (const int shiftStep : {1, 3}) {
    Rgb picture = vx::test::makePicture(Scene::edges, 30, 21);
    picture.bytes[0] = 255;
    const Reference reference = roundTrips(picture, 40, 1, shiftStep);
    std::vector<std::uint16_t> deep;
    for (const std::uint8_t v : picture.bytes)
      deep.push_back(static_cast<std::uint16_t>(v == 255 ? 65535 : v * 128 + v % 128));
    vxUnblock(1, deep.data(), 3, 90, 30, 21, 40, 1, shiftStep, 0);
    for (std::size_t i = 0; i < deep.size(); ++i)
      ASSERT_EQ(deep[i], static_cast<int>(reference.sum[i] *
                                          (128.0f / static_cast<float>(reference.trips))));
  }
}

TEST_F(Unblock, stepsOfPixelsAndRowsAreHonoured) {
  const Rgb picture = vx::test::makePicture(Scene::edges, 29, 18);
  Rgb wanted = picture;
  vxUnblock(0, wanted.bytes.data(), 3, 87, 29, 18, 35, 1, 1, 0);
  for (const bool deep : {false, true})
    for (const int pixelStep : {3, 4, 7, -3, -4})
      for (const int rowStep : {29 * 7 + 3, -(29 * 7 + 3)}) {
        SCOPED_TRACE(testing::Message() << pixelStep << " " << rowStep << " deep " << deep);
        const int size = deep ? 2 : 1;
        const int count = (29 * 7 + 3) * 18 + 8;
        // An odd address, and bytes around every pixel that must stay.
        std::vector<std::uint8_t> memory(static_cast<std::size_t>(count * size) + 1, 0xA5);
        std::vector<bool> taken(static_cast<std::size_t>(count), false);
        const int first = (rowStep < 0 ? 17 * -rowStep : 0) + (pixelStep < 0 ? 28 * -pixelStep : 0);
        const auto index = [&](int x, int y, int c) {
          return first + x * pixelStep + y * rowStep + c;
        };
        const auto put = [&](int i, int value) {
          const auto sample = static_cast<std::uint16_t>(deep ? value * 128 : value);
          std::memcpy(&memory[1 + i * size], &sample, static_cast<std::size_t>(size));
          taken[i] = true;
        };
        const auto get = [&](int i) {
          std::uint16_t sample = 0;
          std::memcpy(&sample, &memory[1 + i * size], static_cast<std::size_t>(size));
          return deep ? sample / 128 : sample;
        };
        for (int y = 0; y < 18; ++y)
          for (int i = 0; i < 87; ++i) put(index(i / 3, y, i % 3), picture.bytes[87 * y + i]);
        vxUnblock(deep, &memory[1 + first * size], pixelStep, rowStep, 29, 18, 35, 1, 1, 0);
        for (int y = 0; y < 18; ++y)
          for (int i = 0; i < 87; ++i)
            ASSERT_EQ(get(index(i / 3, y, i % 3)), wanted.bytes[87 * y + i]);
        for (std::size_t i = 0; i < memory.size(); ++i) {
          const bool free = i == 0 || !taken[(i - 1) / static_cast<std::size_t>(size)];
          if (free) {
            ASSERT_EQ(memory[i], 0xA5) << i;
          }
        }
      }
}

// Among them teams with more threads than a low picture has strips.
TEST_F(Unblock, threadsDoNotChangeTheResult) {
  for (const int mode : {1, 2})
    for (const int height : {40, 640}) {
      const Rgb picture = vx::test::makePicture(Scene::edges, 83, height);
      Rgb one = picture;
      vxUnblock(0, one.bytes.data(), 3, 249, 83, height, 50, mode, 1, 0);
      for (const int threads : {2, 7}) {
        Rgb many = picture;
        const vx::test::Threads team(threads);
        vxUnblock(0, many.bytes.data(), 3, 249, 83, height, 50, mode, 1, 0);
        EXPECT_TRUE(many.bytes == one.bytes) << threads << " threads, mode " << mode;
      }
    }
}

}  // namespace
