#include "tests/nonlocal/reference_non_local.h"

#include <algorithm>
#include <complex>
#include <numbers>

namespace vx::test {
namespace {

using Complex = std::complex<double>;
using Spectrum = std::vector<Complex>;

struct Position {
  int x, y;
};
using Stack = std::vector<Position>;

std::size_t index(int i) { return static_cast<std::size_t>(i); }

// Runs of `length` elements `stride` apart, each replaced by its discrete transform.
void transformAxis(Spectrum& data, int length, int stride, double sign) {
  Spectrum roots, run(index(length));
  for (int k = 0; k < length; ++k)
    roots.push_back(std::polar(1.0, sign * 2.0 * std::numbers::pi * k / length));
  for (int start = 0; start < static_cast<int>(data.size()); ++start) {
    if (start / stride % length != 0) continue;
    for (int k = 0; k < length; ++k) {
      run[index(k)] = 0.0;
      for (int i = 0; i < length; ++i)
        run[index(k)] += data[index(start + i * stride)] * roots[index(i * k % length)];
    }
    for (int k = 0; k < length; ++k) data[index(start + k * stride)] = run[index(k)];
  }
}

struct Pass {
  const CNLImDnCn& filter;
  std::size_t stackLimit;
  const QuantisedGuides& guides;
  const Plane& source;
  const Plane* pilot;
  const Planes& in;
  int b = filter.blockWidth;
  int searchedX = std::min(filter.searchWidth, source.width);
  int searchedY = std::min(filter.searchWidth, source.height);
  NonLocalResult result{{}, std::vector<int>(17)};

  // Plane in.size() is that of the weights.
  NonLocalResult run() {
    const int step = filter.stepX, w = source.width, h = source.height;
    for (std::size_t p = 0; p <= in.size(); ++p)
      for (int i = 0; i < w * h; ++i) {
        if (i == 0) result.planes.emplace_back();
        result.planes[p].push_back(1e-10 * (p < in.size() ? at(*in[p], i % w, i / w) : 1.0f));
      }
    const int margin = (filter.searchWidth - b - step) / 2;
    for (int y = 0; y < h - step + 1 && h >= b && w >= b; y += 2 * step)
      for (int x = 0; x < w - 2 * step + 1; x += step)
        for (int block = 0; block < 4; ++block)
          filterBlock(
              {std::min(x + block % 2 * step, w - b), std::min(y + block / 2 * step, h - b)},
              {std::max(0, std::min(x - margin, w - searchedX)),
               std::max(0, std::min(y - margin, h - searchedY))});
    const std::vector<double> weights = result.planes.back();
    result.planes.pop_back();
    for (auto& plane : result.planes)
      for (std::size_t i = 0; i < plane.size(); ++i) plane[i] /= weights[i];
    return result;
  }

  // The last one of the list was refused, if the list is longer than the stack.
  Stack choose(Position own, Position tile, std::size_t& count) {
    constexpr std::int64_t kBlanked = std::int64_t{1} << 40;
    Stack taken = {own};
    for (count = 1; taken.size() < stackLimit; ++count) {
      std::int64_t best = kBlanked;
      Position found = tile;  // the first position, where all are blanked
      for (int y = tile.y; y <= tile.y + searchedY - b; ++y)
        for (int x = tile.x; x <= tile.x + searchedX - b; ++x) {
          if (std::any_of(taken.begin(), taken.end(), [&](Position p) {
                return std::abs(x - p.x) <= filter.exclusionX &&
                       std::abs(y - p.y) <= filter.exclusionY;
              }))
            continue;
          const std::int64_t cost = blockDistance(guides, own.x, own.y, x, y, b);
          if (cost < best) found = {x, y};
          best = std::min(best, cost);
        }
      taken.push_back(found);
      if (best > guides.limit()) break;
    }
    return taken;
  }

  Spectrum spectrum(const Plane& plane, const Stack& stack) const {
    Spectrum data;
    for (const Position& p : stack)
      for (int i = 0; i < b * b; ++i) data.emplace_back(at(plane, p.x + i % b, p.y + i / b));
    transform(data, -1.0);
    return data;
  }

