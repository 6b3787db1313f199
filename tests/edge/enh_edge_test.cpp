#include "edge/enh_edge.h"

#include "edge/gauss_kernel7.h"
#include "tests/support/images.h"

namespace {

using vx::EdgePlane;
using vx::EnhEdge;
using namespace vx::test;

EnhEdge neutral() { return {0.0f, 0.0f, 0.01f, 1.0, 1.0}; }

// One pixel of the tabulated Gaussian, in double; a sigma of at most 0.4 filters nothing.
template <class Read>
double gauss(float sigmaX, float sigmaY, const Read& read, int x, int y) {
  static const float kOne[7] = {0, 0, 0, 1, 0, 0, 0};
  const float* kx = sigmaX > 0.4f ? vx::gaussKernel7(sigmaX) : kOne;
  const float* ky = sigmaY > 0.4f ? vx::gaussKernel7(sigmaY) : kOne;
  double sum = 0;
  for (int j = -3; j <= 3; ++j)
    for (int i = -3; i <= 3; ++i) sum += double{kx[i + 3]} * double{ky[j + 3]} * read(x + i, y + j);
  return sum;
}

TEST(GaussKernel7, isTheRoundedGaussianOfTheSigmaTruncatedAndLimited) {
  for (int row = 0; row < 20; ++row) {
    const double sigma = 0.5 + 0.1 * row;
    double weights[4], sum = 0;
    for (int k = 0; k < 4; ++k)
      sum += (k == 0 ? 1 : 2) * (weights[k] = std::exp(-k * k / (2 * sigma * sigma)));
    const float* taps = vx::gaussKernel7(static_cast<float>(sigma + 0.09));
    for (int k = 0; k < 4; ++k) {
      EXPECT_NEAR(taps[3 + k], weights[k] / sum, 0.000051) << "sigma " << sigma << " tap " << k;
      EXPECT_EQ(taps[3 + k], taps[3 - k]);
    }
  }
  for (const float low : {0.3f, std::nanf(""), -1e30f})
    EXPECT_EQ(vx::gaussKernel7(low), vx::gaussKernel7(0.54f));
  // Truncated in single precision: in double each of these takes the row beside it.
  for (const auto& [sigma, same] : {std::pair{0.74f, 0.7f}, {2.04f, 2.1f}, {2.34f, 2.4f}})
    EXPECT_EQ(vx::gaussKernel7(sigma), vx::gaussKernel7(same)) << sigma;
  EXPECT_EQ(vx::gaussKernel7(1e30f), vx::gaussKernel7(2.5f));
}

// Images without seven columns or rows have no pixel outside the frame.
TEST(EnhanceLuma, followsTheOneLineFormulaInAnyTiles) {
  const struct {
    int w, h;
    float sx, sy, gainLimit;
    int tileWidth = 256, tileHeight = 32;
  } cases[] = {{61, 37, 1.5f, 1.5f, 1000.0f},
               {61, 37, 0.8f, 0.3f, 0.4f, 1, 1},
               {61, 37, 0.2f, 1.1f, 99.0f, 7, 5},
               {61, 37, 0.9f, 1.1f, 0.4f, 256, 3},
               {21, 17, 0.3f, 0.4f, 1000.0f, 4, 9},
               {6, 9, 1.5f, 1.5f, 1000.0f},
               {7, 8, 1.5f, 1.5f, 0.0f},
               {40, 5, 1.5f, 1.5f, 1000.0f},
               {1, 1, 1.5f, 1.5f, 1000.0f}};
  for (const auto& [w, h, sx, sy, gainLimit, tileWidth, tileHeight] : cases) {
    EdgePlane input(w, h), output;
    fill(input, 1, 1.0f);
    EnhEdge edge = {sx, sy, 0.02f, 1.0, 1.0};
    edge.baseGain = 1.7f;
    edge.adaptiveGain = 2.5f;
    edge.gainLimit = gainLimit;
    edge.tileWidth = tileWidth;
    edge.tileHeight = tileHeight;
    edge.enhanceLuma(input, output);
    const auto in = [&](int x, int y) { return double{input.row(y)[x]}; };
    // How far the highest (sign 1) or lowest neighbour lies above or below the pixel.
    const auto reach = [&, w = w, h = h](int x, int y, int sign) {
      double most = 0;
      if (x == 0 || y == 0 || x == w - 1 || y == h - 1) return most;
      for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i) most = std::max(most, sign * (in(x + i, y + j) - in(x, y)));
      return most;
    };
    const auto range = [&](int x, int y) { return reach(x, y, 1) + reach(x, y, -1); };
    overPixels(input, [&, w = w, h = h, sx = sx, sy = sy, limit = double{gainLimit}](int x, int y) {
      double want = in(x, y);
      if (x >= 3 && y >= 3 && x < w - 3 && y < h - 3) {
        const double base = gauss(sx, sy, in, x, y);
        // The filter of the ranges runs always, whatever its sigma.
        const double smooth = gauss(std::max(2 * sx, 0.5f), std::max(2 * sy, 0.5f), range, x, y);
        double gain = 2.5f * std::min(reach(x, y, 1), reach(x, y, -1)) / (smooth + 0.02f);
        if (limit < 99) gain = std::min(gain, limit);
        want = base + (want - base) * (1.7f + gain);
      }
      ASSERT_NEAR(output.row(y)[x], want, 3e-6) << x << "," << y << " sigma " << sx << " " << sy;
    });
  }
}

