#include "prim/geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

TEST(Transpose, exchangesRowsAndColumns) {
  std::mt19937 rng(1);
  onEveryVariant([&] {
    for (int n : {1, 2, 15, 16, 17, 32, 45}) {
      Plane<float> a(n, n, 1, 1, 3);
      a.fill(0.5f);
      for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) a.at(x, y) = static_cast<float>(y * n + x);
      ASSERT_EQ(primTranspose_32f_C1IR(a.data(), a.step, n, n), 0);
      expectPlane(a, 0.5f, [=](int x, int y) { return x * n + y; });
    }
  });
  float a[32];
  EXPECT_EQ(primTranspose_32f_C1IR(nullptr, 0, 0, 0), -8);
  EXPECT_EQ(primTranspose_32f_C1IR(a, 0, 5, 4), -6);
  EXPECT_EQ(primTranspose_32f_C1IR(a, 0, 0, 0), -6);
  EXPECT_EQ(primTranspose_32f_C1IR(a, 15, 4, 4), -14);
}

// Weights of one axis as a dense row over the samples, in double and from other formulas than the
// kernels': Lagrange's for the cubic, the library's sine, areas of overlap.
std::vector<double> axisWeights(int code, int d, double factor, int size) {
  std::vector<double> w(static_cast<std::size_t>(size), 0.0);
  const auto at = [&](int i) -> double& { return w[static_cast<std::size_t>(i)]; };
  const double p = std::clamp((d + 0.5) / factor - 0.5, 0.0, size - 1.0);
  const int i = std::min(static_cast<int>(p), size - 1);
  if (code == kResizeArea) {
    const double begin = d / factor, end = std::min((d + 1) / factor, double(size));
    for (int s = 0; s < size; ++s)
      at(s) = std::max(0.0, std::min(end, s + 1.0) - std::max(begin, double(s))) / (end - begin);
  } else if (factor == 1.0 || code == kResizeNearest) {
    at(std::min(static_cast<int>(p + 0.5), size - 1)) = 1.0;
  } else if (code == kResizeLinear) {
    at(i) += 1 - (p - i);
    at(std::min(i + 1, size - 1)) += p - i;
  } else if (code == kResizeCubic) {
    const int start = std::clamp(i - 1, 0, size - 4);
    for (int k = start; k < start + 4; ++k) {
      at(k) = 1.0;
      for (int m = start; m < start + 4; ++m)
        if (m != k) at(k) *= (p - m) / (k - m);
    }
  } else {
    double sum = 0;
    const auto sinc = [](double x) {
      return x == 0 ? 1.0 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
    };
    for (int k = 0; k < size; ++k)
      if (std::abs(p - k) < 3) sum += at(k) = sinc(p - k) * sinc((p - k) / 3);
    for (double& v : w) v /= sum;
  }
  return w;
}

void checkResize(int code, int srcWidth, int srcHeight, double fx, double fy, std::mt19937& rng) {
  const int width = std::max(1, static_cast<int>(srcWidth * fx));
  const int height = std::max(1, static_cast<int>(srcHeight * fy));
  SCOPED_TRACE(testing::Message() << "code " << code << ", " << srcWidth << "x" << srcHeight
                                  << " by " << fx << ", " << fy);
  // The region lies inside a larger image of NaN, which no result may touch.
  Plane<float> src(srcWidth, srcHeight, 2, 2), dst(width, height, 1, 1, 2);
  src.fill(std::numeric_limits<float>::quiet_NaN());
  for (int y = 0; y < srcHeight; ++y)
    for (int x = 0; x < srcWidth; ++x) src.at(x, y) = static_cast<float>(rng() % 2001) - 1000.0f;
  dst.fill(0.5f);
  ASSERT_EQ(
      primResize_32f_C1R(&src.at(-2, -2), srcWidth + 4, srcHeight + 4, src.step, 2, 2, srcWidth,
                         srcHeight, dst.data(), dst.step, width, height, fx, fy, code),
      0);
  const int shorter = std::min(srcWidth, srcHeight);
  int run = code;
  if (run == kResizeLanczos && shorter < 8) run = kResizeCubic;
  if (run == kResizeCubic && shorter < 4) run = kResizeLinear;
  if (shorter < 2) run = kResizeNearest;
  ASSERT_EQ(dst.changedOutside(0.5f), 0);
  for (int y = 0; y < height; ++y) {
    const std::vector<double> wy = axisWeights(run, y, fy, srcHeight);
    std::vector<double> line(static_cast<std::size_t>(srcWidth), 0.0);
    for (int j = 0; j < srcHeight; ++j)
      for (int i = 0; i < srcWidth; ++i)
        line[static_cast<std::size_t>(i)] += wy[static_cast<std::size_t>(j)] * src.at(i, j);
    for (int x = 0; x < width; ++x) {
      const std::vector<double> wx = axisWeights(run, x, fx, srcWidth);
      double expected = 0;
      for (std::size_t i = 0; i < wx.size(); ++i) expected += wx[i] * line[i];
      ASSERT_NEAR(dst.at(x, y), expected, 2e-3) << "at " << x << ", " << y;
    }
  }
}

