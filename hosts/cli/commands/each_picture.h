// The loop over the pictures of a command line.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "hosts/cli/console/progress.h"

namespace vx::cli {

/// One line about a picture on stderr.
void tell(Progress& progress, const std::filesystem::path& input, const std::string& text);

/// Calls `work` with the index of each picture. A FileError or lack of memory is reported in one
/// line and does not stop the others; Cancelled does. Returns the exit code.
int forEachPicture(const std::vector<std::filesystem::path>& inputs,
                   const std::function<void(std::size_t index, Progress& progress)>& work);

}  // namespace vx::cli
