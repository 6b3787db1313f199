#include "prim/cpu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "prim/common/cpu_model.h"
#include "prim/dispatch.h"
#include "prim/memory.h"

namespace {

using namespace vx::prim;

enum Feature { kSse, kSse2, kSse3, kSsse3, kSse41, kSse42, kLong, kIa64, kThreads };

// A made-up processor; models above 15 need an extended model field.
CpuRecord processor(std::uint32_t family, std::uint32_t model,
                    std::initializer_list<Feature> features, std::uint32_t cores = 1) {
  CpuRecord cpu;
  cpu.hasCpuid = true;
  cpu.leaf0 = {.eax = 10, .ebx = 0x756E6547, .ecx = 0x6C65746E, .edx = 0x49656E69};
  cpu.leaf1.eax = (model & 15) << 4 | model >> 4 << 16;
  cpu.leaf1.eax |= family > 15 ? 15u << 8 | (family - 15) << 20 : family << 8;
  cpu.leaf4.eax = (cores - 1) << 26;
  cpu.extended0.eax = 0x80000008;
  for (const Feature f : features) switch (f) {
      case kSse:
        cpu.leaf1.edx |= 1u << 25;
        break;
      case kSse2:
        cpu.leaf1.edx |= 1u << 26;
        break;
      case kSse3:
        cpu.leaf1.ecx |= 1u << 0;
        break;
      case kSsse3:
        cpu.leaf1.ecx |= 1u << 9;
        break;
      case kSse41:
        cpu.leaf1.ecx |= 1u << 19;
        break;
      case kSse42:
        cpu.leaf1.ecx |= 1u << 20;
        break;
      case kLong:
        cpu.extended1.edx |= 1u << 29;
        break;
      case kIa64:
        cpu.leaf1.edx |= 1u << 30;
        break;
      case kThreads:
        cpu.leaf1.edx |= 1u << 28;
        cpu.leaf1.ebx |= 2u << 16;
        break;
    }
  return cpu;
}

CpuRecord ofOtherVendor(CpuRecord cpu) {
  cpu.leaf0.ebx ^= 1;
  return cpu;
}

TEST(CpuModel, knowsEveryRowOfTheModelTable) {
  struct Row {
    std::uint32_t family, model;
    std::initializer_list<Feature> features;
    std::uint32_t cores;
    int code;
  };
  const Row rows[] = {
      {5, 1, {}, 1, 1},
      {5, 2, {}, 1, 1},
      {5, 4, {}, 1, 2},
      {6, 1, {}, 1, 3},
      {6, 3, {}, 1, 4},
      {6, 5, {}, 1, 4},
      {6, 6, {}, 1, 4},
      {6, 7, {kSse}, 1, 5},
      {6, 8, {kSse}, 1, 5},
      {6, 10, {kSse}, 1, 5},
      {6, 11, {kSse}, 1, 5},
      {6, 9, {kSse, kSse2}, 1, 9},
      {6, 13, {kSse, kSse2}, 1, 9},
      {6, 14, {kSse3}, 1, 10},
      {6, 14, {kSse3}, 2, 11},
      {6, 15, {kSsse3}, 1, 33},
      {6, 15, {kSsse3}, 2, 33},
      {6, 15, {kSsse3}, 3, 34},
      {6, 23, {kSse41}, 1, 68},
      {6, 26, {kSse42}, 1, 35},
      {6, 28, {kSsse3}, 1, 36},
      {15, 2, {kSse2}, 1, 6},
      {15, 2, {kSse2, kThreads}, 1, 7},
      {15, 3, {kSse3, kThreads}, 1, 8},
      {15, 4, {kSse3, kLong}, 1, 32},
      {7, 0, {kIa64}, 1, 16},
      {31, 0, {kIa64}, 1, 17},
  };
  for (const Row& r : rows)
    EXPECT_EQ(cpuCode(processor(r.family, r.model, r.features, r.cores)), r.code)
        << "family " << r.family << ", model " << r.model;
}

TEST(CpuModel, aMaskedFeatureOrAnUnknownModelFallsBackToTheFeatures) {
  EXPECT_EQ(cpuCode(processor(6, 15, {kSse, kSse2, kSse3}, 4)), 66);
  EXPECT_EQ(cpuCode(processor(6, 23, {kSse3, kSsse3})), 67);
  EXPECT_EQ(cpuCode(processor(6, 26, {kSsse3, kSse41})), 68);
  EXPECT_EQ(cpuCode(processor(6, 28, {kSse2, kSse3})), 66);
  EXPECT_EQ(cpuCode(processor(5, 3, {kSse})), 64);
  EXPECT_EQ(cpuCode(processor(6, 85, {kSse41, kSse42})), 69);
  EXPECT_EQ(cpuCode(processor(6, 31, {kSse42})), 69) << "the extended model counts";
  EXPECT_EQ(cpuCode(processor(16, 2, {kSse2})), 65) << "the extended family counts";
  EXPECT_EQ(cpuCode(processor(4, 0, {})), 0);
}

TEST(CpuModel, theBestFeatureDecidesTheLadder) {
  const Feature ladder[] = {kSse42, kSse41, kSsse3, kSse3, kSse2, kSse};
  CpuRecord cpu =
      ofOtherVendor(processor(6, 15, {kLong, kSse, kSse2, kSse3, kSsse3, kSse41, kSse42}));
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(cpuCode(cpu), 69 - i);
    const CpuRecord only = processor(6, 15, {ladder[i]});
    cpu.leaf1.ecx &= ~only.leaf1.ecx;
    cpu.leaf1.edx &= ~only.leaf1.edx;
  }
  EXPECT_EQ(cpuCode(cpu), 96);
  cpu.extended0.eax = 0x80000000;  // no further leaf
  EXPECT_EQ(cpuCode(cpu), 0);
  CpuRecord none = processor(6, 26, {kSse42});
  none.hasCpuid = false;
  EXPECT_EQ(cpuCode(none), 0);
}

