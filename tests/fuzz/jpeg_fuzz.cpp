// Whatever the bytes, the decoder answers with one of its codes, and a refused stream leaves the
// image as it was. libFuzzer's interface.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "jpeg/jpeg.h"
#include "tests/support/attached.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of its own, so that a sanitizer sees the first byte too many.
  std::vector<std::uint8_t> stream(data, data + size);
  stream.reserve(1);
  vx::JpegProperties p;
  if (vx::jpegInit(&p) != vx::kJpegOk) return 0;
  p.streamData = stream.data();
  p.streamSize = static_cast<int>(size);
  int status = vx::jpegRead(&p, vx::kJpegReadParameters);
  if (status > 0 || status < vx::kJpegCommentBuffer) std::abort();
  constexpr int kMostSamples = 1 << 16;
  if (status == vx::kJpegOk && p.streamWidth * std::int64_t{p.streamHeight} <= kMostSamples) {
    std::vector<std::uint8_t> image(
        static_cast<std::size_t>(p.streamWidth) * static_cast<std::size_t>(p.streamHeight) * 3,
        std::uint8_t{0xA5});
    const std::vector<std::uint8_t> before = image;
    p.imageData = image.data();
    p.imageWidth = p.streamWidth;
    p.imageHeight = p.streamHeight;
    p.imageChannels = 3;
    p.imageColor = vx::kJpegRgb;
    status = vx::jpegRead(&p, vx::kJpegReadImage);
    if (status > 0 || status < vx::kJpegCommentBuffer) std::abort();
    if (status != vx::kJpegOk && image != before) std::abort();
  }
  vx::jpegFree(&p);
  return 0;
}
