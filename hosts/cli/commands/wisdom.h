// The plans that FFTW made for the non-local filter, kept in the user's cache folder: making them
// takes seconds, and kept ones give the same result from run to run on a machine.
#pragma once

#include <filesystem>
#include <string>

namespace vx::cli {

/// FFTW's "wisdom" belongs to the process, and the library's plans are in it. A missing, foreign or
/// damaged file counts as none; if it cannot be written, the next run plans again. Calls must not
/// overlap with each other or with planning in the library.
class Wisdom {
 public:
  /// Takes in what the file holds.
  Wisdom();
  /// Replaces the file if plans have been made since.
  void keep() const;

 private:
  std::filesystem::path file_;  // empty: no cache folder
  std::string known_;
};

}  // namespace vx::cli
