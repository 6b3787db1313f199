// Numbers of a TIFF structure in memory, in the byte order that it states.
#pragma once

#include "hosts/cli/pictures/parts/bytes.h"

namespace vx::cli {

class TiffNumbers {
 public:
  explicit TiffNumbers(Bytes bytes) : bytes_(bytes), little_(textOf(bytes).starts_with("II")) {}

  /// Whether it begins as a classic TIFF file does.
  bool valid() const { return (little_ || textOf(bytes_).starts_with("MM")) && number(2, 2) == 42; }

  /// Of `size` bytes, up to 8; out of range it is 0.
  std::size_t number(std::size_t at, std::size_t size) const {
    if (at > bytes_.size() || bytes_.size() - at < size) return 0;
    std::size_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
      value |= std::size_t{bytes_[at + i]} << 8 * power(i, size);
    return value;
  }

  /// The power of 256 that byte i of a number stands for.
  std::size_t power(std::size_t i, std::size_t size) const { return little_ ? i : size - 1 - i; }

 private:
  Bytes bytes_;
  bool little_;
};

}  // namespace vx::cli
