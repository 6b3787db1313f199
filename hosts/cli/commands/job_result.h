// What became of one picture, as people and as other programs read it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "hosts/cli/commands/plan.h"

namespace vx::cli {

struct Seconds {
  double reading = 0, treating = 0, writing = 0;
};

struct JobResult {
  std::string status = "done";  // or skipped, failed, cancelled
  std::string error;            // of failed: a complete reason
  std::vector<std::string> chosen, notes;
  int width = 0, height = 0, depth = 0, resultDepth = 0;
  Seconds seconds;
  double megabytes = 0;  // the most that the process has held so far
  std::string metadataBefore, metadataAfter;
};

inline JobResult ended(const std::string& status, const std::string& error = "") {
  JobResult result;
  result.status = status;
  result.error = error;
  return result;
}

/// As JSON without line breaks; bytes of a text that are not UTF-8 become U+FFFD. The inverse
/// throws std::exception.
std::string packed(const JobResult& result);
JobResult unpacked(const std::string& text);

using SettingTexts = std::map<std::string, std::string>;

/// One line of JSON for other programs.
std::string jsonLine(const Job& job, const JobResult& result, const SettingTexts& settings);

/// Several lines for --verbose; `verb` as "enhancing", `settings` in words.
std::string report(const Job& job, const JobResult& result, const std::string& verb,
                   const std::string& settings);

}  // namespace vx::cli
