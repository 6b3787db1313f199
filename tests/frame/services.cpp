#include "tests/frame/services.h"

#include <climits>
#include <memory>

#include "frame/exceptions.h"
#include "tests/adjust/host.h"
#include "tests/support/picture.h"
#include "vxicore26.h"

namespace vx::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr NoiseProfile kProfile = {0.3f, 0.05f, 0.0f, 0.3f, 0.02f, 0.0f};

constexpr AdjustSettings kTone = {.lumaEqAmount = 0.3f,
                                  .lumaEqRadius = 40.0f,
                                  .lumaEqPeakGain = 0.3f,
                                  .lumaGamma = 0.4f,
                                  .lumaEqTopCut = 0.04f,
                                  .lumaEqFloor = 0.03f,
                                  .lumaDetailRange = 0.1f,
                                  .lumaDetailRadius = 12.0f,
                                  .lumaDetailGamma = 0.8f,
                                  .lumaDetailGain = 1.6f,
                                  .sharpenAmount = 1.7f,
                                  .satEqAmount = 0.2f,
                                  .satEqRadius = 50.0f,
                                  .satContrast = 1.2f,
                                  .satGamma = 0.9f,
                                  .hueShift = 0.07f};

AdjustSettings with(AdjustSettings settings, auto change) {
  change(settings);
  return settings;
}
AdjustSettings denoising(int mode) {
  return {.denoiseStrength = 0.6f,
          .noiseProfile = &kProfile,
          .grainRestore = 0.2f,
          .denoiseMode = mode};
}

// Ramps and fields under noise, in odd sizes, with bytes between the rows.
std::shared_ptr<Picture> scene(int format, int width, int height) {
  auto p = std::make_shared<Picture>(format, width, height, 6);
  p->randomise(31, 255);
  std::mt19937 random(32);
  const int unit = deep(format) ? 128 : 1;
  p->forEachSample([&](int x, int y, int c) {
    const bool field = (x / 23 + y / 17) % 3 == 0;
    const int level = field ? 70 + 30 * c : 20 + 200 * x / width - 10 * c + y % 5;
    return unit * level + static_cast<int>(random() % static_cast<unsigned>(24 * unit));
  });
  return p;
}

// A service that changes a picture; `change` returns the result of the call.
Service changing(std::string name, std::shared_ptr<Picture> before,
                 std::function<int(Picture&)> change, bool sums = false) {
  return {std::move(name),
          [before = std::move(before), change = std::move(change)] {
            Picture p = *before;
            int result = 0;
            try {
              result = change(p);
            } catch (const MemoryException&) {
              result = 77;
            } catch (const std::runtime_error&) {
              result = 78;
            }
            p.bytes.push_back(static_cast<std::uint8_t>(result));
            return p.bytes;
          },
          sums};
}

Service adjusting(const std::string& name, const std::shared_ptr<Picture>& before,
                  const AdjustSettings& settings, const Host& host = {}, bool sums = false) {
  return changing(
      name + ", format " + std::to_string(before->format), before,
      [settings, host](Picture& p) {
        Host own = host;
        return adjust(p, settings, &own, true);
      },
      sums);
}

Host hostWith(auto change) {
  Host host;
  change(host);
  return host;
}

int edges(Picture& p) {
  const int row = deep(p.format) ? p.step / 2 : p.step;
  return vxYUVEdgeRGB(deep(p.format), p.bytes.data(), row, p.width, p.height, 1.5, 0.02, 1.4, 0.9,
                      2.0, 1.1, 0.7, -1, 2, 2.5, 1.6, 0.03, 0);
}

int unblock(Picture& p, int quality, int mode, int step) {
  const int row = deep(p.format) ? p.step / 2 : p.step;
  return vxUnblock(deep(p.format), p.bytes.data(), 3, row, p.width, p.height, quality, mode, step,
                   0);
}

Service estimating(int format) {
  return {"estimate, format " + std::to_string(format), [before = scene(format, 151, 98)] {
            NoiseProfile profile;
            const int result = vxDenoiseEstNoise(before->bytes.data(), before->format, before->step,
                                                 before->width, before->height, &profile);
            Bytes bytes(sizeof profile + 1, static_cast<std::uint8_t>(result));
            std::memcpy(bytes.data(), &profile, sizeof profile);
            return bytes;
          }};
}

std::vector<Service> makeServices() {
  std::vector<Service> all;
  for (const int format : kFormats) {
    all.push_back(adjusting("tone", scene(format, 131, 90), kTone));
    all.push_back(estimating(format));
  }
  const auto small = scene(1, 81, 66), deepSmall = scene(3, 66, 81), wide = scene(5, 2306, 22);
  all.push_back(adjusting("tone in tiles", wide, kTone));
  all.push_back(adjusting("tone of a preview", small, with(kTone, [](auto& s) {
                            s.previewScale = 3;
                            s.sharpenAmount = 0.4f;
                          })));
  all.push_back(adjusting("noise filter of mode 0", scene(6, 131, 90), denoising(0)));
  all.push_back(adjusting("non-local noise filter", small, denoising(1), {}, true));
  all.push_back(adjusting("non-local noise filter", deepSmall, denoising(1), {}, true));
  all.push_back(adjusting("block artifacts, noise and tone", small, with(kTone, [](auto& s) {
                            s.unblockStrength = 0.5f;
                            s.denoiseStrength = 0.4f;
                            s.noiseProfile = &kProfile;
                          })));
  for (const auto& [quality, mode, step] :
       {std::tuple(40, 0, 3), {60, 1, 1}, {30, 2, 2}, {98, 0x10, 2}})
    all.push_back(changing("block artifacts, mode " + std::to_string(mode),
                           mode == 1 ? deepSmall : small,
                           [=](Picture& p) { return unblock(p, quality, mode, step); }));
  all.push_back(changing("edges", small, edges));
  all.push_back(changing("edges, 16 bits", deepSmall, edges));

  // Ends before the end.
  all.push_back(changing("unknown format", small, [](Picture& p) {
    return adjust(p.bytes.data(), 2, p.step, p.width, p.height, kTone);
  }));
  all.push_back(
      adjusting("cancelled at once", small, kTone, hostWith([](Host& h) { h.cancelAt = 0; })));
  all.push_back(
      adjusting("cancelled after a tile", wide, kTone, hostWith([](Host& h) { h.cancelAt = 1; })));
  all.push_back(adjusting("report throws", wide, kTone, hostWith([](Host& h) { h.throwAt = 2; })));
  all.push_back(
      adjusting("allocator throws", wide, kTone, hostWith([](Host& h) { h.throwAtAlloc = 2; })));
  all.push_back(changing("no memory", small, [](Picture& p) {
    return vxUnblock(0, p.bytes.data(), 3, 0, 1, INT_MAX, 50, 1, 1, 0);
  }));
  // Bit 1 of the mask has records made and none written.
  all.push_back({"trace", [] {
                   setDebugTrace(2, nullptr);
                   return Bytes{static_cast<std::uint8_t>(vxSetupLib(2, nullptr)),
                                static_cast<std::uint8_t>(vxSetupLib(-1, "/nowhere"))};
                 }});
  return all;
}

}  // namespace

const std::vector<Service>& services() {
  static const std::vector<Service> all = makeServices();
  return all;
}

}  // namespace vx::test
