// Our codec and libjpeg-turbo read each other's streams. The standard leaves the rounding of the
// transform and the filter for subsampled chroma to the decoder: with the same filter the two stay
// within one or two levels of each other.

#include "tests/jpeg/pictures.h"
#include "tests/support/test.h"

#ifdef VX_TURBOJPEG
#include <turbojpeg.h>
#endif

namespace {

using vx::test::Rgb;
using vx::test::Scene;

constexpr int kSizes[][2] = {{1, 1}, {7, 3}, {8, 8}, {17, 16}, {33, 47}, {160, 120}};

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

bool turboDecode(const std::vector<std::uint8_t>& stream, Rgb& picture) {
  const tjhandle handle = tjInitDecompress();
  const int status = tjDecompress2(handle, stream.data(), stream.size(), picture.bytes.data(),
                                   picture.width, 0, picture.height, TJPF_RGB, TJFLAG_ACCURATEDCT);
  tjDestroy(handle);
  return status == 0;
}

std::vector<std::uint8_t> turboEncode(const Rgb& picture, int sampling, int quality) {
  const tjhandle handle = tjInitCompress();
  unsigned char* data = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(tjCompress2(handle, picture.bytes.data(), picture.width, 0, picture.height, TJPF_RGB,
                        &data, &size, sampling, quality, TJFLAG_ACCURATEDCT),
            0);
  std::vector<std::uint8_t> stream(data, data + size);
  tjFree(data);
  tjDestroy(handle);
  return stream;
}

// What both decoders make of a stream differs by `largest` levels at most, and on average by `mean`
// where the tables are not the coarsest: flat blocks lie on ties now and then, so that all pixels
// of a few blocks may differ by one.
void expectSameDecoded(Rgb& ours, std::vector<std::uint8_t>& stream, int quality, int largest,
                       double mean) {
  Rgb theirs(ours.width, ours.height);
  ASSERT_EQ(vx::test::decode(ours, stream), 0);
  ASSERT_TRUE(turboDecode(stream, theirs)) << tjGetErrorStr();
  const Difference d = compare(ours, theirs);
  EXPECT_LE(d.largest, largest);
  if (ours.width * ours.height > 1000 && quality >= 10) {
    EXPECT_LE(d.mean, mean);
  }
}

// Both encoders see the same picture: what they lose is about the same.
TEST(Turbo, readsWhatWeWriteAndLosesAsMuch) {
  for (const auto& [width, height] : kSizes)
    for (int subsampling = 0; subsampling <= 2; ++subsampling)
      for (const int color : {vx::kJpegYcc, vx::kJpegRgb})
        for (int quality = 1; quality <= 100; ++quality) {
          SCOPED_TRACE(testing::Message() << width << "x" << height << " subsampling "
                                          << subsampling << " color " << color << " q " << quality);
          Rgb picture = vx::test::makePicture(Scene::edges, width, height);
          Rgb ours(width, height), theirs(width, height);
          auto stream = vx::test::encode(picture, [=](vx::JpegProperties& p) {
            p.streamColor = color;
            p.streamSubsampling = subsampling;
            p.quality = quality;
          });
          // A level of Cb is 1.8 levels of blue; the colour formulas here round downward.
          const bool rgb = color == vx::kJpegRgb;
          expectSameDecoded(ours, stream, quality, rgb ? 1 : 4, rgb ? 0.1 : 0.9);
          if (rgb || width * height < 10000 || quality < 10) continue;
          ASSERT_TRUE(turboDecode(turboEncode(picture, kSampling[subsampling], quality), theirs));
          EXPECT_NEAR(compare(picture, ours).mean, compare(picture, theirs).mean, 0.5);
        }
}

TEST(Turbo, isReadByUs) {
  for (const auto& [width, height] : kSizes)
    for (const int sampling :
         {TJSAMP_444, TJSAMP_422, TJSAMP_420, TJSAMP_440, TJSAMP_411, TJSAMP_GRAY})
      for (int quality = 1; quality <= 100; ++quality) {
        SCOPED_TRACE(testing::Message()
                     << width << "x" << height << " sampling " << sampling << " q " << quality);
        Rgb ours(width, height);
        auto stream =
            turboEncode(vx::test::makePicture(Scene::edges, width, height), sampling, quality);
        expectSameDecoded(ours, stream, quality, 4, 0.9);
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
    Rgb ours(61, 43);
    expectSameDecoded(ours, stream, 80, 4, 0.9);
  }
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
    const auto ours = vx::test::encode(picture, [=](vx::JpegProperties& p) {
      if (quality != 75) p.quality = quality;  // which is the default
    });
    const auto theirs = turboEncode(picture, TJSAMP_444, quality);
    for (const int marker : {0xDB, 0xC4})
      EXPECT_EQ(contents(ours, marker), contents(theirs, marker)) << quality << ", " << marker;
  }
}

#else

TEST(Turbo, isThere) { GTEST_SKIP() << "built without TurboJPEG"; }

#endif

}  // namespace
