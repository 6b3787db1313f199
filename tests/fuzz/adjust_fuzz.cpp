// vxDenoiseEstNoise, then vxAdjustRgb with what it found: whatever the arguments, the callbacks and
// the memory, the answer is one of those that are told, and only pixels change. libFuzzer's
// interface.

#include <fftw3.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>

#include "tests/adjust/host.h"
#include "tests/fuzz/target.h"
#include "tests/support/heap.h"

namespace {

using namespace vx::test;
using vx::AdjustSettings;

constexpr int kSizeLimit = 2304;  // from here on an axis is tiled

struct Call {
  void* pixels = nullptr;
  int format, width, height, rowStep;
  AdjustSettings settings;
  NoiseProfile profile{};
  Host host;
  bool reports, lends;
  bool reenters = false;

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
  AdjustSettings& s = call.settings;
  const auto set = [&](float& setting, double low, double high) {
    setting = source.setting<float>(low, high);
  };
  s.previewScale = source.oneIn(4) ? source.integer(1, 8) : 1;
  set(s.lumaEqAmount, 0, 1);
  set(s.lumaEqRadius, 6, 200);
  set(s.lumaEqPeakGain, -1, 1);
  set(s.lumaGamma, -3, 4);
  set(s.lumaEqTopCut, 0, 1);
  set(s.lumaEqFloor, 0, 1);
  set(s.lumaDetailRange, 0, 1);
  set(s.lumaDetailRadius, 6, 40);
  set(s.lumaDetailGamma, 0, 3);
  set(s.lumaDetailGain, 0, 5);
  set(s.sharpenAmount, 0, 4);
  set(s.satEqAmount, 0, 1);
  set(s.satEqRadius, 6, 200);
  set(s.satContrast, 0, 2);
  set(s.satGamma, 0, 2);
  set(s.hueShift, -1, 1);
  if (source.oneIn(2)) set(s.denoiseStrength, 0, 1);
  if (source.oneIn(2)) set(s.grainRestore, 0, 1);
  if (source.oneIn(4)) set(s.unblockStrength, 0, 1);
  s.denoiseMode = source.oneIn(16) ? source.integer(1, 2) : 0;
  if (source.oneIn(4))
    for (float* value : {&call.profile.lumaLevel, &call.profile.lumaNoise,
                         &call.profile.chromaLevel, &call.profile.chromaNoise})
      set(*value, 0, 0.5);
  s.noiseProfile = source.oneIn(8) ? nullptr : &call.profile;
}

void chooseHost(ByteSource& source, Call& call) {
  Host& host = call.host;
  call.reports = source.oneIn(2);
  call.lends = source.oneIn(2);
  const int at = static_cast<int>(source.byte() % 4);
  switch (source.byte() % 8) {
    case 0:
      host.cancelAt = at;
      break;
    case 1:
      host.throwAt = at;
      break;
    case 2:
      host.throwAtAlloc = at;
      break;
    case 3:
      host.throwAtFree = true;
      break;
    case 4:
      host.failMask = source.byte();
      break;
    case 5:
      host.onReport = host.onMemory = [] {  // an inner call, on its own picture
        std::uint8_t inner[5 * 4 * 3] = {1, 2, 3};
        NoiseProfile profile;
        require(vxDenoiseEstNoise(inner, 1, 15, 5, 4, &profile) == 1, "an inner call works");
        require(adjust(inner, 1, 15, 5, 4, {.lumaGamma = 1.0f}) == 1, "an inner call works");
      };
      break;
    default:
      break;
  }
}

// Beyond what the guarded memory sees: the extra channel, the odd last column and row, and the
// limit of 16-bit samples.
void checkPixels(const Call& call, const GuardedMemory& memory) {
  const int bytes = vx::bytesPerPixel(call.format);
  const bool deep = call.format == 3 || call.format == 6;
  const bool odd = !call.tiled();
  for (int y = 0; y < call.height; ++y)
    for (int x = 0; x < call.width; ++x) {
      const std::uint8_t* now = static_cast<const std::uint8_t*>(call.pixels) +
                                std::ptrdiff_t{call.rowStep} * y + bytes * x;
      const std::uint8_t* before = memory.before(now);
      if (odd && (x == (call.width | 1) - 1 || y == (call.height | 1) - 1)) {
        require(deep || std::memcmp(now, before, static_cast<std::size_t>(bytes)) == 0,
                "the odd last column and row stay");
        continue;
      }
      if (call.format == 5) require(*now == *before, "the extra channel stays");
      for (int i = 0; deep && i < bytes / 2; ++i) {
        std::uint16_t a, b;
        std::memcpy(&a, now + 2 * i, 2);
        std::memcpy(&b, before + 2 * i, 2);
        if (call.format == 6 && i == 0)
          require(a == b || (odd && b > 0x8000 && a == 0x8000), "the extra channel stays");
        else  // of format 6 in one piece, the last quarter of a row has no limit
          require(a <= 0x8000 || (call.format == 6 && odd && 4 * x + i >= 3 * (call.width & ~1)),
                  "16-bit samples end at 32768");
      }
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  vx::attachProcess();
  fftwf_set_timelimit(0.0);  // plans of any quality
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static GuardedMemory memory(260 * 1024);
  ByteSource source(data, size);
  Call call;
  chooseSize(source, call);
  static constexpr int kFormats[] = {1, 3, 5, 6, 1, 3, 5, 6, 1, 3, 5, 6, 0, 2, 4, 7};
  call.format = source.oneIn(32) ? source.raw<int>() : source.oneOf(kFormats);

  const int pixelBytes = call.known() ? vx::bytesPerPixel(call.format) : 8;
  const bool sized = call.width >= 1 && call.height >= 1;
  std::uint8_t* placed = nullptr;
  const auto place = [&](int step) {
    call.rowStep = step;
    if (sized && call.width <= 8192)
      placed =
          memory.place({step, 0, std::ptrdiff_t{call.width} * pixelBytes, call.height}, source);
    return placed != nullptr;
  };
  const int rowBytes = std::clamp(call.width, 1, 8192) * pixelBytes;
  if (!place(fuzzStep(source, rowBytes, call.height))) place(rowBytes);
  if (!source.oneIn(16)) call.pixels = placed;
  // Where nothing is to be touched, an address that nobody may touch.
  const bool noTouch = !sized || call.refusedStep() || (call.tiled() && call.empty());
  if (noTouch && source.oneIn(2)) call.pixels = memory.forbidden();

  chooseSettings(source, call);
  chooseHost(source, call);
  const bool faults = source.oneIn(8);
  const int refused = faults ? static_cast<int>(source.byte() % 128) : -1;
  const bool fromThenOn = source.oneIn(2);
  const Surroundings surroundings(source, faults);
  memory.forbidTheRest();

  const auto cropped = [](int n) { return std::min(n, 2048); };
  if (!sized || cropped(call.width) * cropped(call.height) < 1 << 15) {
    const bool readable = placed != nullptr && call.pixels == placed;
    NoiseProfile found{};
    surroundings.run([&] {
      require(
          vxDenoiseEstNoise(readable || !sized ? call.pixels : nullptr, call.format, call.rowStep,
                            call.width, call.height, source.oneIn(16) ? nullptr : &found) == 1,
          "the estimate is made");
    });
    require(std::isfinite(found.lumaNoise) && std::isfinite(found.lumaLevel) &&
                found.lumaReserved == 0.0f && found.chromaReserved == 0.0f,
            "the estimate is made of numbers");
    if (call.profile.lumaLevel == 0.0f) call.profile = found;
  }

  std::optional<int> result;
  int leaked = 0;
  {
    const Heap heap(refused, fromThenOn);
    try {
      surroundings.run([&] {
        result =
            adjust(call.pixels, call.format, call.rowStep, call.width, call.height, call.settings,
                   call.reports || call.lends ? &call.host : nullptr, call.lends);
      });
    } catch (const std::runtime_error&) {
      require(call.host.throwAt >= 0 || call.host.throwAtAlloc >= 0 || call.host.throwAtFree,
              "only the host throws this");
    } catch (const vx::MemoryException&) {
      require(Heap::refusedOne() && call.settings.unblockStrength > 0.02f,
              "only want of memory for block artifacts ends a call by another exception");
    }
    leaked = Heap::live();
    if (!Heap::refusedOne() && result.has_value()) {
      const int cancelled = call.host.cancelAt;
      const bool asked = call.reports || call.lends;
      const bool cancels = asked && cancelled >= 0 && call.host.reports > cancelled;
      require(*result == (cancels ? 0 : call.answer()), "the answer that is told");
    }
  }
  require(leaked == 0 && call.host.live == 0, "everything is given back");
  // A release that throws comes after the picture was written.
  memory.check(call.touchesPixels() && (result == 1 || (!result && call.host.throwAtFree)));
  const bool rowsApart = std::abs(std::int64_t{call.rowStep}) >= rowBytes || call.height == 1;
  if (result == 1 && call.touchesPixels() && rowsApart && refused < 0) checkPixels(call, memory);
  return 0;
}
