#pragma once

#include <cstdlib>
#include <stdexcept>

#include "adjust/adjust_settings.h"
#include "tests/support/picture.h"
#include "vxicore26.h"

namespace vx::test {

/// A host with callbacks that count, fail, throw and call back as told.
struct Host {
  int reports = 0;
  int cancelAt = -1;  ///< report that answers 0
  int throwAt = -1;   ///< report that throws
  std::vector<int> positions = {};
  std::function<void()> onReport = {};

  int asked = 0;          ///< calls of the allocator
  unsigned failMask = 0;  ///< bit i: allocation i fails
  int throwAtAlloc = -1;
  bool throwAtFree = false;
  int live = 0;  ///< blocks not given back
  std::function<void()> onMemory = {};

  static void* allocate(std::size_t size, void* context) {
    Host& host = *static_cast<Host*>(context);
    if (host.onMemory) host.onMemory();
    const int number = host.asked++;
    if (number == host.throwAtAlloc) throw std::runtime_error("host allocator");
    if ((host.failMask >> number & 1) != 0) return nullptr;
    ++host.live;
    // Aligned to 4 and to no more; the size in front.
    auto* block = static_cast<std::uint8_t*>(std::malloc(size + 20));
    return block + 20;
  }
  static void release(void* block, void* context) {
    Host& host = *static_cast<Host*>(context);
    if (host.onMemory) host.onMemory();
    --host.live;
    std::free(static_cast<std::uint8_t*>(block) - 20);
    if (host.throwAtFree) throw std::runtime_error("host release");
  }
  static int report(int position, int total, void* context) {
    Host& host = *static_cast<Host*>(context);
    if (total != 100) throw std::logic_error("total");
    const int number = host.reports++;
    host.positions.push_back(position);
    if (host.onReport) host.onReport();
    if (number == host.throwAt) throw std::runtime_error("host progress");
    return number == host.cancelAt ? 0 : 1;
  }
};

inline constexpr AdjustSettings kBrighter = {.lumaGamma = 1.0f};
inline constexpr NoiseProfile kNoisy = {0.3f, 0.05f, 0.0f, 0.3f, 0.02f, 0.0f};

/// The exported function with the settings in one piece; its allocators only when `lendMemory`.
inline int adjust(void* pixels, int format, int rowStep, int width, int height,
                  const AdjustSettings& s = {}, Host* host = nullptr, bool lendMemory = false) {
  return vxAdjustRgb(pixels, format, rowStep, width, height, s.previewScale,
                     lendMemory ? &Host::allocate : nullptr, lendMemory ? &Host::release : nullptr,
                     host != nullptr ? &Host::report : nullptr, host, s.lumaEqAmount,
                     s.lumaEqRadius, s.lumaEqPeakGain, s.lumaGamma, s.lumaEqTopCut, s.lumaEqFloor,
                     s.lumaDetailRange, s.lumaDetailRadius, s.lumaDetailGamma, s.lumaDetailGain,
                     s.sharpenAmount, s.satEqAmount, s.satEqRadius, s.satContrast, s.satGamma,
                     s.hueShift, s.denoiseStrength, s.noiseProfile, s.grainRestore,
                     s.unblockStrength, s.denoiseMode);
}
inline int adjust(Picture& p, const AdjustSettings& s = {}, Host* host = nullptr,
                  bool lendMemory = false) {
  return adjust(p.bytes.data(), p.format, p.step, p.width, p.height, s, host, lendMemory);
}

}  // namespace vx::test
