// The noise filter in both modes, the estimate of the noise, and what a block of the non-local
// filter's grid costs, part by part.

#include <benchmark/benchmark.h>
#include <omp.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <vector>

#include "bench/noise_opencv.h"
#include "bench/noise_picture.h"
#include "frame/load.h"
#include "prim/float_mode.h"
#include "tests/support/heap.h"
#include "vxenhlib/band_sums.h"
#include "vxenhlib/block_matcher.h"
#include "vxenhlib/filtered_stacks.h"
#include "vxenhlib/noise_filter_record.h"

namespace {

using namespace vx;

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
  NoisePicture p(state.range(0));
  loop(
      state, p.megapixels(), [&] { p.restore(); }, [&] { p.denoise(mode); });
  omp_set_num_threads(1);
  if (state.range(1) > 1) return;
  p.restore();
  const test::Heap heap;
  p.denoise(mode);
  state.counters["peak_MB/MP"] = 1e-6 * static_cast<double>(test::Heap::peak()) / p.megapixels();
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
  const NoisePicture p(2048, 2048);
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

// The time of one part of the work: the mean of its calls, but for those that took more than three
// times the median, which another process interrupted.
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
    const double most = 3.0 * *middle;
    double sum = 0.0, count = 0.0;
    for (const double call : calls_)
      if (call <= most) {
        sum += call;
        count += 1.0;
      }
    return 1e9 * sum / count;
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
  const NoisePicture picture(kSize, kSize);
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
  settings.setFilterParams(0.01f, 1.5f, 3.0f, kNoiseSigma, 1.5f, 0.03f, 1.5f, 1);
  const FftPlan plan(g.searchSize, g.searchSize);
  const StackShape shape(g.blockSize, g.blockSize, g.stackLimit);
  BlockMatcher matcher;
  StackSelection selection;
  StackFilter stackFilter(shape);
  FilteredStacks stacks;
  BandSums sums;
  if (!matcher.reserve({g.blockSize, g.blockSize, g.searchSize, g.searchSize}) ||
      !selection.reserve(g.searchSize) || !stackFilter.reserve() || !stacks.reserve(shape, 1) ||
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
          FilteredStacks::Stack& filtered = stacks.replaceOldest(matches, stackDepth(count));
          stack.time([&] {
            stackFilter.weigh(guide, nullptr, matches, filtered.depth, settings.settings,
                              filtered.blockWeight);
            stackFilter.filter(guide, matches, true, filtered.blockWeight, filtered.blocks);
          });
          aggregation.time([&] {
            sums.add(1, matches, filtered.depth, filtered.blockWeight, 0, g.blockSize, g.blockSize,
                     g.blockSize);
            sums.add(0, matches, filtered.depth, filtered.blocks, shape.sliceFloats,
                     shape.blockRowFloats, g.blockSize, g.blockSize);
          });
          depths += filtered.depth;
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

// A mode and its peers in turn, so that none has the quieter machine.
struct Contestant {
  const char* name;
  std::function<void()> run;
};

void compare(NoisePicture& picture, int mode, const char* name, int turns,
             const std::vector<Contestant>& peers) {
  const auto time = [](double& best, const auto& run) {
    const double start = seconds(CLOCK_PROCESS_CPUTIME_ID);
    run();
    best = std::min(best, seconds(CLOCK_PROCESS_CPUTIME_ID) - start);
  };
  double own = 1e30;
  std::vector<double> best(peers.size(), 1e30);
  for (int turn = 0; turn < turns; ++turn) {
    picture.restore();
    time(own, [&] { picture.denoise(mode); });
    for (std::size_t i = 0; i < peers.size(); ++i)
      if (peers[i].run) time(best[i], peers[i].run);
  }
  const double unit = 1e3 / picture.megapixels();
  std::printf("\nOne thread, %d x %d, CPU ms/MP, best of %d turns\n", picture.width, picture.height,
              turns);
  std::printf("  %-42s %8.2f\n", name, unit * own);
  for (std::size_t i = 0; i < peers.size(); ++i)
    if (peers[i].run)
      std::printf("  %-42s %8.2f  ratio %.2f\n", peers[i].name, unit * best[i], best[i] / own);
}

void compareWithOpenCv() {
  const prim::FloatModeGuard floatMode;
  omp_set_num_threads(1);
  NoisePicture large(4), small(1);
  compare(large, 0, "fast mode, floats in and out", 8,
          {{"OpenCV bilateral d = 9, bytes",
            openCvBilateral(large.rgb, large.width, large.height, false)},
           {"OpenCV bilateral d = 9, floats",
            openCvBilateral(large.rgb, large.width, large.height, true)}});
  compare(small, 1, "non-local mode, floats in and out", 3,
          {{"OpenCV fastNlMeansDenoisingColored 3/11, bytes",
            openCvNonLocalMeans(small.rgb, small.width, small.height)}});
}

}  // namespace

int main(int argc, char** argv) {
  vx::attachProcess();
  benchmark::Initialize(&argc, argv);
  omp_set_num_threads(1);
  benchmark::RunSpecifiedBenchmarks();
  compareWithOpenCv();
}
