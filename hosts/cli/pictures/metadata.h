// EXIF (with the maker note), XMP, IPTC and the JPEG comment of a picture: taken from its file, put
// into the finished bytes of another. The ICC profile and the resolution go with the pixels.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// Once per process, before the first Metadata. Silences Exiv2: damaged maker notes are common,
/// they are copied as they are, and warnings about them would not help the user.
void initialiseMetadata();

class Metadata {
 public:
  /// What `path` holds. What cannot be read is left out, with a line in notes().
  Metadata(const std::filesystem::path& path, const Picture& picture);
  ~Metadata();
  Metadata(const Metadata&) = delete;
  Metadata& operator=(const Metadata&) = delete;

  /// Drops all but the orientation, which says how the pixels lie.
  void strip();
  /// Drops what says where the picture was taken: GPS, and the names of places in XMP and IPTC.
  void stripLocation();

  /// As in EXIF, 1 to 8; 1 where nothing is said.
  int orientation() const;
  /// For formats whose pixels lie upright: the orientation, which it then says no more.
  int takeOrientation();

  /// Updates every tag that states the picture's size.
  void setSize(int width, int height);

  /// Puts all of it into `file`, an encoded picture of `format`. What the format cannot hold is
  /// left out, with a line in notes(). Throws FileError.
  void attach(std::vector<std::uint8_t>& file, Format format);

  /// Puts all of it into `picture`, for encoders that write metadata with the pixels. What they
  /// leave out is told in notes().
  void handTo(Picture& picture, Format format);

  /// What a file really holds, as "ICC 3144 bytes, EXIF 49 tags, maker note 12 tags".
  static std::string summary(const std::filesystem::path& path, Format format);
  static std::string summary(const std::vector<std::uint8_t>& file, Format format);

  const std::vector<std::string>& notes() const { return notes_; }

 private:
  struct Content;
  void attachByExiv2(std::vector<std::uint8_t>& file, Format format, const Content& content);
  void attachByChunks(std::vector<std::uint8_t>& file, Format format);

  std::unique_ptr<Content> content_;
  std::vector<std::string> notes_;
};

}  // namespace vx::cli
