#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <sstream>
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
  int stride = 1, used = 1;
};

/// Readable pixels around a region.
struct Frame {
  int left = 0, top = 0, right = 0, bottom = 0;
};

/// What a row of an image holds.
struct RowSize {
  int bytes = 0, elementBytes = 0;
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

  GuardedImage(Role role, const Layout& layout, std::mt19937& rng)
      : layout_(layout),
        role_(role),
        rows_(layout.frame.top + layout.height + layout.frame.bottom),
        rowBytes_(std::ptrdiff_t{layout.frame.left + layout.width + layout.frame.right} *
                  layout.pixels.stride * layout.elementBytes),
        stride_(static_cast<int>(rowBytes_) + layout.padding),
        regionBytes_(std::ptrdiff_t{stride_} * (rows_ - 1) + rowBytes_),
        innerBytes_((regionBytes_ + 4 * kWatched + kPage - 1) / kPage * kPage),
        pages_(mmap(nullptr, mappedBytes(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    unsigned char* const begin = static_cast<unsigned char*>(pages_) + kPage;
    unsigned char* const end = begin + innerBytes_;
    if (pages_ == MAP_FAILED ||
        mprotect(begin, static_cast<std::size_t>(innerBytes_), PROT_READ | PROT_WRITE) != 0)
      throw std::bad_alloc();
    const unsigned granules = 64 / unsigned(layout.addressBytes);
    const unsigned shift = (1 + unsigned(rng()) % (granules - 1)) * unsigned(layout.addressBytes);
    region_ = layout.placement == Placement::atStart   ? begin
              : layout.placement == Placement::atEnd   ? end - regionBytes_
              : layout.placement == Placement::shifted ? begin + kWatched + shift
                                                       : begin + kWatched;
    window_ = region_ - std::min(kWatched, region_ - begin);
    const auto behind = std::min(kWatched, end - region_ - regionBytes_);
    windowBytes_ = static_cast<std::size_t>(region_ - window_ + regionBytes_ + behind);
    for (std::size_t i = 0; i < windowBytes_; ++i) window_[i] = static_cast<unsigned char>(rng());

    element_.assign(windowBytes_, 0);
    for (int y = -layout.frame.top; y < layout.height + layout.frame.bottom; ++y)
      for (int x = -layout.frame.left; x < layout.width + layout.frame.right; ++x)
        std::memset(&element_[std::size_t(address(y, x * layout.pixels.stride) - window_)], 0xFF,
                    std::size_t(layout.pixels.used * layout.elementBytes));
  }
  ~GuardedImage() { munmap(pages_, mappedBytes()); }
  GuardedImage(const GuardedImage&) = delete;
  GuardedImage& operator=(const GuardedImage&) = delete;

  /// Bytes of a row with at most `reach` pixels of its frame.
  RowSize rowSize(int reach) const {
    const int framed = std::min(reach, layout_.frame.left + layout_.frame.right);
    return {(layout_.width + framed) * layout_.pixels.stride * layout_.elementBytes,
            layout_.elementBytes};
  }
  int step() const { return layout_.bottomUp ? -stride_ : stride_; }

  /// Takes what the image holds now as the start of every call.
  void capture() { captured_.assign(window_, window_ + windowBytes_); }
  /// Puts the image in front of a column's call.
  void restore(int column) {
    restored_ = captured_;
    const auto other = static_cast<unsigned char>(0x5A + 37 * column);
    for (std::size_t i = 0; i < windowBytes_; ++i)
      restored_[i] = static_cast<unsigned char>(restored_[i] ^ (other & ~element_[i]));
    std::memcpy(window_, restored_.data(), windowBytes_);
  }
  /// Keeps the elements that a call has written as those which all others must write.
  void keepAsExpected() { expected_.assign(window_, window_ + windowBytes_); }
  /// Says what the call since restore() wrote and should not have; empty when nothing.
  /// @param refused  the call refused its arguments, so that it may have written nothing at all
  std::string violation(bool refused) const {
    const unsigned char mayWrite = role_ != Role::read && !refused ? 0xFF : 0;
    for (std::size_t i = 0; i < windowBytes_; ++i)
      if (window_[i] != restored_[i] && (mayWrite & element_[i]) == 0)
        return "wrote " + describe(i, restored_);
    return {};
  }
  /// Says where a written element differs from the kept one; empty when nowhere.
  std::string difference() const {
    for (std::size_t i = 0; i < windowBytes_ && role_ == Role::write; ++i)
      if (element_[i] != 0 && window_[i] != expected_[i])
        return "differs at " + describe(i, expected_);
    return {};
  }

 protected:
  /// Address of element `element` of row `row`, both counted from the region's first.
  unsigned char* address(std::ptrdiff_t row, std::ptrdiff_t element) const {
    const std::ptrdiff_t fromTop = row + layout_.frame.top;
    return region_ + (layout_.bottomUp ? rows_ - 1 - fromTop : fromTop) * stride_ +
           (std::ptrdiff_t{layout_.frame.left} * layout_.pixels.stride + layout_.channel +
            element) *
               layout_.elementBytes;
  }

  const Layout layout_;

 private:
  static constexpr std::ptrdiff_t kPage = 4096;
  static constexpr std::ptrdiff_t kWatched = 128;  // two vectors of the widest body on either side

  std::size_t mappedBytes() const { return static_cast<std::size_t>(innerBytes_ + 2 * kPage); }
  std::string describe(std::size_t byte, const std::vector<unsigned char>& wanted) const {
    const std::ptrdiff_t offset = window_ + byte - region_;
    std::ostringstream text;
    text << "byte " << offset << " of " << regionBytes_ << " (row " << offset / stride_ << ", byte "
         << offset % stride_ << " of " << rowBytes_ << "), wanted and found: " << std::hex
         << +wanted[byte] << " " << +window_[byte];
    return text.str();
  }

  const Role role_;
  const int rows_;  ///< with the frame's
  const std::ptrdiff_t rowBytes_;
  const int stride_;  ///< bytes from one row in memory to the next
  const std::ptrdiff_t regionBytes_, innerBytes_;
  void* const pages_;
  unsigned char* region_;  ///< first byte in memory
  unsigned char* window_;  ///< what is watched: the region and some bytes on both sides
  std::size_t windowBytes_;
  std::vector<unsigned char> element_;  ///< 0xFF for a byte of an element of the region, 0 else
  std::vector<unsigned char> captured_, restored_, expected_;
};

}  // namespace vx::test
