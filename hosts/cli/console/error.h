// Errors of one file, errors of the command line, and cancelling. Each text is a complete reason,
// written for people, on one line.
#pragma once

#include <stdexcept>
#include <string>

namespace vx::cli {

/// One picture could not be treated; the others go on. Exit code 1.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The command line or a preset is wrong; nothing has been done. Exit code 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Interrupted by a signal. Exit code 130.
class Cancelled : public std::runtime_error {
 public:
  Cancelled() : std::runtime_error("cancelled") {}
};

inline constexpr int kExitDone = 0;
inline constexpr int kExitSomeFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitCancelled = 130;
inline constexpr const char* kExitCodesHelp =
    "Exit codes: 0 done, 1 some picture failed, 2 wrong usage, 130 cancelled.";

/// The text of an errno, for "cannot write: No space left on device".
std::string systemReason(int error);

}  // namespace vx::cli
