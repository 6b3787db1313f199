// Streams that are wrong in one place each: the code tells what, and the image is as it was.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/jpeg/pictures.h"

namespace {

using namespace vx;
using test::Rgb;
using Stream = std::vector<std::uint8_t>;

constexpr int kDqt = 0xDB, kSof = 0xC0, kDht = 0xC4, kSos = 0xDA;

// 32 x 24, chroma halved on both axes.
Stream goodStream() {
  Rgb picture = test::makePicture(test::Scene::edges, 32, 24);
  Stream stream = test::roomFor(picture);
  test::Codec codec(picture, stream);
  codec.p.streamSubsampling = kJpeg420;
  EXPECT_EQ(jpegWrite(&codec.p, kJpegWriteImage), kJpegOk);
  const std::uint8_t end[] = {0xFF, 0xD9};
  stream.resize(static_cast<std::size_t>(std::find_end(stream.begin(), stream.end(), end, end + 2) -
                                         stream.begin() + 2));
  return stream;
}

// The first byte of a marker's segment but for the length; the marker's own code is at -3.
std::uint8_t* contents(Stream& stream, int marker) {
  const std::uint8_t code[] = {0xFF, static_cast<std::uint8_t>(marker)};
  return &*std::search(stream.begin(), stream.end(), code, code + 2) + 4;
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
  const auto set = [](int marker, std::ptrdiff_t at, int value) {
    return [=](Stream& s) { contents(s, marker)[at] = static_cast<std::uint8_t>(value); };
  };
  const auto insert = [](int marker, Stream bytes) {
    return [=](Stream& s) {
      s.insert(s.begin() + (contents(s, marker) - 4 - s.data()), bytes.begin(), bytes.end());
    };
  };
  const auto cut = [](int marker, std::ptrdiff_t behind) {
    return [=](Stream& s) {
      s.resize(static_cast<std::size_t>(contents(s, marker) + behind - s.data()));
    };
  };
  constexpr int kApplication = 0xE5;
  const struct {
    const char* what;
    int status;
    std::function<void(Stream&)> spoil;
  } cases[] = {
      {"nothing", kJpegNotJpeg, [](Stream& s) { s.clear(); }},
      {"other data", kJpegNotJpeg, [](Stream& s) { s[1] = 0xD9; }},
      {"a start alone", kJpegEndOfData, [](Stream& s) { s.resize(2); }},
      {"a start and an end", kJpegNoImage,
       [](Stream& s) {
         s = {0xFF, 0xD8, 0xFF, 0xD9};
       }},
      {"a second start", kJpegDataError, insert(kSof, {0xFF, 0xD8})},
      {"a length below 2", kJpegDataError, set(kDqt, -1, 1)},
      {"a length beyond the end", kJpegEndOfData, set(kDqt, -2, 0x7F)},
      {"a segment cut short", kJpegEndOfData, cut(kDht, 5)},
      {"precision of a quantisation table", kJpegBadQuantTable, set(kDqt, 0, 0x20)},
      {"place of a quantisation table", kJpegBadQuantTable, set(kDqt, 0, 4)},
      {"length of a quantisation table", kJpegBadQuantTable, set(kDqt, 0, 0x10)},
      {"a step of 0", kJpegBadQuantTable, set(kDqt, 40, 0)},
      {"no quantisation table", kJpegNoQuantTable, set(kDqt, -3, kApplication)},
      {"class of a Huffman table", kJpegBadHuffmanTable, set(kDht, 0, 0x20)},
      {"place of a Huffman table", kJpegBadHuffmanTable, set(kDht, 0, 4)},
      {"too many codes of a length", kJpegBadHuffmanTable, set(kDht, 1, 3)},
      {"more symbols than bytes", kJpegBadHuffmanTable, set(kDht, 16, 255)},
      {"no Huffman tables", kJpegNoHuffmanTable, set(kDht, -3, kApplication)},
      {"twelve bits", kJpegNotSupported, set(kSof, 0, 12)},
      {"height 0", kJpegBadDnl, set(kSof, 2, 0)},
      {"width 0", kJpegBadFrame, set(kSof, 4, 0)},
      {"number of components", kJpegBadFrame, set(kSof, 5, 4)},
      {"sampling factor 0", kJpegBadComponent, set(kSof, 7, 0x20)},
      {"sampling factor 5", kJpegBadComponent, set(kSof, 7, 0x52)},
      {"factors that do not divide", kJpegUnsupportedSubsampling,
       [&](Stream& s) {
         set(kSof, 7, 0x32)(s);
         set(kSof, 10, 0x21)(s);
       }},
      {"place of a component's table", kJpegBadFrame, set(kSof, 8, 4)},
      {"a component twice", kJpegBadComponent, set(kSof, 9, 1)},
      {"a progressive frame", kJpegUnsupportedFrame, set(kSof, -3, 0xC2)},
      {"no frame", kJpegNoFrame, set(kSof, -3, kApplication)},
      {"two frames", kJpegMultipleFrames,
       insert(kSos, {0xFF, 0xC0, 0, 11, 8, 0, 24, 0, 32, 1, 1, 0x11, 0})},
      {"another size", kJpegInvalidProperties, set(kSof, 4, 33)},
      {"lines announced late", kJpegBadDnl, insert(kSos, {0xFF, 0xDC, 0, 4, 0, 24})},
      {"restart interval of three bytes", kJpegBadRestart,
       insert(kSos, {0xFF, 0xDD, 0, 5, 0, 1, 0})},
      {"restart markers that are missing", kJpegBadRestart, insert(kSos, {0xFF, 0xDD, 0, 4, 0, 1})},
      {"no components in a scan", kJpegBadComponent, set(kSos, 0, 0)},
      {"an unknown component", kJpegBadComponent, set(kSos, 1, 9)},
      {"a component twice in a scan", kJpegBadComponent, set(kSos, 3, 1)},
      {"an undefined Huffman table", kJpegNoHuffmanTable, set(kSos, 2, 0x02)},
      {"spectral selection", kJpegDataError, set(kSos, 7, 1)},
      {"the scan cut short", kJpegEndOfData, cut(kSos, 30)},
      {"a scan of ones", kJpegDataError,
       [](Stream& s) {
         std::uint8_t* data = contents(s, kSos) + 10;
         for (int i = 0; i < 40; ++i) data[i] = i % 2 == 0 ? 0xFF : 0;
       }},
      {"a scan of one component only", kJpegNoImage,
       [&](Stream& s) {
         s.resize(static_cast<std::size_t>(contents(s, kSos) - 4 - s.data()));
         const std::uint8_t scan[] = {0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0};
         s.insert(s.end(), scan, scan + sizeof scan);
         s.insert(s.end(), 64, std::uint8_t{0x2A});
         s.insert(s.end(), {0xFF, 0xD9});
       }},
  };
  const Stream good = goodStream();
  ASSERT_EQ(statusOf(good), kJpegOk);
  for (const auto& c : cases) {
    Stream stream = good;
    c.spoil(stream);
    EXPECT_EQ(statusOf(stream), c.status) << c.what << ": " << jpegErrorText(c.status);
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
  std::fill_n(contents(stream, kSof) + 1, 4, std::uint8_t{0xFF});
  JpegProperties p;
  ASSERT_EQ(jpegInit(&p), kJpegOk);
  p.streamData = stream.data();
  p.streamSize = static_cast<int>(stream.size());
  EXPECT_EQ(jpegRead(&p, kJpegReadParameters), kJpegOk);
  EXPECT_EQ(p.streamWidth, 65535);
  EXPECT_EQ(p.streamSubsampling, kJpeg420);
  EXPECT_EQ(jpegFree(&p), kJpegOk);
  EXPECT_EQ(statusOf(stream), kJpegInvalidProperties);
}

TEST(Hostile, recordsAreChecked) {
  EXPECT_EQ(jpegInit(nullptr), kJpegInvalidProperties);
  EXPECT_EQ(jpegFree(nullptr), kJpegInvalidProperties);
  const auto written = [](const std::function<void(JpegProperties&)>& spoil,
                          int mode = kJpegWriteImage) {
    Rgb picture(9, 9);
    Stream stream = test::roomFor(picture);
    test::Codec codec(picture, stream);
    spoil(codec.p);
    return jpegWrite(&codec.p, mode);
  };
  EXPECT_EQ(written([](JpegProperties&) {}), kJpegOk);
  EXPECT_EQ(written([](JpegProperties&) {}, kJpegReadImage), kJpegNotSupported);
  EXPECT_EQ(written([](JpegProperties& p) { p.imageData = nullptr; }), kJpegInvalidProperties);
  EXPECT_EQ(written([](JpegProperties& p) { p.streamData = nullptr; }), kJpegInvalidProperties);
  EXPECT_EQ(written([](JpegProperties& p) { p.imageWidth = p.streamWidth = 0; }),
            kJpegInvalidProperties);
  EXPECT_EQ(written([](JpegProperties& p) { p.streamHeight = 8; }), kJpegInvalidProperties);
  EXPECT_EQ(written([](JpegProperties& p) { p.imageWidth = p.streamWidth = 65536; }),
            kJpegNotSupported);
  EXPECT_EQ(written([](JpegProperties& p) { p.imageChannels = 4; }), kJpegUnsupportedBytesPerPixel);
  EXPECT_EQ(written([](JpegProperties& p) { p.streamSubsampling = 3; }),
            kJpegUnsupportedSubsampling);
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
