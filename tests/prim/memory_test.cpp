#include "prim/memory.h"

#include <algorithm>
#include <climits>

#include "prim/channel.h"
#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;
using U8 = std::uint8_t;
using S16 = std::int16_t;
using U16 = std::uint16_t;

// Copies the first of every `from` elements to the first of every `to`; the others stay.
template <class T>
void expectEveryNth(int (*copy)(const T*, int, T*, int, int, int), int from, int to) {
  std::mt19937 rng(7);
  Plane<T> src(17 * from, 3), dst(17 * to, 3);
  src.draw([&] { return drawValue<T>(rng); });
  const Plane<T> before = dst.draw([&] { return drawValue<T>(rng); });
  ASSERT_EQ(call(copy, src, dst, Size{17, 3}), 0);
  expectPlane(
      dst, [&](int x, int y) { return x % to == 0 ? src.at(x / to * from, y) : before.at(x, y); });
}

TEST(Memory, copiesImagesAndChannels) {
  expectEveryNth<U8>(primCopy_8u_C1R, 1, 1);
  expectEveryNth<S16>(primCopy_16s_C1R, 1, 1);
  expectEveryNth<float>(primCopy_32f_C1R, 1, 1);
  expectEveryNth<U8>(primCopy_8u_C3C1R, 3, 1);
  expectEveryNth<U8>(primCopy_8u_C4C1R, 4, 1);
  expectEveryNth<S16>(primCopy_16s_C3C1R, 3, 1);
  expectEveryNth<S16>(primCopy_16s_C4C1R, 4, 1);
  expectEveryNth<U16>(primCopy_16u_C3C1R, 3, 1);
  expectEveryNth<U16>(primCopy_16u_C4C1R, 4, 1);
  expectEveryNth<float>(primCopy_32f_C3C1R, 3, 1);
  expectEveryNth<U8>(primCopy_8u_C1C3R, 1, 3);
  expectEveryNth<U8>(primCopy_8u_C1C4R, 1, 4);
  expectEveryNth<S16>(primCopy_16s_C1C3R, 1, 3);
  expectEveryNth<S16>(primCopy_16s_C1C4R, 1, 4);
  expectEveryNth<U16>(primCopy_16u_C1C3R, 1, 3);
  expectEveryNth<U16>(primCopy_16u_C1C4R, 1, 4);
  expectEveryNth<float>(primCopy_32f_C1C3R, 1, 3);
}

TEST(Memory, copiesThreeChannelsAndSets) {
  Operands<U8> bytes;
  Operands<float> floats;
  static constexpr float kValues[] = {-0.0f, 1e-40f, 3.5f};
  const Size size = floats.d.size(), size3 = floats.d.size(3);
  const auto same = [](auto a, auto, auto, int) { return a; };
  bytes.expect(call(primCopy_8u_C3R, bytes.a, bytes.d, size3), same);
  floats.expect(call(primCopy_32f_C3R, floats.a, floats.d, size3), same);
  bytes.expect(call(primSet_8u_C1R, U8{201}, bytes.d, size),
               [](int, int, int, int) { return 201; });
  floats.expect(call(primSet_32f_C1R, 1e-40f, floats.d, size),
                [](float, float, float, int) { return 1e-40f; });
  floats.expect(
      call(primSet_32f_C3R, kValues, floats.d, size3),
      [](float, float, float, int c) { return kValues[c]; }, 3);
  float pixels[] = {9, 1, 2, 3, 9, 9};
  ASSERT_EQ(primSet_32f_C3R(pixels + 1, pixels, 24, 2, 1), 0);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(pixels[i], static_cast<float>(i % 3 + 1)) << "in place";
}

TEST(Memory, copiesAndSetsOnlyUnderTheMask) {
  std::mt19937 rng(2);
  Plane<U8> mask(96, 3);
  mask.draw([&] { return rng() % 2 != 0 ? rng() : 0; });  // all nonzero values count
  const auto expectMasked = [&](auto& d, const auto& before, int status, auto expected) {
    EXPECT_EQ(status, 0);
    expectPlane(
        d, [&](int x, int y) { return mask.at(x, y) != 0 ? expected(x, y) : before.at(x, y); });
  };
  Operands<U8> b;
  expectMasked(b.d, b.before, call(primCopy_8u_C1MR, b.a, b.d, b.d.size(), mask),
               [&](int x, int y) { return b.a.at(x, y); });
  Operands<float> f;
  expectMasked(f.d, f.before, call(primCopy_32f_C1MR, f.a, f.d, f.d.size(), mask),
               [&](int x, int y) { return f.a.at(x, y); });
  Operands<S16> s;
  expectMasked(s.d, s.before, call(primSet_16s_C1MR, S16{-12345}, s.d, s.d.size(), mask),
               [](int, int) { return S16{-12345}; });
}

template <class T>
void expectNearestPixel(int (*border)(const T*, int, int, int, T*, int, int, int, int, int),
                        int channels) {
  std::mt19937 rng(6);
  const struct {
    int srcWidth, srcHeight, left, top, right, bottom;
  } kShapes[] = {{1, 1, 0, 0, 0, 0}, {1, 1, 9, 4, 0, 0},  {5, 3, 0, 0, 7, 5},
                 {4, 1, 2, 3, 1, 0}, {70, 4, 8, 8, 7, 7}, {3, 2, 65, 0, 66, 1}};
  for (const auto& s : kShapes) {
    const int width = s.left + s.srcWidth + s.right, height = s.top + s.srcHeight + s.bottom;
    Plane<T> src(s.srcWidth * channels, s.srcHeight), dst(width * channels, height);
    src.randomise(rng, 0, 255);
    ASSERT_EQ(call(border, src, src.size(channels), dst, dst.size(channels), s.top, s.left), 0);
    expectPlane(dst, [&](int x, int y) {
      const int nearest = std::clamp(x / channels - s.left, 0, s.srcWidth - 1);
      return src.at(nearest * channels + x % channels, std::clamp(y - s.top, 0, s.srcHeight - 1));
    });
  }
  const struct {
    int srcWidth, dstWidth, dstHeight, top, left;
  } kMisfits[] = {{1, 2, 2, -1, 0}, {1, 2, 2, 0, -1},      {1, 1, 1, 1, 0},
                  {1, 1, 1, 0, 1},  {1, 1, 1, 0, INT_MAX}, {2, 1, 9, 0, 0}};
  Plane<T> image(9, 9);
  for (const auto& m : kMisfits)
    EXPECT_EQ(call(border, image, Size{m.srcWidth, 1}, image, Size{m.dstWidth, m.dstHeight}, m.top,
                   m.left),
              kStatusBadSize)
        << "row " << &m - kMisfits;
}

TEST(Memory, borderRepeatsTheNearestPixelAndRefusesWhatDoesNotFit) {
  expectNearestPixel<float>(primCopyReplicateBorder_32f_C1R, 1);
  expectNearestPixel<U8>(primCopyReplicateBorder_8u_C3R, 3);
}

}  // namespace
