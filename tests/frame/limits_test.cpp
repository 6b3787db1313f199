// Limits that the system sets: a full disk, an address space that is used up.

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "frame/exceptions.h"
#include "frame/exports/load.h"
#include "tests/frame/services.h"
#include "tests/support/test.h"
#include "vxenhlib/nonlocal/search_transform.h"

namespace {

using namespace vx::test;
namespace fs = std::filesystem;

// The file can be opened but takes no byte, so its records are lost and the calls go on.
TEST(Limits, aFullDiskCostsOnlyTheTrace) {
  std::string folder = (fs::temp_directory_path() / "vxfullXXXXXX").string();
  ASSERT_NE(mkdtemp(folder.data()), nullptr);
  fs::create_symlink("/dev/full", folder + "/vxtrace_log.txt");
  const auto run = [] {
    Picture p = randomPicture(1, 20, 20);
    EXPECT_EQ(unblock(p, 50, 1, 1), 64);
    EXPECT_EQ(edges(p), 1);
    return p.bytes;
  };
  const auto wanted = run();
  const auto openFiles = [] {
    const fs::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
  };
  const auto before = openFiles();
  EXPECT_EQ(vxSetupLib(1, folder.c_str()), 1) << "it was opened";
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(run() == wanted);
  EXPECT_EQ(openFiles(), before);
  setDebugTrace(0, "/tmp/");
  fs::remove_all(folder);
}

std::size_t addressSpace() {
  std::size_t pages = 0;
  std::FILE* file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%zu", &pages) != 1) std::abort();
  std::fclose(file);
  return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Runs in a process of its own: gives the call more and more address space until it is done.
// Before that it must end by -1 or an exception, with the picture as it was. 0 when all was well.
int growUntilDone(bool (*call)(Picture&), int width, int height) {
  mallopt(M_MMAP_THRESHOLD, 1 << 16);  // fixed: what is released goes back to the system
  const Picture before = randomPicture(1, width, height);
  Picture p = before;
  if (!call(p)) return 1;  // the team's threads are there now
  const Picture wanted = p;
  const rlim_t start = addressSpace();
  int refused = 0;
  constexpr rlim_t kStep = 1 << 20;
  for (rlim_t extra = 0; extra < 400 * kStep; extra += kStep) {
    p.bytes = before.bytes;
    rlimit limit{start + extra, RLIM_INFINITY};
    if (setrlimit(RLIMIT_AS, &limit) != 0) return 2;
    bool done = false;
    try {
      done = call(p);
    } catch (const vx::MemoryException&) {
    }
    limit.rlim_cur = RLIM_INFINITY;
    setrlimit(RLIMIT_AS, &limit);
    if (!done && p.bytes != before.bytes) return 3;
    if (p.bytes == wanted.bytes) return refused > 0 ? 0 : 4;
    ++refused;
  }
  return 5;
}

// 0 when no plan was made. In a process of its own.
int planWithin(rlim_t extra) {
  mallopt(M_MMAP_THRESHOLD, 1 << 16);
  const rlimit limit = {addressSpace() + extra, RLIM_INFINITY};
  if (setrlimit(RLIMIT_AS, &limit) != 0) return 2;
  return vx::SearchTransform({8, 32, 3}).empty() ? 0 : 1;
}

// FFTW's planner itself ends the process when it finds no memory.
TEST(Limits, plansAreRefusedInAUsedUpAddressSpace) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const rlim_t extra : {0, 1 << 18, 1 << 20})
    EXPECT_EXIT(std::_Exit(planWithin(extra)), testing::ExitedWithCode(0), "") << extra;
}

TEST(Limits, callsSurviveAUsedUpAddressSpace) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  vx::attachProcess();
  const struct {
    int width, height;
    bool (*call)(Picture&);
  } cases[] = {
      {2310, 400, [](Picture& p) { return adjust(p, kTone) == 1; }},
      {700, 300,
       [](Picture& p) { return adjust(p, {.lumaGamma = 1.0f, .unblockStrength = 0.4f}) == 1; }},
      {900, 500, [](Picture& p) { return unblock(p, 60, 1, 4) == 4; }},
      {700, 500, [](Picture& p) { return edges(p) == 1; }}};
  for (const auto& c : cases)
    EXPECT_EXIT(std::exit(growUntilDone(c.call, c.width, c.height)), testing::ExitedWithCode(0),
                "");
}

}  // namespace
