// The non-local passes of NoiseFilterRecord::denoise, called one by one with the numbers that they
// are to have.

#include "prim/prims.h"
#include "tests/nonlocal/reference_non_local.h"
#include "tests/support/float_mode.h"
#include "vxenhlib/noise/gauss_pyramid.h"
#include "vxenhlib/noise/noise_filter_record.h"

namespace {

using namespace vx;
using namespace vx::test;

constexpr int kWidth = 67, kHeight = 54;
constexpr float kLumaNoise = 0.03f, kChromaNoise = 0.021f;
// None at the value that the pipeline gives.
constexpr float kFloor = 0.02f, kShare = 0.9f, kKnee = 2.5f, kDeviation = 1.3f, kGuide = 0.8f;

struct Picture : ThreePlanes {
  Plane &y = plane[0], &c1 = plane[1], &c2 = plane[2];

  Picture() : ThreePlanes(kWidth, kHeight) {
    for (unsigned p = 0; p < 3; ++p) fillUnits(plane[p], p, 0x1p-16f, 0.1f, 0.03f);
  }
  int denoise(NoiseFilterRecord& record, float strength) {
    return record.denoise(all, {.floorWeight = kFloor,
                                .strength = strength,
                                .detailShare = kShare,
                                .kneeRatio = kKnee,
                                .deviationGain = kDeviation,
                                .chromaGuideGain = kGuide});
  }
};

void resize(const Plane& from, Plane& to, double factor) {
  prim::primResize_32f_C1R(from.data, from.width, from.height, from.step, 0, 0, from.width,
                           from.height, to.data, to.step, to.width, to.height, factor, factor, 4);
}

void chain(Picture& p, CNLImDnCn& filter, bool twoStage, float strength) {
  const auto pass = [&](float factor, float noise, std::vector<Plane*> guides, Plane* source,
                        Plane* pilot, std::vector<Plane*> in, std::vector<Plane*> out) {
    filter.setFilterParams(kFloor, factor, kKnee, noise, 1.5f, 0.03f, kDeviation, 1);
    EXPECT_EQ(filter.filterPlanes(static_cast<int>(guides.size()), guides.data(), source, pilot,
                                  static_cast<int>(in.size()), in.data(), out.data()),
              kVxrcOk);
  };
  GaussPyramid pyramid;
  ASSERT_EQ(pyramid.build(p.y, 1, false), kVxrcOk);
  Plane &whole = *pyramid.level[0], &half = *pyramid.level[1];
  Plane noisy(kWidth, kHeight), luma(half.width, half.height), c1(half.width, half.height),
      c2(half.width, half.height), guide(half.width, half.height), out1(half.width, half.height),
      out2(half.width, half.height);
  copyImage(p.y, noisy);
  copyImage(half, luma);
  resize(p.c1, c1, 0.5);
  resize(p.c2, c2, 0.5);
  paint(guide, [&](int x, int y) { return (at(c1, x, y) + at(c2, x, y)) * (kGuide * 0.5f); });
  pass((twoStage ? 2.0f : 1.75f) * strength, kChromaNoise, {&luma, &guide}, &luma, nullptr,
       {&luma, &c1, &c2}, {&half, &out1, &out2});
  resize(out1, p.c1, 2.0);
  resize(out2, p.c2, 2.0);

  Plane detail(whole.width, whole.height), filtered(whole.width, whole.height),
      padded(whole.width, whole.height);
  ASSERT_EQ(pyramid.takeDetail(0, detail), kVxrcOk);
  copyPadded(p.y, padded);
  pass((twoStage ? 1.5f : 1.25f) * strength * kShare, kLumaNoise, {&padded}, &detail, nullptr,
       {&detail}, {&filtered});
  paint(p.y, [&](int x, int y) { return at(whole, x, y) + at(filtered, x, y); });
  if (!twoStage) return;
  Plane refined(kWidth, kHeight);
  pass(strength * kShare, kLumaNoise, {&p.y}, &noisy, &p.y, {&noisy}, {&refined});
  copyImage(refined, p.y);
}

TEST(NonLocalPasses, runWithTheseStrengthsAndImages) {
  for (const bool twoStage : {true, false}) {
    const Picture before;
    Picture picture, wanted;
    NoiseFilterRecord record;
    record.configure({0.6f, kLumaNoise, 0.0f, 0.6f, kChromaNoise, 0.0f}, twoStage, twoStage);
    // The limit itself does not run them, nor plan their transforms.
    ASSERT_EQ(picture.denoise(record, 0.009f), kVxrcOk);
    EXPECT_EQ(record.nonLocal, nullptr);
    for (int p = 0; p < 3; ++p) EXPECT_TRUE(sameBits(before.plane[p], picture.plane[p]));

    ASSERT_EQ(picture.denoise(record, 1.1f), kVxrcOk);
    EXPECT_EQ(record.nonLocal->stepX, 4);
    chain(wanted, *record.nonLocal, twoStage, 1.1f);
    for (int p = 0; p < 3; ++p)
      EXPECT_TRUE(sameBits(wanted.plane[p], picture.plane[p])) << twoStage << ", plane " << p;
  }
}

}  // namespace
