#include "hosts/auto/luma_rows.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace vx::automatic {

LumaRows::LumaRows(const VxAutoPicture& picture) : picture_(picture) {
  picture_.width = std::max(picture_.width, 0);
  picture_.height = std::max(picture_.height, 0);
  if (picture_.pixels == nullptr) picture_.width = picture_.height = 0;
  if (picture_.white < 1) picture_.white = 255;
  scale_ = 255.0F / static_cast<float>(picture_.white);
}

template <class Sample>
void LumaRows::readAs(int y, float* luma, float* clipped) const {
  const auto* row = static_cast<const unsigned char*>(picture_.pixels) +
                    static_cast<ptrdiff_t>(y) * picture_.rowStep;
  const ptrdiff_t pixelStep = picture_.pixelStep, channelStep = picture_.channelStep;
  const float scale = scale_;
  const auto sample = [scale](const unsigned char* at) {
    Sample value;
    std::memcpy(&value, at, sizeof value);
    return scale * static_cast<float>(value);
  };
  for (int x = 0; x < picture_.width; ++x) {
    const unsigned char* pixel = row + x * pixelStep;
    const float r = sample(pixel), g = sample(pixel + channelStep),
                b = sample(pixel + 2 * channelStep);
    luma[x] = 0.299F * r + 0.587F * g + 0.114F * b;
    const float low = std::min(std::min(r, g), b), high = std::max(std::max(r, g), b);
    clipped[x] = low <= 2.0F || high >= 253.0F ? 1.0F : 0.0F;
  }
}

void LumaRows::read(int y, float* luma, float* clipped) const {
  if (picture_.white > 255) {
    readAs<std::uint16_t>(y, luma, clipped);
  } else {
    readAs<std::uint8_t>(y, luma, clipped);
  }
}

}  // namespace vx::automatic
