#include "prim/alloc.h"

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

TEST(Alloc, stepsArePaddedTo32BytesAndRefusalsStore0) {
  int small = -1, large = -1, empty = -1;
  void* a = primMalloc_8u_C1(1, 1, &small);
  void* b = primMalloc_32f_C1(9, 1, &large);
  EXPECT_EQ(primMalloc_8u_C1(0, 5, &empty), nullptr);
  EXPECT_TRUE(small == 32 && large == 64 && empty == 0);
  for (const int width : {INT_MAX / 4 + 1, (1 << 30) + 8}) {
    int beyondInt = -1;
    EXPECT_EQ(primMalloc_32f_C1(width, 1, &beyondInt), nullptr);
    EXPECT_EQ(beyondInt, 0);
  }
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(b) % 32, 0u);
  EXPECT_EQ(primMalloc_8u_C1(4, 4, nullptr), nullptr);
  EXPECT_EQ(primvMalloc_8u(0), nullptr);
  EXPECT_EQ(primvMalloc_32f(-1), nullptr);
  {
    const vx::test::Heap heap(0, true);
    int none = -1;
    EXPECT_EQ(primMalloc_8u_C1(4, 4, &none), nullptr);
    EXPECT_EQ(none, 0);
  }
  primFree(a);
  primvFree(b);  // either release takes either block
  primFree(nullptr);
  primvFree(nullptr);
}

// The heap may return any address: the block must lie inside what was asked for, with room for the
// heap's own pointer below it.
TEST(Alloc, blockLiesInsideTheHeapBlockWhateverItsAddress) {
  static std::uint8_t heap[256], *next = nullptr;
  static std::size_t asked = 0;
  static void* released = nullptr;
  const MemHooks saved = primMemHooks;
  primMemHooks.allocate = [](std::size_t size) -> void* { return asked = size, next; };
  primMemHooks.release = [](void* block) { released = block; };
  for (int shift = 0; shift < 40; ++shift) {
    next = heap + shift;
    std::uint8_t* const user = primvMalloc_8u(50);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(user) % 32, 0u);
    EXPECT_TRUE(user >= next + sizeof(void*) && user + 50 <= next + asked) << shift;
    std::memset(user, 0xFF, 50);
    primvFree(user);
    EXPECT_EQ(released, next);
  }
  primMemHooks = saved;
}

}  // namespace
