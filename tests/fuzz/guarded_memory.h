#pragma once

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "tests/fuzz/byte_source.h"

namespace vx::test {

/// Ends the program, which is how a fuzz target reports a finding.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\n", what);
  std::abort();
}

/// The size of a picture and how its samples lie in a row; steps in samples.
struct Shape {
  int width, height, sampleBytes;
  int pixelSamples = 3;  ///< that a function may touch
  int pixelStep = 3;     ///< of either sign

  bool sized() const { return width >= 1 && height >= 1; }
  std::int64_t rowSamples() const {
    return std::abs(std::int64_t{pixelStep}) * (std::int64_t{width} - 1) + pixelSamples;
  }
};

/// The host's memory between two pages that nobody may touch. The rows begin at the first page or
/// end at the last, as the input says. Under the address sanitizer what lies beside the pixels
/// may not be read either.
class GuardedMemory {
 public:
  static constexpr std::ptrdiff_t kPage = 4096;

  explicit GuardedMemory(std::ptrdiff_t capacity) : size_((capacity + kPage - 1) / kPage * kPage) {
    void* const block = mmap(nullptr, static_cast<std::size_t>(size_ + 2 * kPage), PROT_NONE,
                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    require(block != MAP_FAILED, "address space for the test");
    begin_ = static_cast<std::uint8_t*>(block) + kPage;
    require(mprotect(begin_, static_cast<std::size_t>(size_), PROT_READ | PROT_WRITE) == 0,
            "memory for the test");
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() { munmap(begin_ - kPage, static_cast<std::size_t>(size_ + 2 * kPage)); }

  /// Lays out a picture with content from the input; null where it does not fit.
  std::uint8_t* place(const Shape& shape, int rowStep, ByteSource& source) {
    const std::ptrdiff_t step = std::ptrdiff_t{rowStep} * shape.sampleBytes;
    const std::ptrdiff_t rowBytes = shape.rowSamples() * shape.sampleBytes;
    const std::ptrdiff_t first =  // lowest byte of a row, relative to its address
        std::min<std::ptrdiff_t>(0, shape.pixelStep) * (shape.width - 1) * shape.sampleBytes;
    const __int128 last = static_cast<__int128>(step) * (shape.height - 1);
    const __int128 low = std::min<__int128>(0, last) + first;
    const __int128 high = std::max<__int128>(0, last) + first + rowBytes;
    if (high - low > size_) return nullptr;
    std::uint8_t* const at = source.oneIn(2) ? begin_ - static_cast<std::ptrdiff_t>(low)
                                             : begin_ + size_ - static_cast<std::ptrdiff_t>(high);
    // All beyond a page around the rows stays as it is, for speed.
    const auto inside = [&](std::ptrdiff_t i) { return std::clamp<std::ptrdiff_t>(i, 0, size_); };
    used_ = begin_ + inside(at - begin_ + static_cast<std::ptrdiff_t>(low) - kPage);
    bytes_ = static_cast<std::size_t>(
        begin_ + inside(at - begin_ + static_cast<std::ptrdiff_t>(high) + kPage) - used_);
    fill(source);
    inPixels_.assign(bytes_, 0);
    for (int y = 0; y < shape.height; ++y)
      for (int x = 0; x < shape.width; ++x)
        std::memset(inPixels_.data() + (at - used_) + step * y +
                        std::ptrdiff_t{shape.pixelStep} * x * shape.sampleBytes,
                    1, static_cast<std::size_t>(shape.pixelSamples * shape.sampleBytes));
    return at;
  }

  /// Between place() and check(): what is in no pixel must not be touched.
  void forbidTheRest() {
    before_.assign(used_, used_ + bytes_);
    for (std::size_t i = 0, end; i < bytes_; i = end) {
      end = i;
      while (end < bytes_ && inPixels_[end] == inPixels_[i]) ++end;
      if (inPixels_[i] == 0) ASAN_POISON_MEMORY_REGION(used_ + i, end - i);
    }
  }

  /// The memory may be read again; ends the program when anything but pixels has changed, or
  /// anything at all where nothing may.
  void check(bool mayChange) {
    ASAN_UNPOISON_MEMORY_REGION(used_, bytes_);
    if (std::equal(before_.begin(), before_.end(), used_)) return;
    require(mayChange, "the picture is as it was");
    for (std::size_t i = 0; i < bytes_; ++i)
      require(inPixels_[i] != 0 || used_[i] == before_[i], "bytes beside the pixels stay");
  }

  /// An address that must not be touched.
  void* forbidden() const { return begin_ + size_; }

 private:
  void fill(ByteSource& source) {
    std::minstd_rand random(source.raw<std::uint16_t>() + 1u);
    const unsigned kind = source.byte() % 4;
    const unsigned flat = source.byte();
    unsigned bits = 0;
    for (std::size_t i = 0; i < bytes_; ++i, bits >>= 8) {
      if (i % 3 == 0) bits = static_cast<unsigned>(random());  // 24 of its 31 bits are good
      const unsigned noise = bits & 255u;
      std::size_t value = flat;
      if (kind == 1) value = noise;
      if (kind == 2) value = i / 16 + noise % 16;
      if (kind == 3) value = i / 96 % 2 == 0 ? 255u : noise % 4;
      used_[i] = static_cast<std::uint8_t>(value);
    }
  }

  std::ptrdiff_t size_;
  std::uint8_t* begin_;
  std::uint8_t* used_ = nullptr;  ///< the part that place() laid out
  std::size_t bytes_ = 0;
  std::vector<std::uint8_t> inPixels_, before_;
};

}  // namespace vx::test
