// The noise filter in both modes, the estimate of the noise, and what a block of the non-local
// filter's grid costs, part by part. --level=avx2, or sse41 and so on, runs at that processor
// level.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string_view>
#include <vector>

#include "bench/fastest_turn.h"
#include "bench/noise_opencv.h"
#include "bench/noise_picture.h"
#include "frame/exports/load.h"
#include "prim/dispatch.h"
#include "prim/float_mode.h"
#include "tests/support/heap.h"
#include "vxenhlib/noise/noise_filter_record.h"
#include "vxenhlib/nonlocal/exact_search.h"
#include "vxenhlib/nonlocal/stack_filter.h"
#include "vxenhlib/nonlocal/weighted_sums.h"

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

// One plane searched and filtered without a pilot, as the full-size detail pass does, over pairs of
// blocks in the places of the walk, each looked for in two areas. A part is looked at with the
// clock of the machine, which costs each of them some 20 to 50 ns.
void blockParts(benchmark::State& state) {
  const prim::FloatModeGuard floatMode;
  constexpr BlockGeometry kGeometries[] = {{8, 8, 4, 32}, {12, 12, 6, 48}, {12, 16, 8, 48}};
  const BlockGeometry g = kGeometries[state.range(0)];
  constexpr int kSize = 320;
  const NoisePicture picture(kSize, kSize);
  GIMG<float> plane(kSize, kSize);
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x) plane.row(y)[x] = 0.7f * picture.image.row(y)[3 * x + 1];
  const PlaneView guide(plane);

  CNLImDnCn settings(g.stackLimit, 1, g.blockSize, g.searchSize);  // for the threshold
  settings.setFilterParams(0.01f, 1.5f, 3.0f, kNoiseSigma, 1.5f, 0.03f, 1.5f, 1);
  const SearchShape shape = {g.blockSize, g.searchSize, g.blockStep};
  QuantisedGuides guides;
  ExactSearch search;
  std::array<CostMap, 2> maps;
  const BlockWindow window(g.blockSize);
  StackFilter stackFilter(window);
  FilteredStacks stacks;
  WeightedSums sums;
  if (!guides.reserve(&guide, 1, g.blockSize, g.searchSize, settings.matchThreshold,
                      mostMatchCost(shape)) ||
      !search.reserve(shape) || !maps[0].reserve(shape) || !maps[1].reserve(shape) ||
      window.data() == nullptr || !stacks.reserve(g.blockSize, g.stackLimit, 1) ||
      !sums.reserve(1, kSize, 0, kSize))
    return state.SkipWithError("no memory");
  const MatchRule rule = {g.stackLimit, 1, 1, guides.limit()};

  Part quantising, searching, choice, stack, aggregation;
  double depths = 0.0;
  int strips = 0, blocks = 0;
  const int margin = (g.searchSize - g.blockSize - g.blockStep) / 2;
  for (auto _ : state)
    for (int y = 0; y + g.searchSize <= kSize; y += 2 * g.blockStep, ++strips) {
      quantising.time([&] { guides.cover(y, y + g.searchSize); });
      for (int x = 0; x + g.searchSize + g.blockStep <= kSize; x += g.blockStep) {
        SearchArea area = {x, y, g.searchSize, g.searchSize};
        const BlockPair pair = {x + margin + g.blockStep, {y + margin, y + margin + g.blockStep}};
        searching.time([&] { search.search(guides, kSize, pair, area, maps); });
        for (int visit = 0; visit < 4; ++visit, ++blocks) {
          const std::size_t j = static_cast<std::size_t>(visit % 2);
          area.x = x + visit / 2 * g.blockStep;
          FilteredStacks::Stack& filtered = stacks.replaceOldest(pair.x, pair.y[j]);
          choice.time([&] {
            filtered.depth = stackDepth(
                selectStack(maps[j], area, pair.x, pair.y[j], g.blockSize, rule, filtered.matches));
          });
          stack.time([&] {
            stackFilter.filter(guide, {}, &guide, 1, filtered.matches, filtered.depth,
                               settings.settings, filtered.blockWeight, filtered.blocks,
                               stacks.planeFloats());
          });
          aggregation.time([&] { sums.add(g.blockSize, filtered, stacks.planeFloats()); });
          depths += filtered.depth;
        }
      }
    }
  benchmark::DoNotOptimize(sums.row(0, 0));
  state.counters["quantising_ns"] = quantising.nanoseconds() * strips / blocks;
  state.counters["search_ns"] = searching.nanoseconds() / 4.0;
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
  for (NoisePicture* p : {&small, &large})
    compare(*p, 1, "non-local mode, floats in and out", 3,
            {{"OpenCV fastNlMeansDenoisingColored 3/11, bytes",
              openCvNonLocalMeans(p->rgb, p->width, p->height)}});
}

// Takes "--level=NAME" out of the arguments: the bodies of a lower processor level run.
bool chooseLevel(int& argc, char** argv) {
  constexpr std::string_view kOption = "--level=";
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (!argument.starts_with(kOption)) continue;
    std::rotate(argv + i, argv + i + 1, argv + argc);
    --argc;
    for (int column = prim::lastRunnableColumn(); column >= 0; --column)
      if (argument.substr(kOption.size()) == prim::columnName(column)) {
        prim::primCpuColumn = column;
        return true;
      }
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  vx::attachProcess();
  if (!chooseLevel(argc, argv)) {
    std::fprintf(stderr, "--level: none that this machine runs\n");
    return 2;
  }
  benchmark::Initialize(&argc, argv);
  omp_set_num_threads(1);
  benchmark::RunSpecifiedBenchmarks();
  compareWithOpenCv();
}
