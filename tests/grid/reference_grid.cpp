#include "tests/grid/reference.h"

namespace vx::test {
namespace {

struct Grid {
  int w, h, d;
  std::vector<float> cells;

  // Indices may run on into the next column, as bins do.
  Grid(int width, int height, int depth, float value)
      : w(width),
        h(height),
        d(depth),
        cells(static_cast<std::size_t>(std::ptrdiff_t{width} * height * depth + 257), value) {}
  float& operator()(int y, int x, int z) {
    return cells[static_cast<std::size_t>((std::ptrdiff_t{y} * w + x) * d + z)];
  }
};

// Calls f(x, y) for all of a rectangle.
template <class F>
void over(int x0, int y0, int x1, int y1, const F& f) {
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) f(x, y);
}

int cellsAlong(int size, int sample) { return size / sample + (size % sample != 0) + 4; }

int depthOf(const Range& r) {
  const float span = r.high - r.low;
  int n = static_cast<int>(span / r.step);
  if (static_cast<float>(n) * r.step < span) ++n;
  return n + 4;
}

int toCell(float v) {
  if (!(v > 0.0f)) return 0;
  return v >= 255.0f ? 255 : static_cast<int>(v);
}

float coordinate(float v, const Range& r, float offset) {
  v = v - r.low;
  v = v * ((r.high - r.low) / r.step);
  return v + offset;
}

float clipTo(float v, const Range& r) {
  if (!(v <= r.high)) v = r.high;
  if (!(v >= r.low)) v = r.low;
  return v;
}

void blur(Grid& g) {
  Grid s(g.w, g.h, g.d, 0.0f);
  for (int y = 0; y < g.h; ++y) {
    // The rectangle runs over x in 1..w-2, z in 1..d-2; its outermost ring takes its neighbours.
    for (int z = 1; z <= g.d - 2; ++z) {
      g(y, 1, z) = g(y, 2, z);
      g(y, g.w - 2, z) = g(y, g.w - 3, z);
    }
    for (int x = 1; x <= g.w - 2; ++x) {
      g(y, x, 1) = g(y, x, 2);
      g(y, x, g.d - 2) = g(y, x, g.d - 3);
    }
    over(1, 1, g.d - 1, g.w - 1, [&](int z, int x) {
      const auto along = [&](int i) {
        const float c = g(y, i, z);
        return (g(y, i, z - 1) + g(y, i, z + 1)) + (c + c);
      };
      s(y, x, z) = ((along(x - 1) + along(x + 1)) + (along(x) + along(x))) * 0.0625f;
    });
  }
  over(0, 0, g.d, g.w, [&](int z, int x) {
    s(1, x, z) = s(2, x, z);
    s(g.h - 2, x, z) = s(g.h - 3, x, z);
  });
  for (int y = 1; y <= g.h - 2; ++y)
    over(1, 1, g.d - 1, g.w - 1,
         [&](int z, int x) { g(y, x, z) = 2.0f * s(y, x, z) + s(y - 1, x, z) + s(y + 1, x, z); });
}

float read(Grid& g, int x, int y, int sample, float guide) {
  const float gx = 1.5f + static_cast<float>(x) / static_cast<float>(sample);
  const float gy = 1.5f + static_cast<float>(y) / static_cast<float>(sample);
  const int ix = static_cast<int>(gx);
  const int iy = static_cast<int>(gy);
  const int z = toCell(guide);
  const float fx = gx - static_cast<float>(ix);
  const float fy = gy - static_cast<float>(iy);
  const float fz = guide - static_cast<float>(z);
  const auto along = [&](int gridY, int gridX) {
    return g(gridY, gridX, z + 1) * fz + g(gridY, gridX, z) * (1.0f - fz);
  };
  const auto across = [&](int gridY) {
    return fx * along(gridY, ix + 1) + (1.0f - fx) * along(gridY, ix);
  };
  return (1.0f - fy) * across(iy) + fy * across(iy + 1);
}

void clipAndBlend(Grid& g, const EqSettings& s) {
  const auto bins = static_cast<float>(g.d);
  over(0, 0, g.w, g.h, [&](int x, int y) {
    float sum = 0.0f, peak = 0.0f, excess = 0.0f;
    for (int z = 0; z < g.d; ++z) sum += g(y, x, z);
    for (int z = 0; z < g.d; ++z) peak = std::max(peak, g(y, x, z));
    const float base = (sum / bins) * 12.0f;
    float limit = s.clipScale * base;
    if (s.clipScale > 0.8f && base < peak)
      limit = 0.8f * base + (peak - 0.8f * base) * (s.clipScale - 0.8f) / 0.2f;
    for (int z = 0; z < g.d; ++z)
      if (g(y, x, z) > limit) excess += g(y, x, z) - limit;
    for (int z = 0; z < g.d; ++z) g(y, x, z) = std::min(g(y, x, z), limit) + excess / bins;
    if (!(s.strength < 0.99f)) return;
    sum = 0.0f;
    for (int z = 0; z < g.d; ++z) sum += g(y, x, z);
    for (int z = 0; z < g.d; ++z)
      g(y, x, z) =
          g(y, x, z) * s.strength + (sum / static_cast<float>(g.d - 4)) * (1.0f - s.strength);
  });
}

void integrate(Grid& g, const EqSettings& s) {
  const auto bins = static_cast<float>(g.d);
  const auto emphasis = [&](int bin) {
    const auto z = static_cast<float>(bin);
    const float centre = s.peakPosition * bins;
    const float width = z > centre ? bins * (1.0f - s.peakPosition) * 0.3f : 0.3f * centre;
    const float t = (z - centre) / (width + 1e-6f);
    const float w = std::exp(-t * t);
    return s.peakGain > 0.0f ? s.peakGain * w + 1.0f : 1.0f - s.peakGain * (1.0f - w);
  };
  over(1, 1, g.w - 1, g.h - 1, [&](int x, int y) {
    for (int z = 0; z <= 1; ++z) g(y, x, z) = emphasis(z) * 1e-12f;
    float acc = 1e-12f;
    for (int z = 2; z <= g.d - 3; ++z) {
      acc = acc + emphasis(z) * g(y, x, z);
      g(y, x, z) = acc;
    }
    for (int z = g.d - 2; z <= g.d - 1; ++z) g(y, x, z) = emphasis(z) * acc;
    const float q = (acc / s.outScale) / (1.0f - s.outLow);
    for (int i = 0; i < g.d; ++i) g(y, x, 1 + i) = s.outLow + g(y, x, 1 + i) / q;
  });
}

}  // namespace

