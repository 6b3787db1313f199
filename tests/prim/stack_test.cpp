// The filter of stacks in every body, against transforms by the definition in double precision.

#include "prim/stack.h"

#include <complex>

#include "prim/float_mode.h"
#include "tests/prim/plane.h"
#include "tests/support/variants.h"

namespace {

using namespace vx::prim;
using vx::test::onEveryVariant;
using Complex = std::complex<double>;
using Floats = std::vector<float>;

std::size_t index(int i) { return static_cast<std::size_t>(i); }

struct Stack {
  static constexpr int kWidth = 90, kHeight = 70, kStep = 4 * kWidth;
  int size, depth;
  Floats plane = Floats(kWidth * kHeight);
  std::vector<int> offsets;
  std::vector<const float*> blocks;

  Stack(int n, int d, unsigned seed) : size(n), depth(d) {
    std::mt19937 random(seed);
    std::normal_distribution<float> noise(0.0f, 0.04f);
    for (int i = 0; i < kWidth * kHeight; ++i)
      plane[index(i)] =
          0.2f + static_cast<float>((i % kWidth / 11 + i / kWidth / 9) % 2) * 0.3f + noise(random);
    for (int k = 0; k < d; ++k) {
      offsets.push_back(static_cast<int>(random() % unsigned(kHeight - n)) * kWidth +
                        static_cast<int>(random() % unsigned(kWidth - n)));
      blocks.push_back(plane.data() + offsets.back());
    }
  }
  int samples() const { return size * size * depth; }
  double sample(int i) const {
    const int x = i % size, y = i / size % size;
    return double{blocks[index(i / (size * size))][y * kWidth + x]};
  }
  StackRule rule(bool wiener) const {
    const float t = 0.05f * std::sqrt(static_cast<float>(samples()));
    return {wiener, t, 1.0f / (2.0f * t), 0.01f};
  }
  Floats noWeights() const { return Floats(index(stackWeights(size, depth)), -1.0f); }
  int weigh(const StackRule& rule, Floats& weights, float& sum, float* dst) const {
    return primStackWeigh_32f(blocks.data(), kStep, size, depth, &rule, weights.data(), &sum, dst);
  }
  int filter(const Floats& weights, Floats& dst) const {
    return primStackFilter_32f(blocks.data(), kStep, size, depth, weights.data(), dst.data());
  }
};

double weightOf(const StackRule& rule, double m) {
  const double t = double{rule.threshold};
  const double w =
      rule.wiener ? m * m / (m * m + t * t) : std::min((m - t) * double{rule.gain}, 1.0);
  return std::max(w, double{rule.floor});
}

// Runs of `length` numbers `stride` apart, each replaced by its transform.
void transformAxis(std::vector<Complex>& data, int length, int stride, double sign) {
  std::vector<Complex> run(index(length));
  for (int start = 0; start < static_cast<int>(data.size()); ++start) {
    if (start / stride % length != 0) continue;
    for (int k = 0; k < length; ++k) {
      run[index(k)] = 0.0;
      for (int i = 0; i < length; ++i)
        run[index(k)] += data[index(start + i * stride)] *
                         std::polar(1.0, sign * 2.0 * std::numbers::pi * (i * k % length) / length);
    }
    for (int k = 0; k < length; ++k) data[index(start + k * stride)] = run[index(k)];
  }
}

// The filtered samples; `sum` becomes that of the weights.
std::vector<Complex> byDefinition(const Stack& s, const StackRule& rule, double& sum) {
  std::vector<Complex> data;
  for (int i = 0; i < s.samples(); ++i) data.emplace_back(s.sample(i));
  const auto transform = [&](double sign) {
    transformAxis(data, s.size, 1, sign);
    transformAxis(data, s.size, s.size, sign);
    transformAxis(data, s.depth, s.size * s.size, sign);
  };
  transform(-1.0);
  for (int i = 0; i < s.samples(); ++i) {
    const double w = weightOf(rule, std::abs(data[index(i)]));
    data[index(i)] *= w / s.samples();
    if (i % s.size <= s.size / 2) sum += w;
  }
  transform(1.0);
  return data;
}

// Samples below 1 and a dozen roundings of transforms; sums of up to 2304 weights.
TEST(Stack, filterIsTheDefinitionInAllBodiesAlike) {
  const FloatModeGuard floatMode;
  for (const int size : {8, 12, 16})
    for (const int depth : {1, 2, 4, 8, 12, 16})
      for (const bool wiener : {false, true}) {
        SCOPED_TRACE(::testing::Message() << size << ", " << depth << ", " << wiener);
        const Stack s(size, depth, 7), another(size, depth, 8);
        const StackRule rule = s.rule(wiener);
        double wantedSum = 0.0;
        const auto wanted = byDefinition(s, rule, wantedSum);
        Floats first;
        onEveryVariant([&] {
          Floats weights = s.noWeights(), alone = weights;
          Floats dst(index(s.samples() + 1), 5.0f), again = dst, other = dst;
          float sum = 0.0f, aloneSum = 0.0f;
          ASSERT_EQ(s.weigh(rule, weights, sum, dst.data()), 0);
          ASSERT_EQ(s.weigh(rule, alone, aloneSum, nullptr), 0);
          ASSERT_EQ(s.filter(weights, again), 0);
          ASSERT_EQ(another.filter(weights, other), 0);
          EXPECT_NEAR(double{sum}, wantedSum, 2e-6 * wantedSum);
          for (int i = 0; i < s.samples(); ++i)
            ASSERT_NEAR(double{dst[index(i)]}, wanted[index(i)].real(), 8 * 0x1p-24) << i;
          EXPECT_TRUE(dst.back() == 5.0f && other.back() == 5.0f);
          // In one turn, in two, and in every body.
          EXPECT_EQ(sum, aloneSum);
          EXPECT_EQ(weights, alone);
          EXPECT_EQ(dst, again);
          other.insert(other.end(), dst.begin(), dst.end());
          other.push_back(sum);
          if (first.empty()) first = other;
          EXPECT_EQ(other, first);
        });
      }
}

// No noise: infinite gains and 0 / 0, which are weights of 1 and of the floor.
TEST(Stack, withoutThresholdTheSamplesComeBack) {
  const FloatModeGuard floatMode;
  for (const bool wiener : {false, true})
    for (const bool flat : {false, true}) {
      Stack s(8, 4, 9);
      if (flat) std::fill(s.plane.begin(), s.plane.end(), 0.0f);
      onEveryVariant([&] {
        Floats weights = s.noWeights(), dst(index(s.samples()));
        float sum = 0.0f;
        ASSERT_EQ(s.weigh({wiener, 0.0f, kInf, 0.25f}, weights, sum, dst.data()), 0);
        EXPECT_EQ(sum, flat ? 0.25f * 160 : 160.0f);
        for (int i = 0; i < s.samples(); ++i)
          ASSERT_NEAR(double{dst[index(i)]}, s.sample(i), 4 * 0x1p-24);
      });
    }
}

TEST(Stack, sumsAndDifferencesArePlainOnes) {
  for (const int size : {8, 12, 16})
    for (const bool weighed : {true, false}) {
      SCOPED_TRACE(size);
      Stack s(size, 4, 11);
      s.offsets[1] = s.offsets[0] + 1;  // overlap
      const Floats src(s.plane.begin(), s.plane.begin() + s.samples());
      const Floats window(s.plane.begin() + 99, s.plane.begin() + 99 + size * size);
      const Floats before(s.plane.size(), 0.5f);
      Floats wantedTotal = before, wantedWeight = before;
      double difference = 0.0;
      for (int i = 0; i < s.samples(); ++i) {
        const int block = i / (size * size), place = i % (size * size);
        const auto at = index(s.offsets[index(block)] + place / size * s.kWidth + place % size);
        const float product = src[index(i)] * window[index(place)];
        wantedTotal[at] += product;
        if (weighed) wantedWeight[at] += window[index(place)];
        if (block == 0)
          difference += std::abs(s.sample(i) - s.sample(2 * size * size + i)) / (size * size);
      }
      float first = -1.0f;
      onEveryVariant([&] {
        Floats total = before, weight = before;
        std::vector<float*> totals, weights;
        for (const int offset : s.offsets) {
          totals.push_back(total.data() + offset);
          weights.push_back(weight.data() + offset);
        }
        ASSERT_EQ(primStackAdd_32f(src.data(), window.data(), size, 4, totals.data(),
                                   weighed ? weights.data() : nullptr, s.kStep),
                  0);
        EXPECT_EQ(total, wantedTotal);
        EXPECT_EQ(weight, wantedWeight);
        float mean = 0.0f;
        ASSERT_EQ(primStackDifference_32f(s.blocks[0], s.kStep, s.blocks[2], s.kStep, size, &mean),
                  0);
        EXPECT_NEAR(double{mean}, difference, 16 * 0x1p-24 * difference);
        if (first < 0.0f) first = mean;
        EXPECT_EQ(mean, first);
      });
    }
}

TEST(Stack, badArgumentsAreRefused) {
  const Stack s(8, 4, 1);
  const StackRule rule = s.rule(true);
  Floats dst(4096, 3.0f);
  float sum = 3.0f, *out = dst.data(), *places[4] = {out, out, out, out};
  const float *const *in = s.blocks.data(), *plane = in[0];
  onEveryVariant([&] {
    EXPECT_EQ(primStackWeigh_32f(in, 360, 8, 4, nullptr, out, &sum, out), kStatusNullPtr);
    EXPECT_EQ(primStackFilter_32f(in, 360, 8, 4, out, nullptr), kStatusNullPtr);
    EXPECT_EQ(primStackAdd_32f(plane, plane, 8, 4, nullptr, nullptr, 32), kStatusNullPtr);
    EXPECT_EQ(primStackDifference_32f(plane, 32, plane, 32, 8, nullptr), kStatusNullPtr);
    EXPECT_EQ(primStackDifference_32f(plane, 32, plane, 32, 4, &sum), kStatusBadSize);
    for (const auto& [size, depth] : {std::pair(10, 4), {0, 4}, {8, 3}, {8, 0}, {8, 24}}) {
      EXPECT_EQ(primStackWeigh_32f(in, 360, size, depth, &rule, out, &sum, out), kStatusBadSize);
      EXPECT_EQ(primStackFilter_32f(in, 360, size, depth, out, out), kStatusBadSize);
      EXPECT_EQ(primStackAdd_32f(plane, plane, size, depth, places, nullptr, 32), kStatusBadSize);
    }
  });
  EXPECT_EQ(sum, 3.0f);
  EXPECT_EQ(dst, Floats(4096, 3.0f));
}

}  // namespace
