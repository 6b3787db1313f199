#include "tests/prim/plane.h"
#include "tests/prim/variants/prim_info.h"

namespace {

using namespace vx::prim;

// Copies the elements that the layout names; the others stay.
template <class T>
void expectCopied(const vx::test::Prim& entry, int (*copy)(const T*, int, T*, int, int, int)) {
  std::mt19937 rng(7);
  const int from = entry.source.stride, to = entry.destination.stride, used = entry.source.used;
  Plane<T> src(17 * from, 3), dst(18 * to, 3);  // rows without and with a gap
  src.draw([&] { return drawValue<T>(rng); });
  const Plane<T> before = dst.draw([&] { return drawValue<T>(rng); });
  ASSERT_EQ(call(copy, src, dst, Size{17, 3}), 0);
  expectPlane(dst, [&](int x, int y) {
    return x < 17 * to && x % to < used ? src.at(x / to * from + x % to, y) : before.at(x, y);
  });
}
template <class Other>
void expectCopied(const vx::test::Prim&, Other*) {}

TEST(Memory, copiesImagesAndChannels) {
#define VX_PRIM(name, params, args)                     \
  if (std::string_view(#name).starts_with("primCopy_")) \
    expectCopied(vx::test::readPrim(#name, #args), name);
#include "prim/prim_list.def"
#undef VX_PRIM
}

TEST(Memory, setsImages) {
  Operands<float> o;
  static constexpr float kValues[] = {-0.0f, 1e-40f, 3.5f};
  VX_EXPECT(1e-40f, primSet_32f_C1R, 1e-40f, o.d, o.d.size());
  VX_EXPECT(kValues[i % 3], primSet_32f_C3R, kValues, o.d, o.d.size(3));
  float inPlace[] = {9, 1, 2, 3, 9, 9};
  ASSERT_EQ(primSet_32f_C3R(inPlace + 1, inPlace, 24, 2, 1), 0);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(inPlace[i], static_cast<float>(i % 3 + 1));
  Plane<U8> bytes(5, 5);
  EXPECT_EQ(call(primSet_8u_C1R, U8{201}, bytes, bytes.size()), 0);
  expectPlane(bytes, [](int, int) { return 201; });
}

// All nonzero values of a mask count.
template <class T>
void expectMasked(int (*copy)(const T*, int, T*, int, int, int, const U8*, int),
                  int (*set)(T, T*, int, int, int, const U8*, int)) {
  Operands<T> o(1);
  Plane<U8> mask(96, 1);
  mask.set([](int x, int) { return x % 3 == 0 ? 0 : x % 3 == 1 ? 1 : 3 * x % 256 | 1; });
  if (copy != nullptr) VX_EXPECT(mask.at(i, 0) != 0 ? s : v, copy, o.a, o.d, o.d.size(), mask);
  if (set != nullptr) VX_EXPECT(mask.at(i, 0) != 0 ? 57 : v, set, T{57}, o.d, o.d.size(), mask);
}

TEST(Memory, copiesAndSetsOnlyUnderTheMask) {
  expectMasked<U8>(primCopy_8u_C1MR, nullptr);
  expectMasked<float>(primCopy_32f_C1MR, nullptr);
  expectMasked<S16>(nullptr, primSet_16s_C1MR);
}

template <class T>
void expectNearestPixel(int (*border)(const T*, int, int, int, T*, int, int, int, int, int),
                        int channels) {
  std::mt19937 rng(6);
  static constexpr int kShapes[][6] = {{1, 1, 0, 0, 0, 0},  {1, 1, 9, 4, 0, 0},
                                       {5, 3, 0, 0, 7, 5},  {4, 1, 2, 3, 1, 0},
                                       {70, 4, 8, 8, 7, 7}, {3, 2, 65, 0, 66, 1}};
  for (const auto& [srcWidth, srcHeight, left, top, right, bottom] : kShapes) {
    const int width = left + srcWidth + right, height = top + srcHeight + bottom;
    Plane<T> src(srcWidth * channels, srcHeight), dst(width * channels, height);
    src.randomise(rng, 0, 255);
    ASSERT_EQ(call(border, src, src.size(channels), dst, dst.size(channels), top, left), 0);
    expectPlane(dst, [&, x0 = left, y0 = top, w = srcWidth, h = srcHeight](int x, int y) {
      const int nearest = std::clamp(x / channels - x0, 0, w - 1);
      return src.at(nearest * channels + x % channels, std::clamp(y - y0, 0, h - 1));
    });
  }
}

TEST(Memory, borderRepeatsTheNearestPixel) {
  expectNearestPixel<float>(primCopyReplicateBorder_32f_C1R, 1);
  expectNearestPixel<U8>(primCopyReplicateBorder_8u_C3R, 3);
}

}  // namespace
