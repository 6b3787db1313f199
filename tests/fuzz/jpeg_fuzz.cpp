// Whatever the bytes, the decoder answers with one of its codes, and a refused stream leaves the
// image as it was. libFuzzer's interface.

#include <cstdlib>

#include "tests/jpeg/pictures.h"

using namespace vx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of its own, so that a sanitizer sees the first byte too many.
  std::vector<std::uint8_t> stream(data, data + size);
  stream.reserve(1);
  const auto check = [](int status) {
    if (status > 0 || status < kJpegCommentBuffer) std::abort();
    return status == kJpegOk;
  };
  test::Rgb none(0, 0);
  const test::Codec header(none, stream);
  JpegProperties p = header.p;
  constexpr int kMostSamples = 1 << 16;
  if (!check(jpegRead(&p, kJpegReadParameters)) ||
      p.streamWidth * std::int64_t{p.streamHeight} > kMostSamples)
    return 0;
  test::Rgb image(p.streamWidth, p.streamHeight);
  std::fill(image.bytes.begin(), image.bytes.end(), std::uint8_t{0xA5});
  const auto before = image.bytes;
  if (!check(test::decode(image, stream)) && image.bytes != before) std::abort();
  return 0;
}
