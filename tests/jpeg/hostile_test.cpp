// Streams that are wrong in one place each: the code tells what, and the image is as it was.

#include "tests/jpeg/pictures.h"
#include "tests/support/test.h"

namespace {

using namespace vx;
using test::Rgb;
using Stream = std::vector<std::uint8_t>;

constexpr int kSoi = 0xD8, kDqt = 0xDB, kSof = 0xC0, kDht = 0xC4, kSos = 0xDA;

// 32 x 24, chroma halved on both axes.
Stream goodStream() {
  Rgb picture = test::makePicture(test::Scene::edges, 32, 24);
  return test::encode(picture, [](JpegProperties& p) { p.streamSubsampling = kJpeg420; });
}

// Where the contents of a marker's segment begin: the marker's own code is at -3.
std::ptrdiff_t contents(const Stream& stream, int marker) {
  const std::uint8_t code[] = {0xFF, static_cast<std::uint8_t>(marker)};
  return std::search(stream.begin(), stream.end(), code, code + 2) - stream.begin() + 4;
}

int statusOf(Stream stream, int width = 32, int height = 24) {
  Rgb picture(width, height);
  std::fill(picture.bytes.begin(), picture.bytes.end(), std::uint8_t{77});
  const Rgb before = picture;
  stream.reserve(1);  // no null for an empty one
  const int status = test::decode(picture, stream);
  EXPECT_TRUE(status == 0 || picture.bytes == before.bytes);
  return status;
}

TEST(Hostile, everyFaultHasItsCode) {
  constexpr int kApplication = 0xE5;
  constexpr std::ptrdiff_t kRest = 1 << 20;
  const Stream frame = {0xFF, 0xC0, 0, 11, 8, 0, 24, 0, 32, 1, 1, 0x11, 0};
  // Twelve blocks without a difference or a frequency.
  const Stream scan = {0xFF, 0xDA, 0,    8,    1,    1,    0,    0,    63,   0,   0x28,
                       0xA2, 0x8A, 0x28, 0xA2, 0x8A, 0x28, 0xA2, 0x8A, 0xFF, 0xD9};
  // `bytes` take the place of `taken` bytes that begin at `at` of the contents.
  const struct {
    const char* what;
    int status, marker;
    std::ptrdiff_t at, taken;
    Stream bytes;
  } faults[] = {
      {"nothing", kJpegNotJpeg, kSoi, -4, kRest, {}},
      {"other data", kJpegNotJpeg, kSoi, -3, 1, {0xD9}},
      {"a start alone", kJpegEndOfData, kSoi, -2, kRest, {}},
      {"a start and an end", kJpegNoImage, kSoi, -2, kRest, {0xFF, 0xD9}},
      {"a second start", kJpegDataError, kSof, -4, 0, {0xFF, 0xD8}},
      {"a length below 2", kJpegDataError, kDqt, -1, 1, {1}},
      {"a length beyond the end", kJpegEndOfData, kDqt, -2, 1, {0x7F}},
      {"a segment cut short", kJpegEndOfData, kDht, 5, kRest, {}},
      {"precision of a quantisation table", kJpegBadQuantTable, kDqt, 0, 1, {0x20}},
      {"place of a quantisation table", kJpegBadQuantTable, kDqt, 0, 1, {4}},
      {"length of a quantisation table", kJpegBadQuantTable, kDqt, 0, 1, {0x10}},
      {"a step of 0", kJpegBadQuantTable, kDqt, 40, 1, {0}},
      {"no quantisation table", kJpegNoQuantTable, kDqt, -3, 1, {kApplication}},
      {"class of a Huffman table", kJpegBadHuffmanTable, kDht, 0, 1, {0x20}},
      {"place of a Huffman table", kJpegBadHuffmanTable, kDht, 0, 1, {4}},
      {"too many codes of a length", kJpegBadHuffmanTable, kDht, 1, 1, {3}},
      {"more symbols than bytes", kJpegBadHuffmanTable, kDht, 16, 1, {255}},
      {"no Huffman tables", kJpegNoHuffmanTable, kDht, -3, 1, {kApplication}},
      {"twelve bits", kJpegNotSupported, kSof, 0, 1, {12}},
      {"height 0", kJpegBadDnl, kSof, 2, 1, {0}},
      {"width 0", kJpegBadFrame, kSof, 4, 1, {0}},
      {"number of components", kJpegBadFrame, kSof, 5, 1, {4}},
      {"sampling factor 0", kJpegBadComponent, kSof, 7, 1, {0x20}},
      {"sampling factor 5", kJpegBadComponent, kSof, 7, 1, {0x52}},
      {"factors that do not divide", kJpegUnsupportedSubsampling, kSof, 7, 4, {0x32, 0, 2, 0x21}},
      {"place of a component's table", kJpegBadFrame, kSof, 8, 1, {4}},
      {"a component twice", kJpegBadComponent, kSof, 9, 1, {1}},
      {"a progressive frame", kJpegUnsupportedFrame, kSof, -3, 1, {0xC2}},
      {"no frame", kJpegNoFrame, kSof, -3, 1, {kApplication}},
      {"two frames", kJpegMultipleFrames, kSos, -4, 0, frame},
      {"another size", kJpegInvalidProperties, kSof, 4, 1, {33}},
      {"lines announced late", kJpegBadDnl, kSos, -4, 0, {0xFF, 0xDC, 0, 4, 0, 24}},
      {"restart interval of 3 bytes", kJpegBadRestart, kSos, -4, 0, {0xFF, 0xDD, 0, 5, 0, 1, 0}},
      {"restart markers that are missing", kJpegBadRestart, kSos, -4, 0, {0xFF, 0xDD, 0, 4, 0, 1}},
      {"no components in a scan", kJpegBadComponent, kSos, 0, 1, {0}},
      {"an unknown component", kJpegBadComponent, kSos, 1, 1, {9}},
      {"a component twice in a scan", kJpegBadComponent, kSos, 3, 1, {1}},
      {"an undefined Huffman table", kJpegNoHuffmanTable, kSos, 2, 1, {0x02}},
      {"spectral selection", kJpegDataError, kSos, 7, 1, {1}},
      {"the scan cut short", kJpegEndOfData, kSos, 30, kRest, {}},
      {"a scan of ones", kJpegDataError, kSos, 10, 4, {0xFF, 0, 0xFF, 0}},
      {"a scan of one component only", kJpegNoImage, kSos, -4, kRest, scan},
  };
  const Stream good = goodStream();
  ASSERT_EQ(statusOf(good), kJpegOk);
  for (const auto& fault : faults) {
    Stream stream = good;
    const auto from = stream.begin() + contents(good, fault.marker) + fault.at;
    const auto behind = stream.erase(from, from + std::min(fault.taken, stream.end() - from));
    stream.insert(behind, fault.bytes.begin(), fault.bytes.end());
    EXPECT_EQ(statusOf(stream), fault.status) << fault.what << ": " << jpegErrorText(fault.status);
  }
}

TEST(Hostile, everyTruncationIsRefused) {
  const Stream good = goodStream();
  for (std::size_t size = 0; size + 2 < good.size(); ++size) {
    const int status =
        statusOf(Stream(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
    ASSERT_TRUE(status == kJpegEndOfData || (size < 2 && status == kJpegNotJpeg))
        << size << ": " << status;
  }
}

// 65535 x 65535 in a stream of a few bytes must not cost memory.
TEST(Hostile, theLargestSizeIsOnlyReported) {
  Stream stream = goodStream();
  std::fill_n(stream.begin() + contents(stream, kSof) + 1, 4, std::uint8_t{0xFF});
  Rgb picture(1, 1);
  test::Codec codec(picture, stream);
  EXPECT_EQ(jpegRead(&codec.p, kJpegReadParameters), kJpegOk);
  EXPECT_EQ(codec.p.streamWidth, 65535);
  EXPECT_EQ(codec.p.streamSubsampling, kJpeg420);
  EXPECT_EQ(statusOf(stream), kJpegInvalidProperties);
}

TEST(Hostile, recordsAreChecked) {
  EXPECT_EQ(jpegInit(nullptr), kJpegInvalidProperties);
  EXPECT_EQ(jpegFree(nullptr), kJpegInvalidProperties);
  const struct {
    int status;
    std::function<void(JpegProperties&)> spoil;
    int mode = kJpegWriteImage;
  } cases[] = {
      {kJpegOk, [](JpegProperties&) {}},
      {kJpegNotSupported, [](JpegProperties&) {}, kJpegReadImage},
      {kJpegInvalidProperties, [](JpegProperties& p) { p.imageData = nullptr; }},
      {kJpegInvalidProperties, [](JpegProperties& p) { p.streamData = nullptr; }},
      {kJpegInvalidProperties, [](JpegProperties& p) { p.imageWidth = p.streamWidth = 0; }},
      {kJpegInvalidProperties, [](JpegProperties& p) { p.streamHeight = 8; }},
      {kJpegNotSupported, [](JpegProperties& p) { p.imageWidth = p.streamWidth = 65536; }},
      {kJpegUnsupportedBytesPerPixel, [](JpegProperties& p) { p.imageChannels = 4; }},
      {kJpegUnsupportedSubsampling, [](JpegProperties& p) { p.streamSubsampling = 3; }}};
  for (const auto& c : cases) {
    Rgb picture(9, 9);
    Stream stream = test::roomFor(picture);
    test::Codec codec(picture, stream);
    c.spoil(codec.p);
    EXPECT_EQ(jpegWrite(&codec.p, c.mode), c.status) << "case " << &c - cases;
  }
}

// With one byte less than it needs the encoder refuses, and writes no byte beyond its room.
TEST(Hostile, aBlockTooSmallIsRefused) {
  const auto needed = static_cast<int>(goodStream().size());
  Rgb picture = test::makePicture(test::Scene::edges, 32, 24);
  for (int size = 0; size <= needed; size += size < needed - 8 ? 7 : 1) {
    Stream stream(static_cast<std::size_t>(needed) + 8, 0xA5);
    test::Codec codec(picture, stream);
    codec.p.streamSubsampling = kJpeg420;
    codec.p.streamSize = size;
    ASSERT_EQ(jpegWrite(&codec.p, kJpegWriteImage), size < needed ? kJpegBufferTooSmall : kJpegOk);
    ASSERT_EQ(std::count(stream.begin() + size, stream.end(), 0xA5), needed + 8 - size);
  }
}

TEST(Hostile, codesHaveTheirTexts) {
  EXPECT_STREQ(jpegErrorText(2), "ROI Success");
  EXPECT_STREQ(jpegErrorText(0), "Success");
  EXPECT_STREQ(jpegErrorText(kJpegBufferTooSmall), "Output buffer too small");
  EXPECT_STREQ(jpegErrorText(-30), "Error access to jpeg_comment buffer");
  EXPECT_STREQ(jpegErrorText(-99), "Reserved");
  for (const int code : {3, -31, -98, -100, 1 << 30})
    EXPECT_STREQ(jpegErrorText(code), "Unknown error code");
}

}  // namespace