TEST(Resize, weighsSamplesByPosition) {
  std::mt19937 rng(2);
  onEveryVariant([&] {
    for (int code : {1, 2, 4, 16}) {
      for (double f : {0.5, 2.0, 0.7, 1.3, 3.1}) {
        checkResize(code, 40, 12, f, 1.0, rng);
        checkResize(code, 13, 9, 1.0, f, rng);
        checkResize(code, 8, 9, f, 1.0 / f, rng);
      }
      checkResize(code, 530, 4, 0.5, 0.5, rng);  // more than one strip
      checkResize(code, 150, 4, 4.0, 2.0, rng);
      for (int n : {1, 2, 3, 4, 5, 7}) {
        checkResize(code, n, 9, 2.0, 2.0, rng);
        checkResize(code, 9, n, 0.5, 0.5, rng);
      }
    }
    for (double f : {1.0, 0.5, 0.3, 0.01}) {
      checkResize(8, 41, 13, f, 0.6, rng);
      checkResize(8, 300, 3, 1.0, f, rng);
    }
  });
}

TEST(Resize, factorOneIsTheIdentityToTheBit) {
  std::mt19937 rng(3);
  Plane<float> src(300, 9), dst(300, 9);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 300; ++x)
      src.at(x, y) = std::ldexp(static_cast<float>(rng()), static_cast<int>(rng() % 60) - 60);
  onEveryVariant([&] {
    for (int code : {1, 2, 4, 8, 16}) {
      dst.fill(0);
      ASSERT_EQ(primResize_32f_C1R(src.data(), 300, 9, src.step, 0, 0, 300, 9, dst.data(), dst.step,
                                   300, 9, 1.0, 1.0, code),
                0);
      expectPlane(dst, 0.0f, [&](int x, int y) { return src.at(x, y); });
    }
  });
}

// Regions reach out of the image, destinations exceed the factor, positions overflow: the nearest
// samples serve, and nothing else is read.
TEST(Resize, staysInsideTheImageWhateverIsAsked) {
  Plane<float> src(10, 10), dst(40, 3);
  for (int y = 0; y < 10; ++y)
    for (int x = 0; x < 10; ++x) src.at(x, y) = static_cast<float>(10 * y + x);
  onEveryVariant([&] {
    for (int code : {1, 2, 4, 8, 16}) {
      for (double f : {5e-324, 1e-9, 1.0, 1e300}) {
        const int status =
            primResize_32f_C1R(src.data(), 10, 10, src.step, -3, 6, std::numeric_limits<int>::max(),
                               100, dst.data(), dst.step, 40, 3, f, f, code);
        ASSERT_EQ(status, code == 8 && f > 1 ? -22 : 0);
      }
      dst.fill(-1);
      ASSERT_EQ(primResize_32f_C1R(src.data(), 10, 10, src.step, 6, 0, 100, 10, dst.data(),
                                   dst.step, 40, 3, 1.0, 1.0, code),
                0);
      for (int x = 0; x < 40; ++x) EXPECT_EQ(dst.at(x, 2), src.at(6 + std::min(x, 3), 2));
    }
  });
}

TEST(Resize, refusesInTheDocumentedOrder) {
  const float src[64] = {};
  float dst[64];
  const auto call = [&](int w, int h, int s, int rx, int rw, int ds, int dw, double fx, double fy,
                        int code) {
    return primResize_32f_C1R(src, w, h, s, rx, 0, rw, 1, dst, ds, dw, 1, fx, fy, code);
  };
  EXPECT_EQ(primResize_32f_C1R(nullptr, 0, 0, 0, 0, 0, 0, 0, dst, 0, 0, 0, 0, 0, 0), -8);
  EXPECT_EQ(primResize_32f_C1R(src, 0, 0, 0, 0, 0, 0, 0, nullptr, 0, 0, 0, 0, 0, 0), -8);
  EXPECT_EQ(call(0, 1, 0, 0, 8, 0, 4, 0, 0, 0), -6);
  EXPECT_EQ(call(8, 1, 0, 0, 0, 0, 4, 0, 0, 0), -6);
  EXPECT_EQ(call(8, 1, 0, 0, 8, 0, 0, 0, 0, 0), -6);
  EXPECT_EQ(call(8, 1, 0, 8, 8, 0, 4, 0, 0, 0), -6) << "region right of the image";
  EXPECT_EQ(call(8, 1, 0, -8, 8, 0, 4, 0, 0, 0), -6) << "region left of the image";
  EXPECT_EQ(call(8, 1, 31, 0, 8, 16, 4, 0, 0, 0), -14);
  EXPECT_EQ(call(8, 1, 32, 0, 8, 15, 4, 0, 0, 0), -14);
  const double inf = std::numeric_limits<double>::infinity();
  for (double bad : {0.0, -1.0, inf, -inf, std::nan("")}) {
    EXPECT_EQ(call(8, 1, 32, 0, 8, 16, 4, bad, 1, 0), -23);
    EXPECT_EQ(call(8, 1, 32, 0, 8, 16, 4, 1, bad, 0), -23);
  }
  for (int bad : {0, 3, 5, 6, 32, -1}) EXPECT_EQ(call(8, 1, 32, 0, 8, 16, 4, 0.5, 1, bad), -22);
  EXPECT_EQ(call(8, 1, 32, 0, 8, 16, 4, 1.01, 0.5, 8), -22);
  EXPECT_EQ(call(8, 1, 32, 0, 8, 16, 4, 0.5, 1.01, 8), -22);
}

}  // namespace
