// The picture formats: by content for inputs, by extension for outputs, and what each can hold.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vx::cli {

enum class Format { kJpeg, kPng, kTiff, kWebp, kHeic, kAvif, kJxl };

struct FormatTraits {
  Format format;
  std::string_view name;       // as users write and read it
  std::string_view extension;  // the usual one, with its dot
  int maxDepth;                // bits per sample, 8 or 16
  int fileDepth;               // bits that are kept of 16; as many as maxDepth says, or fewer
  bool alpha;
  int maxAxis;                     // pixels
  bool upright = false;            // EXIF does not say how pixels lie: they are turned
  bool metadataByEncoder = false;  // it is written with the pixels, not added to the finished file
};

const FormatTraits& traits(Format format);

/// All names, as "jpeg, png or tiff".
std::string formatNames();

/// The format that an extension (".JPG", ".tiff"; any case) or a name ("jpeg") stands for.
std::optional<Format> formatByExtension(const std::filesystem::path& path);
std::optional<Format> formatByName(std::string_view name);

/// The format by the first bytes of a file, whatever its name says. Throws FileError for a missing,
/// unreadable or empty file, a folder, a raw file of a camera, and content of any other kind.
Format formatByContent(const std::filesystem::path& path);

}  // namespace vx::cli
