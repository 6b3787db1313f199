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

// What a host in C++ catches when it knows nothing of the library's own types.
TEST(Library, throwsWhatDerivesFromTheStandardsException) {
  void* library = dlopen(VX_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  std::uint8_t pixels[3] = {};
  EXPECT_THROW(VX_FUNCTION(library, vxUnblock)(0, pixels, 3, 0, 1, INT_MAX, 50, 1, 1, 0),
               std::exception);
}

}  // namespace
