#include "edge/enh_edge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "edge/gauss_kernel7.h"
#include "tests/edge/planes.h"

namespace {

using vx::EdgePlane;
using vx::EnhEdge;

EnhEdge neutral() { return {0.0f, 0.0f, 0.01f, 1.0, 1.0}; }

// One pixel of the tabulated Gaussian, in double.
template <class Read>
double gauss(const float* kx, const float* ky, const Read& read, int x, int y) {
  double sum = 0;
  for (int j = -3; j <= 3; ++j)
    for (int i = -3; i <= 3; ++i) sum += double{kx[i + 3]} * double{ky[j + 3]} * read(x + i, y + j);
  return sum;
}

TEST(GaussKernel7, tableIsTheRoundedGaussian) {
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
}

TEST(GaussKernel7, sigmaIsTruncatedToARowAndLimited) {
  const float* first = vx::gaussKernel7(0.54f);
  EXPECT_EQ(vx::gaussKernel7(0.3f), first);
  EXPECT_EQ(vx::gaussKernel7(std::nanf("")), first);
  EXPECT_EQ(vx::gaussKernel7(-1e30f), first);
  EXPECT_EQ(vx::gaussKernel7(0.8f), first + 2 * 7);
  EXPECT_EQ(vx::gaussKernel7(3.0f), first + 19 * 7);
  EXPECT_EQ(vx::gaussKernel7(1e30f), first + 19 * 7);
}

TEST(EnhanceLuma, followsTheOneLineFormula) {
  EdgePlane input(61, 37), output;
  fillRandom(input, 1);
  for (const auto& [sx, sy] : {std::pair{1.5f, 1.5f}, {0.8f, 0.3f}, {0.2f, 1.1f}}) {
    EnhEdge edge = {sx, sy, 0.02f, 1.0, 1.0};
    edge.baseGain = 1.7f;
    edge.adaptiveGain = 2.5f;
    edge.enhanceLuma(input, output);
    static const float kOne[7] = {0, 0, 0, 1, 0, 0, 0};
    const auto in = [&](int x, int y) { return double{input.row(y)[x]}; };
    const auto highest = [&](int x, int y) {
      if (x == 0 || y == 0 || x == 60 || y == 36) return in(x, y);
      double v = -1;
      for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i) v = std::max(v, in(x + i, y + j));
      return v;
    };
    const auto lowest = [&](int x, int y) {
      if (x == 0 || y == 0 || x == 60 || y == 36) return in(x, y);
      double v = 2;
      for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i) v = std::min(v, in(x + i, y + j));
      return v;
    };
    const auto range = [&](int x, int y) { return highest(x, y) - lowest(x, y); };
    for (int y = 0; y < 37; ++y) {
      for (int x = 0; x < 61; ++x) {
        double want = in(x, y);
        if (x >= 3 && y >= 3 && x < 58 && y < 34) {
          const double base = gauss(sx > 0.4f ? vx::gaussKernel7(sx) : kOne,
                                    sy > 0.4f ? vx::gaussKernel7(sy) : kOne, in, x, y);
          const double smooth =
              gauss(vx::gaussKernel7(2 * sx), vx::gaussKernel7(2 * sy), range, x, y);
          const double least = std::min(highest(x, y) - want, want - lowest(x, y));
          want = base + (want - base) * (1.7f + 2.5f * least / (smooth + 0.02f));
        }
        ASSERT_NEAR(output.row(y)[x], want, 3e-6) << x << "," << y << " sigma " << sx << " " << sy;
      }
    }
  }
}

TEST(EnhanceLuma, gainLimitCutsTheAdaptiveTermAlone) {
  EdgePlane input(40, 40), limited, plain;
  fillRandom(input, 2);
  EnhEdge edge = {1.5f, 1.5f, 0.01f, 1.0, 1.0};
  edge.adaptiveGain = 5.0f;
  edge.gainLimit = 0.0f;
  edge.enhanceLuma(input, limited);
  edge.adaptiveGain = 0.0f;
  edge.enhanceLuma(input, plain);
  EXPECT_TRUE(samePlane(limited, plain));
}

// Images without seven columns or rows have no pixel outside the frame.
TEST(EnhanceLuma, smallImagesAndFlatOnesComeBack) {
  EnhEdge edge = {1.5f, 1.5f, 0.0f, 1.0, 1.0};
  edge.baseGain = 9.0f;
  edge.adaptiveGain = 9.0f;
  for (int h = 1; h <= 8; ++h) {
    for (int w = 1; w <= 8; ++w) {
      EdgePlane input(w, h), output;
      fillRandom(input, 3);
      edge.enhanceLuma(input, output);
      for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
          if (x < 3 || y < 3 || x >= w - 3 || y >= h - 3) {
            ASSERT_EQ(output.row(y)[x], input.row(y)[x]) << w << "x" << h;
          }
        }
      }
    }
  }
  EdgePlane flat(20, 20), output;
  for (int y = 0; y < 20; ++y) std::fill_n(flat.row(y), 20, 0.25f);
  edge.rangeFloor = 0.01f;
  edge.enhanceLuma(flat, output);
  for (int y = 0; y < 20; ++y)  // the taps' sum differs from 1 by up to 2e-4, the gain is 9
    for (int x = 0; x < 20; ++x) EXPECT_NEAR(output.row(y)[x], 0.25f, 0.25 * 8 * 4e-4);
}

