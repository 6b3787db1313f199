#include "hosts/auto/picture_rows.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace vx::automatic {
namespace {

template <class Sample>
void readAs(const unsigned char* pixel, std::ptrdiff_t pixelStep, std::ptrdiff_t channelStep,
            float scale, PictureRow& row) {
  const auto sample = [scale](const unsigned char* at) {
    Sample value;
    std::memcpy(&value, at, sizeof value);
    return scale * static_cast<float>(value);
  };
  const std::size_t width = row.luma.size();
  float *luma = row.luma.data(), *blue = row.blue.data(), *red = row.red.data(),
        *clipped = row.clipped.data();
  for (std::size_t x = 0; x < width; ++x, pixel += pixelStep) {
    const float r = sample(pixel), g = sample(pixel + channelStep),
                b = sample(pixel + 2 * channelStep);
    const float y = 0.299F * r + 0.587F * g + 0.114F * b;
    luma[x] = y;
    blue[x] = b - y;
    red[x] = r - y;
    const float low = std::min(std::min(r, g), b), high = std::max(std::max(r, g), b);
    clipped[x] = low <= 2.0F || high >= 253.0F ? 1.0F : 0.0F;
  }
}

}  // namespace

PictureRows::PictureRows(const VxAutoPicture& picture) : picture_(picture) {
  picture_.width = std::max(picture_.width, 0);
  picture_.height = std::max(picture_.height, 0);
  if (picture_.pixels == nullptr) picture_.width = picture_.height = 0;
  if (picture_.white < 1) picture_.white = 255;
}

void PictureRows::read(int y, PictureRow& row) const {
  const int last = picture_.height - 1;
  const int mirrored = std::clamp(y < 0 ? -y : y > last ? 2 * last - y : y, 0, last);
  const auto* pixel = static_cast<const unsigned char*>(picture_.pixels) +
                      static_cast<std::ptrdiff_t>(mirrored) * picture_.rowStep;
  const float scale = 255.0F / static_cast<float>(picture_.white);
  if (picture_.white > 255) {
    readAs<std::uint16_t>(pixel, picture_.pixelStep, picture_.channelStep, scale, row);
  } else if (picture_.pixelStep == 3 && picture_.channelStep == 1) {
    readAs<std::uint8_t>(pixel, 3, 1, scale, row);  // constants let the compiler vectorise
  } else {
    readAs<std::uint8_t>(pixel, picture_.pixelStep, picture_.channelStep, scale, row);
  }
}

}  // namespace vx::automatic
