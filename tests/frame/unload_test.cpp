// Hosts that load, use and unload the library again and again.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <vector>

#include "vxicore26.h"

namespace {

// One life of the library in a host: its functions, used on a picture large enough for a team.
class Loaded {
 public:
  Loaded() : library_(dlopen(VX_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
  }
  Loaded(const Loaded&) = delete;
  Loaded& operator=(const Loaded&) = delete;
  ~Loaded() { EXPECT_EQ(dlclose(library_), 0); }

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
  template <class Function>
  Function* find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(library_, name));
  }
  void* library_;
};

auto threadCount() {
  const std::filesystem::directory_iterator all("/proc/self/task");
  return std::distance(begin(all), end(all));
}

// The team's threads sleep inside the library's OpenMP runtime when it is closed, those of a host
// thread that ended have gone: neither may be called back into unmapped code.
TEST(Unload, aHundredLivesWithTeamsAlive) {
  const auto wanted = Loaded().use();
  [[maybe_unused]] const auto threads = threadCount();
  for (int life = 0; life < 100; ++life) {
    Loaded library;
    EXPECT_TRUE(library.use() == wanted);
    if (life % 10 == 0) {
      std::thread other([&] { EXPECT_TRUE(library.use() == wanted); });
      other.join();
    }
  }
  // A thread that uses the library past its closing by another: its team outlives the close.
  std::thread last;
  {
    auto library = std::make_shared<Loaded>();
    last = std::thread([library, &wanted] { EXPECT_TRUE(library->use() == wanted); });
  }
  last.join();
#ifndef __SANITIZE_THREAD__  // which has a thread of its own
  for (int wait = 0; wait < 200 && threadCount() > threads; ++wait)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_LE(threadCount(), threads) << "teams are reused, or end with their host thread";
#endif
}

// The host's exception keeps its type on its way through the library.
TEST(Unload, exceptionsCrossTheLibrary) {
  const Loaded library;
  const auto wanted = library.use();
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(library.use([](int, int, void*) -> int { throw std::out_of_range("host"); }),
                 std::out_of_range);
    EXPECT_TRUE(library.use() == wanted);
  }
}

}  // namespace
