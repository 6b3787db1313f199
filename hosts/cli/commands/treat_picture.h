// One picture from its file to the file of the result.
#pragma once

#include <functional>
#include <string>

#include "hosts/cli/commands/job_result.h"
#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// What a subcommand does to each picture.
struct Treatment {
  std::string command;       // as "adjust"
  std::string verb;          // for the progress line, as "enhancing"
  settings::Texts settings;  // those that are not neutral
  int libraryBytes;          // per pixel, beside the raster
  /// Changes the raster in place and adds to the notes. Throws FileError or Cancelled.
  std::function<void(const std::filesystem::path& input, Picture& picture, Progress& progress)>
      apply;
};

/// Reads, treats and writes. What fails or is cancelled is in the result, and nothing was written.
/// @param page   takes the picture before and after; null where no page is made
/// @param claim  called with the bytes that the picture needs before they are taken; may be empty
JobResult treatPicture(const Job& job, const FileOptions& options, const Treatment& treatment,
                       const PairStore* page, const std::function<void(double bytes)>& claim,
                       Progress& progress);

}  // namespace vx::cli
