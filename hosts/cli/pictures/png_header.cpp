#include "hosts/cli/pictures/png_header.h"

#include <array>
#include <fstream>
#include <string_view>

namespace vx::cli {
namespace {

std::uint32_t big32(const char* bytes) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
  return value;
}

}  // namespace

PngHeader pngHeader(const std::filesystem::path& path) {
  PngHeader header;
  std::ifstream file(path, std::ios::binary);
  std::array<char, 26> first;  // the signature; of IHDR length, type, width, height, depth, colours
  if (!file.read(first.data(), first.size())) return header;
  header.bitDepth = static_cast<unsigned char>(first[24]);
  header.palette = first[25] == 3;
  file.seekg(33);
  std::array<char, 12> head;  // length and type of a chunk, and the frames of acTL
  while (file.read(head.data(), head.size())) {
    const std::string_view type(head.data() + 4, 4);
    if (type == "acTL") header.frames = big32(head.data() + 8);
    if (type == "acTL" || type == "IDAT") break;  // acTL comes before the pixels
    file.seekg(std::streamoff{big32(head.data())}, std::ios::cur);
  }
  return header;
}

}  // namespace vx::cli
