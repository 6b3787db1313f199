// What became of one picture, as people and as other programs read it.
#pragma once

#include <string>
#include <vector>

#include "hosts/cli/commands/plan.h"
#include "hosts/cli/compare/picture_pair.h"
#include "hosts/settings/setting.h"

namespace vx::cli {

struct Seconds {
  double reading = 0, treating = 0, writing = 0;
};

enum class Status { kDone, kSkipped, kFailed, kCancelled };

struct JobResult {
  Status status = Status::kDone;
  std::string error;  // of kFailed: a complete reason
  std::vector<std::string> chosen, notes;
  bool damaged = false;  // the picture was, and was accepted
  int width = 0, height = 0, depth = 0, resultDepth = 0;
  Seconds seconds;
  double megabytes = 0;  // the most that the process has held so far
  std::string metadataBefore, metadataAfter;
  ShownPair shown;  // on a page of before and after
};

inline JobResult ended(Status status, const std::string& error = "") {
  JobResult result;
  result.status = status;
  result.error = error;
  return result;
}

/// As JSON without line breaks; bytes of a text that are not UTF-8 become U+FFFD. The inverse
/// throws std::exception.
std::string packed(const JobResult& result);
JobResult unpacked(const std::string& text);

/// One line of JSON for other programs.
std::string jsonLine(const Job& job, const JobResult& result, const settings::Texts& settings);

/// Several lines for --verbose; `verb` as "enhancing".
std::string report(const Job& job, const JobResult& result, const std::string& verb,
                   const settings::Texts& settings);

}  // namespace vx::cli
