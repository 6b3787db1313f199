// Runs the fuzz target without libFuzzer: on the files that are named, else on `runs` spoilt
// streams of our own encoder, the same in every run.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

#include "frame/load.h"
#include "tests/jpeg/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Stream = std::vector<std::uint8_t>;

std::vector<Stream> makeSeeds() {
  using namespace vx;
  std::vector<Stream> seeds;
  for (const int subsampling : {kJpeg444, kJpeg420, kJpeg422})
    for (const int color : {kJpegYcc, kJpegRgb}) {
      test::Rgb picture = test::makePicture(test::Scene::edges, 23 + subsampling, 17);
      Stream stream(20000);
      test::Codec codec(picture, stream);
      codec.p.streamSubsampling = subsampling;
      codec.p.streamColor = color;
      if (jpegWrite(&codec.p, kJpegWriteImage) != kJpegOk) std::abort();
      const std::uint8_t end[] = {0xFF, 0xD9};
      stream.erase(std::find_end(stream.begin(), stream.end(), end, end + 2) + 2, stream.end());
      seeds.push_back(stream);
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
    switch (rng() % 8) {
      case 0:
        stream[at] = static_cast<std::uint8_t>(stream[at] ^ 1u << rng() % 8);
        break;
      case 1:
        stream[at] = kBytes[rng() % std::size(kBytes)];
        break;
      case 2:
        stream.resize(at);
        break;
      case 3:
        stream.erase(place, place + rest);
        break;
      case 4: {  // a part once more, somewhere else
        const Stream part(place, place + rest);
        stream.insert(stream.begin() + static_cast<std::ptrdiff_t>(rng() % stream.size()),
                      part.begin(), part.end());
        break;
      }
      case 5:
        stream.insert(place, {0xFF, kMarkers[rng() % std::size(kMarkers)]});
        break;
      case 6:  // a restart interval
        stream.insert(place, {0xFF, 0xDD, 0, 4, 0, static_cast<std::uint8_t>(rng() % 4)});
        break;
      default:
        for (std::ptrdiff_t i = 0; i < rest; ++i) place[i] = static_cast<std::uint8_t>(rng());
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  vx::attachProcess();
  const int runs = argc == 2 ? std::atoi(argv[1]) : 0;
  if (runs == 0) {
    for (int i = 1; i < argc; ++i) {
      std::ifstream file(argv[i], std::ios::binary);
      const Stream stream{std::istreambuf_iterator<char>(file), {}};
      LLVMFuzzerTestOneInput(stream.data(), stream.size());
    }
    if (argc > 1) return 0;
    std::fprintf(stderr, "usage: %s RUNS | FILE...\n", argv[0]);
    return 2;
  }
  const std::vector<Stream> seeds = makeSeeds();
  std::mt19937 rng(20260101);
  for (int run = 0; run < runs; ++run) {
    Stream stream = seeds[rng() % seeds.size()];
    spoil(stream, rng);
    LLVMFuzzerTestOneInput(stream.data(), stream.size());
  }
  std::printf("%d streams\n", runs);
}
