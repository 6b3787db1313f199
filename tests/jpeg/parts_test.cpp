// What encoder, decoder and round trip share, so that comparing them does not show it, and the
// switches of their records.

#include "jpeg/samples.h"
#include "jpeg/tables.h"
#include "tests/jpeg/pictures.h"
#include "tests/support/test.h"

namespace {

using namespace vx;

// Qualities that are none of the standard's: 0 takes the tables as they are.
TEST(QuantTables, haveAnAnswerForEveryByte) {
  EXPECT_EQ(jpegQuantTable(true, 0), jpegQuantTable(true, 50));
  for (const int quality : {100, 101, 255}) EXPECT_EQ(jpegQuantTable(false, quality)[63], 1);
}

// Over the rows, whose rounding alternates, and all remainders of a sum no mean is lost or won.
TEST(ReduceRow, keepsTheMean) {
  for (const bool pairs : {false, true}) {
    const int samples = pairs ? 2 : 4;
    int drift = 0;
    for (int i = 0; i < 256; ++i) {
      const std::int16_t v[] = {
          static_cast<std::int16_t>(i % 4), static_cast<std::int16_t>(i / 4 % 4),
          static_cast<std::int16_t>(i / 16 % 4), static_cast<std::int16_t>(-i / 64)};
      for (const int bias : {0, 1}) {
        std::int16_t mean;
        jpegReduceRow(v, pairs ? nullptr : v + 2, bias, 1, &mean);
        const int error = samples * mean - std::accumulate(v, v + samples, 0);
        EXPECT_LE(std::abs(error), samples / 2);
        drift += error;
      }
    }
    EXPECT_EQ(drift, 0) << samples;
  }
}

// Factors that are alike subsample nothing, whatever they are. All blocks of a grey picture have
// the same bits, so that their order does not matter.
TEST(Switches, upsamplingIsRefusedWhereThereIsSome) {
  test::Rgb picture(16, 8);
  std::fill(picture.bytes.begin(), picture.bytes.end(), std::uint8_t{128});
  for (const int sampling : {kJpeg444, kJpeg422, kJpeg420}) {
    auto stream = test::encode(picture, [=](JpegProperties& p) {
      p.streamColor = kJpegRgb;
      p.streamSubsampling = sampling;
    });
    const std::uint8_t frame[] = {0xFF, 0xC0};
    const auto at = std::search(stream.begin(), stream.end(), frame, frame + 2);
    for (const int factors : {11, 14, 17})
      if (sampling == kJpeg444) at[factors] = 0x21;
    const auto decode = [&](int upsampling) {
      return test::decode(picture, stream, [=](JpegProperties& p) { p.upsampling = upsampling; });
    };
    EXPECT_EQ(decode(0), sampling == kJpeg444 ? kJpegOk : kJpegUnsupportedSubsampling);
    EXPECT_EQ(decode(1), kJpegOk);
    EXPECT_EQ(std::count(picture.bytes.begin(), picture.bytes.end(), 128), 3 * 16 * 8);
  }
}

// Without the conversion of colours the samples of a stream are those of the image.
TEST(Switches, colorConversionMayBeLeftOut) {
  constexpr int kRgb[] = {200, 50, 90}, kYcc[] = {99, 123, 200};  // the same colour
  for (const bool writer : {false, true})
    for (const bool reader : {false, true}) {
      test::Rgb picture(8, 8);
      for (std::size_t i = 0; i < picture.bytes.size(); ++i)
        picture.bytes[i] = static_cast<std::uint8_t>(writer ? kRgb[i % 3] : kYcc[i % 3]);
      const auto converting = [](bool conversion) {
        return [=](JpegProperties& p) { p.quality = 100, p.colorConversion = conversion; };
      };
      auto stream = test::encode(picture, converting(writer));
      ASSERT_EQ(test::decode(picture, stream, converting(reader)), kJpegOk);
      for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(picture.bytes[c], reader ? kRgb[c] : kYcc[c], 2) << writer << reader << c;
    }
}

}  // namespace
