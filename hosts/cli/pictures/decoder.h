// Opens a picture file with libvips, strictly or as far as it can be read.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>
#include <vips/vips8>

#include "hosts/cli/pictures/formats.h"

namespace vx::cli {

enum class Strictness {
  kWhole,   ///< where the decoder had to guess, reading fails
  kLenient  ///< what is missing is grey, or what the decoder made of it
};

/// The pixels are decoded when they are asked for, from top to bottom. Throws vips::VError for what
/// cannot be decoded, FileError where libvips lacks a decoder for the format.
/// @param jpegShrink  1, 2, 4 or 8: the decoder of JPEG reduces by it
vips::VImage openPicture(const std::filesystem::path& path, Format format, Strictness strictness,
                         int jpegShrink);

/// Whether the decoder prints to standard error what libvips is told anyway: libjxl, libde265 and
/// dav1d.
bool decoderPrints(Format format);

/// A field of the header that holds bytes; empty where it is missing.
std::vector<std::uint8_t> headerBlob(const vips::VImage& image, const char* name);

/// The XMP packet, wherever libvips puts it for the format; empty where there is none.
std::vector<std::uint8_t> xmpOf(const vips::VImage& image);

}  // namespace vx::cli
