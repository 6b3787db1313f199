#include "tests/noise/reference_estimator.h"

#include <algorithm>
#include <cmath>

namespace vx::test {
namespace {

using Ints = std::vector<int>;

int round16(float v) {
  return static_cast<int>(std::nearbyint(std::clamp(v, -32768.0f, 32767.0f)));
}

// The median over a cross with arms of that length; a frame of two keeps the values of `to`.
void crossMedian(const Ints& from, Ints& to, int w, int h, int arm) {
  const auto index = [&](int x, int y) { return static_cast<std::size_t>(y * w + x); };
  for (int y = 2; y < h - 2; ++y) {
    for (int x = 2; x < w - 2; ++x) {
      Ints cross = {from[index(x, y)]};
      for (int k = 1; k <= arm; ++k)
        for (const int d : {-k, k})
          cross.insert(cross.end(), {from[index(x + d, y)], from[index(x, y + d)]});
      std::sort(cross.begin(), cross.end());
      to[index(x, y)] = cross[cross.size() / 2];
    }
  }
}

double meanOf(const Ints& values) {
  double sum = 0.0;
  for (const int v : values) sum += v;
  return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

}  // namespace

ReferenceEstimate referenceEstimate(FloatPlane luma, int maskSize) {
  const int w = luma.width, h = luma.height;
  Ints plane, smooth, deviation;
  for (const float v : luma.data) plane.push_back(round16(v * 32767.0f));
  ReferenceEstimate result;
  const int darkest = plane.empty() ? 0 : *std::min_element(plane.begin(), plane.end());
  result.minLevel = static_cast<float>(darkest) / 32767.0f;
  smooth = plane;
  crossMedian(plane, smooth, w, h, maskSize == 3 ? 1 : 2);
  result.meanLevel = static_cast<float>(meanOf(smooth) / 32767.0);
  for (std::size_t i = 0; i < plane.size(); ++i)
    deviation.push_back(std::abs(std::clamp(smooth[i] - plane[i], -32768, 32767)));
  crossMedian(deviation, plane, w, h, 2);

  const float range = std::min(static_cast<float>(2.0 * meanOf(plane)), 32767.0f);
  const float dark = static_cast<float>(darkest);
  const int low = static_cast<int>(dark + (result.meanLevel * 32767.0f - dark) * 0.1f);
  const int high = static_cast<int>(result.meanLevel * 32767.0f);
  const int width = std::max(1, static_cast<int>(range / 110.0f));
  float counts[110] = {};
  float total = 0.0f;
  for (std::size_t i = 0; i < plane.size(); ++i) {
    if (smooth[i] < low || smooth[i] > high || plane[i] < 0 || plane[i] >= 32766) continue;
    counts[std::min(109, 1 + plane[i] / width)] += 1.0f;
    total += 1.0f;
  }
  total *= 0.5f;
  int bin = 1;
  for (float sum = 0.0f; bin < 110; ++bin)
    if ((sum += counts[bin]) > total) break;
  const int edge = bin == 110 ? 32767 : (bin - 1) * width + 1;
  result.noiseSigma =
      ((static_cast<float>(edge) - 1.0f) + static_cast<float>(width) * 0.5f) / 32767.0f * 1.54f;
  return result;
}

FloatPlane referenceLuma(Picture& picture, int x0, int y0, int width, int height) {
  FloatPlane luma{width, height, {}};
  const bool known = bytesPerPixel(picture.format) != 0;
  const float scale = deep(picture.format) ? 1.0f / 32768.0f : 1.0f / 256.0f;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      float rgb[3] = {};
      for (int c = 0; c < 3 && known; ++c)
        rgb[c] = static_cast<float>(picture.get(x0 + x, y0 + y, c)) * scale + 0.49f * scale;
      luma.data.push_back(((0.21327f * rgb[0] + 0.41869f * rgb[1]) + 0.081312f * rgb[2]) + 0.0f);
    }
  }
  return luma;
}

}  // namespace vx::test
