// How a file codes its pixels, so that a result in the same format is coded alike.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "hosts/cli/pictures/formats.h"

namespace vx::cli {

/// Nothing where the format leaves it open: the writer then takes what is usual.
struct Coding {
  std::optional<int> quality;                  // of all but PNG and TIFF
  std::optional<bool> subsampled;              // JPEG: colour of half the width and height
  bool progressive = false;                    // JPEG
  std::optional<bool> lossless;                // WebP and JPEG XL
  std::optional<std::string> tiffCompression;  // none, lzw, deflate, packbits or zstd
  bool tiffPredictor = true;
  bool bigTiff = false;  // offsets of 64 bits

  bool operator==(const Coding&) const = default;
};

/// The coding of a file of `format`. What cannot be read of it stays open. A JPEG with its colour
/// at half the width alone counts as not subsampled, which the writers here cannot make: nothing is
/// lost. Lossy compressions inside a TIFF count as deflate.
Coding codingOf(const std::filesystem::path& path, Format format);

/// `wanted` where it says something, else `source`.
Coding chooseCoding(const Coding& source, const Coding& wanted);

}  // namespace vx::cli
