#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>

#include "prim/alloc.h"

namespace vx::test {

/// Stands behind the library's allocators while it lives: counts blocks and bytes, and refuses one
/// allocation, or that one and all after it.
class Heap {
 public:
  explicit Heap(int refused = -1, bool fromThenOn = false) {
    lives_ = true;
    refused_ = refused;
    stays_ = fromThenOn;
    calls_ = 0;
    live_ = 0;
    bytes_ = 0;
    peak_ = 0;
    prim::primMemHooks.allocate = [](std::size_t size) -> void* {
      if (!admits()) return nullptr;
      auto* block = static_cast<std::size_t*>(std::malloc(size + kHeader));
      if (block == nullptr) return nullptr;
      *block = size;
      ++live_;
      peak_ = std::max(peak_.load(), bytes_ += size);
      return block + kHeader / sizeof(std::size_t);
    };
    prim::primMemHooks.release = [](void* user) {
      if (user == nullptr) return;
      auto* block = static_cast<std::size_t*>(user) - kHeader / sizeof(std::size_t);
      bytes_ -= *block;
      --live_;
      std::free(block);
    };
  }
  ~Heap() {
    prim::primMemHooks = saved_;
    lives_ = false;
  }
  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;

  /// Counts an allocation; false when it is to be refused. For allocators beside the library's own.
  static bool admits() {
    if (!lives_) return true;
    const int call = calls_++;
    return refused_ < 0 || (call != refused_ && !(stays_ && call > refused_));
  }
  static bool refusedOne() { return refused_ >= 0 && calls_ > refused_; }
  static int live() { return live_; }
  static std::size_t peak() { return peak_; }

 private:
  static constexpr std::size_t kHeader = 64;
  prim::MemHooks saved_ = prim::primMemHooks;
  // Threads of a team may allocate at once; the peak holds for one thread.
  static inline int refused_;
  static inline bool lives_, stays_;
  static inline std::atomic<int> calls_, live_;
  static inline std::atomic<std::size_t> bytes_, peak_;
};

}  // namespace vx::test
