#pragma once

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

namespace vx::test {

/// Turns the bytes of an input into arguments; 0 when they are used up. The first byte says how
/// hostile they are: from such as a host means well with to any bits at all.
class ByteSource {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {
    static constexpr unsigned kOddBelow[] = {0, 12, 32, 64}, kRawBelow[] = {0, 12, 36, 80};
    const unsigned hostility = byte() % 4;
    oddBelow_ = kOddBelow[hostility];
    rawBelow_ = kRawBelow[hostility];
  }

  unsigned byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  /// The bits of any type.
  template <class T>
  T raw() {
    std::uint8_t bytes[sizeof(T)];
    for (std::uint8_t& b : bytes) b = static_cast<std::uint8_t>(byte());
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }
  template <class T, std::size_t N>
  T oneOf(const T (&values)[N]) {
    return values[byte() % N];
  }
  /// True for one input in `n`.
  bool oneIn(unsigned n) { return byte() % n == n - 1; }

  /// A number that a host keeps between low and high.
  int integer(int low, int high) {
    static constexpr int kOdd[] = {INT_MIN, INT_MIN + 1, -65536, -1, 0, 1, 65536, INT_MAX};
    const unsigned choice = byte();
    if (choice < oddBelow_) return kOdd[choice % std::size(kOdd)];
    if (choice < rawBelow_) return raw<int>();
    return low + static_cast<int>(byte() % static_cast<unsigned>(high - low + 1));
  }
  /// A setting that a host keeps between low and high.
  template <class Float>
  Float setting(double low, double high) {
    using Limits = std::numeric_limits<Float>;
    constexpr Float kMost = Limits::max(), kLeast = Limits::denorm_min(), kNormal = Limits::min();
    static constexpr Float kOdd[] = {NAN,     HUGE_VALF, -HUGE_VALF, kMost,        -kMost, kLeast,
                                     kNormal, 1e30f,     -1e30f,     -1,           0,      -0.0f,
                                     1,       255,       1e-6f,      2147483648.0f};
    const unsigned choice = byte();
    if (choice < oddBelow_) return kOdd[choice % std::size(kOdd)];
    if (choice < rawBelow_) return raw<Float>();
    return static_cast<Float>(low + (high - low) * byte() / 255);
  }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
  unsigned oddBelow_, rawBelow_;
};

}  // namespace vx::test
