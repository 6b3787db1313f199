#include <gtest/gtest.h>

#include "adjust/adjust_driver.h"
#include "tests/adjust/host.h"
#include "tests/support/heap.h"

namespace {

using vx::AdjustSettings;
using namespace vx::test;

constexpr AdjustSettings kBrighter = {.lumaGamma = 1.0f};

// Each pattern of planes that the host fails to give. A width whose packed and padded steps differ:
// the planes then have different steps.
TEST(AdjustMemory, planesThatTheHostCannotGiveComeFromTheLibrary) {
  Picture wanted(1, 2401, 4);
  wanted.randomise(5, 255);
  const Picture before = wanted;
  ASSERT_EQ(adjust(wanted, kBrighter), 1);
  for (unsigned mask = 0; mask < 16; ++mask) {
    Picture p = before;
    Host host;
    host.failMask = mask;
    ASSERT_EQ(adjust(p, kBrighter, &host, true), 1);
    EXPECT_EQ(host.asked, 4);
    EXPECT_EQ(host.live, 0);
    EXPECT_TRUE(p.bytes == wanted.bytes) << mask;
  }
}

TEST(AdjustMemory, anAllocatorWithoutItsReleaseIsNotUsed) {
  Picture p(1, 2400, 4);
  Host host;
  const AdjustSettings s;
  const auto call = [&](VxHostAlloc alloc, VxHostFree release) {
    return vxAdjustRgb(p.bytes.data(), 1, p.step, p.width, p.height, 1, alloc, release, nullptr,
                       &host, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0, 0, nullptr, 0, 0, 0);
  };
  EXPECT_EQ(call(&Host::allocate, nullptr), 1);
  EXPECT_EQ(call(nullptr, &Host::release), 1);
  EXPECT_EQ(host.asked, 0);
  EXPECT_EQ(host.live, 0);
}

// Planes, weights, tile, the trial of the core's memory and the window: without any one of them the
// call ends before the picture is touched. What fails later, inside the stages, leaks nothing.
TEST(AdjustMemory, everyFailingAllocationIsSurvived) {
  for (const unsigned lent : {0u, 0b0101u}) {  // planes 0 and 2 from the host
    const int ownPlanes = lent == 0 ? 4 : 2;
    const int beforeTheCore = ownPlanes + 6;
    int total = beforeTheCore + 1;
    for (int failing = 0; failing < total; ++failing) {
      Picture p(1, 2304, 6), before(p);
      p.randomise(7, 255);
      before = p;
      Host host;
      host.failMask = ~lent & 15u;
      const Heap heap(failing);
      const int result = adjust(p, kBrighter, &host, lent != 0);
      EXPECT_TRUE(result == -1 || failing >= beforeTheCore) << failing;
      EXPECT_TRUE(result == 1 || p.bytes == before.bytes) << failing;
      EXPECT_EQ(Heap::live(), 0) << failing;
      EXPECT_EQ(host.live, 0) << failing;
      total = std::max(total, Heap::calls());
    }
  }
}

TEST(AdjustMemory, onePieceWithoutMemoryStaysAndItsFormatIsLookedAtFirst) {
  Picture p(1, 40, 30), before(p);
  for (const auto& [format, result] : {std::pair(1, 1), {2, -2}}) {
    const Heap heap(0);
    EXPECT_EQ(adjust(p.bytes.data(), format, p.step, 40, 30, kBrighter), result);
    EXPECT_TRUE(p.bytes == before.bytes);
  }
}

TEST(AdjustMemory, exceptionsOfCallbacksPassWithEverythingReleased) {
  Picture before(1, 2400, 20);
  before.randomise(8, 255);
  // When the first release throws, the others are made all the same. Together with another
  // exception on its way, or a cancelled call, nothing terminates.
  const std::tuple<int, int, bool, int, bool> cases[] = {
      {0, -1, false, -1, true}, {1, -1, false, -1, false}, {2, -1, false, -1, true},
      {-1, 0, false, -1, true}, {-1, 3, false, -1, true},  {-1, -1, true, -1, true},
      {-1, -1, true, 1, true},  {1, -1, true, -1, true},   {1, -1, true, 1, true}};
  for (const auto& [report, alloc, release, cancelAt, lend] : cases) {
    const Heap heap;
    Picture p = before;
    Host host;
    host.throwAt = report;
    host.throwAtAlloc = alloc;
    host.throwAtFree = release;
    host.cancelAt = cancelAt;
    EXPECT_THROW(adjust(p, kBrighter, &host, lend), std::runtime_error);
    EXPECT_EQ(host.live, 0);
    EXPECT_EQ(Heap::live(), 0);
    EXPECT_TRUE(release || p.bytes == before.bytes);
  }
}

// Four planes and what one tile needs, whatever the size of the picture: the second picture has
// twice the tiles of the first, of the same size.
TEST(AdjustMemory, peakIsFourPlanesAndOneTile) {
  const auto beyondPlanes = [](int w, int h) {
    Picture p(1, w, h);
    const Heap heap;
    EXPECT_EQ(adjust(p, kBrighter), 1);
    const std::size_t planes = 16u * static_cast<std::size_t>(w) * static_cast<std::size_t>(h);
    EXPECT_GT(Heap::peak(), planes);
    return Heap::peak() - planes;
  };
  const std::size_t small = beyondPlanes(4096, 64);
  const std::size_t large = beyondPlanes(8192, 64);
  EXPECT_LT(large, small + small / 10);
}

}  // namespace