TEST(EnhanceLuma, resamplesTheWorkingImageWhenAskedTo) {
  EdgePlane input(33, 21), output;
  fillRandom(input, 4);
  EnhEdge edge = {0.3f, 0.3f, 0.01f, 2.0, 1.5};
  edge.baseGain = 2.0f;  // without a blur there is no detail
  edge.enhanceLuma(input, output);
  EXPECT_EQ(edge.scaledWidth, 66);
  EXPECT_EQ(edge.scaledHeight, 31);
  EXPECT_EQ(output.width, 66);
  EXPECT_EQ(output.height, 31);
  double mean[2] = {};
  for (int y = 0; y < 21; ++y)
    for (int x = 0; x < 33; ++x) mean[0] += input.row(y)[x] / (33.0 * 21);
  for (int y = 0; y < 31; ++y)
    for (int x = 0; x < 66; ++x) mean[1] += output.row(y)[x] / (66.0 * 31);
  EXPECT_NEAR(mean[0], mean[1], 0.02);
}

TEST(EnhEdge, resultsDoNotDependOnTheTiles) {
  EdgePlane start[3], whole[3], tiled[3];
  for (unsigned c = 0; c < 3; ++c) {
    start[c].resize(97, 71);
    fillRandom(start[c], 10 + c);
  }
  const auto run = [&](EdgePlane(&planes)[3], int tileWidth, int tileHeight) {
    EnhEdge edge = {1.1f, 0.9f, 0.01f, 1.0, 1.0};
    edge.tileWidth = tileWidth;
    edge.tileHeight = tileHeight;
    edge.baseGain = 1.5f;
    edge.adaptiveGain = 2.0f;
    edge.chromaBlurX = 0.9f;
    edge.chromaBlurY = 1.3f;
    edge.chromaShiftX = 1;
    edge.alignSigmaX = 2.0f;
    edge.alignSigmaY = 1.0f;
    edge.alignThreshold = 0.05f;
    for (int c = 0; c < 3; ++c) copyPlane(start[c], planes[c]);
    edge.enhanceAll(planes[0], planes[1], planes[2]);
  };
  run(whole, 1000, 1000);
  for (const auto& [w, h] : {std::pair{1, 1}, {7, 5}, {256, 3}, {16, 64}}) {
    run(tiled, w, h);
    for (int c = 0; c < 3; ++c)
      EXPECT_TRUE(samePlane(tiled[c], whole[c])) << w << "x" << h << " " << c;
  }
}

// With both sigmas at 0.45 or less and gains of at most 1 the stage does not run, although a gain
// below 1 would have had an effect.
TEST(EnhEdge, gatesAreStrict) {
  EdgePlane Y(30, 30), U(30, 30), V(30, 30), start;
  fillRandom(Y, 5);
  fillRandom(U, 6);
  fillRandom(V, 7);
  copyPlane(Y, start);
  EnhEdge edge = {0.45f, 0.45f, 0.01f, 1.0, 1.0};
  edge.baseGain = 0.5f;
  edge.adaptiveGain = 1.0f;
  edge.enhanceAll(Y, U, V);
  EXPECT_TRUE(samePlane(Y, start));
  edge.blurSigmaX = 0.4501f;
  edge.enhanceAll(Y, U, V);
  EXPECT_FALSE(samePlane(Y, start));
}

TEST(BlurChroma, filtersTheInsideAndKeepsTheEdges) {
  EdgePlane start(29, 23), plane;
  fillRandom(start, 8);
  const auto in = [&](int x, int y) { return double{start.row(y)[x]}; };
  static const float kOne[7] = {0, 0, 0, 1, 0, 0, 0};
  for (const auto& [sx, sy] : {std::pair{1.2f, 0.7f}, {0.0f, 2.0f}, {0.9f, 0.4f}}) {
    copyPlane(start, plane);
    EnhEdge edge = neutral();
    edge.tileHeight = 4;
    edge.blurChroma(plane, sx, sy);
    for (int y = 0; y < 23; ++y) {
      for (int x = 0; x < 29; ++x) {
        const bool inX = sx > 0.4f && x >= 3 && x < 26;
        const bool inY = sy > 0.4f && y >= 3 && y < 20;
        // Columns that the horizontal filter leaves out keep their values, filtered rows or not.
        const double want =
            sx > 0.4f && !inX
                ? in(x, y)
                : gauss(
                      inX ? vx::gaussKernel7(sx) : kOne, inY ? vx::gaussKernel7(sy) : kOne,
                      [&](int i, int j) { return in(std::clamp(i, 0, 28), std::clamp(j, 0, 22)); },
                      x, y);
        ASSERT_NEAR(plane.row(y)[x], want, 1e-6) << x << "," << y;
      }
    }
  }
}