TEST(CpuModel, coresAndThreadsNeedTheirLeaves) {
  CpuRecord cpu = processor(6, 14, {kSse3}, 2);
  cpu.leaf0.eax = 3;  // leaf 4 does not exist
  EXPECT_EQ(cpuCode(cpu), 10);
  cpu = processor(15, 2, {kSse2, kThreads});
  cpu.leaf1.ebx = 1u << 16;  // one logical processor
  EXPECT_EQ(cpuCode(cpu), 6);
}

TEST(CpuModel, mapsCodesToIndices) {
  const std::vector<int> codes[] = {{-1, 0, 1, 2, 3, 4, 96}, {5, 16, 17, 64},  {6, 7, 9, 65},
                                    {8, 10, 11, 32, 66},     {33, 34, 36, 67}, {35, 37, 68, 69}};
  for (int code = -3; code < 300; ++code) {
    int expected = -1;
    for (int index = 0; index < 6; ++index)
      if (std::find(codes[index].begin(), codes[index].end(), code) != codes[index].end())
        expected = index;
    EXPECT_EQ(cpuIndexOfCode(code), expected) << code;
  }
}

TEST(CpuModel, wideBodiesNeedTheProcessorAndTheOperatingSystem) {
  CpuRecord cpu = processor(6, 85, {kSse2, kSse3});
  EXPECT_EQ(lastRunnableColumn(cpu), 3);
  cpu.leaf1.ecx |= 1u << 9;
  EXPECT_EQ(lastRunnableColumn(cpu), 4);
  cpu.leaf1.ecx |= 1u << 19;
  EXPECT_EQ(lastRunnableColumn(cpu), 5);
  cpu.leaf1.ecx |= 1u << 20 | 1u << 23 | 1u << 27 | 1u << 28;
  cpu.leaf7.ebx = 1u << 5;
  EXPECT_EQ(lastRunnableColumn(cpu), 5) << "registers not saved";
  cpu.xcr0 = 7;
  EXPECT_EQ(lastRunnableColumn(cpu), 6);
  cpu.leaf7.ebx |= 1u << 16 | 1u << 17 | 1u << 30 | 1u << 31;
  EXPECT_EQ(lastRunnableColumn(cpu), 6) << "wide registers not saved";
  cpu.xcr0 = 0xE7;
  EXPECT_EQ(lastRunnableColumn(cpu), 7);
  for (int needed : {16, 17, 30, 31}) {
    CpuRecord lacking = cpu;
    lacking.leaf7.ebx &= ~(1u << needed);
    EXPECT_EQ(lastRunnableColumn(lacking), 6) << needed;
  }
  for (int needed : {20, 23, 27, 28}) {
    CpuRecord lacking = cpu;
    lacking.leaf1.ecx &= ~(1u << needed);
    EXPECT_EQ(lastRunnableColumn(lacking), 5) << needed;
  }
  cpu.leaf1.ecx &= ~(1u << 9);
  EXPECT_EQ(lastRunnableColumn(cpu), 3);
}

