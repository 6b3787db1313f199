// Files as phones and programs write them, put together by their public layouts.
#pragma once

#include <string>
#include <vector>

namespace vx::host_test {

/// A JPEG segment; `payload` below 64 kB.
std::string segment(int marker, const std::string& payload);
/// The header with a density per inch; 0: none.
std::string jfif(int density);
/// Puts segments in front of all others.
std::string withSegments(const std::string& jpeg, const std::string& segments);

/// An XMP packet with these attributes and elements of one description; the namespaces that tests
/// use are declared.
std::string xmpPacket(const std::string& attributes, const std::string& elements = "");
/// The packet as a segment, and a large one as the extension that the packet has to name.
std::string xmpSegment(const std::string& packet);
std::string extensionSegments(const std::string& extension);
std::string digestOf(const std::string& extension);
/// The extension of a file that is named by its packet; empty where anything is wrong.
std::string extensionOf(const std::string& jpeg);

struct DirectoryItem {
  std::string semantic, mime;
  std::size_t length;
};
/// The element that lists what lies behind a picture.
std::string directory(const std::vector<DirectoryItem>& items);

/// The head of an MP4 file and noise.
std::string video(std::size_t bytes);

/// The segment that lists further pictures: sizes, offsets from its own TIFF header, and types.
struct Listed {
  std::size_t size, offset, type;
};
std::string multiPicture(const std::vector<Listed>& pictures);

/// Inserts whole chunks behind the header of a PNG file.
std::string withChunks(const std::string& png, const std::string& chunks);
/// The content of the first chunk of this type; "none" where it is missing.
std::string chunkOf(const std::string& png, const std::string& type);

/// Numbers with the most significant byte first.
std::string big32(std::size_t value);

}  // namespace vx::host_test
