// What removing block artifacts does to photographs: each is coded by libjpeg-turbo at some
// qualities and decoded, then goes through vxUnblock at some strengths.
//
//     unblock_effect [--shrink N] [--mode N] PICTURE...
//
// Prints tables in Markdown. The pictures should have no JPEG in their history; --shrink reduces
// them to 1 / N first, which takes most of it away. --mode is the jpegMode of the trips (1
// without).
//
// PSNR is that of all samples against the uncoded picture. The step is what luminance jumps more,
// in the mean, across the borders of the file's blocks than between the columns and rows beside
// them; it is 0 where a picture has no blocks.

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vips/vips8>

#include "adjust/unblock_stage.h"
#include "bench/picture_quality.h"
#include "bench/read_picture.h"
#include "frame/exports/load.h"
#include "vxicore26.h"

namespace {

constexpr int kQualities[] = {10, 25, 50, 75};
constexpr float kStrengths[] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f, 1.0f};
constexpr std::size_t kQualityCount = std::size(kQualities);
constexpr std::size_t kRows = std::size(kStrengths) + 1;  // the first is the decoded file

// Chroma halved on both axes, as most files have it.
RgbPicture codeAndDecode(const RgbPicture& in, int quality) {
  RgbPicture out = in;
  unsigned char* stream = nullptr;
  unsigned long size = 0;
  const tjhandle encoder = tjInitCompress(), decoder = tjInitDecompress();
  if (tjCompress2(encoder, in.samples.data(), in.width, 0, in.height, TJPF_RGB, &stream, &size,
                  TJSAMP_420, quality, TJFLAG_ACCURATEDCT) != 0 ||
      tjDecompress2(decoder, stream, size, out.samples.data(), in.width, 0, in.height, TJPF_RGB,
                    TJFLAG_ACCURATEDCT) != 0)
    std::abort();
  tjFree(stream);
  tjDestroy(encoder);
  tjDestroy(decoder);
  return out;
}

double borderStep(const RgbPicture& p) {
  const auto luma = [&](int x, int y) {
    const std::uint8_t* rgb = p.samples.data() + (std::ptrdiff_t{y} * p.width + x) * 3;
    return 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
  };
  double sum = 0, count = 0;
  const auto add = [&](double a, double b, double c, double d) {
    sum += std::abs(b - c) - 0.5 * (std::abs(a - b) + std::abs(c - d));
    count += 1;
  };
  for (int y = 0; y < p.height; ++y)
    for (int x = 8; x + 1 < p.width; x += 8)
      add(luma(x - 2, y), luma(x - 1, y), luma(x, y), luma(x + 1, y));
  for (int y = 8; y + 1 < p.height; y += 8)
    for (int x = 0; x < p.width; ++x)
      add(luma(x, y - 2), luma(x, y - 1), luma(x, y), luma(x, y + 1));
  return sum / count;
}

struct Effect {
  double psnr, step;
};
using Table = std::array<std::array<Effect, kQualityCount>, kRows>;

Table measure(const RgbPicture& original, int jpegMode) {
  Table table{};
  for (std::size_t q = 0; q < kQualityCount; ++q) {
    const RgbPicture decoded = codeAndDecode(original, kQualities[q]);
    table[0][q] = {psnr(original, decoded), borderStep(decoded)};
    for (std::size_t s = 1; s < kRows; ++s) {
      RgbPicture out = decoded;
      constexpr int kEveryShift = 1;
      vxUnblock(0, out.samples.data(), 3, 3 * out.width, out.width, out.height,
                vx::unblockQuality(kStrengths[s - 1]), jpegMode, kEveryShift, 0);
      table[s][q] = {psnr(original, out), borderStep(out)};
    }
  }
  return table;
}

std::size_t bestOf(const Table& table, std::size_t q) {
  std::size_t best = 1;
  for (std::size_t s = 1; s < kRows; ++s)
    if (table[s][q].psnr > table[best][q].psnr) best = s;
  return best;
}

void printHead(const char* first) {
  std::printf("\n| %s |", first);
  for (const int q : kQualities) std::printf(" coded at %d |", q);
  std::printf("\n|---|");
  for (std::size_t q = 0; q < kQualityCount; ++q) std::printf("---|");
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  int shrink = 1, jpegMode = 1, first = 1;
  for (; first + 1 < argc && argv[first][0] == '-'; first += 2) {
    const bool shrinks = std::strcmp(argv[first], "--shrink") == 0;
    (shrinks ? shrink : jpegMode) = std::max(shrinks ? 1 : 0, std::atoi(argv[first + 1]));
  }
  if (argc <= first || VIPS_INIT(argv[0]) != 0) {
    std::fprintf(stderr, "usage: %s [--shrink N] [--mode N] PICTURE...\n", argv[0]);
    return 2;
  }
  vx::attachProcess();
  Table mean{};
  printHead("picture, at its best strength");
  for (int i = first; i < argc; ++i) {
    const RgbPicture original = readPicture(argv[i], shrink);
    const Table table = measure(original, jpegMode);
    std::printf("| %s (step %.2f) |", std::filesystem::path(argv[i]).filename().c_str(),
                borderStep(original));
    for (std::size_t q = 0; q < kQualityCount; ++q) {
      const std::size_t best = bestOf(table, q);
      std::printf(" %.1f: %.2f to %.2f dB, step %.2f to %.2f |",
                  static_cast<double>(kStrengths[best - 1]), table[0][q].psnr, table[best][q].psnr,
                  table[0][q].step, table[best][q].step);
      for (std::size_t s = 0; s < kRows; ++s) {
        mean[s][q].psnr += table[s][q].psnr / (argc - first);
        mean[s][q].step += table[s][q].step / (argc - first);
      }
    }
    std::printf("\n");
  }
  printHead("strength (quality), mean of all");
  for (std::size_t s = 0; s < kRows; ++s) {
    if (s == 0)
      std::printf("| as decoded |");
    else
      std::printf("| %.1f (%d) |", static_cast<double>(kStrengths[s - 1]),
                  vx::unblockQuality(kStrengths[s - 1]));
    for (const Effect& effect : mean[s])
      std::printf(" %.2f dB, step %.2f |", effect.psnr, effect.step);
    std::printf("\n");
  }
}