TEST(ShiftChroma, movesAndRepeatsEdgesWithinSevenPixels) {
  for (const auto& [dx, dy] : {std::pair{3, -2}, {9, 0}, {-100, 7}}) {
    EdgePlane U(11, 9), V(11, 9), startU, startV;
    fillRandom(U, 11);
    fillRandom(V, 12);
    copyPlane(U, startU);
    copyPlane(V, startV);
    EnhEdge edge = neutral();
    edge.chromaShiftX = dx;
    edge.chromaShiftY = dy;
    edge.shiftChroma(U, V);
    EXPECT_EQ(edge.chromaShiftX, std::clamp(dx, -7, 7));
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 11; ++x) {
        const int fromX = std::clamp(x - std::clamp(dx, -7, 7), 0, 10);
        const int fromY = std::clamp(y - std::clamp(dy, -7, 7), 0, 8);
        ASSERT_EQ(U.row(y)[x], startU.row(fromY)[fromX]);
        ASSERT_EQ(V.row(y)[x], startV.row(fromY)[fromX]);
      }
    }
  }
}

TEST(AlignChroma, takesWhatASlowSearchFinds) {
  EdgePlane Y(40, 33), U(40, 33), V(40, 33), outU, outV, blurredY;
  fillRandom(Y, 21);
  for (int y = 0; y < 33; ++y)  // coarse values, so that distances tie
    for (int x = 0; x < 40; ++x) Y.row(y)[x] = std::round(Y.row(y)[x] * 8) / 8;
  fillRandom(U, 22);
  fillRandom(V, 23);
  for (const auto& [sx, sy] : {std::pair{2.0f, 2.0f}, {2.0f, 0.0f}, {9.0f, 1.0f}, {0.5f, 0.5f}}) {
    EnhEdge edge = neutral();
    edge.alignChroma({sx, sy, 0.03f}, Y, U, V, outU, outV);
    copyPlane(Y, blurredY);
    edge.blurChroma(blurredY, sx, sy);
    const int rx = std::min(6, static_cast<int>(sx + 0.4f));
    const int ry = std::min(6, static_cast<int>(sy + 0.4f));
    for (int y = 0; y < 33; ++y) {
      for (int x = 0; x < 40; ++x) {
        int bestX = x, bestY = y;
        float best = 1e9f;
        const float mine = Y.row(y)[x];
        if (x >= rx && y >= ry && x < 40 - rx && y < 33 - ry && rx + ry > 0 &&
            !(std::fabs(blurredY.row(y)[x] - mine) < 0.03f)) {
          for (int j = -ry; j <= ry; ++j) {
            for (int i = -rx; i <= rx; ++i) {
              const auto weight =
                  static_cast<float>((std::abs(i) + std::abs(j)) * 0.3 / (rx + ry) + 1.0);
              const float d = std::fabs(blurredY.row(y + j)[x + i] - mine) * weight;
              if (d < best) best = d, bestX = x + i, bestY = y + j;
            }
          }
        }
        ASSERT_EQ(outU.row(y)[x], U.row(bestY)[bestX]) << x << "," << y << " sigma " << sx;
        ASSERT_EQ(outV.row(y)[x], V.row(bestY)[bestX]) << x << "," << y << " sigma " << sx;
      }
    }
  }
}

TEST(EnhEdge, anySettingAndAnySizeIsSafe) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  for (const float odd : {nan, inf, -inf, -1.0f, 1e30f}) {
    for (const int size : {1, 2, 6, 7, 8, 13}) {
      EdgePlane Y(size, 14 - size), U(size, 14 - size), V(size, 14 - size);
      fillRandom(Y, 31);
      Y.row(0)[0] = odd;
      fillRandom(U, 32);
      fillRandom(V, 33);
      EnhEdge edge = {odd, odd, odd, 1.0, 1.0};
      edge.baseGain = edge.adaptiveGain = edge.gainLimit = odd;
      edge.chromaBlurX = edge.chromaBlurY = odd;
      edge.chromaShiftX = std::numeric_limits<int>::min();
      edge.chromaShiftY = std::numeric_limits<int>::max();
      edge.alignSigmaX = edge.alignSigmaY = edge.alignThreshold = odd;
      EXPECT_EQ(edge.enhanceAll(Y, U, V), 1);
      EnhEdge forced = {1.5f, 1.5f, odd, 1.0, 1.0};
      forced.alignSigmaX = 6.0f;
      forced.alignSigmaY = odd;
      EXPECT_EQ(forced.enhanceAll(Y, U, V), 1);
    }
  }
}

}  // namespace
