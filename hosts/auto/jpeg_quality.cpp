#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "hosts/auto/auto_jpeg.h"

namespace {

constexpr std::size_t kSteps = 64;

// ITU T.81, table K.1, row by row.
constexpr std::array<int, kSteps> kLuma = {
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
    14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
    18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
    49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

int scaledStep(int step, int quality) {
  const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
  return std::clamp((step * percent + 50) / 100, 1, 255);
}

// Logarithmic: half a step is as far off as twice the step.
double distance(const int* table, int quality) {
  double sum = 0;
  for (std::size_t i = 0; i < kSteps; ++i) {
    const double off = std::log(static_cast<double>(table[i]) / scaledStep(kLuma[i], quality));
    sum += off * off;
  }
  return sum;
}

}  // namespace

int vxAutoJpegQuality(const int* table) {
  if (table == nullptr || std::any_of(table, table + kSteps, [](int step) { return step < 1; }))
    return 0;
  int nearest = 1;
  double least = distance(table, 1);
  for (int quality = 2; quality <= 100; ++quality) {
    const double here = distance(table, quality);
    if (here < least) {
      least = here;
      nearest = quality;
    }
  }
  return nearest;
}

// Over photographs coded by libjpeg-turbo at quality 5 to 95 the best quality of the trips was the
// file's own or up to 5 more, with little between them up to 85; from 90 on PSNR fell with any.
int vxAutoTripQuality(int jpegQuality) {
  constexpr int kFinest = 86;
  return jpegQuality > kFinest ? 0 : std::max(jpegQuality, 0);
}

void vxAutoLumaSteps(const int* table, int* steps) {
  constexpr std::array<std::size_t, 5> kZigzag = {1, 8, 16, 9, 2};
  if (table == nullptr || steps == nullptr) return;
  for (std::size_t i = 0; i < kZigzag.size(); ++i) steps[i] = table[kZigzag[i]];
}
