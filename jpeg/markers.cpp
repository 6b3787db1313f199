#include "jpeg/markers.h"

#include <algorithm>
#include <cstring>

namespace vx {
namespace {

// The contents of a marker segment.
class Segment {
 public:
  Segment(const std::uint8_t* data, int size) : data_(data), left_(size) {}
  int left() const { return left_; }
  const std::uint8_t* data() const { return data_; }
  // Not to be called with nothing left.
  int byte() {
    --left_;
    return *data_++;
  }
  int word() {
    const int high = byte();
    return high << 8 | byte();
  }
  void skip(int count) {
    data_ += count;
    left_ -= count;
  }

 private:
  const std::uint8_t* data_;
  int left_;
};

int readQuantTables(JpegWork& work, Segment segment) {
  while (segment.left() > 0) {
    const int head = segment.byte();
    const int precision = head >> 4;
    const auto index = static_cast<std::size_t>(head & 15);
    if (precision > 1 || index > 3 || segment.left() < 64 * (precision + 1))
      return kJpegBadQuantTable;
    JpegQuantTable table;
    for (std::uint8_t& entry : table) {
      const int value = precision == 0 ? segment.byte() : segment.word();
      // Sixteen-bit tables may hold small entries; baseline needs no others.
      if (value < 1 || value > 255) return kJpegBadQuantTable;
      entry = static_cast<std::uint8_t>(value);
    }
    work.quant[index] = table;
    work.quantDefined[index] = true;
  }
  return kJpegOk;
}

int readHuffmanTables(JpegWork& work, Segment segment) {
  while (segment.left() > 0) {
    if (segment.left() < 17) return kJpegBadHuffmanTable;
    const int head = segment.byte();
    const auto index = static_cast<std::size_t>(head & 15);
    std::array<std::uint8_t, 16> counts;
    int symbols = 0;
    for (std::uint8_t& count : counts) {
      count = static_cast<std::uint8_t>(segment.byte());
      symbols += count;
    }
    if (head >> 4 > 1 || index > 3 || symbols > 256 || symbols > segment.left())
      return kJpegBadHuffmanTable;
    JpegHuffmanDecoder& table = head >> 4 == 0 ? work.dc[index] : work.ac[index];
    if (!table.build(counts, segment.data())) return kJpegBadHuffmanTable;
    segment.skip(symbols);
  }
  return kJpegOk;
}

int readFrame(JpegWork& work, Segment segment) {
  JpegFrame& frame = work.frame;
  if (frame.defined) return kJpegMultipleFrames;
  if (segment.left() < 6) return kJpegBadFrame;
  if (segment.byte() != 8) return kJpegNotSupported;
  frame.height = segment.word();
  frame.width = segment.word();
  frame.count = segment.byte();
  if (segment.left() != 3 * frame.count || frame.width == 0) return kJpegBadFrame;
  if (frame.height == 0) return kJpegBadDnl;  // the height would follow the first scan
  if (frame.count != 1 && frame.count != 3) return kJpegNotSupported;
  frame.hMax = frame.vMax = 1;
  for (int c = 0; c < frame.count; ++c) {
    JpegFrameComponent& component = frame.components[c];
    component.id = segment.byte();
    const int factors = segment.byte();
    component.h = factors >> 4;
    component.v = factors & 15;
    component.quant = segment.byte();
    if (component.h < 1 || component.h > 4 || component.v < 1 || component.v > 4)
      return kJpegBadComponent;
    if (component.quant > 3) return kJpegBadFrame;
    for (int other = 0; other < c; ++other)
      if (frame.components[other].id == component.id) return kJpegBadComponent;
    frame.hMax = std::max(frame.hMax, component.h);
    frame.vMax = std::max(frame.vMax, component.v);
  }
  for (int c = 0; c < frame.count; ++c) {
    const JpegFrameComponent& component = frame.components[c];
    if (frame.hMax % component.h != 0 || frame.vMax % component.v != 0)
      return kJpegUnsupportedSubsampling;
  }
  frame.defined = true;
  return kJpegOk;
}

int readScan(JpegWork& work, Segment segment) {
  if (!work.frame.defined) return kJpegNoFrame;
  if (segment.left() < 1) return kJpegBadComponent;
  JpegScanHeader& scan = work.scan;
  scan.count = segment.byte();
  if (scan.count < 1 || scan.count > work.frame.count || segment.left() != 2 * scan.count + 3)
    return kJpegBadComponent;
  int blocks = 0;
  for (int i = 0; i < scan.count; ++i) {
    JpegScanComponent& component = scan.components[i];
    const int id = segment.byte();
    const int tables = segment.byte();
    component.component = -1;
    for (int c = 0; c < work.frame.count; ++c)
      if (work.frame.components[c].id == id) component.component = c;
    if (component.component < 0) return kJpegBadComponent;
    for (int other = 0; other < i; ++other)
      if (scan.components[other].component == component.component) return kJpegBadComponent;
    component.dc = tables >> 4;
    component.ac = tables & 15;
    if (component.dc > 3 || component.ac > 3 || !work.dc[component.dc].defined ||
        !work.ac[component.ac].defined)
      return kJpegNoHuffmanTable;
    const auto& part = work.frame.components[component.component];
    if (!work.quantDefined[part.quant]) return kJpegNoQuantTable;
    blocks += part.h * part.v;
  }
  if (scan.count > 1 && blocks > 10) return kJpegBadComponent;  // T.81, B.2.3
  if (segment.byte() != 0 || segment.byte() != 63 || segment.byte() != 0) return kJpegDataError;
  return kJpegOk;
}

void readApplication(JpegWork& work, int code, const Segment& segment) {
  if (code == 0xE0 && segment.left() >= 5 && std::memcmp(segment.data(), "JFIF", 5) == 0)
    work.jfif = true;
  if (code == 0xEE && segment.left() >= 12 && std::memcmp(segment.data(), "Adobe", 5) == 0)
    work.adobeTransform = segment.data()[11];
}

// The next marker's code, 0 at the end of the data.
int nextMarker(JpegWork& work) {
  while (work.end - work.position >= 2) {
    if (work.position[0] == 0xFF && work.position[1] != 0 && work.position[1] != 0xFF) {
      work.position += 2;
      return work.position[-1];
    }
    ++work.position;
  }
  return 0;
}

}  // namespace

int jpegNextScan(JpegWork& work, bool& found) noexcept {
  found = false;
  while (const int code = nextMarker(work)) {
    if (code == 0xD9) return kJpegOk;
    if (code == 0xD8) return kJpegDataError;
    if (code == 0x01 || (code >= 0xD0 && code <= 0xD7)) continue;  // without a segment
    if (work.end - work.position < 2) return kJpegEndOfData;
    const int size = (work.position[0] << 8 | work.position[1]) - 2;
    if (size < 0) return kJpegDataError;
    if (work.end - work.position < size + 2) return kJpegEndOfData;
    const Segment segment(work.position + 2, size);
    work.position += size + 2;
    int status = kJpegOk;
    switch (code) {
      case 0xDB:
        status = readQuantTables(work, segment);
        break;
      case 0xC4:
        status = readHuffmanTables(work, segment);
        break;
      case 0xC0:
      case 0xC1:  // extended: the same at eight bits with Huffman coding
        status = readFrame(work, segment);
        break;
      case 0xDA:
        found = true;
        return readScan(work, segment);
      case 0xDC:
        return kJpegBadDnl;
      case 0xDD:
        if (segment.left() != 2) return kJpegBadRestart;
        work.restartInterval = Segment(segment).word();
        break;
      default:
        if (code >= 0xC2 && code <= 0xCF) return kJpegUnsupportedFrame;
        readApplication(work, code, segment);
    }
    if (status != kJpegOk) return status;
  }
  return kJpegEndOfData;
}

int jpegReadHeaders(JpegWork& work, const std::uint8_t* data, int size) noexcept {
  work = JpegWork();
  if (size < 2 || data[0] != 0xFF || data[1] != 0xD8) return kJpegNotJpeg;
  work.position = data + 2;
  work.end = data + size;
  bool found = false;
  const int status = jpegNextScan(work, found);
  if (status != kJpegOk) return status;
  return found ? kJpegOk : kJpegNoImage;
}

}  // namespace vx
