// A host in C++: names the settings, takes the noise out, and stops by throwing.
#include <vxicore26.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <vector>

namespace {

struct Picture {
  int width, height;
  std::vector<std::uint16_t> samples;  // RGB, 0 to 32768

  int rowStep() const { return width * 3 * static_cast<int>(sizeof(std::uint16_t)); }
};

// The neutral set; a host fills in what its user asks for.
struct Settings {
  float lumaEqAmount = 0, lumaEqRadius = 100, lumaEqPeakGain = 0, lumaGamma = 0, lumaEqTopCut = 0,
        lumaEqFloor = 0;
  float lumaDetailRange = 0, lumaDetailRadius = 16, lumaDetailGamma = 1, lumaDetailGain = 1;
  float sharpenAmount = 1;
  float satEqAmount = 0, satEqRadius = 100, satContrast = 1, satGamma = 1, hueShift = 0;
  float denoiseStrength = 0, grainRestore = 0, unblockStrength = 0;
  int denoiseMode = 0;
};

int adjust(Picture& picture, const Settings& s, VxProgress progress, void* context) {
  constexpr int kRgb16 = 3;
  NoiseProfile noise{};
  if (s.denoiseStrength > 0)
    vxDenoiseEstNoise(picture.samples.data(), kRgb16, picture.rowStep(), picture.width,
                      picture.height, &noise);
  return vxAdjustRgb(picture.samples.data(), kRgb16, picture.rowStep(), picture.width,
                     picture.height, 1, nullptr, nullptr, progress, context,  // callbacks
                     s.lumaEqAmount, s.lumaEqRadius, s.lumaEqPeakGain, s.lumaGamma, s.lumaEqTopCut,
                     s.lumaEqFloor,  // local equalisation, and the gamma within it
                     s.lumaDetailRange, s.lumaDetailRadius, s.lumaDetailGamma, s.lumaDetailGain,
                     s.sharpenAmount, s.satEqAmount, s.satEqRadius, s.satContrast, s.satGamma,
                     s.hueShift,  // colour
                     s.denoiseStrength, &noise, s.grainRestore, s.unblockStrength, s.denoiseMode);
}

}  // namespace

int main() {
  Picture picture{64, 48, std::vector<std::uint16_t>(64 * 48 * 3, 12000)};
  const auto stop = [](int, int, void*) -> int { throw std::runtime_error("stopped"); };
  Settings settings;
  settings.lumaGamma = 0.5F;
  settings.denoiseStrength = 0.5F;
  try {
    adjust(picture, settings, stop, nullptr);
    return 1;
  } catch (const std::runtime_error&) {
    if (picture.samples[0] != 12000) return 1;
  }
  const int result = adjust(picture, settings, nullptr, nullptr);
  std::printf("result %d, 12000 became %d\n", result, picture.samples[0]);
  return result == 1 && picture.samples[0] > 12000 ? 0 : 1;
}
