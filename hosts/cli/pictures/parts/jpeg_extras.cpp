#include "hosts/cli/pictures/parts/jpeg_extras.h"

#include <algorithm>

#include "hosts/cli/pictures/parts/motion_photo.h"
#include "hosts/cli/pictures/parts/tiff_numbers.h"

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::string_view kExif = "Exif\0\0"sv;
constexpr std::string_view kMultiPicture = "MPF\0"sv;
constexpr std::string_view kIsoGainMap = "urn:iso:std:iso:ts:21496:-1\0"sv;

// Files list up to about a dozen.
constexpr std::size_t kMostPictures = 128;

struct ListedPicture {
  Range range;  // in the file
  std::size_t type;
};

// The entries behind the first of CIPA DC-007 "Multi-Picture Format"; offsets count from the header
// of its TIFF structure.
std::vector<ListedPicture> listedPictures(Bytes file, const JpegSegment& segment) {
  const Bytes structure = segment.payload.subspan(kMultiPicture.size());
  const TiffNumbers numbers(structure);
  const auto u16 = [&numbers](std::size_t at) { return numbers.number(at, 2); };
  const auto u32 = [&numbers](std::size_t at) { return numbers.number(at, 4); };
  if (!numbers.valid()) return {};
  const auto origin = static_cast<std::size_t>(structure.data() - file.data());
  const std::size_t directory = u32(4), tags = u16(directory);
  std::vector<ListedPicture> pictures;
  for (std::size_t i = 0; i < std::min<std::size_t>(tags, 64); ++i) {
    const std::size_t tag = directory + 2 + 12 * i;
    if (u16(tag) != 0xb002) continue;
    constexpr std::size_t kEntry = 16;
    const std::size_t entries = u32(tag + 8);
    const std::size_t count = std::min(u32(tag + 4), kEntry * kMostPictures) / kEntry;
    for (std::size_t e = 1; e < count; ++e) {
      const std::size_t at = entries + kEntry * e;
      const std::size_t type = u32(at) & 0xffffff, size = u32(at + 4);
      pictures.push_back({{origin + u32(at + 8), size}, type});
    }
  }
  return pictures;
}

bool showsGainMap(Bytes picture) {
  const std::string_view head = textOf(picture.first(std::min<std::size_t>(picture.size(), 65536)));
  return head.find("hdr-gain-map") != head.npos || head.find("HDRGainMap") != head.npos ||
         head.find(kIsoGainMap) != head.npos;
}

// Zeros, ones and line ends behind a picture are no data.
bool isPadding(std::uint8_t byte) {
  return byte == 0 || byte == 0xff || byte == '\n' || byte == '\r' || byte == ' ';
}

std::size_t unexplained(Bytes trailer, std::vector<Range> ranges) {
  std::sort(ranges.begin(), ranges.end(),
            [](const Range& a, const Range& b) { return a.start < b.start; });
  ranges.push_back({trailer.size(), 0});
  std::size_t at = 0, sum = 0;
  for (const Range& range : ranges) {
    if (range.start > at) {
      const Bytes gap = trailer.subspan(at, range.start - at);
      if (!std::all_of(gap.begin(), gap.end(), isPadding)) sum += gap.size();
    }
    at = std::max(at, range.start + range.size);
  }
  return sum;
}

}  // namespace

JpegExtras jpegExtras(Bytes file, const JpegLayout& layout, const Exiv2::XmpData& xmp) {
  const Bytes trailer = file.subspan(layout.end);
  Claims claims = claimsOf(xmp, trailer);
  JpegExtras extras;
  bool shown = false;  // a gain map that is there
  bool listed = false;
  for (const JpegSegment& segment : layout.segments) {
    shown = shown || segment.is(marker::kApp2, kIsoGainMap);
    if (listed || !segment.is(marker::kApp2, kMultiPicture)) continue;
    listed = true;
    for (const auto& [range, type] : listedPictures(file, segment)) {
      if (range.start < layout.end || range.start > file.size() ||
          range.size > file.size() - range.start)
        continue;
      const bool gainMap = showsGainMap(file.subspan(range.start, range.size));
      shown = shown || gainMap;
      extras.previews += type >> 16 == 1 && !gainMap;
      extras.pictures += type >> 16 != 1 && !gainMap;
      claims.otherRanges.push_back({range.start - layout.end, range.size});
    }
  }
  if (claims.videoRange.size > 0) {
    const Bytes video = trailer.subspan(claims.videoRange.start, claims.videoRange.size);
    extras.video.assign(video.begin(), video.end());
  }
  const bool data = std::any_of(claims.otherRanges.begin(), claims.otherRanges.end(),
                                [](const Range& range) { return range.size > 0; });
  extras.gainMap = shown || (claims.gainMap && data);
  // Without its own marks a gain map cannot be told from another picture of the list.
  if (extras.gainMap && !shown && extras.pictures > 0) --extras.pictures;
  extras.emptyClaims =
      (claims.video && extras.video.empty()) || (claims.gainMap && !extras.gainMap);
  claims.otherRanges.push_back(claims.videoRange);
  extras.unknownBytes = unexplained(trailer, claims.otherRanges);
  return extras;
}

std::string joinedExif(const JpegLayout& layout) {
  std::string joined;
  int parts = 0;
  for (const JpegSegment& segment : layout.segments) {
    if (!segment.is(marker::kApp1, kExif)) continue;
    const std::string_view part = textOf(segment.payload).substr(kExif.size());
    const bool begins = TiffNumbers(bytesOf(part)).valid();
    if (begins == (parts > 0)) break;  // a block of its own, or none at all
    joined += part;
    ++parts;
  }
  return parts > 1 ? joined : std::string();
}

}  // namespace vx::cli
