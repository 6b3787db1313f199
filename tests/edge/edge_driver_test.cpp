#include "edge/edge_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "frame/exceptions.h"
#include "prim/alloc.h"
#include "vxicore26.h"

namespace {

vx::EdgeSettings neutral() {
  vx::EdgeSettings s{};
  s.baseGain = 1;
  s.rangeFloor = 0.01;
  return s;
}

vx::EdgeSettings strong() {
  vx::EdgeSettings s = neutral();
  s.blurSigmaX = s.blurSigmaY = 1.5;
  s.baseGain = 1.5;
  s.adaptiveGain = 2;
  s.chromaBlurX = 1;
  s.chromaShiftY = 2;
  s.alignSigmaX = s.alignSigmaY = 2;
  return s;
}

template <class T>
std::vector<T> randomSamples(std::size_t count, unsigned top) {
  std::mt19937 rng(42);
  std::vector<T> v(count);
  for (T& s : v) s = static_cast<T>(rng() % (top + 1));
  return v;
}

// The two matrices are no exact inverses: one trip costs less than one level at 8 bits.
TEST(EnhanceEdges, neutralSettingsReturnTheImage) {
  auto bytes = randomSamples<std::uint8_t>(64 * 48 * 3, 255);
  for (std::size_t i = 0; i < 3; ++i) bytes[i] = 128, bytes[3 + i] = 255, bytes[6 + i] = 0;
  auto result = bytes;
  EXPECT_EQ(vx::enhanceEdges(false, result.data(), 64 * 3, 64, 48, neutral()), 1);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    ASSERT_NEAR(result[i], bytes[i], 1);
  }
  for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(result[i], bytes[i]) << "grey, white, black";
  auto words = randomSamples<std::uint16_t>(64 * 48 * 3, 32767);
  words[0] = words[1] = words[2] = 60000;  // read as unsigned, above the range
  auto deep = words;
  EXPECT_EQ(vx::enhanceEdges(true, deep.data(), 64 * 3, 64, 48, neutral()), 1);
  for (std::size_t i = 3; i < words.size(); ++i) ASSERT_NEAR(deep[i], words[i], 20);
  EXPECT_EQ(deep[0], 32767);
}

// Bottom-up rows, rows with padding, and 16-bit rows at odd addresses give the same pixels.
TEST(EnhanceEdges, anyRowStepGivesTheSamePixelsAndTouchesNothingElse) {
  constexpr int kWidth = 37, kHeight = 29;
  const auto start = randomSamples<std::uint16_t>(kWidth * kHeight * 3, 32767);
  auto want = start;
  vx::enhanceEdges(true, want.data(), kWidth * 3, kWidth, kHeight, strong());
  constexpr std::ptrdiff_t kStep = kWidth * 3 + 5;
  std::vector<std::uint8_t> memory(kStep * 2 * kHeight + 1, 0xA5);
  const auto rowAt = [&](int y) { return memory.data() + 1 + (kHeight - 1 - y) * kStep * 2; };
  for (int y = 0; y < kHeight; ++y)
    std::memcpy(rowAt(y), &start[std::size_t(y) * kWidth * 3], kWidth * 6);
  vx::enhanceEdges(true, rowAt(0), -static_cast<int>(kStep), kWidth, kHeight, strong());
  for (int y = 0; y < kHeight; ++y) {
    EXPECT_EQ(std::memcmp(rowAt(y), &want[std::size_t(y) * kWidth * 3], kWidth * 6), 0) << y;
    for (int i = kWidth * 6; i < kStep * 2; ++i) ASSERT_EQ(rowAt(y)[i], 0xA5);
  }
}

