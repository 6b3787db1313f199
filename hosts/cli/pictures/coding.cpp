#include "hosts/cli/pictures/coding.h"

#include <tiffio.h>

#include <cstdint>
#include <fstream>
#include <memory>

#include "hosts/auto/auto_jpeg.h"
#include "hosts/cli/pictures/jpeg_header.h"

namespace vx::cli {
namespace {

Coding ofJpeg(const std::filesystem::path& path) {
  Coding coding;
  const auto header = jpegHeader(path);
  if (!header) return coding;
  const int quality = vxAutoJpegQuality(header->lumaSteps.data());
  if (quality > 0) coding.quality = quality;
  coding.subsampled = header->subsampled;
  coding.progressive = header->progressive;
  return coding;
}

const char* tiffCompression(int tag) {
  switch (tag) {
    case COMPRESSION_NONE:
      return "none";
    case COMPRESSION_LZW:
      return "lzw";
    case COMPRESSION_PACKBITS:
      return "packbits";
    case COMPRESSION_ZSTD:
      return "zstd";
    default:
      return "deflate";
  }
}

Coding ofTiff(const std::filesystem::path& path) {
  Coding coding;
  // What is wrong with a file is told when it is read. "m": not mapped into memory, where a file
  // that shrinks would be fatal.
  const TIFFErrorHandler errors = TIFFSetErrorHandler(nullptr);
  const TIFFErrorHandler warnings = TIFFSetWarningHandler(nullptr);
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> file(TIFFOpen(path.c_str(), "rm"), TIFFClose);
  TIFFSetErrorHandler(errors);
  TIFFSetWarningHandler(warnings);
  if (!file) return coding;
  coding.bigTiff = TIFFIsBigTIFF(file.get()) != 0;
  std::uint16_t compression = 0, predictor = 0;
  if (TIFFGetField(file.get(), TIFFTAG_COMPRESSION, &compression) == 1) {
    coding.tiffCompression = tiffCompression(compression);
    coding.tiffPredictor = TIFFGetField(file.get(), TIFFTAG_PREDICTOR, &predictor) == 1 &&
                           predictor == PREDICTOR_HORIZONTAL;
  }
  return coding;
}

// The chunk with the pixels is named by its coding.
Coding ofWebp(const std::filesystem::path& path) {
  Coding coding;
  std::ifstream file(path, std::ios::binary);
  file.seekg(12);
  unsigned char head[8];
  while (file.read(reinterpret_cast<char*>(head), sizeof head)) {
    const std::string name(head, head + 4);
    if (name == "VP8L" || name == "VP8 ") {
      coding.lossless = name == "VP8L";
      break;
    }
    const std::uint32_t size =
        head[4] | head[5] << 8 | head[6] << 16 | static_cast<std::uint32_t>(head[7]) << 24;
    file.seekg(static_cast<std::streamoff>(size) + (size & 1), std::ios::cur);
  }
  return coding;
}

}  // namespace

Coding codingOf(const std::filesystem::path& path, Format format) {
  switch (format) {
    case Format::kJpeg:
      return ofJpeg(path);
    case Format::kTiff:
      return ofTiff(path);
    case Format::kWebp:
      return ofWebp(path);
    case Format::kPng:
    case Format::kHeic:
    case Format::kAvif:
    case Format::kJxl:
      break;
  }
  return {};
}

Coding chooseCoding(const Coding& source, const Coding& wanted) {
  Coding coding = source;
  if (wanted.quality) {
    coding.quality = wanted.quality;
    coding.lossless.reset();
  }
  if (wanted.subsampled) coding.subsampled = wanted.subsampled;
  if (wanted.lossless) coding.lossless = wanted.lossless;
  if (wanted.tiffCompression) {
    coding.tiffCompression = wanted.tiffCompression;
    coding.tiffPredictor = true;
  }
  return coding;
}

}  // namespace vx::cli
