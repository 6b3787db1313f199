// The quantisation table of a JPEG file.
#pragma once

#include <array>
#include <filesystem>
#include <optional>

namespace vx::cli {

using JpegTable = std::array<int, 64>;

/// The steps of the luma, row by row, each at least 1. Nothing for a file that is no JPEG or whose
/// header is damaged.
std::optional<JpegTable> jpegTable(const std::filesystem::path& path);

}  // namespace vx::cli
