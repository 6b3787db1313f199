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
  std::filesystem::path output;  // kStandardStream: standard output
  Format format{};               // of the output
  std::string refusal;           // why the input cannot be processed; empty: no reason known yet
  bool skip = false;             // the result exists, and that is enough
  bool recodes = false;          // the result has the format of the input
  bool inPlace = false;          // the result replaces the input

  bool toStandardOutput() const { return output == kStandardStream; }
};

/// Folders made for a run. Those that are still empty at its end go again.
class NewFolders {
 public:
  NewFolders() = default;
  NewFolders(NewFolders&&) = default;
  NewFolders& operator=(NewFolders&&) = default;
  ~NewFolders();

  /// Makes the folder and what is missing above it. Throws UsageError.
  void make(const std::filesystem::path& folder);

 private:
  std::vector<std::filesystem::path> made_;  // from the top down
};

struct Plan {
  NewFolders folders;
  std::vector<Job> jobs;
};

/// A picture of the command line, and where below the output folder its result belongs.
struct Input {
  std::filesystem::path path;
  std::filesystem::path subfolder;
};

/// The pictures of the command line in the order given; folders are expanded, sorted by name.
/// Results of an earlier run with the same output folder or suffix are left out of them. Standard
/// input is read into memory. Throws UsageError when there are none.
std::vector<Input> expandInputs(const FileOptions& options);

/// One job per picture. Makes the output folders where they are meant. Throws UsageError when the
/// outputs are not clear or two jobs would write one file or overwrite another's input.
Plan planJobs(const FileOptions& options);

}  // namespace vx::cli
