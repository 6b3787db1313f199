// A picture before and after, as a page shows it. Made where the picture is treated, so that pixels
// and files stay in that process.
#pragma once

#include <cstddef>
#include <string>

#include "hosts/cli/compare/scratch_file.h"
#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// How many pixels of a picture go into a page.
struct PageRoom {
  double whole;  // of a picture shown as it is
  double part;   // of a larger one: of its overview, and of its centre
};

/// For one of `count` pictures. A page has room for 250 megapixels before and as many after, shared
/// evenly: about 300 MB, which browsers open on any computer. No picture takes more than 25, which
/// are held as 100 MB on each side while they are looked at.
PageRoom pageRoom(std::size_t count);

/// Bytes per pixel that the first picture of a pair takes while the second is made.
inline constexpr int kPairBytes = 1;

/// Where the pairs of a page are kept.
struct PairStore {
  ScratchFile file;
  PageRoom room;
};

/// What a page has of one picture: the markup of its viewer, or the reason why there is none.
struct ShownPair {
  Piece markup;
  std::string error;
};

class PicturePair {
 public:
  /// Does nothing where `store` is null.
  explicit PicturePair(const PairStore* store) : store_(store) {}

  /// `orientation` as in EXIF: pictures are shown upright, and stay as they are. Throws Cancelled.
  void takeBefore(Picture& picture, int orientation, Progress& progress);
  /// `coding` is that of the result, whose losses are shown where it is a JPEG. Throws Cancelled.
  ShownPair takeAfter(Picture& picture, Format format, const Coding& coding, Progress& progress);

 private:
  const PairStore* store_;
  int orientation_ = 1;
  std::string before_, error_;
};

}  // namespace vx::cli
