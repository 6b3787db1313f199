// EXIF (with the maker note), XMP, IPTC, texts, resolution and the video of a motion photo: taken
// from a file, put into the finished bytes of another. The ICC profile goes with the pixels.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "hosts/cli/pictures/picture.h"
#include "hosts/cli/pictures/png_chunks.h"

namespace vx::cli {

/// Once per process, before the first Metadata. Silences Exiv2: damaged maker notes are common,
/// they are copied as they are, and warnings about them would not help the user.
void initialiseMetadata();

struct MetadataContent;

class Metadata {
 public:
  /// What `path` holds. What cannot be read is left out, with a line in notes(). Throws FileError
  /// for a file that is no picture.
  explicit Metadata(const std::filesystem::path& path);
  ~Metadata();
  Metadata(const Metadata&) = delete;
  Metadata& operator=(const Metadata&) = delete;

  /// What the user wants without.
  struct Dropped {
    bool all = false, location = false;
  };

  /// Sorts out what a result of `format` cannot hold or what would not be true of its pixels, with
  /// a line in notes().
  /// @return that in words; empty where nothing is lost that nobody asked to drop
  std::string leaveOut(Format format, const Dropped& dropped);

  /// What libvips found: Exiv2 0.27 does not read it from every PNG.
  void add(const Picture& picture);

  /// After add(): drops what is unwanted. Of `all`, orientation stays, which says how the pixels
  /// lie. `location` is GPS, the names of places in XMP and IPTC, and the maker note.
  void drop(const Dropped& dropped);

  /// As in EXIF, 1 to 8; 1 where nothing is said.
  int orientation() const;
  /// For formats whose pixels lie upright: the orientation, which it then says no more.
  int takeOrientation();

  /// Updates every tag that states the picture's size.
  void setSize(int width, int height);

  /// Puts all of it into `picture`, for encoders that write metadata with the pixels. What they
  /// leave out is told in notes().
  void handTo(Picture& picture, Format format);

  /// Puts all of it into `file`, an encoded picture of `format`, which has a colour profile or not;
  /// the rest where handTo() was called before. Throws FileError.
  void attach(std::vector<std::uint8_t>& file, Format format, bool profile, bool handed);

  /// Empty where the file is no PNG.
  const PngContent& png() const;

  /// What a file really holds, as "ICC 3144 bytes, EXIF 49 tags, maker note 12 tags, 300 dpi".
  static std::string summary(const std::filesystem::path& path, Format format);
  static std::string summary(Bytes file, Format format);

  const std::vector<std::string>& notes() const { return notes_; }

 private:
  std::unique_ptr<MetadataContent> content_;
  std::vector<std::string> notes_;
};

}  // namespace vx::cli
