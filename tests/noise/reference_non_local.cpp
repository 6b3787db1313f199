#include "tests/noise/reference_non_local.h"

#include <algorithm>
#include <complex>
#include <numbers>

namespace vx::test {
namespace {

using Complex = std::complex<double>;

struct Position {
  int x, y;
};

// `count` runs of `length` elements `stride` apart, each replaced by its discrete transform.
void transformAxis(std::vector<Complex>& data, int length, int stride, double sign) {
  std::vector<Complex> roots, run(static_cast<std::size_t>(length));
  for (int k = 0; k < length; ++k)
    roots.push_back(std::polar(1.0, sign * 2.0 * std::numbers::pi * k / length));
  const int total = static_cast<int>(data.size());
  for (int start = 0; start < total; ++start) {
    if (start / stride % length != 0) continue;
    for (int k = 0; k < length; ++k) {
      Complex& sum = run[static_cast<std::size_t>(k)] = 0.0;
      for (int i = 0; i < length; ++i)
        sum += data[static_cast<std::size_t>(start + i * stride)] *
               roots[static_cast<std::size_t>(i * k % length)];
    }
    for (int k = 0; k < length; ++k)
      data[static_cast<std::size_t>(start + k * stride)] = run[static_cast<std::size_t>(k)];
  }
}

class Pass {
 public:
  Pass(const NonLocalCase& c, const std::vector<const Plane*>& guides, const Plane& source,
       const Plane* pilot, const std::vector<const Plane*>& in)
      : c_(c),
        guides_(guides),
        source_(source),
        pilot_(pilot),
        in_(in),
        width_(source.width),
        height_(source.height) {
    const std::size_t pixels = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    weights_.assign(pixels, 1e-10);
    result_.stacks.assign(17, 0);
    for (const Plane* plane : in) {
      result_.planes.emplace_back();
      for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x) result_.planes.back().push_back(1e-10 * at(*plane, x, y));
    }
  }

  NonLocalResult run() {
    const int b = c_.blockSize;
    const int margin = (c_.searchSize - b - c_.step) / 2;
    for (int y = 0; y < height_ - c_.step + 1; y += 2 * c_.step)
      for (int x = 0; x < width_ - 2 * c_.step + 1; x += c_.step)
        for (int block = 0; block < 4; ++block) {
          if (width_ < b || height_ < b) continue;
          const Position tile = {
              std::max(0, std::min(x - margin, width_ - std::min(c_.searchSize, width_))),
              std::max(0, std::min(y - margin, height_ - std::min(c_.searchSize, height_)))};
          filterBlock({std::min(x + block % 2 * c_.step, width_ - b),
                       std::min(y + block / 2 * c_.step, height_ - b)},
                      tile);
        }
    for (auto& plane : result_.planes)
      for (std::size_t i = 0; i < plane.size(); ++i) plane[i] /= weights_[i];
    return result_;
  }

 private:
  std::vector<Position> choose(Position own, Position tile, Position& second) {
    const int b = c_.blockSize;
    const int across = std::min(c_.searchSize, width_) - b + 1;
    const int down = std::min(c_.searchSize, height_) - b + 1;
    const auto near = [&](Position p, int x, int y) {
      return std::abs(x - p.x) <= c_.exclusion && std::abs(y - p.y) <= c_.exclusion;
    };
    std::vector<Position> taken = {own}, blanked = {own};
    while (static_cast<int>(taken.size()) < c_.stackLimit) {
      double best = 1e20, rival = 1e20;
      Position at = tile;  // the first position, where all are blanked
      for (int y = tile.y; y < tile.y + down; ++y)
        for (int x = tile.x; x < tile.x + across; ++x) {
          if (std::any_of(blanked.begin(), blanked.end(),
                          [&](Position p) { return near(p, x, y); }))
            continue;
          const double cost = blockDistance(guides_, own.x, own.y, x, y, b);
          rival = std::min(rival, std::max(cost, best));
          if (cost < best) {
            best = cost;
            at = {x, y};
          }
        }
      if (taken.size() == 1) second = at;
      if (best < 1e20) {
        result_.narrowest = std::min(result_.narrowest, std::abs(best - c_.matchThreshold));
        if (best <= c_.matchThreshold || taken.size() == 1)
          result_.narrowest = std::min(result_.narrowest, rival - best);
      }
      if (best > c_.matchThreshold) break;
      taken.push_back(at);
      blanked.push_back(at);
    }
    return taken;
  }

  std::vector<Complex> spectrum(const Plane& plane, const std::vector<Position>& stack) const {
    const int b = c_.blockSize;
    std::vector<Complex> data;
    for (const Position& p : stack)
      for (int y = 0; y < b; ++y)
        for (int x = 0; x < b; ++x) data.emplace_back(at(plane, p.x + x, p.y + y));
    transform(data, static_cast<int>(stack.size()), -1.0);
    return data;
  }

