// What the exported functions do when memory fails at any place where they ask for it.

#include <fftw3.h>

#include <atomic>
#include <filesystem>
#include <new>

#include "frame/exceptions.h"
#include "tests/frame/services.h"
#include "tests/support/heap.h"
#include "tests/support/images.h"

namespace {

std::atomic<int> blocksOfNew = 0;

void* allocate(std::size_t size) noexcept {
  void* const block = vx::test::Heap::admits() ? std::malloc(size) : nullptr;
  if (block != nullptr) ++blocksOfNew;
  return block;
}

}  // namespace

// For the whole program, so that containers of the language run short too.
void* operator new(std::size_t size) {
  if (void* const block = allocate(size)) return block;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block != nullptr) --blocksOfNew;
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace {

using namespace vx::test;

bool allStages(Picture& p, int denoiseMode) {
  vx::AdjustSettings settings = denoising(denoiseMode, kTone);
  settings.unblockStrength = denoiseMode == 0 ? 0.5f : 0.0f;
  return adjust(p, settings) == 1;
}

struct Call {
  const char* name;
  int width, height;
  bool (*run)(Picture&);  ///< true when the function reports success
  int leastPlaces;        ///< at which it asks for memory
  int threads;            ///< up to 2 where a second one asks for memory of its own
  bool mayThrow;          ///< MemoryException: block artifacts and edges
  int needed = 0;         ///< first places without which the call cannot succeed
};

const Call kCalls[] = {
    {"vxAdjustRgb", 44, 36, [](Picture& p) { return allStages(p, 0); }, 60, 1, true},
    {"vxAdjustRgb, non-local", 36, 34, [](Picture& p) { return allStages(p, 1); }, 60, 1, false},
    {"vxAdjustRgb, tiled, host planes", 2306, 4,
     [](Picture& p) {
       static Host host;  // its list keeps the room that the first call took
       host.positions.clear();
       host.asked = 0;
       host.failMask = 0b0110;
       const int result = adjust(p, denoising(0, {.lumaGamma = 1.0f}), &host, true);
       EXPECT_EQ(host.live, 0);
       return result == 1;
     },
     20, 1, false, 8},
    {"vxUnblock", 40, 33, [](Picture& p) { return unblock(p, 60, 2, 1) == 64; }, 8, 2, true},
    {"vxDenoiseEstNoise", 64, 48,
     [](Picture& p) {
       NoiseProfile profile{};
       const bool done = vxDenoiseEstNoise(p.bytes.data(), 1, p.step, p.width, p.height, &profile);
       EXPECT_TRUE(std::isfinite(profile.lumaNoise) && std::isfinite(profile.lumaLevel));
       return done;
     },
     5, 1, false},
    {"vxYUVEdgeRGB", 40, 33, [](Picture& p) { return edges(p) == 1; }, 10, 1, true}};

// A refusal ends a call by its code or by an exception and leaves the picture as it was; or a stage
// is left out. Nothing leaks, and nothing remembers it: the next call gives what it always gives.
TEST(Faults, everyFailingAllocationIsSurvived) {
  vx::attachProcess();
  fftwf_set_timelimit(0.0);  // any plans will do
  for (const Call& call : kCalls)
    for (int threads = 1; threads <= call.threads; ++threads) {
      SCOPED_TRACE(testing::Message() << call.name << ", " << threads << " threads");
      const Threads team(threads);
      const Picture before = randomPicture(1, call.width, call.height, 255, 5);
      Picture wanted = before, p = before;
      ASSERT_TRUE(call.run(wanted));
      for (const bool fromThenOn : {false, true}) {
        bool refused = true;
        int place = 0;
        for (; refused; place += fromThenOn ? 5 : 1) {
          p.bytes = before.bytes;
          const int blocks = blocksOfNew;
          bool done = false;
          {
            const Heap heap(place, fromThenOn);
            try {
              done = call.run(p);
            } catch (const vx::MemoryException&) {
              EXPECT_TRUE(call.mayThrow) << "place " << place;
            }
          }
          refused = Heap::refusedOne();
          ASSERT_TRUE(done || p.bytes == before.bytes) << "place " << place;
          ASSERT_TRUE(!done || place >= call.needed) << "place " << place;
          ASSERT_EQ(Heap::live(), 0) << "place " << place;
          ASSERT_EQ(blocksOfNew, blocks) << "place " << place;
        }
        EXPECT_TRUE(p.bytes == wanted.bytes) << "memory is back";
        EXPECT_GE(place, call.leastPlaces);
      }
    }
}

// The mask is taken or not; what stands is one of the two, and tracing goes on.
TEST(Faults, theTraceSurvivesWithoutMemory) {
  const std::string folder =
      (std::filesystem::temp_directory_path() / std::string(200, '.')).string() + "/nowhere";
  int refusals = 0;
  for (bool refused = true; refused; ++refusals) {
    setDebugTrace(0, "/tmp/");
    const Heap heap(refusals);
    EXPECT_EQ(vxSetupLib(3, folder.c_str()), 0);
    refused = Heap::refusedOne();
  }
  EXPECT_GE(refusals, 3) << "folder and file each take a block";
  setDebugTrace(0, "/tmp/");
}

}  // namespace
