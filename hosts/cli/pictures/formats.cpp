#include "hosts/cli/pictures/formats.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <system_error>

#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

// The axis limits of JPEG and WebP come from the formats. The one of PNG and TIFF is ours: above
// it, tiles placed in single precision could leave gaps.
constexpr std::array<FormatTraits, 4> kFormats{{
    {Format::kJpeg, "jpeg", ".jpg", 8, false, 65535},
    {Format::kPng, "png", ".png", 16, true, 300000},
    {Format::kTiff, "tiff", ".tif", 16, true, 300000},
    {Format::kWebp, "webp", ".webp", 8, true, 16383},
}};

std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

std::optional<Format> formatByMagic(std::string_view head) {
  using std::string_view_literals::operator""sv;
  if (head.starts_with("\xff\xd8\xff"sv)) return Format::kJpeg;
  if (head.starts_with("\x89PNG\r\n\x1a\n"sv)) return Format::kPng;
  for (const auto magic : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
    if (head.starts_with(magic)) return Format::kTiff;
  }
  if (head.starts_with("RIFF"sv) && head.size() >= 12 && head.substr(8, 4) == "WEBP"sv) {
    return Format::kWebp;
  }
  return std::nullopt;
}

}  // namespace

std::string systemReason(int error) { return std::generic_category().message(error); }

const FormatTraits& traits(Format format) { return kFormats[static_cast<std::size_t>(format)]; }

std::optional<Format> formatByName(std::string_view name) {
  const std::string wanted = lower(name);
  if (wanted == "jpg") return Format::kJpeg;
  if (wanted == "tif") return Format::kTiff;
  for (const FormatTraits& entry : kFormats) {
    if (wanted == entry.name) return entry.format;
  }
  return std::nullopt;
}

std::optional<Format> formatByExtension(const std::filesystem::path& path) {
  const std::string extension = path.extension().string();
  return extension.empty() ? std::nullopt : formatByName(std::string_view(extension).substr(1));
}

Format formatByContent(const std::filesystem::path& path) {
  // O_NONBLOCK: a FIFO named by mistake must not hang before it is refused.
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) throw FileError("cannot open: " + systemReason(errno));
  struct stat status {};
  std::array<char, 16> head{};
  const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  const ssize_t got = regular ? pread(file, head.data(), head.size(), 0) : 0;
  const int error = errno;
  close(file);
  if (!regular) throw FileError(S_ISDIR(status.st_mode) ? "is a folder" : "is not a regular file");
  if (got < 0) throw FileError("cannot read: " + systemReason(error));
  if (got == 0) throw FileError("is empty");
  const auto format = formatByMagic({head.data(), static_cast<std::size_t>(got)});
  if (!format) throw FileError("is not a JPEG, PNG, TIFF or WebP picture");
  return *format;
}

}  // namespace vx::cli
