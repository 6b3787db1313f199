// The shared library as a host meets it: loaded at run time, by its six names.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <immintrin.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include "vxicore26.h"

namespace {

#define VX_FUNCTION(library, name) reinterpret_cast<decltype(&name)>(dlsym(library, #name))

TEST(Library, loadingSetsTheModesAndTheTraceStartsAtRecordZero) {
  const std::string path = "/tmp//vxtrace_log.txt";
  std::ifstream old(path, std::ios::ate);
  const auto before = old ? static_cast<long>(old.tellg()) : -1L;

  const unsigned saved = _mm_getcsr();
  _mm_setcsr(0x1780);  // underflow traps, neither mode
  void* library = dlopen(VX_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  const unsigned loaded = _mm_getcsr() & ~0x3Fu;
  _mm_setcsr(saved);
  ASSERT_NE(library, nullptr) << dlerror();
  EXPECT_EQ(loaded, 0x9FC0u) << "flush-to-zero, underflow masked, denormals-are-zero";

  const auto setupLib = VX_FUNCTION(library, vxSetupLib);
  ASSERT_EQ(setupLib(1, nullptr), 1);
  ASSERT_EQ(setupLib(0, nullptr), 0);
  std::ifstream now(path);
  now.seekg(std::max(before, 0L));
  std::string text((std::istreambuf_iterator<char>(now)), {});
  EXPECT_EQ(text,
            "<<<<0: setTrace - traceFile: \n -- /tmp//vxtrace_log.txt \n>>>>\n"
            "<<<<1: setTrace - traceMask:  1 \n>>>>\n");
  if (before < 0) std::remove(path.c_str());

  // Closing is harmless, and the library stays: threads of its team may still be alive.
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_EQ(setupLib(0, nullptr), 0);
}

// Upward rounding and every exception a trap: one inexact operation under this state ends the test.
TEST(Library, functionsComputeInTheirOwnFloatingPointState) {
  void* library = dlopen(VX_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  constexpr int kSize = 30;
  std::vector<std::uint8_t> picture(3 * kSize * kSize);
  for (std::size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<std::uint8_t>(i * i);
  std::uint8_t* const pixels = picture.data();
  NoiseProfile profile;
  const auto expectKept = [](const auto& call) {
    const unsigned saved = _mm_getcsr(), host = 0x4000;
    _mm_setcsr(host);
    const int result = call();
    const unsigned after = _mm_getcsr();
    _mm_setcsr(saved);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(after, host);
  };
  expectKept([&] {
    return VX_FUNCTION(library, vxUnblock)(0, pixels, 3, 3 * kSize, kSize, kSize, 50, 1, 8, 0);
  });
  expectKept([&] {
    return VX_FUNCTION(library, vxDenoiseEstNoise)(pixels, 1, 3 * kSize, kSize, kSize, &profile);
  });
  expectKept([&] {
    return VX_FUNCTION(library, vxYUVEdgeRGB)(0, pixels, 3 * kSize, kSize, kSize, 1.3, 0.01, 1, 1,
                                              2, 1, 1, 1, 1, 2, 2, 0.02, 0);
  });
  // What a host in C++ catches when it knows nothing of the library's own types.
  EXPECT_THROW(VX_FUNCTION(library, vxUnblock)(0, pixels, 3, 0, 1, INT_MAX, 50, 1, 1, 0),
               std::exception);
}

}  // namespace
