// The noise filter in both modes, the estimate of the noise, and what a block of the non-local
// filter's grid costs, part by part.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <vector>

#include "bench/fastest_turn.h"
#include "bench/noise_opencv.h"
#include "bench/noise_picture.h"
#include "frame/exports/load.h"
#include "prim/float_mode.h"
#include "tests/support/heap.h"
#include "vxenhlib/noise/noise_filter_record.h"
#include "vxenhlib/nonlocal/band_sums.h"
#include "vxenhlib/nonlocal/block_matcher.h"
#include "vxenhlib/nonlocal/filtered_stacks.h"

namespace {

using namespace vx;
using bench::seconds;

// Runs the loop of a benchmark, and reports the fastest turn, without what prepares it.
template <class Prepare, class Run>
void loop(benchmark::State& state, double megapixels, const Prepare& prepare, const Run& run) {
  bench::FastestTurn fastest;
  prepare();
  run();  // plans the transforms, and touches memory that the machine has not handed out before
  for (auto _ : state) {
    state.PauseTiming();
    prepare();
    state.ResumeTiming();
    fastest.time(run);
  }
  fastest.report(state, megapixels);
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
// of four blocks in the places of the walk: the two on the right are new, the two on the left were
// the right ones of the tile before. A part is looked at with the clock of the machine, which costs
// each of them some 20 to 50 ns.
void blockParts(benchmark::State& state) {
  const prim::FloatModeGuard floatMode;
  constexpr BlockGeometry kGeometries[] = {{8, 8, 4, 32}, {12, 12, 6, 48}, {12, 16, 8, 48}};
  const BlockGeometry g = kGeometries[state.range(0)];
  constexpr int kSize = 320;
  const NoisePicture picture(kSize, kSize);
  GIMG<float> plane(kSize, kSize), squares(kSize, kSize);
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x) {
      plane.row(y)[x] = picture.image.row(y)[3 * x];
      squares.row(y)[x] = plane.row(y)[x] * plane.row(y)[x];
    }
  integrate(PlaneView(squares));
  const PlaneView guide(plane), integral(squares);
  // Upper and lower block: of the left column, of the right one, and copies to be used up.
  const int positions = g.searchSize - g.blockSize + 1;
  GIMG<float> memory[6] = {{positions, positions}, {positions, positions}, {positions, positions},
                           {positions, positions}, {positions, positions}, {positions, positions}};
  PlaneView maps[6];
  for (int i = 0; i < 6; ++i) maps[i] = PlaneView(memory[i]);

  CNLImDnCn settings(g.stackLimit, 1, g.blockSize, g.searchSize);  // for the threshold
  settings.setFilterParams(0.01f, 1.5f, 3.0f, kNoiseSigma, 1.5f, 0.03f, 1.5f, 1);
  const SearchShape search = {g.blockSize, g.blockSize, g.searchSize, g.searchSize};
  const SearchTransform transform(search);
  const StackShape shape(g.blockSize, g.blockSize, g.stackLimit);
  BlockMatcher matcher;
  StackSelection selection;
  StackFilter stackFilter(shape);
  FilteredStacks stacks;
  BandSums sums;
  if (!matcher.reserve(search, 1, &guide, &integral) || !selection.reserve(g.searchSize) ||
      !stackFilter.reserve() || !stacks.reserve(shape, 1) || !sums.reserve(1, kSize, 0, kSize))
    return state.SkipWithError("no memory");

  Part tile, correlation, extension, choice, stack, aggregation;
  double blocks = 0.0, depths = 0.0;
  StackMatches matches{};
  const int margin = (g.searchSize - g.blockSize - g.blockStep) / 2;
  const auto visit = [&](const PlaneView& map, int x, int y, int tileX, int tileY) {
    int count = 0;
    choice.time([&] {
      count = selection.select(map, x - tileX, y - tileY, tileX, tileY, g.stackLimit, 1, 1,
                               settings.matchThreshold, matches);
    });
    FilteredStacks::Stack& filtered = stacks.replaceOldest(matches, stackDepth(count));
    stack.time([&] {
      stackFilter.weigh(guide, nullptr, matches, filtered.depth, settings.settings,
                        filtered.blockWeight);
      stackFilter.filter(guide, matches, true, filtered.blockWeight, filtered.blocks);
    });
    aggregation.time([&] { sums.add(shape, filtered); });
    depths += filtered.depth;
    blocks += 1.0;
  };
  for (auto _ : state)
    for (int y = 0; y + g.searchSize <= kSize; y += 2 * g.blockStep) {
      const auto pairAt = [&](int x) {
        return BlockPair{x + margin, {y + margin, y + margin + g.blockStep}};
      };
      for (int x = 0; x + g.searchSize <= kSize; x += g.blockStep) {
        tile.time([&] { matcher.setTile(transform, {x, y, g.searchSize, g.searchSize}); });
        const BlockPair left = pairAt(x), right = pairAt(x + g.blockStep);
        if (x == 0) {
          matcher.search(transform, left, maps);
        } else {
          extension.time([&] {
            matcher.extend(g.blockStep, left);
            for (int j = 0; j < 2; ++j) matcher.slide(g.blockStep, j, maps[j]);
          });
        }
        correlation.time([&] { matcher.search(transform, right, maps + 2); });
        for (int j = 0; j < 2; ++j) {
          visit(maps[j], left.x, left.y[j], x, y);
          for (int v = 0; v < positions; ++v)
            std::copy_n(maps[2 + j].row(v), positions, maps[4 + j].row(v));
          visit(maps[4 + j], right.x, right.y[j], x, y);
        }
        std::swap_ranges(maps, maps + 2, maps + 2);
      }
    }
  benchmark::DoNotOptimize(sums.row(0, 0));
  state.counters["tile_ns"] = tile.nanoseconds() / 4.0;
  state.counters["correlation_ns"] = correlation.nanoseconds() / 2.0;
  state.counters["extension_ns"] = extension.nanoseconds() / 2.0;
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
