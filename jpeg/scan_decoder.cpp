#include "jpeg/scan_decoder.h"

#include <algorithm>
#include <cstddef>

#include "jpeg/bit_reader.h"

namespace vx {
namespace {

int ceilDiv(int a, int b) { return (a - 1) / b + 1; }

struct Part {
  JpegPlane* plane;
  const JpegHuffmanDecoder* dc;
  const JpegHuffmanDecoder* ac;
  const JpegQuantTable* quant;
  int h, v;  // blocks per MCU
  std::vector<std::int16_t> blocks;
  int lastDc = 0;
};

// Dequantised values of conforming streams stay within; others may not leave the primitives' range.
std::int16_t dequantised(int level, int step) {
  return static_cast<std::int16_t>(std::clamp(level * step, -2048, 2047));
}

int decodeBlock(JpegBitReader& in, Part& part, std::int16_t* block) {
  std::fill(block, block + 64, std::int16_t{0});
  const int dcSize = in.symbol(*part.dc);
  if (dcSize < 0 || dcSize > 11) return kJpegDataError;
  part.lastDc = std::clamp(part.lastDc + in.takeSigned(dcSize), -32768, 32767);
  block[0] = dequantised(part.lastDc, (*part.quant)[0]);
  for (std::size_t i = 1; i < 64; ++i) {
    const int symbol = in.symbol(*part.ac);
    if (symbol < 0) return kJpegDataError;
    const int size = symbol & 15;
    if (size == 0 && symbol != 0xF0) {
      if (symbol != 0) return kJpegDataError;
      break;
    }
    i += static_cast<std::size_t>(symbol >> 4);
    if (i > 63 || size > 10) return kJpegDataError;
    if (size > 0) block[kJpegZigzag[i]] = dequantised(in.takeSigned(size), (*part.quant)[i]);
  }
  return in.exhausted() ? kJpegEndOfData : kJpegOk;
}

// Steps over RST marker `number`; bytes before it, which an encoder may not have written, are
// an error.
int passRestart(JpegWork& work, JpegBitReader& in, int number) {
  const std::uint8_t* at = in.position();
  while (work.end - at >= 2 && at[0] == 0xFF && at[1] == 0xFF) ++at;
  if (work.end - at < 2) return kJpegEndOfData;
  if (at[0] != 0xFF || at[1] != 0xD0 + number % 8) return kJpegBadRestart;
  in = JpegBitReader(at + 2, work.end);
  return kJpegOk;
}

}  // namespace

std::vector<JpegPlane> jpegMakePlanes(const JpegFrame& frame) {
  const int mcuColumns = ceilDiv(frame.width, 8 * frame.hMax);
  const int mcuRows = ceilDiv(frame.height, 8 * frame.vMax);
  std::vector<JpegPlane> planes(static_cast<std::size_t>(frame.count));
  for (std::size_t c = 0; c < planes.size(); ++c) {
    const JpegFrameComponent& component = frame.components[c];
    JpegPlane& plane = planes[c];
    plane.hRatio = frame.hMax / component.h;
    plane.vRatio = frame.vMax / component.v;
    plane.width = ceilDiv(frame.width, plane.hRatio);
    plane.height = ceilDiv(frame.height, plane.vRatio);
    plane.columns = mcuColumns * component.h;
    plane.rows = mcuRows * component.v;
    constexpr int kFilterMargin = 2;
    plane.step = 8 * plane.columns + kFilterMargin;
    plane.samples.resize(static_cast<std::size_t>(plane.step) *
                         static_cast<std::size_t>(8 * plane.rows));
  }
  return planes;
}

int jpegDecodeScan(JpegWork& work, std::vector<JpegPlane>& planes) {
  const JpegScanHeader& scan = work.scan;
  const bool interleaved = scan.count > 1;
  std::vector<Part> parts(static_cast<std::size_t>(scan.count));
  int mcuColumns = ceilDiv(work.frame.width, 8 * work.frame.hMax);
  int mcuRows = ceilDiv(work.frame.height, 8 * work.frame.vMax);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    Part& part = parts[i];
    const auto c = static_cast<std::size_t>(scan.components[i].component);
    const JpegFrameComponent& component = work.frame.components[c];
    part.plane = &planes[c];
    part.dc = &work.dc[scan.components[i].dc];
    part.ac = &work.ac[scan.components[i].ac];
    part.quant = &work.quant[component.quant];
    part.h = interleaved ? component.h : 1;
    part.v = interleaved ? component.v : 1;
    if (!interleaved) {  // only the blocks that hold samples of the image
      mcuColumns = ceilDiv(part.plane->width, 8);
      mcuRows = ceilDiv(part.plane->height, 8);
    }
    part.blocks.resize(std::size_t{64} * static_cast<std::size_t>(part.plane->columns) *
                       static_cast<std::size_t>(part.v));
    part.plane->decoded = true;
  }

  JpegBitReader in(work.position, work.end);
  int untilRestart = work.restartInterval, restarts = 0;
  for (int row = 0; row < mcuRows; ++row) {
    for (int mcu = 0; mcu < mcuColumns; ++mcu) {
      if (work.restartInterval > 0 && untilRestart-- == 0) {
        if (const int status = passRestart(work, in, restarts++)) return status;
        for (Part& part : parts) part.lastDc = 0;
        untilRestart = work.restartInterval - 1;
      }
      for (Part& part : parts)
        for (int v = 0; v < part.v; ++v)
          for (int h = 0; h < part.h; ++h) {
            const std::ptrdiff_t block =
                std::ptrdiff_t{part.plane->columns} * v + std::ptrdiff_t{mcu} * part.h + h;
            if (const int status = decodeBlock(in, part, part.blocks.data() + 64 * block))
              return status;
          }
    }
    for (Part& part : parts)
      for (int v = 0; v < part.v; ++v)
        prim::primJpegInverse_16s8u(
            part.blocks.data() + std::ptrdiff_t{64} * part.plane->columns * v,
            part.plane->row(8 * (row * part.v + v)), part.plane->step, part.plane->columns);
  }
  work.position = in.position();
  return kJpegOk;
}

}  // namespace vx
