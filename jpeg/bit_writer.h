#pragma once

#include <cstdint>

namespace vx {

/// Bits of a scan, with the zero byte that the standard stuffs behind each 0xFF. Writes no byte
/// beyond its room, and none at all without a destination; size() counts on in any case.
class JpegBitWriter {
 public:
  JpegBitWriter(std::uint8_t* out, std::int64_t room) : out_(out), room_(room) {}

  /// Appends the low `count` bits of `bits`, at most 32; the others are 0.
  void put(std::uint32_t bits, int count) {
    pending_ = pending_ << count | bits;
    pendingBits_ += count;
    while (pendingBits_ >= 8) {
      pendingBits_ -= 8;
      byte(static_cast<std::uint8_t>(pending_ >> pendingBits_));
    }
  }
  /// Fills the last byte with ones.
  void finish() {
    if (pendingBits_ > 0) put((1u << (8 - pendingBits_)) - 1, 8 - pendingBits_);
  }
  std::int64_t size() const { return size_; }
  bool overflowed() const { return size_ > room_; }

 private:
  void byte(std::uint8_t value) {
    store(value);
    if (value == 0xFF) store(0);
  }
  void store(std::uint8_t value) {
    if (out_ != nullptr && size_ < room_) out_[size_] = value;
    ++size_;
  }

  std::uint8_t* out_;
  std::int64_t room_;
  std::int64_t size_ = 0;
  std::uint64_t pending_ = 0;
  int pendingBits_ = 0;
};

}  // namespace vx
