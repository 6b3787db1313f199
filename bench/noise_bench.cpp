// The noise filter in both modes, the estimate of the noise, and what a block of the non-local
// filter's grid costs, part by part.
//
// The picture is made of patches, ramps and Gaussian noise of sigma 10: stacks of all depths occur,
// most of them full, as in a noisy photograph.

#include <benchmark/benchmark.h>
#include <omp.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include "adjust/noise_stage.h"
#include "bench/noise_opencv.h"
#include "frame/load.h"
#include "prim/float_mode.h"
#include "vxenhlib/band_sums.h"
#include "vxenhlib/block_matcher.h"
#include "vxenhlib/noise_filter_record.h"
#include "vxenhlib/stack_filter.h"

namespace {

using namespace vx;

constexpr float kSigma = 10.0f / 255.0f;
constexpr NoiseProfile kProfile = {0.6f, kSigma, 0.0f, 0.6f, 0.35f * kSigma, 0.0f};

struct Picture {
  int width, height;
  std::vector<std::uint8_t> rgb;
  IMG3<float> image, work;

  // 3:2.
  explicit Picture(std::int64_t megapixels)
      : Picture(static_cast<int>(std::sqrt(1.5e6 * static_cast<double>(megapixels))),
                static_cast<int>(std::sqrt(1e6 * static_cast<double>(megapixels) / 1.5))) {}
  Picture(int w, int h) : width(w), height(h), image(w, h), work(w, h) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0f, 255.0f * kSigma);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        for (int c = 0; c < 3; ++c) {
          const int patch = (x / 37 ^ y / 29) % 5 * 25;
          const float value = static_cast<float>(40 + patch + 10 * c + 60 * x / w) + noise(random);
          rgb.push_back(static_cast<std::uint8_t>(std::clamp(value, 0.0f, 255.0f)));
          image.row(y)[3 * x + c] = (static_cast<float>(rgb.back()) + 0.49f) / 256.0f;
        }
  }
  double megapixels() const { return 1e-6 * width * height; }
  void restore() {
    for (int y = 0; y < height; ++y) std::copy_n(image.row(y), 3 * width, work.row(y));
  }
  void denoise(int mode) {
    AdjustSettings settings;
    settings.denoiseStrength = 0.6f;
    settings.noiseProfile = &kProfile;
    settings.denoiseMode = mode;
    NoiseStage().filter(work, settings);
  }
};

