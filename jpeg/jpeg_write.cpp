#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <new>

#include "jpeg/jpeg.h"
#include "jpeg/jpeg_work.h"
#include "jpeg/samples.h"
#include "jpeg/scan_encoder.h"

namespace vx {
namespace {

class PixelRows final : public JpegRowSource {
 public:
  explicit PixelRows(const JpegProperties& p)
      : image_(p.imageData),
        step_(std::ptrdiff_t{p.imageWidth} * 3 + p.imagePadBytes),
        width_(p.imageWidth),
        useYcc_(p.streamColor == kJpegYcc && p.colorConversion != 0) {}

  void read(int y, int length, std::int16_t* const rows[3]) const override {
    jpegSampleRow(image_ + step_ * y, width_, useYcc_, 0, length, rows);
  }

 private:
  const std::uint8_t* image_;
  std::ptrdiff_t step_;
  int width_;
  bool useYcc_;
};

// Markers into room that is known to suffice.
class MarkerWriter {
 public:
  explicit MarkerWriter(std::uint8_t* out) : out_(out) {}

  void bytes(std::initializer_list<int> values) {
    for (const int value : values) *out_++ = static_cast<std::uint8_t>(value);
  }
  void word(int value) { bytes({value >> 8 & 0xFF, value & 0xFF}); }
  void marker(int code, int length) {
    bytes({0xFF, code});
    word(length);
  }
  template <class Range>
  void copy(const Range& values) {
    out_ = std::copy(std::begin(values), std::end(values), out_);
  }
  void copy(const std::uint8_t* values, int count) { out_ = std::copy_n(values, count, out_); }
  std::uint8_t* position() const { return out_; }

 private:
  std::uint8_t* out_;
};

// Everything in front of the scan. No application markers: the letters R, G and B as component
// numbers tell RGB from YCbCr to common decoders.
std::uint8_t* writeHeaders(const JpegCoding& coding, const JpegProperties& p) {
  const int sets = coding.oneTableSet ? 1 : 2;
  const int numbers[] = {coding.useYcc ? 1 : 'R', coding.useYcc ? 2 : 'G', coding.useYcc ? 3 : 'B'};
  MarkerWriter out(p.streamData);
  out.bytes({0xFF, 0xD8});
  out.marker(0xDB, 2 + 65 * sets);
  for (int i = 0; i < sets; ++i) {
    out.bytes({i});
    out.copy(coding.table[i]);
  }
  out.marker(0xC0, 17);
  out.bytes({8});
  out.word(p.imageHeight);
  out.word(p.imageWidth);
  out.bytes({3});
  for (int c = 0; c < 3; ++c)
    out.bytes(
        {numbers[c], c == 0 ? coding.hFactor << 4 | coding.vFactor : 0x11, coding.tablesOf(c)});
  out.marker(0xC4, 2 + (17 + 12 + 17 + 162) * sets);
  for (int i = 0; i < sets; ++i)
    for (const bool ac : {false, true}) {
      const JpegHuffmanSpec& spec = jpegHuffmanSpec(ac, i == 1);
      out.bytes({(ac ? 0x10 : 0) | i});
      out.copy(spec.counts);
      out.copy(spec.symbols, spec.symbolCount);
    }
  out.marker(0xDA, 12);
  out.bytes({3});
  for (int c = 0; c < 3; ++c) out.bytes({numbers[c], coding.tablesOf(c) * 0x11});
  out.bytes({0, 63, 0});
  return out.position();
}

int checkArguments(const JpegProperties* p, int mode) {
  if (p == nullptr || p->work == nullptr || p->imageData == nullptr || p->streamData == nullptr ||
      p->imageWidth < 1 || p->imageHeight < 1 || p->streamWidth != p->imageWidth ||
      p->streamHeight != p->imageHeight || p->imageColor != kJpegRgb ||
      (p->streamColor != kJpegRgb && p->streamColor != kJpegYcc))
    return kJpegInvalidProperties;
  if (mode != kJpegWriteImage || p->streamFile != nullptr || p->imageWidth > 65535 ||
      p->imageHeight > 65535)
    return kJpegNotSupported;
  if (p->imageChannels != 3 || p->streamChannels != 3) return kJpegUnsupportedBytesPerPixel;
  if (p->streamSubsampling < kJpeg444 || p->streamSubsampling > kJpeg422 ||
      p->imageSubsampling != kJpeg444)
    return kJpegUnsupportedSubsampling;
  return kJpegOk;
}

}  // namespace

int jpegWrite(JpegProperties* properties, int mode) noexcept {
  if (const int status = checkArguments(properties, mode)) return status;
  const JpegProperties& p = *properties;
  const JpegCoding coding(p.streamColor == kJpegYcc, p.streamSubsampling, p.quality);
  const std::int64_t room = std::int64_t{p.streamSize} - coding.headerBytes();
  if (room < 0) return kJpegBufferTooSmall;
  std::uint8_t* scan = writeHeaders(coding, p);
  try {
    const std::int64_t bytes =
        jpegEncodeScan(coding, p.imageWidth, p.imageHeight, PixelRows(p), scan, room);
    if (bytes > room) return kJpegBufferTooSmall;
    scan += bytes;
  } catch (const std::bad_alloc&) {
    return kJpegNoMemory;
  } catch (...) {
    return kJpegException;
  }
  scan[0] = 0xFF;
  scan[1] = 0xD9;
  return kJpegOk;
}

}  // namespace vx
