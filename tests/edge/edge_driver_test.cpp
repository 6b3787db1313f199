#include "edge/edge_driver.h"

#include "edge/enh_edge.h"
#include "edge/yuv_transform.h"
#include "tests/support/picture.h"
#include "tests/support/test.h"
#include "vxicore26.h"

namespace {

using namespace vx::test;

// All different, so that no two can be exchanged unseen. The last one has no effect.
const vx::EdgeSettings kStrong = {.baseGain = 1.5,
                                  .rangeFloor = 0.02,
                                  .blurSigmaX = 1.4,
                                  .blurSigmaY = 0.9,
                                  .adaptiveGain = 2,
                                  .chromaBlurX = 1.1,
                                  .chromaBlurY = 0.7,
                                  .chromaShiftX = -1,
                                  .chromaShiftY = 2,
                                  .alignSigmaX = 2.5,
                                  .alignSigmaY = 1.6,
                                  .alignThreshold = 0.03,
                                  .edgeReserved = 5};

int enhance(Picture& p, const vx::EdgeSettings& settings = kStrong) {
  return vx::enhanceEdges(deep(p.format), p.bytes.data(), deep(p.format) ? p.step / 2 : p.step,
                          p.width, p.height, settings);
}

// The two matrices are no exact inverses: one trip costs less than one level at 8 bits.
TEST(EnhanceEdges, neutralSettingsReturnTheImage) {
  vx::EdgeSettings neutral{};
  neutral.baseGain = 1;
  neutral.rangeFloor = 0.01;
  for (const int format : {1, 3}) {
    Picture p(format, 64, 48), before(p);
    p.randomise(42, deep(format) ? 32767 : 255);
    for (int c = 0; c < 3; ++c) p.set(0, 0, c, 128), p.set(1, 0, c, 0), p.set(2, 0, c, 255);
    before = p;
    for (int c = 0; c < 3 && deep(format); ++c) p.set(0, 0, c, 60000), before.set(0, 0, c, 32767);
    EXPECT_EQ(enhance(p, neutral), 1);
    EXPECT_LE(p.distance(before), deep(format) ? 20 : 1);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(p.bytes[i], before.bytes[i]) << "grey, white, black";
  }
}

TEST(EnhanceEdges, isTheFourStepsBetweenTwoMatrices) {
  constexpr int kWidth = 60, kHeight = 43;
  for (const int format : {1, 3}) {
    const float scale = deep(format) ? 32768.0f : 256.0f, top = scale - 1;
    Picture p(format, kWidth, kHeight);
    p.randomise(3, static_cast<int>(top));
    std::vector<float> rgb;
    for (int i = 0; i < 3 * kWidth * kHeight; ++i)
      rgb.push_back(static_cast<float>(p.get(i / 3 % kWidth, i / 3 / kWidth, i % 3)) / scale);
    vx::EdgePlane yuv[3];
    for (auto& plane : yuv) plane.resize(kWidth, kHeight);
    vx::rgbToYuv(rgb.data(), 12 * kWidth, yuv, 0, kHeight);
    vx::EdgePlane enhanced[3];
    vx::EnhEdge edge(1.4f, 0.9f, 0.02f, 1.0, 1.0);
    edge.baseGain = 1.5f;
    edge.adaptiveGain = 2.0f;
    edge.chromaShiftX = -1;
    edge.chromaShiftY = 2;
    edge.enhanceLuma(yuv[0], enhanced[0]);
    edge.blurChroma(yuv[1], 1.1f, 0.7f);
    edge.blurChroma(yuv[2], 1.1f, 0.7f);
    edge.shiftChroma(yuv[1], yuv[2]);
    edge.alignChroma({2.5f, 1.6f, 0.03f}, enhanced[0], yuv[1], yuv[2], enhanced[1], enhanced[2]);
    vx::yuvToRgb(enhanced, 0, kHeight, rgb.data(), 12 * kWidth);
    Picture wanted(p);
    wanted.forEachSample([&, i = 0](int, int, int) mutable {
      return static_cast<int>(std::lrint(std::clamp(rgb[i++] * scale, 0.0f, top)));
    });
    EXPECT_EQ(enhance(p), 1);
    EXPECT_EQ(p.distance(wanted), 0) << format;
  }
}

// Bottom-up rows, rows with padding, and 16-bit rows at odd addresses give the same pixels.
TEST(EnhanceEdges, anyRowStepGivesTheSamePixelsAndTouchesNothingElse) {
  constexpr int kWidth = 37, kHeight = 29, kStep = kWidth * 3 + 5;
  Picture p(3, kWidth, kHeight);
  p.randomise(42, 32767);
  const auto bottomUp = [&] {
    std::vector<std::uint8_t> memory(kStep * 2 * kHeight + 1, 0xA5);
    for (int y = 0; y < kHeight; ++y)
      std::memcpy(&memory[1 + (kHeight - 1 - y) * kStep * 2], p.at(0, y, 0), kWidth * 6);
    return memory;
  };
  std::vector<std::uint8_t> memory = bottomUp();
  vx::enhanceEdges(true, &memory[1 + (kHeight - 1) * kStep * 2], -kStep, kWidth, kHeight, kStrong);
  enhance(p);
  EXPECT_TRUE(memory == bottomUp());
}

TEST(EnhanceEdges, nothingIsDoneWithoutPixels) {
  std::uint8_t pixel[3] = {1, 2, 3};
  const auto call = [](void* pixels, int w, int h) {
    return vxYUVEdgeRGB(0, pixels, 3, w, h, 0, 0, 2, 2, 9, 0, 0, 1, 1, 6, 6, 0, 7);
  };
  EXPECT_EQ(call(nullptr, 1, 1), 1);
  EXPECT_EQ(call(pixel, 0, 5), 1);
  EXPECT_EQ(call(pixel, 65536, -65536), 1);
  EXPECT_EQ(pixel[0], 1);
}

// A NaN in the planes (a range of 0 over a floor of 0) leaves as the top of the range.
TEST(EnhanceEdges, undefinedRatiosBecomeTheTopOfTheRange) {
  Picture flat(1, 20, 20);
  flat.forEachSample([](int, int, int) { return 100; });
  vx::EdgeSettings s = kStrong;
  s.rangeFloor = 0;
  enhance(flat, s);
  EXPECT_EQ(flat.get(10, 10, 0), 255);
  EXPECT_EQ(flat.get(0, 0, 0), 100) << "the frame has no detail";
}

}  // namespace
