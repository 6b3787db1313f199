#include "tests/host/picture_files.h"

#include <glib.h>

#include <map>

namespace vx::host_test {
namespace {

using std::string_literals::operator""s;

const std::string kMain = "http://ns.adobe.com/xap/1.0/\0"s;
const std::string kExtension = "http://ns.adobe.com/xmp/extension/\0"s;

std::size_t number(const std::string& bytes, std::size_t at, std::size_t size) {
  std::size_t value = 0;
  for (std::size_t i = 0; i < size; ++i)
    value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
  return value;
}

}  // namespace

std::string big32(std::size_t value) {
  std::string bytes;
  for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(value >> shift & 0xff);
  return bytes;
}

std::string segment(int marker, const std::string& payload) {
  return "\xff"s + static_cast<char>(marker) + big32(payload.size() + 2).substr(2) + payload;
}

std::string jfif(int density) {
  const std::string number = density == 0 ? "\0\1"s : big32(std::size_t(density)).substr(2);
  return segment(0xe0, "JFIF\0\1\1"s + char(density == 0 ? 0 : 1) + number + number + "\0\0"s);
}

std::string withSegments(const std::string& jpeg, const std::string& segments) {
  return jpeg.substr(0, 2) + segments + jpeg.substr(2);
}

std::string xmpPacket(const std::string& attributes, const std::string& elements) {
  return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
         "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
         "xmlns:xmpNote='http://ns.adobe.com/xmp/note/' "
         "xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/' "
         "xmlns:hdrgm='http://ns.adobe.com/hdr-gain-map/1.0/' "
         "xmlns:Cam='http://ns.google.com/photos/1.0/camera/' "
         "xmlns:Box='http://ns.google.com/photos/1.0/container/' "
         "xmlns:Item='http://ns.google.com/photos/1.0/container/item/' "
         "xmlns:GDepth='http://ns.google.com/photos/1.0/depthmap/' " +
         attributes + ">" + elements + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

std::string xmpSegment(const std::string& packet) { return segment(0xe1, kMain + packet); }

std::string digestOf(const std::string& extension) {
  gchar* digits = g_compute_checksum_for_string(G_CHECKSUM_MD5, extension.c_str(),
                                                static_cast<gssize>(extension.size()));
  gchar* upper = g_ascii_strup(digits, -1);
  std::string digest = upper;
  g_free(digits);
  g_free(upper);
  return digest;
}

std::string extensionSegments(const std::string& extension) {
  std::string segments;
  for (std::size_t at = 0; at < extension.size(); at += 65000)
    segments += segment(0xe1, kExtension + digestOf(extension) + big32(extension.size()) +
                                  big32(at) + extension.substr(at, 65000));
  return segments;
}

std::string extensionOf(const std::string& jpeg) {
  std::string packet, named;
  std::map<std::size_t, std::string> parts;
  std::size_t full = 0;
  for (std::size_t at = 2; jpeg.at(at + 1) != '\xda';) {
    const std::size_t length = number(jpeg, at + 2, 2);
    const std::string payload = jpeg.substr(at + 4, length - 2);
    if (payload.starts_with(kMain)) packet = payload;
    if (payload.starts_with(kExtension)) {
      named = payload.substr(kExtension.size(), 32);
      full = number(payload, kExtension.size() + 32, 4);
      parts[number(payload, kExtension.size() + 36, 4)] = payload.substr(kExtension.size() + 40);
    }
    at += 2 + length;
  }
  std::string whole;
  for (const auto& [offset, part] : parts) {
    if (offset != whole.size()) return "";
    whole += part;
  }
  const bool told = packet.find("HasExtendedXMP=\"" + named) != std::string::npos;
  return told && whole.size() == full && digestOf(whole) == named ? whole : "";
}

std::string directory(const std::vector<DirectoryItem>& items) {
  std::string list;
  for (const auto& [semantic, mime, length] : items) {
    list += "<rdf:li rdf:parseType='Resource'><Box:Item Item:Mime='" + mime + "' Item:Semantic='" +
            semantic + "'";
    if (length > 0) list += " Item:Length='" + std::to_string(length) + "'";
    list += "/></rdf:li>";
  }
  return "<Box:Directory><rdf:Seq>" + list + "</rdf:Seq></Box:Directory>";
}

std::string video(std::size_t bytes) {
  std::string text = "\0\0\0\x18"s + "ftypmp42\0\0\0\0isommp42"s;
  for (unsigned state = 1; text.size() < bytes;)
    text += static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

std::string multiPicture(const std::vector<Listed>& pictures) {
  std::string entries;
  for (const auto& [size, offset, type] : pictures)
    entries += big32(type) + big32(size) + big32(offset) + big32(0);
  const std::string directory = "MM\0*"s + big32(8) + "\0\3"s +                   //
                                "\xb0\0\0\7\0\0\0\4"s + "0100" +                  //
                                "\xb0\1\0\4\0\0\0\1"s + big32(pictures.size()) +  //
                                "\xb0\2\0\7"s + big32(entries.size()) + big32(50) + big32(0);
  return segment(0xe2, "MPF\0"s + directory + entries);
}

std::string withChunks(const std::string& png, const std::string& chunks) {
  constexpr std::size_t kHeaderEnd = 8 + 25;
  return png.substr(0, kHeaderEnd) + chunks + png.substr(kHeaderEnd);
}

std::string chunkOf(const std::string& png, const std::string& type) {
  for (std::size_t at = 8; at + 12 <= png.size();) {
    const std::size_t size = number(png, at, 4);
    if (png.substr(at + 4, 4) == type) return png.substr(at + 8, size);
    at += 12 + size;
  }
  return "none";
}

}  // namespace vx::host_test
