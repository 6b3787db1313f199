// The samples that blocks are removed from, and where in them blocks can be seen at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vx::automatic {

/// Three samples at each pixel. `white` is the value of the brightest.
struct BlockSamples {
  std::uint16_t* first;
  std::ptrdiff_t rowStep;
  int width, height, white;

  std::uint16_t* row(int y) const { return first + y * rowStep; }
  std::ptrdiff_t rowLength() const { return std::ptrdiff_t{3} * width; }
};

/// The radius of the windows of the removal: 17 by 17 pixels.
constexpr int kBlockRadius = 8;

/// What counts as fully rough in bendingPlaces().
constexpr int kRough = 255;

/// For each pixel how rough the window around it is, 0 to kRough. 0 is flat or a ramp, in which
/// blocks cannot be seen, as coding leaves them steps of more than a level. Throws std::bad_alloc.
std::vector<std::uint8_t> bendingPlaces(const BlockSamples& picture);

}  // namespace vx::automatic
