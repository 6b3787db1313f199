#include "adjust/unblock_stage.h"

#include "tests/support/test.h"
#include "vxicore26.h"

namespace {

using vx::AdjustSettings;

TEST(UnblockStage, strengthsBecomeQualities) {
  // In single precision; 0.2, 0.4 and 0.8 would give one less in double.
  const struct {
    float strength;
    int quality;
  } cases[] = {{0.0201f, 98}, {0.2f, 83},  {0.4f, 66}, {0.8f, 32},     {1.0f, 15},
               {1.17f, 1},    {-1.0f, 99}, {4.0f, 16}, {HUGE_VALF, 1}, {NAN, 1}};
  for (const auto& c : cases) EXPECT_EQ(vx::unblockQuality(c.strength), c.quality) << c.strength;
}

TEST(UnblockStage, runsAboveItsThresholdAndAtFullSizeOnly) {
  const std::tuple<float, int, bool> cases[] = {
      {0.0199999f, 1, false}, {0.020001f, 1, true}, {0.5f, 2, false}, {0.5f, 0, false}};
  for (const auto& [strength, previewScale, runs] : cases) {
    vx::IMG3<float> image(20, 16);
    for (int i = 0; i < 16 * 60; ++i) image.row(i / 60)[i % 60] = static_cast<float>(i % 250) / 256;
    const float before = image.row(5)[7];
    vx::removeBlockArtifacts(image, {.previewScale = previewScale, .unblockStrength = strength});
    EXPECT_EQ(image.row(5)[7] != before, runs) << strength << ", 1 to " << previewScale;
  }
}

// What it does is vxUnblock on bytes of value * 255, at half chroma width and every shift.
TEST(UnblockStage, worksOnBytesAndLeavesThemOnTheScaleOf255) {
  constexpr int kWidth = 33, kHeight = 27;
  vx::IMG3<float> image(kWidth, kHeight);
  std::vector<std::uint8_t> bytes;
  for (int y = 0; y < kHeight; ++y)
    for (int i = 0; i < 3 * kWidth; ++i) {
      const float v = static_cast<float>((7 * i + 11 * y) % 256) / 256.0f;
      image.row(y)[i] = v;
      bytes.push_back(static_cast<std::uint8_t>(std::nearbyint(v * 255.0f)));
    }
  AdjustSettings settings;
  settings.unblockStrength = 0.4f;
  vx::removeBlockArtifacts(image, settings);
  vxUnblock(0, bytes.data(), 3, 3 * kWidth, kWidth, kHeight, 66, 1, 1, 0);
  for (int y = 0; y < kHeight; ++y)
    for (int i = 0; i < 3 * kWidth; ++i)
      ASSERT_EQ(image.row(y)[i], static_cast<float>(bytes[3 * kWidth * y + i]) * 0.003921569f);
}

}  // namespace