  void transform(Spectrum& data, double sign) const {
    transformAxis(data, b, 1, sign);
    transformAxis(data, b, b, sign);
    transformAxis(data, static_cast<int>(data.size()) / (b * b), b * b, sign);
  }

  double meanDifference(Position first, const Plane& other, Position second) const {
    double sum = 0.0;
    for (int i = 0; i < b * b; ++i)
      sum += std::abs(double{at(source, first.x + i % b, first.y + i / b)} -
                      double{at(other, second.x + i % b, second.y + i / b)});
    return sum / (b * b);
  }

  void filterBlock(Position own, Position tile) {
    const StackSettings& s = filter.settings;
    std::size_t count = 1, depth = 1;
    Stack stack = choose(own, tile, count);
    const Position second = stack.size() > 1 ? stack[1] : own;
    for (const std::size_t d : {2u, 4u, 8u, 12u, 16u})
      if (count >= d) depth = d;
    stack.resize(depth);
    ++result.stacks[depth];

    const double deviation = pilot == nullptr ? 0.71 * meanDifference(own, source, second)
                                              : meanDifference(own, *pilot, own);
    const double sigma = std::min(double{s.noise}, deviation * s.deviationGain + 0.0001);
    const double samples = static_cast<double>(index(b * b) * depth);
    const double t = std::sqrt(samples) * sigma * s.strength;
    std::vector<double> weights;
    double sum = 0.0;
    for (const Complex& x : spectrum(pilot != nullptr ? *pilot : source, stack)) {
      const double p = std::abs(x);
      const double w = pilot == nullptr ? std::min((p - t) / ((s.kneeRatio - 1.0) * t), 1.0)
                                        : p * p / (p * p + t * t);
      weights.push_back(std::max(w, double{s.floorWeight}));
      // The sum runs over the half that a transform of real samples stores.
      if (static_cast<int>(weights.size() - 1) % b <= b / 2) sum += weights.back();
    }
    for (std::size_t p = 0; p <= in.size(); ++p) {
      Spectrum data(weights.size(), 1.0);
      if (p < in.size()) {
        data = spectrum(*in[p], stack);
        for (std::size_t i = 0; i < data.size(); ++i) data[i] *= weights[i] / samples;
        transform(data, 1.0);
      }
      for (int i = 0; i < static_cast<int>(data.size()); ++i) {
        const int x = i % b, y = i / b % b;
        const Position& to = stack[index(i / (b * b))];
        result.planes[p][index((to.y + y) * source.width + to.x + x)] +=
            data[index(i)].real() * hamming(x) * hamming(y) * static_cast<double>(depth) /
            (sum + 1.0);
      }
    }
  }

  double hamming(int i) const {
    return 0.54 - 0.46 * std::cos(2.0 * std::numbers::pi * i / (b - 1));
  }
};

}  // namespace

std::int64_t blockDistance(const QuantisedGuides& guides, int ax, int ay, int bx, int by,
                           int blockSize) {
  std::int64_t sum = 0;
  for (int g = 0; g < guides.count(); ++g)
    for (int y = 0; y < blockSize; ++y)
      for (int x = 0; x < blockSize; ++x) {
        const std::int64_t d = guides.sample(g, ax + x, ay + y) - guides.sample(g, bx + x, by + y);
        sum += d * d;
      }
  return sum;
}

NonLocalResult referencePass(const CNLImDnCn& filter, std::size_t stackLimit,
                             const QuantisedGuides& quantised, const Plane& source,
                             const Plane* pilot, const Planes& in) {
  return Pass{filter, stackLimit, quantised, source, pilot, in}.run();
}

void fillUnits(Plane& p, unsigned seed, float unit, float contrast, float sigma) {
  std::mt19937 random(seed);
  std::normal_distribution<float> noise(0.0f, sigma);
  paint(p, [&](int x, int y) {
    const float field = (x / 11 + y / 9) % 2 == 0 ? contrast : -contrast;
    return unit * std::round((field + noise(random)) / unit);
  });
}

}  // namespace vx::test
