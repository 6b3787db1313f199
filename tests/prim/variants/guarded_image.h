#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace vx::test {

/// What a call may do with an image: nothing but read it; write the elements of its region; or
/// anything inside the region, without a defined outcome.
enum class Role { read, write, scratch };

/// Where the region lies in its memory. Both sides of the memory are pages without access, so that
/// a touch beyond the first or the last byte ends the program.
enum class Placement { aligned, shifted, atStart, atEnd };

/// Elements of a pixel in memory, and how many of them, from the addressed one on, take part.
struct Pixels {
  int stride = 1;
  int used = 1;
};

/// Readable pixels around a region.
struct Frame {
  int left = 0, top = 0, right = 0, bottom = 0;
};

/// Pages of memory between two that cannot be accessed.
class GuardedPages {
 public:
  explicit GuardedPages(std::size_t bytes);
  ~GuardedPages();
  GuardedPages(const GuardedPages&) = delete;
  GuardedPages& operator=(const GuardedPages&) = delete;

  unsigned char* begin() const { return begin_; }
  unsigned char* end() const { return begin_ + bytes_; }

 private:
  std::size_t bytes_;
  unsigned char* begin_;
};

/// One image argument of a call, with random bytes around the region and between its elements.
///
/// For every column of the dispatch table restore() puts the elements back and changes the bytes
/// around them, so that a result which depends on those differs between columns, and writing them
/// is seen by violation().
class GuardedImage {
 public:
  struct Layout {
    int elementBytes;
    int addressBytes;  ///< granule of addresses and steps
    int width, height;
    Pixels pixels;
    int channel;  ///< element of the pixel that the region addresses
    Frame frame;
    int padding;  ///< bytes between rows
    Placement placement;
    bool bottomUp;  ///< rows in memory from the last to the first, the step negative
  };

  GuardedImage(Role role, const Layout& layout, std::mt19937& rng);

  int step() const { return layout_.bottomUp ? -stride_ : stride_; }

  /// Takes what the image holds now as the start of every call.
  void capture();
  /// Puts the image in front of a column's call.
  void restore(int column);
  /// Keeps the elements that a call has written as those which all others must write.
  void keepAsExpected();
  /// Says what the call since restore() wrote and should not have; empty when nothing.
  /// @param refused  the call refused its arguments, so that it may have written nothing at all
  std::string violation(bool refused) const;
  /// Says where a written element differs from the kept one; empty when nowhere.
  std::string difference() const;

 protected:
  /// Address of element `element` of row `row`, both counted from the region's first.
  unsigned char* address(std::ptrdiff_t row, std::ptrdiff_t element) const;

  const Layout layout_;

 private:
  std::string describe(std::size_t byte, const std::vector<unsigned char>& wanted) const;

  const Role role_;
  const std::ptrdiff_t rowBytes_;
  const int stride_;  ///< bytes from one row in memory to the next
  const std::size_t regionBytes_;
  GuardedPages pages_;
  unsigned char* region_;  ///< first byte in memory
  unsigned char* window_;  ///< what is watched: the region and some bytes on both sides
  std::size_t windowBytes_;
  std::vector<unsigned char> element_;  ///< 0xFF for a byte of an element of the region, 0 else
  std::vector<unsigned char> captured_, restored_, expected_;
};

}  // namespace vx::test
