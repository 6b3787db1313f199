// vxUnblock at every shift, chroma halved horizontally, beside 64 round trips by TurboJPEG.
//
// Arguments: quality, threads, megapixels. Counters: MP_per_s of wall time, cpu_ms_per_MP of all
// threads, each of the fastest turn; peak_MB_per_MP, the most that the images of the library held
// during the call, and the same of a call for 1 trip instead of 64. VX_BENCH_JPEG names a
// photograph, which is repeated to the size asked for; without it a made picture is used.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include "bench/fastest_turn.h"
#include "frame/exports/load.h"
#include "tests/support/heap.h"
#include "vxicore26.h"
#ifdef VX_TURBOJPEG
#include "bench/unblock_turbo.h"
#endif

namespace {

using vx::bench::seconds;

struct Picture {
  int width, height;
  std::vector<std::uint8_t> bytes;
};

// Layers of noise, each coarser and stronger than the last: about the spectrum of a photograph.
Picture makePhoto() {
  Picture picture{1024, 1024, std::vector<std::uint8_t>(1024 * 1024 * 3)};
  std::mt19937 rng(1);
  std::vector<float> sum(picture.bytes.size(), 128.0f);
  for (int cell = 1; cell <= 256; cell *= 4) {
    const int n = 1024 / cell;
    std::vector<float> layer(static_cast<std::size_t>(n * n * 3));
    for (float& v : layer) v = static_cast<float>(rng() % 1001) * 0.002f - 1.0f;
    const float gain = 6.0f * std::sqrt(static_cast<float>(cell));
    for (int y = 0; y < 1024; ++y)
      for (int x = 0; x < 1024; ++x)
        for (int c = 0; c < 3; ++c)
          sum[static_cast<std::size_t>((y * 1024 + x) * 3 + c)] +=
              gain * (layer[static_cast<std::size_t>((y / cell * n + x / cell) * 3)] +
                      0.3f * layer[static_cast<std::size_t>((y / cell * n + x / cell) * 3 + c)]);
  }
  for (std::size_t i = 0; i < sum.size(); ++i)
    picture.bytes[i] = static_cast<std::uint8_t>(std::clamp(sum[i], 0.0f, 255.0f));
  return picture;
}

const Picture& photo() {
  static const Picture picture = [] {
    Picture loaded{};
#ifdef VX_TURBOJPEG
    if (const char* path = std::getenv("VX_BENCH_JPEG"))
      loaded.bytes = vx::bench::turboLoad(path, loaded.width, loaded.height);
#endif
    return loaded.bytes.empty() ? makePhoto() : loaded;
  }();
  return picture;
}

Picture photoOf(std::int64_t megapixels) {
  const int width =
      1000 * static_cast<int>(std::lround(std::sqrt(static_cast<double>(megapixels))));
  const int height = static_cast<int>(megapixels * 1000000 / width);
  Picture out{width, height,
              std::vector<std::uint8_t>(static_cast<std::size_t>(width) *
                                        static_cast<std::size_t>(height) * 3)};
  const Picture& in = photo();
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < 3; ++c)
        out.bytes[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x)) *
                      3 +
                  static_cast<std::size_t>(c)] =
            in.bytes[static_cast<std::size_t>((y % in.height * in.width + x % in.width) * 3 + c)];
  return out;
}

template <class Work>
void measure(benchmark::State& state, const Work& work) {
  const Picture original = photoOf(state.range(2));
  Picture picture = original;
  const double megapixels = 1e-6 * picture.width * picture.height;
  double best = 1e30, bestCpu = 1e30;
  for (auto _ : state) {
    picture.bytes = original.bytes;
    const double cpuStart = seconds(CLOCK_PROCESS_CPUTIME_ID), start = seconds(CLOCK_MONOTONIC);
    work(picture);
    const double wall = seconds(CLOCK_MONOTONIC) - start;
    state.SetIterationTime(wall);
    best = std::min(best, wall);
    bestCpu = std::min(bestCpu, seconds(CLOCK_PROCESS_CPUTIME_ID) - cpuStart);
  }
  state.counters["MP_per_s"] = megapixels / best;
  state.counters["cpu_ms_per_MP"] = 1e3 * bestCpu / megapixels;
}

void unblock(benchmark::State& state) {
  vx::attachProcess();
  const int quality = static_cast<int>(state.range(0)), threads = static_cast<int>(state.range(1));
  omp_set_num_threads(threads);
  measure(state, [&](Picture& p) {
    vxUnblock(0, p.bytes.data(), 3, 3 * p.width, p.width, p.height, quality, 1, 1, 0);
  });
  for (const int shiftStep : {1, 8}) {
    Picture p = photoOf(state.range(2));
    const vx::test::Heap heap;
    vxUnblock(0, p.bytes.data(), 3, 3 * p.width, p.width, p.height, quality, 1, shiftStep, 0);
    state.counters[shiftStep == 1 ? "peak_MB_per_MP" : "of_1_trip"] =
        static_cast<double>(vx::test::Heap::peak()) / p.width / p.height;
  }
  omp_set_num_threads(omp_get_num_procs());
}

#ifdef VX_TURBOJPEG
void turbojpeg(benchmark::State& state) {
  vx::attachProcess();
  measure(state, [&](Picture& p) {
    vx::bench::turboUnblock(p.bytes, p.width, p.height, static_cast<int>(state.range(0)),
                            static_cast<int>(state.range(1)));
  });
}
#endif

// The two in turn, so that a change of the machine's speed meets both.
void registerAll() {
  const auto add = [](const char* name, void (*run)(benchmark::State&), int quality, int threads,
                      int megapixels) {
    benchmark::RegisterBenchmark(name, run)
        ->ArgNames({"quality", "threads", "MP"})
        ->Args({quality, threads, megapixels})
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  };
  for (const int megapixels : {1, 4, 16})
    for (const int quality : {30, 75, 95})
      for (const int threads : {1, 2}) {
        add("unblock", unblock, quality, threads, megapixels);
#ifdef VX_TURBOJPEG
        add("turbojpeg", turbojpeg, quality, threads, megapixels);
#endif
      }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  registerAll();
  benchmark::RunSpecifiedBenchmarks();
}
