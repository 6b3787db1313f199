#include "hosts/cli/pictures/parts/extended_xmp.h"

#include <glib.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::string_view kMain = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kExtension = "http://ns.adobe.com/xmp/extension/\0"sv;
constexpr std::size_t kDigits = 32;
constexpr std::size_t kExtensionHead = kExtension.size() + kDigits + 8;  // full length, offset
constexpr const char* kReference = "Xmp.xmpNote.HasExtendedXMP";

std::string digestOf(std::string_view text) {
  const std::unique_ptr<gchar, decltype(&g_free)> digits(
      g_compute_checksum_for_data(G_CHECKSUM_MD5, bytesOf(text).data(), text.size()), &g_free);
  std::string upper = digits.get();
  std::transform(upper.begin(), upper.end(), upper.begin(), g_ascii_toupper);
  return upper;
}

bool sameDigest(const std::string& a, const std::string& b) {
  return g_ascii_strcasecmp(a.c_str(), b.c_str()) == 0;
}

std::string encode(const Exiv2::XmpData& xmp, std::uint16_t flags) {
  std::string packet;
  if (Exiv2::XmpParser::encode(packet, xmp, flags) != 0)
    throw Exiv2::Error(Exiv2::kerXMPToolkitError);
  return packet;
}

// "Xmp.GDepth.Data" of whatever lies inside it.
std::string topLevel(const std::string& key) {
  return key.substr(0, key.find_first_of("[/", key.find('.', 4)));
}

// What has to be in the packet itself, for programs that read no extension.
bool staysInPacket(const std::string& key) {
  static constexpr std::string_view kGroups[] = {"Xmp.xmpNote.", "Xmp.tiff.", "Xmp.dc.", "Xmp.xmp.",
                                                 "Xmp.GCamera."};
  return std::any_of(std::begin(kGroups), std::end(kGroups),
                     [&key](std::string_view group) { return key.starts_with(group); });
}

// Moves the largest properties to the result until `xmp` fits into a segment.
Exiv2::XmpData split(Exiv2::XmpData& xmp, std::size_t excess) {
  std::map<std::string, std::size_t> sizes;
  for (const Exiv2::Xmpdatum& datum : xmp)
    sizes[topLevel(datum.key())] += datum.key().size() + static_cast<std::size_t>(datum.size());
  std::vector<std::pair<std::size_t, std::string>> order;
  for (const auto& [key, size] : sizes) order.emplace_back(staysInPacket(key) ? 0 : size, key);
  std::sort(order.rbegin(), order.rend());
  std::set<std::string> moved;
  std::size_t sum = 0;
  for (const auto& [size, key] : order) {
    if (sum >= excess) break;
    sum += sizes[key];
    moved.insert(key);
  }
  Exiv2::XmpData packet, extension;
  for (const Exiv2::Xmpdatum& datum : xmp)
    (moved.contains(topLevel(datum.key())) ? extension : packet).add(datum);
  xmp = packet;
  return extension;
}

}  // namespace

std::optional<std::string> extendedXmp(const JpegLayout& layout, const std::string& digest) {
  struct Part {
    std::size_t offset;
    std::string_view text;
  };
  std::vector<Part> parts;
  std::size_t full = 0;
  for (const JpegSegment& segment : layout.segments) {
    if (!segment.is(marker::kApp1, kExtension) || segment.payload.size() < kExtensionHead) continue;
    const std::uint8_t* head = segment.payload.data() + kExtension.size();
    if (!sameDigest(std::string(head, head + kDigits), digest)) continue;
    full = big32(head + kDigits);
    parts.push_back({big32(head + kDigits + 4), textOf(segment.payload.subspan(kExtensionHead))});
  }
  std::sort(parts.begin(), parts.end(),
            [](const Part& a, const Part& b) { return a.offset < b.offset; });
  std::string whole;
  for (const Part& part : parts) {
    if (part.offset != whole.size()) return std::nullopt;
    whole += part.text;
  }
  if (whole.empty() || whole.size() != full || !sameDigest(digestOf(whole), digest))
    return std::nullopt;
  return whole;
}

bool mergeExtendedXmp(const JpegLayout& layout, Exiv2::XmpData& xmp) {
  const auto reference = xmp.findKey(Exiv2::XmpKey(kReference));
  if (reference == xmp.end()) return true;
  const std::string digest = reference->toString();
  xmp.erase(reference);
  const std::optional<std::string> packet = extendedXmp(layout, digest);
  Exiv2::XmpData extension;
  if (!packet || Exiv2::XmpParser::decode(extension, *packet) != 0) return false;
  std::set<std::string> known;
  for (const Exiv2::Xmpdatum& datum : xmp) known.insert(datum.key());
  for (const Exiv2::Xmpdatum& datum : extension) {
    if (known.insert(datum.key()).second) xmp.add(datum);
  }
  return true;
}

std::string xmpSegments(Exiv2::XmpData xmp) {
  constexpr std::uint16_t kExtensionFlags =
      Exiv2::XmpParser::omitPacketWrapper | Exiv2::XmpParser::omitAllFormatting;
  constexpr std::size_t kRoom = kMaxSegment - kMain.size();
  std::string packet = encode(xmp, Exiv2::XmpParser::useCompactFormat);
  std::string extension, segments;
  if (packet.size() > kRoom) {
    // What a property takes in XML is not known beforehand: what is too much moves in a few steps.
    Exiv2::XmpData rest;
    xmp[kReference] = std::string(kDigits, '0');
    for (std::size_t excess = packet.size() - kRoom; packet.size() > kRoom;
         excess = packet.size() - std::min(packet.size(), kRoom)) {
      const Exiv2::XmpData more = split(xmp, excess);
      if (more.empty()) throw Exiv2::Error(Exiv2::kerTooLargeJpegSegment, "XMP");
      for (const Exiv2::Xmpdatum& datum : more) rest.add(datum);
      packet = encode(xmp, Exiv2::XmpParser::useCompactFormat);
    }
    extension = encode(rest, kExtensionFlags);
    xmp[kReference] = digestOf(extension);
    packet = encode(xmp, Exiv2::XmpParser::useCompactFormat);
  }
  segments = jpegSegment(marker::kApp1, std::string(kMain).append(packet));
  const std::string digest = digestOf(extension);
  constexpr std::size_t kPart = kMaxSegment - kExtensionHead;
  for (std::size_t at = 0; at < extension.size(); at += kPart) {
    std::string payload = std::string(kExtension) + digest;
    appendBig32(payload, static_cast<std::uint32_t>(extension.size()));
    appendBig32(payload, static_cast<std::uint32_t>(at));
    segments += jpegSegment(marker::kApp1, payload.append(extension, at, kPart));
  }
  return segments;
}

}  // namespace vx::cli
