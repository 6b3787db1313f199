#include "hosts/cli/pictures/jxl_boxes.h"

#include <algorithm>
#include <array>
#include <string>

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::string_view kSignature = "\0\0\0\x0cJXL \r\n\x87\n"sv;
constexpr std::string_view kFileType =
    "\0\0\0\x14"
    "ftypjxl \0\0\0\0jxl "sv;
constexpr std::uint64_t kMostMetadata = std::uint64_t{1} << 30;

std::uint64_t bigEndian(const char* bytes, int count) {
  std::uint64_t value = 0;
  for (int i = 0; i < count; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

void appendBigEndian(std::string& out, std::uint64_t value, int bytes) {
  while (--bytes >= 0) out += static_cast<char>(value >> 8 * bytes & 0xff);
}

void appendBox(std::string& out, std::string_view type, std::string_view data) {
  // The 64-bit form of the length only where it must be: libjxl 0.7 refuses it otherwise.
  const bool large = data.size() + 8 > 0xffffffff;
  appendBigEndian(out, large ? 1 : data.size() + 8, 4);
  out.append(type);
  if (large) appendBigEndian(out, data.size() + 16, 8);
  out.append(data);
}

}  // namespace

JxlMetadata readJxlMetadata(std::istream& file) {
  JxlMetadata metadata;
  file.seekg(0, std::ios::end);
  const auto end = static_cast<std::uint64_t>(std::max<std::streamoff>(0, file.tellg()));
  std::uint64_t at = 0;
  std::array<char, 16> head{};
  while (file.seekg(static_cast<std::streamoff>(at)) && file.read(head.data(), 8)) {
    std::uint64_t size = bigEndian(head.data(), 4), begin = at + 8;
    const std::string_view type(head.data() + 4, 4);
    if (size == 1) {
      if (!file.read(head.data() + 8, 8)) break;
      size = bigEndian(head.data() + 8, 8);
      begin += 8;
    }
    if (size == 0) size = end - at;  // to the end of the file
    if (at + size < begin || size > end - at) break;
    const bool exif = type == "Exif"sv;
    if ((exif || type == "xml "sv) && size < kMostMetadata) {
      std::vector<std::uint8_t> bytes(static_cast<std::size_t>(at + size - begin));
      file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
      if (!file) break;
      // EXIF begins with the number of bytes before its TIFF header.
      std::uint64_t skip = 0;
      if (exif && bytes.size() >= 4) skip = 4 + bigEndian(reinterpret_cast<char*>(bytes.data()), 4);
      if (skip <= bytes.size()) {
        bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(skip));
        (exif ? metadata.exif : metadata.xmp) = std::move(bytes);
      }
    }
    at += size;
  }
  return metadata;
}

void insertJxlMetadata(std::vector<std::uint8_t>& file, std::string_view exif,
                       std::string_view xmp) {
  if (exif.empty() && xmp.empty()) return;
  const std::string_view old(reinterpret_cast<const char*>(file.data()), file.size());
  const bool container = old.starts_with(kSignature);
  std::string out, boxes;
  if (!exif.empty()) appendBox(boxes, "Exif"sv, std::string("\0\0\0\0"sv).append(exif));
  if (!xmp.empty()) appendBox(boxes, "xml "sv, xmp);
  if (container) {
    // In front of the pixels: the last box may run to the end of the file.
    const std::size_t type = kSignature.size() + kFileType.size();
    out = old.substr(0, type);
    out.append(boxes).append(old.substr(std::min(type, old.size())));
  } else {
    out.append(kSignature).append(kFileType).append(boxes);
    appendBox(out, "jxlc"sv, old);
  }
  file.assign(out.begin(), out.end());
}

}  // namespace vx::cli
