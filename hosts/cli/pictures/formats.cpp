#include "hosts/cli/pictures/formats.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/foreign_formats.h"

namespace vx::cli {
namespace {

// The axis limits of JPEG and WebP come from the formats, those of HEIC and AVIF from libvips. The
// others are ours: above, tiles placed in single precision could leave gaps.
constexpr std::array<FormatTraits, 7> kFormats{{
    // name, extension, deepest samples, bits kept of them, alpha, longest axis
    {Format::kJpeg, "jpeg", ".jpg", 8, 8, false, 65535},
    {Format::kPng, "png", ".png", 16, 16, true, 300000},
    {Format::kTiff, "tiff", ".tif", 16, 16, true, 300000},
    {Format::kWebp, "webp", ".webp", 8, 8, true, 16383},
    {Format::kHeic, "heic", ".heic", 16, 10, true, 16384, true, true},
    {Format::kAvif, "avif", ".avif", 16, 12, true, 16384, true, true},
    {Format::kJxl, "jxl", ".jxl", 16, 16, true, 300000, true},
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
  if (head.starts_with("\xff\x0a"sv) || head.starts_with("\0\0\0\x0cJXL \r\n\x87\n"sv))
    return Format::kJxl;
  if (head.size() >= 12 && head.substr(4, 4) == "ftyp"sv) {
    const std::string_view brand = head.substr(8, 4);
    if (brand == "avif"sv || brand == "avis"sv) return Format::kAvif;
    for (const auto heic : {"heic"sv, "heix"sv, "heim"sv, "heis"sv, "hevc"sv, "mif1"sv, "msf1"sv})
      if (brand == heic) return Format::kHeic;
  }
  return std::nullopt;
}

}  // namespace

const FormatTraits& traits(Format format) { return kFormats[static_cast<std::size_t>(format)]; }

std::string formatNames() {
  std::string names;
  for (const FormatTraits& entry : kFormats)
    names.append(&entry == &kFormats.front()  ? ""
                 : &entry == &kFormats.back() ? " or "
                                              : ", ")
        .append(entry.name);
  return names;
}

std::optional<Format> formatByName(std::string_view name) {
  const std::string wanted = lower(name);
  if (wanted == "jpg") return Format::kJpeg;
  if (wanted == "tif") return Format::kTiff;
  if (wanted == "heif") return Format::kHeic;
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
  std::array<char, 32> head{};
  const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  const ssize_t got = regular ? pread(file, head.data(), head.size(), 0) : 0;
  const int error = errno;
  close(file);
  if (!regular) throw FileError(S_ISDIR(status.st_mode) ? "is a folder" : "is not a regular file");
  if (got < 0) throw FileError("cannot read: " + systemReason(error));
  if (got == 0) throw FileError("is empty");
  const std::string_view bytes(head.data(), static_cast<std::size_t>(got));
  const auto format = formatByMagic(bytes);
  const std::string foreign = !format || *format == Format::kTiff ? foreignFormat(path, bytes) : "";
  if (!foreign.empty()) throw FileError(foreign);
  if (!format) throw FileError("is no picture of a format that is read here: " + formatNames());
  return *format;
}

}  // namespace vx::cli
