#include "tests/support/float_mode.h"
#include "tests/tone/reference.h"
#include "vxenhlib/tone/tone_scratch.h"
#include "vxenhlib/tone/unsharp_mask.h"

namespace {

using namespace vx;
using namespace vx::test;

using Stage = AdjustToneStage;

struct StageCase {
  const char* name;
  std::function<void(Stage&)> change;
  int width = 60, height = 41;
};

void curve(Stage& s, int mode, float contrast, float brightness, float range, float gamma) {
  s.saturation.mode = mode;
  s.saturation.contrast = contrast;
  s.saturation.brightness = brightness;
  s.saturation.detailRange = range;
  s.saturation.gamma = gamma;
}
const auto kNothing = [](Stage&) {};
const StageCase kCases[] = {
    {"full", kNothing, 121, 83},
    {"one pixel", kNothing, 1, 1},
    {"one column", kNothing, 1, 37},
    {"one row", kNothing, 37, 1},
    {"four rows", kNothing, 50, 4},
    {"detail removed", [](Stage& s) { s.lightness.detailGain = s.lightness.gamma = 0.0f; }},
    {"no split", [](Stage& s) { s.lightness.detailRange = 0, s.lightness.gamma = -0.6f; }},
    {"nothing on lightness", [](Stage& s) { s.lightness = {}, s.lightness.gamma = 0.0f; }},
    {"strengths of zero",
     [](Stage& s) {
       s.sharpenAmount = s.lightness.detailGamma = s.saturation.contrast = s.saturation.gamma = 0;
     }},
    {"not sharpened, not clipped", [](Stage& s) { s.sharpenAmount = 1; }},
    {"softened", [](Stage& s) { s.sharpenAmount = 0.2f, s.sharpenSigma = 3.0f; }},
    {"hue back", [](Stage& s) { s.hueShift = -0.7f; }},
    {"hue beyond a turn", [](Stage& s) { s.hueShift = 1.3f; }},
    {"saturation beyond one", [](Stage& s) { s.saturation.contrast = 4, s.saturation.gamma = 2; }},
    {"saturation curve", [](Stage& s) { curve(s, 1, 0.7f, -0.05f, 0.1f, 0.9f); }},
    {"of logarithms", [](Stage& s) { curve(s, 2, 1.3f, 0.02f, 0.04f, 1.0005f); }}};

// One scratch for all of them: nothing of an image may be left for the next.
TEST(ToneStage, bandsAndThreadsGiveTheBitsOfWholePlanePasses) {
  ToneScratch scratch;
  for (const auto& [name, change, w, h] : kCases) {
    IMG3<float> image(w, h), expected(w, h), actual(w, h);
    fill(image, 11);
    for (int i = 0; w > 50 && i < 3 * w; ++i) {
      image.row(7)[i] = static_cast<float>(i / 3) / 127.0f;  // grey: no saturation, no hue
      image.row(9)[i] = 2.2f * image.row(9)[i] - 0.4f;       // beyond the range
    }
    copyImage(image, expected);
    Stage stage = fullSetting();
    change(stage);
    referenceStage(expected, stage);
    for (const auto& [rows, threads] : kRuns) {
      const Threads team(threads);
      copyImage(image, actual);
      ImageRows pixels(actual);
      EXPECT_EQ(stage.apply(actual, pixels, pixels, scratch, rows), 0);
      EXPECT_TRUE(sameBits(expected, actual))
          << name << ", " << rows << " rows, " << threads << " threads";
    }
    // The curve of these modes stays in the caller's tone.
    EXPECT_EQ(stage.saturation.curvePoints, stage.saturation.mode == 0 ? 4 : 5) << name;
  }
}

// The last value that leaves a step out and the first that does not: the reference has the same
// limits, and to the bit.
TEST(ToneStage, stepsBeginAtTheirThresholds) {
  const auto detail = [](Stage& s, float gain, float gamma) {
    s.lightness.detailGain = gain;
    s.lightness.detailGamma = gamma;
  };
  const auto bare = [](Stage& s) -> SaturationTone& { return s.saturation = {}; };
  const std::tuple<const char*, std::function<void(Stage&, float)>, float, float> thresholds[] = {
      {"sharpenAmount", [](Stage& s, float v) { s.sharpenAmount = v; }, 1.0009f, 1.0011f},
      {"sharpenSigma", [](Stage& s, float v) { s.sharpenSigma = v; }, 0.5f, 0.501f},
      {"hueShift", [](Stage& s, float v) { s.hueShift = v; }, 0.9e-7f, 1.2e-7f},
      {"eqStrength", [](Stage& s, float v) { s.lightness.eqStrength = v; }, 0.01f, 0.0101f},
      {"eqSample", [](Stage& s, float v) { s.lightness.eqSample = int(v); }, 3, 4},
      {"gamma", [](Stage& s, float v) { s.lightness.gamma = v; }, 0.00009f, 0.00011f},
      {"split", [](Stage& s, float v) { s.lightness.detailRange = v; }, 0.0001f, 0.00011f},
      {"second split", [](Stage& s, float v) { s.lightness.detailRange = v; }, 0.0499f, 0.05f},
      {"gain", [&](Stage& s, float v) { detail(s, v, 1); }, 1.000009f, 1.000012f},
      {"detail gamma", [&](Stage& s, float v) { detail(s, 1, v); }, 1.00009f, 1.00011f},
      {"satEqStrength", [](Stage& s, float v) { s.saturation.eqStrength = v; }, 0.01f, 0.0101f},
      {"satEqSample", [](Stage& s, float v) { s.saturation.eqSample = int(v); }, 3, 4},
      {"contrast", [](Stage& s, float v) { s.saturation.contrast = v; }, 1.00009f, 1.00011f},
      {"gamma", [](Stage& s, float v) { s.saturation.gamma = v; }, 1.00009f, 1.00011f},
      {"curve", [&](Stage& s, float v) { bare(s).detailGain = v; }, 1.0f, 1.00002f},
      {"its slope", [&](Stage& s, float v) { bare(s).contrast = v; }, 1.000009f, 1.000012f},
      {"its gamma", [&](Stage& s, float v) { bare(s).gamma = v; }, 1.00009f, 1.00011f},
      {"of its detail", [](Stage& s, float v) { curve(s, 1, 1.2f, 0, 0.1f, v); }, 1.0009f, 1.0011f},
      {"of logarithms", [&](Stage& s, float v) { bare(s).mode = 2, s.saturation.brightness = v; },
       0.9e-5f, 1.1e-5f}};
  const Threads one(1);
  for (const auto& [name, set, out, in] : thresholds)
    for (const float value : {out, in}) {
      IMG3<float> actual(40, 30), expected(40, 30);
      fill(actual, 13);
      copyImage(actual, expected);
      Stage stage = fullSetting();
      set(stage, value);
      referenceStage(expected, stage);
      stage.apply(actual);
      EXPECT_TRUE(sameBits(expected, actual)) << name << " at " << value;
    }
}

TEST(ToneStage, toolsSplitAPlaneAsTheStageDoes) {
  const auto expectSplit = [](auto tone) {
    for (const float range : {0.05f, 0.0499f}) {
      Plane base(60, 41), detail(60, 41), plane(60, 41), rest(60, 41);
      fill(base, 17);
      fill(plane, 17);
      referenceSplit(base, detail, range, 9);
      tone.detailRange = range;
      tone.detailSample = 9;
      tone.splitBaseDetail(plane, rest);
      EXPECT_TRUE(sameBits(base, plane)) << range;
      EXPECT_TRUE(sameBits(detail, rest)) << range;
    }
  };
  expectSplit(LightnessTone());
  expectSplit(SaturationTone());
}

TEST(Unsharp, bandsGiveTheBitsOfWholePlanePasses) {
  for (const auto& [w, h, sigma] :
       {std::tuple{53, 41, 1.1f}, {1, 9, 1.1f}, {9, 1, 0.4001f}, {30, 20, 0.4f}}) {
    Plane expected(w, h), actual(w, h);
    fill(expected, 16);
    referenceUnsharp(expected, 1.7f, sigma);
    UnsharpMask mask;
    mask.amount = 1.7f;
    mask.sigma = sigma;
    for (const int rows : {0, 1, 2, 3, 4, 7, h}) {
      fill(actual, 16);
      EXPECT_EQ(mask.apply(actual, rows), 0);
      EXPECT_TRUE(sameBits(expected, actual)) << w << "x" << h << ", " << rows << " rows";
    }
  }
}

}  // namespace
