#include "hosts/cli/pictures/parts/motion_photo.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace vx::cli {
namespace {

constexpr std::string_view kCamera = "http://ns.google.com/photos/1.0/camera/";
constexpr std::string_view kContainer = "http://ns.google.com/photos/1.0/container/";
constexpr std::string_view kGainMap = "http://ns.adobe.com/hdr-gain-map/1.0/";
constexpr std::string_view kAppleGainMap = "http://ns.apple.com/HDRGainMap/1.0/";
constexpr std::string_view kDirectory = "Directory";

// Files choose their prefixes themselves.
std::string namespaceOf(const Exiv2::Xmpdatum& datum) {
  try {
    return Exiv2::XmpProperties::ns(datum.groupName());
  } catch (const std::exception&) {
    return {};
  }
}

bool isVideoClaim(const Exiv2::Xmpdatum& datum) {
  const std::string name = datum.tagName();
  return (name.starts_with("MicroVideo") || name.starts_with("MotionPhoto")) &&
         namespaceOf(datum) == kCamera;
}

bool isGainMapClaim(const Exiv2::Xmpdatum& datum) {
  const std::string space = namespaceOf(datum);
  return space == kGainMap || space == kAppleGainMap;
}

bool inDirectory(const Exiv2::Xmpdatum& datum) {
  const std::string name = datum.tagName();
  return name.starts_with(kDirectory) && namespaceOf(datum) == kContainer;
}

// A number of bytes; 0 for what is none.
std::size_t number(const std::string& text) {
  std::uint32_t value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end ? value : 0;
}

// The n of "Directory[n]" or of anything inside it; 0 for the directory itself.
std::size_t indexOf(const std::string& name) {
  if (!name.starts_with("Directory[")) return 0;
  return number(name.substr(10, name.find(']') - 10));
}

struct Item {
  std::string semantic;
  std::size_t length = 0, padding = 0;
};

// By their number, in the order of the file; the picture itself comes first.
std::map<std::size_t, Item> itemsOf(const Exiv2::XmpData& xmp) {
  std::map<std::size_t, Item> items;
  for (const Exiv2::Xmpdatum& datum : xmp) {
    if (!inDirectory(datum)) continue;
    const std::string name = datum.tagName();
    const std::size_t index = indexOf(name);
    if (index == 0) continue;
    Item& item = items[index];
    if (name.ends_with(":Semantic")) item.semantic = datum.toString();
    if (name.ends_with(":Length")) item.length = number(datum.toString());
    if (name.ends_with(":Padding")) item.padding = number(datum.toString());
  }
  return items;
}

bool inside(const Range& range, Bytes trailer) {
  return range.size > 0 && range.start < trailer.size() &&
         range.size <= trailer.size() - range.start;
}

bool isVideo(const Range& range, Bytes trailer) {
  return inside(range, trailer) && range.size >= 12 &&
         textOf(trailer.subspan(range.start + 4, 4)) == "ftyp";
}

// The directory counts from the picture on; some writers put data of their own before or behind
// what it lists, so that counting from the end may be what fits.
void findItems(const std::map<std::size_t, Item>& items, Bytes trailer, Claims& claims) {
  std::size_t fromEnd = 0;
  for (const auto& [index, item] : items) fromEnd += index > 1 ? item.length + item.padding : 0;
  const std::size_t backwards = trailer.size() - std::min(trailer.size(), fromEnd);
  std::size_t at = 0, last = backwards;
  for (const auto& [index, item] : items) {
    if (index == 1 || item.semantic == "Primary") {
      at += item.padding;
      continue;
    }
    const Range forward{at, item.length}, back{last, item.length};
    at += item.length + item.padding;
    last += item.length + item.padding;
    if (item.semantic == "MotionPhoto") {
      claims.video = true;
      if (claims.videoRange.size > 0) continue;
      if (isVideo(forward, trailer))
        claims.videoRange = forward;
      else if (isVideo(back, trailer))
        claims.videoRange = back;
      continue;
    }
    claims.gainMap = claims.gainMap || item.semantic == "GainMap";
    if (inside(forward, trailer)) claims.otherRanges.push_back(forward);
  }
}

}  // namespace

Claims claimsOf(const Exiv2::XmpData& xmp, Bytes trailer) {
  Claims claims;
  findItems(itemsOf(xmp), trailer, claims);
  for (const Exiv2::Xmpdatum& datum : xmp) {
    claims.gainMap = claims.gainMap || isGainMapClaim(datum);
    if (!isVideoClaim(datum)) continue;
    claims.video = true;
    if (datum.tagName() != "MicroVideoOffset" || claims.videoRange.size > 0) continue;
    const std::size_t size = number(datum.toString());
    const Range range{trailer.size() - std::min(size, trailer.size()), size};
    if (isVideo(range, trailer)) claims.videoRange = range;
  }
  return claims;
}

void settleClaims(Exiv2::XmpData& xmp, std::size_t videoBytes) {
  const std::map<std::size_t, Item> items = itemsOf(xmp);
  const auto video = std::find_if(items.begin(), items.end(), [](const auto& entry) {
    return entry.first > 1 && entry.second.semantic == "MotionPhoto";
  });
  const std::string bytes = std::to_string(videoBytes);
  Exiv2::XmpData settled;
  for (Exiv2::Xmpdatum datum : xmp) {
    if (isGainMapClaim(datum)) continue;
    if (isVideoClaim(datum)) {
      if (videoBytes == 0) continue;
      if (datum.tagName() == "MicroVideoOffset") datum.setValue(bytes);
    }
    if (!inDirectory(datum)) {
      settled.add(datum);
      continue;
    }
    if (videoBytes == 0 || video == items.end()) continue;
    std::string name = datum.tagName();
    const std::size_t index = indexOf(name);
    if (index > 1 && index != video->first) continue;
    if (name.ends_with(":Padding")) datum.setValue("0");
    if (index > 1) {
      if (name.ends_with(":Length")) datum.setValue(bytes);
      name.replace(0, name.find(']'), "Directory[2");
    }
    settled.add(Exiv2::XmpKey("Xmp." + datum.groupName() + '.' + name), &datum.value());
  }
  xmp = settled;
}

}  // namespace vx::cli
