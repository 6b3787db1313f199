#include <dlfcn.h>
#include <fftw3.h>

#include <cstdio>
#include <set>

#include "prim/dispatch.h"
#include "tests/nonlocal/reference_non_local.h"
#include "tests/support/float_mode.h"
#include "tests/support/heap.h"
#include "tests/support/variants.h"
#include "vxenhlib/noise/noise_filter_record.h"
#include "vxicore26.h"

namespace {
int plansMade = 0;
}

// Stands in front of the transform library's planner for the whole program.
extern "C" fftwf_plan fftwf_plan_dft_2d(int rows, int columns, fftwf_complex* in,
                                        fftwf_complex* out, int sign, unsigned flags) {
  ++plansMade;
  static const auto next =
      reinterpret_cast<decltype(&fftwf_plan_dft_2d)>(dlsym(RTLD_NEXT, "fftwf_plan_dft_2d"));
  return next(rows, columns, in, out, sign, flags);
}

namespace {

using namespace vx;
using namespace vx::test;

struct NoisyPlanes : ThreePlanes {
  NoisyPlanes(int w, int h, float contrast = 0.2f, float sigma = 0.03f) : ThreePlanes(w, h) {
    // Chroma is only kept at half size: hardly any edges there.
    for (unsigned p = 0; p < 3; ++p)
      fillUnits(plane[p], p, 0x1p-16f, (p == 0 ? 1.0f : 0.05f) * contrast, sigma);
    paint(plane[0], [&](int x, int y) { return at(plane[0], x, y) + 0.4f; });
  }
  void denoise(const NoiseProfile& profile, bool twoStage = true) {
    NoiseFilterRecord record;
    record.configure(profile, twoStage, twoStage);
    EXPECT_EQ(record.denoise(all, {.strength = 1.0f}), 0);
    record.nonLocal.reset();
  }
};

constexpr NoiseProfile kProfile = {0.6f, 0.03f, 0.0f, 0.6f, 0.03f, 0.0f};

// Between one and two tiles the half-size pass works on planes smaller than its tile; odd sizes are
// padded between the passes.
TEST(NonLocalPasses, smallAndOddPicturesLoseTheirNoise) {
  for (const auto& [w, h] : {std::pair(32, 32), {33, 57}, {63, 35}, {50, 50}, {64, 65}, {91, 33}})
    for (const bool twoStage : {true, false}) {
      NoisyPlanes planes(w, h), before(w, h);
      const NoisyPlanes clean(w, h, 0.2f, 0.0f);
      planes.denoise(kProfile, twoStage);
      for (int p = 0; p < 3; ++p) {
        double error = 0.0, noise = 0.0;
        overPixels(clean.plane[p], [&](int x, int y) {
          const float wanted = at(clean.plane[p], x, y);
          error += std::pow(at(planes.plane[p], x, y) - wanted, 2.0);
          noise += std::pow(at(before.plane[p], x, y) - wanted, 2.0);
        });
        EXPECT_LT(error, 0.6 * noise) << w << "x" << h << ", " << twoStage << ", plane " << p;
      }
    }
}

// Without noise all thresholds are 0: what is not 0 passes whole, and 0 / 0 goes to the floor.
TEST(NonLocalPasses, anAllZeroProfileKeepsTheLuma) {
  for (const float contrast : {0.2f, 0.0f}) {
    NoisyPlanes planes(99, 97, contrast, contrast / 8.0f),
        before(99, 97, contrast, contrast / 8.0f);
    planes.denoise({});
    EXPECT_LT(largestDifference(before.plane[0], planes.plane[0]), 1e-5) << contrast;
    EXPECT_LT(largestDifference(before.plane[1], planes.plane[1]), contrast + 1e-6);
  }
}

// A pass without its memory ends the work, and nothing half done is seen: the picture as it was,
// with the chroma of the first pass, with the luma of the second too, or whole.
TEST(NonLocalPasses, withoutMemoryWholePassesAreLeftOut) {
  const Threads one(1);
  using Samples = std::vector<float>;
  const auto samplesOf = [](const NoisyPlanes& planes, int first, int count) {
    Samples all;
    for (int p = first; p < first + count; ++p)
      overPixels(planes.plane[p], [&](int x, int y) { all.push_back(at(planes.plane[p], x, y)); });
    return all;
  };
  std::set<Samples> lumas, chromas, outcomes = {samplesOf(NoisyPlanes(49, 36), 0, 3)};
  int refusals = 0;
  for (bool refused = true; refused; ++refusals) {
    NoisyPlanes planes(49, 36);
    {
      const Heap heap(refusals);
      planes.denoise(kProfile);
      refused = Heap::refusedOne();
      EXPECT_EQ(Heap::live(), 0) << refusals;
    }
    lumas.insert(samplesOf(planes, 0, 1));
    chromas.insert(samplesOf(planes, 1, 2));
    outcomes.insert(samplesOf(planes, 0, 3));
  }
  EXPECT_EQ(lumas.size(), 3u);
  EXPECT_EQ(chromas.size(), 2u);
  EXPECT_EQ(outcomes.size(), 4u);
}

// The exported function in the non-local mode, with noise for each size of block.
std::uint64_t digestOfPictures() {
  std::uint64_t hash = 14695981039346656037u;  // FNV-1a
  for (const float sigma : {0.04f, 0.14f, 0.2f}) {
    constexpr int kWidth = 130, kHeight = 114;
    std::mt19937 random(3);
    std::vector<std::uint8_t> rgb(std::size_t{3} * kWidth * kHeight);
    for (std::size_t i = 0; i < rgb.size(); ++i) {
      const std::size_t x = i / 3 % kWidth, y = i / 3 / kWidth;
      const float noise = sigma * (static_cast<float>(random() % 2001) / 1000.0f - 1.0f);
      const float patch = static_cast<float>((x / 17 ^ y / 13) % 4) * 0.2f + 0.2f;
      rgb[i] = static_cast<std::uint8_t>(255.0f * std::clamp(patch + noise, 0.0f, 1.0f));
    }
    const NoiseProfile profile = {0.6f, sigma, 0.0f, 0.6f, 0.5f * sigma, 0.0f};
    EXPECT_EQ(vxAdjustRgb(rgb.data(), 1, 3 * kWidth, kWidth, kHeight, 1, nullptr, nullptr, nullptr,
                          nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0, 0.6f, &profile,
                          0, 0, 1),
              1);
    for (const std::uint8_t byte : rgb) hash = (hash ^ byte) * 1099511628211u;
  }
  return hash;
}

// Costs are integers, sums have one order, and no transform is planned by timing.
TEST(NonLocalBytes, areTheSameForAllLevelsAndThreads) {
  const bool dotProducts = prim::primDotProducts;
  const std::uint64_t first = digestOfPictures();
  const auto check = [&](int threads) {
    const Threads team(threads);
    EXPECT_EQ(digestOfPictures(), first) << threads << " threads";
  };
  onEveryVariant([&] { check(1); });
  for (const int threads : {2, 7}) check(threads);
  prim::primDotProducts = false;
  check(1);
  prim::primDotProducts = dotProducts;
  EXPECT_EQ(plansMade, 0);
}

// The child starts from the program's beginning, with other addresses.
TEST(NonLocalBytes, areTheSameInAnotherProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::fprintf(stderr, "%llu", static_cast<unsigned long long>(digestOfPictures()));
              std::_Exit(0), testing::ExitedWithCode(0), std::to_string(digestOfPictures()));
}

}  // namespace
