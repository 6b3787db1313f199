#include "hosts/cli/pictures/png_chunks.h"

#include <cstdio>
#include <string>

#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

void appendBig32(std::string& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(value >> shift & 0xff);
}

std::uint32_t big32(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | bytes[3];
}

// CRC-32 of ISO 3309, bit by bit: metadata is small.
std::uint32_t crc32(std::string_view bytes) {
  std::uint32_t crc = 0xffffffff;
  for (const char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320U : 0U);
  }
  return ~crc;
}

void insertChunk(std::vector<std::uint8_t>& file, std::string_view type, std::string_view data) {
  std::size_t at = 8;  // behind the signature; each chunk is length, type, data, CRC
  while (at + 12 <= file.size() &&
         std::string_view(reinterpret_cast<char*>(&file[at + 4]), 4) != "IDAT"sv) {
    at += std::size_t{12} + big32(&file[at]);
  }
  if (at + 12 > file.size()) throw FileError("cannot write: PNG without pixels");
  std::string chunk;
  chunk.reserve(data.size() + 12);
  appendBig32(chunk, static_cast<std::uint32_t>(data.size()));
  chunk.append(type).append(data);
  appendBig32(chunk, crc32(std::string_view(chunk).substr(4)));
  file.insert(file.begin() + static_cast<std::ptrdiff_t>(at), chunk.begin(), chunk.end());
}

}  // namespace

void insertPngExif(std::vector<std::uint8_t>& file, std::string_view exif) {
  insertChunk(file, "eXIf", exif);
}

void insertPngXmp(std::vector<std::uint8_t>& file, std::string_view packet) {
  // Keyword; not compressed, no method; no language; no translated keyword.
  insertChunk(file, "iTXt", std::string("XML:com.adobe.xmp\0\0\0\0\0"sv).append(packet));
}

void insertPngIptc(std::vector<std::uint8_t>& file, std::string_view iptc) {
  std::string resource("8BIM\x04\x04\0\0"sv);
  appendBig32(resource, static_cast<std::uint32_t>(iptc.size()));
  resource.append(iptc);
  if (iptc.size() % 2 != 0) resource += '\0';

  char digits[16];
  std::snprintf(digits, sizeof digits, "%8zu", resource.size());
  std::string text("Raw profile type iptc\0\niptc\n"sv);
  text += digits;
  constexpr std::size_t kBytesPerLine = 36;
  for (std::size_t i = 0; i < resource.size(); ++i) {
    if (i % kBytesPerLine == 0) text += '\n';
    std::snprintf(digits, sizeof digits, "%02x",
                  static_cast<unsigned>(static_cast<unsigned char>(resource[i])));
    text += digits;
  }
  text += '\n';
  insertChunk(file, "tEXt", text);
}

}  // namespace vx::cli
