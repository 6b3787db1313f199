#include "tests/prim/variants/guarded_image.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <sstream>

namespace vx::test {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::ptrdiff_t kWatched = 128;  // two vectors of the widest body on either side

std::size_t wholePages(std::size_t bytes) { return (bytes + kPage - 1) / kPage * kPage; }

}  // namespace

GuardedPages::GuardedPages(std::size_t bytes) : bytes_(wholePages(bytes)) {
  void* all = mmap(nullptr, bytes_ + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (all == MAP_FAILED) throw std::bad_alloc();
  begin_ = static_cast<unsigned char*>(all) + kPage;
  if (mprotect(begin_, bytes_, PROT_READ | PROT_WRITE) != 0) {
    munmap(all, bytes_ + 2 * kPage);
    throw std::bad_alloc();
  }
}

GuardedPages::~GuardedPages() { munmap(begin_ - kPage, bytes_ + 2 * kPage); }

GuardedImage::GuardedImage(Role role, const Layout& layout, std::mt19937& rng)
    : layout_(layout),
      role_(role),
      rowBytes_(std::ptrdiff_t{layout.frame.left + layout.width + layout.frame.right} *
                layout.pixels.stride * layout.elementBytes),
      stride_(static_cast<int>(rowBytes_) + layout.padding),
      regionBytes_(static_cast<std::size_t>(
          std::ptrdiff_t{stride_} * (layout.frame.top + layout.height + layout.frame.bottom - 1) +
          rowBytes_)),
      pages_(regionBytes_ + 4 * kWatched) {
  const unsigned granules = 64 / unsigned(layout.addressBytes);
  const unsigned shift = (1 + unsigned(rng()) % (granules - 1)) * unsigned(layout.addressBytes);
  region_ = layout.placement == Placement::atStart   ? pages_.begin()
            : layout.placement == Placement::atEnd   ? pages_.end() - regionBytes_
            : layout.placement == Placement::shifted ? pages_.begin() + kWatched + shift
                                                     : pages_.begin() + kWatched;
  window_ = std::max(pages_.begin(), region_ - std::min(kWatched, region_ - pages_.begin()));
  windowBytes_ = static_cast<std::size_t>(
      region_ - window_ + std::ptrdiff_t(regionBytes_) +
      std::min(kWatched, pages_.end() - region_ - std::ptrdiff_t(regionBytes_)));
  for (std::size_t i = 0; i < windowBytes_; ++i) window_[i] = static_cast<unsigned char>(rng());

  element_.assign(windowBytes_, 0);
  const int usedBytes = layout.pixels.used * layout.elementBytes;
  for (int y = -layout.frame.top; y < layout.height + layout.frame.bottom; ++y)
    for (int x = -layout.frame.left; x < layout.width + layout.frame.right; ++x)
      std::memset(&element_[std::size_t(address(y, x * layout.pixels.stride) - window_)], 0xFF,
                  std::size_t(usedBytes));
}

unsigned char* GuardedImage::address(std::ptrdiff_t row, std::ptrdiff_t element) const {
  const int rows = layout_.frame.top + layout_.height + layout_.frame.bottom;
  const std::ptrdiff_t fromTop = row + layout_.frame.top;
  return region_ + (layout_.bottomUp ? rows - 1 - fromTop : fromTop) * stride_ +
         (std::ptrdiff_t{layout_.frame.left} * layout_.pixels.stride + layout_.channel + element) *
             layout_.elementBytes;
}

void GuardedImage::capture() { captured_.assign(window_, window_ + windowBytes_); }

void GuardedImage::restore(int column) {
  restored_ = captured_;
  const auto other = static_cast<unsigned char>(0x5A + 37 * column);
  for (std::size_t i = 0; i < windowBytes_; ++i)
    restored_[i] = static_cast<unsigned char>(restored_[i] ^ (other & ~element_[i]));
  std::memcpy(window_, restored_.data(), windowBytes_);
}

void GuardedImage::keepAsExpected() { expected_.assign(window_, window_ + windowBytes_); }

std::string GuardedImage::violation(bool refused) const {
  const bool mayWrite = role_ != Role::read && !refused;
  if (!mayWrite && std::memcmp(window_, restored_.data(), windowBytes_) == 0) return {};
  for (std::size_t i = 0; i < windowBytes_; ++i)
    if (window_[i] != restored_[i] && !(mayWrite && element_[i] != 0))
      return "wrote " + describe(i, restored_);
  return {};
}

std::string GuardedImage::difference() const {
  if (role_ != Role::write) return {};
  for (std::size_t i = 0; i < windowBytes_; ++i)
    if (element_[i] != 0 && window_[i] != expected_[i])
      return "differs at " + describe(i, expected_);
  return {};
}

std::string GuardedImage::describe(std::size_t byte,
                                   const std::vector<unsigned char>& wanted) const {
  const std::ptrdiff_t offset = window_ + byte - region_;
  if (offset < 0 || offset >= std::ptrdiff_t(regionBytes_))
    return "byte " + std::to_string(offset) + " of " + std::to_string(regionBytes_);
  const std::ptrdiff_t inRow = offset % stride_;
  std::ostringstream text;
  text << "row " << offset / stride_ << ", element " << inRow / layout_.elementBytes
       << (inRow >= rowBytes_ ? " (padding)" : "") << ", byte " << inRow % layout_.elementBytes
       << ", wanted and found: " << std::hex << +wanted[byte] << " " << +window_[byte];
  return text.str();
}

}  // namespace vx::test
