// What the head of a PNG says and its decoder does not tell.
#pragma once

#include <cstdint>
#include <filesystem>

namespace vx::cli {

struct PngHeader {
  int bitDepth = 8;  // per sample, or per index of a palette
  bool palette = false;
  std::uint32_t frames = 1;  // more where it moves
};

/// What cannot be read is left as it stands above.
PngHeader pngHeader(const std::filesystem::path& path);

}  // namespace vx::cli
