// What the header of a JPEG file tells of its coding.
#pragma once

#include <array>
#include <filesystem>
#include <optional>

namespace vx::cli {

struct JpegHeader {
  std::array<int, 64> lumaSteps;  // of the quantisation table, row by row, each at least 1
  bool subsampled;                // the colour has half the width and half the height, or less
  bool progressive;
};

/// Nothing for a file that is no JPEG or whose header is damaged.
std::optional<JpegHeader> jpegHeader(const std::filesystem::path& path);

}  // namespace vx::cli
