#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <stdexcept>
#include <vector>

#include "adjust/adjust_settings.h"
#include "adjust/host_pixels.h"
#include "frame/load.h"
#include "vxicore26.h"

namespace vx::test {

// The archive of the library's objects runs nothing at load: without this, only generic code.
inline const bool attached = (attachProcess(), true);

constexpr int kFormats[] = {1, 3, 5, 6};

inline bool deep(int format) { return format == 3 || format == 6; }

/// Host pixels in a block that ends with the last pixel, so that an address sanitizer sees the
/// first byte too many. `slack` bytes lie between the rows; 16-bit rows may start at odd addresses.
struct Picture {
  int format, width, height, step;
  std::vector<std::uint8_t> bytes;

  Picture(int f, int w, int h, int slack = 0)
      : format(f),
        width(w),
        height(h),
        step(w * bytesPerPixel(f) + slack),
        bytes(static_cast<std::size_t>(step) * static_cast<std::size_t>(h - 1) +
              static_cast<std::size_t>(w * bytesPerPixel(f))) {}

  /// Fills all bytes, slack and extra channel too, with samples up to `top`.
  void randomise(unsigned seed, int top) {
    std::mt19937 random(seed);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    forEachSample(
        [&](int, int, int) { return static_cast<int>(random() % static_cast<unsigned>(top + 1)); });
  }
  /// Sets the colour samples to value(x, y, channel).
  void forEachSample(const std::function<int(int, int, int)>& value) {
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        for (int c = 0; c < 3; ++c) set(x, y, c, value(x, y, c));
  }
  std::uint8_t* at(int x, int y, int c) {
    const int sample = bytesPerPixel(format) % 3 == 0 ? c : c + 1;
    return bytes.data() + static_cast<std::ptrdiff_t>(step) * y + bytesPerPixel(format) * x +
           sample * (deep(format) ? 2 : 1);
  }
  int get(int x, int y, int c) {
    if (!deep(format)) return *at(x, y, c);
    std::uint16_t v;
    std::memcpy(&v, at(x, y, c), 2);
    return v;
  }
  void set(int x, int y, int c, int value) {
    const std::uint16_t v = static_cast<std::uint16_t>(value);
    std::memcpy(at(x, y, c), &v, deep(format) ? 2 : 1);
  }
  /// Largest difference of a colour sample to another picture.
  int distance(Picture& other) {
    int most = 0;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        for (int c = 0; c < 3; ++c)
          most = std::max(most, std::abs(get(x, y, c) - other.get(x, y, c)));
    return most;
  }
};

/// A host with callbacks that count, fail, throw and call back as told.
struct Host {
  int reports = 0;
  int cancelAt = -1;  ///< report that answers 0
  int throwAt = -1;   ///< report that throws
  std::vector<int> positions;
  std::function<void()> onReport;

  int asked = 0;          ///< calls of the allocator
  unsigned failMask = 0;  ///< bit i: allocation i fails
  int throwAtAlloc = -1;
  bool throwAtFree = false;
  int live = 0;  ///< blocks not given back
  std::function<void()> onMemory;

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
