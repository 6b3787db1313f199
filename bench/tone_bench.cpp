// The tone and detail stage: whole chains with bytes in and out, and its steps apart.
//
// The picture is made of ramps, edges, flat areas and grain in equal parts: flat areas are what the
// grids find hardest, since neighbours then fall into the same cell.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#if defined(VX_BENCH_OPENCV)
#include "bench/tone_opencv.h"
#endif
#include "bench/fastest_turn.h"
#include "frame/bands.h"
#include "frame/exports/load.h"
#include "frame/img.h"
#include "prim/prims.h"
#include "vxenhlib/grid/bilateral_local_hist_eq.h"
#include "vxenhlib/tone/adjust_tone_stage.h"
#include "vxenhlib/tone/tone_curve.h"
#include "vxenhlib/tone/tone_scratch.h"
#include "vxenhlib/tone/unsharp_mask.h"

namespace {

using namespace vx;

struct Size {
  int width, height;
  double megapixels() const { return 1e-6 * width * height; }
};

Size sizeOf(std::int64_t megapixels) {
  const auto height = static_cast<int>(std::sqrt(static_cast<double>(megapixels) * 1e6 / 1.5));
  return {static_cast<int>(static_cast<double>(megapixels) * 1e6 / height), height};
}

std::vector<std::uint8_t> makePicture(Size size) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(3 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
  std::mt19937 random(1);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const int kind = (x / 97 + y / 71) % 3;
      const int grain = kind == 0 ? 0 : static_cast<int>(random() % (kind == 1 ? 8 : 40));
      const int ramp = 180 * x / size.width + 40 * y / size.height;
      for (int c = 0; c < 3; ++c)
        bytes.push_back(static_cast<std::uint8_t>((ramp + grain + (kind * 23 + 11) * c) % 250));
    }
  }
  return bytes;
}

// Every step at work.
AdjustToneStage fullSetting() {
  AdjustToneStage stage;
  stage.sharpenAmount = 1.3f;
  stage.sharpenSigma = 0.85f;
  stage.hueShift = 0.02f;
  stage.lightness.eqStrength = 0.8f;
  stage.lightness.eqClip = 0.2f;
  stage.lightness.eqSample = 50;
  stage.lightness.eqPeakGain = 0.5f;
  stage.lightness.eqTopCut = 0.02f;
  stage.lightness.eqFloor = 0.01f;
  stage.lightness.gamma = 0.4f;
  stage.lightness.detailRange = 0.1f;
  stage.lightness.detailSample = 16;
  stage.lightness.detailGain = 1.4f;
  stage.lightness.detailGamma = 0.8f;
  stage.saturation.eqStrength = 0.3f;
  stage.saturation.eqSample = 50;
  stage.saturation.contrast = 1.2f;
  stage.saturation.gamma = 0.92f;
  return stage;
}

// Runs the loop of a benchmark, and reports the fastest turn.
template <class Run>
void loop(benchmark::State& state, double megapixels, const Run& run) {
  bench::FastestTurn fastest;
  run();  // memory that the machine has not handed out before costs several times as much
  for (auto _ : state) fastest.time(run);
  fastest.report(state, megapixels);
}

// The host's bytes on both sides of the stage.
class ByteRows : public RowSource, public RowSink {
 public:
  ByteRows(const std::vector<std::uint8_t>& from, std::vector<std::uint8_t>& to, int width)
      : from_(from.data()), to_(to.data()), step_(3 * width) {}

  void take(int y, const RgbRows& rows) override {
    const float offset[3] = {0.49f, 0.49f, 0.49f}, scale[3] = {1 / 256.0f, 1 / 256.0f, 1 / 256.0f};
    prim::primConvert_8u32f_C3R(from_ + std::ptrdiff_t{step_} * y, step_, rows.data, rows.step,
                                rows.width, rows.height);
    prim::primAddC_32f_C3IR(offset, rows.data, rows.step, rows.width, rows.height);
    prim::primMulC_32f_C3IR(scale, rows.data, rows.step, rows.width, rows.height);
  }
  void give(int y, const RgbRows& rows) override {
    const float scale[3] = {256.0f, 256.0f, 256.0f}, offset[3] = {-0.49f, -0.49f, -0.49f};
    prim::primMulC_32f_C3IR(scale, rows.data, rows.step, rows.width, rows.height);
    prim::primAddC_32f_C3IR(offset, rows.data, rows.step, rows.width, rows.height);
    prim::primConvert_32f8u_C3R(rows.data, rows.step, to_ + std::ptrdiff_t{step_} * y, step_,
                                rows.width, rows.height, prim::primRndNear);
  }

