#include <climits>
#include <cstdint>

#include "jpeg/jpeg.h"

namespace vx {
namespace {

class Record {
 public:
  Record() : status(jpegInit(&properties)) {}
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
  ~Record() { jpegFree(&properties); }

  JpegProperties properties;
  int status;
};

}  // namespace

int jpegRoundTrip(std::uint8_t* image, int rowStep, int width, int height, std::uint8_t* block,
                  int blockSize, int useYcc, int subsampling, int quality) noexcept {
  const std::int64_t padding = std::int64_t{rowStep} - 3 * std::int64_t{width};
  if (padding < INT_MIN || padding > INT_MAX) return 0;
  const auto describe = [&](JpegProperties& p) {
    p.imageData = image;
    p.imageWidth = p.streamWidth = width;
    p.imageHeight = p.streamHeight = height;
    p.imagePadBytes = static_cast<int>(padding);
    p.imageChannels = p.streamChannels = 3;
    p.imageColor = kJpegRgb;
    p.streamColor = useYcc != 0 ? kJpegYcc : kJpegRgb;
    p.streamFile = nullptr;
    p.streamData = block;
    p.streamSize = blockSize;
  };
  {
    Record encoder;
    if (encoder.status != kJpegOk) return 0;
    JpegProperties& p = encoder.properties;
    describe(p);
    p.quality = quality;
    p.streamSubsampling = subsampling == 0 ? kJpeg444 : subsampling == 1 ? kJpeg422 : kJpeg420;
    if (jpegWrite(&p, kJpegWriteImage) != kJpegOk) return 0;
  }
  Record decoder;
  if (decoder.status != kJpegOk) return 0;
  JpegProperties& p = decoder.properties;
  p.streamData = block;
  p.streamSize = blockSize;
  if (jpegRead(&p, kJpegReadParameters) != kJpegOk) return 0;
  describe(p);
  return jpegRead(&p, kJpegReadImage) == kJpegOk ? 1 : 0;
}

}  // namespace vx
