// The floating-point state of the host: nothing of it reaches a result, and no call changes it.

#include <immintrin.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/frame/services.h"
#include "tests/support/images.h"
#include "vxicore26.h"

namespace {

using namespace vx::test;

struct State {
  const char* name;
  unsigned vector = 0x1F80;    ///< MXCSR
  std::uint16_t x87 = 0x037F;  ///< control word
};

// MXCSR: flags in bits 0 to 5, denormals-are-zero 6, masks 7 to 12, rounding 13 and 14,
// flush-to-zero 15. Control word: masks 0 to 5, precision 8 and 9, rounding 10 and 11.
constexpr State kStates[] = {{"upward, every exception traps", 0x4000, 0x0B40},
                             {"downward", 0x3F80, 0x077F},
                             {"upward", 0x5F80, 0x0B7F},
                             {"toward zero, single precision", 0x7F80, 0x0C7F},
                             {"flush to zero", 0x9F80},
                             {"denormals are zero", 0x1FC0},
                             {"flags", 0x1FBF},
                             {"flags whose exceptions trap from now on", 0x003F},
                             {"the usual"}};

void enter(const State& state) {
  _mm_setcsr(state.vector);
  asm volatile("fldcw %0" : : "m"(state.x87));
}

// Whether the thread is in the state, flags included.
bool in(const State& state) {
  std::uint16_t control = 0, status = 0;
  asm volatile("fnstcw %0" : "=m"(control));
  asm volatile("fnstsw %0" : "=m"(status));
  return _mm_getcsr() == state.vector && control == state.x87 && status == 0;
}

// Each state has a host thread of its own, which starts its team in that state: in a region of the
// host's, since one of the library's would bear them in the library's state. The first call of the
// process is made in the first state. One float operation of the library under a state that traps
// ends the test.
TEST(FloatState, ofTheHostStaysAndChangesNoResult) {
  const auto& all = services();
  std::vector<std::vector<std::uint8_t>> results[std::size(kStates)];
  std::vector<bool> stays[std::size(kStates)];
  for (std::size_t s = 0; s < std::size(kStates); ++s) {
    results[s].resize(all.size());
    stays[s].resize(all.size());
    std::thread([&] {
      const Threads team(3);
      enter(kStates[s]);
#pragma omp parallel
      asm volatile("");
      for (std::size_t i = 0; i < all.size(); ++i) {
        enter(kStates[s]);
        results[s][i] = all[i].call();
        stays[s][i] = in(kStates[s]);
      }
      enter({});
    }).join();
  }
  for (std::size_t i = 0; i < all.size(); ++i)
    for (std::size_t s = 0; s < std::size(kStates); ++s) {
      EXPECT_TRUE(stays[s][i]) << all[i].name << ", " << kStates[s].name;
      EXPECT_TRUE(results[s][i] == results[std::size(kStates) - 1][i])
          << all[i].name << ", " << kStates[s].name;
    }
}

// An exception that waits in the x87 unit is not delivered inside a call, and not lost.
TEST(FloatState, aPendingExceptionStaysPending) {
  std::uint16_t status = 0;
  const std::uint16_t traps = 0x035F;
  const double three = 3.0;
  double third = 1.0;
  asm volatile("fldl %0; fdivl %1; fstpl %0" : "+m"(third) : "m"(three));
  asm volatile("fldcw %0" : : "m"(traps));
  vxSetupLib(-1, nullptr);
  asm volatile("fnstsw %0; fnclex; fldcw %1" : "=m"(status) : "m"(State{}.x87));
  EXPECT_EQ(status & 0xA0, 0xA0) << "inexact, and waiting to be told";
}

// The C library prints numbers as the x87 unit rounds.
TEST(FloatState, ofTheHostDoesNotChangeTheTrace) {
  std::string folder = ::testing::TempDir() + "vxfloatXXXXXX";
  ASSERT_NE(mkdtemp(folder.data()), nullptr);
  setDebugTrace(1, folder.c_str());
  for (const State& state : kStates) {
    enter(state);
    vxYUVEdgeRGB(0, nullptr, 2, 0, 4, 0.1234564, -0.1234566, 2e-7, 8e-7, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const bool stays = in(state);
    enter({});
    EXPECT_TRUE(stays) << state.name;
  }
  setDebugTrace(0, nullptr);
  std::ifstream log(folder + "/vxtrace_log.txt");
  std::string line;
  for (const State& state : kStates) {
    while (std::getline(log, line) && !line.starts_with(" -- 0 ")) continue;
    EXPECT_TRUE(line.starts_with(" -- 0 0 2 0 4  0.123456 -0.123457 0.000000 0.000001 "))
        << state.name << ": " << line;
  }
  std::filesystem::remove_all(folder);
}

}  // namespace
