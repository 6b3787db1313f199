#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

TEST(Transpose, exchangesRowsAndColumnsOfSquares) {
  for (int n : {1, 2, 15, 16, 17, 45}) {
    Plane<float> a(n, n);
    a.set([=](int x, int y) { return y * n + x; });
    ASSERT_EQ(call(primTranspose_32f_C1IR, a, a.size()), 0);
    expectPlane(a, [=](int x, int y) { return x * n + y; });
  }
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

// The region lies inside a larger image of NaN, which no result may touch.
void expectResized(int code, int srcWidth, int srcHeight, double fx, double fy) {
  SCOPED_TRACE(testing::Message() << "code " << code << ", " << srcWidth << "x" << srcHeight
                                  << " by " << fx << ", " << fy);
  std::mt19937 rng(2);
  Plane<float> src(srcWidth, srcHeight, 2);
  Plane<float> dst(std::max(1, int(srcWidth * fx)), std::max(1, int(srcHeight * fy)));
  src.draw([] { return kNan; });
  src.set([&](int, int) { return static_cast<float>(rng() % 2001) - 1000.0f; });
  ASSERT_EQ(
      primResize_32f_C1R(&src.at(-2, -2), srcWidth + 4, srcHeight + 4, src.step, 2, 2, srcWidth,
                         srcHeight, dst.data(), dst.step, dst.width, dst.height, fx, fy, code),
      0);
  const int shorter = std::min(srcWidth, srcHeight);
  int run = code;
  if (run == kResizeLanczos && shorter < 8) run = kResizeCubic;
  if (run == kResizeCubic && shorter < 4) run = kResizeLinear;
  if (shorter < 2) run = kResizeNearest;
  std::vector<std::vector<double>> wx, wy;
  for (int x = 0; x < dst.width; ++x) wx.push_back(axisWeights(run, x, fx, srcWidth));
  for (int y = 0; y < dst.height; ++y) wy.push_back(axisWeights(run, y, fy, srcHeight));
  const auto expected = [&](int x, int y) {
    double sum = 0;
    for (int j = 0; j < srcHeight; ++j)
      for (int i = 0; i < srcWidth; ++i)
        sum +=
            wx[std::size_t(x)][std::size_t(i)] * wy[std::size_t(y)][std::size_t(j)] * src.at(i, j);
    return sum;
  };
  expectNear(dst, expected, 2e-3, 0);
}

TEST(Resize, weighsSamplesByPosition) {
  for (int code : {1, 2, 4, 16}) {
    for (double f : {0.5, 2.0, 0.7, 1.3, 3.1}) {
      expectResized(code, 40, 12, f, 1.0);
      expectResized(code, 13, 9, 1.0, f);
      expectResized(code, 8, 9, f, 1.0 / f);
    }
    expectResized(code, 530, 4, 0.5, 0.5);  // more than one strip
    expectResized(code, 150, 4, 4.0, 2.0);
    for (int n : {1, 2, 3, 4, 5, 7}) {
      expectResized(code, n, 9, 2.0, 2.0);
      expectResized(code, 9, n, 0.5, 0.5);
    }
  }
  for (double f : {1.0, 0.5, 0.3, 0.01}) {
    expectResized(8, 41, 13, f, 0.6);
    expectResized(8, 300, 3, 1.0, f);
    expectResized(8, 1, 9, 1.0, f);
  }
}

// Factor 1 is the identity to the bit. Where regions reach out of the image, destinations exceed
// the factor or positions overflow, the nearest samples serve, and nothing else is read.
TEST(Resize, staysInsideTheImageWhateverIsAsked) {
  std::mt19937 rng(3);
  Plane<float> src(10, 10), dst(40, 3);
  src.draw([&] { return drawValue<float>(rng); });
  for (int code : {1, 2, 4, 8, 16}) {
    for (double f : {5e-324, 1e-9, 1.0, 1e300})
      ASSERT_EQ(call(primResize_32f_C1R, src.data(), src.size(), src.step, -3, 6,
                     Size{std::numeric_limits<int>::max(), 100}, dst, dst.size(), f, f, code),
                code == 8 && f > 1 ? -22 : 0);
    ASSERT_EQ(call(primResize_32f_C1R, src.data(), src.size(), src.step, 6, 0, Size{100, 10}, dst,
                   dst.size(), 1.0, 1.0, code),
              0);
    expectPlane(dst, [&](int x, int y) { return src.at(6 + std::min(x, 3), y); });
  }
}

}  // namespace
