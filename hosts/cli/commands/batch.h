// Runs the jobs of one command line: reads, processes and writes each picture.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "hosts/cli/commands/file_options.h"
#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// What a subcommand does to each picture.
struct Treatment {
  std::string verb;      // for the progress line, as "enhancing"
  std::string settings;  // for --verbose
  int libraryBytes;      // per pixel, beside the raster
  /// Changes the raster in place and adds to the notes. Throws FileError or Cancelled.
  std::function<void(const std::filesystem::path& input, Picture& picture, Progress& progress)>
      apply;
};

/// Processes every picture; a failure is reported in one line on stderr and does not stop the
/// others. Returns the exit code. Throws UsageError before anything has been written.
int runBatch(const FileOptions& options, const Treatment& treatment);

}  // namespace vx::cli
