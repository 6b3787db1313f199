// The filter of stacks in every body, against transforms by the definition in double precision and
// against FFTW.

#include "prim/stack.h"

#include <fftw3.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

#include "tests/prim/variants/match.h"

namespace {

using namespace vx::prim;
using vx::test::bodyColumns;
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

struct Filtered {
  std::vector<double> samples;
  double sum = 0.0;
};

Filtered byDefinition(const Stack& s, const StackRule& rule) {
  Filtered result;
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
    if (i % s.size <= s.size / 2) result.sum += w;
  }
  transform(1.0);
  for (const Complex& x : data) result.samples.push_back(x.real());
  return result;
}

Filtered byFftw(const Stack& s, const StackRule& rule) {
  Filtered result;
  const int half = s.size / 2 + 1, rows = s.depth * s.size;
  Floats samples(index(s.samples()));
  for (int i = 0; i < s.samples(); ++i) samples[index(i)] = static_cast<float>(s.sample(i));
  std::vector<fftwf_complex> spectrum(index(rows * half));
  fftwf_plan there = fftwf_plan_dft_r2c_3d(s.depth, s.size, s.size, samples.data(), spectrum.data(),
                                           FFTW_ESTIMATE | FFTW_PRESERVE_INPUT);
  fftwf_plan back = fftwf_plan_dft_c2r_3d(s.depth, s.size, s.size, spectrum.data(), samples.data(),
                                          FFTW_ESTIMATE);
  fftwf_execute(there);
  for (auto& x : spectrum) {
    const double w = weightOf(rule, std::hypot(double{x[0]}, double{x[1]}));
    result.sum += w;
    for (float& part : x) part *= static_cast<float>(w / s.samples());
  }
  fftwf_execute(back);
  result.samples.assign(samples.begin(), samples.end());
  fftwf_destroy_plan(there);
  fftwf_destroy_plan(back);
  return result;
}

class StackSizes : public ::testing::TestWithParam<std::tuple<int, int>> {};
INSTANTIATE_TEST_SUITE_P(, StackSizes,
                         ::testing::Combine(::testing::Values(8, 12, 16),
                                            ::testing::Values(1, 2, 4, 8, 12, 16)));

// Samples below 1 and a dozen roundings of transforms; sums of up to 2304 weights.
TEST_P(StackSizes, filterIsTheDefinitionInAllBodiesAlike) {
  const auto [size, depth] = GetParam();
  const vx::prim::FloatModeGuard floatMode;
  for (const bool wiener : {false, true}) {
    const Stack s(size, depth, 7), another(size, depth, 8);
    const StackRule rule = s.rule(wiener);
    const Filtered wanted = byDefinition(s, rule), fftw = byFftw(s, rule);
    Floats first, firstOther;
    float firstSum = 0.0f;
    for (const int column : bodyColumns()) {
      SCOPED_TRACE(columnName(column));
      Floats weights(index(stackWeights(size, depth)), -1.0f), alone = weights;
      Floats dst(index(s.samples() + 1), 5.0f), again = dst, other = dst;
      float sum = 0.0f, aloneSum = 0.0f;
      const auto weigh = [&](Floats& w, float* to, float* out) {
        return table::primStackWeigh_32f[column](s.blocks.data(), s.kStep, size, depth, &rule,
                                                 w.data(), to, out);
      };
      const auto filter = [&](const Stack& stack, float* out) {
        return table::primStackFilter_32f[column](stack.blocks.data(), stack.kStep, size, depth,
                                                  weights.data(), out);
      };
      ASSERT_EQ(weigh(weights, &sum, dst.data()), 0);
      ASSERT_EQ(weigh(alone, &aloneSum, nullptr), 0);
      ASSERT_EQ(filter(s, again.data()), 0);
      ASSERT_EQ(filter(another, other.data()), 0);
      // In one turn, in two, and in every body.
      EXPECT_EQ(sum, aloneSum);
      EXPECT_EQ(weights, alone);
      EXPECT_EQ(dst, again);
      if (column == 0) {
        first = dst;
        firstOther = other;
        firstSum = sum;
      }
      EXPECT_EQ(dst, first);
      EXPECT_EQ(other, firstOther);
      EXPECT_EQ(sum, firstSum);
      EXPECT_EQ(dst.back(), 5.0f);
      EXPECT_EQ(other.back(), 5.0f);
    }
    EXPECT_NEAR(double{firstSum}, wanted.sum, 2e-6 * wanted.sum);
    EXPECT_NEAR(double{firstSum}, fftw.sum, 4e-6 * wanted.sum);
    for (int i = 0; i < s.samples(); ++i) {
      ASSERT_NEAR(double{first[index(i)]}, wanted.samples[index(i)], 8 * 0x1p-24) << i;
      ASSERT_NEAR(double{first[index(i)]}, fftw.samples[index(i)], 16 * 0x1p-24) << i;
    }
  }
}