TEST(EnhanceLuma, resamplesTheWorkingImageWhenAskedTo) {
  EdgePlane input(33, 21), output;
  fill(input, 4);
  EnhEdge edge = {0.3f, 0.3f, 0.01f, 2.0, 1.5};
  edge.baseGain = 2.0f;  // without a blur there is no detail
  edge.enhanceLuma(input, output);
  EXPECT_EQ(output.width, 66);
  EXPECT_EQ(output.height, 31);
  const auto mean = [](const EdgePlane& plane) {
    double sum = 0;
    overPixels(plane, [&](int x, int y) { sum += double{plane.row(y)[x]}; });
    return sum / plane.width / plane.height;
  };
  EXPECT_NEAR(mean(input), mean(output), 0.02);
}

// At their limits the settings of the luminance stage would have an effect, but do not run it.
TEST(EnhEdge, eachGateIsStrictAndOpensByItself) {
  const auto changes = [](const auto& set) {
    EdgePlane planes[3], start(30, 30);
    fill(start, 5);
    for (EdgePlane& plane : planes) {
      plane.resize(30, 30);
      copyImage(start, plane);
    }
    EnhEdge edge = {0.45f, 0.45f, 0.01f, 1.0, 1.0};
    edge.baseGain = edge.adaptiveGain = 1.0f;
    edge.chromaBlurX = edge.chromaBlurY = edge.alignSigmaX = edge.alignSigmaY = 0.4f;
    set(edge);
    edge.enhanceAll(planes[0], planes[1], planes[2]);
    return std::pair<bool, bool>(!sameBits(start, planes[0]), !sameBits(start, planes[1]));
  };
  EXPECT_EQ(changes([](EnhEdge&) {}), std::pair(false, false));
  EXPECT_EQ(EnhEdge(1, 1, 0, 1, 1).rangeFloor, 1e-5f) << "a ratio is always defined";
  for (const auto field :
       {&EnhEdge::baseGain, &EnhEdge::adaptiveGain, &EnhEdge::blurSigmaX, &EnhEdge::blurSigmaY})
    EXPECT_EQ(changes([&](EnhEdge& e) { e.*field = std::nextafter(e.*field, 2.0f); }),
              std::pair(true, false));
  for (const auto field :
       {&EnhEdge::chromaBlurX, &EnhEdge::chromaBlurY, &EnhEdge::alignSigmaX, &EnhEdge::alignSigmaY})
    EXPECT_EQ(changes([&](EnhEdge& e) { e.*field = 0.6f; }), std::pair(false, true));
  for (const auto field : {&EnhEdge::chromaShiftX, &EnhEdge::chromaShiftY})
    EXPECT_EQ(changes([&](EnhEdge& e) { e.*field = -1; }), std::pair(false, true));
}

