#pragma once

#include <type_traits>

namespace vx {

/// Calls body with a block's width, as a constant for the widths in use: a loop over the row of a
/// block is then a few vectors instead of a call.
template <class Body>
void withBlockWidth(int width, const Body& body) {
  switch (width) {
    case 8:
      return body(std::integral_constant<int, 8>());
    case 12:
      return body(std::integral_constant<int, 12>());
    case 16:
      return body(std::integral_constant<int, 16>());
    default:
      return body(width);
  }
}

}  // namespace vx
