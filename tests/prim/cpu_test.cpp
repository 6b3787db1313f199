#include "prim/cpu.h"

#include "prim/common/cpu_model.h"
#include "prim/dispatch.h"
#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

// Feature bits: EDX of leaf 1 below, ECX above, and two that stand elsewhere.
using Features = std::uint64_t;
constexpr Features kSse = 1u << 25, kSse2 = 1u << 26, kThreads = 1u << 28, kIa64 = 1u << 30;
constexpr Features kSse3 = Features{1} << 32, kSsse3 = kSse3 << 9, kSse41 = kSse3 << 19;
constexpr Features kSse42 = kSse3 << 20, kLong = kSse3 << 31;

// A made-up processor; models above 15 need an extended model field.
CpuRecord processor(std::uint32_t family, std::uint32_t model, Features features,
                    std::uint32_t cores = 1) {
  CpuRecord cpu;
  cpu.hasCpuid = true;
  cpu.leaf0 = {.eax = 10, .ebx = 0x756E6547, .ecx = 0x6C65746E, .edx = 0x49656E69};
  cpu.leaf1.eax = (model & 15) << 4 | model >> 4 << 16;
  cpu.leaf1.eax |= family > 15 ? 15u << 8 | (family - 15) << 20 : family << 8;
  cpu.leaf1.edx = static_cast<std::uint32_t>(features);
  cpu.leaf1.ecx = static_cast<std::uint32_t>((features & ~kLong) >> 32);
  if ((features & kThreads) != 0) cpu.leaf1.ebx = 2u << 16;
  if ((features & kLong) != 0) cpu.extended1.edx = 1u << 29;
  cpu.leaf4.eax = (cores - 1) << 26;
  cpu.extended0.eax = 0x80000008;
  return cpu;
}

// The last rows: a masked feature or an unknown model; the extended model and family count.
TEST(CpuModel, knowsTheModelTableAndFallsBackToTheFeatures) {
  constexpr Features kTwo = kSse2 | kThreads, kThree = kSse3 | kThreads, kWide = kSse3 | kLong;
  using U32 = std::uint32_t;
  using Row = std::tuple<U32, U32, int, Features, U32>;
  const Row kRows[] = {{5, 1, 1, 0, 1},        {5, 2, 1, 0, 1},        {5, 4, 2, 0, 1},
                       {6, 1, 3, 0, 1},        {6, 3, 4, 0, 1},        {6, 5, 4, 0, 1},
                       {6, 6, 4, 0, 1},        {4, 0, 0, 0, 1},        {6, 7, 5, kSse, 1},
                       {6, 8, 5, kSse, 1},     {6, 10, 5, kSse, 1},    {6, 11, 5, kSse, 1},
                       {6, 9, 9, kSse2, 1},    {6, 13, 9, kSse2, 1},   {6, 14, 10, kSse3, 1},
                       {6, 14, 11, kSse3, 2},  {6, 15, 33, kSsse3, 1}, {6, 15, 33, kSsse3, 2},
                       {6, 15, 34, kSsse3, 3}, {6, 23, 68, kSse41, 1}, {6, 26, 35, kSse42, 1},
                       {6, 28, 36, kSsse3, 1}, {15, 2, 6, kSse2, 1},   {15, 2, 7, kTwo, 1},
                       {15, 3, 8, kThree, 1},  {15, 4, 32, kWide, 1},  {7, 0, 16, kIa64, 1},
                       {31, 0, 17, kIa64, 1},  {6, 15, 66, kSse3, 4},  {6, 23, 67, kSsse3, 1},
                       {6, 26, 68, kSse41, 1}, {6, 28, 66, kSse3, 1},  {5, 3, 64, kSse, 1},
                       {6, 85, 69, kSse42, 1}, {6, 31, 69, kSse42, 1}, {16, 2, 65, kSse2, 1},
                       {16, 2, 96, kLong, 1}};
  for (const auto& [family, model, code, features, cores] : kRows) {
    CpuRecord cpu = processor(family, model, features, cores);
    EXPECT_EQ(cpuCode(cpu), code) << "family " << family << ", model " << model;
    cpu.hasCpuid = false;
    EXPECT_EQ(cpuCode(cpu), 0);
  }
}

