#include "hosts/cli/pictures/parts/jpeg_segments.h"

#include <algorithm>

namespace vx::cli {
namespace {

constexpr std::uint8_t kStartOfImage = 0xd8, kEndOfImage = 0xd9, kStartOfScan = 0xda;

// Markers without a segment: TEM, restarts and the start of a picture.
bool standsAlone(std::uint8_t marker) {
  return marker == 0x01 || (marker >= 0xd0 && marker <= kStartOfImage);
}

// The place of the next 0xff before a marker, from `at` on; in coded data 0xff 0x00 is a sample and
// restarts belong to it.
std::size_t behindScan(Bytes file, std::size_t at) {
  for (; at + 1 < file.size(); ++at) {
    if (file[at] != 0xff) continue;
    const std::uint8_t next = file[at + 1];
    if (next != 0 && next != 0xff && !standsAlone(next)) return at;
  }
  return file.size();
}

}  // namespace

JpegLayout jpegLayout(Bytes file) {
  JpegLayout layout;
  layout.end = file.size();
  if (file.size() < 4 || file[0] != 0xff || file[1] != kStartOfImage) return layout;
  bool scanned = false;
  std::size_t at = 2;
  while (at + 2 <= file.size()) {
    if (file[at] != 0xff) return layout;
    const std::uint8_t marker = file[at + 1];
    if (marker == 0xff) {  // fill
      ++at;
      continue;
    }
    at += 2;
    if (marker == kEndOfImage) {
      layout.end = at;
      return layout;
    }
    if (standsAlone(marker)) continue;
    if (at + 2 > file.size()) return layout;
    const std::size_t length = big16(&file[at]);
    if (length < 2 || length > file.size() - at) return layout;
    if (!scanned && marker != kStartOfScan)
      layout.segments.push_back({marker, file.subspan(at + 2, length - 2)});
    at += length;
    if (marker == kStartOfScan) {
      scanned = true;
      at = behindScan(file, at);
    }
  }
  return layout;
}

std::string jpegSegment(std::uint8_t marker, std::string_view payload) {
  std::string segment{'\xff', static_cast<char>(marker)};
  appendBig16(segment, static_cast<std::uint32_t>(payload.size() + 2));
  return segment.append(payload);
}

void replaceMetadataSegments(std::vector<std::uint8_t>& file, std::string_view segments) {
  const JpegLayout layout = jpegLayout(file);
  if (layout.segments.empty()) return;
  // Each segment starts four bytes before its payload.
  const auto place = [&file](const JpegSegment& segment) {
    return static_cast<std::size_t>(segment.payload.data() - file.data()) - 4;
  };
  std::vector<std::uint8_t> result;
  result.reserve(file.size() + segments.size());
  std::size_t from = 0;
  const auto copyTo = [&](std::size_t to) {
    result.insert(result.end(), file.begin() + static_cast<std::ptrdiff_t>(from),
                  file.begin() + static_cast<std::ptrdiff_t>(to));
    from = to;
  };
  const JpegSegment& first = layout.segments.front();
  copyTo(first.marker == marker::kApp0 ? place(first) + 4 + first.payload.size() : 2);
  const Bytes added = bytesOf(segments);
  result.insert(result.end(), added.begin(), added.end());
  for (const JpegSegment& segment : layout.segments) {
    if (segment.marker != marker::kApp1) continue;
    copyTo(place(segment));
    from += 4 + segment.payload.size();
  }
  copyTo(file.size());
  file = std::move(result);
}

}  // namespace vx::cli
