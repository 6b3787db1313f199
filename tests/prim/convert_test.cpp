#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

// In double, where v + 0.5 is exact for every float that can be near a tie.
template <class T>
T rounded(float sample, int mode) {
  const double v = sample;
  if (std::isnan(v)) return 0;
  if (v >= std::numeric_limits<T>::max()) return std::numeric_limits<T>::max();
  if (v <= std::numeric_limits<T>::min()) return std::numeric_limits<T>::min();
  if (mode == primRndZero) return static_cast<T>(std::trunc(v));
  if (mode == primRndNear) return static_cast<T>(std::nearbyint(v));
  return static_cast<T>(v < 0 ? -std::floor(-v + 0.5) : std::floor(v + 0.5));
}

// Ties of every size with their neighbours, the ends of all ranges, and what is no number.
std::vector<float> sharpSamples() {
  std::vector<float> samples = {0.0f,          -0.0f, kInf,   -kInf,         1e-40f,
                                -1e-40f,       3e38f, -3e38f, 2147483648.0f, -2147483648.0f,
                                4294967296.0f, kNan,  -kNan};
  for (int whole : {0,   1,    2,     3,     100,   127,   128,   253,   254,   255,
                    256, 4096, 16383, 32766, 32767, 32768, 65533, 65534, 65535, 65536})
    for (float near : {static_cast<float>(whole), static_cast<float>(whole) + 0.5f})
      for (float v : {near, std::nextafter(near, -kInf), std::nextafter(near, kInf)})
        samples.insert(samples.end(), {v, -v});
  samples.resize(samples.size() / 3 * 3);
  return samples;
}

template <class T>
void expectRounded(int (*convert)(const float*, int, T*, int, int, int, int), int channels) {
  const std::vector<float> samples = sharpSamples();
  const int count = static_cast<int>(samples.size());
  Plane<T> dst(count, 1);
  for (int mode : {0, 1, 2, -1, INT_MIN}) {
    SCOPED_TRACE(mode);
    ASSERT_EQ(call(convert, samples, 4 * count, dst, dst.size(channels), mode), 0);
    expectPlane(dst,
                [&](int x, int) { return rounded<T>(samples[static_cast<std::size_t>(x)], mode); });
  }
}

TEST(Convert, roundsTiesSaturatesAndTakesNanToZero) {
  expectRounded<U8>(primConvert_32f8u_C1R, 1);
  expectRounded<U8>(primConvert_32f8u_C3R, 3);
  expectRounded<U16>(primConvert_32f16u_C1R, 1);
  expectRounded<U16>(primConvert_32f16u_C3R, 3);
  expectRounded<S16>(primConvert_32f16s_C1R, 1);
}

template <class T>
void expectExact(int (*convert)(const T*, int, float*, int, int, int), int channels) {
  Plane<float> dst(3 << (8 * sizeof(T) - 1), 2);
  Plane<T> src(dst.width + 3, 2);  // rows with a gap
  src.set([](int x, int) { return x; });
  EXPECT_EQ(call(convert, src, dst, dst.size(channels)), 0);
  expectPlane(dst, [](int x, int) { return static_cast<T>(x); });
  EXPECT_EQ(convert(src.data(), 1, dst.data(), 1, 1, 1), 0) << "short steps are allowed";
}

TEST(Convert, wideningIsExact) {
  expectExact<U8>(primConvert_8u32f_C1R, 1);
  expectExact<U8>(primConvert_8u32f_C3R, 3);
  expectExact<U16>(primConvert_16u32f_C1R, 1);
  expectExact<U16>(primConvert_16u32f_C3R, 3);
}

}  // namespace
