// vxDenoiseEstNoise, then vxAdjustRgb with what it found: whatever the arguments, the callbacks and
// the memory, the answer is one of those that are told, and only pixels change. libFuzzer's
// interface.

#include <fftw3.h>

#include <algorithm>

#include "tests/adjust/host.h"
#include "tests/fuzz/target.h"
#include "tests/support/heap.h"

namespace {

using namespace vx::test;
using vx::AdjustSettings;

constexpr int kSizeLimit = 2304;  // from here on an axis is tiled

struct Call {
  void* pixels = nullptr;
  int format, width, height, rowStep = 0;
  AdjustSettings settings;
  NoiseProfile profile{};
  Host host;
  bool reports, lends;

  bool known() const { return vx::bytesPerPixel(format) != 0; }
  bool tiled() const { return width >= kSizeLimit || height >= kSizeLimit; }
  bool empty() const { return width < 2 || height < 2; }
  bool refusedStep() const { return rowStep < 1 && (format == 1 || format == 3); }
  bool touchesPixels() const { return known() && !empty() && !refusedStep() && pixels != nullptr; }
  // The answer when nothing fails and nobody cancels.
  int answer() const {
    const bool tooThin = pixels != nullptr && !refusedStep() && tiled() && empty();
    return tooThin ? -1 : known() ? 1 : -2;
  }
};

void chooseSize(ByteSource& source, Call& call) {
  const unsigned kind = source.byte();
  if (kind < 216) {
    const int first = kind < 150   ? 1 + static_cast<int>(source.byte() % 48)
                      : kind < 200 ? 1 + static_cast<int>(source.byte())
                                   : kSizeLimit - 2 + source.raw<std::uint16_t>() % 1300;
    const int second = 1 + static_cast<int>(source.byte() % (kind < 200 ? 48 : 6));
    const bool upright = source.oneIn(2);
    call.width = upright ? second : first;
    call.height = upright ? first : second;
  } else {
    call.width = source.integer(0, 5);
    call.height = source.integer(0, 5);
  }
}

void chooseSettings(ByteSource& source, Call& call) {
  using S = AdjustSettings;
  static constexpr struct {
    float S::*setting;
    double low, high;
  } kCurves[] = {
      {&S::lumaEqAmount, 0, 1},    {&S::lumaEqRadius, 6, 200},    {&S::lumaEqPeakGain, -1, 1},
      {&S::lumaGamma, -3, 4},      {&S::lumaEqTopCut, 0, 1},      {&S::lumaEqFloor, 0, 1},
      {&S::lumaDetailRange, 0, 1}, {&S::lumaDetailRadius, 6, 40}, {&S::lumaDetailGamma, 0, 3},
      {&S::lumaDetailGain, 0, 5},  {&S::sharpenAmount, 0, 4},     {&S::satEqAmount, 0, 1},
      {&S::satEqRadius, 6, 200},   {&S::satContrast, 0, 2},       {&S::satGamma, 0, 2},
      {&S::hueShift, -1, 1}};
  S& s = call.settings;
  s.previewScale = source.oneIn(4) ? source.integer(1, 8) : 1;
  for (const auto& [setting, low, high] : kCurves) s.*setting = source.setting<float>(low, high);
  if (source.oneIn(2)) s.denoiseStrength = source.setting<float>(0, 1);
  if (source.oneIn(2)) s.grainRestore = source.setting<float>(0, 1);
  if (source.oneIn(4)) s.unblockStrength = source.setting<float>(0, 1);
  s.denoiseMode = source.oneIn(16) ? source.integer(1, 2) : 0;
  if (source.oneIn(4))
    for (float* value : {&call.profile.lumaLevel, &call.profile.lumaNoise,
                         &call.profile.chromaLevel, &call.profile.chromaNoise})
      *value = source.setting<float>(0, 0.5);
  s.noiseProfile = source.oneIn(8) ? nullptr : &call.profile;
}

void chooseHost(ByteSource& source, Call& call) {
  Host& host = call.host;
  call.reports = source.oneIn(2);
  call.lends = source.oneIn(2);
  const int at = static_cast<int>(source.byte() % 4);
  const unsigned kind = source.byte() % 8;
  if (kind == 0) host.cancelAt = at;
  if (kind == 1) host.throwAt = at;
  if (kind == 2) host.throwAtAlloc = at;
  if (kind == 3) host.throwAtFree = true;
  if (kind == 4) host.failMask = source.byte();
  if (kind == 5)
    host.onReport = host.onMemory = [] {  // an inner call, on its own picture
      std::uint8_t inner[5 * 4 * 3] = {1, 2, 3};
      NoiseProfile profile;
      require(vxDenoiseEstNoise(inner, 1, 15, 5, 4, &profile) == 1, "an inner call works");
      require(adjust(inner, 1, 15, 5, 4, {.lumaGamma = 1.0f}) == 1, "an inner call works");
    };
}

[[maybe_unused]] const bool anyPlansDo = (fftwf_set_timelimit(0.0), true);

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static GuardedMemory memory(260 * 1024);
  ByteSource source(data, size);
  Call call;
  chooseSize(source, call);
  static constexpr int kFormats[] = {1, 3, 5, 6, 1, 3, 5, 6, 1, 3, 5, 6, 0, 2, 4, 7};
  call.format = source.oneIn(32) ? source.raw<int>() : source.oneOf(kFormats);
  const int pixelBytes = call.known() ? vx::bytesPerPixel(call.format) : 8;
  const Shape shape = {call.width, call.height, 1, pixelBytes, pixelBytes};
  std::uint8_t* const placed = placePicture(memory, source, shape, call.rowStep);
  if (!source.oneIn(16)) call.pixels = placed;
  // Where nothing is to be touched, an address that nobody may touch.
  const bool noTouch = !shape.sized() || call.refusedStep() || (call.tiled() && call.empty());
  if (noTouch && source.oneIn(2)) call.pixels = memory.forbidden();

