// The shared library as a host meets it: loaded at run time, by its six names, again and again.

#include <dlfcn.h>
#include <immintrin.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "tests/support/test.h"
#include "vxicore26.h"

namespace {

// One life of the library in a host.
class Loaded {
 public:
  Loaded() : library_(dlopen(VX_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
  }
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;
  ~Loaded() { EXPECT_EQ(dlclose(library_), 0); }

  template <class Function>
  Function* find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(library_, name));
  }
  // Its functions, used on a picture large enough for a team.
  std::vector<std::uint8_t> use(VxProgress progress = nullptr) const {
    constexpr int kWidth = 64, kHeight = 48;
    std::vector<std::uint8_t> rgb(3 * kWidth * kHeight);
    for (std::size_t i = 0; i < rgb.size(); ++i) rgb[i] = static_cast<std::uint8_t>(i * i / 97);
    const auto unblock = find<decltype(vxUnblock)>("vxUnblock");
    EXPECT_EQ(unblock(0, rgb.data(), 3, 3 * kWidth, kWidth, kHeight, 50, 1, 4, 0), 4);
    const auto adjust = find<decltype(vxAdjustRgb)>("vxAdjustRgb");
    EXPECT_EQ(
        adjust(rgb.data(), 1, 3 * kWidth, kWidth, kHeight, 1, nullptr, nullptr, progress, nullptr,
               0, 0, 0, 0.5f, 0, 0, 0, 0, 1, 1, 1.5f, 0, 0, 1, 1, 0, 0, nullptr, 0, 0, 0),
        1);
    return rgb;
  }

 private:
  void* library_;
};

// Comes first: a process loads the library once. Closing is harmless, and the library stays:
// threads of its team may still be alive.
TEST(Library, loadingSetsTheModesAndTheTraceStartsAtRecordZero) {
  const std::string path = "/tmp//vxtrace_log.txt";
  std::ifstream old(path, std::ios::ate);
  const auto before = old ? static_cast<long>(old.tellg()) : -1L;

  const unsigned saved = _mm_getcsr();
  _mm_setcsr(0x1780);  // underflow traps, neither mode
  auto library = std::make_unique<Loaded>();
  const unsigned loaded = _mm_getcsr() & ~0x3Fu;
  _mm_setcsr(saved);
  EXPECT_EQ(loaded, 0x9FC0u) << "flush-to-zero, underflow masked, denormals-are-zero";

  const auto setupLib = library->find<decltype(vxSetupLib)>("vxSetupLib");
  ASSERT_EQ(setupLib(1, nullptr), 1);
  library.reset();
  ASSERT_EQ(setupLib(0, nullptr), 0);
  std::ifstream now(path);
  now.seekg(std::max(before, 0L));
  std::string text((std::istreambuf_iterator<char>(now)), {});
  EXPECT_EQ(text,
            "<<<<0: setTrace - traceFile: \n -- /tmp//vxtrace_log.txt \n>>>>\n"
            "<<<<1: setTrace - traceMask:  1 \n>>>>\n");
  if (before < 0) std::remove(path.c_str());
}

auto threadCount() {
  const std::filesystem::directory_iterator all("/proc/self/task");
  return std::distance(begin(all), end(all));
}

// The team's threads sleep inside the library's OpenMP runtime when it is closed, those of a host
// thread that ended have gone: neither may be called back into unmapped code.
TEST(Library, livesAHundredTimesWithTeamsAlive) {
  const auto wanted = Loaded().use();
  [[maybe_unused]] const auto threads = threadCount();
  for (int life = 0; life < 100; ++life) {
    // Every tenth is used by another thread, too, past its closing by this one: a team outlives the
    // close.
    auto library = std::make_shared<Loaded>();
    EXPECT_TRUE(library->use() == wanted);
    if (life % 10 != 9) continue;
    std::thread other([library, &wanted] { EXPECT_TRUE(library->use() == wanted); });
    library.reset();
    other.join();
  }
#ifndef __SANITIZE_THREAD__  // which has a thread of its own
  for (int wait = 0; wait < 200 && threadCount() > threads; ++wait)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_LE(threadCount(), threads) << "teams are reused, or end with their host thread";
#endif
}

// The host's exception keeps its type on its way through the library. What the library throws, a
// host in C++ catches as the standard's, since it knows nothing of the library's own types.
TEST(Library, exceptionsCrossIt) {
  const Loaded library;
  const auto wanted = library.use();
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(library.use([](int, int, void*) -> int { throw std::out_of_range("host"); }),
                 std::out_of_range);
    EXPECT_TRUE(library.use() == wanted);
  }
  std::uint8_t pixels[3] = {};
  const auto unblock = library.find<decltype(vxUnblock)>("vxUnblock");
  EXPECT_THROW(unblock(0, pixels, 3, 0, 1, INT_MAX, 50, 1, 1, 0), std::exception);
}

}  // namespace
