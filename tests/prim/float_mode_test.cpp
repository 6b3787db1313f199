#include "prim/float_mode.h"

#include <immintrin.h>

#include "tests/support/test.h"

namespace {

using namespace vx::prim;

constexpr unsigned kDefault = 0x1F80;  // what a process starts with
constexpr unsigned kNoUnderflowMask = kDefault & ~0x800u;

class FloatMode : public ::testing::Test {
 protected:
  void SetUp() override { _mm_setcsr(kDefault); }
  void TearDown() override { _mm_setcsr(kDefault); }
};

// At run time and where it stands: the optimiser knows nothing of the control register.
float quotient(float a, float b) {
  asm volatile("divss %1, %0" : "+x"(a) : "x"(b));
  return a;
}

TEST_F(FloatMode, flushToZeroKeepsTheOtherMasksAndRemembersTheOldOne) {
  int previous = -1;
  EXPECT_EQ(primSetFlushToZero(1, &previous), 0);
  EXPECT_EQ(previous, 0x800);
  EXPECT_EQ(_mm_getcsr(), kDefault | 0x8000);
  EXPECT_EQ(quotient(0x1p-126f, 2.0f), 0.0f);
  _mm_setcsr(_mm_getcsr() & ~0x3Fu);  // flags of the division
  EXPECT_EQ(primSetFlushToZero(0, &previous), 0);
  EXPECT_EQ(_mm_getcsr(), kDefault);
  EXPECT_EQ(quotient(0x1p-126f, 2.0f), 0x1p-127f);

  _mm_setcsr(kNoUnderflowMask);
  EXPECT_EQ(primSetFlushToZero(1, &previous), 0);
  EXPECT_EQ(previous, 0);
  EXPECT_EQ(_mm_getcsr(), kDefault | 0x8000) << "underflow masked";
  EXPECT_EQ(primSetFlushToZero(0, nullptr), 0);
  EXPECT_EQ(_mm_getcsr(), kDefault);
  EXPECT_EQ(primSetFlushToZero(0, &previous), 0);
  EXPECT_EQ(_mm_getcsr(), kNoUnderflowMask);
}

TEST_F(FloatMode, denormalsAreZeroOnlyWhileSwitchedOn) {
  EXPECT_EQ(primSetDenormalsAreZero(1), 0);
  EXPECT_EQ(_mm_getcsr(), kDefault | 0x40);
  EXPECT_NE(quotient(0x1p-127f, 0x1p-127f), 1.0f);
  EXPECT_EQ(primSetDenormalsAreZero(0), 0);
  _mm_setcsr(_mm_getcsr() & ~0x3Fu);  // flags of the division
  EXPECT_EQ(_mm_getcsr(), kDefault);
  EXPECT_EQ(quotient(0x1p-127f, 0x1p-127f), 1.0f);
}

TEST_F(FloatMode, theGuardSetsOneStateAndGivesTheOwnOneBack) {
  const unsigned host = 0x1F80 | 0x6000;  // rounds toward zero
  _mm_setcsr(host);
  {
    const FloatModeGuard guard;
    EXPECT_EQ(_mm_getcsr(), 0x9FC0u);
    quotient(1.0f, 0.0f);  // raises a flag that must not reach the host
    {
      const HostFloatMode callback(guard);
      EXPECT_EQ(_mm_getcsr(), host);
    }
    {
      const FloatModeGuard inner;
      EXPECT_EQ(_mm_getcsr(), 0x9FC0u);
    }
    EXPECT_EQ(_mm_getcsr() & 0xFFC0u, 0x9FC0u);
  }
  EXPECT_EQ(_mm_getcsr(), host);
}

}  // namespace
