#include "hosts/cli/console/progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace vx::cli {

Progress::Progress(bool wanted) : terminal_(wanted && isatty(STDERR_FILENO) == 1) {}

void Progress::beginPicture(std::string name) { name_ = std::move(name); }

void Progress::beginStep(std::string step) {
  step_ = std::move(step);
  if (terminal_) show(-1);
}

void Progress::say(const std::string& step) {
  step_ = step;
  update(-1);
}

void Progress::update(int percent) {
  if (!terminal_ || Clock::now() - last_ < std::chrono::milliseconds(200)) return;
  show(percent);
}

void Progress::show(int percent) {
  last_ = Clock::now();
  shown_ = true;
  // \33[K erases what a longer line left behind.
  std::fprintf(stderr, "\r%s: %s", name_.c_str(), step_.c_str());
  if (percent >= 0) std::fprintf(stderr, " %d %%", percent);
  std::fputs("\33[K", stderr);
  std::fflush(stderr);
}

void Progress::clear() {
  if (!shown_) return;
  std::fputs("\r\33[K", stderr);
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace vx::cli
