// Views of bytes in memory, and numbers in them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vx::cli {

using Bytes = std::span<const std::uint8_t>;

inline std::string_view textOf(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline Bytes bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// The caller sees to it that the bytes are there.
inline std::uint32_t big16(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} << 8 | bytes[1];
}

inline std::uint32_t big32(const std::uint8_t* bytes) {
  return big16(bytes) << 16 | big16(bytes + 2);
}

inline void appendBig16(std::string& out, std::uint32_t value) {
  for (const int shift : {8, 0}) out += static_cast<char>(value >> shift & 0xff);
}

inline void appendBig32(std::string& out, std::uint32_t value) {
  appendBig16(out, value >> 16);
  appendBig16(out, value & 0xffff);
}

}  // namespace vx::cli
