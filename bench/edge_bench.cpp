// Edge enhancement: the luminance stage beside the same steps in OpenCV, whole planes beside tiles,
// the realignment of chroma, and the whole call.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "bench/edge_opencv.h"
#include "edge/edge_driver.h"
#include "edge/enh_edge.h"
#include "frame/exports/load.h"

namespace {

using vx::EdgePlane;

// Width of a 3:2 picture of so many megapixels.
int widthOf(std::int64_t megapixels) {
  int width = 16;
  while (std::int64_t{width} * (width * 2 / 3) < megapixels * 1'000'000) width += 16;
  return width;
}

// Smooth shapes, edges and a little noise.
float samplePixel(int x, int y) {
  const auto hash =
      static_cast<std::uint32_t>(x) * 2654435761u ^ static_cast<std::uint32_t>(y) * 40503u;
  return 0.2f + 0.3f * static_cast<float>(((x / 37) ^ (y / 23)) & 1) +
         0.3f * static_cast<float>((x + y) % 256) / 256.0f +
         0.02f * static_cast<float>(hash >> 24) / 256.0f;
}

void fill(EdgePlane& plane, int width) {
  plane.resize(width, width * 2 / 3);
  for (int y = 0; y < plane.height; ++y)
    for (int x = 0; x < width; ++x) plane.row(y)[x] = samplePixel(x, y);
}

void countPixels(benchmark::State& state, int width, int height) {
  const double mp = 1e-6 * width * height;
  state.counters["MP/s"] =
      benchmark::Counter(mp * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  state.counters["ms/MP"] =
      benchmark::Counter(1e-3 * mp * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

vx::EnhEdge lens() { return {1.5f, 1.5f, 0.01f, 1.0, 1.0}; }

void luma(benchmark::State& state) {
  EdgePlane input, output;
  fill(input, widthOf(state.range(0)));
  vx::EnhEdge edge = lens();
  edge.baseGain = 1.3f;
  edge.adaptiveGain = 1.5f;
  if (state.range(1) != 0) edge.tileWidth = edge.tileHeight = 1 << 20;
  edge.enhanceLuma(input, output);  // the first touch of memory costs several times as much
  for (auto _ : state) edge.enhanceLuma(input, output);
  countPixels(state, input.width, input.height);
}
BENCHMARK(luma)
    ->ArgNames({"MP", "wholePlane"})
    ->ArgsProduct({{1, 4, 16, 64}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

void lumaOpenCv(benchmark::State& state) {
  EdgePlane input, output;
  fill(input, widthOf(state.range(0)));
  output.resize(input.width, input.height);
  if (!edgeLumaByOpenCv(input.data, input.step, output.data, output.step, input.width,
                        input.height))
    return state.SkipWithError("built without OpenCV");
  edgeLumaByOpenCv(input.data, input.step, output.data, output.step, input.width, input.height);
  for (auto _ : state)
    edgeLumaByOpenCv(input.data, input.step, output.data, output.step, input.width, input.height);
  countPixels(state, input.width, input.height);
}
BENCHMARK(lumaOpenCv)
    ->ArgNames({"MP"})
    ->ArgsProduct({{1, 4, 16, 64}})
    ->Unit(benchmark::kMillisecond);

void align(benchmark::State& state) {
  EdgePlane Y, U, V, outU, outV;
  const int width = widthOf(state.range(0));
  for (EdgePlane* plane : {&Y, &U, &V}) fill(*plane, width);
  const auto sigma = static_cast<float>(state.range(1));
  vx::EnhEdge edge = lens();
  if (state.range(2) != 0) edge.tileWidth = edge.tileHeight = width;
  edge.alignChroma({sigma, sigma, 0.01f}, Y, U, V, outU, outV);
  for (auto _ : state) edge.alignChroma({sigma, sigma, 0.01f}, Y, U, V, outU, outV);
  countPixels(state, Y.width, Y.height);
}
BENCHMARK(align)
    ->ArgNames({"MP", "radius", "wholePlane"})
    ->ArgsProduct({{4}, {2, 6}, {0, 1}})
    ->ArgsProduct({{1, 16, 64}, {2, 6}, {0}})
    ->Unit(benchmark::kMillisecond);

void wholeCall(benchmark::State& state) {
  const int width = widthOf(state.range(0));
  const int height = width * 2 / 3;
  std::vector<std::uint8_t> start(static_cast<std::size_t>(width) *
                                  static_cast<std::size_t>(height) * 3);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < 3; ++c)
        start[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x)) *
                  3 +
              static_cast<std::size_t>(c)] =
            static_cast<std::uint8_t>(250.0f * samplePixel(x + 5 * c, y));
  std::vector<std::uint8_t> image = start;
  vx::EdgeSettings settings{};
  settings.baseGain = 1.3;
  settings.adaptiveGain = 1.5;
  settings.rangeFloor = 0.01;
  settings.blurSigmaX = settings.blurSigmaY = 1.5;
  settings.alignSigmaX = settings.alignSigmaY = 2;
  settings.alignThreshold = 0.01;
  vx::enhanceEdges(false, image.data(), 3 * width, width, height, settings);
  for (auto _ : state) vx::enhanceEdges(false, image.data(), 3 * width, width, height, settings);
  countPixels(state, width, height);
}
BENCHMARK(wholeCall)
    ->ArgNames({"MP"})
    ->ArgsProduct({{1, 4, 16, 64}})
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  vx::attachProcess();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
