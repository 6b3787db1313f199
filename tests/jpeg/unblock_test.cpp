// vxUnblock against its definition: encode and decode the padded picture for every shift, add,
// divide.

#include <omp.h>

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

// One thread: hundreds of calls for a few pixels would otherwise wait for teams to gather.
class Unblock : public testing::Test {
 protected:
  Unblock() { omp_set_num_threads(1); }
  ~Unblock() override { omp_set_num_threads(omp_get_num_procs()); }
};

// Bytes, and deep samples, which are read as bytes and keep the fraction of the mean. Returns how
// many round trips failed.
int expectDefinition(const Rgb& picture, int quality, int jpegMode, int shiftStep) {
  const int w = picture.width, h = picture.height;
  SCOPED_TRACE(testing::Message() << w << "x" << h << " quality " << quality << " mode " << jpegMode
                                  << " step " << shiftStep);
  const Reference reference = roundTrips(picture, quality, jpegMode, shiftStep);
  std::vector<std::uint8_t> result = picture.bytes, wanted;
  std::vector<std::uint16_t> deep, wantedDeep;
  for (std::size_t i = 0; i < result.size(); ++i) {
    const int v = result[i];
    deep.push_back(static_cast<std::uint16_t>(v == 255 ? 65535 : v * 128 + v % 128));
    const float factor = 1.0f / static_cast<float>(reference.trips);
    wanted.push_back(static_cast<std::uint8_t>(reference.sum[i] * factor));
    wantedDeep.push_back(static_cast<std::uint16_t>(reference.sum[i] * (128.0f * factor)));
  }
  for (const bool isDeep : {false, true}) {
    void* pixels = isDeep ? static_cast<void*>(deep.data()) : result.data();
    EXPECT_EQ(vxUnblock(isDeep, pixels, 3, 3 * w, w, h, quality, jpegMode, shiftStep, 0),
              reference.trips);
  }
  EXPECT_EQ(result, wanted);
  EXPECT_EQ(deep, wantedDeep);
  return reference.failures;
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
    const auto expect = [mode](int width, int height) {
      expectDefinition(vx::test::makePicture(Scene::edges, width, height), 60, mode, 1);
    };
    for (int width = 1; width <= 20; ++width)
      for (const int height : {1, 7, 16}) expect(width, height);
    for (const int width : {2, 9, 16})
      for (const int height : {2, 5, 8, 9, 15, 17, 25}) expect(width, height);
    expect(131, 7);
    expect(64, 128);
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
  const struct {
    int width, height, quality, mode, failures;
  } cases[] = {{50, 40, 100, 16, 64},
               {50, 40, 100, 0, 64},
               {50, 40, 100, 1, 0},
               {2, 6, 50, 1, 64},
               {3, 1, 50, 1, 0},
               // One set of tables makes short headers: mode 16 fits always.
               {1, 1, 50, 16, 0},
               {2, 6, 50, 16, 0}};
  for (const auto& [width, height, quality, mode, failures] : cases)
    EXPECT_EQ(
        expectDefinition(vx::test::makePicture(Scene::noise, width, height), quality, mode, 1),
        failures);
  expectDefinition(vx::test::makePicture(Scene::noise, 2, 7), 50, 1, 1);
  // Half noise, half flat: some trips fit and some do not.
  bool mixed = false;
  for (int rows = 30; rows <= 40 && !mixed; ++rows) {
    Rgb picture = vx::test::makePicture(Scene::noise, 48, 40);
    for (int y = rows; y < 40; ++y) std::memset(picture.row(y), 99, 3 * 48);
    for (const int quality : {98, 99}) {
      const int failures = expectDefinition(picture, quality, 16, 1);
      mixed |= failures > 0 && failures < 64;
    }
  }
  EXPECT_TRUE(mixed);
}

// Bytes around the pixels stay; the address is odd.
template <class Sample>
void expectSameWithSteps(int pixelStep, int rowStep) {
  constexpr int kSize = sizeof(Sample);
  SCOPED_TRACE(testing::Message() << pixelStep << " " << rowStep << " bytes " << kSize);
  std::vector<Sample> dense;
  for (const int v : vx::test::makePicture(Scene::edges, 29, 18).bytes)
    dense.push_back(static_cast<Sample>(kSize == 2 ? v * 128 : v));
  const int first = 1 + kSize * (std::max(0, -17 * rowStep) + std::max(0, -28 * pixelStep));
  const auto spread = [&] {
    std::vector<std::uint8_t> memory((29 * 7 + 3) * 18 * kSize + 20, 0xA5);
    for (int i = 0; i < 87 * 18; ++i) {
      const int at = i / 87 * rowStep + i % 87 / 3 * pixelStep + i % 3;
      std::memcpy(&memory[first + kSize * at], &dense[i], kSize);
    }
    return memory;
  };
  std::vector<std::uint8_t> memory = spread();
  vxUnblock(kSize == 2, &memory[first], pixelStep, rowStep, 29, 18, 35, 1, 1, 0);
  vxUnblock(kSize == 2, dense.data(), 3, 87, 29, 18, 35, 1, 1, 0);
  EXPECT_TRUE(memory == spread());
}

TEST_F(Unblock, stepsOfPixelsAndRowsAreHonoured) {
  for (const int pixelStep : {3, 4, 7, -3, -4})
    for (const int rowStep : {29 * 7 + 3, -(29 * 7 + 3)}) {
      expectSameWithSteps<std::uint8_t>(pixelStep, rowStep);
      expectSameWithSteps<std::uint16_t>(pixelStep, rowStep);
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
