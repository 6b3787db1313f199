// Our codec and libjpeg-turbo read each other's streams. The standard leaves the rounding of the
// transform and the filter for subsampled chroma to the decoder: with the same filter the two stay
// within one or two levels of each other.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "tests/jpeg/pictures.h"

#ifdef VX_TURBOJPEG
#include <turbojpeg.h>
#endif

namespace {

using vx::test::Rgb;
using vx::test::Scene;

constexpr int kSizes[][2] = {{1, 1}, {7, 3}, {8, 8}, {17, 16}, {33, 47}, {64, 31}};

#ifdef VX_TURBOJPEG

constexpr int kSampling[] = {TJSAMP_444, TJSAMP_420, TJSAMP_422};  // by our code

// Largest and mean absolute difference.
struct Difference {
  int largest = 0;
  double mean = 0;
};
Difference compare(const Rgb& a, const Rgb& b) {
  Difference d;
  for (std::size_t i = 0; i < a.bytes.size(); ++i) {
    const int delta = std::abs(a.bytes[i] - b.bytes[i]);
    d.largest = std::max(d.largest, delta);
    d.mean += delta;
  }
  d.mean /= static_cast<double>(a.bytes.size());
  return d;
}

// Flat blocks lie on ties now and then, so that all pixels of a few blocks may differ by one.
bool hasManyBlocks(const Rgb& picture) { return picture.width * picture.height > 1000; }

bool turboDecode(const std::vector<std::uint8_t>& stream, std::size_t size, Rgb& picture) {
  const tjhandle handle = tjInitDecompress();
  const int status = tjDecompress2(handle, stream.data(), size, picture.bytes.data(), picture.width,
                                   0, picture.height, TJPF_RGB, TJFLAG_ACCURATEDCT);
  tjDestroy(handle);
  return status == 0;
}

std::vector<std::uint8_t> turboEncode(const Rgb& picture, int sampling, int quality,
                                      int flags = 0) {
  const tjhandle handle = tjInitCompress();
  unsigned char* data = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(tjCompress2(handle, picture.bytes.data(), picture.width, 0, picture.height, TJPF_RGB,
                        &data, &size, sampling, quality, flags | TJFLAG_ACCURATEDCT),
            0);
  std::vector<std::uint8_t> stream(data, data + size);
  tjFree(data);
  tjDestroy(handle);
  return stream;
}

TEST(Turbo, readsWhatWeWrite) {
  for (const auto& size : kSizes)
    for (int subsampling = 0; subsampling <= 2; ++subsampling)
      for (const int color : {vx::kJpegYcc, vx::kJpegRgb})
        for (int quality = 1; quality <= 100; ++quality) {
          Rgb picture = vx::test::makePicture(Scene::edges, size[0], size[1]);
          Rgb ours(size[0], size[1]), theirs(size[0], size[1]);
          auto stream = vx::test::roomFor(picture);
          SCOPED_TRACE(testing::Message() << size[0] << "x" << size[1] << " subsampling "
                                          << subsampling << " color " << color << " q " << quality);
          vx::test::Codec codec(picture, stream);
          codec.p.streamColor = color;
          codec.p.streamSubsampling = subsampling;
          codec.p.quality = quality;
          ASSERT_EQ(vx::jpegWrite(&codec.p, vx::kJpegWriteImage), 0);
          ASSERT_EQ(vx::test::decode(ours, stream), 0);
          ASSERT_TRUE(turboDecode(stream, stream.size(), theirs)) << tjGetErrorStr();
          const Difference d = compare(ours, theirs);
          // A level of Cb is 1.8 levels of blue; the colour formulas here round downward.
          EXPECT_LE(d.largest, color == vx::kJpegRgb ? 1 : 4);
          if (hasManyBlocks(picture) && quality >= 10) {
            EXPECT_LE(d.mean, color == vx::kJpegRgb ? 0.1 : 0.9);
          }
        }
}

TEST(Turbo, isReadByUs) {
  for (const auto& size : kSizes)
    for (const int sampling :
         {TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_440, TJSAMP_411, TJSAMP_GRAY})
      for (int quality = 1; quality <= 100; ++quality) {
        const Rgb picture = vx::test::makePicture(Scene::edges, size[0], size[1]);
        Rgb ours(size[0], size[1]), theirs(size[0], size[1]);
        std::vector<std::uint8_t> stream = turboEncode(picture, sampling, quality);
        SCOPED_TRACE(testing::Message()
                     << size[0] << "x" << size[1] << " sampling " << sampling << " q " << quality);
        ASSERT_EQ(vx::test::decode(ours, stream), 0);
        ASSERT_TRUE(turboDecode(stream, stream.size(), theirs));
        const Difference d = compare(ours, theirs);
        EXPECT_LE(d.largest, 4);
        if (hasManyBlocks(picture) && quality >= 10) {
          EXPECT_LE(d.mean, 0.9);
        }
      }
}

TEST(Turbo, streamsWithRestartMarkersAndOptimisedTablesAreRead) {
  const Rgb picture = vx::test::makePicture(Scene::edges, 61, 43);
  for (const char* restart : {"1", "3B", "2"}) {
    setenv("TJ_RESTART", restart, 1);
    setenv("TJ_OPTIMIZE", "1", 1);
    std::vector<std::uint8_t> stream = turboEncode(picture, TJSAMP_420, 80);
    unsetenv("TJ_RESTART");
    unsetenv("TJ_OPTIMIZE");
    const std::uint8_t marker[] = {0xFF, 0xD0};
    ASSERT_NE(std::search(stream.begin(), stream.end(), marker, marker + 2), stream.end());
    Rgb ours(61, 43), theirs(61, 43);
    ASSERT_EQ(vx::test::decode(ours, stream), 0);
    ASSERT_TRUE(turboDecode(stream, stream.size(), theirs));
    EXPECT_LE(compare(ours, theirs).largest, 4);
  }
  setenv("TJ_PROGRESSIVE", "1", 1);
  std::vector<std::uint8_t> progressive = turboEncode(picture, TJSAMP_420, 80);
  unsetenv("TJ_PROGRESSIVE");
  Rgb untouched(61, 43);
  EXPECT_EQ(vx::test::decode(untouched, progressive), vx::kJpegUnsupportedFrame);
}

// The contents of all segments of a marker, one behind the other.
std::vector<std::uint8_t> contents(const std::vector<std::uint8_t>& stream, int marker) {
  std::vector<std::uint8_t> all;
  for (auto at = stream.begin() + 2; at[1] != 0xDA; at += 2 + (at[2] << 8 | at[3]))
    if (at[1] == marker) all.insert(all.end(), at + 4, at + 2 + (at[2] << 8 | at[3]));
  return all;
}

TEST(Turbo, hasTheSameTablesForEveryQuality) {
  for (int quality = 1; quality <= 100; ++quality) {
    Rgb picture(8, 8);
    auto ours = vx::test::roomFor(picture);
    vx::test::Codec codec(picture, ours);
    if (quality != 75) codec.p.quality = quality;  // which is the default
    ASSERT_EQ(vx::jpegWrite(&codec.p, vx::kJpegWriteImage), 0);
    const auto theirs = turboEncode(picture, TJSAMP_444, quality);
    for (const int marker : {0xDB, 0xC4})
      EXPECT_EQ(contents(ours, marker), contents(theirs, marker)) << quality << ", " << marker;
  }
}

// Both encoders see the same picture: what they lose is about the same.
TEST(Turbo, losesAsMuchAsWeDo) {
  for (int subsampling = 0; subsampling <= 2; ++subsampling)
    for (const int quality : {10, 50, 75, 95}) {
      Rgb picture = vx::test::makePicture(Scene::edges, 160, 120);
      auto stream = vx::test::roomFor(picture);
      vx::test::Codec codec(picture, stream);
      codec.p.streamSubsampling = subsampling;
      codec.p.quality = quality;
      ASSERT_EQ(vx::jpegWrite(&codec.p, vx::kJpegWriteImage), 0);
      Rgb ours(160, 120), theirs(160, 120);
      ASSERT_TRUE(turboDecode(stream, stream.size(), ours));
      const auto reference = turboEncode(picture, kSampling[subsampling], quality);
      ASSERT_TRUE(turboDecode(reference, reference.size(), theirs));
      EXPECT_NEAR(compare(picture, ours).mean, compare(picture, theirs).mean, 0.5)
          << "subsampling " << subsampling << " q " << quality;
    }
}

#else

TEST(Turbo, isThere) { GTEST_SKIP() << "built without TurboJPEG"; }

#endif

}  // namespace