TEST(CpuModel, anotherVendorGoesByTheBestFeature) {
  const std::pair<Features, int> kRows[] = {{0, 96},      {kSse, 64},   {kSse2, 65}, {kSse3, 66},
                                            {kSsse3, 67}, {kSse41, 68}, {kSse42, 69}};
  Features all = kLong;
  for (const auto& [added, code] : kRows) {
    all |= added;
    CpuRecord cpu = processor(6, 15, all);
    cpu.leaf0.ebx ^= 1;
    EXPECT_EQ(cpuCode(cpu), code);
    cpu.extended0.eax = 0x80000000;  // no further leaf, so nothing tells of long mode
    EXPECT_EQ(cpuCode(cpu), added == 0 ? 0 : code);
  }
}

TEST(CpuModel, coresAndThreadsNeedTheirLeaves) {
  CpuRecord twoCores = processor(6, 14, kSse3, 2), oneThread = processor(15, 2, kSse2 | kThreads);
  twoCores.leaf0.eax = 3;  // leaf 4 does not exist
  oneThread.leaf1.ebx = 1u << 16;
  EXPECT_EQ(cpuCode(twoCores), 10);
  EXPECT_EQ(cpuCode(oneThread), 6);
}

TEST(CpuModel, mapsCodesToIndices) {
  const std::vector<int> codes[] = {{-1, 0, 1, 2, 3, 4, 96}, {5, 16, 17, 64},  {6, 7, 9, 65},
                                    {8, 10, 11, 32, 66},     {33, 34, 36, 67}, {35, 37, 68, 69}};
  int mapped = 0;
  for (int index = 0; index < 6; ++index)
    for (int code : codes[index]) EXPECT_EQ(cpuIndexOfCode(code), index) << code;
  for (int code = -3; code < 300; ++code) mapped += cpuIndexOfCode(code) >= 0;
  EXPECT_EQ(mapped, 28);
}

TEST(CpuModel, wideBodiesNeedTheProcessorAndTheOperatingSystem) {
  CpuRecord cpu = processor(6, 85, kSse2 | kSse3 | kSsse3 | kSse41 | kSse42);
  cpu.leaf1.ecx |= 1u << 23 | 1u << 27 | 1u << 28;
  cpu.leaf7.ebx = 1u << 5 | 1u << 16 | 1u << 17 | 1u << 30 | 1u << 31;
  cpu.xcr0 = 0xE7;
  EXPECT_EQ(lastRunnableColumn(cpu), 7);
  // taken out of leaf 1 and leaf 7 and of what the operating system saves; the last column left
  static constexpr unsigned kLacking[][4] = {
      {1u << 9, 0, 0, 3},  {1u << 19, 0, 0, 4}, {1u << 20, 0, 0, 5}, {1u << 23, 0, 0, 5},
      {1u << 27, 0, 0, 5}, {1u << 28, 0, 0, 5}, {0, 1u << 5, 0, 5},  {0, 0, 0xE7, 5},
      {0, 0, 0xE0, 6},     {0, 0, 0x80, 6},     {0, 1u << 16, 0, 6}, {0, 1u << 17, 0, 6},
      {0, 1u << 30, 0, 6}, {0, 1u << 31, 0, 6}};
  for (const auto& [leaf1, leaf7, xcr0, column] : kLacking) {
    CpuRecord lacking = cpu;
    lacking.leaf1.ecx &= ~leaf1;
    lacking.leaf7.ebx &= ~leaf7;
    lacking.xcr0 &= ~xcr0;
    EXPECT_EQ(lastRunnableColumn(lacking), static_cast<int>(column));
  }
}

// Descriptors of the second and third levels, and the kilobytes that the vendor documents.
constexpr std::pair<int, int> kCaches[] = {
    {0x4D, 16384}, {0x4C, 12288}, {0x47, 8192}, {0x4B, 8192}, {0x4A, 6144}, {0x4E, 6144},
    {0x29, 4096},  {0x46, 4096},  {0x49, 4096}, {0x48, 3072}, {0x25, 2048}, {0x45, 2048},
    {0x7D, 2048},  {0x85, 2048},  {0x23, 1024}, {0x44, 1024}, {0x78, 1024}, {0x7C, 1024},
    {0x84, 1024},  {0x87, 1024},  {0x22, 512},  {0x3E, 512},  {0x43, 512},  {0x7B, 512},
    {0x7F, 512},   {0x80, 512},   {0x83, 512},  {0x86, 512},  {0x3D, 384},  {0x21, 256},
    {0x3C, 256},   {0x42, 256},   {0x7A, 256},  {0x82, 256},  {0x3A, 192},  {0x39, 128},
    {0x3B, 128},   {0x41, 128},   {0x79, 128}};

