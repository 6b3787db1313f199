// How strongly a JPEG file was coded, by its own tables; and what that means for the removal of its
// blocks.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vx::cli {

/// The quality, 1 to 100, whose table of luma is nearest to the file's own (equal where an ordinary
/// encoder wrote it): the example table of the standard, scaled as libjpeg does. Nothing for a file
/// that is no JPEG or whose header is damaged.
std::optional<int> jpegQuality(const std::filesystem::path& path);

/// The quality of the round trips that suits the file: its own; nothing where its blocks should be
/// left alone. Says in a note which of it is the case.
std::optional<int> fittingTripQuality(const std::filesystem::path& path,
                                      std::vector<std::string>& notes);

}  // namespace vx::cli