TEST(EnhanceEdges, oddArgumentsGetADefinedAnswer) {
  std::uint8_t pixel[3] = {1, 2, 3};
  EXPECT_EQ(vxYUVEdgeRGB(0, nullptr, 3, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 1);
  EXPECT_EQ(vxYUVEdgeRGB(0, pixel, 3, 0, 5, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 1);
  EXPECT_EQ(vxYUVEdgeRGB(0, pixel, 3, 65536, -65536, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 1);
  EXPECT_EQ(pixel[0], 1);
  const double nan = std::nan("");
  for (int w = 1; w <= 8; ++w) {
    for (int h = 1; h <= 8; ++h) {
      auto image = randomSamples<std::uint8_t>(static_cast<std::size_t>(w * h * 3), 255);
      EXPECT_EQ(vxYUVEdgeRGB(0, image.data(), w * 3, w, h, nan, nan, 2, 2, 1e300, nan, -nan,
                             2147483647, -2147483647 - 1, 1e300, 6, nan, 7),
                1);
    }
  }
}

// A NaN in the planes (a range of 0 over a floor of 0) leaves as the top of the range.
TEST(EnhanceEdges, undefinedRatiosBecomeTheTopOfTheRange) {
  std::vector<std::uint8_t> flat(20 * 20 * 3, 100);
  vx::EdgeSettings s = strong();
  s.rangeFloor = 0;
  s.chromaShiftY = 0;
  vx::enhanceEdges(false, flat.data(), 60, 20, 20, s);
  EXPECT_EQ(flat[(10 * 20 + 10) * 3], 255);
  EXPECT_EQ(flat[0], 100) << "the frame has no detail";
}

// Every allocation failing in turn: the exception arrives and the image is untouched.
TEST(EnhanceEdges, failedAllocationLeavesTheImageAlone) {
  const auto start = randomSamples<std::uint8_t>(50 * 40 * 3, 255);
  static int countdown = 0;
  const vx::prim::MemHooks saved = vx::prim::primMemHooks;
  vx::prim::primMemHooks.allocate = [](std::size_t size) -> void* {
    return countdown-- > 0 ? std::malloc(size) : nullptr;
  };
  int failures = 0;
  for (int allowed = 0;; ++allowed) {
    countdown = allowed;
    auto image = start;
    try {
      vx::enhanceEdges(false, image.data(), 150, 50, 40, strong());
      break;
    } catch (const vx::BException&) {
      ++failures;
      ASSERT_EQ(image, start) << "allocation " << allowed;
    }
  }
  vx::prim::primMemHooks = saved;
  EXPECT_GT(failures, 10);
}

// A red and a grey field side by side, chroma moved and smeared as old stills have it: the matching
// settings bring the chroma closer to what it was.
TEST(EnhanceEdges, repairsDisplacedAndBleedingChroma) {
  constexpr int kSize = 96;
  std::vector<std::uint8_t> clean(kSize * kSize * 3), damaged(clean.size());
  const auto field = [](int x, int c) {
    const bool red = (x / 24) % 2 == 0;
    const std::uint8_t colours[2][3] = {{110, 112, 108}, {200, 40, 40}};
    return static_cast<double>(colours[red ? 1 : 0][c]);
  };
  const auto luma = [](const double* p) { return 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2]; };
  for (int y = 0; y < kSize; ++y) {
    for (int x = 0; x < kSize; ++x) {
      double mine[3], chroma[3] = {};
      for (int c = 0; c < 3; ++c) mine[c] = field(x, c);
      for (int i = -2; i <= 2; ++i) {  // smeared over five pixels and moved by two to the right
        double there[3];
        for (int c = 0; c < 3; ++c) there[c] = field(std::clamp(x - 2 + i, 0, kSize - 1), c);
        for (int c = 0; c < 3; ++c) chroma[c] += (there[c] - luma(there)) / 5;
      }
      for (int c = 0; c < 3; ++c) {
        const auto i = static_cast<std::size_t>((y * kSize + x) * 3 + c);
        clean[i] = static_cast<std::uint8_t>(mine[c]);
        damaged[i] = static_cast<std::uint8_t>(std::clamp(luma(mine) + chroma[c], 0.0, 255.0));
      }
    }
  }
  const auto chromaError = [&](const std::vector<std::uint8_t>& image) {
    double sum = 0;
    for (std::size_t i = 0; i < clean.size(); i += 3) {
      const double a[3] = {double(clean[i]), double(clean[i + 1]), double(clean[i + 2])};
      const double b[3] = {double(image[i]), double(image[i + 1]), double(image[i + 2])};
      for (int c = 0; c < 3; c += 2) sum += std::pow((a[c] - luma(a)) - (b[c] - luma(b)), 2);
    }
    return 10 * std::log10(255 * 255 * static_cast<double>(clean.size()) / 3 * 2 / sum);
  };
  vx::EdgeSettings s = neutral();
  s.chromaShiftX = -2;
  auto shifted = damaged;
  vx::enhanceEdges(false, shifted.data(), kSize * 3, kSize, kSize, s);
  s.alignSigmaX = 3;
  s.alignThreshold = 0.01;
  auto aligned = damaged;
  vx::enhanceEdges(false, aligned.data(), kSize * 3, kSize, kSize, s);
  RecordProperty("damaged", std::to_string(chromaError(damaged)));
  RecordProperty("shifted", std::to_string(chromaError(shifted)));
  RecordProperty("aligned", std::to_string(chromaError(aligned)));
  EXPECT_GT(chromaError(shifted), chromaError(damaged) + 3);
  EXPECT_GT(chromaError(aligned), chromaError(shifted) + 3);
}

}  // namespace
