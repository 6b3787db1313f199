// Silence for libraries that print what their caller is told anyway.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace vx::cli {

/// While one lives, what the process writes to standard error is dropped.
class QuietStderr {
 public:
  explicit QuietStderr(bool wanted) {
    if (!wanted) return;
    std::fflush(stderr);
    kept_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (kept_ >= 0 && nothing >= 0) dup2(nothing, STDERR_FILENO);
    if (nothing >= 0) close(nothing);
  }
  QuietStderr(const QuietStderr&) = delete;
  QuietStderr& operator=(const QuietStderr&) = delete;
  ~QuietStderr() {
    if (kept_ < 0) return;
    std::fflush(stderr);
    dup2(kept_, STDERR_FILENO);
    close(kept_);
  }

 private:
  int kept_ = -1;
};

}  // namespace vx::cli
