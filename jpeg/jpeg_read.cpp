#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "jpeg/jpeg.h"
#include "jpeg/markers.h"
#include "jpeg/scan_decoder.h"
#include "prim/jpeg.h"

namespace vx {
namespace {

int colorOf(const JpegWork& work) {
  const JpegFrame& frame = work.frame;
  if (frame.count == 1) return kJpegGrey;
  if (work.jfif) return kJpegYcc;
  if (work.adobeTransform >= 0) return work.adobeTransform == 0 ? kJpegRgb : kJpegYcc;
  const auto& c = frame.components;
  return c[0].id == 'R' && c[1].id == 'G' && c[2].id == 'B' ? kJpegRgb : kJpegYcc;
}

int subsamplingOf(const JpegFrame& frame) {
  if (frame.count == 1) return kJpeg444;
  const auto& c = frame.components;
  const bool alike = c[1].h == c[2].h && c[1].v == c[2].v;
  const int h = frame.hMax / c[1].h, v = frame.vMax / c[1].v;
  if (!alike || c[0].h != frame.hMax || c[0].v != frame.vMax) return kJpegOtherSampling;
  if (h == 1 && v == 1) return kJpeg444;
  if (h == 2 && v == 1) return kJpeg422;
  return h == 2 && v == 2 ? kJpeg420 : kJpegOtherSampling;
}

// Whether a component has fewer samples than the image has pixels: its factors count in relation to
// the largest, not by themselves.
bool isSubsampled(const JpegFrame& frame) {
  return std::any_of(frame.components.begin(), frame.components.begin() + frame.count,
                     [&](const auto& c) { return c.h != frame.hMax || c.v != frame.vMax; });
}

int readParameters(JpegProperties& p) {
  JpegWork& work = *p.work;
  if (const int status = jpegReadHeaders(work, p.streamData, p.streamSize)) return status;
  p.streamWidth = work.frame.width;
  p.streamHeight = work.frame.height;
  p.streamChannels = work.frame.count;
  p.streamColor = colorOf(work);
  p.streamSubsampling = subsamplingOf(work.frame);
  return kJpegOk;
}

// Row y of the image from one component, at full width.
void wideRow(JpegPlane& plane, int y, std::vector<std::uint8_t>& out) {
  const int sy = y / plane.vRatio;
  std::uint8_t* near = plane.row(sy);
  near[-1] = near[0];
  near[plane.width] = near[plane.width - 1];
  std::uint8_t* far = near;
  if (plane.vRatio == 2) {
    far = plane.row(std::clamp(y % 2 == 0 ? sy - 1 : sy + 1, 0, plane.height - 1));
    far[-1] = far[0];
    far[plane.width] = far[plane.width - 1];
  }
  if (plane.hRatio == 2 && plane.vRatio == 2) {
    prim::primJpegUpsampleRows_8u(near, far, out.data(), plane.width);
  } else if (plane.hRatio == 2) {
    prim::primJpegUpsample_8u(near, out.data(), plane.width);
  } else if (plane.hRatio == 1 && plane.vRatio == 2) {
    const int bias = 1 + y % 2;
    for (std::size_t x = 0; x < static_cast<std::size_t>(plane.width); ++x)
      out[x] = static_cast<std::uint8_t>((3 * near[x] + far[x] + bias) >> 2);
  } else {
    for (int x = 0; x < plane.width; ++x)
      std::fill_n(out.data() + std::ptrdiff_t{x} * plane.hRatio, plane.hRatio, near[x]);
  }
}

std::uint8_t limitByte(int v) { return static_cast<std::uint8_t>(std::clamp(v, 0, 255)); }

void writeImage(const JpegProperties& p, std::vector<JpegPlane>& planes) {
  const std::ptrdiff_t step = std::ptrdiff_t{p.imageWidth} * 3 + p.imagePadBytes;
  // Ratios up to 4 may overshoot the width.
  std::vector<std::uint8_t> rows[3];
  for (auto& row : rows) row.resize(static_cast<std::size_t>(p.imageWidth) + 4);
  const bool convert = p.streamColor == kJpegYcc && p.colorConversion != 0;
  const bool grey = planes.size() == 1;
  for (int y = 0; y < p.imageHeight; ++y) {
    for (std::size_t c = 0; c < planes.size(); ++c) wideRow(planes[c], y, rows[c]);
    std::uint8_t* out = p.imageData + step * y;
    for (std::size_t x = 0; x < static_cast<std::size_t>(p.imageWidth); ++x, out += 3) {
      const int c0 = rows[0][x];
      const int c1 = grey ? c0 : rows[1][x], c2 = grey ? c0 : rows[2][x];
      if (convert && !grey) {
        out[0] = limitByte(c0 + ((91881 * c2 - 11760828) >> 16));
        out[1] = limitByte(c0 + ((-22554 * c1 - 46802 * c2 + 8877496) >> 16));
        out[2] = limitByte(c0 + ((116130 * c1 - 14864613) >> 16));
      } else {
        out[0] = static_cast<std::uint8_t>(c0);
        out[1] = static_cast<std::uint8_t>(c1);
        out[2] = static_cast<std::uint8_t>(c2);
      }
    }
  }
}

int readImage(JpegProperties& p) {
  JpegWork& work = *p.work;
  if (p.imageData == nullptr || p.imageColor != kJpegRgb) return kJpegInvalidProperties;
  if (p.imageChannels != 3) return kJpegUnsupportedBytesPerPixel;
  // Headers are read again: tables may have changed between scans of an earlier call.
  if (const int status = jpegReadHeaders(work, p.streamData, p.streamSize)) return status;
  // Nothing is allocated for a stream whose size the caller did not expect.
  if (p.imageWidth != work.frame.width || p.imageHeight != work.frame.height)
    return kJpegInvalidProperties;
  if (p.upsampling == 0 && isSubsampled(work.frame)) return kJpegUnsupportedSubsampling;
  std::vector<JpegPlane> planes = jpegMakePlanes(work.frame);
  for (;;) {
    if (const int status = jpegDecodeScan(work, planes)) return status;
    const bool whole = std::all_of(planes.begin(), planes.end(),
                                   [](const JpegPlane& plane) { return plane.decoded; });
    if (whole) break;
    bool found = false;
    if (const int status = jpegNextScan(work, found)) return status;
    if (!found) return kJpegNoImage;
  }
  writeImage(p, planes);
  return kJpegOk;
}

}  // namespace

int jpegRead(JpegProperties* properties, int mode) noexcept {
  if (properties == nullptr || properties->work == nullptr || properties->streamData == nullptr ||
      properties->streamSize < 0)
    return kJpegInvalidProperties;
  if (properties->streamFile != nullptr) return kJpegNotSupported;
  try {
    if (mode == kJpegReadParameters) return readParameters(*properties);
    if (mode == kJpegReadImage) return readImage(*properties);
  } catch (const std::bad_alloc&) {
    return kJpegNoMemory;
  } catch (...) {
    return kJpegException;
  }
  return kJpegNotSupported;
}

}  // namespace vx
