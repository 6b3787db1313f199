#include "hosts/cli/pictures/png_chunks.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::size_t kSignature = 8;

// CRC-32 of ISO 3309.
std::uint32_t crc32(std::string_view bytes) {
  static constexpr auto kTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
      table[i] = i;
      for (int bit = 0; bit < 8; ++bit)
        table[i] = table[i] >> 1 ^ (table[i] & 1 ? 0xedb88320U : 0U);
    }
    return table;
  }();
  std::uint32_t crc = 0xffffffff;
  for (const char c : bytes) crc = crc >> 8 ^ kTable[(crc ^ static_cast<unsigned char>(c)) & 0xff];
  return ~crc;
}

// XMP and the profiles that older programs put into texts, which Exiv2 and libvips read.
bool isMetadata(std::string_view text) {
  static constexpr std::array kKeywords{"XML:com.adobe.xmp"sv,     "Raw profile type exif"sv,
                                        "Raw profile type APP1"sv, "Raw profile type iptc"sv,
                                        "Raw profile type xmp"sv,  "Raw profile type icc"sv};
  const std::string_view keyword = text.substr(0, text.find('\0'));
  return std::find(kKeywords.begin(), kKeywords.end(), keyword) != kKeywords.end();
}

struct Chunk {
  std::string_view type, data;
  std::uint32_t crc;

  bool sound() const { return crc32({type.data(), type.size() + data.size()}) == crc; }
};

enum class Place { kStart, kBehindPalette, kBehindPixels };

void take(const Chunk& chunk, Place place, PngContent& content) {
  if (chunk.type == "tEXt" || chunk.type == "zTXt" || chunk.type == "iTXt") {
    if (isMetadata(chunk.data)) return;
    if (chunk.sound())
      content.texts.push_back(pngChunk(chunk.type, chunk.data));
    else
      content.damagedText = true;
  }
  const auto keep = [&chunk](std::string_view type, std::size_t size, std::string& text) {
    if (chunk.type == type && chunk.data.size() == size && text.empty() && chunk.sound())
      text = chunk.data;
  };
  if (place == Place::kBehindPixels) return;
  keep("pHYs", 9, content.phys);
  if (place == Place::kBehindPalette) return;
  keep("cICP", 4, content.cicp);
  keep("gAMA", 4, content.gama);
  keep("cHRM", 32, content.chrm);
  keep("sRGB", 1, content.srgb);
}

// Calls visit(type, place, size) for each whole chunk up to the pixels; returns their place.
template <typename Visit>
std::size_t forEachChunk(const std::vector<std::uint8_t>& file, const Visit& visit) {
  std::size_t at = kSignature;
  while (at + 12 <= file.size()) {
    const std::string_view type = textOf(Bytes(file).subspan(at + 4, 4));
    if (type == "IDAT") return at;
    const std::size_t size = std::size_t{12} + big32(&file[at]);
    visit(type, at, size);
    at += size;
  }
  throw FileError("cannot write: PNG without pixels");
}

}  // namespace

PngContent pngContent(Bytes file) {
  PngContent content;
  Place place = Place::kStart;
  for (std::size_t at = kSignature; at + 12 <= file.size();) {
    const std::size_t length = big32(&file[at]);
    if (length > file.size() - at - 12) break;
    const std::string_view typed = textOf(file.subspan(at + 4, length + 4));
    const Chunk chunk{
        .type = typed.substr(0, 4), .data = typed.substr(4), .crc = big32(&file[at + 8 + length])};
    if (chunk.type == "PLTE") place = std::max(place, Place::kBehindPalette);
    if (chunk.type == "IDAT") place = Place::kBehindPixels;
    take(chunk, place, content);
    at += 12 + length;
  }
  return content;
}

std::string pngChunk(std::string_view type, std::string_view data) {
  std::string chunk;
  chunk.reserve(data.size() + 12);
  appendBig32(chunk, static_cast<std::uint32_t>(data.size()));
  chunk.append(type).append(data);
  appendBig32(chunk, crc32(std::string_view(chunk).substr(4)));
  return chunk;
}

void insertPngChunks(std::vector<std::uint8_t>& file, std::string_view chunks) {
  const std::size_t at = forEachChunk(file, [](std::string_view, std::size_t, std::size_t) {});
  file.insert(file.begin() + static_cast<std::ptrdiff_t>(at), chunks.begin(), chunks.end());
}

void removePngChunks(std::vector<std::uint8_t>& file, std::string_view type) {
  std::vector<std::pair<std::size_t, std::size_t>> found;
  forEachChunk(file, [&](std::string_view other, std::size_t at, std::size_t size) {
    if (other == type) found.emplace_back(at, size);
  });
  for (auto chunk = found.rbegin(); chunk != found.rend(); ++chunk) {
    const auto from = file.begin() + static_cast<std::ptrdiff_t>(chunk->first);
    file.erase(from, from + static_cast<std::ptrdiff_t>(chunk->second));
  }
}

std::string pngTextChunk(std::string_view keyword, std::string_view text) {
  // A text ends at the first zero byte.
  text = text.substr(0, text.find('\0'));
  const bool utf8 = g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != 0;
  const std::string_view between = utf8 ? "\0\0\0\0\0"sv : "\0"sv;
  return pngChunk(utf8 ? "iTXt" : "tEXt", std::string(keyword).append(between).append(text));
}

std::string pngXmpChunk(std::string_view packet) {
  // Keyword; not compressed, no method; no language; no translated keyword.
  return pngChunk("iTXt", std::string("XML:com.adobe.xmp\0\0\0\0\0"sv).append(packet));
}

std::string pngIptcChunk(std::string_view iptc) {
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
  return pngChunk("tEXt", text);
}

}  // namespace vx::cli
