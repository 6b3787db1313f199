#pragma once

#include <cstdint>
#include <vector>

namespace vx::bench {

/// A JPEG file as interleaved RGB; empty when it cannot be read.
std::vector<std::uint8_t> turboLoad(const char* path, int& width, int& height);

/// The mean of 64 round trips by TurboJPEG at shifted grids, chroma halved horizontally, with the
/// padding and the sums of vxUnblock; the shifts are shared out among `threads`.
void turboUnblock(std::vector<std::uint8_t>& pixels, int width, int height, int quality,
                  int threads);

}  // namespace vx::bench
