#include <dlfcn.h>
#include <fftw3.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

#include "prim/dispatch.h"
#include "prim/float_mode.h"
#include "tests/nonlocal/reference_non_local.h"
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

// A pass without its memory ends the work, and nothing half done is seen: the chroma is as it was
// or final; the luma is as it was, final, or what the first two passes make of it.
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

TEST(NonLocalBytes, DISABLED_print) {
  std::printf("digest %016llx\n", static_cast<unsigned long long>(digestOfPictures()));
}

// Costs are integers, sums have one order, and no transform is planned by timing.
TEST(NonLocalBytes, areTheSameForAllLevelsThreadsAndProcesses) {
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

  char self[4096] = {};
  ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
  const std::string command = std::string(self) +
                              " --gtest_also_run_disabled_tests"
                              " --gtest_filter=NonLocalBytes.DISABLED_print";
  FILE* const process = popen(command.c_str(), "r");
  ASSERT_NE(process, nullptr);
  unsigned long long digest = 0;
  for (char line[256]; fgets(line, sizeof line, process) != nullptr;)
    std::sscanf(line, "digest %llx", &digest);
  EXPECT_EQ(pclose(process), 0);
  EXPECT_EQ(digest, first);
}

}  // namespace
