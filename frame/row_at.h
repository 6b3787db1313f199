#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vx {

/// Start of row y of an image whose rows lie `step` bytes apart.
template <class T>
T* rowAt(T* data, int step, int y) {
  using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
  return reinterpret_cast<T*>(reinterpret_cast<Byte*>(data) + std::ptrdiff_t{step} * y);
}

}  // namespace vx
