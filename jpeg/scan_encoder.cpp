#include "jpeg/scan_encoder.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "jpeg/bit_writer.h"
#include "jpeg/jpeg.h"
#include "jpeg/samples.h"

namespace vx {
namespace {

// The coefficients of one component in one row of MCUs.
struct Component {
  int h, v;  // blocks per MCU
  int tables;
  int columns;                       // blocks in a row
  std::vector<std::int16_t> blocks;  // v rows of them
  int dc = 0;
};

void putMagnitude(JpegBitWriter& out, const JpegHuffmanCodes& codes, int symbolHigh, int value) {
  const int size = std::bit_width(static_cast<unsigned>(std::abs(value)));
  const int symbol = symbolHigh << 4 | size;
  const auto index = static_cast<std::size_t>(symbol);
  // A negative value is coded as the low bits of value - 1.
  const auto bits = static_cast<std::uint32_t>(value < 0 ? value - 1 : value) & ((1u << size) - 1);
  out.put(std::uint32_t{codes.code[index]} << size | bits, codes.length[index] + size);
}

void putBlock(JpegBitWriter& out, Component& component, const std::int16_t* block) {
  const bool chroma = component.tables == 1;
  const JpegHuffmanCodes& dcCodes = jpegHuffmanCodes(false, chroma);
  const JpegHuffmanCodes& acCodes = jpegHuffmanCodes(true, chroma);
  putMagnitude(out, dcCodes, 0, block[0] - component.dc);
  component.dc = block[0];
  int zeros = 0;
  for (std::size_t i = 1; i < 64; ++i) {
    const int value = block[kJpegZigzag[i]];
    if (value == 0) {
      ++zeros;
      continue;
    }
    for (; zeros > 15; zeros -= 16) out.put(acCodes.code[0xF0], acCodes.length[0xF0]);
    putMagnitude(out, acCodes, zeros, value);
    zeros = 0;
  }
  if (zeros > 0) out.put(acCodes.code[0], acCodes.length[0]);
}

// Rows of samples of one MCU row, for one component or all.
struct SampleRows {
  SampleRows(int rows, int rowLength)
      : length(rowLength),
        samples(static_cast<std::size_t>(rows) * static_cast<std::size_t>(rowLength)) {}
  std::int16_t* row(int y) { return samples.data() + std::ptrdiff_t{y} * length; }

  int length;
  std::vector<std::int16_t> samples;
};

}  // namespace

JpegCoding::JpegCoding(bool ycc, int subsamplingCode, int quality) noexcept
    : useYcc(ycc),
      hFactor(subsamplingCode == kJpeg444 ? 1 : 2),
      vFactor(subsamplingCode == kJpeg420 ? 2 : 1),
      table{jpegQuantTable(false, quality), jpegQuantTable(true, quality)},
      quantiser{jpegQuantiser(table[0]), jpegQuantiser(table[1])},
      oneTableSet(!ycc && subsamplingCode == kJpeg444) {}

int JpegCoding::headerBytes() const {
  const int sets = oneTableSet ? 1 : 2;
  const int quant = 4 + 65 * sets;
  const int huffman = 4 + (17 + 12 + 17 + 162) * sets;
  constexpr int kFrame = 19, kScan = 14, kStart = 2, kEnd = 2;
  return kStart + quant + kFrame + huffman + kScan + kEnd;
}

std::int64_t jpegEncodeScan(const JpegCoding& coding, int width, int height,
                            const JpegRowSource& source, std::uint8_t* out, std::int64_t room) {
  const int mcuColumns = (width - 1) / coding.mcuWidth() + 1;
  const int mcuRows = (height - 1) / coding.mcuHeight() + 1;
  const int length = mcuColumns * coding.mcuWidth();
  const int mcuHeight = coding.mcuHeight();

  Component components[3];
  for (int c = 0; c < 3; ++c) {
    Component& component = components[c];
    component.h = c == 0 ? coding.hFactor : 1;
    component.v = c == 0 ? coding.vFactor : 1;
    component.tables = coding.tablesOf(c);
    component.columns = mcuColumns * component.h;
    component.blocks.resize(std::size_t{64} * static_cast<std::size_t>(component.columns) *
                            static_cast<std::size_t>(component.v));
  }
  SampleRows samples[3] = {{mcuHeight, length}, {mcuHeight, length}, {mcuHeight, length}};
  const bool reduced = coding.hFactor > 1;
  SampleRows small(8, mcuColumns * 8);
  std::vector<std::int16_t> columns(static_cast<std::size_t>(length) * 8);

  JpegBitWriter writer(out, room);
  for (int mcuRow = 0; mcuRow < mcuRows && !writer.overflowed(); ++mcuRow) {
    for (int y = 0; y < mcuHeight; ++y) {
      std::int16_t* const rows[] = {samples[0].row(y), samples[1].row(y), samples[2].row(y)};
      source.read(std::min(mcuRow * mcuHeight + y, height - 1), length, rows);
    }
    for (int c = 0; c < 3; ++c) {
      Component& component = components[c];
      const bool halved = c > 0 && reduced;
      if (halved)
        for (int y = 0; y < 8; ++y) {
          const int v = coding.vFactor;
          jpegReduceRow(samples[c].row(v * y), v == 1 ? nullptr : samples[c].row(v * y + 1), y & 1,
                        small.length, small.row(y));
        }
      for (int v = 0; v < component.v; ++v) {
        SampleRows& from = halved ? small : samples[c];
        const std::int16_t* rows[8];
        for (int y = 0; y < 8; ++y) rows[y] = from.row(8 * v + y);
        prim::primJpegForward_16s(rows, columns.data(), from.length);
        prim::primJpegQuantise_16s(
            columns.data(), component.blocks.data() + std::ptrdiff_t{64} * component.columns * v,
            component.columns, &coding.quantiser[component.tables]);
      }
    }
    for (int mcu = 0; mcu < mcuColumns && !writer.overflowed(); ++mcu)
      for (Component& component : components)
        for (int v = 0; v < component.v; ++v)
          for (int h = 0; h < component.h; ++h)
            putBlock(writer, component,
                     component.blocks.data() +
                         std::ptrdiff_t{64} * (component.columns * v + mcu * component.h + h));
  }
  writer.finish();
  return writer.size();
}

}  // namespace vx