TEST(CpuModel, findsTheLargestCacheOfTheDescriptors) {
  CpuRecord cpu = processor(6, 15, {});
  const auto expectCache = [&](int status, int size) {
    int found = -1;
    EXPECT_EQ(largestCache(cpu, &found), status);
    EXPECT_EQ(found, size);
  };
  cpu.leaf2 = {.eax = 0x01, .ebx = 0, .ecx = 0, .edx = 0};
  expectCache(37, 0);
  cpu.leaf2.edx = 0x2C << 8 | 0x41 << 16;  // 32 KB data cache, 128 KB second level
  expectCache(0, 131072);
  cpu.leaf2.eax |= 0x3B << 24;
  expectCache(0, 131072);
  cpu.leaf2.ecx = 0x3D;
  expectCache(0, 393216);
  cpu.leaf2.ebx = 0x80000000 | 0x4D;  // says that it holds nothing
  expectCache(0, 393216);
  cpu.leaf2.ecx |= 0x4B << 8;
  expectCache(0, 8388608);
  cpu.leaf2.edx |= 0x4C;
  expectCache(0, 12582912);
  cpu.leaf2.ebx = 0x4D;
  expectCache(0, 16777216);
  cpu.leaf2.eax = 0x4D;  // a count, no descriptor
  expectCache(36, 0);
  cpu.leaf2.eax = 1;
  cpu.leaf0.eax = 1;
  expectCache(36, 0);
  cpu = ofOtherVendor(cpu);
  cpu.leaf0.eax = 2;
  expectCache(36, 0);
}

// The choice is process-wide: put back what the load left.
class Cpu : public ::testing::Test {
 protected:
  void SetUp() override { status_ = primInitCpu(); }
  void TearDown() override { primInitCpu(); }
  int status_ = 0;
};

TEST_F(Cpu, theLoadChoosesTheWidestBodyThatRuns) {
  const CpuRecord cpu = readCpuRecord();
  EXPECT_EQ(status_, isKnownVendor(cpu) ? 0 : 20);
  EXPECT_EQ(primCpuIndex, cpuIndexOfCode(primGetCpuCode()));
  if (primCpuIndex == 5) {
    EXPECT_EQ(primCpuColumn, lastRunnableColumn());
  }
  EXPECT_EQ(lastRunnableColumn() >= 6, __builtin_cpu_supports("avx2") != 0);
  float v = 0;
  EXPECT_EQ(primSet_32f_C1R(3.0f, &v, 4, 1, 1), 0);
  EXPECT_EQ(v, 3.0f);
}

TEST_F(Cpu, codesChooseTheVariantButNeverABodyThatCannotRun) {
  for (int code : {0, 3, 5, 9, 66, 33, 69, -1, 96, 37}) {
    EXPECT_EQ(primSetCpuByCode(code), 0);
    EXPECT_EQ(primCpuIndex, cpuIndexOfCode(code));
    if (primCpuIndex < 5) {
      EXPECT_EQ(primCpuColumn, std::min(primCpuIndex, lastRunnableColumn()));
    }
    EXPECT_LE(primCpuColumn, lastRunnableColumn());
  }
  for (int unknown : {22, -2, 12, 97, 70}) {
    const int index = primCpuIndex;
    const int column = primCpuColumn;
    EXPECT_EQ(primSetCpuByCode(unknown), 21);
    EXPECT_EQ(primCpuIndex, index);
    EXPECT_EQ(primCpuColumn, column);
  }
}

TEST_F(Cpu, theWideLevelLimitsTheBodiesOfIndex5) {
  const int widest = std::max(0, lastRunnableColumn() - 5);
  ASSERT_EQ(primSetCpuByCode(69), 0);
  for (int level : {0, 1, 2}) {
    EXPECT_EQ(primSetWideLevel(level), std::min(level, widest));
    EXPECT_EQ(primCpuColumn, std::min(5 + level, lastRunnableColumn()));
    EXPECT_EQ(primCpuIndex, 5);
    EXPECT_EQ(primSetWideLevel(-1), std::min(level, widest));
    EXPECT_EQ(primSetWideLevel(3), std::min(level, widest));
  }
  // Kept for later, but without effect on the other indices.
  ASSERT_EQ(primSetCpuByCode(65), 0);
  EXPECT_EQ(primCpuColumn, 2);
  EXPECT_EQ(primSetWideLevel(0), 0);
  EXPECT_EQ(primCpuColumn, 2);
  ASSERT_EQ(primSetCpuByCode(68), 0);
  EXPECT_EQ(primCpuColumn, std::min(5, lastRunnableColumn()));
}

TEST_F(Cpu, theCacheSizeStaysWhatItWas) {
  EXPECT_EQ(primGetCacheSize(nullptr), -8);
  int expected = -1;
  const int status = largestCache(readCpuRecord(), &expected);
  for (int call = 0; call < 2; ++call) {
    int size = -1;
    EXPECT_EQ(primGetCacheSize(&size), status);
    EXPECT_EQ(size, expected);
  }
}

}  // namespace
