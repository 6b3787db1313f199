// Damaged streams of our own encoder.

#include <algorithm>

#include "tests/fuzz/inputs.h"
#include "tests/jpeg/pictures.h"

namespace {

using Stream = std::vector<std::uint8_t>;

std::vector<Stream> makeSeeds() {
  using namespace vx;
  std::vector<Stream> seeds;
  for (const int subsampling : {kJpeg444, kJpeg420, kJpeg422})
    for (const int color : {kJpegYcc, kJpegRgb}) {
      test::Rgb picture = test::makePicture(test::Scene::edges, 23 + subsampling, 17);
      seeds.push_back(test::encode(picture, [=](JpegProperties& p) {
        p.streamSubsampling = subsampling;
        p.streamColor = color;
      }));
    }
  return seeds;
}

void spoil(Stream& stream, std::mt19937& rng) {
  static constexpr std::uint8_t kBytes[] = {0, 1, 2, 4, 0x11, 0x44, 0x7F, 0x80, 0xFF};
  static constexpr std::uint8_t kMarkers[] = {0xC0, 0xC1, 0xC4, 0xD0, 0xD1, 0xD8,
                                              0xD9, 0xDA, 0xDB, 0xDD, 0xE0, 0xEE};
  for (unsigned n = 1 + rng() % 4; n > 0 && !stream.empty(); --n) {
    const std::size_t at = rng() % stream.size();
    const auto place = stream.begin() + static_cast<std::ptrdiff_t>(at);
    const auto rest = static_cast<std::ptrdiff_t>(std::min(rng() % 64, stream.size() - at));
    const unsigned kind = rng() % 8;
    if (kind == 0) stream[at] = static_cast<std::uint8_t>(stream[at] ^ 1u << rng() % 8);
    if (kind == 1) stream[at] = kBytes[rng() % std::size(kBytes)];
    if (kind == 2) stream.resize(at);
    if (kind == 3) stream.erase(place, place + rest);
    if (kind == 4) {  // a part once more, somewhere else
      const Stream part(place, place + rest);
      stream.insert(stream.begin() + static_cast<std::ptrdiff_t>(rng() % stream.size()),
                    part.begin(), part.end());
    }
    if (kind == 5) stream.insert(place, {0xFF, kMarkers[rng() % std::size(kMarkers)]});
    if (kind == 6)  // a restart interval
      stream.insert(place, {0xFF, 0xDD, 0, 4, 0, static_cast<std::uint8_t>(rng() % 4)});
    for (std::ptrdiff_t i = 0; kind == 7 && i < rest; ++i)
      place[i] = static_cast<std::uint8_t>(rng());
  }
}

}  // namespace

std::vector<std::uint8_t> nextInput(std::mt19937& rng) {
  static const std::vector<Stream> seeds = makeSeeds();
  Stream stream = seeds[rng() % seeds.size()];
  spoil(stream, rng);
  return stream;
}
