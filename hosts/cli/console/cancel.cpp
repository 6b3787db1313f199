#include "hosts/cli/console/cancel.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>

#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

std::atomic<bool> requested{false};
std::atomic<const char*> partFile{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free &&
                  std::atomic<const char*>::is_always_lock_free,
              "used in a signal handler");

void onSignal(int) {
  if (!requested.exchange(true)) return;
  if (const char* path = partFile.load()) unlink(path);
  _exit(kExitCancelled);
}

}  // namespace

void installSignalHandlers() {
  struct sigaction action {};
  action.sa_handler = onSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction inherited {};
    // nohup and background shells start us with these ignored, and that is respected.
    if (sigaction(signal, nullptr, &inherited) == 0 && inherited.sa_handler == SIG_IGN) continue;
    sigaction(signal, &action, nullptr);
  }
  // With SIGXFSZ ignored, a file size limit makes write() fail, as a full disk does.
  signal(SIGXFSZ, SIG_IGN);
}

void obeyParent() {
  struct sigaction action {};
  action.sa_handler = [](int) { requested = true; };
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(SIGUSR1, &action, nullptr);
}

void requestCancel() noexcept { requested = true; }

bool cancelRequested() noexcept { return requested.load(std::memory_order_relaxed); }

void throwIfCancelled() {
  if (cancelRequested()) throw Cancelled();
}

void setPartFile(const char* path) noexcept { partFile.store(path); }

}  // namespace vx::cli
