#include <immintrin.h>

#include "adjust/adjust_driver.h"
#include "tests/adjust/host.h"
#include "tests/support/heap.h"
#include "tests/support/test.h"

namespace {

using vx::AdjustSettings;
using namespace vx::test;

// Each pattern of planes that the host fails to give. A width whose packed and padded steps differ:
// the planes then have different steps.
TEST(AdjustMemory, planesThatTheHostCannotGiveComeFromTheLibrary) {
  Picture wanted = randomPicture(1, 2401, 4);
  const Picture before = wanted;
  ASSERT_EQ(adjust(wanted, kBrighter), 1);
  for (unsigned mask = 0; mask < 16; ++mask) {
    Picture p = before;
    Host host = {.failMask = mask};
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

TEST(AdjustMemory, onePieceWithoutMemoryStaysAndItsFormatIsLookedAtFirst) {
  Picture p(1, 40, 30), before(p);
  for (const auto& [format, result] : {std::pair(1, 1), {2, -2}}) {
    const Heap heap(0);
    EXPECT_EQ(adjust(p.bytes.data(), format, p.step, 40, 30, kBrighter), result);
    EXPECT_TRUE(p.bytes == before.bytes);
  }
}

TEST(AdjustMemory, exceptionsOfCallbacksPassWithEverythingReleased) {
  const Picture before = randomPicture(1, 2400, 20);
  // When the first release throws, the others are made all the same. Together with another
  // exception on its way, or a cancelled call, nothing terminates.
  const std::tuple<int, int, bool, int, bool> cases[] = {
      {0, -1, false, -1, true}, {1, -1, false, -1, false}, {2, -1, false, -1, true},
      {-1, 0, false, -1, true}, {-1, 3, false, -1, true},  {-1, -1, true, -1, true},
      {-1, -1, true, 1, true},  {1, -1, true, -1, true},   {1, -1, true, 1, true}};
  for (const auto& [report, alloc, release, cancelAt, lend] : cases) {
    const Heap heap;
    Picture p = before;
    Host host = {
        .cancelAt = cancelAt, .throwAt = report, .throwAtAlloc = alloc, .throwAtFree = release};
    const unsigned saved = _mm_getcsr();
    _mm_setcsr(0x7F80);  // towards zero
    EXPECT_THROW(adjust(p, kBrighter, &host, lend), std::runtime_error);
    const unsigned after = _mm_getcsr() & ~0x3Fu;  // the flags apart
    _mm_setcsr(saved);
    EXPECT_EQ(after, 0x7F80u);
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
