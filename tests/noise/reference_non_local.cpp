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
  Pass(const CNLImDnCn& filter, int stackLimit, const std::vector<const Plane*>& guides,
       const Plane& source, const Plane* pilot, const std::vector<const Plane*>& in)
      : filter_(filter),
        stackLimit_(static_cast<std::size_t>(stackLimit)),
        guides_(guides),
        source_(source),
        pilot_(pilot),
        in_(in),
        weights_(static_cast<std::size_t>(source.width * source.height), 1e-10) {
    result_.stacks.assign(17, 0);
    for (const Plane* plane : in) {
      result_.planes.emplace_back();
      for (int y = 0; y < plane->height; ++y)
        for (int x = 0; x < plane->width; ++x)
          result_.planes.back().push_back(1e-10 * at(*plane, x, y));
    }
  }

  NonLocalResult run() {
    const int step = filter_.stepX, w = source_.width, h = source_.height;
    const int margin = (filter_.searchWidth - b_ - step) / 2;
    for (int y = 0; y < h - step + 1; y += 2 * step)
      for (int x = 0; x < w - 2 * step + 1; x += step)
        for (int block = 0; block < 4; ++block)
          if (w >= b_ && h >= b_)
            filterBlock(
                {std::min(x + block % 2 * step, w - b_), std::min(y + block / 2 * step, h - b_)},
                {std::max(0, std::min(x - margin, w - searched(w))),
                 std::max(0, std::min(y - margin, h - searched(h)))});
    for (auto& plane : result_.planes)
      for (std::size_t i = 0; i < plane.size(); ++i) plane[i] /= weights_[i];
    return result_;
  }

 private:
  int searched(int size) const { return std::min(filter_.searchWidth, size); }

  std::vector<Position> choose(Position own, Position tile, Position& second) {
    std::vector<Position> taken = {own}, blanked = {own};
    const auto isBlanked = [&](int x, int y) {
      return std::any_of(blanked.begin(), blanked.end(), [&](Position p) {
        return std::abs(x - p.x) <= filter_.exclusionX && std::abs(y - p.y) <= filter_.exclusionY;
      });
    };
    while (taken.size() < stackLimit_) {
      double best = 1e20, rival = 1e20;
      Position at = tile;  // the first position, where all are blanked
      for (int y = tile.y; y <= tile.y + searched(source_.height) - b_; ++y)
        for (int x = tile.x; x <= tile.x + searched(source_.width) - b_; ++x) {
          if (isBlanked(x, y)) continue;
          const double cost = blockDistance(guides_, own.x, own.y, x, y, b_);
          rival = std::min(rival, std::max(cost, best));
          if (cost < best) at = {x, y};
          best = std::min(best, cost);
        }
      if (taken.size() == 1) second = at;
      const double threshold = filter_.matchThreshold;
      if (best < 1e20) {
        result_.narrowest = std::min(result_.narrowest, std::abs(best - threshold));
        if (best <= threshold || taken.size() == 1)
          result_.narrowest = std::min(result_.narrowest, rival - best);
      }
      if (best > threshold) break;
      taken.push_back(at);
      blanked.push_back(at);
    }
    return taken;
  }

  std::vector<Complex> spectrum(const Plane& plane, const std::vector<Position>& stack) const {
    std::vector<Complex> data;
    for (const Position& p : stack)
      for (int y = 0; y < b_; ++y)
        for (int x = 0; x < b_; ++x) data.emplace_back(at(plane, p.x + x, p.y + y));
    transform(data, static_cast<int>(stack.size()), -1.0);
    return data;
  }

  void transform(std::vector<Complex>& data, int depth, double sign) const {
    transformAxis(data, b_, 1, sign);
    transformAxis(data, b_, b_, sign);
    transformAxis(data, depth, b_ * b_, sign);
  }

  double meanDifference(const Plane& a, Position pa, const Plane& b, Position pb) const {
    double sum = 0.0;
    for (int y = 0; y < b_; ++y)
      for (int x = 0; x < b_; ++x)
        sum += std::abs(double{at(a, pa.x + x, pa.y + y)} - double{at(b, pb.x + x, pb.y + y)});
    return sum / (b_ * b_);
  }

  void filterBlock(Position own, Position tile) {
    const StackSettings& s = filter_.settings;
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
    const double samples = static_cast<double>(b_ * b_) * static_cast<double>(depth);
    const double t = std::sqrt(samples) * sigma * s.strength;
    std::vector<double> weights;
    double sum = 0.0;
    for (const Complex& x : spectrum(pilot_ != nullptr ? *pilot_ : source_, stack)) {
      const double p = std::abs(x);
      const double w = pilot_ == nullptr ? std::min((p - t) / ((s.kneeRatio - 1.0) * t), 1.0)
                                         : p * p / (p * p + t * t);
      // The sum runs over the half that a transform of real samples stores.
      if (static_cast<int>(weights.size()) % b_ <= b_ / 2)
        sum += std::max(w, double{s.floorWeight});
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
        const int x = at % b_, y = at / b_ % b_;
        const Position& to = stack[static_cast<std::size_t>(at / (b_ * b_))];
        sums[static_cast<std::size_t>((to.y + y) * source_.width + to.x + x)] +=
            data[i].real() * hamming(x) * hamming(y) * share;
      }
    }
  }

  double hamming(int i) const {
    return 0.54 - 0.46 * std::cos(2.0 * std::numbers::pi * i / (b_ - 1));
  }

  const CNLImDnCn& filter_;
  std::size_t stackLimit_;
  const std::vector<const Plane*>& guides_;
  const Plane& source_;
  const Plane* pilot_;
  const std::vector<const Plane*>& in_;
  const int b_ = filter_.blockWidth;
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

NonLocalResult referencePass(const CNLImDnCn& filter, int stackLimit,
                             const std::vector<const Plane*>& guides, const Plane& source,
                             const Plane* pilot, const std::vector<const Plane*>& in) {
  return Pass(filter, stackLimit, guides, source, pilot, in).run();
}

void fillUnits(Plane& p, unsigned seed, float unit, float contrast, float sigma) {
  std::mt19937 random(seed);
  std::normal_distribution<float> noise(0.0f, sigma);
  paint(p, [&](int x, int y) {
    const float field = (x / 11 + y / 9) % 2 == 0 ? contrast : -contrast;
    return unit * std::round((field + noise(random)) / unit);
  });
}

void raise(double& worst, double difference) {
  if (!std::isnan(worst) && !(difference <= worst)) worst = difference;
}

}  // namespace vx::test
