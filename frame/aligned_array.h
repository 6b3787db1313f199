#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "prim/alloc.h"

namespace vx {

/// An owned array of plain elements from the library's aligned allocator, not initialised.
template <class T>
class AlignedArray {
 public:
  AlignedArray() = default;
  AlignedArray(AlignedArray&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  AlignedArray& operator=(AlignedArray&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~AlignedArray() { release(); }

  /// Holds `count` elements afterwards, keeping a block that is large enough already; false, and
  /// empty, when memory is short.
  bool reserve(std::size_t count) {
    if (count <= size_) return true;
    release();
    if (count > PTRDIFF_MAX / sizeof(T)) return false;
    data_ = static_cast<T*>(prim::alignedAlloc(count * sizeof(T)));
    if (data_ == nullptr) return false;
    size_ = count;
    return true;
  }
  void release() {
    prim::primFree(data_);
    data_ = nullptr;
    size_ = 0;
  }

  T* data() const { return data_; }
  std::size_t size() const { return size_; }
  T& operator[](std::size_t i) const { return data_[i]; }

 private:
  T* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace vx