// No noise: infinite gains and 0 / 0, which are weights of 1 and of the floor.
TEST(Stack, withoutThresholdTheSamplesComeBack) {
  const vx::prim::FloatModeGuard floatMode;
  for (const bool wiener : {false, true})
    for (const bool flat : {false, true}) {
      Stack s(8, 4, 9);
      if (flat) std::fill(s.plane.begin(), s.plane.end(), 0.0f);
      const StackRule rule = {wiener, 0.0f, std::numeric_limits<float>::infinity(), 0.25f};
      for (const int column : bodyColumns()) {
        Floats weights(index(stackWeights(8, 4))), dst(index(s.samples()));
        float sum = 0.0f;
        ASSERT_EQ(table::primStackWeigh_32f[column](s.blocks.data(), s.kStep, 8, 4, &rule,
                                                    weights.data(), &sum, dst.data()),
                  0);
        EXPECT_EQ(sum, flat ? 0.25f * 160 : 160.0f) << columnName(column);
        for (int i = 0; i < s.samples(); ++i)
          ASSERT_NEAR(double{dst[index(i)]}, s.sample(i), 4 * 0x1p-24);
      }
    }
}

TEST(Stack, sumsAndDifferencesArePlainOnes) {
  for (const int column : bodyColumns())
    for (const int size : {8, 12, 16})
      for (const bool weighed : {true, false}) {
        SCOPED_TRACE(::testing::Message() << columnName(column) << ", " << size);
        Stack s(size, 4, 11);
        s.offsets[1] = s.offsets[0] + 1;  // overlap
        const Floats src(s.plane.begin(), s.plane.begin() + s.samples());
        const Floats window(s.plane.begin() + 99, s.plane.begin() + 99 + size * size);
        Floats total(s.plane.size(), 0.5f), weight = total;
        Floats wantedTotal = total, wantedWeight = total;
        std::vector<float*> totals, weights;
        for (int k = 0; k < 4; ++k) {
          totals.push_back(total.data() + s.offsets[index(k)]);
          weights.push_back(weight.data() + s.offsets[index(k)]);
          for (int i = 0; i < size * size; ++i) {
            const auto at = index(s.offsets[index(k)] + i / size * s.kWidth + i % size);
            const float product = src[index(k * size * size + i)] * window[index(i)];
            wantedTotal[at] += product;
            if (weighed) wantedWeight[at] += window[index(i)];
          }
        }
        ASSERT_EQ(table::primStackAdd_32f[column](src.data(), window.data(), size, 4, totals.data(),
                                                  weighed ? weights.data() : nullptr, s.kStep),
                  0);
        EXPECT_EQ(total, wantedTotal);
        EXPECT_EQ(weight, wantedWeight);

        double difference = 0.0;
        for (int i = 0; i < size * size; ++i)
          difference += std::abs(s.sample(i) - s.sample(2 * size * size + i)) / (size * size);
        float mean = 0.0f, first = 0.0f;
        ASSERT_EQ(table::primStackDifference_32f[0](s.blocks[0], s.kStep, s.blocks[2], s.kStep,
                                                    size, &first),
                  0);
        ASSERT_EQ(table::primStackDifference_32f[column](s.blocks[0], s.kStep, s.blocks[2], s.kStep,
                                                         size, &mean),
                  0);
        EXPECT_EQ(mean, first);
        EXPECT_NEAR(double{mean}, difference, 16 * 0x1p-24 * difference);
      }
}

TEST(Stack, badArgumentsAreRefused) {
  Stack s(8, 4, 1);
  const StackRule rule = s.rule(true);
  Floats weights(index(stackWeights(16, 16)), 3.0f), dst(4096, 3.0f);
  float sum = 3.0f;
  float* places[4] = {dst.data(), dst.data(), dst.data(), dst.data()};
  for (const int column : bodyColumns()) {
    const auto weigh = [&](int size, int depth, const StackRule* r) {
      return table::primStackWeigh_32f[column](s.blocks.data(), s.kStep, size, depth, r,
                                               weights.data(), &sum, dst.data());
    };
    EXPECT_EQ(weigh(8, 4, nullptr), kStatusNullPtr);
    for (const auto& [size, depth] : {std::pair(10, 4), {0, 4}, {8, 3}, {8, 0}, {8, 24}}) {
      EXPECT_EQ(weigh(size, depth, &rule), kStatusBadSize);
      EXPECT_EQ(table::primStackFilter_32f[column](s.blocks.data(), s.kStep, size, depth,
                                                   weights.data(), dst.data()),
                kStatusBadSize);
      EXPECT_EQ(table::primStackAdd_32f[column](s.plane.data(), s.plane.data(), size, depth, places,
                                                nullptr, 32),
                kStatusBadSize);
    }
    EXPECT_EQ(
        table::primStackFilter_32f[column](s.blocks.data(), s.kStep, 8, 4, weights.data(), nullptr),
        kStatusNullPtr);
    EXPECT_EQ(
        table::primStackAdd_32f[column](s.plane.data(), s.plane.data(), 8, 4, nullptr, nullptr, 32),
        kStatusNullPtr);
    EXPECT_EQ(table::primStackDifference_32f[column](s.blocks[0], 32, s.blocks[1], 32, 8, nullptr),
              kStatusNullPtr);
    EXPECT_EQ(table::primStackDifference_32f[column](s.blocks[0], 32, s.blocks[1], 32, 4, &sum),
              kStatusBadSize);
  }
  EXPECT_EQ(sum, 3.0f);
  EXPECT_EQ(dst, Floats(4096, 3.0f));
}

}  // namespace
