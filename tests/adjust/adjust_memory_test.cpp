#include <gtest/gtest.h>

#include "adjust/adjust_driver.h"
#include "picture.h"
#include "prim/alloc.h"

namespace {

using vx::AdjustSettings;
using namespace vx::test;

constexpr AdjustSettings kBrighter = {.lumaGamma = 1.0f};

// Counts the library's own blocks, makes one allocation fail, and notes the most bytes alive.
class OwnHeap {
 public:
  explicit OwnHeap(int failing = -1) {
    calls_ = live_ = 0;
    failing_ = failing;
    bytes_ = peak_ = 0;
    vx::prim::primMemHooks.allocate = [](std::size_t size) -> void* {
      if (calls_++ == failing_) return nullptr;
      auto* block = static_cast<std::size_t*>(std::malloc(size + 64));
      if (block == nullptr) return nullptr;
      *block = size;
      ++live_;
      peak_ = std::max(peak_, bytes_ += size);
      return block + 8;
    };
    vx::prim::primMemHooks.release = [](void* user) {
      auto* block = static_cast<std::size_t*>(user) - 8;
      bytes_ -= *block;
      --live_;
      std::free(block);
    };
  }
  ~OwnHeap() { vx::prim::primMemHooks = saved_; }
  OwnHeap(const OwnHeap&) = delete;
  OwnHeap& operator=(const OwnHeap&) = delete;

  static int calls() { return calls_; }
  static int live() { return live_; }
  static std::size_t peak() { return peak_; }

 private:
  vx::prim::MemHooks saved_ = vx::prim::primMemHooks;
  static inline int calls_, live_, failing_;
  static inline std::size_t bytes_, peak_;
};

TEST(AdjustMemory, hostPlanesGiveTheSamePixels) {
  Picture own(1, 2401, 40), lent(own);
  own.randomise(5, 255);
  lent = own;
  ASSERT_EQ(adjust(own, kBrighter), 1);
  Host host;
  ASSERT_EQ(adjust(lent, kBrighter, &host, true), 1);
  EXPECT_EQ(host.asked, 4);
  EXPECT_EQ(host.live, 0);
  EXPECT_TRUE(own.bytes == lent.bytes);
}

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

// Planes, weights, tile and the trial of the core's memory: without any one of them the call ends
// before the picture is touched. What fails later, inside the stages, leaks nothing.
TEST(AdjustMemory, everyFailingAllocationIsSurvived) {
  for (const unsigned lent : {0u, 0b0101u}) {  // planes 0 and 2 from the host
    const int ownPlanes = lent == 0 ? 4 : 2;
    const int beforeTheCore = ownPlanes + 5;
    int total = beforeTheCore + 1;
    for (int failing = 0; failing < total; ++failing) {
      Picture p(1, 2304, 6), before(p);
      p.randomise(7, 255);
      before = p;
      Host host;
      host.failMask = ~lent & 15u;
      const OwnHeap heap(failing);
      int result = -1;
      try {
        result = adjust(p, kBrighter, &host, lent != 0);
      } catch (...) {  // a stage without memory may leave by exception
        result = -1;
      }
      EXPECT_TRUE(result == -1 || failing >= beforeTheCore) << failing;
      EXPECT_TRUE(result == 1 || p.bytes == before.bytes) << failing;
      EXPECT_EQ(OwnHeap::live(), 0) << failing;
      EXPECT_EQ(host.live, 0) << failing;
      total = std::max(total, OwnHeap::calls());
    }
  }
}

TEST(AdjustMemory, exceptionsOfCallbacksPassWithEverythingReleased) {
  Picture p(1, 2400, 20);
  p.randomise(8, 255);
  const Picture before = p;
  for (int at = 0; at < 3; ++at) {
    const OwnHeap heap;
    Host host;
    host.throwAt = at;
    EXPECT_THROW(adjust(p, kBrighter, &host, at != 1), std::runtime_error);
    EXPECT_EQ(host.live, 0);
    EXPECT_EQ(OwnHeap::live(), 0);
    EXPECT_TRUE(p.bytes == before.bytes);
  }
  for (int at = 0; at < 4; ++at) {
    const OwnHeap heap;
    Host host;
    host.throwAtAlloc = at;
    EXPECT_THROW(adjust(p, kBrighter, &host, true), std::runtime_error);
    EXPECT_EQ(host.live, 0);
    EXPECT_EQ(OwnHeap::live(), 0);
    EXPECT_TRUE(p.bytes == before.bytes);
  }
  // The first release throws: the others are made all the same. Together with another exception on
  // its way, or a cancelled call, nothing terminates.
  for (const int cancelAt : {-1, 1})
    for (const int throwAt : {-1, 1}) {
      const OwnHeap heap;
      Picture copy = before;
      Host host;
      host.throwAtFree = true;
      host.cancelAt = cancelAt;
      host.throwAt = throwAt;
      EXPECT_THROW(adjust(copy, kBrighter, &host, true), std::runtime_error);
      EXPECT_EQ(host.live, 0);
      EXPECT_EQ(OwnHeap::live(), 0);
    }
}

// Four planes and what one tile needs, whatever the size of the picture: the second picture has
// twice the tiles of the first, of the same size.
TEST(AdjustMemory, peakIsFourPlanesAndOneTile) {
  const auto beyondPlanes = [](int w, int h) {
    Picture p(1, w, h);
    const OwnHeap heap;
    EXPECT_EQ(adjust(p, kBrighter), 1);
    const std::size_t planes = 16u * static_cast<std::size_t>(w) * static_cast<std::size_t>(h);
    EXPECT_GT(OwnHeap::peak(), planes);
    return OwnHeap::peak() - planes;
  };
  const std::size_t small = beyondPlanes(4096, 64);
  const std::size_t large = beyondPlanes(8192, 64);
  EXPECT_LT(large, small + small / 10);
}

}  // namespace
