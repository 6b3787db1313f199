#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "prim/float_mode.h"
#include "prim/prims.h"
#include "tests/nonlocal/reference_non_local.h"
#include "tests/support/heap.h"
#include "vxenhlib/noise/noise_filter_record.h"
#include "vxicore26.h"

// Stands in front of the transform library's allocator for the whole program.
extern "C" void* fftwf_malloc(std::size_t size) {
  static const auto next =
      reinterpret_cast<void* (*)(std::size_t)>(dlsym(RTLD_NEXT, "fftwf_malloc"));
  return vx::test::Heap::admits() ? next(size) : nullptr;
}

namespace {

using namespace vx;
using namespace vx::test;

struct NoisyPlanes {
  Plane y, c1, c2;
  GIMG<float>* all[3] = {&y, &c1, &c2};

  NoisyPlanes(int w, int h, float contrast = 0.2f, float sigma = 0.03f)
      : y(w, h), c1(w, h), c2(w, h) {
    // Chroma is only kept at half size: hardly any edges there.
    fillUnits(y, 0, 0x1p-16f, contrast, sigma);
    fillUnits(c1, 1, 0x1p-16f, 0.05f * contrast, sigma);
    fillUnits(c2, 2, 0x1p-16f, 0.05f * contrast, sigma);
    paint(y, [&](int x, int i) { return at(y, x, i) + 0.4f; });
  }
  int denoise(NoiseFilterRecord& record) { return record.denoise(all, {.strength = 1.0f}); }
};

// Between one and two tiles the half-size pass works on planes smaller than its tile; odd sizes are
// padded between the passes.
TEST(NonLocalPasses, smallAndOddPicturesLoseTheirNoise) {
  const prim::FloatModeGuard floatMode;
  for (const auto& [w, h] : {std::pair(32, 32), {33, 57}, {63, 35}, {50, 50}, {64, 65}, {91, 33}})
    for (const bool twoStage : {true, false}) {
      NoisyPlanes planes(w, h), before(w, h);
      const NoisyPlanes clean(w, h, 0.2f, 0.0f);
      NoiseFilterRecord record;
      record.configure({0.6f, 0.03f, 0.0f, 0.6f, 0.03f, 0.0f}, twoStage, twoStage);
      ASSERT_EQ(planes.denoise(record), 0);
      const auto error = [&](const Plane& p, const Plane& q) {
        double sum = 0.0;
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) sum += std::pow(at(p, x, y) - at(q, x, y), 2.0);
        return sum;
      };
      for (int p = 0; p < 3; ++p)
        EXPECT_LT(error(*planes.all[p], *clean.all[p]), 0.6 * error(*before.all[p], *clean.all[p]))
            << w << "x" << h << ", " << twoStage << ", plane " << p;
    }
}

// Without noise all thresholds are 0: what is not 0 passes whole, and 0 / 0 goes to the floor.
TEST(NonLocalPasses, anAllZeroProfileKeepsTheLuma) {
  const prim::FloatModeGuard floatMode;
  for (const float contrast : {0.2f, 0.0f}) {
    NoisyPlanes planes(99, 97, contrast, contrast / 8.0f),
        before(99, 97, contrast, contrast / 8.0f);
    NoiseFilterRecord record;
    record.configure({}, true, true);
    ASSERT_EQ(planes.denoise(record), 0);
    EXPECT_LT(largestDifference(before.y, planes.y), 1e-5) << contrast;
    EXPECT_LT(largestDifference(before.c1, planes.c1), contrast + 1e-6);
  }
}

// Buffers of transforms count too. A pass without its memory ends the work, and nothing half done
// is seen: the chroma is as it was or final; the luma is as it was, final, or what the first two
// passes make of it.
TEST(NonLocalPasses, withoutMemoryWholePassesAreLeftOut) {
  const prim::FloatModeGuard floatMode;
  const Threads one(1);
  const NoisyPlanes before(49, 36);
  NoisyPlanes wanted(49, 36);
  const NoiseProfile profile = {0.6f, 0.03f, 0.0f, 0.6f, 0.03f, 0.0f};
  {
    NoiseFilterRecord record;
    record.configure(profile, true, true);
    ASSERT_EQ(wanted.denoise(record), 0);
  }
  std::unique_ptr<NoisyPlanes> firstStage;
  int untouched = 0, half = 0, refusals = 0;
  for (bool refused = true; refused; ++refusals) {
    auto planes = std::make_unique<NoisyPlanes>(49, 36);
    {
      const Heap heap(refusals);
      NoiseFilterRecord record;
      record.configure(profile, true, true);
      EXPECT_EQ(planes->denoise(record), 0);
      refused = Heap::refusedOne();
      record.nonLocal.reset();
      EXPECT_EQ(Heap::live(), 0) << refusals;
    }
    const bool chromaStays = sameBits(before.c1, planes->c1);
    EXPECT_TRUE(sameBits(chromaStays ? before.c1 : wanted.c1, planes->c1)) << refusals;
    EXPECT_TRUE(sameBits(chromaStays ? before.c2 : wanted.c2, planes->c2)) << refusals;
    if (sameBits(before.y, planes->y)) {
      ++(chromaStays ? untouched : half);
    } else if (sameBits(wanted.y, planes->y)) {
      EXPECT_FALSE(refused) << refusals;
    } else {
      EXPECT_FALSE(chromaStays) << refusals;
      if (firstStage == nullptr)
        firstStage = std::move(planes);
      else
        EXPECT_TRUE(sameBits(firstStage->y, planes->y)) << refusals;
    }
  }
  EXPECT_GT(untouched, 0);
  EXPECT_GT(half, 0);
  EXPECT_NE(firstStage, nullptr);
}

}  // namespace
