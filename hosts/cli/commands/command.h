// One subcommand of the program.
#pragma once

#include <string>

#include "hosts/cli/console/error.h"

namespace CLI {
class App;
}

namespace vx::cli {

class Command {
 public:
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command() = default;

  bool chosen() const;
  /// Returns the exit code. Throws UsageError.
  virtual int run() = 0;

 protected:
  Command(CLI::App& program, const std::string& name, const std::string& summary);

  /// Example command lines, two spaces before and a line break after each, and a closing line.
  void addExamples(const std::string& examples, const std::string& closing);

  const std::string& name() const { return name_; }
  CLI::App& app() const { return *app_; }

 private:
  std::string name_;
  CLI::App* app_;
};

inline constexpr const char* kNoMemory = "not enough memory to enhance a picture of this size";

/// Returns the result of a library call. The only exception that leaves the library is a failed
/// allocation; it becomes a FileError.
template <typename Call>
int callLibrary(const Call& call) {
  try {
    return call();
  } catch (...) {
    throw FileError(kNoMemory);
  }
}

}  // namespace vx::cli
