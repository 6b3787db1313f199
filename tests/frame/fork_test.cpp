// A child process goes on where its parent had a team at work, plans being made and records
// written.

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/frame/services.h"
#include "tests/support/images.h"
#include "vxenhlib/nonlocal/search_transform.h"

namespace {

using namespace vx::test;

// A child that hangs is ended by its alarm. Every other one calls from a thread of its own, which
// has a team again.
TEST(Fork, aHundredChildrenGetTheBytesOfTheirParent) {
  const Threads team(4);
  const auto& all = services();
  const auto wanted = callAll();
  std::atomic<bool> done = false;
  std::vector<std::thread> busy;
#ifndef __SANITIZE_ADDRESS__  // whose allocator leaves a child the locks that other threads hold
  busy.emplace_back([&] {
    while (!done) const vx::SearchTransform plans({8, 32, 3});
  });
  busy.emplace_back([&] {
    while (!done) setDebugTrace(2, nullptr);
  });
#endif
  for (std::size_t i = 0; i < 100 && !HasFailure(); ++i) {
    const std::size_t service = i % all.size();
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      bool same = false;
      const auto call = [&] { same = all[service].call() == wanted[service]; };
#ifndef __SANITIZE_THREAD__  // which lets a child start none
      if (i % 2 != 0)
        std::thread(call).join();
      else
#endif
        call();
      _exit(same ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << all[service].name << ", child " << i;
    EXPECT_TRUE(i % 10 != 0 || all[service].call() == wanted[service]) << "in the parent";
  }
  done = true;
  for (std::thread& thread : busy) thread.join();
}

}  // namespace