// In every byte that may hold one, alone and beside every other.
TEST(CpuModel, findsTheLargestCacheOfTheDescriptors) {
  int kilobytes[256] = {};
  for (const auto& [descriptor, size] : kCaches) kilobytes[descriptor] = size;
  CpuRecord cpu = processor(6, 15, 0);
  const auto expectCache = [&](int status, int size) {
    int found = -1;
    ASSERT_EQ(largestCache(cpu, &found), status);
    ASSERT_EQ(found, size * 1024);
  };
  std::uint32_t* const registers[] = {&cpu.leaf2.eax, &cpu.leaf2.ebx, &cpu.leaf2.ecx,
                                      &cpu.leaf2.edx};
  for (std::uint32_t d = 0; d < 256; ++d) {
    for (std::uint32_t place = 1; place < 16; ++place) {
      cpu.leaf2 = {.eax = 1};
      *registers[place / 4] |= d << place % 4 * 8;
      // With its highest bit set a register holds no descriptors.
      const int size = place % 4 == 3 && d > 127 ? 0 : kilobytes[d];
      expectCache(size != 0 ? 0 : 37, size);
    }
    for (std::uint32_t other = 0; other < 256; ++other) {
      cpu.leaf2 = {.eax = 1, .ebx = d, .ecx = other};
      const int size = std::max(kilobytes[d], kilobytes[other]);
      expectCache(size != 0 ? 0 : 37, size);
    }
  }
  cpu.leaf2 = {.eax = 0x4D};  // a count, and another one than 1
  expectCache(36, 0);
  cpu.leaf2 = {.eax = 0x4D01};
  cpu.leaf0.eax = 1;  // leaf 2 does not exist
  expectCache(36, 0);
  cpu.leaf0.eax = 2;
  expectCache(0, 16384);
  cpu.leaf0.ebx ^= 1;  // another vendor
  expectCache(36, 0);
}

// The choice is process-wide: put back what was there.
class Cpu : public ::testing::Test {
 protected:
  void SetUp() override { status_ = primInitCpu(); }
  void TearDown() override {
    primInitCpu();
    primCpuColumn = column_;
  }
  const int column_ = primCpuColumn;
  int status_ = 0;
};

TEST_F(Cpu, theLoadAndCodesChooseABodyThatRuns) {
  EXPECT_EQ(status_, isKnownVendor(readCpuRecord()) ? 0 : 20);
  EXPECT_EQ(lastRunnableColumn() >= 6, __builtin_cpu_supports("avx2") != 0);
  EXPECT_EQ(primCpuIndex, cpuIndexOfCode(primGetCpuCode()));
  for (int code : {primGetCpuCode(), 0, 3, 5, 9, 66, 33, 69, -1, 96, 37}) {
    EXPECT_EQ(primSetCpuByCode(code), 0);
    EXPECT_EQ(primCpuIndex, cpuIndexOfCode(code));
    EXPECT_EQ(primCpuColumn, primCpuIndex < 5 ? std::min(primCpuIndex, lastRunnableColumn())
                                              : lastRunnableColumn());
    const int index = primCpuIndex, column = primCpuColumn;
    for (int unknown : {22, -2, 12, 97, 70}) EXPECT_EQ(primSetCpuByCode(unknown), 21);
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
    for (int unknown : {-1, 3}) EXPECT_EQ(primSetWideLevel(unknown), std::min(level, widest));
  }
  // Kept for later, but without effect on the other indices.
  ASSERT_EQ(primSetCpuByCode(65), 0);
  EXPECT_EQ(primSetWideLevel(0), 0);
  EXPECT_EQ(primCpuColumn, 2);
  ASSERT_EQ(primSetCpuByCode(68), 0);
  EXPECT_EQ(primCpuColumn, std::min(5, lastRunnableColumn()));
}

TEST_F(Cpu, theCacheSizeStaysWhatItWas) {
  EXPECT_EQ(primGetCacheSize(nullptr), -8);
  int expected = -1;
  const int status = largestCache(readCpuRecord(), &expected);
  for (int found = -1, call = 0; call < 2; ++call, found = -1) {
    EXPECT_EQ(primGetCacheSize(&found), status);
    EXPECT_EQ(found, expected);
  }
}

}  // namespace
