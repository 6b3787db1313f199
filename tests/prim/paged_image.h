#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

#include "prim/dispatch.h"

// An image of random bytes whose last row ends where memory ends: what reads or writes past it
// faults. The bytes between and before the rows take part in comparisons, so that a write outside
// the pixels shows as well.
class PagedImage {
 public:
  // rowBytes: bytes of a row that may be touched; step: may be odd or negative; slack: bytes
  // between the image and the end of memory, to move its address
  PagedImage(std::ptrdiff_t rowBytes, int rows, int step_, std::mt19937& rng, int slack = 0)
      : step(step_) {
    const std::ptrdiff_t span = std::ptrdiff_t{std::abs(step)} * (rows - 1);
    map(span + rowBytes + slack + 64);
    first_ = size_ - slack - rowBytes - (step > 0 ? span : 0);
    for (std::ptrdiff_t i = 0; i < size_; ++i) memory_[i] = static_cast<std::uint8_t>(rng());
  }
  PagedImage(const PagedImage& o) : step(o.step), first_(o.first_) {
    map(o.size_);
    std::memcpy(memory_, o.memory_, static_cast<std::size_t>(size_));
  }
  PagedImage& operator=(const PagedImage&) = delete;
  ~PagedImage() { munmap(memory_, static_cast<std::size_t>(size_ + page())); }

  template <class T>
  T* data() {
    return reinterpret_cast<T*>(memory_ + first_);
  }
  // x counts elements of T
  template <class T>
  T get(std::ptrdiff_t x, int y) const {
    T value;
    std::memcpy(&value, at(x * std::ptrdiff_t{sizeof(T)}, y), sizeof(T));
    return value;
  }
  template <class T>
  void set(std::ptrdiff_t x, int y, T value) {
    std::memcpy(at(x * std::ptrdiff_t{sizeof(T)}, y), &value, sizeof(T));
  }
  bool operator==(const PagedImage& o) const {
    return size_ == o.size_ &&
           std::memcmp(memory_, o.memory_, static_cast<std::size_t>(size_)) == 0;
  }

  const int step;

 private:
  static std::ptrdiff_t page() { return sysconf(_SC_PAGESIZE); }
  std::uint8_t* at(std::ptrdiff_t byte, int y) const {
    return memory_ + first_ + std::ptrdiff_t{step} * y + byte;
  }
  void map(std::ptrdiff_t bytes) {
    size_ = (bytes + page() - 1) / page() * page();
    void* block = mmap(nullptr, static_cast<std::size_t>(size_ + page()), PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) std::abort();
    memory_ = static_cast<std::uint8_t*>(block);
    if (mprotect(memory_ + size_, static_cast<std::size_t>(page()), PROT_NONE) != 0) std::abort();
  }

  std::uint8_t* memory_ = nullptr;
  std::ptrdiff_t size_ = 0;
  std::ptrdiff_t first_ = 0;
};

// Widths of a test: all up to the longest 32-bit vectors and their tails, some up to those of
// bytes.
inline int nextWidth(int width) { return width + (width < 40 ? 1 : 9); }

// Calls body(column) for every distinct code body that this processor runs.
template <class Body>
void forEachBody(Body body) {
  for (int column = 0; column <= vx::prim::lastRunnableColumn(); ++column)
    if (column < 2 || column > 3) body(column);
}