double seconds(clockid_t clock) {
  timespec now;
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Reports the fastest turn: of the wall clock, and of the time that this process spent on all its
// threads, which other processes do not lengthen.
template <class Prepare, class Run>
void loop(benchmark::State& state, double megapixels, const Prepare& prepare, const Run& run) {
  double wall = 1e30, cpu = 1e30;
  prepare();
  run();  // plans the transforms, and touches memory that the machine has not handed out before
  for (auto _ : state) {
    state.PauseTiming();
    prepare();
    state.ResumeTiming();
    const double wallStart = seconds(CLOCK_MONOTONIC), cpuStart = seconds(CLOCK_PROCESS_CPUTIME_ID);
    run();
    wall = std::min(wall, seconds(CLOCK_MONOTONIC) - wallStart);
    cpu = std::min(cpu, seconds(CLOCK_PROCESS_CPUTIME_ID) - cpuStart);
  }
  state.counters["MP/s"] = megapixels / wall;
  state.counters["ms/MP"] = 1e3 * wall / megapixels;
  state.counters["cpu_ms/MP"] = 1e3 * cpu / megapixels;
}

void filter(benchmark::State& state, int mode) {
  const prim::FloatModeGuard floatMode;
  omp_set_num_threads(static_cast<int>(state.range(1)));
  Picture p(state.range(0));
  loop(
      state, p.megapixels(), [&] { p.restore(); }, [&] { p.denoise(mode); });
  omp_set_num_threads(1);
}

void fast(benchmark::State& state) { filter(state, 0); }
BENCHMARK(fast)
    ->ArgNames({"MP", "threads"})
    ->ArgsProduct({{1, 4}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void nonLocal(benchmark::State& state) { filter(state, 1); }
BENCHMARK(nonLocal)
    ->ArgNames({"MP", "threads"})
    ->ArgsProduct({{1, 4}, {1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// All of a picture of this size is looked at; a larger one costs the same.
void estimate(benchmark::State& state) {
  omp_set_num_threads(static_cast<int>(state.range(0)));
  const Picture p(2048, 2048);
  NoiseProfile profile;
  loop(
      state, p.megapixels(), [] {},
      [&] {
        vxDenoiseEstNoise(p.rgb.data(), 1, 3 * p.width, p.width, p.height, &profile);
        benchmark::DoNotOptimize(profile);
      });
  omp_set_num_threads(1);
}
BENCHMARK(estimate)
    ->ArgNames({"threads"})
    ->ArgsProduct({{1, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The time of one part of the work: the median over its calls, which the few calls that another
// process interrupts do not change.
class Part {
 public:
  template <class Run>
  void time(const Run& run) {
    const double start = seconds(CLOCK_MONOTONIC);
    run();
    calls_.push_back(seconds(CLOCK_MONOTONIC) - start);
  }
  double nanoseconds() {
    const auto middle = calls_.begin() + static_cast<std::ptrdiff_t>(calls_.size() / 2);
    std::nth_element(calls_.begin(), middle, calls_.end());
    return 1e9 * *middle;
  }

 private:
  std::vector<double> calls_;
};

// One plane searched and filtered without a pilot, as the full-size detail pass does, over groups
// of four blocks in the places of the walk. A part is looked at with the clock of the machine,
// which costs each of them some 20 to 50 ns.
void blockParts(benchmark::State& state) {
  const prim::FloatModeGuard floatMode;
  constexpr BlockGeometry kGeometries[] = {{8, 8, 4, 32}, {12, 12, 6, 48}, {12, 16, 8, 48}};
  const BlockGeometry g = kGeometries[state.range(0)];
  constexpr int kSize = 320;
  const Picture picture(kSize, kSize);
  GIMG<float> plane(kSize, kSize), squares(kSize, kSize), costMap(g.searchSize, g.searchSize);
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x) {
      plane.row(y)[x] = picture.image.row(y)[3 * x];
      squares.row(y)[x] = plane.row(y)[x] * plane.row(y)[x];
    }
  integrate(PlaneView(squares));
  const PlaneView guide(plane), integral(squares);
  costMap.roiWidth = costMap.roiHeight = g.searchSize - g.blockSize + 1;
  const PlaneView costs(costMap);

  CNLImDnCn settings(g.stackLimit, 1, g.blockSize, g.searchSize);  // for the threshold
  settings.setFilterParams(0.01f, 1.5f, 3.0f, kSigma, 1.5f, 0.03f, 1.5f, 1);
  const FftPlan plan(g.searchSize, g.searchSize);
  const StackShape shape(g.blockSize, g.blockSize, g.stackLimit);
  BlockMatcher matcher;
  StackSelection selection;
  StackFilter stackFilter(shape);
  BandSums sums;
  if (!matcher.reserve({g.blockSize, g.blockSize, g.searchSize, g.searchSize}) ||
      !selection.reserve(g.searchSize) || !stackFilter.reserve() ||
      !sums.reserve(1, kSize, 0, kSize))
    return state.SkipWithError("no memory");

  Part tile, correlation, choice, stack, aggregation;
  double blocks = 0.0, depths = 0.0;
  StackMatches matches{};
  const int margin = (g.searchSize - g.blockSize - g.blockStep) / 2;
  for (auto _ : state)
    for (int y = 0; y + g.searchSize <= kSize; y += 2 * g.blockStep)
      for (int x = 0; x + g.searchSize <= kSize; x += g.blockStep) {
        tile.time([&] {
          matcher.setTile(plan, guide, integral, {x, y, g.searchSize, g.searchSize});
        });
        for (int block = 0; block < 4; ++block) {
          const int u = margin + block % 2 * g.blockStep, v = margin + block / 2 * g.blockStep;
          int count = 0;
          correlation.time(
              [&] { matcher.addCosts(plan, guide, integral, x + u, y + v, true, costs); });
          choice.time([&] {
            count = selection.select(costs, u, v, x, y, g.stackLimit, 1, 1, settings.matchThreshold,
                                     matches);
          });
          const float* filtered = nullptr;
          stack.time([&] {
            stackFilter.weigh(guide, nullptr, matches, count, settings.settings);
            filtered = stackFilter.filter(guide, matches, true);
          });
          aggregation.time([&] {
            sums.add(1, matches, stackFilter.depth(), stackFilter.blockWeight(), 0, g.blockSize,
                     g.blockSize, g.blockSize);
            sums.add(0, matches, stackFilter.depth(), filtered, shape.sliceFloats,
                     shape.blockRowFloats, g.blockSize, g.blockSize);
          });
          depths += stackFilter.depth();
          blocks += 1.0;
        }
      }
  benchmark::DoNotOptimize(sums.row(0, 0));
  state.counters["tile_ns"] = tile.nanoseconds() / 4.0;
  state.counters["correlation_ns"] = correlation.nanoseconds();
  state.counters["selection_ns"] = choice.nanoseconds();
  state.counters["stack_ns"] = stack.nanoseconds();
  state.counters["aggregation_ns"] = aggregation.nanoseconds();
  state.counters["depth"] = depths / blocks;
}
BENCHMARK(blockParts)
    ->ArgNames({"geometry"})
    ->ArgsProduct({{0, 1, 2}})
    ->Unit(benchmark::kMillisecond);

// The fast mode and its peer in turn, so that neither has the quieter machine.
void compareWithOpenCv() {
  const prim::FloatModeGuard floatMode;
  Picture p(4);
  const auto bytes = openCvBilateral(p.rgb, p.width, p.height, false);
  const auto floats = openCvBilateral(p.rgb, p.width, p.height, true);
  if (!bytes) return;
  omp_set_num_threads(1);
  double own = 1e30, peer = 1e30, peerFloats = 1e30;
  const auto time = [](double& best, const auto& run) {
    const double start = seconds(CLOCK_PROCESS_CPUTIME_ID);
    run();
    best = std::min(best, seconds(CLOCK_PROCESS_CPUTIME_ID) - start);
  };
  for (int turn = 0; turn < 8; ++turn) {
    p.restore();
    time(own, [&] { p.denoise(0); });
    time(peer, bytes);
    time(peerFloats, floats);
  }
  const double unit = 1e3 / p.megapixels();
  std::printf("\nOne thread, %d x %d, CPU ms/MP, best of 8 turns\n", p.width, p.height);
  std::printf("  fast mode, floats in and out      %7.2f\n", unit * own);
  std::printf("  OpenCV bilateral d = 9, bytes     %7.2f  ratio %.2f\n", unit * peer, peer / own);
  std::printf("  OpenCV bilateral d = 9, floats    %7.2f  ratio %.2f\n", unit * peerFloats,
              peerFloats / own);
}

}  // namespace

int main(int argc, char** argv) {
  vx::attachProcess();
  benchmark::Initialize(&argc, argv);
  omp_set_num_threads(1);
  benchmark::RunSpecifiedBenchmarks();
  compareWithOpenCv();
}
