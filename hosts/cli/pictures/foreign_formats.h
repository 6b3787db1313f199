// Names for files that are no picture this program reads, so that a refusal says what they are.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vx::cli {

/// Why a file that begins with `head` (32 bytes, less of a shorter file) is not treated, as "is a
/// GIF picture, ..."; empty where nothing is known against it. A raw file of a camera may begin
/// like a TIFF, and is known by the extension then.
std::string foreignFormat(const std::filesystem::path& path, std::string_view head);

}  // namespace vx::cli
