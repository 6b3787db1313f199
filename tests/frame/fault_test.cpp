// What fails around the exported functions: memory at every place where they ask for it, and the
// host's callbacks.

#include <fftw3.h>
#include <gtest/gtest.h>
#include <immintrin.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <new>

#include "frame/exceptions.h"
#include "tests/adjust/host.h"
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

using vx::AdjustSettings;
using namespace vx::test;

const NoiseProfile kNoisy = {0.4f, 0.05f, 0.0f, 0.4f, 0.02f, 0.0f};

// Every stage, each in the form that asks for most.
AdjustSettings everything(int denoiseMode) {
  return {.lumaEqAmount = 0.4f,
          .lumaEqRadius = 40.0f,
          .lumaGamma = 0.5f,
          .lumaDetailRange = 0.1f,
          .lumaDetailRadius = 20.0f,
          .lumaDetailGamma = 0.8f,
          .lumaDetailGain = 1.5f,
          .sharpenAmount = 2.0f,
          .satEqAmount = 0.3f,
          .satEqRadius = 30.0f,
          .satContrast = 1.2f,
          .satGamma = 0.9f,
          .hueShift = 0.1f,
          .denoiseStrength = 0.8f,
          .noiseProfile = &kNoisy,
          .grainRestore = 0.3f,
          .unblockStrength = denoiseMode == 0 ? 0.5f : 0.0f,
          .denoiseMode = denoiseMode};
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
    {"vxAdjustRgb", 44, 36, [](Picture& p) { return adjust(p, everything(0)) == 1; }, 60, 1, true},
    {"vxAdjustRgb, non-local", 36, 34, [](Picture& p) { return adjust(p, everything(1)) == 1; }, 60,
     1, false},
    {"vxAdjustRgb, tiled, host planes", 2306, 4,
     [](Picture& p) {
       static Host host;  // its list keeps the room that the first call took
       host.positions.clear();
       host.asked = 0;
       host.failMask = 0b0110;
       const int result = adjust(
           p, {.lumaGamma = 1.0f, .denoiseStrength = 0.8f, .noiseProfile = &kNoisy}, &host, true);
       EXPECT_EQ(host.live, 0);
       return result == 1;
     },
     20, 1, false, 8},
    {"vxUnblock", 40, 33,
     [](Picture& p) {
       return vxUnblock(0, p.bytes.data(), 3, p.step, p.width, p.height, 60, 2, 1, 0) == 64;
     },
     8, 2, true},
    {"vxDenoiseEstNoise", 64, 48,
     [](Picture& p) {
       NoiseProfile profile{};
       const bool done = vxDenoiseEstNoise(p.bytes.data(), 1, p.step, p.width, p.height, &profile);
       EXPECT_TRUE(std::isfinite(profile.lumaNoise) && std::isfinite(profile.lumaLevel));
       return done;
     },
     5, 1, false},
    {"vxYUVEdgeRGB", 40, 33,
     [](Picture& p) {
       return vxYUVEdgeRGB(0, p.bytes.data(), p.step, p.width, p.height, 1.5, 0.01, 1, 1, 2, 1, 1,
                           2, -1, 2, 2, 0.02, 0) == 1;
     },
     10, 1, true}};

// A refusal ends a call by its code or by an exception and leaves the picture as it was; or a stage
// is left out. Nothing leaks, and nothing remembers it: the next call gives what it always gives.
TEST(Faults, everyFailingAllocationIsSurvived) {
  vx::attachProcess();
  fftwf_set_timelimit(0.0);  // any plans will do
  for (const Call& call : kCalls)
    for (int threads = 1; threads <= call.threads; ++threads) {
      SCOPED_TRACE(testing::Message() << call.name << ", " << threads << " threads");
      const Threads team(threads);
      Picture before(1, call.width, call.height, 5);
      before.randomise(11, 255);
      Picture wanted = before, p = before;
      ASSERT_TRUE(call.run(wanted));
      for (const bool fromThenOn : {false, true}) {
        bool refused = true;
        int place = 0;
        for (; refused; place += fromThenOn ? 5 : 1) {
          p.bytes = before.bytes;
          const int blocks = blocksOfNew;
          bool done = false;
          int left = 0;
          {
            const Heap heap(place, fromThenOn);
            try {
              done = call.run(p);
            } catch (const vx::MemoryException&) {
              EXPECT_TRUE(call.mayThrow) << "place " << place;
            }
            refused = Heap::refusedOne();
            left = Heap::live();
          }
          ASSERT_TRUE(done || p.bytes == before.bytes) << "place " << place;
          ASSERT_TRUE(!done || place >= call.needed) << "place " << place;
          ASSERT_EQ(left, 0) << "place " << place;
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

// Bits of MXCSR apart from the flags of exceptions that have happened.
unsigned floatState() { return _mm_getcsr() & ~0x3Fu; }

constexpr AdjustSettings kBrighter = {.lumaGamma = 1.0f, .sharpenAmount = 1.5f};

// From every callback, which has the host's own state, all functions are called again, one of them
// with callbacks of its own.
TEST(Faults, callbacksMayCallEverything) {
  Picture outer(1, 2400, 20), inner(1, 2310, 4);
  outer.randomise(13, 255);
  inner.randomise(14, 255);
  const auto inside = [](Picture p) {
    NoiseProfile profile;
    Host host;
    EXPECT_EQ(vxSetupLib(0, nullptr), 0);
    EXPECT_EQ(vxDenoiseEstNoise(p.bytes.data(), 1, p.step, 64, 4, &profile), 1);
    EXPECT_EQ(vxUnblock(0, p.bytes.data(), 3, p.step, 60, p.height, 50, 1, 4, 0), 4);
    EXPECT_EQ(vxYUVEdgeRGB(0, p.bytes.data(), p.step, p.width, p.height, 2, 0.01, 1, 1, 1, 0, 0, 0,
                           0, 0, 0, 0, 0),
              1);
    AdjustSettings settings = kBrighter;
    settings.noiseProfile = &profile;
    settings.denoiseStrength = 0.5f;
    EXPECT_EQ(adjust(p, settings, &host, true), 1);
    setDebugTrace(0, nullptr);
    return p.bytes;
  };
  const auto wantedInside = inside(inner);
  Picture wanted = outer;
  ASSERT_EQ(adjust(wanted, kBrighter), 1);
  Host host;
  int calls = 0;
  const unsigned usual = _mm_getcsr(), hosts = 0x7F80;  // towards zero
  host.onReport = host.onMemory = [&] {
    const unsigned seen = floatState();
    _mm_setcsr(usual);
    EXPECT_EQ(seen, hosts);
    EXPECT_TRUE(inside(inner) == wantedInside);
    ++calls;
    _mm_setcsr(hosts);
  };
  _mm_setcsr(hosts);
  const int result = adjust(outer, kBrighter, &host, true);
  const unsigned after = floatState();
  _mm_setcsr(usual);
  EXPECT_EQ(result, 1);
  EXPECT_EQ(after, hosts);
  EXPECT_TRUE(outer.bytes == wanted.bytes);
  EXPECT_EQ(calls, host.reports + 8);
}

}  // namespace
