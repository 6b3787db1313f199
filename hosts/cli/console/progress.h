// A progress line on the terminal, overwritten while a picture is processed.
#pragma once

#include <chrono>
#include <string>

namespace vx::cli {

class Progress {
 public:
  /// Silent unless it is wanted and stderr is a terminal.
  explicit Progress(bool wanted = true);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void beginPicture(std::string name);
  /// `step` says what is being done, such as "reading". Shown at once.
  void beginStep(std::string step);
  /// Shown at most five times a second.
  void update(int percent);
  /// A step that changes often, shown like a percentage.
  void say(const std::string& step);
  /// Erases the line, so that a message can take its place.
  void clear();

 private:
  void show(int percent);

  using Clock = std::chrono::steady_clock;
  bool terminal_;
  bool shown_ = false;
  std::string name_, step_;
  Clock::time_point last_{};
};

}  // namespace vx::cli
