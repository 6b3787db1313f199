// The four picture formats: by content for inputs, by extension for outputs, and what each can
// hold.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vx::cli {

enum class Format { kJpeg, kPng, kTiff, kWebp };

struct FormatTraits {
  Format format;
  std::string_view name;       // as users write and read it
  std::string_view extension;  // the usual one, with its dot
  int maxDepth;                // bits per sample
  bool alpha;
  int maxAxis;  // pixels
};

const FormatTraits& traits(Format format);

/// The format that an extension (".JPG", ".tiff"; any case) or a name ("jpeg") stands for.
std::optional<Format> formatByExtension(const std::filesystem::path& path);
std::optional<Format> formatByName(std::string_view name);

/// The format by the first bytes of a file, whatever its name says. Throws FileError for a missing,
/// unreadable or empty file, a folder, and content that is none of the four.
Format formatByContent(const std::filesystem::path& path);

}  // namespace vx::cli