TEST(BlurChroma, filtersTheInsideAndKeepsTheEdges) {
  // Seven columns are the least for the horizontal filter; with fewer it leaves all as it is.
  const std::tuple<int, int, float, float> cases[] = {
      {29, 23, 1.2f, 0.7f}, {29, 23, 0.0f, 2.0f}, {29, 23, 0.9f, 0.4f}, {6, 23, 1.2f, 0.7f},
      {7, 23, 1.2f, 0.7f},  {29, 6, 1.2f, 0.7f},  {3, 23, 0.0f, 2.0f}};
  for (const auto& [w, h, sx, sy] : cases) {
    EdgePlane start(w, h), plane(w, h);
    fill(start, 8);
    copyImage(start, plane);
    const auto in = [&, w = w, h = h](int x, int y) {
      return double{start.row(std::clamp(y, 0, h - 1))[std::clamp(x, 0, w - 1)]};
    };
    EnhEdge edge = neutral();
    edge.tileHeight = 4;
    edge.blurChroma(plane, sx, sy);
    overPixels(plane, [&, w = w, h = h, sx = sx, sy = sy](int x, int y) {
      const bool inX = x >= 3 && x < w - 3, inY = y >= 3 && y < h - 3;
      // Columns that the horizontal filter leaves out keep their values, filtered rows or not.
      double want = in(x, y);
      if (sx <= 0.4f || inX) want = gauss(sx, inY ? sy : 0.0f, in, x, y);
      ASSERT_NEAR(plane.row(y)[x], want, 1e-6) << x << "," << y << " of " << w << "x" << h;
    });
  }
}

TEST(ShiftChroma, movesAndRepeatsEdgesWithinSevenPixels) {
  for (const auto& [dx, dy] : {std::pair{3, -2}, {9, 0}, {-100, 7}}) {
    EdgePlane U(11, 9), V(11, 9), start(11, 9);
    fill(start, 11);
    copyImage(start, U);
    overPixels(V, [&](int x, int y) { V.row(y)[x] = 1 - start.row(y)[x]; });
    EnhEdge edge = neutral();
    edge.chromaShiftX = dx;
    edge.chromaShiftY = dy;
    edge.shiftChroma(U, V);
    EXPECT_EQ(edge.chromaShiftX, std::clamp(dx, -7, 7));
    overPixels(U, [&, dx = dx, dy = dy](int x, int y) {
      const int fromX = std::clamp(x - std::clamp(dx, -7, 7), 0, 10);
      const int fromY = std::clamp(y - std::clamp(dy, -7, 7), 0, 8);
      ASSERT_EQ(U.row(y)[x], start.row(fromY)[fromX]);
      ASSERT_EQ(V.row(y)[x], 1 - start.row(fromY)[fromX]);
    });
  }
}

TEST(AlignChroma, takesWhatASlowSearchFinds) {
  EdgePlane Y(40, 33), U(40, 33), V(40, 33), outU, outV, blurredY(40, 33);
  fill(Y, 21);
  // coarse values, so that distances tie
  overPixels(Y, [&](int x, int y) { Y.row(y)[x] = std::round(Y.row(y)[x] * 8) / 8; });
  fill(U, 22);
  fill(V, 23);
  // In double 2.6 and 3.6 would have the radii 2 and 3. A threshold of 0 holds nothing back.
  const std::tuple<float, float, float> cases[] = {{2.0f, 2.0f, 0.03f},
                                                   {2.0f, 0.0f, 0.03f},
                                                   {6.7f, 1.0f, 0.03f},
                                                   {0.5f, 0.5f, 0.03f},
                                                   {2.6f, 3.6f, 0.0f}};
  for (const auto& [sx, sy, threshold] : cases) {
    EnhEdge edge = neutral();
    edge.tileWidth = 7;
    edge.tileHeight = 5;
    edge.alignChroma({sx, sy, threshold}, Y, U, V, outU, outV);
    copyImage(Y, blurredY);
    edge.blurChroma(blurredY, sx, sy);
    const int rx = std::min(6, static_cast<int>(sx + 0.4f));
    const int ry = std::min(6, static_cast<int>(sy + 0.4f));
    overPixels(Y, [&, sx = sx, threshold = threshold](int x, int y) {
      int bestX = x, bestY = y;
      float best = 1e9f;
      const float mine = Y.row(y)[x];
      if (x >= rx && y >= ry && x < 40 - rx && y < 33 - ry && rx + ry > 0 &&
          !(std::fabs(blurredY.row(y)[x] - mine) < threshold)) {
        for (int j = -ry; j <= ry; ++j)
          for (int i = -rx; i <= rx; ++i) {
            const auto weight =
                static_cast<float>((std::abs(i) + std::abs(j)) * 0.3 / (rx + ry) + 1.0);
            const float d = std::fabs(blurredY.row(y + j)[x + i] - mine) * weight;
            if (d < best) best = d, bestX = x + i, bestY = y + j;
          }
      }
      ASSERT_EQ(outU.row(y)[x], U.row(bestY)[bestX]) << x << "," << y << " sigma " << sx;
      ASSERT_EQ(outV.row(y)[x], V.row(bestY)[bestX]) << x << "," << y << " sigma " << sx;
    });
  }
}

}  // namespace
