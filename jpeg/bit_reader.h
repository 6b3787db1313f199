#pragma once

#include <cstddef>
#include <cstdint>

#include "jpeg/huffman_decoder.h"

namespace vx {

/// Bits of entropy-coded data. Behind the last byte, or a marker, it yields zeros and remembers how
/// many of them were taken.
class JpegBitReader {
 public:
  JpegBitReader(const std::uint8_t* data, const std::uint8_t* end) : data_(data), end_(end) {}

  /// The next 16 bits, which stay.
  int peek16() {
    if (count_ < 16) fill();
    return static_cast<int>(bits_ >> (count_ - 16) & 0xFFFF);
  }
  void skip(int count) { count_ -= count; }
  /// The next `count` bits, 0 to 16.
  int take(int count) {
    if (count == 0) return 0;
    const int value = peek16() >> (16 - count);
    count_ -= count;
    return value;
  }
  /// A value of the magnitude category `size`, 0 to 15 (T.81, F.2.2.1).
  int takeSigned(int size) {
    const int value = take(size);
    return size > 0 && value < 1 << (size - 1) ? value - (1 << size) + 1 : value;
  }
  /// The next symbol; -1 for a code that the table lacks.
  int symbol(const JpegHuffmanDecoder& table) {
    const int bits = peek16();
    const int quick = table.quick[bits >> (16 - table.kQuickBits)];
    if (quick != 0) {
      skip(quick >> 8);
      return quick & 255;
    }
    for (std::size_t length = table.kQuickBits + 1; length <= 16; ++length)
      if (bits < table.endCode[length]) {
        skip(static_cast<int>(length));
        return table.symbols[(bits >> (16 - length)) + table.offset[length]];
      }
    return -1;
  }
  /// Whether bits were taken that the data does not hold.
  bool exhausted() const { return missing_ > count_; }
  /// Throws the rest of the byte away. Where the data stands: at the marker, if it was met.
  const std::uint8_t* position() const { return data_; }

 private:
  void fill() {
    while (count_ <= 48) {
      std::uint64_t byte = 0;
      const bool marker = data_ < end_ && *data_ == 0xFF && (end_ - data_ < 2 || data_[1] != 0);
      if (data_ == end_ || marker) {
        missing_ += 8;
      } else {
        byte = *data_;
        data_ += byte == 0xFF ? 2 : 1;
      }
      bits_ = bits_ << 8 | byte;
      count_ += 8;
    }
  }

  const std::uint8_t* data_;
  const std::uint8_t* end_;
  std::uint64_t bits_ = 0;
  int count_ = 0;
  std::int64_t missing_ = 0;
};

}  // namespace vx
