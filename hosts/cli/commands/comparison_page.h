// The page of --compare: every picture of a run before and after, in one HTML file.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "hosts/cli/commands/job_result.h"
#include "hosts/cli/compare/picture_pair.h"

namespace vx::cli {

/// Holds texts alone. The pictures lie in a scratch file until the page is written, on the same
/// disk and without a name.
class ComparisonPage {
 public:
  /// Throws FileError where the page cannot be written, and UsageError where it would be written
  /// over a picture or result of the run.
  ComparisonPage(const FileOptions& options, const std::string& command,
                 const settings::Texts& settings, const std::vector<Job>& jobs);

  const PairStore& store() const { return store_; }

  /// In the order of the jobs.
  void add(const Job& job, const JobResult& result);

  /// Writes what was added, also after cancelling, or nothing where nothing was. Throws FileError.
  void write() const;

  /// Of pictures that were treated and are not shown.
  bool incomplete() const { return incomplete_; }

 private:
  struct Section {
    std::string before, after;  // of the markup in the scratch file
    Piece pair;
  };
  std::string summary() const;

  std::filesystem::path path_;
  bool force_;
  std::string command_, settings_;
  std::size_t count_;
  PairStore store_;
  std::vector<Section> sections_;
  std::size_t done_ = 0, skipped_ = 0, failed_ = 0;
  bool incomplete_ = false;
};

}  // namespace vx::cli