void referenceFilter(Plane& data, const Plane& guide, const Range& range, int sample) {
  const int w = data.width, h = data.height;
  Grid value(cellsAlong(w, sample), cellsAlong(h, sample), depthOf(range), 0.0f);
  Grid weight(value.w, value.h, value.d, 1e-11f);
  const auto key = [&](int x, int y) { return clipTo(at(guide, x, y), range); };
  over(0, 0, w, h, [&](int x, int y) {
    const int z = toCell(coordinate(key(x, y), range, 2.0f));
    value(2 + y / sample, 2 + x / sample, z) += at(data, x, y);
    weight(2 + y / sample, 2 + x / sample, z) += 1.0f;
  });
  blur(weight);
  blur(value);
  for (std::size_t i = 0; i < value.cells.size() - 257; ++i) value.cells[i] /= weight.cells[i];
  over(0, 0, w, h, [&](int x, int y) {
    at(data, x, y) = read(value, x, y, sample, coordinate(key(x, y), range, 1.5f));
  });
}

void referenceEqualize(Plane& image, int sample, const EqSettings& settings) {
  const Range range = {settings.low, settings.low + 1.0f, settings.rangeStep};
  const int w = image.width, h = image.height;
  Grid hist(cellsAlong(w, sample), cellsAlong(h, sample), depthOf(range), 0.25f);
  over(0, 0, w, h, [&](int x, int y) {
    const int z = toCell(coordinate(at(image, x, y), range, 2.0f));
    hist(2 + y / sample, 2 + x / sample, std::min(z, (hist.d - 1) % 256)) += 1.0f;
  });
  clipAndBlend(hist, settings);
  blur(hist);
  integrate(hist, settings);
  over(0, 0, w, h, [&](int x, int y) {
    at(image, x, y) = read(hist, x, y, sample, coordinate(at(image, x, y), range, 1.0f));
  });
}

}  // namespace vx::test