  chooseSettings(source, call);
  chooseHost(source, call);
  const Surroundings surroundings(source, 128);
  memory.forbidTheRest();

  const auto cropped = [](int n) { return std::min(n, 2048); };
  if (!shape.sized() || cropped(call.width) * cropped(call.height) < 1 << 15) {
    const bool readable = !shape.sized() || (placed != nullptr && call.pixels == placed);
    NoiseProfile found{};
    const End end = surroundings.run([&] {
      require(vxDenoiseEstNoise(readable ? call.pixels : nullptr, call.format, call.rowStep,
                                call.width, call.height, source.oneIn(16) ? nullptr : &found) == 1,
              "the estimate is made");
    });
    require(end == End::done && std::isfinite(found.lumaNoise) && std::isfinite(found.lumaLevel) &&
                found.lumaReserved == 0.0f && found.chromaReserved == 0.0f,
            "the estimate is made of numbers");
    if (call.profile.lumaLevel == 0.0f) call.profile = found;
  }

  const Host& host = call.host;
  const bool asked = call.reports || call.lends;
  int result = -9;
  const End end = surroundings.run(
      [&] {
        result = adjust(call.pixels, call.format, call.rowStep, call.width, call.height,
                        call.settings, asked ? &call.host : nullptr, call.lends);
      },
      host.throwAt >= 0 || host.throwAtAlloc >= 0 || host.throwAtFree);
  require(host.live == 0, "the host gets everything back");
  require(end != End::noMemory || call.settings.unblockStrength > 0.02f,
          "only want of memory for block artifacts ends a call by an exception");
  const bool cancels = asked && host.cancelAt >= 0 && host.reports > host.cancelAt;
  if (end == End::done && !Heap::refusedOne())
    require(result == (cancels ? 0 : call.answer()), "the answer that is told");
  // A release that throws comes after the picture was written.
  memory.check(call.touchesPixels() &&
               (result == 1 || (end == End::hostThrew && host.throwAtFree)));
  return 0;
}