  void transform(std::vector<Complex>& data, int depth, double sign) const {
    const int b = c_.blockSize;
    transformAxis(data, b, 1, sign);
    transformAxis(data, b, b, sign);
    transformAxis(data, depth, b * b, sign);
  }

  double meanDifference(const Plane& a, Position pa, const Plane& b, Position pb) const {
    double sum = 0.0;
    for (int y = 0; y < c_.blockSize; ++y)
      for (int x = 0; x < c_.blockSize; ++x)
        sum += std::abs(double{at(a, pa.x + x, pa.y + y)} - double{at(b, pb.x + x, pb.y + y)});
    return sum / (c_.blockSize * c_.blockSize);
  }

  void filterBlock(Position own, Position tile) {
    const int b = c_.blockSize;
    const StackSettings& s = c_.settings;
    Position second = own;
    std::vector<Position> stack = choose(own, tile, second);
    std::size_t depth = 1;
    for (const std::size_t d : {2u, 4u, 8u, 12u, 16u})
      if (stack.size() >= d) depth = d;
    stack.resize(depth);
    ++result_.stacks[depth];

    const double deviation = pilot_ == nullptr
                                 ? 0.71 * meanDifference(source_, own, source_, second)
                                 : meanDifference(source_, own, *pilot_, own);
    const double sigma = std::min(double{s.noise}, deviation * s.deviationGain + 0.0001);
    const double samples = static_cast<double>(b * b) * static_cast<double>(depth);
    const double t = std::sqrt(samples) * sigma * s.strength;
    std::vector<double> weights;
    double sum = 0.0;
    for (const Complex& x : spectrum(pilot_ != nullptr ? *pilot_ : source_, stack)) {
      const double p = std::abs(x);
      const double w = pilot_ == nullptr ? std::min((p - t) / ((s.kneeRatio - 1.0) * t), 1.0)
                                         : p * p / (p * p + t * t);
      // The sum runs over the half that a transform of real samples stores.
      if (static_cast<int>(weights.size()) % b <= b / 2) sum += std::max(w, double{s.floorWeight});
      weights.push_back(std::max(w, double{s.floorWeight}));
    }
    const double share = static_cast<double>(depth) / (sum + 1.0);
    for (std::size_t p = 0; p <= in_.size(); ++p) {
      std::vector<Complex> data(weights.size(), 1.0);
      if (p < in_.size()) {
        data = spectrum(*in_[p], stack);
        for (std::size_t i = 0; i < data.size(); ++i) data[i] *= weights[i] / samples;
        transform(data, static_cast<int>(depth), 1.0);
      }
      std::vector<double>& sums = p < in_.size() ? result_.planes[p] : weights_;
      for (std::size_t i = 0; i < data.size(); ++i) {
        const int at = static_cast<int>(i);
        const int x = at % b, y = at / b % b;
        const Position& to = stack[static_cast<std::size_t>(at / (b * b))];
        sums[static_cast<std::size_t>(to.y + y) * static_cast<std::size_t>(width_) +
             static_cast<std::size_t>(to.x + x)] +=
            data[i].real() * hamming(x) * hamming(y) * share;
      }
    }
  }

  double hamming(int i) const {
    return 0.54 - 0.46 * std::cos(2.0 * std::numbers::pi * i / (c_.blockSize - 1));
  }

  const NonLocalCase& c_;
  const std::vector<const Plane*>& guides_;
  const Plane& source_;
  const Plane* pilot_;
  const std::vector<const Plane*>& in_;
  int width_, height_;
  std::vector<double> weights_;
  NonLocalResult result_;
};

}  // namespace

double blockDistance(const std::vector<const Plane*>& guides, int ax, int ay, int bx, int by,
                     int blockSize) {
  double sum = 0.0;
  for (const Plane* guide : guides)
    for (int y = 0; y < blockSize; ++y)
      for (int x = 0; x < blockSize; ++x) {
        const double d = double{at(*guide, ax + x, ay + y)} - double{at(*guide, bx + x, by + y)};
        sum += d * d;
      }
  return sum;
}

NonLocalResult referencePass(const NonLocalCase& c, const std::vector<const Plane*>& guides,
                             const Plane& source, const Plane* pilot,
                             const std::vector<const Plane*>& in) {
  return Pass(c, guides, source, pilot, in).run();
}

void fillUnits(Plane& p, unsigned seed, float unit, float contrast, float sigma) {
  std::mt19937 random(seed);
  std::normal_distribution<float> noise(0.0f, sigma);
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x) {
      const float field = (x / 11 + y / 9) % 2 == 0 ? contrast : -contrast;
      at(p, x, y) = unit * std::round((field + noise(random)) / unit);
    }
}

void raise(double& worst, double difference) {
  if (!std::isnan(worst) && !(difference <= worst)) worst = difference;
}

double worstDifference(const Plane& a, const Plane& b) {
  double worst = 0.0;
  for (int y = 0; y < a.height; ++y)
    for (int x = 0; x < a.width; ++x) raise(worst, std::abs(double{at(a, x, y)} - at(b, x, y)));
  return worst;
}

}  // namespace vx::test