 private:
  const std::uint8_t* from_;
  std::uint8_t* to_;
  int step_;
};

// Arguments: megapixels, threads, rows of a band (0: the default, -1: the whole picture), whether
// image and scratch come fresh from the system in every turn, as for a host's single picture, or
// are kept, as from tile to tile.
void wholeChain(benchmark::State& state) {
  const prim::FloatModeGuard floatMode;
  const Size size = sizeOf(state.range(0));
  omp_set_num_threads(static_cast<int>(state.range(1)));
  const auto bytes = makePicture(size);
  auto result = bytes;
  AdjustToneStage stage = fullSetting();
  const int bandHeight = state.range(2) < 0 ? size.height : static_cast<int>(state.range(2));
  ByteRows rows(bytes, result, size.width);
  const auto kept = std::make_unique<ToneScratch>();
  const bool fresh = state.range(3) != 0;
  IMG3<float> image(fresh ? 1 : size.width, fresh ? 1 : size.height);
  loop(state, size.megapixels(), [&] {
    if (fresh) {
      IMG3<float> own(size.width, size.height);
      ToneScratch scratch;
      stage.apply(own, rows, rows, scratch, bandHeight);
    } else {
      stage.apply(image, rows, rows, *kept, bandHeight);
    }
    benchmark::DoNotOptimize(result.data());
  });
  omp_set_num_threads(1);
}
BENCHMARK(wholeChain)
    ->ArgNames({"MP", "threads", "rows", "fresh"})
    ->ArgsProduct({{1, 4, 16, 64}, {1, 2}, {0, -1}, {0}})
    ->ArgsProduct({{1, 4, 16, 64}, {1}, {0}, {1}})
    ->ArgsProduct({{4}, {1}, {1, 2, 4, 8, 16, 64}, {0}})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1.5)
    ->UseRealTime();

constexpr Size kStepSize = {2448, 1634};

struct Planes {
  IMG3<float> image{kStepSize.width, kStepSize.height};
  IMG3<float> hls{kStepSize.width, kStepSize.height};
  GIMG<float> plane{kStepSize.width, kStepSize.height};
  GIMG<float> work{kStepSize.width, kStepSize.height};
  GIMG<float> detail{kStepSize.width, kStepSize.height};
  int rows = bandRows(0, kStepSize.width, kStepSize.height);

  Planes() {
    auto bytes = makePicture(kStepSize);
    ByteRows(bytes, bytes, image.width).take(0, RgbRows(image));
    prim::primRGBToHLS_32f_C3R(image.data, image.step, hls.data, hls.step, image.width,
                               image.height);
    prim::primCopy_32f_C3C1R(hls.data + 1, hls.step, plane.data, plane.step, plane.width,
                             plane.height);
    restore();
    prim::primCopy_32f_C1R(plane.data, plane.step, detail.data, detail.step, plane.width,
                           plane.height);
  }
  void restore() {
    prim::primCopy_32f_C1R(plane.data, plane.step, work.data, work.step, plane.width, plane.height);
  }
};

template <class Step>
void step(benchmark::State& state, const Step& run) {
  const prim::FloatModeGuard floatMode;
  omp_set_num_threads(1);
  Planes planes;
  loop(state, kStepSize.megapixels(), [&] { run(planes); });
}

#define VX_STEP(name, ...)                      \
  void name(benchmark::State& state) {          \
    step(state, [](Planes& p) { __VA_ARGS__ }); \
  }                                             \
  BENCHMARK(name)->Unit(benchmark::kMillisecond)->UseRealTime()

