// From the command line to a list of jobs, before any picture is opened for work.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hosts/cli/commands/file_options.h"
#include "hosts/cli/pictures/formats.h"

namespace vx::cli {

struct Job {
  std::filesystem::path input;
  std::filesystem::path output;
  Format format{};      // of the output
  std::string refusal;  // why the input cannot be processed; empty: no reason known yet
};

/// The pictures of the command line in the order given; folders are expanded (not into subfolders),
/// sorted by name. Throws UsageError when there are none.
std::vector<std::filesystem::path> expandInputs(const std::vector<std::string>& inputs);

/// One job per picture. Makes the output folder where that is meant. Throws UsageError when the
/// outputs are not clear or two jobs would write one file or overwrite another's input.
std::vector<Job> planJobs(const FileOptions& options);

}  // namespace vx::cli