VX_STEP(stepRgbToHls, forEachBand(p.image.height, p.rows, [&](int y, int n) {
          prim::primRGBToHLS_32f_C3R(p.image.row(y), p.image.step, p.hls.data, p.hls.step,
                                     p.image.width, n);
        }););
VX_STEP(stepHlsToRgb, forEachBand(p.image.height, p.rows, [&](int y, int n) {
          prim::primHLSToRGB_32f_C3R(p.hls.row(y), p.hls.step, p.image.row(y), p.image.step,
                                     p.image.width, n);
        }););
VX_STEP(stepUnsharp, UnsharpMask mask; mask.amount = 1.3f; mask.sigma = 0.85f; p.restore();
        mask.apply(p.work););
VX_STEP(stepEqualize, LightnessTone tone; const AdjustToneStage full = fullSetting();
        tone.eqStrength = full.lightness.eqStrength; tone.eqClip = full.lightness.eqClip;
        tone.gamma = 0.0f; p.restore(); tone.apply(p.work););
VX_STEP(stepEqualizeFine, LightnessTone tone; tone.eqStrength = 0.8f; tone.eqSample = 10;
        tone.gamma = 0.0f; p.restore(); tone.apply(p.work););
VX_STEP(stepSplitTwoPasses, LightnessTone tone; tone.detailRange = 0.1f; p.restore();
        tone.splitBaseDetail(p.work, p.detail););
VX_STEP(stepSplitOnePass, LightnessTone tone; tone.detailRange = 0.04f; p.restore();
        tone.splitBaseDetail(p.work, p.detail););
VX_STEP(stepGammaCurve, const PowerCurve curve(1.001f, 0.8f); p.restore();
        forEachBand(p.work.height, p.rows,
                    [&](int y, int n) { curve.apply(PlaneView(p.work).rows(y, n)); }););
VX_STEP(stepCopyPlane, p.restore(););
VX_STEP(stepLightness, p.restore(); fullSetting().lightness.apply(p.work););
VX_STEP(stepSaturation, p.restore(); fullSetting().saturation.apply(p.work););

#if defined(VX_BENCH_OPENCV)
// The chain and OpenCV's steps in turn, so that neither has the quieter machine.
void compareWithOpenCv() {
  const prim::FloatModeGuard floatMode;
  omp_set_num_threads(1);
  const Size size = sizeOf(4);
  const auto bytes = makePicture(size);
  auto result = bytes;
  AdjustToneStage stage = fullSetting();
  ByteRows rows(bytes, result, size.width);
  auto steps = openCvToneChain(bytes, size.width, size.height);
  IMG3<float> image(size.width, size.height);  // kept, as OpenCV keeps its buffers
  ToneScratch scratch;
  steps.push_back(
      {"this library, the whole chain", false, [&] { stage.apply(image, rows, rows, scratch); }});
  std::vector<double> best(steps.size(), 1e30);
  for (int turn = 0; turn < 12; ++turn) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const double start = bench::seconds(CLOCK_PROCESS_CPUTIME_ID);
      steps[i].run();
      best[i] = std::min(best[i], bench::seconds(CLOCK_PROCESS_CPUTIME_ID) - start);
    }
  }
  std::printf("\nOne thread, %d x %d, CPU ms/MP, best of 12 turns\n", size.width, size.height);
  double listed = 0, all = 0;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const double cost = 1e3 * best[i] / size.megapixels();
    std::printf("  %-32s %7.2f\n", steps[i].name, cost);
    if (i + 1 == steps.size()) {
      std::printf("  OpenCV with one equalisation     %7.2f  ratio %.2f\n", listed, listed / cost);
      std::printf("  OpenCV with both, as the chain   %7.2f  ratio %.2f\n", all, all / cost);
    }
    all += cost;
    if (steps[i].listed) listed += cost;
  }
}
#endif

}  // namespace

int main(int argc, char** argv) {
  vx::attachProcess();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
#if defined(VX_BENCH_OPENCV)
  compareWithOpenCv();
#endif
}
